// The turns that writers of one log take, and what becomes of a line when another does not give its
// turn back.
#include "frame/log_append.h"

#include "support/staged_main.h"

#include <QCryptographicHash>

#include <windows.h>

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
    QTemporaryDir m_folder;
    QString m_path;
    HANDLE m_turn = nullptr;

private slots:
    void init() {
        m_path = m_folder.filePath("Lines.log");
        QFile::remove(m_path);
        m_turn = CreateMutexW(nullptr, FALSE, turnName(m_path).c_str());
        QVERIFY(m_turn);
    }

    void cleanup() { CloseHandle(m_turn); }

    void theTurnIsGivenBack() {
        QVERIFY(appendToFile(m_path, "one\n"));
        QCOMPARE(askForTurn(m_turn), DWORD(WAIT_OBJECT_0));
        QVERIFY(!appendToFile(m_folder.filePath("none/Lines.log"), "lost\n"));
        QCOMPARE(askForTurn(m_turn), DWORD(WAIT_OBJECT_0));
    }

    void theTurnIsTheSameHoweverThePathIsWritten() {
        std::thread([&] {
            WaitForSingleObject(m_turn, INFINITE); // and leaves it abandoned
        }).join();
        QVERIFY(appendToFile(m_path.toUpper().replace('/', '\\'), "one\n"));
        QCOMPARE(askForTurn(m_turn), DWORD(WAIT_OBJECT_0));
    }

    void aTurnThatItsOwnerTookToTheGraveIsTaken() {
        std::thread([&] { WaitForSingleObject(m_turn, INFINITE); }).join();
        QVERIFY(appendToFile(m_path, "one\n"));
        QCOMPARE(bytesOf(m_path), QByteArray("one\r\n"));
        QCOMPARE(askForTurn(m_turn), DWORD(WAIT_OBJECT_0)); // no longer abandoned
    }

    // After the longest wait, and without taking the turn from its owner.
    void aTurnThatIsNotGivenBackCostsNoLine() {
        QCOMPARE(WaitForSingleObject(m_turn, INFINITE), DWORD(WAIT_OBJECT_0));
        bool appended = false;
        std::thread([&] { appended = appendToFile(m_path, "one\n"); }).join();
        QVERIFY(appended);
        QCOMPARE(bytesOf(m_path), QByteArray("one\r\n"));
        QCOMPARE(askForTurn(m_turn), DWORD(WAIT_TIMEOUT));
        QVERIFY(ReleaseMutex(m_turn));
    }

    // Under the turn's name lies something that is no turn.
    void aNameThatIsTakenCostsNoLine() {
        const QString path = m_folder.filePath("taken.log");
        const HANDLE taken = CreateEventW(nullptr, TRUE, FALSE, turnName(path).c_str());
        QVERIFY(taken);
        QVERIFY(appendToFile(path, "one\n"));
        QCOMPARE(bytesOf(path), QByteArray("one\r\n"));
        CloseHandle(taken);
    }

    void noHandleIsKept() {
        QVERIFY(appendToFile(m_path, "one\n"));
        const quintptr before = nextHandle();
        for (int i = 0; i < 50; ++i)
            QVERIFY(appendToFile(m_path, "one\n"));
        QVERIFY(nextHandle() < before + 50);
        for (int i = 0; i < 50; ++i)
            QVERIFY(!appendToFile(m_folder.filePath("none/Lines.log"), "lost\n"));
        QVERIFY(nextHandle() < before + 50);
    }
};

QUORVANE_TEST_MAIN(QCoreApplication, LogAppendTest)
#include "log_append_test.moc"
