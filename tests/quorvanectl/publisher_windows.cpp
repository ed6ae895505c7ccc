// A publisher where the tool neither signs nor packs: the key and the archive are the tests' own.
#include "publisher.h"

#include "support/file_tree.h"
#include "support/key_maker.h"

namespace support {
namespace {

const KeyPair &key() {
    static const KeyPair key = KeyPair::rsa(2048);
    return key;
}

} // namespace

QByteArray publisher::privatePem() {
    return QByteArray();
}

QByteArray publisher::publicPem() {
    return key().publicPem().toUtf8();
}

QByteArray publisher::sign(const QByteArray &bytes) {
    return key().sign(bytes);
}

void publisher::packSmallProject(const QString &project, const QString &packages) {
    FileTree tree = readTree(project);
    tree.remove("logs/2026-01-02.log");
    tree["line3.yslib"].replace("1.1.0", "1.2.0");
    writeTree(packages, {{QStringLiteral("产线三-1.2.0.zip"), zipOf(tree)}});
}

} // namespace support
