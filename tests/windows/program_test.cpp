// What Windows reads in a program's file before and beside running it.
#include "support/staged_main.h"

#include <windows.h>

#include <cstring>

namespace {

QByteArray bytesOf(HMODULE file, HRSRC resource) {
    const auto *const bytes = static_cast<const char *>(LockResource(LoadResource(file, resource)));
    return QByteArray(bytes, int(SizeofResource(file, resource)));
}

// A number of two bytes at a place.
int numberAt(const QByteArray &bytes, int at) {
    return quint8(bytes.at(at)) | quint8(bytes.at(at + 1)) << 8;
}

} // namespace

class ProgramTest : public QObject {
    Q_OBJECT

private:
    HMODULE programFile = nullptr;

    static QString versionText(const QString &program, const QString &name);

private Q_SLOTS:
    void initTestCase();
    void itHasNoConsole();

    // One set of pictures, in the sizes that Windows draws at any scale of the screen.
    void itsIcon();
    void itsVersion_data();
    void itsVersion();
    void itsManifest();
    void theManifestOfTheTool();
};

QString ProgramTest::versionText(const QString &program, const QString &name) {
    const std::wstring path = program.toStdWString();
    QByteArray block(int(GetFileVersionInfoSizeW(path.c_str(), nullptr)), '\0');
    if (!GetFileVersionInfoW(path.c_str(), 0, DWORD(block.size()), block.data()))
        return QStringLiteral("(no version)");
    void *text = nullptr;
    UINT length = 0;
    const std::wstring key = ("\\StringFileInfo\\040904B0\\" + name).toStdWString();
    if (!VerQueryValueW(block.constData(), key.c_str(), &text, &length))
        return QStringLiteral("(none)");
    return QString::fromWCharArray(static_cast<const wchar_t *>(text));
}

void ProgramTest::initTestCase() {
    programFile = LoadLibraryExW(QStringLiteral(LAUNCHER).toStdWString().c_str(), nullptr,
                                 LOAD_LIBRARY_AS_DATAFILE);
    QVERIFY(programFile);
}

void ProgramTest::itHasNoConsole() {
    QFile file(QStringLiteral(LAUNCHER));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray head = file.read(4096);
    const int header = numberAt(head, 0x3C);
    QCOMPARE(head.mid(header, 4), QByteArray("PE\0\0", 4));
    QCOMPARE(numberAt(head, header + 4), 0x8664);    // x86-64
    QCOMPARE(numberAt(head, header + 24 + 68), 0x2); // IMAGE_SUBSYSTEM_WINDOWS_GUI
}

void ProgramTest::itsIcon() {
    const HRSRC group = FindResourceW(programFile, L"IDI_ICON1", MAKEINTRESOURCEW(14));
    QVERIFY(group);
    const QByteArray directory = bytesOf(programFile, group);
    QList<int> widths;
    for (int i = 0; i < numberAt(directory, 4); ++i)
        widths.append(quint8(directory.at(6 + i * 14))); // 0 stands for 256
    QCOMPARE(widths, QList<int>({16, 20, 24, 32, 40, 48, 64, 128, 0}));
}

void ProgramTest::itsVersion_data() {
    QTest::addColumn<QString>("program");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("text");
    const auto row = [](const char *what, const char *program, const char *name, const char *text) {
        QTest::newRow(what) << program << name << text;
    };
    row("whose it is", LAUNCHER, "CompanyName", "Quorvane");
    row("what it is", LAUNCHER, "FileDescription", "Quorvaner, the launcher of a production line");
    row("its name", LAUNCHER, "ProductName", "Quorvaner");
    row("its file's name", LAUNCHER, "OriginalFilename", "Quorvaner.exe");
    row("its version", LAUNCHER, "ProductVersion", QUORVANE_VERSION);
    row("its file's version", LAUNCHER, "FileVersion", QUORVANE_VERSION ".0");
    row("whose the tool is", TOOL, "CompanyName", "Quorvane");
    row("what the tool is", TOOL, "FileDescription",
        "quorvanectl, the command line beside the launcher");
    row("what the tool belongs to", TOOL, "ProductName", "Quorvaner");
    row("the tool's name", TOOL, "InternalName", "quorvanectl");
    row("the tool's file's name", TOOL, "OriginalFilename", "quorvanectl.exe");
    row("the tool's version", TOOL, "ProductVersion", QUORVANE_VERSION);
    row("the tool's file's version", TOOL, "FileVersion", QUORVANE_VERSION ".0");
}

void ProgramTest::itsVersion() {
    QFETCH(QString, program);
    QFETCH(QString, name);
    QTEST(versionText(program, name), "text");
}

void ProgramTest::itsManifest() {
    const HRSRC resource = FindResourceW(programFile, MAKEINTRESOURCEW(1), MAKEINTRESOURCEW(24));
    QVERIFY(resource);
    const QByteArray manifest = bytesOf(programFile, resource);
    QVERIFY(manifest.contains(">PerMonitorV2, PerMonitor</dpiAwareness>"));
    QVERIFY(manifest.contains(">true/pm</dpiAware>"));
    QVERIFY(manifest.contains("level=\"asInvoker\" uiAccess=\"false\""));
    QVERIFY(manifest.contains(">true</longPathAware>"));
    QVERIFY(!manifest.contains("<activeCodePage"));
    QCOMPARE(manifest.count("requestedExecutionLevel"), 1);
    QVERIFY(manifest.contains("name=\"Quorvane.Quorvaner\" version=\"" QUORVANE_VERSION ".0\""));
}

void ProgramTest::theManifestOfTheTool() {
    const HMODULE tool = LoadLibraryExW(QStringLiteral(TOOL).toStdWString().c_str(), nullptr,
                                        LOAD_LIBRARY_AS_DATAFILE);
    QVERIFY(tool);
    const HRSRC resource = FindResourceW(tool, MAKEINTRESOURCEW(1), MAKEINTRESOURCEW(24));
    QVERIFY(resource);
    const QByteArray manifest = bytesOf(tool, resource);
    QVERIFY(manifest.contains("level=\"asInvoker\" uiAccess=\"false\""));
    QVERIFY(manifest.contains(">true</longPathAware>"));
    QVERIFY(manifest.contains(">UTF-8</activeCodePage>"));
    // Else it would be told that each screen has 96 dots to an inch.
    QVERIFY(manifest.contains(">PerMonitorV2, PerMonitor</dpiAwareness>"));
    QVERIFY(manifest.contains(">true/pm</dpiAware>"));
    QVERIFY(manifest.contains("name=\"Quorvane.quorvanectl\" version=\"" QUORVANE_VERSION ".0\""));
    FreeLibrary(tool);
}

QUORVANE_TEST_MAIN(QCoreApplication, ProgramTest)
#include "program_test.moc"
