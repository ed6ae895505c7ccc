// quorvanectl update lint: a publisher's mistakes that the manifest's format does not forbid.
#include "quorvanectl/commands/commands.h"
#include "quorvanectl/commands/lint_printing.h"
#include "quorvanectl/commands/update_options.h"
#include "quorvanectl/files/file_access.h"
#include "quorvanectl/files/json_input.h"
#include "quorvanectl/manifest/manifest_lint.h"
#include "quorvanectl/shell/installation.h"
#include "quorvanectl/shell/json_output.h"
#include "quorvanectl/shell/progress.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace ctl {
namespace {

void declare(QCommandLineParser &parser) {
    parser.addOption({QStringLiteral("previous"),
                      QStringLiteral("The manifest that is published now, to compare with."),
                      QStringLiteral("manifest.json")});
    declareBase(parser);
    declareLibrary(parser);
    declareFormat(parser, textOrJson());
}

bool readManifestBytes(const QString &path, QByteArray *bytes, QString *error) {
    *bytes = readBytes(path, error);
    return !bytes->isNull() && isJsonObject(path, QString::fromUtf8(*bytes), error);
}

QJsonDocument toJson(const QString &path, const QVector<LintFinding> &findings) {
    QJsonArray list;
    for (const LintFinding &finding : findings) {
        list.append(QJsonObject{{QStringLiteral("kind"), finding.kind},
                                {QStringLiteral("where"), finding.where},
                                {QStringLiteral("message"), finding.message},
                                {QStringLiteral("severity"), finding.severity}});
    }
    return QJsonDocument(
        QJsonObject{{QStringLiteral("manifest"), path}, {QStringLiteral("findings"), list}});
}

void printText(const Console &console, const QString &path, const QVector<LintFinding> &findings) {
    printLint(console, path, findings);
    if (findings.isEmpty())
        printClean(console, path);
}

int run(const QCommandLineParser &parser, Console &console) {
    QString error;
    const QString path = firstArgument(parser);
    const QString format = chosenFormat(parser, textOrJson(), &error);
    const QString previous = parser.value(QStringLiteral("previous"));
    LintSubject subject;
    if (format.isEmpty() || !readManifestBytes(path, &subject.manifest, &error) ||
        (!previous.isEmpty() && !readManifestBytes(previous, &subject.previous, &error)) ||
        !loadLibrary(parser, console, &error))
        return refuse(console, error);
    subject.folder = QFileInfo(path).absolutePath();
    subject.base = parser.value(QStringLiteral("base"));
    const QVector<LintFinding> findings =
        whileTelling(console, QStringLiteral("looking into the packages"),
                     [&] { return lintManifest(subject); });
    if (format == QLatin1String("json"))
        printJson(console, toJson(path, findings));
    else
        printText(console, path, findings);
    return hasErrors(findings) ? Findings : Clean;
}

} // namespace

Command updateLint() {
    return {
        QStringLiteral("update"),
        QStringLiteral("lint"),
        QStringLiteral("manifest.json"),
        QStringLiteral("Finds a publisher's mistakes that the manifest's format does not forbid."),
        QStringLiteral("quorvanectl update lint manifest.json"),
        declare,
        run};
}

} // namespace ctl
