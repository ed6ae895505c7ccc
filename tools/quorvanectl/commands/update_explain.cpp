// quorvanectl update explain: the launcher's decision about a manifest, line by line.
#include "quorvanectl/manifest/update_explain.h"
#include "frame/app_paths.h"
#include "launcher/offer/update_component.h"
#include "quorvanectl/commands/commands.h"
#include "quorvanectl/commands/update_options.h"
#include "quorvanectl/files/json_input.h"
#include "quorvanectl/shell/inspected_installation.h"
#include "quorvanectl/shell/json_output.h"
#include "quorvanectl/shell/progress.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>
#include <QTranslator>

namespace ctl {
namespace {

const QLatin1String projectOption("project");
const QLatin1String urlOption("url");
const QLatin1String localeOption("locale");

void declare(QCommandLineParser &parser) {
    declareInstall(parser);
    parser.addOption(
        {projectOption, QStringLiteral("The selected project."), QStringLiteral("FILE.yslib")});
    parser.addOption(
        {urlOption,
         QStringLiteral("Takes the manifest as one that was fetched from this address, "
                        "not as one on a stick."),
         QStringLiteral("address")});
    parser.addOption({localeOption,
                      QStringLiteral("The launcher's language: en, as at its first start, or "
                                     "zh_CN."),
                      QStringLiteral("language"), QStringLiteral("en")});
    declareFormat(parser, textOrJson());
}

// As the launcher does: without the file its texts stay Chinese.
void speak(const QString &locale, QTranslator *translator) {
    if (locale != QLatin1String("en"))
        return;
    for (const QString &file : AppPaths::translationFiles()) {
        if (translator->load(file)) {
            QCoreApplication::installTranslator(translator);
            return;
        }
    }
}

void printVerification(const Console &console, const VerifyReport &verify) {
    printLine(console, inked(console, Ink::Heading, QStringLiteral("Signature")));
    printLine(console, QStringLiteral("  ") + inked(console, verify.ok ? Ink::Good : Ink::Error,
                                                    spelledOut(verify.message)));
    printLine(console,
              QStringLiteral("  key:       ") + spelledOut(AppPaths::updatePublicKeyPath()));
    if (!verify.details.isEmpty())
        printLine(console, QStringLiteral("  attempts:  ") + verify.details);
    if (!verify.canonicalSha256.isEmpty())
        printLine(console,
                  QStringLiteral("  canonical: sha256 %1, signature of %2 bytes")
                      .arg(verify.canonicalSha256, QString::number(verify.signatureBytes)));
}

void printItem(const Console &console, const QString &key, const WeighedItem &item) {
    const QString answer = item.available
                               ? inked(console, Ink::Good, QStringLiteral("offered"))
                               : inked(console, Ink::Warning, QStringLiteral("left out"));
    printLine(console, QStringLiteral("  %1 installed %2, %3: %4")
                           .arg((key + QLatin1Char(':')).leftJustified(12),
                                item.installed.isEmpty() ? QStringLiteral("unknown")
                                                         : spelledOut(item.installed),
                                answer, spelledOut(item.reason)));
}

void printItems(const Console &console, const OfferWeighing &offer) {
    printLine(console, inked(console, Ink::Heading, QStringLiteral("Items")));
    printItem(console, projectOption, offer.project);
    for (const UpdateComponent *component : updateComponents)
        printItem(console, component->keyText(), offer.*(component->item));
    const QString fingerprint = offerFingerprint(offer);
    if (fingerprint.isEmpty())
        return;
    printLine(console, QStringLiteral("  fingerprint: ") + spelledOut(fingerprint));
    printLine(console, QStringLiteral("  items:       ") + spelledOut(offerItems(offer)));
}

void printExplanation(const Console &console, const Explanation &explanation) {
    printVerification(console, explanation.verify);
    if (explanation.verify.ok)
        printItems(console, explanation.offer);
    printLine(console, inked(console, Ink::Heading, QStringLiteral("Log of the launcher")));
    for (const QString &entry : explanation.log) {
        for (const QString &line : entry.split(QLatin1Char('\n')))
            printLine(console, QStringLiteral("  ") + spelledOut(line));
    }
    printLine(console, inked(console, Ink::Heading, QStringLiteral("What the launcher says")));
    printLine(console, explanation.summary); // to the byte
}

int run(const QCommandLineParser &parser, Console &console) {
    QString error;
    const QString manifest = firstArgument(parser);
    const QString project = parser.value(projectOption);
    const QString url = parser.value(urlOption);
    const QString locale = parser.value(localeOption);
    const QString format = chosenFormat(parser, textOrJson(), &error);
    if (format.isEmpty() || readJsonObject(manifest, &error).isNull() ||
        (!project.isEmpty() && readJsonObject(project, &error).isNull()) ||
        !inspectInstallation(parser, &error))
        return refuse(console, error);
    if (!url.isEmpty() && !isServerAddress(url))
        return refuse(console, notAnAddress(url));
    if (locale != QLatin1String("en") && locale != QLatin1String("zh_CN"))
        return refuse(console, QStringLiteral("%1: the launcher speaks en and zh_CN").arg(locale));
    QTranslator translator;
    speak(locale, &translator);
    const QString projectFile =
        project.isEmpty() ? QString() : QDir::cleanPath(QFileInfo(project).absoluteFilePath());
    const Explanation explanation =
        whileTelling(console, QStringLiteral("weighing %1").arg(manifest),
                     [&] { return explainUpdate(manifest, url, projectFile); });
    if (format == QLatin1String("json"))
        printJson(console, QJsonDocument(toJson(explanation)));
    else
        printExplanation(console, explanation);
    return explanation.verify.ok ? Clean : Findings;
}

} // namespace

Command updateExplain() {
    return {QStringLiteral("update"),
            QStringLiteral("explain"),
            QStringLiteral("manifest.json"),
            QStringLiteral("Shows what a launcher would decide about a manifest, and why."),
            QStringLiteral("quorvanectl update explain manifest.json --install line_pc "
                           "--project demo/demo.yslib"),
            declare,
            run};
}

} // namespace ctl
