// quorvanectl update verify: manifests against a public key, as the launcher does.
#include "quorvanectl/commands/commands.h"
#include "quorvanectl/commands/update_options.h"
#include "quorvanectl/files/json_input.h"
#include "quorvanectl/manifest/manifest_verify.h"
#include "quorvanectl/manifest/public_key.h"
#include "quorvanectl/shell/json_output.h"
#include "quorvanectl/shell/progress.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QVector>

#include <algorithm>

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

// Which key it was, for programs.
QJsonObject withKey(QJsonObject report, const QString &key) {
    report.insert(QStringLiteral("key_sha256"), fingerprintIn(key));
    return report;
}

int verifyOne(const QString &path, const QString &key, const QString &format,
              const Console &console) {
    QString error;
    const QString text = readJsonObject(path, &error);
    if (text.isNull() || !isPublicKey(key, &error))
        return refuse(console, error);
    const VerifyReport report = whileTelling(console, QStringLiteral("reading the manifest"),
                                             [&] { return verifyReport(text, key); });
    if (format == QLatin1String("json")) {
        printJson(console, QJsonDocument(withKey(toJson(report), key)));
    } else {
        printReport(console, path, report);
        printPublicKey(console, key);
    }
    return report.ok ? Clean : Findings;
}

// One manifest among several. A file that cannot be used is told in its place, and the next one goes on.
struct Verified {
    QString manifest;
    VerifyReport report;
    int status = Refused;
};

Verified verified(const QString &path, const QString &key) {
    QString error;
    const QString text = readJsonObject(path, &error);
    Verified result;
    result.manifest = path;
    if (text.isNull()) {
        result.report.message = error.mid(path.size() + 2); // behind "path: "
        return result;
    }
    result.report = verifyReport(text, key);
    result.status = result.report.ok ? Clean : Findings;
    return result;
}

QVector<Verified> verifyEach(const QStringList &paths, const QString &key, const Console &console) {
    Progress progress(console, QStringLiteral("reading the manifests"));
    QVector<Verified> all;
    for (const QString &path : paths) {
        all.append(verified(path, key));
        progress.reached(all.size(), paths.size());
    }
    return all;
}

void printLines(const Console &console, const QVector<Verified> &all, const QString &key) {
    for (const Verified &one : all) {
        const Ink ink = one.status == Clean ? Ink::Good : Ink::Error;
        printLine(console, QStringLiteral("%1: %2").arg(
                               spelledOut(one.manifest),
                               inked(console, ink, spelledOut(one.report.message))));
    }
    printPublicKey(console, key);
}

QJsonDocument toJson(const QVector<Verified> &all, const QString &key) {
    QJsonArray list;
    for (const Verified &one : all) {
        QJsonObject element = withKey(toJson(one.report), key);
        element.insert(QStringLiteral("manifest"), one.manifest);
        list.append(element);
    }
    return QJsonDocument(list);
}

// The worst status of all.
int verifySeveral(const QStringList &paths, const QString &key, const QString &format,
                  const Console &console) {
    QString error;
    if (!isPublicKey(key, &error))
        return refuse(console, error);
    const QVector<Verified> all = verifyEach(paths, key, console);
    if (format == QLatin1String("json"))
        printJson(console, toJson(all, key));
    else
        printLines(console, all, key);
    const auto worst =
        std::max_element(all.begin(), all.end(), [](const Verified &one, const Verified &other) {
            return one.status < other.status;
        });
    return worst->status;
}

int run(const QCommandLineParser &parser, Console &console) {
    const QStringList paths = parser.positionalArguments();
    const QString key = parser.value(QStringLiteral("key"));
    QString error;
    const QString format = chosenFormat(parser, textOrJson(), &error);
    if (format.isEmpty())
        return refuse(console, error);
    return paths.size() == 1 ? verifyOne(paths.first(), key, format, console)
                             : verifySeveral(paths, key, format, console);
}

} // namespace

Command updateVerify() {
    return {QStringLiteral("update"),
            QStringLiteral("verify"),
            QStringLiteral("manifest.json..."),
            QStringLiteral("Verifies manifests as the launcher does."),
            QStringLiteral("quorvanectl update verify manifest.json --key update.pub"),
            declare,
            run};
}

} // namespace ctl
