// Verifying many manifests at once by `quorvanectl update verify`, against libcrypto's verification of
// the same bytes in a loop.
//
//   verify    manifests of 1 kB, each in a file of its own: at most 0.2 ms each above libcrypto, which
//             takes the key from its DER form anew for each of them, as the command does, and finds key,
//             text and signature in memory
//
//   benchmark_verify [MANIFESTS [ROUNDS [TOOL]]]
//
// TOOL is another build's quorvanectl. It is started for each manifest alone, as one had to be that took
// no more than one.
// Processor time decides, for both sides are busy all the time; the wall's stands beside it.

#include "../support/measured_process.h"
#include "support/key_maker.h"
#include "support/manifest_maker.h"
#include "update/canonical_manifest.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonObject>
#include <QTemporaryDir>

#include <openssl/evp.h>
#include <openssl/x509.h>

#include <cstdio>
#include <ctime>
#include <memory>
#include <vector>

namespace {

template<auto Function>
struct Freed {
    template<typename Object>
    void operator()(Object *object) const {
        Function(object);
    }
};
using Key = std::unique_ptr<EVP_PKEY, Freed<EVP_PKEY_free>>;
using Context = std::unique_ptr<EVP_MD_CTX, Freed<EVP_MD_CTX_free>>;

struct Signed {
    QByteArray canonical;
    QByteArray signature;
};

void write(const QString &path, const QByteArray &content) {
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot write %s", qPrintable(path));
}

// Filled up to 1 kB by the name of its project.
QJsonObject manifestOf(int number) {
    QJsonObject manifest = support::manifestOfProjects(1);
    QJsonArray projects = manifest.value(QStringLiteral("projects")).toArray();
    QJsonObject project = projects.first().toObject();
    project.insert(QStringLiteral("name"), QStringLiteral("line %1").arg(number, 200));
    projects.replace(0, project);
    manifest.insert(QStringLiteral("projects"), projects);
    return manifest;
}

// A few that differ: to sign each of thousands would take longer than all rounds.
std::vector<Signed> writeManifests(const QDir &folder, int manifests, const support::KeyPair &key) {
    constexpr int different = 50;
    std::vector<Signed> all;
    for (int i = 0; i < manifests; ++i) {
        const QString path = folder.filePath(QStringLiteral("%1.json").arg(i));
        if (i >= different) {
            all.push_back(all.at(std::size_t(i % different)));
            if (!QFile::copy(folder.filePath(QStringLiteral("%1.json").arg(i % different)), path))
                qFatal("cannot write %s", qPrintable(path));
            continue;
        }
        const QString text = support::signedManifest(manifestOf(i), key);
        const QByteArray canonical = canonicalManifestText(text).toUtf8();
        all.push_back({canonical, key.sign(canonical)});
        write(path, text.toUtf8());
        if (i == 0)
            std::printf("a manifest has %d bytes\n", text.toUtf8().size());
    }
    return all;
}

bool isVerified(const Signed &one, const QByteArray &der) {
    const auto *at = reinterpret_cast<const unsigned char *>(der.constData());
    const Key key(d2i_PUBKEY(nullptr, &at, long(der.size())));
    const Context context(EVP_MD_CTX_new());
    const auto bytes = [](const QByteArray &text) {
        return reinterpret_cast<const unsigned char *>(text.constData());
    };
    return EVP_DigestVerifyInit(context.get(), nullptr, EVP_sha256(), nullptr, key.get()) == 1 &&
           EVP_DigestVerify(context.get(), bytes(one.signature), std::size_t(one.signature.size()),
                            bytes(one.canonical), std::size_t(one.canonical.size())) == 1;
}

Spent verifyInALoop(const std::vector<Signed> &all, const QByteArray &der) {
    QElapsedTimer wall;
    wall.start();
    const std::clock_t begin = std::clock();
    for (const Signed &one : all) {
        if (!isVerified(one, der))
            qFatal("a manifest is not verified");
    }
    Spent spent;
    spent.seconds = double(wall.nsecsElapsed()) / 1e9;
    spent.processorSeconds = double(std::clock() - begin) / CLOCKS_PER_SEC;
    return spent;
}

std::vector<QByteArray> commandFor(const QDir &folder, const QByteArray &tool, int first, int end) {
    std::vector<QByteArray> command{
        tool,       "update", "verify", "--key", QFile::encodeName(folder.filePath("update.pub")),
        "--format", "json"};
    for (int i = first; i < end; ++i)
        command.push_back(QFile::encodeName(folder.filePath(QStringLiteral("%1.json").arg(i))));
    return command;
}

Spent verifyAll(const QDir &folder, int manifests) {
    return runProcess(commandFor(folder, QUORVANE_TOOL, 0, manifests));
}

Spent verifyEach(const QDir &folder, const QByteArray &tool, int manifests) {
    Spent sum;
    for (int i = 0; i < manifests; ++i) {
        const Spent one = runProcess(commandFor(folder, tool, i, i + 1));
        sum.seconds += one.seconds;
        sum.processorSeconds += one.processorSeconds;
    }
    return sum;
}

} // namespace

int main(int argc, char **argv) {
    const QCoreApplication application(argc, argv);
    const int manifests = argc > 1 ? QByteArray(argv[1]).toInt() : 10000;
    const int rounds = argc > 2 ? QByteArray(argv[2]).toInt() : 11;
    const QTemporaryDir temporary;
    const QDir folder(temporary.path());
    const support::KeyPair key = support::KeyPair::rsa(3072);
    const QByteArray der = key.publicDer();
    write(folder.filePath("update.pub"), key.publicPem().toUtf8());
    const std::vector<Signed> all = writeManifests(folder, manifests, key);
    const QByteArray other = argc > 3 ? argv[3] : "";
    if (!std::freopen("/dev/null", "w", stdout)) // the reports; figures go to standard error
        return 1;

    std::vector<double> tool, toolWall, loop, loopWall;
    for (int round = 0; round < rounds; ++round) {
        const Spent own =
            other.isEmpty() ? verifyAll(folder, manifests) : verifyEach(folder, other, manifests);
        const Spent floor = verifyInALoop(all, der);
        tool.push_back(1000 * own.processorSeconds / manifests);
        toolWall.push_back(1000 * own.seconds / manifests);
        loop.push_back(1000 * floor.processorSeconds / manifests);
        loopWall.push_back(1000 * floor.seconds / manifests);
    }
    std::fprintf(stderr,
                 "verify, %d manifests: update verify %.3f ms each (wall %.3f), libcrypto %.3f ms "
                 "(wall %.3f), above it %.3f ms   (reach 0.2)\n",
                 manifests, median(tool), median(toolWall), median(loop), median(loopWall),
                 median(tool) - median(loop));
    return 0;
}
