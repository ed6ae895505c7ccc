#include "quorvanectl/commands/signing_key_option.h"

#include "quorvanectl/commands/passphrase_option.h"
#include "quorvanectl/files/file_access.h"
#include "quorvanectl/keys/own_files.h"
#include "quorvanectl/manifest/manifest_attach.h"
#include "quorvanectl/manifest/public_key.h"
#include "update/canonical_manifest.h"

#include <QCommandLineParser>

namespace ctl {

void declareSigningKey(QCommandLineParser &parser) {
    parser.addOption(
        {QStringLiteral("key"), QStringLiteral("The private key."), QStringLiteral("private.pem")});
    declarePassphrase(parser);
}

SigningKey readSigningKey(const QCommandLineParser &parser, const Console &console,
                          QString *error) {
    const QString path = parser.value(QStringLiteral("key"));
    if (path.isEmpty()) {
        *error = QStringLiteral("no key given; --key names the file");
        return SigningKey();
    }
    QByteArray pem = readBytes(path, error);
    if (pem.isNull())
        return SigningKey();
    const auto ask = [&](Passphrase &passphrase, QString *why) {
        return getPassphrase(parser, QStringLiteral("Passphrase of %1: ").arg(path), false,
                             &passphrase, why);
    };
    const SigningKey key = SigningKey::fromPem(pem, path, ask, error);
    wipe(&pem);
    if (key.isValid() && key.bits() < 8 * smallestSignature) {
        *error = QStringLiteral("%1: a key of %2 bits is too short; take 3072")
                     .arg(path, QString::number(key.bits()));
        return SigningKey();
    }
    if (key.isValid() && othersMayRead(path))
        tell(console, QStringLiteral("%1: others can read this private key").arg(path));
    return key;
}

QByteArray signedWith(const SigningKey &key, const QString &manifestText) {
    const QByteArray signature = key.sign(canonicalManifestText(manifestText).toUtf8());
    return signature.isEmpty() ? QByteArray() : withSignature(manifestText, signature).toUtf8();
}

QString cannotSign() {
    return QStringLiteral("OpenSSL cannot sign with this key");
}

} // namespace ctl
