// The external clients: their command lines, what is made of their end, and the real one.
#include "support/certificate_maker.h"
#include "support/scripted_server.h"
#include "support/search_path.h"
#include "support/staged_main.h"
#include "update/http_fetch.h"
#include "update/https_fallback.h"

#include <QElapsedTimer>
#include <QRegularExpression>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QStandardPaths>

#include <thread>

using support::answer;
using support::ScriptedServer;
using support::SearchPath;

namespace {

const QUrl url("https://updates.test/a b.json?x='1'");
constexpr int timeout = 5000;

// In the stand-in for curl: finds the file that it is to write.
const QByteArray findsTarget = "while [ $# -gt 0 ]; do\n"
                               "  [ \"$1\" = --output ] && target=$2\n"
                               "  shift\n"
                               "done\n";
// The same in the stand-in for PowerShell, whose only long argument is the script.
const QByteArray findsPowershellTarget =
    "for script; do :; done\n"
    "target=$(printf %s \"$script\" | /usr/bin/sed \"s/.*-OutFile '\\([^']*\\)'.*/\\1/\")\n";

struct Fetched {
    bool ok = false;
    QByteArray body = "untouched";
    qint32 status = -1;
    QUrl finalUrl;
    QString error;
};

using Fetch = bool (*)(const QUrl &url, int timeoutMs, QByteArray *body, qint32 *status,
                       QUrl *finalUrl, QString *error);

Fetched fetchWith(Fetch fetch, const QUrl &address = url, int timeoutMs = timeout) {
    Fetched fetched;
    fetched.ok = fetch(address, timeoutMs, &fetched.body, &fetched.status, &fetched.finalUrl,
                       &fetched.error);
    return fetched;
}

// Qt's words for a status that is a failure.
QString refusedText(const QUrl &address, int status) {
    return QStringLiteral("Error transferring %1 - server replied: Refused (HTTP %2) URL: %1")
        .arg(address.toString(), QString::number(status));
}

QStringList leftovers() {
    return QDir::temp().entryList({"quorvane_https_*"}, QDir::Files);
}

} // namespace

class HttpsFallbackTest : public QObject {
    Q_OBJECT

private:
    const support::Certificate authority = support::makeAuthority();
    const support::Certificate certificate = support::makeCertificate({}, &authority);

    void refuse(const Fetched &fetched, const QString &error);

private Q_SLOTS:
    void initTestCase();
    void quoting_data();
    void quoting();
    void theCommandOfPowershell();
    void theLimitInSeconds_data();
    void theLimitInSeconds();
    void theUrlIsAscii();
    void percentSignsInUrlAndPathStay();
    void aQuoteInThePathIsDoubledForPowershell();
    void theProgramOfPowershell();
    void powershellGetsTheBody();
    void powershellEnds_data();
    void powershellEnds();
    void noPowershell();
    void aClientThatHangsIsKilled();
    void aClientIsWaitedForFiveSecondsMore();
    void theWholeWait_data();
    void theWholeWait();
    void theCommandOfCurl();
    void curlGetsTheBody();
    void curlEnds_data();
    void curlEnds();
    void aFetchThatFailsOverTlsGoesOnWithTheClient();
    void aFetchThatIsRefusedGoesOnWithTheClient_data();
    void aFetchThatIsRefusedGoesOnWithTheClient();
    void aDownloadGivesTheClientTwoMinutes();
    void aSchemeInCapitalsCounts();
    void theClientGetsTheUrlOfTheHopThatFailed();
    void theLibrarysTextStandsIfTheClientFailsToo();
    void theRealCurl();
};

void HttpsFallbackTest::refuse(const Fetched &fetched, const QString &error) {
    QVERIFY(!fetched.ok);
    QCOMPARE(fetched.error, error);
    QCOMPARE(fetched.body, QByteArray("untouched"));
    QCOMPARE(fetched.status, -1);
    QCOMPARE(leftovers(), QStringList());
}

// The folder for temporary files is the test's own, so that nothing else appears in it.
void HttpsFallbackTest::initTestCase() {
    const QString temporary = support::stageRoot() + "/tmp";
    QVERIFY(QDir().mkpath(temporary));
    qputenv("TMPDIR", QFile::encodeName(temporary));
    QCOMPARE(QDir::tempPath(), temporary);
}

// --- PowerShell's command line

void HttpsFallbackTest::quoting_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("quoted");
    QTest::newRow("no text") << ""
                             << "''";
    QTest::newRow("plain text") << "a b"
                                << "'a b'";
    QTest::newRow("a single quote") << "a'b"
                                    << "'a''b'";
    QTest::newRow("single quotes at both ends") << "'a'"
                                                << "'''a'''";
    QTest::newRow("two in a row") << "a''b"
                                  << "'a''''b'";
    QTest::newRow("what else a shell would read") << "$x`n\"%1;&"
                                                  << "'$x`n\"%1;&'";
    QTest::newRow("Chinese") << QStringLiteral("产线") << QStringLiteral("'产线'");
}

void HttpsFallbackTest::quoting() {
    QFETCH(QString, text);
    QTEST(powershellQuote(text), "quoted");
}

void HttpsFallbackTest::theCommandOfPowershell() {
    QCOMPARE(powershellFetchArguments(QUrl("https://h/a"), 3000, "/tmp/x"),
             QStringList({"-NoProfile", "-ExecutionPolicy", "Bypass", "-Command",
                          "$ProgressPreference='SilentlyContinue'; "
                          "$ErrorActionPreference='Stop'; try { $resp=Invoke-WebRequest -Uri "
                          "'https://h/a' -MaximumRedirection 8 -TimeoutSec 3 -UseBasicParsing "
                          "-OutFile '/tmp/x'; if ($resp -and $resp.StatusCode) { exit "
                          "[int]$resp.StatusCode } else { exit 200 } } catch { Write-Error "
                          "$_.Exception.Message; exit 1 }"}));
}

void HttpsFallbackTest::theLimitInSeconds_data() {
    QTest::addColumn<int>("timeoutMs");
    QTest::addColumn<QString>("seconds");
    QTest::newRow("less than a second is one") << 500 << "1";
    QTest::newRow("nothing is one") << 0 << "1";
    QTest::newRow("one second") << 1000 << "1";
    QTest::newRow("a part of a second is cut off") << 1999 << "1";
    QTest::newRow("a manifest's") << 3000 << "3";
    QTest::newRow("a package's") << 120000 << "120";
}

void HttpsFallbackTest::theLimitInSeconds() {
    QFETCH(int, timeoutMs);
    QFETCH(QString, seconds);
    QVERIFY(powershellFetchArguments(url, timeoutMs, "x")
                .last()
                .contains(" -TimeoutSec " + seconds + " "));
    const QStringList curl = curlFetchArguments(url, timeoutMs, "x");
    QCOMPARE(curl.value(curl.indexOf("--max-time") + 1), seconds);
}

// PowerShell ends a literal at typographic quotes too; encoded, none can be in a URL.
void HttpsFallbackTest::theUrlIsAscii() {
    const QUrl hostile(QStringLiteral("https://h/\u2018\u2019\u201A\u201B'产线?q=\u2019;exit"));
    const QString script = powershellFetchArguments(hostile, 1000, "x").last();
    for (const QChar character : script)
        QVERIFY(character.unicode() < 128);
    QVERIFY(script.contains("-Uri 'https://h/%E2%80%98%E2%80%99%E2%80%9A%E2%80%9B''"
                            "%E4%BA%A7%E7%BA%BF?q=%E2%80%99;exit' "));
}

// A text that holds a place to fill in is not filled in a second time.
void HttpsFallbackTest::percentSignsInUrlAndPathStay() {
    const QString script =
        powershellFetchArguments(QUrl("https://h/%2525%253"), 1000, "/t/%1%3").last();
    QVERIFY(script.contains("-Uri 'https://h/%2525%253' "));
    QVERIFY(script.contains("-OutFile '/t/%1%3';"));
}

// As the name of a user may have it, in whose folder the temporary files lie.
void HttpsFallbackTest::aQuoteInThePathIsDoubledForPowershell() {
    const QString target = "/home/o'x'/a";
    QVERIFY(powershellFetchArguments(url, 1000, target)
                .last()
                .contains(" -OutFile '/home/o''x''/a'; "));
    const QStringList curl = curlFetchArguments(url, 1000, target);
    QCOMPARE(curl.value(curl.indexOf("--output") + 1), target);
}

void HttpsFallbackTest::theProgramOfPowershell() {
    QTemporaryDir windows;
    const QByteArray before = qgetenv("WINDIR");
    qunsetenv("WINDIR");
    QCOMPARE(powershellProgram(), QStringLiteral("powershell"));
    qputenv("WINDIR", QFile::encodeName(windows.path()));
    QCOMPARE(powershellProgram(), QStringLiteral("powershell"));
    const QString program = windows.filePath("System32/WindowsPowerShell/v1.0/powershell.exe");
    QVERIFY(QDir().mkpath(QFileInfo(program).path()));
    QFile file(program);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(powershellProgram(), program);
    before.isNull() ? qunsetenv("WINDIR") : qputenv("WINDIR", before);
}

// --- PowerShell's end, by a stand-in

void HttpsFallbackTest::powershellGetsTheBody() {
    SearchPath path(false);
    path.addScript("powershell", "for a; do echo \"$a\" >> \"$here/log\"; done\n" +
                                     findsPowershellTarget +
                                     "printf body > \"$target\"\nexit 206\n");
    const Fetched fetched = fetchWith(powershellFetch);
    QVERIFY2(fetched.ok, qPrintable(fetched.error));
    QCOMPARE(fetched.body, QByteArray("body"));
    QCOMPARE(fetched.status, 206);
    QCOMPARE(fetched.finalUrl, url);
    QCOMPARE(leftovers(), QStringList());
    const QByteArray log = path.read("log");
    QVERIFY(log.startsWith("-NoProfile\n-ExecutionPolicy\nBypass\n-Command\n$Progress"));
    QVERIFY(log.contains("-Uri 'https://updates.test/a%20b.json?x=''1''' "));
    const QRegularExpression target("-OutFile '" + QDir::tempPath() +
                                    "/quorvane_https_[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}"
                                    "\\.tmp';");
    QVERIFY2(target.match(QString::fromUtf8(log)).hasMatch(), log);
}

void HttpsFallbackTest::powershellEnds_data() {
    QTest::addColumn<QByteArray>("script");
    QTest::addColumn<QString>("error");
    const QByteArray writes = "printf body > \"$target\"\n";
    QTest::newRow("a failure with its words")
        << QByteArray("echo '  the name is unknown ' >&2; exit 1\n") << "the name is unknown";
    QTest::newRow("a failure in Chinese")
        << QByteArray("echo 无法连接 >&2; exit 1\n") << QStringLiteral("无法连接");
    QTest::newRow("a failure without a word")
        << QByteArray("exit 1\n") << "powershell HTTPS fallback failed for " + url.toString();
    QTest::newRow("a failure after the file was written")
        << writes + "exit 1\n"
        << "powershell HTTPS fallback failed for " + url.toString();
    QTest::newRow("an end with 0 is none of the script's")
        << writes + "exit 0\n"
        << "powershell HTTPS fallback failed for " + url.toString();
    QTest::newRow("a status without a file")
        << QByteArray("exit 200\n") << "powershell HTTPS fallback failed for " + url.toString();
    QTest::newRow("an empty file") << QByteArray(": > \"$target\"\nexit 200\n")
                                   << "powershell HTTPS fallback returned empty payload";
    QTest::newRow("a folder in place of the file")
        << QByteArray("/bin/mkdir \"$target\"\nexit 200\n")
        << "unable to read HTTPS fallback file: file to open is a directory";
    QTest::newRow("a crash") << writes + "kill -9 $$\n"
                             << "powershell HTTPS fallback failed for " + url.toString();
}

void HttpsFallbackTest::powershellEnds() {
    QFETCH(QByteArray, script);
    QFETCH(QString, error);
    SearchPath path(false);
    path.addScript("powershell", findsPowershellTarget + script);
    refuse(fetchWith(powershellFetch), error);
    for (const QString &folder : QDir::temp().entryList({"quorvane_https_*"}, QDir::Dirs))
        QDir::temp().rmdir(folder);
}

// A program that cannot be started has not finished either.
void HttpsFallbackTest::noPowershell() {
    const SearchPath path(false);
    refuse(fetchWith(powershellFetch), "powershell HTTPS fallback timed out");
}

void HttpsFallbackTest::aClientThatHangsIsKilled() {
    SearchPath path(false);
    path.addScript("client", "printf part > \"$1\"\necho $$ > \"$here/pid\"\nexec /bin/sleep 60\n");
    const QString target = QDir::temp().filePath("quorvane_https_x.tmp");
    const FetchClient client{"powershell", "client", {target}, target, [](const ClientEnd &end) {
                                 return end.exitCode;
                             }};
    QElapsedTimer clock;
    clock.start();
    Fetched fetched;
    fetched.ok = runFetchClient(client, url, 700, &fetched.body, &fetched.status, &fetched.finalUrl,
                                &fetched.error);
    QVERIFY(clock.elapsed() < 20000);
    refuse(fetched, "powershell HTTPS fallback timed out");
    const QByteArray pid = path.read("pid").trimmed();
    QVERIFY(!pid.isEmpty());
    QVERIFY(!QFileInfo::exists("/proc/" + pid));
}

// Both clients would give the body in the end. A busy machine lets them wait longer, never shorter.
void HttpsFallbackTest::aClientIsWaitedForFiveSecondsMore() {
    SearchPath path(false);
    const QByteArray late = "/bin/sleep 30\nprintf body > \"$target\"\n";
    path.addScript("powershell", findsPowershellTarget + late + "exit 200\n");
    path.addScript("curl", findsTarget + late + "printf 200\n");
    const auto waitOf = [](Fetch fetch, qint64 *elapsed) {
        QElapsedTimer clock;
        clock.start();
        const Fetched fetched = fetchWith(fetch, url, 0);
        *elapsed = clock.elapsed();
        return fetched;
    };
    qint64 ofCurl = 0;
    qint64 ofPowershell = 0;
    Fetched byCurl;
    std::thread other([&] { byCurl = waitOf(curlFetch, &ofCurl); });
    const Fetched byPowershell = waitOf(powershellFetch, &ofPowershell);
    other.join();
    refuse(byCurl, "curl HTTPS fallback timed out");
    refuse(byPowershell, "powershell HTTPS fallback timed out");
    QVERIFY2(ofCurl >= 5000, qPrintable(QString::number(ofCurl)));
    QVERIFY2(ofPowershell >= 5000, qPrintable(QString::number(ofPowershell)));
}

void HttpsFallbackTest::theWholeWait_data() {
    QTest::addColumn<int>("timeoutMs");
    QTest::addColumn<int>("waitMs");
    QTest::newRow("nothing and the grace") << 0 << 5000;
    QTest::newRow("the part of a second counts") << 1999 << 6999;
    QTest::newRow("a manifest's") << 3000 << 8000;
    QTest::newRow("a package's") << 120000 << 125000;
}

void HttpsFallbackTest::theWholeWait() {
    QFETCH(int, timeoutMs);
    QTEST(clientWaitMs(timeoutMs), "waitMs");
}

// --- curl, by a stand-in

void HttpsFallbackTest::theCommandOfCurl() {
    QCOMPARE(curlFetchArguments(url, 3000, "/tmp/x"),
             QStringList({"--disable",
                          "--silent",
                          "--show-error",
                          "--fail",
                          "--globoff",
                          "--location",
                          "--max-redirs",
                          "8",
                          "--proto",
                          "=http,https",
                          "--proto-redir",
                          "=http,https",
                          "--max-time",
                          "3",
                          "--output",
                          "/tmp/x",
                          "--write-out",
                          "%{http_code}",
                          "--",
                          "https://updates.test/a%20b.json?x='1'"}));
}

void HttpsFallbackTest::curlGetsTheBody() {
    SearchPath path(false);
    path.addScript("curl", findsTarget + "printf body > \"$target\"\nprintf 206\n");
    const Fetched fetched = fetchWith(curlFetch);
    QVERIFY2(fetched.ok, qPrintable(fetched.error));
    QCOMPARE(fetched.body, QByteArray("body"));
    QCOMPARE(fetched.status, 206);
    QCOMPARE(fetched.finalUrl, url);
    QCOMPARE(leftovers(), QStringList());
}

void HttpsFallbackTest::curlEnds_data() {
    QTest::addColumn<QByteArray>("script");
    QTest::addColumn<QString>("error");
    const QByteArray writes = "printf body > \"$target\"\n";
    const QString failed = "curl HTTPS fallback failed for " + url.toString();
    QTest::newRow("a failure with its words")
        << QByteArray("printf 000; echo 'curl: (6) no host' >&2; exit 6\n") << "curl: (6) no host";
    QTest::newRow("a failure that had a status")
        << writes + "printf 200; echo 'curl: (18) cut' >&2; exit 18\n"
        << "curl: (18) cut";
    QTest::newRow("a failure without a word") << QByteArray("exit 7\n") << failed;
    QTest::newRow("no status") << writes << failed;
    QTest::newRow("a status of zeros") << writes + "printf 000\n" << failed;
    QTest::newRow("a status that is no number") << writes + "printf x\n" << failed;
    QTest::newRow("a status without a file") << QByteArray("printf 200\n") << failed;
    QTest::newRow("an empty file") << QByteArray(": > \"$target\"\nprintf 200\n")
                                   << "curl HTTPS fallback returned empty payload";
    QTest::newRow("a crash") << writes + "printf 200; kill -9 $$\n" << failed;
}

void HttpsFallbackTest::curlEnds() {
    QFETCH(QByteArray, script);
    QFETCH(QString, error);
    SearchPath path(false);
    path.addScript("curl", findsTarget + script);
    refuse(fetchWith(curlFetch), error);
}

// --- within a fetch

void HttpsFallbackTest::aFetchThatFailsOverTlsGoesOnWithTheClient() {
    SearchPath path(false);
    path.addScript("curl", findsTarget + "echo called >> \"$here/log\"\n"
                                         "printf body > \"$target\"\nprintf 200\n");
    ScriptedServer server(support::tlsWith(certificate)); // trusted by nobody here
    const FetchResult result = fetchUrl(server.url("/a"), timeout, 8);
    QVERIFY(result.ok);
    QCOMPARE(result.body, QByteArray("body"));
    QCOMPARE(result.statusCode, 200);
    QCOMPARE(result.finalUrl, server.url("/a"));
    QCOMPARE(result.error, QString());
    QCOMPARE(path.read("log"), QByteArray("called\n"));
}

void HttpsFallbackTest::aFetchThatIsRefusedGoesOnWithTheClient_data() {
    QTest::addColumn<int>("status");
    QTest::addColumn<bool>("clientGets");
    for (const int status : {400, 404, 410, 500, 503}) {
        for (const bool gets : {true, false}) {
            const QString name = "%1, and the client gets %2";
            QTest::newRow(qPrintable(name.arg(status).arg(gets ? "it" : "nothing")))
                << status << gets;
        }
    }
}

// The server is trusted and answers; its status alone is the failure.
void HttpsFallbackTest::aFetchThatIsRefusedGoesOnWithTheClient() {
    QFETCH(int, status);
    QFETCH(bool, clientGets);
    const QSslConfiguration before = QSslConfiguration::defaultConfiguration();
    QSslConfiguration trusting = before;
    trusting.setCaCertificates({QSslCertificate(authority.pem)});
    QSslConfiguration::setDefaultConfiguration(trusting);
    SearchPath path(false);
    path.addScript("curl",
                   findsTarget + "echo called >> \"$here/log\"\n" +
                       (clientGets ? "printf body > \"$target\"\nprintf 200\n" : "exit 22\n"));
    ScriptedServer server(support::tlsWith(certificate));
    server.on("/a", answer(status, "gone"));
    const FetchResult result = fetchUrl(server.url("/a"), timeout, 8);
    QSslConfiguration::setDefaultConfiguration(before);
    QCOMPARE(server.paths(), QStringList("/a"));
    QCOMPARE(path.read("log"), QByteArray("called\n"));
    QCOMPARE(result.ok, clientGets);
    QCOMPARE(result.statusCode, clientGets ? 200 : status);
    QCOMPARE(result.error, clientGets ? QString() : refusedText(server.url("/a"), status));
    if (clientGets)
        QCOMPARE(result.body, QByteArray("body"));
}

void HttpsFallbackTest::aDownloadGivesTheClientTwoMinutes() {
    SearchPath path(false);
    path.addScript("curl", "echo \"$*\" > \"$here/log\"\n" + findsTarget +
                               "printf body > \"$target\"\nprintf 200\n");
    const QString target = support::stageRoot() + "/a.zip";
    QString error;
    QVERIFY2(downloadToFile(QUrl("https://127.0.0.1:1/a"), target, &error), qPrintable(error));
    QVERIFY2(path.read("log").contains(" --max-time 120 "), path.read("log"));
    QVERIFY(QFile::remove(target));
}

void HttpsFallbackTest::aSchemeInCapitalsCounts() {
    SearchPath path(false);
    path.addScript("curl", findsTarget + "printf body > \"$target\"\nprintf 200\n");
    ScriptedServer server(support::tlsWith(certificate));
    const QUrl capitals("HTTPS" + server.url("/a").toString().mid(5));
    QVERIFY(fetchUrl(capitals, timeout, 8).ok);
}

void HttpsFallbackTest::theClientGetsTheUrlOfTheHopThatFailed() {
    SearchPath path(false);
    path.addScript("curl", "for last; do :; done\nprintf %s \"$last\" > \"$here/log\"\n");
    ScriptedServer plain;
    ScriptedServer server(support::tlsWith(certificate));
    plain.on("/a", support::redirect(302, server.url("/b").toEncoded()));
    QVERIFY(!fetchUrl(plain.url("/a"), timeout, 8).ok);
    QCOMPARE(path.read("log"), server.url("/b").toEncoded());
}

void HttpsFallbackTest::theLibrarysTextStandsIfTheClientFailsToo() {
    SearchPath path(false);
    path.addScript("curl", "echo 'curl: (22) 404' >&2; exit 22\n");
    ScriptedServer server(support::tlsWith(certificate));
    const FetchResult result = fetchUrl(server.url("/a"), timeout, 8);
    QVERIFY(!result.ok);
    QCOMPARE(result.error,
             QStringLiteral("SSL handshake failed URL: %1").arg(server.url("/a").toString()));
}

// --- the real client

void HttpsFallbackTest::theRealCurl() {
    QVERIFY2(!QStandardPaths::findExecutable("curl").isEmpty(),
             "curl is not installed: run scripts/setup test");
    const QString bundle = support::stageRoot() + "/authority.pem";
    QFile file(bundle);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(authority.pem);
    file.close();
    qputenv("CURL_CA_BUNDLE", QFile::encodeName(bundle));
    ScriptedServer server(support::tlsWith(certificate));
    server.on("/a%20b?x='1'", answer(200, "body"));
    server.on("/r", support::redirect(302, "/s"));
    server.on("/s", answer(203, "there"));
    server.on("/loop", support::redirect(302, "/loop"));
    server.on("/file", support::redirect(302, "file:///etc/passwd"));
    server.on("/empty", answer(200, ""));
    server.on("/cut", {support::send("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nbody")});
    server.on("/slow", {support::stall()});

    const Fetched fetched = fetchWith(curlFetch, server.url("/a b?x='1'"));
    QVERIFY2(fetched.ok, qPrintable(fetched.error));
    QCOMPARE(fetched.body, QByteArray("body"));
    QCOMPARE(fetched.status, 200);
    const Fetched redirected = fetchWith(curlFetch, server.url("/r"));
    QCOMPARE(redirected.body, QByteArray("there"));
    QCOMPARE(redirected.status, 203);
    QCOMPARE(redirected.finalUrl, server.url("/r")); // as told: the URL that was asked for

    for (const char *path : {"/missing", "/loop", "/file", "/cut"}) {
        const Fetched refused = fetchWith(curlFetch, server.url(path));
        QVERIFY(!refused.ok);
        QVERIFY2(refused.error.startsWith("curl: ("), qPrintable(refused.error));
        QCOMPARE(leftovers(), QStringList());
    }
    QCOMPARE(server.paths().count("/loop"), 9);
    QVERIFY(!fetchWith(curlFetch, server.url("/empty")).ok);
    const Fetched slow = fetchWith(curlFetch, server.url("/slow"), 1000);
    QVERIFY2(slow.error.startsWith("curl: (28)"), qPrintable(slow.error));

    // Qt does not trust the authority, curl does: together they fetch.
    const FetchResult together = fetchUrl(server.url("/r"), timeout, 8);
    QCOMPARE(together.body, QByteArray("there"));
    QCOMPARE(together.statusCode, 203);
    qunsetenv("CURL_CA_BUNDLE");
    refuse(fetchWith(curlFetch, QUrl("https://[broken")),
           "curl: (3) URL using bad/illegal format or missing URL");
}

QUORVANE_TEST_MAIN(QCoreApplication, HttpsFallbackTest)
#include "https_fallback_test.moc"
