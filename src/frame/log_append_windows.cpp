#include "frame/log_append.h"

#include "frame/long_name_windows.h"

#include <QCryptographicHash>
#include <QFileInfo>

#include <windows.h>

#include <atomic>

namespace {

// Longer than any line takes; a launcher that is held up meanwhile must not hold up the others.
const DWORD longestWait = 5000; // ms

// One name for all launchers that write to the same file, in whichever session of Windows they run.
// It must stay as it is from one release to the next.
std::wstring turnName(const QString &path) {
    const QByteArray file = QFileInfo(path).absoluteFilePath().toLower().toUtf8();
    const QByteArray hash = QCryptographicHash::hash(file, QCryptographicHash::Sha256).toHex();
    return (QStringLiteral("Global\\Quorvane.log.") + QString::fromLatin1(hash)).toStdWString();
}

// The one that others made, an administrator among them, may only be waited for. Null on failure.
HANDLE openTurn(const std::wstring &name) {
    const HANDLE mutex = CreateMutexW(nullptr, FALSE, name.c_str());
    return mutex == nullptr && GetLastError() == ERROR_ACCESS_DENIED
               ? OpenMutexW(SYNCHRONIZE, FALSE, name.c_str())
               : mutex;
}

// Whether the last to ask for a turn waited in vain. Its owner hangs, or a debugger holds it: until the
// turn comes back nobody here waits for it again, or each line would cost a wait.
std::atomic<bool> waitedInVain{false};

// The right to write to one file, among the threads and processes that ask for it, from construction
// to destruction. Without the system's help, or after waiting in vain, one goes on without it.
class Turn {
public:
    explicit Turn(const QString &path)
        : mutex(openTurn(turnName(path))) {
        if (!mutex)
            return;
        const DWORD outcome = WaitForSingleObject(mutex, waitedInVain ? 0 : longestWait);
        // An abandoned one was held by a launcher that was killed; it is ours all the same.
        owned = outcome == WAIT_OBJECT_0 || outcome == WAIT_ABANDONED;
        waitedInVain = outcome == WAIT_TIMEOUT;
    }
    ~Turn() {
        if (owned)
            ReleaseMutex(mutex);
        if (mutex)
            CloseHandle(mutex);
    }
    Q_DISABLE_COPY(Turn)

private:
    HANDLE mutex = nullptr;
    bool owned = false;
};

} // namespace

// Qt's append seeks to the end and then writes, so two writers could overwrite each other.
// A handle with FILE_APPEND_DATA and without FILE_WRITE_DATA can only ever add at the end.
// https://learn.microsoft.com/windows/win32/fileio/file-access-rights-constants
// On a disk of Windows that is one step. Where another system keeps the file, or stands in for
// Windows, it may be two, and therefore writers take turns.
bool appendToFile(const QString &path, const QByteArray &text) {
    QByteArray bytes = text;
    bytes.replace("\n", "\r\n");
    const Turn turn(path);
    const HANDLE file = CreateFileW(longName(path).c_str(), FILE_APPEND_DATA,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return false;
    DWORD written = 0;
    const BOOL done = WriteFile(file, bytes.constData(), DWORD(bytes.size()), &written, nullptr);
    CloseHandle(file);
    return done != FALSE && written == DWORD(bytes.size());
}
