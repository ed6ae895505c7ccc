// Only an administrator may wait for a whole volume there, so files are waited for one by one.
#include "update/files/file_copy.h"

#include "update/files/folder_listing.h"
#include "update/files/passing_refusal_windows.h"
#include "update/files/patience.h"
#include "update/files/place_facts.h"
#include "update/files/read_only_mark_windows.h"

#include <QFile>

namespace {

// Beside all others who have it open; a new file may be in a scanner's hands, who lets nobody write to it.
HANDLE openForWriting(const QString &path, Patience *patience) {
    for (;;) {
        const HANDLE file = CreateFileW(longName(path).c_str(), GENERIC_WRITE,
                                        FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                        nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
        if (file != INVALID_HANDLE_VALUE || !isHeldByOthers(GetLastError()) || !patience->goesOn())
            return file;
    }
}

// The system asks for the right to write, which a file that is marked as read-only gives nobody.
bool flushFile(const QString &path, Patience *patience) {
    const WithoutReadOnlyMark unmarked(path);
    const HANDLE file = openForWriting(path, patience);
    if (file == INVALID_HANDLE_VALUE)
        return false;
    const bool flushed = FlushFileBuffers(file) != FALSE;
    CloseHandle(file);
    return flushed;
}

} // namespace

bool copyFileContent(const QString &source, const QString &destination) {
    return QFile::copy(source, destination);
}

bool flushFolder(const QString &folder) {
    QStringList folders{folder};
    Patience patience;
    for (int i = 0; i < folders.size(); ++i) {
        QFileInfoList entries;
        if (!listFolder(folders.at(i), &entries))
            return false;
        for (const QFileInfo &info : qAsConst(entries)) {
            if (isLink(info)) // what it leads to is not ours
                continue;
            if (info.isDir())
                folders.append(info.filePath());
            else if (!flushFile(info.filePath(), &patience))
                return false;
        }
    }
    return true;
}
