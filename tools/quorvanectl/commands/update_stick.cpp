// quorvanectl update stick: a signed update laid out on a stick.
#include "quorvanectl/commands/commands.h"
#include "quorvanectl/commands/update_options.h"
#include "quorvanectl/manifest/public_key.h"
#include "quorvanectl/manifest/stick_layout.h"
#include "quorvanectl/shell/force_option.h"
#include "quorvanectl/shell/progress.h"

namespace ctl {
namespace {

void declare(QCommandLineParser &parser) {
    declarePublicKey(
        parser, QStringLiteral("Copies nothing unless this public key verifies the manifest."));
    declareForce(parser);
}

void printResult(const Console &console, const StickResult &result, const QString &mountPoint) {
    if (!result.isVolume) {
        tell(console,
             QStringLiteral("%1: is no mounted volume; a launcher looks only at the top of "
                            "those")
                 .arg(mountPoint));
    }
    for (const QString &package : result.packages)
        printLine(console, spelledOut(package));
    printLine(console, spelledOut(result.manifestPath));
}

int run(const QCommandLineParser &parser, Console &console) {
    const QString mountPoint = parser.positionalArguments().at(1);
    const QString key = parser.value(QStringLiteral("key"));
    QString error;
    if (!key.isEmpty() && !isPublicKey(key, &error))
        return refuse(console, error);
    StickResult result;
    {
        Progress progress(console, QStringLiteral("copying to %1").arg(mountPoint));
        result =
            layOutStick(firstArgument(parser), mountPoint, key, isForced(parser),
                        [&progress](qint64 done, qint64 total) { progress.reached(done, total); });
    }
    for (const QString &finding : qAsConst(result.findings))
        printLine(console, inked(console, Ink::Error, spelledOut(finding)));
    if (!result.findings.isEmpty())
        return Findings;
    if (!result.ok)
        return refuse(console, result.error);
    printResult(console, result, mountPoint);
    return Clean;
}

} // namespace

Command updateStick() {
    return {QStringLiteral("update"),
            QStringLiteral("stick"),
            QStringLiteral("DIR MOUNTPOINT"),
            QStringLiteral("Lays a signed update out on a stick."),
            QStringLiteral("quorvanectl update stick site stick"),
            declare,
            run};
}

} // namespace ctl
