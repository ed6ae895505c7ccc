// Locks that a killed process has left, on file systems that know locks and on such that know none, and
// the wait for one that is held.
#include "update/files/work_lock.h"

#include "update/files/left_lock.h"

#include "support/file_tree.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QProcess>
#include <QSysInfo>
#include <QTemporaryDir>
#include <QtTest>

#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <dlfcn.h>
#include <fcntl.h>
#include <functional>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

bool fileSystemLocks = true;
bool hardLinks = true;
bool removals = true;
bool hidesProcesses = false;  // those of others
bool hidesMachine = false;    // has no number
QVector<qint64> waits;        // milliseconds
std::function<void()> onWait; // none: the time passes
std::function<void()> beforeLocking;
std::function<void()> beforeLooking; // whether a process is there
std::function<void()> afterRenaming;
std::function<void()> afterRemoving;

void callOnce(std::function<void()> &callback) {
    if (const auto called = std::exchange(callback, nullptr))
        called();
}

} // namespace

// A program's own functions come before those of the C library, for the libraries it uses too.
extern "C" int flock(int descriptor, int operation) {
    static const auto next = reinterpret_cast<decltype(&::flock)>(dlsym(RTLD_NEXT, "flock"));
    callOnce(beforeLocking);
    if (fileSystemLocks)
        return next(descriptor, operation);
    errno = ENOLCK;
    return -1;
}

extern "C" int kill(pid_t process, int number) noexcept {
    static const auto next = reinterpret_cast<decltype(&::kill)>(dlsym(RTLD_NEXT, "kill"));
    callOnce(beforeLooking);
    const int result = next(process, number);
    if (hidesProcesses)
        errno = EPERM;
    return hidesProcesses ? -1 : result;
}

extern "C" int link(const char *from, const char *to) noexcept {
    static const auto next = reinterpret_cast<decltype(&::link)>(dlsym(RTLD_NEXT, "link"));
    if (hardLinks)
        return next(from, to);
    errno = EPERM;
    return -1;
}

extern "C" int unlink(const char *path) noexcept {
    static const auto next = reinterpret_cast<decltype(&::unlink)>(dlsym(RTLD_NEXT, "unlink"));
    if (!removals) {
        errno = EACCES;
        return -1;
    }
    const int result = next(path);
    callOnce(afterRemoving);
    return result;
}

extern "C" int open64(const char *path, int flags, ...) {
    static const auto next = reinterpret_cast<decltype(&::open64)>(dlsym(RTLD_NEXT, "open64"));
    va_list more;
    va_start(more, flags);
    const mode_t mode = va_arg(more, mode_t);
    va_end(more);
    if (hidesMachine && std::strstr(path, "machine-id") != nullptr) {
        errno = ENOENT;
        return -1;
    }
    return next(path, flags, mode);
}

extern "C" int rename(const char *from, const char *to) noexcept {
    static const auto next = reinterpret_cast<decltype(&::rename)>(dlsym(RTLD_NEXT, "rename"));
    const int result = next(from, to);
    callOnce(afterRenaming);
    return result;
}

extern "C" int nanosleep(const timespec *time, timespec *left) {
    static const auto next =
        reinterpret_cast<decltype(&::nanosleep)>(dlsym(RTLD_NEXT, "nanosleep"));
    if (!onWait)
        return next(time, left);
    waits.append(qint64(time->tv_sec) * 1000 + time->tv_nsec / 1000000);
    onWait();
    return 0;
}

namespace {

struct Owner {
    qint64 process;
    QString name;
    QString host = QSysInfo::machineHostName();
    QByteArray machine = QSysInfo::machineUniqueId();
    QByteArray start = QSysInfo::bootUniqueId();
};

QByteArray textOf(const Owner &owner) {
    return QByteArray::number(owner.process) + '\n' + owner.name.toUtf8() + '\n' +
           owner.host.toUtf8() + '\n' + owner.machine + '\n' + owner.start + '\n';
}

// Runs until it is told to end, or has ended.
struct Process {
    QProcess process;
    qint64 id = 0;
    QString name;

    explicit Process(bool ends, const QString &program = "/bin/sh") {
        process.start(program, {"-c", "echo here; read go"});
        process.waitForReadyRead();
        id = process.processId();
        name = QFileInfo(QFile::symLinkTarget(QString("/proc/%1/exe").arg(id))).fileName();
        if (ends)
            end();
    }
    ~Process() { end(); }
    void end() {
        process.closeWriteChannel();
        process.waitForFinished();
    }
    Process(const Process &) = delete;
    Process &operator=(const Process &) = delete;
};

} // namespace

class WorkLockTest : public QObject {
    Q_OBJECT

private:
    QScopedPointer<QTemporaryDir> folder;

    [[nodiscard]] QString path() const { return folder->filePath("work.lock"); }
    [[nodiscard]] QStringList files() const { return QDir(folder->path()).entryList(QDir::Files); }

private Q_SLOTS:
    void init();
    void cleanup();
    void aLockThatWasLeft_data();
    void aLockThatWasLeft();
    void aLockOfAProcessWhoseProgramWasRemovedStays();
    void aLockOfAProcessThatIsHiddenStays();
    void aLockOfAMachineWithoutANumber_data();
    void aLockOfAMachineWithoutANumber();
    void aLockThatMayNotBeRemovedStays();
    void aLockThatAnotherTakesOnceItIsRemovedIsNotTaken();
    void aLockOfAnotherUsersProcess_data();
    void aLockOfAnotherUsersProcess();
    void aLockThatIsReplacedBeforeItIsLockedStays();
    void aLockThatGoesBeforeItIsLockedIsNotRemoved();
    void aLockThatGoesBeforeItIsJudgedIsNotRemoved_data();
    void aLockThatGoesBeforeItIsJudgedIsNotRemoved();
    void aLockThatIsReplacedWhileItIsJudgedStays_data();
    void aLockThatIsReplacedWhileItIsJudgedStays();
    void aLockThatIsMadeWhileAnotherIsPutBackStays();
    void aLockThatIsHeldIsNotTaken_data();
    void aLockThatIsHeldIsNotTaken();
    void everybodyMayReadALock();
    void aLockOfAnotherUserThatWasLeft();
    void aLockIsWaitedFor();
    void aLockIsTriedOnceMoreWhenTheTimeIsOver();
    void aCancelEndsTheWait();
    void withoutTimeToWaitALockIsTriedOnce();
    void aLockWithoutTextIsWaitedForWhereThereAreNoLocks();
    void aLockThatCannotBeWrittenIsNotWaitedFor();
};

void WorkLockTest::init() {
    folder.reset(new QTemporaryDir);
    waits.clear();
    onWait = nullptr;
}

void WorkLockTest::cleanup() {
    fileSystemLocks = true;
    hardLinks = true;
    removals = true;
    hidesProcesses = false;
    hidesMachine = false;
    onWait = nullptr;
    beforeLocking = nullptr;
    beforeLooking = nullptr;
    afterRenaming = nullptr;
    afterRemoving = nullptr;
}

void WorkLockTest::aLockThatWasLeft_data() {
    QTest::addColumn<bool>("locks");
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<bool>("taken");
    const Process ended(true);
    static const Process running(false);
    const auto row = [](const char *name, const Owner &owner, bool takenWithoutLocks) {
        QTest::addRow("%s", name) << true << textOf(owner) << true;
        QTest::addRow("%s, without locks", name) << false << textOf(owner) << takenWithoutLocks;
    };
    row("of a process that is gone", {ended.id, ended.name}, true);
    row("of a process that runs", {running.id, running.name}, false);
    row("whose number is another program's", {running.id, "Other"}, true);
    row("of an earlier start of this machine",
        {running.id, running.name, QSysInfo::machineHostName(), QSysInfo::machineUniqueId(), "-"},
        true);
    row("of another machine", {ended.id, ended.name, "other", "0123", "-"}, false);
    row("of this machine under another name", {ended.id, ended.name, "other"}, true);
    row("of another machine that does not tell its number", {ended.id, ended.name, "other", "", ""},
        false);
    row("of this machine, which did not tell its number",
        {ended.id, ended.name, QSysInfo::machineHostName(), "", ""}, true);
    row("of this machine, with neither its name nor its number", {ended.id, ended.name, "", "", ""},
        true);
    row("of a process without a name", {running.id, ""}, false);
    row("of no process", {0, "Other"}, false);
    QTest::newRow("without a text") << true << QByteArray() << true;
    QTest::newRow("without a text, without locks") << false << QByteArray() << false;
    QTest::newRow("with half a text, without locks") << false << QByteArray("12") << false;
    QTest::newRow("with another text, without locks")
        << false << QByteArray("a\nb\nc\nd\n") << false;
}

void WorkLockTest::aLockThatWasLeft() {
    QFETCH(bool, locks);
    QFETCH(QByteArray, text);
    QFETCH(bool, taken);
    support::writeTree(folder->path(), {{"work.lock", text}});
    fileSystemLocks = locks;
    {
        QLockFile lock(path());
        QCOMPARE(takeLock(lock, path()), taken);
        QCOMPARE(lock.isLocked(), taken);
    }
    QCOMPARE(files(), taken ? QStringList() : QStringList("work.lock"));
    if (!taken)
        QCOMPARE(support::readTree(folder->path()).value("work.lock"), text);
}

void WorkLockTest::aLockOfAProcessWhoseProgramWasRemovedStays() {
    const QString program = folder->filePath("Program");
    QVERIFY(QFile::copy("/bin/sh", program));
    const Process running(false, program);
    QVERIFY(QFile::remove(program));
    support::writeTree(folder->path(), {{"work.lock", textOf({running.id, "Program"})}});
    fileSystemLocks = false;
    QLockFile lock(path());
    QVERIFY(!takeLock(lock, path()));
    QCOMPARE(files(), QStringList("work.lock"));
}

// Of a process of another user's such a system does not even tell that it is gone.
void WorkLockTest::aLockOfAProcessThatIsHiddenStays() {
    const Process ended(true);
    support::writeTree(folder->path(), {{"work.lock", textOf({ended.id, ended.name})}});
    fileSystemLocks = false;
    hidesProcesses = true;
    QVERIFY(!removeLeftLock(path(), true));
    QCOMPARE(files(), QStringList("work.lock"));
}

void WorkLockTest::aLockOfAMachineWithoutANumber_data() {
    QTest::addColumn<QString>("host");
    QTest::addColumn<bool>("removed");
    QTest::newRow("of this host") << QSysInfo::machineHostName() << true;
    QTest::newRow("of another host") << "other" << false;
}

// The name alone tells then.
void WorkLockTest::aLockOfAMachineWithoutANumber() {
    QFETCH(QString, host);
    QFETCH(bool, removed);
    const Process ended(true);
    support::writeTree(folder->path(),
                       {{"work.lock", textOf({ended.id, ended.name, host, "0123"})}});
    fileSystemLocks = false;
    hidesMachine = true;
    QVERIFY(QSysInfo::machineUniqueId().isEmpty());
    QCOMPARE(removeLeftLock(path(), false), removed);
    QCOMPARE(files(), removed ? QStringList() : QStringList("work.lock"));
}

// Its folder is somebody else's.
void WorkLockTest::aLockThatMayNotBeRemovedStays() {
    support::writeTree(folder->path(), {{"work.lock", "left"}});
    removals = false;
    QVERIFY(!removeLeftLock(path(), false));
    QCOMPARE(files(), QStringList("work.lock"));
}

void WorkLockTest::aLockThatAnotherTakesOnceItIsRemovedIsNotTaken() {
    support::writeTree(folder->path(), {{"work.lock", "left"}});
    QLockFile another(path());
    afterRemoving = [&another] { QVERIFY(another.tryLock(0)); };
    QLockFile lock(path());
    QVERIFY(!takeLock(lock, path()));
    QVERIFY(another.isLocked());
    QCOMPARE(files(), QStringList("work.lock"));
}

void WorkLockTest::aLockOfAnotherUsersProcess_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("taken");
    QTest::newRow("the name is cut as the system cuts it") << "AProgramOfSomebodyElse" << false;
    QTest::newRow("another name") << "AnotherProgramOfSomebodyElse" << true;
}

// Of such a process the system tells no more than a short name.
void WorkLockTest::aLockOfAnotherUsersProcess() {
    QFETCH(QString, name);
    QFETCH(bool, taken);
    if (::geteuid() != 0)
        QSKIP("only root can be two users");
    const QTemporaryDir programs;
    const QString program = programs.filePath("AProgramOfSomebodyElse");
    QVERIFY(QFile::copy("/bin/sh", program));
    const Process running(false, program);
    support::writeTree(folder->path(), {{"work.lock", textOf({running.id, name})}});
    QVERIFY(QFile::setPermissions(path(), QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther));
    constexpr uid_t nobody = 65534;
    QCOMPARE(::chown(QFile::encodeName(folder->path()).constData(), nobody, nobody), 0);
    fileSystemLocks = false;
    QCOMPARE(::seteuid(nobody), 0);
    const bool isRemoved = removeLeftLock(path(), false);
    QCOMPARE(::seteuid(0), 0);
    QCOMPARE(isRemoved, taken);
    QCOMPARE(files(), taken ? QStringList() : QStringList("work.lock"));
}

void WorkLockTest::aLockThatIsReplacedBeforeItIsLockedStays() {
    support::writeTree(folder->path(), {{"work.lock", "left"}});
    beforeLocking = [this] {
        QFile::remove(path());
        support::writeTree(folder->path(), {{"work.lock", "another's"}});
    };
    QVERIFY(!removeLeftLock(path(), false));
    QCOMPARE(files(), QStringList("work.lock"));
    QCOMPARE(support::readTree(folder->path()).value("work.lock"), QByteArray("another's"));
}

void WorkLockTest::aLockThatGoesBeforeItIsLockedIsNotRemoved() {
    support::writeTree(folder->path(), {{"work.lock", "left"}});
    beforeLocking = [this] { QFile::remove(path()); };
    QVERIFY(!removeLeftLock(path(), false));
    QCOMPARE(files(), QStringList());
}

void WorkLockTest::aLockThatGoesBeforeItIsJudgedIsNotRemoved_data() {
    QTest::addColumn<bool>("textIsDue");
    QTest::newRow("at the first look") << false;
    QTest::newRow("when its text was due") << true;
}

void WorkLockTest::aLockThatGoesBeforeItIsJudgedIsNotRemoved() {
    QFETCH(bool, textIsDue);
    support::writeTree(folder->path(), {{"work.lock", "left"}});
    fileSystemLocks = false;
    beforeLocking = [this] { QFile::remove(path()); };
    QVERIFY(!removeLeftLock(path(), textIsDue));
    QCOMPARE(files(), QStringList());
}

void WorkLockTest::aLockThatIsReplacedWhileItIsJudgedStays_data() {
    QTest::addColumn<bool>("links");
    QTest::newRow("where the file system knows hard links") << true;
    QTest::newRow("where it knows none") << false;
}

void WorkLockTest::aLockThatIsReplacedWhileItIsJudgedStays() {
    QFETCH(bool, links);
    hardLinks = links;
    const Process ended(true);
    support::writeTree(folder->path(), {{"work.lock", textOf({ended.id, ended.name})}});
    fileSystemLocks = false;
    beforeLooking = [this] {
        QFile::remove(path());
        support::writeTree(folder->path(), {{"work.lock", "another's"}});
    };
    QVERIFY(!removeLeftLock(path(), false));
    QCOMPARE(files(), QStringList("work.lock"));
    QCOMPARE(support::readTree(folder->path()).value("work.lock"), QByteArray("another's"));
}

// The second one's file is aside when a third makes its own: both cannot have the name.
void WorkLockTest::aLockThatIsMadeWhileAnotherIsPutBackStays() {
    const Process ended(true);
    support::writeTree(folder->path(), {{"work.lock", textOf({ended.id, ended.name})}});
    fileSystemLocks = false;
    beforeLooking = [this] {
        QFile::remove(path());
        support::writeTree(folder->path(), {{"work.lock", "the second one's"}});
    };
    afterRenaming = [this] {
        support::writeTree(folder->path(), {{"work.lock", "the third one's"}});
    };
    QVERIFY(!removeLeftLock(path(), false));
    QCOMPARE(files(), QStringList("work.lock"));
    QCOMPARE(support::readTree(folder->path()).value("work.lock"), QByteArray("the third one's"));
}

void WorkLockTest::aLockThatIsHeldIsNotTaken_data() {
    QTest::addColumn<bool>("locks");
    QTest::newRow("where the file system knows locks") << true;
    QTest::newRow("where it knows none") << false;
}

void WorkLockTest::aLockThatIsHeldIsNotTaken() {
    QFETCH(bool, locks);
    fileSystemLocks = locks;
    QLockFile held(path());
    QVERIFY(takeLock(held, path()));
    QLockFile lock(path());
    QVERIFY(!takeLock(lock, path()));
    QCOMPARE(files(), QStringList("work.lock"));
    held.unlock();
    QVERIFY(takeLock(lock, path()));
}

void WorkLockTest::everybodyMayReadALock() {
    const mode_t before = ::umask(S_IRWXG | S_IRWXO);
    QLockFile lock(path());
    const bool isTaken = takeLock(lock, path());
    ::umask(before);
    QVERIFY(isTaken);
    QVERIFY(QFile::permissions(path()) & QFile::ReadOther);
}

void WorkLockTest::aLockOfAnotherUserThatWasLeft() {
    if (::geteuid() != 0)
        QSKIP("only root can leave a file of another user's");
    constexpr uid_t nobody = 65534;
    support::writeTree(folder->path(), {{"work.lock", ""}}); // root's
    QVERIFY(QFile::setPermissions(path(), QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther));
    QCOMPARE(::chown(QFile::encodeName(folder->path()).constData(), nobody, nobody), 0);
    QCOMPARE(::seteuid(nobody), 0);
    bool isTaken = false;
    {
        QLockFile lock(path());
        isTaken = takeLock(lock, path());
    }
    QCOMPARE(::seteuid(0), 0);
    QVERIFY(isTaken);
    QCOMPARE(files(), QStringList());
}

void WorkLockTest::aLockIsWaitedFor() {
    QLockFile other(path());
    QVERIFY(takeLock(other, path()));
    onWait = [&other] {
        if (waits.size() == 3)
            other.unlock();
    };
    QLockFile lock(path());
    QCOMPARE(int(waitForLock(lock, path(), {1000, 100}, nullptr)), int(LockOutcome::Taken));
    QCOMPARE(waits, QVector<qint64>(3, 100));
    QVERIFY(lock.isLocked());
}

void WorkLockTest::aLockIsTriedOnceMoreWhenTheTimeIsOver() {
    QLockFile other(path());
    QVERIFY(takeLock(other, path()));
    onWait = [] {};
    QLockFile lock(path());
    QCOMPARE(int(waitForLock(lock, path(), {1000, 50}, nullptr)), int(LockOutcome::Refused));
    QCOMPARE(waits, QVector<qint64>(20, 50));
    onWait = [&other] { other.unlock(); };
    QCOMPARE(int(waitForLock(lock, path(), {10, 10}, nullptr)), int(LockOutcome::Taken));
}

void WorkLockTest::aCancelEndsTheWait() {
    QLockFile other(path());
    QVERIFY(takeLock(other, path()));
    CancelFlag flag{0};
    onWait = [&flag] { flag = waits.size() == 2 ? 1 : 0; };
    QLockFile lock(path());
    QCOMPARE(int(waitForLock(lock, path(), {1000, 100}, &flag)), int(LockOutcome::Cancelled));
    QCOMPARE(waits, QVector<qint64>(2, 100));
}

void WorkLockTest::withoutTimeToWaitALockIsTriedOnce() {
    QLockFile other(path());
    QVERIFY(takeLock(other, path()));
    onWait = [] {};
    QLockFile lock(path());
    QCOMPARE(int(waitForLock(lock, path(), {0, 100}, nullptr)), int(LockOutcome::Refused));
    QCOMPARE(waits, QVector<qint64>());
}

// Its process may be about to write it, and has been killed if it never does.
void WorkLockTest::aLockWithoutTextIsWaitedForWhereThereAreNoLocks() {
    fileSystemLocks = false;
    support::writeTree(folder->path(), {{"work.lock", ""}});
    onWait = [] {};
    QLockFile lock(path());
    QCOMPARE(int(waitForLock(lock, path(), {500, 100}, nullptr)), int(LockOutcome::Taken));
    QCOMPARE(waits, QVector<qint64>(5, 100));
}

void WorkLockTest::aLockThatCannotBeWrittenIsNotWaitedFor() {
    onWait = [] {};
    const QString nowhere = folder->filePath("no/folder/work.lock");
    QLockFile lock(nowhere);
    QCOMPARE(int(waitForLock(lock, nowhere, {500, 100}, nullptr)), int(LockOutcome::Impossible));
    QCOMPARE(waits, QVector<qint64>());
}

QTEST_GUILESS_MAIN(WorkLockTest)
#include "work_lock_test.moc"
