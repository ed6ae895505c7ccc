// Proving a manifest and fetching a package, each against the tool that does nothing else, in one
// run.
//
//   verify    canonical form and signature of a manifest with 1,000 projects, against
//             `openssl dgst -sha256 -verify` on the finished canonical bytes: a floor, reported
//   fetch     256 MiB over TLS from nginx on loopback, against `curl`: at most 1.2 times its time; and
//             against a program with nothing but the network library, which gets the same into memory:
//             what that takes, no program with it can do without
//   memory    the peak above that of a process that fetches nothing: at most 1.1 times the body
//
//   benchmark_update [PROJECTS [MEBIBYTES [ROUNDS [PROGRAM]]]]
//
// Each fetch is a process of its own, on both sides: the program starts itself for it. PROGRAM is another
// build of this one, whose fetch is measured instead.

#include "../support/measured_process.h"
#include "support/certificate_maker.h"
#include "support/manifest_maker.h"
#include "update/canonical_manifest.h"
#include "update/http_fetch.h"
#include "update/manifest_signature.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
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

// Piece by piece: a process that is started counts this one's memory among its own.
void writePackage(const QDir &folder, int mebibytes) {
    QByteArray piece(1 << 20, '\0');
    QFile file(folder.filePath("package.zip"));
    bool written = file.open(QIODevice::WriteOnly);
    for (int number = 0; number < mebibytes && written; ++number) {
        for (int i = 0; i < piece.size(); ++i)
            piece[i] = char((quint32(number + i) * 2654435761U) >> 17);
        written = file.write(piece) == piece.size();
    }
    if (!written)
        qFatal("cannot write the package");
}

struct Side {
    std::vector<double> wall;
    std::vector<double> processor;
    double peak = 0; // in MiB

    void add(const Spent &spent) {
        wall.push_back(spent.seconds);
        processor.push_back(spent.processorSeconds);
        peak = std::max(peak, spent.peakMebibytes);
    }
};

void compare(const char *against, int mebibytes, const Side &ours, const Side &other) {
    std::printf(
        "fetch, %d MiB over TLS, against %s: ratio %.2f in wall time (%.2f s, %.2f s), %.2f in "
        "processor time (%.2f s, %.2f s), medians of %d rounds\n",
        mebibytes, against, median(ours.wall) / median(other.wall), median(ours.wall),
        median(other.wall), median(ours.processor) / median(other.processor),
        median(ours.processor), median(other.processor), int(ours.wall.size()));
}

void compareFetch(const QDir &folder, int mebibytes, int rounds, const QByteArray &program) {
    writePackage(folder, mebibytes);
    const Server server(folder);
    const QByteArray url = "https://localhost:" + QByteArray::number(server.port) + "/package.zip";
    const QByteArray self = QFile::encodeName(QCoreApplication::applicationFilePath());

    Side ours;
    Side bare;
    Side curl;
    for (int round = 0; round < rounds; ++round) {
        ours.add(runProcess({program, "--fetch", url, server.authorityPath}));
        bare.add(
            runProcess({self, "--bare", url, server.authorityPath, QByteArray::number(mebibytes)}));
        curl.add(runProcess({"curl", "--disable", "--silent", "--fail", "--cacert",
                             server.authorityPath, "--output", "/dev/null", url}));
    }
    const double idle = runProcess({self, "--idle", url, server.authorityPath}).peakMebibytes;
    compare("curl", mebibytes, ours, curl);
    compare("the bare library", mebibytes, ours, bare);
    std::printf(
        "fetch, memory: peak %.0f MiB, %.0f MiB without a fetch, %.2f of the body above   (reach "
        "1.1)\n",
        ours.peak, idle, (ours.peak - idle) / mebibytes);
}

// Reads what comes, as it is announced, into memory that is there beforehand.
int fetchBarely(const QString &url, int mebibytes) {
    QNetworkAccessManager manager;
    QNetworkReply *const reply = manager.get(QNetworkRequest(QUrl(url)));
    QByteArray body(mebibytes << 20, Qt::Uninitialized);
    qint64 size = 0;
    const auto take = [&] { size += reply->read(body.data() + size, body.size() - size); };
    QObject::connect(reply, &QNetworkReply::readyRead, reply, take);
    QEventLoop loop;
    QObject::connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
    loop.exec();
    take();
    return size == body.size() ? 0 : 1;
}

void trust(const QString &authorityPath) {
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setCaCertificates(QSslCertificate::fromPath(authorityPath));
    QSslConfiguration::setDefaultConfiguration(configuration);
}

int fetchOnly(const QString &url) {
    const FetchResult result = fetchUrl(QUrl(url), 120000, 8);
    if (!result.ok)
        std::fprintf(stderr, "%s\n", qPrintable(result.error));
    return result.ok ? 0 : 1;
}

} // namespace

int main(int argc, char **argv) {
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const QString what = arguments.value(1);
    if (what.startsWith("--")) {
        trust(arguments.value(3));
        if (what == "--idle")
            return 0;
        return what == "--bare" ? fetchBarely(arguments.value(2), arguments.value(4).toInt())
                                : fetchOnly(arguments.value(2));
    }
    const auto number = [&arguments](int index, int otherwise) {
        return arguments.size() > index ? arguments.at(index).toInt() : otherwise;
    };
    const QTemporaryDir temporary;
    const QDir folder(temporary.path());
    const int rounds = number(3, 5);
    compareVerification(folder, number(1, 1000), rounds);
    compareFetch(folder, number(2, 256), rounds,
                 QFile::encodeName(arguments.value(4, QCoreApplication::applicationFilePath())));
    return 0;
}
