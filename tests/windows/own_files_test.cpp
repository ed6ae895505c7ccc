// A private key is its owner's alone from the moment that it exists, and a passphrase comes from a handle.
#include "quorvanectl/keys/key_files.h"
#include "quorvanectl/keys/own_files.h"
#include "quorvanectl/keys/passphrase.h"
#include "support/file_tree.h"
#include "support/platform.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QTemporaryDir>
#include <QtTest>

#include <windows.h>

#include <aclapi.h>
#include <sddl.h>

#include <thread>

using ctl::Readers;

namespace {

// The owner ("O:…") or the list of rights ("D:…") of a file or folder.
QString securityOf(const QString &path, SECURITY_INFORMATION what) {
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    wchar_t *text = nullptr;
    if (GetNamedSecurityInfoW(QDir::toNativeSeparators(path).toStdWString().data(), SE_FILE_OBJECT,
                              what, nullptr, nullptr, nullptr, nullptr,
                              &descriptor) != ERROR_SUCCESS ||
        ConvertSecurityDescriptorToStringSecurityDescriptorW(descriptor, SDDL_REVISION_1, what,
                                                             &text, nullptr) == 0)
        return QStringLiteral("unknown");
    const QString told = QString::fromWCharArray(text);
    LocalFree(text);
    LocalFree(descriptor);
    return told;
}

// The rights on what this user owns, with "me" for this user. Wine adds the system itself, and forgets that
// nothing is inherited.
QString rightsOn(const QString &path) {
    const QString me = securityOf(path, OWNER_SECURITY_INFORMATION).mid(2);
    QString rights = securityOf(path, DACL_SECURITY_INFORMATION).replace(me, "me");
    if (support::underWine())
        rights.remove(QRegularExpression("\\(A;[A-Z]*;FA;;;SY\\)")).replace("D:(", "D:P(");
    return rights;
}

void giveRights(const QString &path, const wchar_t *sddl) {
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    if (ConvertStringSecurityDescriptorToSecurityDescriptorW(sddl, SDDL_REVISION_1, &descriptor,
                                                             nullptr) == 0 ||
        SetFileSecurityW(QDir::toNativeSeparators(path).toStdWString().c_str(),
                         DACL_SECURITY_INFORMATION, descriptor) == 0)
        qFatal("no rights for %s", qPrintable(path));
    LocalFree(descriptor);
}

// A pipe that holds these bytes and is closed behind them.
HANDLE pipeWith(const QByteArray &bytes) {
    HANDLE reading = nullptr;
    HANDLE writing = nullptr;
    DWORD written = 0;
    if (CreatePipe(&reading, &writing, nullptr, 65536) == 0 ||
        WriteFile(writing, bytes.constData(), DWORD(bytes.size()), &written, nullptr) == 0)
        qFatal("no pipe");
    CloseHandle(writing);
    return reading;
}

} // namespace

class OwnFilesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { folder.reset(new QTemporaryDir); }
    void aPrivateKeyIsItsOwnersAlone();
    void aFileThatIsThereStays();
    void aPlaceThatIsNone();
    void whoElseMayRead_data();
    void whoElseMayRead();
    void passphrasesFromAHandle_data();
    void passphrasesFromAHandle();
    void whatStandsBehindTheLineIsLeft();
    void aWriterThatWritesNothingIsStillThere();
    void noHandle();

private:
    QString path(const QString &name) const { return folder->filePath(name); }

    QScopedPointer<QTemporaryDir> folder;
};

void OwnFilesTest::aPrivateKeyIsItsOwnersAlone() {
    const ctl::KeyFiles files = ctl::makeKeyFiles(path("new/keys"), nullptr);
    QVERIFY2(files.ok, qPrintable(files.error));
    QCOMPARE(rightsOn(files.privatePath), QString("D:P(A;;FA;;;me)"));
    QCOMPARE(rightsOn(path("new/keys")), QString("D:P(A;OICI;FA;;;me)"));
    QVERIFY(!ctl::othersMayRead(files.privatePath));
}

void OwnFilesTest::aFileThatIsThereStays() {
    support::writeTree(folder->path(), {{"key", "precious"}});
    for (const Readers readers : {Readers::Owner, Readers::Everybody}) {
        QString error;
        QVERIFY(!ctl::writeNewFile(path("key"), "new", readers, &error));
        QVERIFY2(error.startsWith(path("key") + ": "), qPrintable(error));
    }
    QCOMPARE(support::readTree(folder->path()), support::FileTree({{"key", "precious"}}));
}

void OwnFilesTest::aPlaceThatIsNone() {
    QString error;
    QVERIFY(!ctl::writeNewFile(path("none/key"), "new", Readers::Owner, &error));
    QVERIFY2(error.startsWith(path("none/key") + ": "), qPrintable(error));
}

void OwnFilesTest::whoElseMayRead_data() {
    QTest::addColumn<QString>("rights");
    QTest::addColumn<bool>("others");
    QTest::newRow("everybody") << "D:P(A;;FA;;;WD)" << true;
    QTest::newRow("everybody, reading alone") << "D:P(A;;FR;;;WD)" << true;
    QTest::newRow("nobody") << "D:P" << false;
}

void OwnFilesTest::whoElseMayRead() {
    QFETCH(QString, rights);
    support::writeTree(folder->path(), {{"key", "a key"}});
    giveRights(path("key"), rights.toStdWString().c_str());
    QTEST(ctl::othersMayRead(path("key")), "others");
}

void OwnFilesTest::passphrasesFromAHandle_data() {
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("a line") << QByteArray("right one\n") << QByteArray("right one");
    QTest::newRow("a line of this system") << QByteArray("right\r\n") << QByteArray("right");
    QTest::newRow("without a line feed") << QByteArray("right") << QByteArray("right");
    QTest::newRow("a carriage return at the end") << QByteArray("right\r") << QByteArray("right\r");
    QTest::newRow("Chinese") << QByteArray("正确的马\r\n") << QByteArray("正确的马");
}

void OwnFilesTest::passphrasesFromAHandle() {
    QFETCH(QByteArray, bytes);
    const HANDLE pipe = pipeWith(bytes);
    ctl::Passphrase passphrase;
    QString error;
    QVERIFY2(passphrase.readFrom(int(reinterpret_cast<intptr_t>(pipe)), &error), qPrintable(error));
    CloseHandle(pipe);
    QTEST(QByteArray(passphrase.data(), passphrase.size()), "text");
    QCOMPARE(passphrase.data()[passphrase.size()], '\0');
}

void OwnFilesTest::whatStandsBehindTheLineIsLeft() {
    const HANDLE pipe = pipeWith("a\nb\n");
    const int number = int(reinterpret_cast<intptr_t>(pipe));
    ctl::Passphrase first;
    ctl::Passphrase second;
    QVERIFY(first.readFrom(number) && second.readFrom(number));
    CloseHandle(pipe);
    QCOMPARE(QByteArray(second.data()), QByteArray("b"));
}

// As some programs do before their first line. Wine passes such a write over, so that this is proved on Windows
// alone.
void OwnFilesTest::aWriterThatWritesNothingIsStillThere() {
    HANDLE reading = nullptr;
    HANDLE writing = nullptr;
    QVERIFY(CreatePipe(&reading, &writing, nullptr, 65536));
    std::thread writer([writing] {
        DWORD written = 0;
        (void)WriteFile(writing, "", 0, &written, nullptr);
        (void)WriteFile(writing, "right\n", 6, &written, nullptr);
        CloseHandle(writing);
    });
    ctl::Passphrase passphrase;
    QString error;
    const bool isRead = passphrase.readFrom(int(reinterpret_cast<intptr_t>(reading)), &error);
    writer.join();
    CloseHandle(reading);
    QVERIFY2(isRead, qPrintable(error));
    QCOMPARE(QByteArray(passphrase.data()), QByteArray("right"));
}

void OwnFilesTest::noHandle() {
    ctl::Passphrase passphrase;
    QString error;
    QVERIFY(!passphrase.readFrom(30000, &error));
    QVERIFY2(error.startsWith("cannot read the passphrase from descriptor 30000: "),
             qPrintable(error));
}

QUORVANE_TEST_MAIN(QCoreApplication, OwnFilesTest)
#include "own_files_test.moc"
