// quorvanectl update sign: a manifest with the signature of the publisher's key. Not on Windows.
#include "quorvanectl/commands/commands.h"
#include "quorvanectl/commands/signing_key_option.h"
#include "quorvanectl/commands/update_options.h"
#include "quorvanectl/files/file_access.h"
#include "quorvanectl/files/json_input.h"
#include "quorvanectl/manifest/manifest_attach.h"
#include "quorvanectl/shell/force_option.h"
#include "quorvanectl/shell/progress.h"
#include "update/canonical_manifest.h"

namespace ctl {
namespace {

void declare(QCommandLineParser &parser) {
    declareSigningKey(parser);
    declareOut(parser, QStringLiteral(", not to standard output"));
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
    const SigningKey key = readSigningKey(parser, console, &error);
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
