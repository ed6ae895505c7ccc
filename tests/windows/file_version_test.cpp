// Versions in executables: the launcher's own, of one without, and what is no executable.
#include "support/staged_main.h"
#include "update/files/file_version.h"

#include <windows.h>

class FileVersionTest : public QObject {
    Q_OBJECT

private:
    QTemporaryDir folder;

    // A program without a version, and one put into it by hand; the path.
    QString programWith(const QString &name, DWORD high, DWORD low);

private Q_SLOTS:
    void theLauncherItself();
    void aProgramWithoutAVersion();
    void theFourNumbers();
    void aPathOfAnyLetters();
    void whatHasNoVersion();
};

QString FileVersionTest::programWith(const QString &name, DWORD high, DWORD low) {
    const QString path = folder.filePath(name);
    if (!QFile::copy(QStringLiteral(BARE_PROGRAM), path))
        qFatal("cannot copy the program");
    // VS_VERSIONINFO: its lengths and kind, its key, padding to four bytes, the fixed part.
    struct {
        WORD length = sizeof(*this);
        WORD valueLength = sizeof(VS_FIXEDFILEINFO);
        WORD kind = 0;
        WCHAR key[16] = L"VS_VERSION_INFO";
        WORD padding = 0;
        VS_FIXEDFILEINFO info{};
    } version;
    version.info.dwSignature = VS_FFI_SIGNATURE;
    version.info.dwStrucVersion = 0x10000;
    version.info.dwFileVersionMS = high;
    version.info.dwFileVersionLS = low;
    const HANDLE update = BeginUpdateResourceW(path.toStdWString().c_str(), FALSE);
    if (!UpdateResourceW(update, MAKEINTRESOURCEW(16), MAKEINTRESOURCEW(1), 0x409, &version,
                         sizeof version) ||
        !EndUpdateResourceW(update, FALSE))
        qFatal("cannot write the version");
    return path;
}

void FileVersionTest::theLauncherItself() {
    QCOMPARE(fileVersionText(QStringLiteral(LAUNCHER)), QStringLiteral(QUORVANE_VERSION ".0"));
}

void FileVersionTest::aProgramWithoutAVersion() {
    QCOMPARE(fileVersionText(QStringLiteral(BARE_PROGRAM)), QString());
}

void FileVersionTest::theFourNumbers() {
    QCOMPARE(fileVersionText(programWith("a.exe", 0x00010002, 0x00030004)),
             QStringLiteral("1.2.3.4"));
    QCOMPARE(fileVersionText(programWith("b.exe", 0xFFFF0000, 0x8000FFFF)),
             QStringLiteral("65535.0.32768.65535"));
    QCOMPARE(fileVersionText(programWith("c.exe", 0, 0)), QStringLiteral("0.0.0.0"));
}

void FileVersionTest::aPathOfAnyLetters() {
    QCOMPARE(fileVersionText(programWith(QStringLiteral("产线 3 & it's.exe"), 0x00070000, 1)),
             QStringLiteral("7.0.0.1"));
}

void FileVersionTest::whatHasNoVersion() {
    QCOMPARE(fileVersionText(folder.filePath("missing.exe")), QString());
    QCOMPARE(fileVersionText(folder.path()), QString());
    QCOMPARE(fileVersionText(QString()), QString());
    QFile text(folder.filePath("text.exe"));
    QVERIFY(text.open(QIODevice::WriteOnly));
    text.write("MZ, but no program");
    text.close();
    QCOMPARE(fileVersionText(text.fileName()), QString());
}

QUORVANE_TEST_MAIN(QCoreApplication, FileVersionTest)
#include "file_version_test.moc"
