// What PowerShell is called with, and what is made of its answers, by a stand-in that is found before
// it: in the program's folder, and below a Windows folder of the test's own.
#include "support/staged_main.h"
#include "update/files/zip_extract.h"
#include "update/http_fetch.h"
#include "update/https_fallback.h"

#include <QElapsedTimer>
#include <QRegularExpression>

#include <windows.h>

namespace {

const QUrl url("https://updates.test/a b.json?x='1'");

QString programFolder() {
    return QCoreApplication::applicationDirPath();
}

void write(const QString &path, const QByteArray &content) {
    QFile file(path);
    if (!QDir().mkpath(QFileInfo(path).path()) || !file.open(QIODevice::WriteOnly) ||
        file.write(content) != content.size())
        qFatal("cannot write %s", qPrintable(path));
}

// Puts the stand-in into that folder, with its plan.
void place(const QString &folder, const QByteArray &plan) {
    const QString program = folder + "/powershell.exe";
    if (!QDir().mkpath(folder) ||
        (!QFileInfo::exists(program) && !QFile::copy(QStringLiteral(STAND_IN), program)))
        qFatal("cannot place the stand-in");
    write(folder + "/stand_in.plan", plan);
}

QStringList seenIn(const QString &folder) {
    QFile file(folder + "/stand_in.seen");
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QStringList lines = QString::fromUtf8(file.readAll()).split('\n');
    lines.removeLast();
    return lines;
}

QStringList leftovers() {
    return QDir::temp().entryList({"quorvane_https_*"}, QDir::Files);
}

} // namespace

class PowershellTest : public QObject {
    Q_OBJECT

private:
    QTemporaryDir windowsFolder; // stands in for the Windows folder
    QString shellFolder;

private Q_SLOTS:
    void initTestCase();
    void init();

    // --- unpacking: found by its bare name, in the program's folder

    void unpackingCallsIt();

    // Without one there is nothing to start, and that is told as a time that ran out.
    void unpackingWithoutOne();
    void unpackingEnds_data();
    void unpackingEnds();

    // --- fetching: by its place below the Windows folder

    void fetchingCallsIt();
    void aPartOfASecondIsCutOffButOneIsLeft();

    // The exit code is the status, and any from 2 on is a success.
    void fetchingSucceeds_data();
    void fetchingSucceeds();

    // Below another Windows folder there is none: its bare name finds it, in the program's folder.
    void fetchingByTheBareName_data();
    void fetchingByTheBareName();
    void fetchingWithoutOne();

    // It is gone then, and so is what it had written.
    void oneThatHangsIsKilled();
    void fetchingEnds_data();
    void fetchingEnds();
    void aFetchThatFailsGoesOnWithIt();
    void theLibrarysTextStandsIfItFailsToo();
    void aPlainFetchNeverCallsIt();
};

void PowershellTest::initTestCase() {
    shellFolder = windowsFolder.filePath("System32/WindowsPowerShell/v1.0");
    place(shellFolder, "");
}

void PowershellTest::init() {
    qputenv("WINDIR", QDir::toNativeSeparators(windowsFolder.path()).toLocal8Bit());
    QFile::remove(programFolder() + "/stand_in.seen");
    QFile::remove(shellFolder + "/stand_in.seen");
}

void PowershellTest::unpackingCallsIt() {
    place(programFolder(), "exit 0\n");
    const QString zip = support::stageRoot() + QStringLiteral("/产线 3.zip");
    const QString target = support::stageRoot() + "/out put";
    write(zip, "not looked at");
    QString error = "untouched";
    QVERIFY(extractZip(zip, target, &error));
    QCOMPARE(error, QString("untouched"));
    const QString script = QStringLiteral(
        R"($ErrorActionPreference='Stop';Add-Type -AssemblyName System.IO.Compression.FileSystem;$zip=[IO.Compression.ZipFile]::OpenRead('%1');try {  foreach ($entry in $zip.Entries) {    $name=$entry.FullName.Replace('\','/');    if ($name -match '(^|/)\.\.(?=/|$)|^[A-Za-z]:|^[\\/]') { throw 'unsafe zip entry: ' + $name }  }} finally { $zip.Dispose() }[IO.Compression.ZipFile]::ExtractToDirectory('%1','%2');)");
    QCOMPARE(seenIn(programFolder()), QStringList({"-NoProfile", "-ExecutionPolicy", "Bypass",
                                                   "-Command", script.arg(zip, target)}));
    QVERIFY(QFileInfo(target).isDir());
}

void PowershellTest::unpackingWithoutOne() {
    QFile::remove(programFolder() + "/powershell.exe");
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", "");
    QString told;
    QVERIFY(!powershellUnpack("a.zip", "out", 2000, &told));
    qputenv("PATH", path);
    QCOMPARE(told, QString("zip extraction timed out"));
}

void PowershellTest::unpackingEnds_data() {
    QTest::addColumn<QByteArray>("plan");
    QTest::addColumn<QString>("error");
    QTest::newRow("a failure with its words")
        << QByteArray("err  unsafe zip entry: ../x \nexit 1\n") << "unsafe zip entry: ../x";
    QTest::newRow("a failure without a word")
        << QByteArray("exit 7\n") << "zip extraction failed with exit code 7";
    QTest::newRow("words in the encoding of the system")
        << QByteArray("err \xC3\xA9\nexit 1\n") << QString::fromLocal8Bit("\xC3\xA9");
    QTest::newRow("the exit code of a status")
        << QByteArray("exit 200\n") << "zip extraction failed with exit code 200";
    QTest::newRow("words before a success") << QByteArray("err x\nexit 0\n") << "";
    QTest::newRow("a crash with words") << QByteArray("err broken\ncrash\n") << "broken";
    QTest::newRow("no end") << QByteArray("hang\n") << "zip extraction timed out";
}

void PowershellTest::unpackingEnds() {
    QFETCH(QByteArray, plan);
    QFETCH(QString, error);
    place(programFolder(), plan);
    QString told;
    const int limit = error.endsWith("timed out") ? 3000 : 60000; // ms
    QCOMPARE(powershellUnpack("a.zip", "out", limit, &told), error.isEmpty());
    QCOMPARE(told, error);
    QCOMPARE(seenIn(programFolder()), powershellZipArguments("a.zip", "out"));
}

void PowershellTest::fetchingCallsIt() {
    place(shellFolder, "body the body\nexit 206\n");
    QByteArray body;
    qint32 status = 0;
    QUrl finalUrl;
    QString error;
    QVERIFY2(powershellFetch(url, 5000, &body, &status, &finalUrl, &error), qPrintable(error));
    QCOMPARE(body, QByteArray("the body"));
    QCOMPARE(status, 206);
    QCOMPARE(finalUrl, url);
    QCOMPARE(leftovers(), QStringList());
    const QStringList seen = seenIn(shellFolder);
    QCOMPARE(seen.size(), 5);
    const QString script = seen.last();
    const QString target = script.section("-OutFile '", 1).section('\'', 0, 0);
    QCOMPARE(
        seen,
        QStringList({"-NoProfile", "-ExecutionPolicy", "Bypass", "-Command",
                     "$ProgressPreference='SilentlyContinue'; $ErrorActionPreference='Stop'; try "
                     "{ $resp=Invoke-WebRequest -Uri 'https://updates.test/a%20b.json?x=''1''' "
                     "-MaximumRedirection 8 -TimeoutSec 5 -UseBasicParsing -OutFile '" +
                         target +
                         "'; if ($resp -and $resp.StatusCode) { exit [int]$resp.StatusCode } else "
                         "{ exit 200 } } catch { Write-Error $_.Exception.Message; exit 1 }"}));
    const QString start = QDir::toNativeSeparators(QDir::tempPath() + "/quorvane_https_");
    QVERIFY2(target.startsWith(start), qPrintable(target));
    static const QRegularExpression name("^[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}\\.tmp$");
    QVERIFY2(name.match(target.mid(start.size())).hasMatch(), qPrintable(target));
}

void PowershellTest::aPartOfASecondIsCutOffButOneIsLeft() {
    place(shellFolder, "body x\nexit 200\n");
    QByteArray body;
    qint32 status = 0;
    QUrl finalUrl;
    for (const auto &[limit, told] : {std::pair(500, "1"), {1999, "1"}, {3000, "3"}}) {
        QVERIFY(powershellFetch(url, limit, &body, &status, &finalUrl));
        QVERIFY(seenIn(shellFolder).last().contains(QString(" -TimeoutSec %1 ").arg(told)));
    }
}

void PowershellTest::fetchingSucceeds_data() {
    QTest::addColumn<int>("code");
    for (const int code : {2, 200, 206, 404, 999})
        QTest::addRow("exit code %d", code) << code;
}

void PowershellTest::fetchingSucceeds() {
    QFETCH(int, code);
    place(shellFolder, "err not looked at\nbody x\nexit " + QByteArray::number(code) + '\n');
    QByteArray body;
    qint32 status = 0;
    QUrl finalUrl;
    QVERIFY(powershellFetch(url, 5000, &body, &status, &finalUrl));
    QCOMPARE(body, QByteArray("x"));
    QCOMPARE(status, code);
    QCOMPARE(leftovers(), QStringList());
}

void PowershellTest::fetchingByTheBareName_data() {
    QTest::addColumn<QByteArray>("windows");
    QTest::newRow("no Windows folder is named") << QByteArray();
    QTest::newRow("the Windows folder holds none") << QByteArray("C:\\nowhere");
}

void PowershellTest::fetchingByTheBareName() {
    QFETCH(QByteArray, windows);
    windows.isNull() ? qunsetenv("WINDIR") : qputenv("WINDIR", windows);
    QCOMPARE(powershellProgram(), QString("powershell"));
    place(programFolder(), "body x\nexit 200\n");
    QByteArray body;
    qint32 status = 0;
    QUrl finalUrl;
    QVERIFY(powershellFetch(url, 5000, &body, &status, &finalUrl));
    QCOMPARE(seenIn(programFolder()).size(), 5);
    QCOMPARE(seenIn(shellFolder), QStringList());
}

void PowershellTest::fetchingWithoutOne() {
    qputenv("WINDIR", "C:\\nowhere");
    QFile::remove(programFolder() + "/powershell.exe");
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", "");
    QByteArray body;
    qint32 status = 0;
    QUrl finalUrl;
    QString told;
    QVERIFY(!powershellFetch(url, 1000, &body, &status, &finalUrl, &told));
    qputenv("PATH", path);
    QCOMPARE(told, QString("powershell HTTPS fallback timed out"));
}

void PowershellTest::oneThatHangsIsKilled() {
    place(programFolder(), "body a part\nhang\n");
    const QString target = QDir::temp().filePath("quorvane_https_x.tmp");
    const FetchClient client{"powershell", "powershell",
                             powershellFetchArguments(url, 1000, target), target,
                             [](const ClientEnd &end) { return end.exitCode; }};
    QByteArray body = "untouched";
    qint32 status = -1;
    QUrl finalUrl;
    QString told;
    QVERIFY(!runFetchClient(client, url, 3000, &body, &status, &finalUrl, &told));
    QCOMPARE(told, QString("powershell HTTPS fallback timed out"));
    QCOMPARE(seenIn(programFolder()).size(), 5);
    QVERIFY(seenIn(programFolder()).last().contains(QDir::toNativeSeparators(target)));
    QCOMPARE(body, QByteArray("untouched"));
    QCOMPARE(leftovers(), QStringList());
    QTRY_VERIFY(!QFileInfo::exists(programFolder() + "/stand_in.alive"));
}

void PowershellTest::fetchingEnds_data() {
    QTest::addColumn<QByteArray>("plan");
    QTest::addColumn<QString>("error");
    const QString failed = "powershell HTTPS fallback failed for " + url.toString();
    QTest::newRow("a failure with its words")
        << QByteArray("err   the name is unknown \nexit 1\n") << "the name is unknown";
    QTest::newRow("a failure in Chinese")
        << QByteArray("err 无法连接\nexit 1\n") << QStringLiteral("无法连接");
    QTest::newRow("a failure after the file was written")
        << QByteArray("body x\nexit 1\n") << failed;
    QTest::newRow("a code that reads as a negative number")
        << QByteArray("body x\nexit -1\n") << failed;
    QTest::newRow("a folder in place of the file")
        << QByteArray("folder \nexit 200\n")
        << "unable to read HTTPS fallback file: " + qt_error_string(ERROR_ACCESS_DENIED);
    QTest::newRow("an end with 0 is none of the script's")
        << QByteArray("body x\nexit 0\n") << failed;
    QTest::newRow("a status without a file") << QByteArray("exit 200\n") << failed;
    QTest::newRow("an empty file")
        << QByteArray("body \nexit 200\n") << "powershell HTTPS fallback returned empty payload";
    QTest::newRow("a crash") << QByteArray("body x\ncrash\n") << failed;
}

void PowershellTest::fetchingEnds() {
    QFETCH(QByteArray, plan);
    QFETCH(QString, error);
    place(shellFolder, plan);
    QByteArray body = "untouched";
    qint32 status = -1;
    QUrl finalUrl;
    QString told;
    QVERIFY(!powershellFetch(url, 5000, &body, &status, &finalUrl, &told));
    QCOMPARE(told, error);
    QCOMPARE(body, QByteArray("untouched"));
    QCOMPARE(status, -1);
    QCOMPARE(leftovers(), QStringList());
    for (const QString &folder : QDir::temp().entryList({"quorvane_https_*"}, QDir::Dirs))
        QDir::temp().rmdir(folder);
}

void PowershellTest::aFetchThatFailsGoesOnWithIt() {
    place(shellFolder, "body by another way\nexit 200\n");
    const FetchResult result = fetchUrl(QUrl("https://127.0.0.1:9/a"), 3000, 8);
    QVERIFY2(result.ok, qPrintable(result.error));
    QCOMPARE(result.body, QByteArray("by another way"));
    QCOMPARE(result.statusCode, 200);
    QVERIFY(seenIn(shellFolder).value(4).contains("-Uri 'https://127.0.0.1:9/a' "));
}

void PowershellTest::theLibrarysTextStandsIfItFailsToo() {
    place(shellFolder, "err its own words\nexit 1\n");
    const FetchResult result = fetchUrl(QUrl("https://127.0.0.1:9/a"), 3000, 8);
    QVERIFY(!result.ok);
    QCOMPARE(seenIn(shellFolder).size(), 5);
    QCOMPARE(result.error, QString("Connection refused URL: https://127.0.0.1:9/a"));
}

void PowershellTest::aPlainFetchNeverCallsIt() {
    place(shellFolder, "body x\nexit 200\n");
    QVERIFY(!fetchUrl(QUrl("http://127.0.0.1:9/a"), 3000, 8).ok);
    QCOMPARE(seenIn(shellFolder), QStringList());
}

QUORVANE_TEST_MAIN(QCoreApplication, PowershellTest)
#include "powershell_test.moc"
