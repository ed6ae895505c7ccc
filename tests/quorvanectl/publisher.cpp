#include "publisher.h"

#include "quorvanectl/keys/signing_key.h"
#include "quorvanectl/package/project_pack.h"

#include <QFile>

namespace support {
namespace {

// The build has made it: that takes a second, and every test program wants it.
const ctl::SigningKey &key() {
    static const ctl::SigningKey key = [] {
        QFile file(QStringLiteral(PUBLISHER_KEY));
        if (!file.open(QIODevice::ReadOnly))
            qFatal("%s cannot be read", PUBLISHER_KEY);
        return ctl::SigningKey::fromPem(file.readAll(), file.fileName(), {}, nullptr);
    }();
    return key;
}

} // namespace

QByteArray publisher::privatePem() {
    return key().privatePem(nullptr);
}

QByteArray publisher::publicPem() {
    return key().publicPem();
}

QByteArray publisher::sign(const QByteArray &bytes) {
    return key().sign(bytes);
}

void publisher::packSmallProject(const QString &project, const QString &packages) {
    const ctl::PackResult pack = ctl::packProject(project, "1.2.0", packages, false);
    if (!pack.ok)
        qFatal("%s", qPrintable(pack.error + pack.findings.join('|')));
}

} // namespace support
