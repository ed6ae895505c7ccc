// Proving a manifest and fetching a package, each against the tool that does nothing else, in one
// run.
//
//   verify    canonical form and signature of a manifest with 1,000 projects, against
//             `openssl dgst -sha256 -verify` on the finished canonical bytes: a floor, reported
//   fetch     256 MiB over TLS from nginx on loopback, against `curl`: at most 3 times its time,
//             the aim is 2; the peak memory is reported
//
//   benchmark_update [PROJECTS [MEBIBYTES [ROUNDS]]]
//
// Each fetch is a process of its own, on both sides: the program starts itself for it.

#include "../support/measured_process.h"
#include "support/certificate_maker.h"
#include "support/manifest_maker.h"
#include "update/canonical_manifest.h"
#include "update/http_fetch.h"
#include "update/manifest_signature.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QStandardPaths>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

QByteArray write(const QDir &folder, const char *name, const QByteArray &content) {
    QFile file(folder.filePath(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot write %s", name);
    return QFile::encodeName(file.fileName());
}

void compareVerification(const QDir &folder, int projects, int rounds) {
    const support::KeyPair key = support::KeyPair::rsa(3072);
    const QString manifest = support::signedManifest(support::manifestOfProjects(projects), key);
    const QByteArray canonical = canonicalManifestText(manifest).toUtf8();
    const QByteArray keyPath = write(folder, "update.pub", key.publicPem().toUtf8());
    const QByteArray dataPath = write(folder, "canonical.json", canonical);
    const QByteArray signaturePath = write(folder, "canonical.sig", key.sign(canonical));

    std::vector<double> ours;
    std::vector<double> floor;
    for (int round = 0; round < rounds; ++round) {
        QElapsedTimer clock;
        clock.start();
        if (!verifyManifest(manifest, QFile::decodeName(keyPath)).ok)
            qFatal("the manifest is not verified");
        ours.push_back(double(clock.nsecsElapsed()) / 1e6);
        floor.push_back(1000 * runProcess({"openssl", "dgst", "-sha256", "-verify", keyPath, "-out",
                                           "/dev/null", "-signature", signaturePath, dataPath})
                                   .seconds);
    }
    std::printf("verify, %d projects: verifyManifest %.2f ms, openssl dgst -verify %.2f ms (a "
                "process), ratio %.2f\n",
                projects, median(ours), median(floor), median(ours) / median(floor));
}

// nginx, with a certificate of its own, for as long as the object lives.
class Server {
public:
    explicit Server(const QDir &folder)
        : m_authority(support::makeAuthority()) {
        const support::Certificate certificate = support::makeCertificate({}, &m_authority);
        write(folder, "server.pem", certificate.pem);
        write(folder, "server.key", certificate.keyPem);
        authorityPath = write(folder, "authority.pem", m_authority.pem);
        QTcpServer probe;
        probe.listen(QHostAddress::LocalHost);
        port = probe.serverPort();
        probe.close();
        const QString configuration =
            QStringLiteral("daemon off; master_process off; pid %1/pid; error_log %1/error.log;"
                           "events {} http { access_log off; sendfile on;"
                           "client_body_temp_path %1/t1; proxy_temp_path %1/t2;"
                           "fastcgi_temp_path %1/t3; uwsgi_temp_path %1/t4; scgi_temp_path %1/t5;"
                           "server { listen 127.0.0.1:%2 ssl; root %1; ssl_certificate "
                           "%1/server.pem; ssl_certificate_key %1/server.key; } }");
        write(folder, "nginx.conf",
              configuration.arg(folder.path(), QString::number(port)).toUtf8());
        m_process.start(
            QStandardPaths::findExecutable("nginx", {"/usr/sbin", "/usr/bin", "/usr/local/sbin"}),
            {"-e", folder.filePath("error.log"), "-c", folder.filePath("nginx.conf")});
        QTcpSocket socket;
        for (int attempt = 0; attempt < 100; ++attempt) {
            socket.connectToHost(QHostAddress(QHostAddress::LocalHost), port);
            if (socket.waitForConnected(1000) || m_process.waitForFinished(100))
                break;
        }
        if (socket.state() != QAbstractSocket::ConnectedState)
            qFatal("nginx did not start: is the Debian package nginx-light there?");
    }
    ~Server() {
        m_process.terminate();
        m_process.waitForFinished();
    }

    QByteArray authorityPath;
    quint16 port = 0;

private:
    support::Certificate m_authority;
    QProcess m_process;
};

void compareFetch(const QDir &folder, int mebibytes, int rounds) {
    QByteArray package(mebibytes << 20, '\0');
    for (int i = 0; i < package.size(); ++i)
        package[i] = char((quint32(i) * 2654435761U) >> 17);
    write(folder, "package.zip", package);
    package.clear();
    const Server server(folder);
    const QByteArray url = "https://localhost:" + QByteArray::number(server.port) + "/package.zip";
    const QByteArray self = QFile::encodeName(QCoreApplication::applicationFilePath());

    std::vector<double> ours;
    std::vector<double> theirs;
    double peak = 0;
    for (int round = 0; round < rounds; ++round) {
        const Spent own = runProcess({self, "--fetch", url, server.authorityPath});
        ours.push_back(own.seconds);
        peak = std::max(peak, own.peakMebibytes);
        theirs.push_back(runProcess({"curl", "--disable", "--silent", "--fail", "--cacert",
                                     server.authorityPath, "--output", "/dev/null", url})
                             .seconds);
    }
    std::printf("fetch, %d MiB over TLS: fetchUrl %.3f s, curl %.3f s, ratio %.2f   (reach 3, aim "
                "2), peak %.0f MiB\n",
                mebibytes, median(ours), median(theirs), median(ours) / median(theirs), peak);
}

int fetchOnly(const QString &url, const QString &authorityPath) {
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setCaCertificates(QSslCertificate::fromPath(authorityPath));
    QSslConfiguration::setDefaultConfiguration(configuration);
    const FetchResult result = fetchUrl(QUrl(url), 120000, 8);
    if (!result.ok)
        std::fprintf(stderr, "%s\n", qPrintable(result.error));
    return result.ok ? 0 : 1;
}

} // namespace

int main(int argc, char **argv) {
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.value(1) == QLatin1String("--fetch"))
        return fetchOnly(arguments.value(2), arguments.value(3));
    const auto number = [&arguments](int index, int otherwise) {
        return arguments.size() > index ? arguments.at(index).toInt() : otherwise;
    };
    const QTemporaryDir temporary;
    const QDir folder(temporary.path());
    const int rounds = number(3, 5);
    compareVerification(folder, number(1, 1000), rounds);
    compareFetch(folder, number(2, 256), rounds);
    return 0;
}
