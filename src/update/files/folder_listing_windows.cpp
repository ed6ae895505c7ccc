// Not by the C++ library, which opens no folder there whose path has more than 260 characters.
#include "update/files/folder_listing.h"
#include "update/files/long_name_windows.h"

#include <QDir>

#include <windows.h>

bool listFolder(const QString &folder, QFileInfoList *entries, QString *unreadable) {
    WIN32_FIND_DATAW entry{};
    const std::wstring pattern = longName(QDir(folder).filePath(QStringLiteral("*")));
    const HANDLE search =
        folder.isEmpty() ? INVALID_HANDLE_VALUE : FindFirstFileW(pattern.c_str(), &entry);
    bool more = search != INVALID_HANDLE_VALUE;
    while (more) {
        const QString name = QString::fromWCharArray(entry.cFileName);
        if (name != QLatin1String(".") && name != QLatin1String(".."))
            entries->append(QFileInfo(QDir(folder).filePath(name)));
        more = FindNextFileW(search, &entry) != 0;
    }
    const bool whole = search != INVALID_HANDLE_VALUE && GetLastError() == ERROR_NO_MORE_FILES;
    if (search != INVALID_HANDLE_VALUE)
        FindClose(search);
    if (!whole && unreadable != nullptr)
        *unreadable = folder;
    return whole;
}
