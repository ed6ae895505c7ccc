// Where the file system knows locks, the system holds one for the process as long as it lives. Where it
// knows none, the text of the file tells: the number and the name of the process, and the host, the
// machine and its start, a line each.
#include "update/files/left_lock.h"

#include <QByteArrayList>
#include <QFile>
#include <QFileInfo>
#include <QSysInfo>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

namespace {

constexpr int longestText = 4096; // bytes
constexpr int longestComm = 15;   // bytes of a process's name that the system keeps

QByteArray textOf(const QString &path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.read(longestText) : QByteArray();
}

bool isOfThisMachine(const QByteArrayList &lines) {
    const QByteArray machine = QSysInfo::machineUniqueId();
    const QByteArray left = lines.value(3);
    if (!machine.isEmpty() && !left.isEmpty())
        return left == machine;
    return lines.at(2).isEmpty() || QString::fromUtf8(lines.at(2)) == QSysInfo::machineHostName();
}

// Another process may have the number by now. Of another user's only a short name can be read.
bool isCalled(qint64 process, const QByteArray &name) {
    const QString place = QStringLiteral("/proc/%1").arg(process);
    QByteArray program = QFile::encodeName(QFile::symLinkTarget(place + QLatin1String("/exe")));
    if (program.isEmpty()) {
        const QByteArray comm = textOf(place + QLatin1String("/comm")).trimmed();
        return comm.isEmpty() || comm == name.left(longestComm);
    }
    const QByteArray deleted = QByteArrayLiteral(" (deleted)");
    if (program.endsWith(deleted))
        program.chop(deleted.size());
    return program.mid(program.lastIndexOf('/') + 1) == name;
}

// What cannot be told counts as alive.
bool isGone(const QByteArray &text, bool textIsDue) {
    const QByteArrayList lines = text.split('\n');
    bool isNumber = false;
    const qint64 process = lines.first().toLongLong(&isNumber);
    if (lines.size() < 4 || !isNumber || process <= 0) // the last line ends too
        return textIsDue;
    if (!isOfThisMachine(lines))
        return false;
    const QByteArray start = lines.value(4);
    if (!start.isEmpty() && start != QSysInfo::bootUniqueId())
        return true;
    if (::kill(pid_t(process), 0) != 0 && errno == ESRCH)
        return true;
    return !lines.at(1).isEmpty() && !isCalled(process, lines.at(1));
}

// Without a lock two may judge at once, and the second would remove what the first has just made: so
// the file goes to a name of this process's first, and comes back if it is another one by now.
bool takeAway(const QString &path, const QByteArray &judged) {
    const QString aside = path + QStringLiteral(".%1").arg(::getpid());
    const QByteArray from = QFile::encodeName(path);
    const QByteArray to = QFile::encodeName(aside);
    if (::rename(from.constData(), to.constData()) != 0)
        return false;
    const bool isJudged = textOf(aside) == judged;
    if (isJudged || ::link(to.constData(), from.constData()) == 0 || errno == EEXIST)
        (void)::unlink(to.constData());
    else
        (void)::rename(to.constData(), from.constData()); // no hard links there
    return isJudged;
}

// Whoever waits for the lock of a removed file gets it in the end, when another lies at its name.
bool liesAt(int descriptor, const QByteArray &path) {
    struct stat held {};
    struct stat there {};
    return ::fstat(descriptor, &held) == 0 && ::lstat(path.constData(), &there) == 0 &&
           held.st_dev == there.st_dev && held.st_ino == there.st_ino;
}

// To read is enough on most file systems, and all that another user's file allows.
int openLock(const QByteArray &path) {
    constexpr int how = O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
    const int descriptor = ::open(path.constData(), O_RDWR | how);
    return descriptor >= 0 ? descriptor : ::open(path.constData(), O_RDONLY | how);
}

} // namespace

bool removeLeftLock(const QString &path, bool textIsDue) {
    const QByteArray name = QFile::encodeName(path);
    const int descriptor = openLock(name);
    if (descriptor < 0)
        return false;
    bool removed = false;
    if (::flock(descriptor, LOCK_EX | LOCK_NB) == 0) {
        removed = liesAt(descriptor, name) && ::unlink(name.constData()) == 0;
    } else if (errno != EWOULDBLOCK) {
        const QByteArray text = textOf(path);
        removed = isGone(text, textIsDue) && takeAway(path, text);
    }
    ::close(descriptor);
    return removed;
}

void showLock(const QString &path) {
    (void)QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup |
                                          QFile::ReadOther);
}
