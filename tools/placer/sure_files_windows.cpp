// A running program and a loaded library can be renamed there, but neither removed nor written over.
#include "placer/sure_files.h"

#include "update/files/failure.h"
#include "update/files/folder_listing.h"
#include "update/files/long_name_windows.h"
#include "update/files/place_facts.h"
#include "update/files/read_only_mark_windows.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>

#include <io.h>
#include <windows.h>

namespace placer {
namespace {

constexpr DWORD pauseMs = 50;

bool mayPass(DWORD reason) {
    return reason == ERROR_SHARING_VIOLATION || reason == ERROR_LOCK_VIOLATION ||
           reason == ERROR_ACCESS_DENIED;
}

bool renameEntry(const QString &from, const QString &to, DWORD flags, QString *error) {
    const QDeadlineTimer patience(patienceMs);
    while (MoveFileExW(longName(from).c_str(), longName(to).c_str(),
                       flags | MOVEFILE_WRITE_THROUGH) == FALSE) {
        const DWORD reason = GetLastError();
        if (!mayPass(reason) || patience.hasExpired())
            return failAbout(QDir::toNativeSeparators(to), qt_error_string(int(reason)), error);
        Sleep(pauseMs);
    }
    return true;
}

bool removeEntry(const QFileInfo &info) {
    const std::wstring name = longName(info.filePath());
    const WithoutReadOnlyMark unmarked(info.filePath());
    // A junction is a folder for Windows; what it leads to is left alone.
    if ((info.isDir() ? RemoveDirectoryW(name.c_str()) : DeleteFileW(name.c_str())) != FALSE)
        return true;
    (void)MoveFileExW(name.c_str(), nullptr, MOVEFILE_DELAY_UNTIL_REBOOT); // often not allowed
    return false;
}

bool removeFolder(const QFileInfo &folder) {
    bool removed = true;
    QFileInfoList entries;
    if (!isLink(folder) && !listFolder(folder.filePath(), &entries))
        removed = false;
    for (const QFileInfo &entry : qAsConst(entries))
        removed = (entry.isDir() ? removeFolder(entry) : removeEntry(entry)) && removed;
    return removeEntry(folder) && removed;
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
    return !info.exists() || removeFolder(info);
}

} // namespace placer
