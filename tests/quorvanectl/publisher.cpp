#include "publisher.h"

#include "quorvanectl/keys/signing_key.h"
#include "quorvanectl/package/project_pack.h"

namespace support {
namespace {

const ctl::SigningKey &key() {
    static const ctl::SigningKey key = ctl::SigningKey::make();
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
