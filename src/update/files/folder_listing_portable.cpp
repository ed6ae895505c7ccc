#include "update/files/folder_listing.h"

#include "update/files/failure.h"

#include <filesystem>
#include <string>
#include <system_error>

bool listFolder(const QString &folder, QFileInfoList *entries, QString *unreadable) {
    namespace fs = std::filesystem;
    QString unseen;
    std::error_code failure;
    fs::directory_iterator entry(fs::u8path(folder.toUtf8().constData()), failure);
    while (!failure && entry != fs::directory_iterator()) {
        const std::string name = entry->path().u8string();
        const QString path = QString::fromUtf8(name.c_str());
        if (path.toUtf8() == name.c_str())
            entries->append(QFileInfo(path));
        else if (unseen.isNull())
            unseen = path;
        entry.increment(failure);
    }
    if (failure)
        unseen = folder;
    return unseen.isNull() || fail(unseen, unreadable);
}
