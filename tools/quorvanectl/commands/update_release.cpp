// quorvanectl update release: a project from its folder into the published site, in one step.
#include "quorvanectl/commands/commands.h"
#include "quorvanectl/commands/lint_printing.h"
#include "quorvanectl/commands/package_printing.h"
#include "quorvanectl/commands/signing_key_option.h"
#include "quorvanectl/commands/update_options.h"
#include "quorvanectl/package/project_pack.h"
#include "quorvanectl/release/site_release.h"
#include "quorvanectl/shell/installation.h"
#include "quorvanectl/shell/progress.h"
#include "update/files/failure.h"

namespace ctl {
namespace {

const QLatin1String dryRunOption("dry-run");

void declare(QCommandLineParser &parser) {
    parser.addOption({QStringLiteral("version"),
                      QStringLiteral("The version of the package, three or four numbers."),
                      QStringLiteral("version")});
    declareSigningKey(parser);
    parser.addOption({dryRunOption, QStringLiteral("Tells what it would do, and only reads.")});
    declareBase(parser);
    declareLibrary(parser);
}

void printFindings(const Console &console, const ReleaseResult &result) {
    printIssues(console, result.pack);
    if (!result.fault.isEmpty())
        printLine(console, inked(console, Ink::Error, spelledOut(result.fault)));
    printLint(console, result.manifestPath, result.lint);
}

void printDone(const Console &console, const ReleaseResult &result, int bits, bool isTrial) {
    const QString would = isTrial ? QStringLiteral("would be ") : QString();
    printLine(console,
              QStringLiteral("%1: %2 files, SHA-256 %3%4")
                  .arg(spelledOut(result.pack.zipPath), QString::number(result.pack.files),
                       result.pack.sha256,
                       result.wasThere ? QStringLiteral(", lay there already") : QString()));
    for (const QString &record : result.carriedOver)
        printLine(console, QStringLiteral("  %1carried over: %2").arg(would, spelledOut(record)));
    printLine(console,
              QStringLiteral("%1: %2signed with a key of %3 bits, verified and put in place")
                  .arg(spelledOut(result.manifestPath), would, QString::number(bits)));
}

// Whoever gets the key can publish in our name: it lies neither in what is packed nor in what is served.
bool isKeyApart(const QString &key, const ReleaseWish &wish, QString *error) {
    if (key.isEmpty()) // which is told where it is read
        return true;
    if (liesIn(key, wish.project))
        return failAbout(key,
                         QStringLiteral("lies in the project's folder, and would be published "
                                        "with it"),
                         error);
    return !liesIn(key, wish.site) ||
           failAbout(key, QStringLiteral("lies in the site, from where anybody fetches it"), error);
}

int run(const QCommandLineParser &parser, Console &console) {
    ReleaseWish wish;
    wish.site = firstArgument(parser);
    wish.project = parser.positionalArguments().at(1);
    wish.version = parser.value(QStringLiteral("version"));
    wish.base = parser.value(QStringLiteral("base"));
    wish.isTrial = parser.isSet(dryRunOption);
    if (!isFullVersion(wish.version))
        return refuse(console, notFullVersion(wish.version));
    QString error;
    if (!loadLibrary(parser, console, &error) ||
        !isKeyApart(parser.value(QStringLiteral("key")), wish, &error))
        return refuse(console, error);
    const SigningKey key = readSigningKey(parser, console, &error);
    if (!key.isValid())
        return refuse(console, error);
    const ReleaseResult result =
        whileTelling(console, QStringLiteral("releasing %1").arg(wish.project),
                     [&] { return releaseProject(wish, key); });
    printFindings(console, result);
    if (result.ok) {
        printDone(console, result, key.bits(), wish.isTrial);
        return Clean;
    }
    return result.error.isEmpty() ? Findings : refuse(console, result.error);
}

} // namespace

Command updateRelease() {
    return {QStringLiteral("update"),
            QStringLiteral("release"),
            QStringLiteral("SITE PROJECT_DIR"),
            QStringLiteral("Packs a project and publishes it in a folder, beside all that is on "
                           "offer there."),
            QStringLiteral("quorvanectl update release new_site demo --version 1.2.0 "
                           "--key private.pem"),
            declare,
            run};
}

} // namespace ctl
