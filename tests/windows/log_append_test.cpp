// The turns that writers of one log take, and what becomes of a line when another does not give its
// turn back.
#include "frame/log_append.h"

#include "support/staged_main.h"

#include <QCryptographicHash>
#include <QElapsedTimer>

#include <windows.h>

#include <sddl.h>

#include <string>
#include <thread>

namespace {

QByteArray bytesOf(const QString &path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// The name that launchers of all releases agree on.
std::wstring turnName(const QString &path) {
    const QByteArray hash =
        QCryptographicHash::hash(path.toLower().toUtf8(), QCryptographicHash::Sha256);
    return ("Global\\Quorvane.log." + QString::fromLatin1(hash.toHex())).toStdWString();
}

// Handles are numbered in steps of four, and the lowest free number is the next.
quintptr nextHandle() {
    const HANDLE handle = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    CloseHandle(handle);
    return reinterpret_cast<quintptr>(handle);
}

// How long a line takes that another thread appends, in milliseconds; -1 if it is lost.
qint64 timeOfALine(const QString &path) {
    qint64 time = -1;
    std::thread([&] {
        QElapsedTimer timer;
        timer.start();
        if (appendToFile(path, "one\n"))
            time = timer.elapsed();
    }).join();
    return time;
}

// What another thread finds that asks for the turn without waiting, and gives back what it got.
DWORD askForTurn(HANDLE turn) {
    DWORD outcome = WAIT_FAILED;
    std::thread([&] {
        outcome = WaitForSingleObject(turn, 0);
        if (outcome != WAIT_TIMEOUT)
            ReleaseMutex(turn);
    }).join();
    return outcome;
}

} // namespace

class LogAppendTest : public QObject {
    Q_OBJECT

private:
    QTemporaryDir folder;
    QString logPath;
    HANDLE myTurn = nullptr;

private Q_SLOTS:
    void init();
    void cleanup() { CloseHandle(myTurn); }

    void theTurnIsGivenBack();
    void theTurnIsTheSameHoweverThePathIsWritten();
    void aTurnThatItsOwnerTookToTheGraveIsTaken();

    // After the longest wait, and without taking the turn from its owner.
    void aTurnThatIsNotGivenBackCostsNoLine();

    // Its owner is suspended, for example. Once it has come back it is waited for as before.
    void aTurnThatIsNotGivenBackCostsOneWait();

    // Under the turn's name lies something that is no turn.
    void aNameThatIsTakenCostsNoLine();

    // Its owner is an administrator, and others may do nothing with it but wait.
    void aTurnWithFewRightsIsWaitedFor();
    void noHandleIsKept();
};

void LogAppendTest::init() {
    logPath = folder.filePath("Lines.log");
    QFile::remove(logPath);
    myTurn = CreateMutexW(nullptr, FALSE, turnName(logPath).c_str());
    QVERIFY(myTurn);
}

void LogAppendTest::theTurnIsGivenBack() {
    QVERIFY(appendToFile(logPath, "one\n"));
    QCOMPARE(askForTurn(myTurn), DWORD(WAIT_OBJECT_0));
    QVERIFY(!appendToFile(folder.filePath("none/Lines.log"), "lost\n"));
    QCOMPARE(askForTurn(myTurn), DWORD(WAIT_OBJECT_0));
}

void LogAppendTest::theTurnIsTheSameHoweverThePathIsWritten() {
    std::thread([&] {
        WaitForSingleObject(myTurn, INFINITE); // and leaves it abandoned
    }).join();
    QVERIFY(appendToFile(logPath.toUpper().replace('/', '\\'), "one\n"));
    QCOMPARE(askForTurn(myTurn), DWORD(WAIT_OBJECT_0));
}

void LogAppendTest::aTurnThatItsOwnerTookToTheGraveIsTaken() {
    std::thread([&] { WaitForSingleObject(myTurn, INFINITE); }).join();
    QVERIFY(appendToFile(logPath, "one\n"));
    QCOMPARE(bytesOf(logPath), QByteArray("one\r\n"));
    QCOMPARE(askForTurn(myTurn), DWORD(WAIT_OBJECT_0)); // no longer abandoned
}

void LogAppendTest::aTurnThatIsNotGivenBackCostsNoLine() {
    QCOMPARE(WaitForSingleObject(myTurn, INFINITE), DWORD(WAIT_OBJECT_0));
    bool appended = false;
    std::thread([&] { appended = appendToFile(logPath, "one\n"); }).join();
    QVERIFY(appended);
    QCOMPARE(bytesOf(logPath), QByteArray("one\r\n"));
    QCOMPARE(askForTurn(myTurn), DWORD(WAIT_TIMEOUT));
    QVERIFY(ReleaseMutex(myTurn));
    QVERIFY(timeOfALine(logPath) >= 0); // for the tests to come the turn has come back
}

void LogAppendTest::aTurnThatIsNotGivenBackCostsOneWait() {
    constexpr qint64 wait = 5000; // ms
    QCOMPARE(WaitForSingleObject(myTurn, INFINITE), DWORD(WAIT_OBJECT_0));
    QVERIFY(timeOfALine(logPath) >= wait - 100); // the clocks differ by a tick or two
    qint64 more = 0;
    for (int i = 0; i < 20; ++i)
        more += timeOfALine(logPath);
    QVERIFY2(more < wait, QByteArray::number(more).constData());
    QVERIFY(ReleaseMutex(myTurn));
    QVERIFY(timeOfALine(logPath) >= 0);
    QCOMPARE(WaitForSingleObject(myTurn, INFINITE), DWORD(WAIT_OBJECT_0));
    QVERIFY(timeOfALine(logPath) >= wait - 100);
    QVERIFY(ReleaseMutex(myTurn));
    QCOMPARE(bytesOf(logPath), QByteArray("one\r\n").repeated(23));
}

void LogAppendTest::aNameThatIsTakenCostsNoLine() {
    const QString path = folder.filePath("taken.log");
    const HANDLE taken = CreateEventW(nullptr, TRUE, FALSE, turnName(path).c_str());
    QVERIFY(taken);
    QVERIFY(appendToFile(path, "one\n"));
    QCOMPARE(bytesOf(path), QByteArray("one\r\n"));
    CloseHandle(taken);
}

void LogAppendTest::aTurnWithFewRightsIsWaitedFor() {
    const QString path = folder.filePath("few rights.log");
    PSECURITY_DESCRIPTOR few = nullptr;
    QVERIFY(ConvertStringSecurityDescriptorToSecurityDescriptorW(L"D:(A;;0x100000;;;WD)",
                                                                 SDDL_REVISION_1, &few, nullptr));
    SECURITY_ATTRIBUTES attributes{sizeof attributes, few, FALSE};
    const HANDLE turn = CreateMutexW(&attributes, TRUE, turnName(path).c_str());
    LocalFree(few);
    QVERIFY(turn);
    const HANDLE all = CreateMutexW(nullptr, FALSE, turnName(path).c_str());
    if (all != nullptr)
        CloseHandle(all);
    QVERIFY(timeOfALine(logPath) >= 0); // the last wait was not in vain
    const qint64 time = timeOfALine(path);
    ReleaseMutex(turn);
    QVERIFY(timeOfALine(path) >= 0); // for the tests to come the turn has come back
    CloseHandle(turn);
    if (all != nullptr)
        QSKIP("no such rights here");
    QVERIFY2(time >= 4900, QByteArray::number(time).constData());
}

void LogAppendTest::noHandleIsKept() {
    QVERIFY(appendToFile(logPath, "one\n"));
    const quintptr before = nextHandle();
    for (int i = 0; i < 50; ++i)
        QVERIFY(appendToFile(logPath, "one\n"));
    QVERIFY(nextHandle() < before + 50);
    for (int i = 0; i < 50; ++i)
        QVERIFY(!appendToFile(folder.filePath("none/Lines.log"), "lost\n"));
    QVERIFY(nextHandle() < before + 50);
}

QUORVANE_TEST_MAIN(QCoreApplication, LogAppendTest)
#include "log_append_test.moc"
