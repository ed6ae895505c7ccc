// quorvanectl update sign: a manifest with the signature of the publisher's key.
#include "quorvanectl/commands/commands.h"
#include "quorvanectl/commands/signing_key_option.h"
#include "quorvanectl/commands/update_options.h"
#include "quorvanectl/files/file_access.h"
#include "quorvanectl/files/json_input.h"
#include "quorvanectl/shell/progress.h"

namespace ctl {
namespace {

void declare(QCommandLineParser &parser) {
    declareSigningKey(parser);
    declareOut(parser, QStringLiteral(", not to standard output"), Place::OutOrInPlace);
}

int run(const QCommandLineParser &parser, Console &console) {
    QString error;
    const QString text = readText(firstArgument(parser), &error);
    const QStringList inputs{parser.value(QStringLiteral("key"))};
    if (text.isNull() || !mayDeliver(parser, inputs, &error, Place::OutOrInPlace))
        return refuse(console, error);
    if (!isJsonObject(firstArgument(parser), text, &error))
        return refuse(console, error);
    const SigningKey key = readSigningKey(parser, console, &error);
    if (!key.isValid())
        return refuse(console, error);
    const QByteArray complete =
        whileTelling(console, QStringLiteral("signing"), [&] { return signedWith(key, text); });
    if (complete.isEmpty())
        return refuse(console, cannotSign());
    return deliver(complete, parser, console, inputs, Place::OutOrInPlace,
                   QStringLiteral("signed with a key of %1 bits").arg(key.bits()));
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
