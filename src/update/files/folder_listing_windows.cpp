// Not by the C++ library, which opens no folder there whose path has more than 260 characters.
#include "frame/long_name_windows.h"
#include "update/files/folder_listing.h"

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
    // The root of a volume has no entry for itself: where it is empty, nothing is found at once.
    const DWORD end = search != INVALID_HANDLE_VALUE ? ERROR_NO_MORE_FILES : ERROR_FILE_NOT_FOUND;
    const bool whole = !folder.isEmpty() && GetLastError() == end;
    if (search != INVALID_HANDLE_VALUE)
        FindClose(search);
    if (!whole && unreadable != nullptr)
        *unreadable = folder;
    return whole;
}
