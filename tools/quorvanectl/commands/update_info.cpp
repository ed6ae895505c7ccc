// quorvanectl update info: what is in a manifest or in a package.
#include "quorvanectl/manifest/update_info.h"
#include "quorvanectl/commands/commands.h"
#include "quorvanectl/commands/update_options.h"
#include "quorvanectl/files/file_access.h"
#include "quorvanectl/files/json_input.h"
#include "quorvanectl/manifest/manifest_verify.h"
#include "quorvanectl/manifest/public_key.h"
#include "quorvanectl/shell/installation.h"
#include "quorvanectl/shell/json_output.h"
#include "quorvanectl/shell/progress.h"
#include "update/files/text_file.h"
#include "update/manifest_keys.h"

#include <QFileInfo>
#include <QJsonDocument>

#include <limits>
#include <numeric>

namespace ctl {
namespace {

void declare(QCommandLineParser &parser) {
    declarePublicKey(parser,
                     QStringLiteral("Tells too whether this public key verifies the manifest."));
    declareBase(parser);
    declareLibrary(parser);
    declareFormat(parser, textOrJson());
}

// "runtime 1.3.0, from 1.0.0: packages/setup-1.3.0.exe, 13 bytes"
QString lineOf(const NamedPackage &named) {
    const QString least = named.package.record.value(manifest_keys::minVersion).toString();
    QString line = titleOf(named.package);
    if (!least.isEmpty())
        line += QStringLiteral(", from %1").arg(least);
    line += QStringLiteral(": %1").arg(named.package.url());
    if (named.bytes < 0)
        return line + QStringLiteral(", not here");
    line += QStringLiteral(", %1 bytes").arg(named.bytes);
    return named.isNamedOne ? line : line + QStringLiteral(", but not the file that it names");
}

QString lineOf(const QJsonObject &plugin) {
    return QStringLiteral("plug-in %1, from %2: %3")
        .arg(plugin.value(manifest_keys::id).toString(),
             plugin.value(manifest_keys::minVersion).toString(),
             plugin.value(manifest_keys::path).toString());
}

void printInfo(const Console &console, const QString &path, const ManifestInfo &info) {
    printLine(console, QStringLiteral("%1: a manifest of %2 bytes, published at %3")
                           .arg(spelledOut(path), QString::number(info.bytes),
                                info.publishedAt.isEmpty() ? QStringLiteral("no time")
                                                           : spelledOut(info.publishedAt)));
    for (const NamedPackage &named : info.packages) {
        const QString line = spelledOut(lineOf(named));
        printLine(console, QStringLiteral("  %1").arg(named.bytes < 0 || named.isNamedOne
                                                          ? line
                                                          : inked(console, Ink::Error, line)));
    }
    for (const QJsonObject &plugin : info.plugins)
        printLine(console, QStringLiteral("  %1").arg(spelledOut(lineOf(plugin))));
}

void printSignature(const Console &console, const ManifestInfo &info, const VerifyReport &report,
                    const QString &key) {
    if (key.isEmpty()) {
        printLine(console, info.signatureBytes == 0
                               ? QStringLiteral("  not signed")
                               : QStringLiteral("  signature: %1 bytes; --key tells whose")
                                     .arg(info.signatureBytes));
        return;
    }
    const Ink ink = report.ok ? Ink::Good : Ink::Error;
    printLine(console, QStringLiteral("  %1").arg(inked(console, ink, spelledOut(report.message))));
    printPublicKey(console, key);
}

int tellManifest(const QString &path, const QCommandLineParser &parser, const QString &format,
                 const Console &console) {
    const QString key = parser.value(QStringLiteral("key"));
    QString error;
    const QString text = readJsonObject(path, &error);
    if (text.isNull() || (!key.isEmpty() && !isPublicKey(key, &error)))
        return refuse(console, error);
    VerifyReport report;
    const ManifestInfo info =
        whileTelling(console, QStringLiteral("looking into the packages"), [&] {
            if (!key.isEmpty())
                report = verifyReport(text, key);
            return manifestInfo(text, QFileInfo(path).absolutePath(),
                                parser.value(QStringLiteral("base")));
        });
    if (format == QLatin1String("json")) {
        QJsonObject json = toJson(info);
        json.insert(QStringLiteral("file"), path);
        json.insert(QStringLiteral("ok"), key.isEmpty() ? QJsonValue() : QJsonValue(report.ok));
        json.insert(QStringLiteral("message"), report.message);
        json.insert(QStringLiteral("key_sha256"), key.isEmpty() ? QString() : fingerprintIn(key));
        printJson(console, QJsonDocument(json));
    } else {
        printInfo(console, path, info);
        printSignature(console, info, report, key);
    }
    return areNamedOnes(info) && (key.isEmpty() || report.ok) ? Clean : Findings;
}

void printInfo(const Console &console, const QString &path, const ProjectPackage &package,
               const QString &sum) {
    printLine(console, QStringLiteral("%1: a package of %2 bytes, SHA-256 %3")
                           .arg(spelledOut(path), QString::number(QFileInfo(path).size()), sum));
    printLine(console, QStringLiteral("  project %1 %2, %3 files, %4 bytes unpacked")
                           .arg(spelledOut(package.name), spelledOut(package.version),
                                QString::number(package.files.size()),
                                QString::number(std::accumulate(package.sizes.begin(),
                                                                package.sizes.end(), qint64(0)))));
    for (int i = 0; i < package.files.size(); ++i) {
        printLine(console,
                  QStringLiteral("  %1, %2 bytes")
                      .arg(spelledOut(package.files.at(i)), QString::number(package.sizes.at(i))));
    }
}

int tellPackage(const QString &path, const QCommandLineParser &parser, const QString &format,
                const Console &console) {
    QString error;
    if (parser.isSet(QStringLiteral("key"))) {
        return refuse(console, QStringLiteral("%1: a package carries no signature; --key goes with "
                                              "the manifest that names it")
                                   .arg(path));
    }
    if (!loadLibrary(parser, console, &error))
        return refuse(console, error);
    const ProjectPackage package =
        whileTelling(console, QStringLiteral("unpacking"), [&] { return inspectPackage(path); });
    const QString sum = package.unpacked ? fileSha256Hex(path, &error) : QString();
    if (sum.isEmpty())
        return refuse(console,
                      QStringLiteral("%1: %2").arg(path, package.unpacked ? error : package.error));
    if (format == QLatin1String("json")) {
        QJsonObject json = toJson(package);
        json.insert(QStringLiteral("file"), path);
        json.insert(QStringLiteral("bytes"), QFileInfo(path).size());
        json.insert(QStringLiteral("sha256"), sum);
        printJson(console, QJsonDocument(json));
    } else {
        printInfo(console, path, package, sum);
    }
    return Clean;
}

int run(const QCommandLineParser &parser, Console &console) {
    const QString path = firstArgument(parser);
    QString error;
    const QString format = chosenFormat(parser, textOrJson(), &error);
    if (format.isEmpty() || !isUsableFile(path, &error, std::numeric_limits<qint64>::max()))
        return refuse(console, error);
    return isArchive(path) ? tellPackage(path, parser, format, console)
                           : tellManifest(path, parser, format, console);
}

} // namespace

Command updateInfo() {
    return {QStringLiteral("update"),
            QStringLiteral("info"),
            QStringLiteral("FILE"),
            QStringLiteral("Tells what is in a manifest or in a package."),
            QStringLiteral("quorvanectl update info manifest.json --key update.pub"),
            declare,
            run};
}

} // namespace ctl
