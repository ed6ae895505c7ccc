// The fetch against a real web server, over TLS on a loopback port of its own.
#include "support/certificate_maker.h"
#include "support/search_path.h"
#include "support/staged_main.h"
#include "update/http_fetch.h"

#include <QDeadlineTimer>
#include <QProcess>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QStandardPaths>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>

#include <csignal>
#include <functional>
#include <thread>

namespace {

constexpr int plenty = 30000; // ms

// `%1` is the folder, `%2` the port.
constexpr char configuration[] = R"(
daemon off;
master_process off;
pid %1/nginx.pid;
error_log %1/error.log;
events {}
http {
    access_log %1/access.log;
    client_body_temp_path %1/t1;
    proxy_temp_path %1/t2;
    fastcgi_temp_path %1/t3;
    uwsgi_temp_path %1/t4;
    scgi_temp_path %1/t5;
    gzip on;
    gzip_min_length 1;
    gzip_types application/json;
    types { application/json json; }
    server {
        listen 127.0.0.1:%2 ssl;
        server_name localhost;
        ssl_certificate %1/server.pem;
        ssl_certificate_key %1/server.key;
        root %1/www;
        location /moved { return 301 /Quorvaner/Update/manifest.json; }
        location /loop { return 302 /loop; }
        location /gone { return 410; }
        location /busy { return 503 "busy"; }
        location /nothing { return 200 ""; }
        location /slow { limit_rate 20k; }
    }
}
)";

quint16 freePort() {
    QTcpServer probe;
    return probe.listen(QHostAddress::LocalHost) ? probe.serverPort() : 0;
}

} // namespace

class HttpFetchNginxTest : public QObject {
    Q_OBJECT

private:
    support::SearchPath searchPath{false}; // no external client, so that failures stay failures
    QTemporaryDir folder;
    QProcess nginx;
    quint16 port = freePort();
    const QByteArray large = QByteArray("0123456789abcde\n").repeated(2 * 1024 * 1024);

    void write(const QString &name, const QByteArray &content) const;
    QUrl url(const QString &path) const;
    bool answers() const;
    qint64 written() const;
    std::thread onceABodyFlows(const std::function<void()> &something) const;

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void aManifest();
    void aMovedManifest();
    void aPackageOf32Megabytes();
    void aChineseName();
    void refusals_data();
    void refusals();
    void aLoop();
    void aSlowPackageMeetsTheLimit();
    void aSlowPackageIsCancelled();
    void theServerGoesAway();
};

void HttpFetchNginxTest::write(const QString &name, const QByteArray &content) const {
    const QString path = folder.filePath(name);
    QVERIFY(QDir().mkpath(QFileInfo(path).path()));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), qint64(content.size()));
}

QUrl HttpFetchNginxTest::url(const QString &path) const {
    return QUrl(QStringLiteral("https://localhost:%1%2").arg(QString::number(port), path));
}

bool HttpFetchNginxTest::answers() const {
    QTcpSocket socket;
    socket.connectToHost(QHostAddress(QHostAddress::LocalHost), port);
    return socket.waitForConnected(1000);
}

// The bytes that the server has written, to its log too.
qint64 HttpFetchNginxTest::written() const {
    QFile counts(QStringLiteral("/proc/%1/io").arg(nginx.processId()));
    if (!counts.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray line = counts.readAll().split('\n').value(1);
    return line.mid(int(qstrlen("wchar: "))).toLongLong();
}

// Does something once the server is within a body: past all that comes before one.
std::thread HttpFetchNginxTest::onceABodyFlows(const std::function<void()> &something) const {
    return std::thread([this, something, enough = written() + 12000] {
        const QDeadlineTimer deadline(plenty);
        while (written() < enough && !deadline.hasExpired())
            std::this_thread::yield();
        something();
    });
}

void HttpFetchNginxTest::initTestCase() {
    const QString program =
        QStandardPaths::findExecutable("nginx", {"/usr/sbin", "/usr/bin", "/usr/local/sbin"});
    QVERIFY2(!program.isEmpty(), "nginx is not installed: run scripts/setup test");
    const support::Certificate authority = support::makeAuthority();
    const support::Certificate certificate = support::makeCertificate({}, &authority);
    QSslConfiguration trusting = QSslConfiguration::defaultConfiguration();
    trusting.setCaCertificates({QSslCertificate(authority.pem)});
    QSslConfiguration::setDefaultConfiguration(trusting);

    write("server.pem", certificate.pem);
    write("server.key", certificate.keyPem);
    write("nginx.conf",
          QString::fromLatin1(configuration).arg(folder.path(), QString::number(port)).toUtf8());
    write("www/Quorvaner/Update/manifest.json", "{\"schemaVersion\": 1}\n");
    write("www/large.zip", large);
    write("www/empty.json", "");
    write(QStringLiteral("www/产线 三.zip"), "Chinese");
    write("www/slow/package.zip", QByteArray(400000, 'x'));
    nginx.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    nginx.start(program, {"-p", folder.path(), "-e", folder.filePath("error.log"), "-c",
                          folder.filePath("nginx.conf")});
    QVERIFY(nginx.waitForStarted());
    QTRY_VERIFY_WITH_TIMEOUT(answers(), 10000);
}

void HttpFetchNginxTest::cleanupTestCase() {
    nginx.terminate();
    nginx.waitForFinished(10000);
}

void HttpFetchNginxTest::aManifest() {
    const FetchResult result = fetchUrl(url("/Quorvaner/Update/manifest.json"), plenty, 8);
    QVERIFY2(result.ok, qPrintable(result.error));
    QCOMPARE(result.body, QByteArray("{\"schemaVersion\": 1}\n")); // it came compressed
    QCOMPARE(result.statusCode, 200);
}

void HttpFetchNginxTest::aMovedManifest() {
    const FetchResult result = fetchUrl(url("/moved"), plenty, 8);
    QVERIFY2(result.ok, qPrintable(result.error));
    QCOMPARE(result.finalUrl, url("/Quorvaner/Update/manifest.json"));
}

void HttpFetchNginxTest::aPackageOf32Megabytes() {
    const QString path = folder.filePath("cache/large.zip");
    QString error;
    QVERIFY2(downloadToFile(url("/large.zip"), path, &error), qPrintable(error));
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QVERIFY(file.readAll() == large);
}

void HttpFetchNginxTest::aChineseName() {
    QCOMPARE(fetchUrl(url(QStringLiteral("/产线 三.zip")), plenty, 8).body, QByteArray("Chinese"));
}

void HttpFetchNginxTest::refusals_data() {
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("error");
    QTest::newRow("missing") << "/missing"
                             << "Error transferring # - server replied: Not Found (HTTP 404) "
                                "URL: #";
    QTest::newRow("gone") << "/gone"
                          << "Error transferring # - server replied: Gone (HTTP 410) URL: #";
    QTest::newRow("busy") << "/busy"
                          << "Error transferring # - server replied: Service Temporarily "
                             "Unavailable (HTTP 503) URL: #";
    QTest::newRow("an empty file") << "/empty.json"
                                   << "empty response body (HTTP 200) from #";
    QTest::newRow("an answer of nothing") << "/nothing"
                                          << "empty response body (HTTP 200) from #";
}

void HttpFetchNginxTest::refusals() {
    QFETCH(QString, path);
    QFETCH(QString, error);
    const FetchResult result = fetchUrl(url(path), plenty, 8);
    QVERIFY(!result.ok);
    QCOMPARE(result.error, error.replace("#", url(path).toString()));
}

// The server sends a body with its redirects; that of the ninth is taken as the answer.
void HttpFetchNginxTest::aLoop() {
    const FetchResult result = fetchUrl(url("/loop"), plenty, 8);
    QVERIFY(result.ok);
    QCOMPARE(result.statusCode, 302);
    QVERIFY(result.body.contains("302 Found"));
    QFile log(folder.filePath("access.log"));
    QVERIFY(log.open(QIODevice::ReadOnly));
    QCOMPARE(log.readAll().count("GET /loop "), 9);
}

void HttpFetchNginxTest::aSlowPackageMeetsTheLimit() {
    const FetchResult result = fetchUrl(url("/slow/package.zip"), 1500, 8);
    QCOMPARE(result.error, QStringLiteral("Operation canceled (HTTP 200) URL: %1")
                               .arg(url("/slow/package.zip").toString()));
}

void HttpFetchNginxTest::aSlowPackageIsCancelled() {
    CancelFlag flag{0};
    std::thread canceller = onceABodyFlows([&flag] { flag.store(1, std::memory_order_relaxed); });
    QString error;
    QVERIFY(!downloadToFile(url("/slow/package.zip"), folder.filePath("x"), &error, &flag));
    canceller.join();
    QCOMPARE(error, QStringLiteral("cancelled"));
}

void HttpFetchNginxTest::theServerGoesAway() {
    const auto server = static_cast<pid_t>(nginx.processId());
    std::thread killer = onceABodyFlows([server] { ::kill(server, SIGKILL); });
    const FetchResult result = fetchUrl(url("/slow/package.zip"), plenty, 8);
    killer.join();
    QVERIFY(!result.ok);
    QCOMPARE(result.error, QStringLiteral("Connection closed (HTTP 200) URL: %1")
                               .arg(url("/slow/package.zip").toString()));
    QTRY_COMPARE(nginx.state(), QProcess::NotRunning);
    QCOMPARE(fetchUrl(url("/moved"), plenty, 8).error,
             QStringLiteral("Connection refused URL: %1").arg(url("/moved").toString()));
}

QUORVANE_TEST_MAIN(QCoreApplication, HttpFetchNginxTest)
#include "http_fetch_nginx_test.moc"
