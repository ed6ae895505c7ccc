// quorvanectl update verify: a manifest against a public key, as the launcher does.
#include "quorvanectl/commands/commands.h"
#include "quorvanectl/commands/update_options.h"
#include "quorvanectl/files/json_input.h"
#include "quorvanectl/manifest/manifest_verify.h"
#include "quorvanectl/manifest/public_key.h"
#include "quorvanectl/shell/json_output.h"
#include "quorvanectl/shell/progress.h"

#include <QJsonDocument>

namespace ctl {
namespace {

void declare(QCommandLineParser &parser) {
    declarePublicKey(parser, QStringLiteral("The public key to verify with."));
    declareFormat(parser, textOrJson());
}

void printReport(const Console &console, const QString &path, const VerifyReport &report) {
    const Ink ink = report.ok ? Ink::Good : Ink::Error;
    printLine(console, QStringLiteral("%1: %2").arg(
                           spelledOut(path), inked(console, ink, spelledOut(report.message))));
    printLine(console, QStringLiteral("  signed bytes, SHA-256: %1").arg(report.canonicalSha256));
    printLine(console, QStringLiteral("  signature: %1 bytes").arg(report.signatureBytes));
    if (!report.details.isEmpty())
        printLine(console, QStringLiteral("  attempts: %1").arg(report.details));
}

int run(const QCommandLineParser &parser, Console &console) {
    const QString path = firstArgument(parser);
    const QString key = parser.value(QStringLiteral("key"));
    QString error;
    const QString format = chosenFormat(parser, textOrJson(), &error);
    const QString text = format.isEmpty() ? QString() : readJsonObject(path, &error);
    if (text.isNull() || !isPublicKey(key, &error))
        return refuse(console, error);
    const VerifyReport report = whileTelling(console, QStringLiteral("reading the manifest"),
                                             [&] { return verifyReport(text, key); });
    if (format == QLatin1String("json"))
        printJson(console, QJsonDocument(toJson(report)));
    else
        printReport(console, path, report);
    return report.ok ? Clean : Findings;
}

} // namespace

Command updateVerify() {
    return {QStringLiteral("update"),
            QStringLiteral("verify"),
            QStringLiteral("manifest.json"),
            QStringLiteral("Verifies a manifest as the launcher does."),
            QStringLiteral("quorvanectl update verify manifest.json --key update.pub"),
            declare,
            run};
}

} // namespace ctl
