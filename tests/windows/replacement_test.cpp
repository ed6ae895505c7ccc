// A project's folder that Windows would let nobody remove, in whole or in part, is seen beforehand; one
// that only looks so is replaced. And by whatever name it goes, what holds the package stays.
#include "support/file_tree.h"
#include "support/staged_main.h"
#include "update/files/file_operations.h"

#include <windows.h>

#include <aclapi.h>
#include <sddl.h>

#include <memory>

using support::FileTree;

namespace {

std::wstring native(const QString &path) {
    return QDir::toNativeSeparators(path).toStdWString();
}

void addAttributes(const QString &path, DWORD more) {
    const DWORD before = GetFileAttributesW(native(path).c_str());
    if (SetFileAttributesW(native(path).c_str(), before | more) == 0)
        qFatal("cannot mark %s", qPrintable(path));
}

bool isMarkedReadOnly(const QString &path) {
    return (GetFileAttributesW(native(path).c_str()) & FILE_ATTRIBUTE_READONLY) != 0;
}

bool setRights(const QString &path, const wchar_t *rights) {
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    if (ConvertStringSecurityDescriptorToSecurityDescriptorW(rights, SDDL_REVISION_1, &descriptor,
                                                             nullptr) == 0)
        return false;
    const BOOL done = SetFileSecurityW(
        native(path).c_str(), DACL_SECURITY_INFORMATION | PROTECTED_DACL_SECURITY_INFORMATION,
        descriptor);
    LocalFree(descriptor);
    return done != FALSE;
}

// A handle that shares the file for these uses alone.
class Holder {
public:
    Holder(const QString &path, DWORD shared)
        : file(CreateFileW(native(path).c_str(), GENERIC_READ, shared, nullptr, OPEN_EXISTING,
                           FILE_ATTRIBUTE_NORMAL, nullptr)) {
        if (file == INVALID_HANDLE_VALUE)
            qFatal("cannot hold %s", qPrintable(path));
    }
    ~Holder() { CloseHandle(file); }
    Q_DISABLE_COPY(Holder)

private:
    HANDLE file;
};

QString ownLibrary() {
    std::wstring path(MAX_PATH, L'\0');
    path.resize(GetModuleFileNameW(GetModuleHandleW(L"libgcc_s_seh-1.dll"), path.data(), MAX_PATH));
    return QString::fromStdWString(path);
}

QString shortName(const QString &path) {
    std::wstring name(MAX_PATH, L'\0');
    name.resize(GetShortPathNameW(native(path).c_str(), name.data(), MAX_PATH));
    return QDir::fromNativeSeparators(QString::fromStdWString(name));
}

} // namespace

class ReplacementTest : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> folder;
    FileTree project;

    QString path(const QString &name) const { return folder->filePath(name); }
    QString replace(const QString &target);
    void staysWhole(const QString &error);

private Q_SLOTS:
    void init();
    void aProgramThatRuns_data();
    void aProgramThatRuns();
    void aLibraryThatIsLoaded_data();
    void aLibraryThatIsLoaded();
    void marksAreNoHindrance_data();
    void marksAreNoHindrance();
    void aRightThatIsMissing_data();
    void aRightThatIsMissing();
    void aFileOfThePackageThatCannotBeWaitedFor();
    void aMarkedFileIsWaitedForAndKeepsItsMark();
    void otherNamesOfWhatHoldsThePackage_data();
    void otherNamesOfWhatHoldsThePackage();
    void otherNamesOfWhatHoldsTheProgram_data();
    void otherNamesOfWhatHoldsTheProgram();
};

void ReplacementTest::init() {
    folder = std::make_unique<QTemporaryDir>();
    project = {{"line.yslib", "old"}, {"data/a.csv", "old"}, {"empty/", ""}};
    support::writeTree(path("line"), project);
    support::writeTree(path("new"), {{"line.yslib", "new"}});
}

// The error; null after a success.
QString ReplacementTest::replace(const QString &target) {
    QString error;
    const bool replaced = replaceDirectory(path("new"), target, {}, path("backup"), &error);
    return replaced ? QString() : error;
}

void ReplacementTest::staysWhole(const QString &error) {
    QCOMPARE(error, "unable to remove directory: " + path("line"));
    QCOMPARE(support::readTree(path("line")), project);
    QCOMPARE(support::readTree(path("new")), FileTree({{"line.yslib", "new"}}));
    QVERIFY(!QFileInfo::exists(path("backup")));
}

void ReplacementTest::aProgramThatRuns_data() {
    QTest::addColumn<DWORD>("mark");
    QTest::newRow("plain") << DWORD(FILE_ATTRIBUTE_NORMAL);
    QTest::newRow("marked as read-only") << DWORD(FILE_ATTRIBUTE_READONLY);
}

void ReplacementTest::aProgramThatRuns() {
    QFETCH(DWORD, mark);
    const QString program = path("line/tools/tool.exe");
    QVERIFY(QDir().mkpath(path("line/tools")));
    QVERIFY(QFile::copy(QStringLiteral(WAITING_PROGRAM), program));
    addAttributes(program, mark);
    support::writeTree(path("line/tools"), {{"LineRunner.plan", "print 1 wait"}});
    QProcess process;
    process.setWorkingDirectory(folder->path());
    process.start(program, QStringList());
    QVERIFY2(process.waitForReadyRead(60000), qPrintable(process.errorString()));
    project = support::readTree(path("line"));
    const QString whileItRuns = replace(path("line"));
    staysWhole(whileItRuns);
    QCOMPARE(isMarkedReadOnly(program), mark == FILE_ATTRIBUTE_READONLY);
    support::writeTree(path("line/tools"), {{"LineRunner.go", ""}});
    QVERIFY(process.waitForFinished(60000));
    // Windows may hold the file for a moment more.
    QString error = whileItRuns;
    QTRY_VERIFY2_WITH_TIMEOUT(error.isNull() || (error = replace(path("line"))).isNull(),
                              qPrintable(error), 10000);
    QCOMPARE(support::readTree(path("line")), FileTree({{"line.yslib", "new"}}));
}

void ReplacementTest::aLibraryThatIsLoaded_data() {
    aProgramThatRuns_data();
}

void ReplacementTest::aLibraryThatIsLoaded() {
    QFETCH(DWORD, mark);
    const QString library = path("line/plugins/operator.dll");
    QVERIFY(QDir().mkpath(path("line/plugins")));
    QVERIFY(QFile::copy(ownLibrary(), library));
    addAttributes(library, mark);
    project = support::readTree(path("line"));
    const HMODULE loaded = LoadLibraryW(native(library).c_str());
    QVERIFY(loaded);
    const QString whileItIsLoaded = replace(path("line"));
    staysWhole(whileItIsLoaded);
    QCOMPARE(isMarkedReadOnly(library), mark == FILE_ATTRIBUTE_READONLY);
    QVERIFY(FreeLibrary(loaded));
    QCOMPARE(replace(path("line")), QString());
    QCOMPARE(support::readTree(path("line")), FileTree({{"line.yslib", "new"}}));
}

void ReplacementTest::marksAreNoHindrance_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<DWORD>("marks");
    const DWORD readOnly = FILE_ATTRIBUTE_READONLY;
    const DWORD hidden = readOnly | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM;
    QTest::newRow("a read-only file") << "line/data/a.csv" << readOnly;
    QTest::newRow("a hidden one of the system") << "line/data/a.csv" << hidden;
    QTest::newRow("a read-only folder") << "line/data" << readOnly;
    QTest::newRow("an empty one") << "line/empty" << readOnly;
    QTest::newRow("a hidden folder of the system") << "line/data" << hidden;
    QTest::newRow("the project's folder") << "line" << readOnly;
}

void ReplacementTest::marksAreNoHindrance() {
    QFETCH(QString, name);
    QFETCH(DWORD, marks);
    addAttributes(path(name), marks);
    QCOMPARE(replace(path("line")), QString());
    QCOMPARE(support::readTree(path("line")), FileTree({{"line.yslib", "new"}}));
    QVERIFY(!QFileInfo::exists(path("backup")));
}

void ReplacementTest::aRightThatIsMissing_data() {
    QTest::addColumn<QString>("name");
    QTest::newRow("to remove a file") << "line/data/a.csv";
    QTest::newRow("to remove a folder") << "line/data";
}

void ReplacementTest::aRightThatIsMissing() {
    QFETCH(QString, name);
    const QString above = QFileInfo(path(name)).path();
    // Neither by a right on the entry nor by one on the folder that it lies in.
    QVERIFY(setRights(path(name), L"D:P(D;;SD;;;WD)(A;;FA;;;WD)"));
    QVERIFY(setRights(above, L"D:P(D;;DC;;;WD)(A;;FA;;;WD)"));
    const HANDLE handle =
        CreateFileW(native(path(name)).c_str(), DELETE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                    OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    const bool isKeptOut = handle == INVALID_HANDLE_VALUE && GetLastError() == ERROR_ACCESS_DENIED;
    CloseHandle(handle);
    const QString error = isKeptOut ? replace(path("line")) : QString();
    QVERIFY(setRights(above, L"D:P(A;OICI;FA;;;WD)"));
    QVERIFY(setRights(path(name), L"D:P(A;OICI;FA;;;WD)"));
    if (!isKeptOut)
        QSKIP("no such rights here: Wine knows those of Linux alone");
    staysWhole(error);
}

// Its file cannot be opened for writing, as is needed to wait until it is on the disk.
void ReplacementTest::aFileOfThePackageThatCannotBeWaitedFor() {
    support::writeTree(path("new"), {{"data/b.csv", "new"}});
    {
        const Holder holder(path("new/data/b.csv"), FILE_SHARE_READ | FILE_SHARE_DELETE);
        QCOMPARE(replace(path("line")), "unable to copy file: " + path("new"));
    }
    QCOMPARE(support::readTree(path("line")), project);
    QVERIFY(!QFileInfo::exists(path("backup")));
    QCOMPARE(replace(path("line")), QString());
}

void ReplacementTest::aMarkedFileIsWaitedForAndKeepsItsMark() {
    addAttributes(path("new/line.yslib"), FILE_ATTRIBUTE_READONLY);
    QCOMPARE(replace(path("line")), QString());
    QVERIFY(isMarkedReadOnly(path("line/line.yslib")));
}

void ReplacementTest::otherNamesOfWhatHoldsThePackage_data() {
    QTest::addColumn<QString>("name"); // %1: the folder above as a short name
    QTest::newRow("in capitals") << "BASE/HOLDING FOLDER";
    QTest::newRow("in small letters") << "BASE/holding folder";
    QTest::newRow("with a slash behind it") << "BASE/HOLDING FOLDER/";
    QTest::newRow("a short name") << "SHORT";
}

void ReplacementTest::otherNamesOfWhatHoldsThePackage() {
    QFETCH(QString, name);
    support::writeTree(folder->path(),
                       {{"file", ""}, {"Holding Folder/new/a", ""}, {"Holding Folder/kept", ""}});
    const FileTree before = support::readTree(folder->path());
    const QString target =
        name.replace("BASE", folder->path()).replace("SHORT", shortName(path("Holding Folder")));
    QVERIFY(QFileInfo(target).isDir());
    QVERIFY(QDir::cleanPath(target) != path("Holding Folder"));
    // Were it not refused, the backup could not be made: nothing would be lost.
    QString error;
    QVERIFY(!replaceDirectory(path("Holding Folder/new"), target, {}, path("file/backup"), &error));
    QCOMPARE(error, "unable to remove directory: " + target);
    QCOMPARE(support::readTree(folder->path()), before);
}

void ReplacementTest::otherNamesOfWhatHoldsTheProgram_data() {
    QTest::addColumn<QString>("target");
    const QString program = QCoreApplication::applicationDirPath();
    QTest::newRow("its folder in capitals") << program.toUpper();
    QTest::newRow("its folder by a short name") << shortName(program);
    QTest::newRow("the folder above in capitals") << support::stageRoot().toUpper();
    QTest::newRow("the folder above by a short name") << shortName(support::stageRoot());
}

void ReplacementTest::otherNamesOfWhatHoldsTheProgram() {
    QFETCH(QString, target);
    support::writeTree(folder->path(), {{"file", ""}});
    QVERIFY(QFileInfo(target).isDir());
    QString error;
    QVERIFY(!replaceDirectory(path("new"), target, {}, path("file/backup"), &error));
    QCOMPARE(error, "unable to remove directory: " + target);
}

QUORVANE_TEST_MAIN(QCoreApplication, ReplacementTest)
#include "replacement_test.moc"
