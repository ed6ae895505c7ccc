// A running program and a loaded library can be renamed there, but neither removed nor written over.
#include "placer/sure_files.h"

#include "frame/long_name_windows.h"
#include "update/files/failure.h"
#include "update/files/folder_listing.h"
#include "update/files/passing_refusal_windows.h"
#include "update/files/patience.h"
#include "update/files/place_facts.h"
#include "update/files/read_only_mark_windows.h"

#include <QDir>
#include <QFile>

#include <io.h>
#include <windows.h>

namespace placer {
namespace {

bool renameEntry(const QString &from, const QString &to, DWORD flags, QString *error) {
    Patience patience;
    while (MoveFileExW(longName(from).c_str(), longName(to).c_str(),
                       flags | MOVEFILE_WRITE_THROUGH) == FALSE) {
        const DWORD reason = GetLastError();
        if (!mayBeRenamedLater(reason) || !patience.goesOn())
            return failAbout(QDir::toNativeSeparators(to), qt_error_string(int(reason)), error);
    }
    return true;
}

// A file that was removed while somebody has it open stays in its folder until he closes it.
bool mayBeRemovedLater(DWORD reason) {
    return isHeldByOthers(reason) || reason == ERROR_DIR_NOT_EMPTY;
}

bool removeEntry(const QFileInfo &info, Patience *patience) {
    const std::wstring name = longName(info.filePath());
    const WithoutReadOnlyMark unmarked(info.filePath());
    do {
        // A junction is a folder for Windows; what it leads to is left alone.
        if ((info.isDir() ? RemoveDirectoryW(name.c_str()) : DeleteFileW(name.c_str())) != FALSE)
            return true;
    } while (mayBeRemovedLater(GetLastError()) && patience != nullptr && patience->goesOn());
    (void)MoveFileExW(name.c_str(), nullptr, MOVEFILE_DELAY_UNTIL_REBOOT); // often not allowed
    return false;
}

bool removeFolder(const QFileInfo &folder, Patience *patience) {
    bool removed = true;
    QFileInfoList entries;
    if (!isLink(folder) && !listFolder(folder.filePath(), &entries))
        removed = false;
    for (const QFileInfo &entry : qAsConst(entries))
        removed = (entry.isDir() ? removeFolder(entry, patience) : removeEntry(entry, patience)) &&
                  removed;
    // For what is known to stay nobody waits.
    return removeEntry(folder, removed ? patience : nullptr) && removed;
}

} // namespace

bool flushWritten(QFile &file) {
    // The handle belongs to the file and is not closed here.
    return FlushFileBuffers(reinterpret_cast<HANDLE>(_get_osfhandle(file.handle()))) != FALSE;
}

bool moveFile(const QString &from, const QString &to, QString *error) {
    return renameEntry(from, to, 0, error);
}

bool moveOver(const QString &from, const QString &to, QString *error) {
    const WithoutReadOnlyMark unmarked(to); // such a file is not replaced otherwise
    return renameEntry(from, to, MOVEFILE_REPLACE_EXISTING, error);
}

bool removeNowOrLater(const QString &folder) {
    const QFileInfo info(folder);
    Patience patience;
    return !info.exists() || removeFolder(info, &patience);
}

} // namespace placer
