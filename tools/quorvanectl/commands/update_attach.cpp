// quorvanectl update attach: a signature that was made elsewhere.
#include "quorvanectl/commands/commands.h"
#include "quorvanectl/commands/update_options.h"
#include "quorvanectl/files/file_access.h"
#include "quorvanectl/files/json_input.h"
#include "quorvanectl/manifest/manifest_attach.h"
#include "quorvanectl/manifest/public_key.h"
#include "quorvanectl/shell/progress.h"
#include "update/manifest_signature.h"

namespace ctl {
namespace {

void declare(QCommandLineParser &parser) {
    declarePublicKey(parser,
                     QStringLiteral("Refuses a signature that this public key does not verify."));
    declareOut(parser, QStringLiteral(", not to standard output"), Place::OutOrInPlace);
}

int run(const QCommandLineParser &parser, Console &console) {
    const QString signaturePath = parser.positionalArguments().at(1);
    const QString key = parser.value(QStringLiteral("key"));
    QString error;
    const QString text = readJsonObject(firstArgument(parser), &error);
    const QByteArray file = text.isNull() ? QByteArray() : readBytes(signaturePath, &error);
    if (file.isNull() || (!key.isEmpty() && !isPublicKey(key, &error)))
        return refuse(console, error);
    const QByteArray signature = signatureIn(file);
    if (signature.size() < smallestSignature) {
        return refuse(console, QStringLiteral("%1: holds no RSA signature, neither in bytes nor as "
                                              "base64")
                                   .arg(signaturePath));
    }
    QString complete;
    const VerifyResult verified =
        whileTelling(console, QStringLiteral("reading the manifest"), [&] {
            complete = withSignature(text, signature);
            return key.isEmpty() ? VerifyResult{true, QString()} : verifyManifest(complete, key);
        });
    if (!verified.ok) {
        tell(console, QStringLiteral("%1: %2").arg(signaturePath, verified.message));
        return Findings;
    }
    return deliver(complete.toUtf8(), parser, console, {signaturePath, key}, Place::OutOrInPlace);
}

} // namespace

Command updateAttach() {
    return {
        QStringLiteral("update"),
        QStringLiteral("attach"),
        QStringLiteral("manifest.json SIGNATURE"),
        QStringLiteral("Puts a signature that was made elsewhere into a manifest."),
        QStringLiteral("quorvanectl update attach manifest.json manifest.sig --out signed.json"),
        declare,
        run};
}

} // namespace ctl
