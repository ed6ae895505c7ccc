#include "update/files/folder_listing.h"

#include "update/files/failure.h"

#include <filesystem>
#include <string>
#include <system_error>

bool listFolder(const QString &folder, QFileInfoList *entries, QString *unreadable) {
    namespace fs = std::filesystem;
    std::error_code failure;
    fs::directory_iterator entry(fs::u8path(folder.toUtf8().constData()), failure);
    while (!failure && entry != fs::directory_iterator()) {
        const std::string name = entry->path().u8string();
        const QString path = QString::fromUtf8(name.c_str());
        if (path.toUtf8() != name.c_str())
            return fail(path, unreadable);
        entries->append(QFileInfo(path));
        entry.increment(failure);
    }
    return !failure || fail(folder, unreadable);
}
