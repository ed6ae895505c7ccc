// quorvanectl update sign: a manifest with the signature of the publisher's key. Not on Windows.
#include "quorvanectl/commands/commands.h"
#include "quorvanectl/commands/passphrase_option.h"
#include "quorvanectl/commands/update_options.h"
#include "quorvanectl/files/file_access.h"
#include "quorvanectl/files/json_input.h"
#include "quorvanectl/keys/signing_key.h"
#include "quorvanectl/manifest/manifest_attach.h"
#include "quorvanectl/manifest/public_key.h"
#include "quorvanectl/shell/force_option.h"
#include "quorvanectl/shell/progress.h"
#include "update/canonical_manifest.h"

#include <QFileInfo>

namespace ctl {
namespace {

void declare(QCommandLineParser &parser) {
    parser.addOption(
        {QStringLiteral("key"), QStringLiteral("The private key."), QStringLiteral("private.pem")});
    declarePassphrase(parser);
    declareOut(parser, QStringLiteral(", not to standard output"));
}

SigningKey readKey(const QCommandLineParser &parser, Console &console, QString *error) {
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
    const bool isOpen =
        (QFileInfo(path).permissions() & (QFile::ReadGroup | QFile::ReadOther)) != 0;
    if (key.isValid() && isOpen)
        tell(console, QStringLiteral("%1: others can read this private key").arg(path));
    return key;
}

int run(const QCommandLineParser &parser, Console &console) {
    const QString out = parser.value(QStringLiteral("out"));
    QString error;
    const QString text = readText(firstArgument(parser), &error);
    const QString keyPath = parser.value(QStringLiteral("key"));
    if (text.isNull() || !mayDeliver(parser, {keyPath}, &error))
        return refuse(console, error);
    if (!isJsonObject(firstArgument(parser), text, &error))
        return refuse(console, error);
    const SigningKey key = readKey(parser, console, &error);
    if (!key.isValid())
        return refuse(console, error);
    const QByteArray complete = whileTelling(console, QStringLiteral("signing"), [&] {
        const QByteArray signature = key.sign(canonicalManifestText(text).toUtf8());
        return signature.isEmpty() ? QByteArray() : withSignature(text, signature).toUtf8();
    });
    if (complete.isEmpty())
        return refuse(console, QStringLiteral("OpenSSL cannot sign with this key"));
    if (out.isEmpty())
        print(console, QString::fromUtf8(complete));
    else if (!writeFile(out, complete, isForced(parser), &error))
        return refuse(console, error);
    else
        printLine(console, QStringLiteral("%1: signed with a key of %2 bits")
                               .arg(spelledOut(out), QString::number(key.bits())));
    return Clean;
}

} // namespace

Command updateSign() {
    return {
        QStringLiteral("update"),
        QStringLiteral("sign"),
        QStringLiteral("manifest.json"),
        QStringLiteral("Signs a manifest."),
        QStringLiteral("quorvanectl update sign manifest.json --key private.pem --out signed.json"),
        declare,
        run};
}

} // namespace ctl
