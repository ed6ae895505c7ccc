// quorvanectl update: a manifest and its packages, without a private key.
#include "quorvanectl/commands/commands.h"
#include "quorvanectl/files/file_access.h"
#include "quorvanectl/files/json_input.h"
#include "quorvanectl/manifest/manifest_attach.h"
#include "quorvanectl/manifest/manifest_build.h"
#include "quorvanectl/manifest/manifest_format.h"
#include "quorvanectl/manifest/manifest_lint.h"
#include "quorvanectl/manifest/manifest_verify.h"
#include "quorvanectl/manifest/stick_layout.h"
#include "quorvanectl/shell/installation.h"
#include "quorvanectl/shell/json_output.h"
#include "quorvanectl/shell/progress.h"
#include "update/manifest_signature.h"

#include <QDateTime>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>

namespace ctl {
namespace {

const QLatin1String readingManifest("reading the manifest");
const int smallestSignature = 128; // bytes, of an RSA key of 1024 bits

QStringList formats() {
    return {QStringLiteral("text"), QStringLiteral("json")};
}

void declareOut(QCommandLineParser &parser, const QString &otherwise) {
    parser.addOption({QStringLiteral("out"),
                      QStringLiteral("Writes to this file%1.").arg(otherwise),
                      QStringLiteral("file")});
    declareForce(parser);
}

void declareKey(QCommandLineParser &parser, const QString &what) {
    parser.addOption({QStringLiteral("key"), what, QStringLiteral("update.pub")});
}

void declareBase(QCommandLineParser &parser) {
    parser.addOption({QStringLiteral("base"),
                      QStringLiteral("The URL of the manifest's folder, where the packages have "
                                     "absolute addresses."),
                      QStringLiteral("URL")});
}

QString first(const QCommandLineParser &parser) {
    return parser.positionalArguments().constFirst();
}

// The text of a manifest; null, with a line in `error`, if the file holds none.
QString readManifest(const QString &path, QString *error) {
    const QString text = readText(path, error);
    return text.isNull() || isJsonObject(path, text, error) ? text : QString();
}

bool isUsableKey(const QString &path, QString *error) {
    if (path.isEmpty()) {
        *error = QStringLiteral("no key given; --key names the file");
        return false;
    }
    const QString pem = readText(path, error);
    if (pem.isNull())
        return false;
    // A private key is PEM too: only a try tells.
    QString attempts;
    (void)verifyRsaSha256(decodePemBody(pem), QByteArray(), QByteArray(smallestSignature, '\0'),
                          &attempts);
    if (attempts.startsWith(QLatin1String("BCryptVerifySignature")))
        return true;
    *error = QStringLiteral("%1: holds no RSA public key in PEM form").arg(path);
    return false;
}

// To the file that --out names, else to standard output.
int deliver(const QByteArray &bytes, const QCommandLineParser &parser, const Console &console) {
    const QString path = parser.value(QStringLiteral("out"));
    if (path.isEmpty()) {
        print(console, QString::fromUtf8(bytes));
        return Clean;
    }
    QString error;
    if (!writeFile(path, bytes, isForced(parser), &error))
        return refuse(console, error);
    printLine(console, QStringLiteral("%1: written").arg(spelledOut(path)));
    return Clean;
}

// --- manifest -------------------------------------------------------------------------------------

struct InstallerOption {
    const char *option;
    const char *key;
};
const InstallerOption installerOptions[] = {
    {"runtime", "runtime"},
    {"launcher", "launcher"},
    {"editor", "editor"},
    {"python-tools", "pythonTools"},
};

void declareManifest(QCommandLineParser &parser) {
    declareOut(parser, QString());
    for (const InstallerOption &installer : installerOptions) {
        parser.addOption({QLatin1String(installer.option),
                          QStringLiteral("Offers this installer as the component `%1`.")
                              .arg(QLatin1String(installer.key)),
                          QStringLiteral("setup.exe")});
    }
    parser.addOption(
        {QStringLiteral("min-version"),
         QStringLiteral("The lowest version that a component may be updated from, such "
                        "as runtime=1.0.0. May come again."),
         QStringLiteral("component=version")});
    parser.addOption({QStringLiteral("plugin"),
                      QStringLiteral("A plug-in that the runtime expects. May come again."),
                      QStringLiteral("id,minVersion,path")});
    parser.addOption({QStringLiteral("published-at"),
                      QStringLiteral("The time of publication (default: now)."),
                      QStringLiteral("time")});
    declareBase(parser);
    declareLibrary(parser);
}

bool readMinVersions(const QCommandLineParser &parser, ManifestWish *wish, QString *error) {
    const QStringList pairs = parser.values(QStringLiteral("min-version"));
    for (const QString &pair : pairs) {
        const QString component = pair.section(QLatin1Char('='), 0, 0);
        const QString version = pair.section(QLatin1Char('='), 1);
        QString fault;
        if (!componentKeys().contains(component))
            fault = QStringLiteral("no such component; there are: %1")
                        .arg(componentKeys().join(QStringLiteral(", ")));
        else if (version.isEmpty())
            fault = QStringLiteral("no version, as in runtime=1.0.0");
        else if (!wish->installers.contains(component))
            fault = QStringLiteral("no installer of this component is given");
        if (!fault.isEmpty()) {
            *error = QStringLiteral("--min-version %1: %2").arg(pair, fault);
            return false;
        }
        wish->minVersions.insert(component, version);
    }
    return true;
}

bool readWish(const QCommandLineParser &parser, ManifestWish *wish, QString *error) {
    const QString out = parser.value(QStringLiteral("out"));
    if (out.isEmpty()) {
        *error =
            QStringLiteral("--out must name the manifest: packages are addressed from its folder");
        return false;
    }
    wish->folder = QFileInfo(out).absolutePath();
    wish->base = parser.value(QStringLiteral("base"));
    wish->publishedAt = parser.value(QStringLiteral("published-at"));
    if (wish->publishedAt.isEmpty())
        wish->publishedAt = QDateTime::currentDateTimeUtc().toString(Qt::ISODate);
    wish->projects = parser.positionalArguments();
    wish->plugins = parser.values(QStringLiteral("plugin"));
    for (const InstallerOption &installer : installerOptions) {
        const QString file = parser.value(QLatin1String(installer.option));
        if (!file.isEmpty())
            wish->installers.insert(QLatin1String(installer.key), file);
    }
    return readMinVersions(parser, wish, error) &&
           mayWrite(out, isForced(parser), error); // before the packages are read
}

int makeManifest(const QCommandLineParser &parser, Console &console) {
    ManifestWish wish;
    QString error;
    if (!readWish(parser, &wish, &error) || !loadLibrary(parser, &error))
        return refuse(console, error);
    QJsonObject manifest;
    {
        const Progress progress(console, QStringLiteral("reading the packages"));
        manifest = buildManifest(wish, &error);
    }
    if (manifest.isEmpty())
        return refuse(console, error);
    return deliver(manifestBytes(manifest), parser, console);
}

// --- lint -----------------------------------------------------------------------------------------

void declareLint(QCommandLineParser &parser) {
    parser.addOption({QStringLiteral("previous"),
                      QStringLiteral("The manifest that is published now, to compare with."),
                      QStringLiteral("manifest.json")});
    declareBase(parser);
    declareLibrary(parser);
    declareFormat(parser, formats());
}

bool readManifestBytes(const QString &path, QByteArray *bytes, QString *error) {
    *bytes = readBytes(path, error);
    return !bytes->isNull() && isJsonObject(path, QString::fromUtf8(*bytes), error);
}

QJsonDocument lintJson(const QString &path, const QVector<LintFinding> &findings) {
    QJsonArray list;
    for (const LintFinding &finding : findings) {
        list.append(QJsonObject{{QStringLiteral("kind"), finding.kind},
                                {QStringLiteral("where"), finding.where},
                                {QStringLiteral("message"), finding.message}});
    }
    return QJsonDocument(
        QJsonObject{{QStringLiteral("manifest"), path}, {QStringLiteral("findings"), list}});
}

void printLint(const Console &console, const QString &path, const QVector<LintFinding> &findings) {
    for (const LintFinding &finding : findings) {
        printLine(console,
                  QStringLiteral("%1: %2").arg(
                      spelledOut(path), inked(console, Ink::Error, spelledOut(lintLine(finding)))));
    }
    if (findings.isEmpty()) {
        printLine(console,
                  QStringLiteral("%1: %2").arg(spelledOut(path),
                                               inked(console, Ink::Good, QStringLiteral("clean"))));
    }
}

int lint(const QCommandLineParser &parser, Console &console) {
    QString error;
    const QString path = first(parser);
    const QString format = chosenFormat(parser, formats(), &error);
    const QString previous = parser.value(QStringLiteral("previous"));
    LintSubject subject;
    if (format.isEmpty() || !readManifestBytes(path, &subject.manifest, &error) ||
        (!previous.isEmpty() && !readManifestBytes(previous, &subject.previous, &error)) ||
        !loadLibrary(parser, &error))
        return refuse(console, error);
    subject.folder = QFileInfo(path).absolutePath();
    subject.base = parser.value(QStringLiteral("base"));
    QVector<LintFinding> findings;
    {
        const Progress progress(console, QStringLiteral("looking into the packages"));
        findings = lintManifest(subject);
    }
    if (format == QLatin1String("json"))
        printJson(console, lintJson(path, findings));
    else
        printLint(console, path, findings);
    return findings.isEmpty() ? Clean : Findings;
}

// --- canonical, attach, verify ----------------------------------------------------------------------

void declareCanonical(QCommandLineParser &parser) {
    declareOut(parser, QStringLiteral(", not to standard output"));
}

int printCanonical(const QCommandLineParser &parser, Console &console) {
    QString error;
    const QString canonical = whileTelling(console, readingManifest, [&] {
        const QString text = readManifest(first(parser), &error);
        return text.isNull() ? QString() : canonicalManifestText(text);
    });
    if (canonical.isNull())
        return refuse(console, error);
    return deliver(canonical.toUtf8(), parser, console);
}

void declareAttach(QCommandLineParser &parser) {
    declareKey(parser, QStringLiteral("Refuses a signature that this public key does not verify."));
    declareOut(parser, QStringLiteral(", not to standard output"));
}

int attach(const QCommandLineParser &parser, Console &console) {
    const QString signaturePath = parser.positionalArguments().at(1);
    const QString key = parser.value(QStringLiteral("key"));
    QString error;
    const QString text = readManifest(first(parser), &error);
    const QByteArray file = text.isNull() ? QByteArray() : readBytes(signaturePath, &error);
    if (file.isNull() || (!key.isEmpty() && !isUsableKey(key, &error)))
        return refuse(console, error);
    const QByteArray signature = signatureIn(file);
    if (signature.size() < smallestSignature) {
        return refuse(console, QStringLiteral("%1: holds no RSA signature, neither in bytes nor as "
                                              "base64")
                                   .arg(signaturePath));
    }
    QString complete;
    const VerifyResult verified = whileTelling(console, readingManifest, [&] {
        complete = withSignature(text, signature);
        return key.isEmpty() ? VerifyResult{true, QString()} : verifyManifest(complete, key);
    });
    if (!verified.ok) {
        tell(console, QStringLiteral("%1: %2").arg(signaturePath, verified.message));
        return Findings;
    }
    return deliver(complete.toUtf8(), parser, console);
}

void declareVerify(QCommandLineParser &parser) {
    declareKey(parser, QStringLiteral("The public key to verify with."));
    declareFormat(parser, formats());
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

int verify(const QCommandLineParser &parser, Console &console) {
    const QString path = first(parser);
    const QString key = parser.value(QStringLiteral("key"));
    QString error;
    const QString format = chosenFormat(parser, formats(), &error);
    const QString text = format.isEmpty() ? QString() : readManifest(path, &error);
    if (text.isNull() || !isUsableKey(key, &error))
        return refuse(console, error);
    const VerifyReport report =
        whileTelling(console, readingManifest, [&] { return verifyReport(text, key); });
    if (format == QLatin1String("json"))
        printJson(console, QJsonDocument(toJson(report)));
    else
        printReport(console, path, report);
    return report.ok ? Clean : Findings;
}

// --- stick ----------------------------------------------------------------------------------------

void declareStick(QCommandLineParser &parser) {
    declareKey(parser,
               QStringLiteral("Copies nothing unless this public key verifies the manifest."));
    declareForce(parser);
}

void printStick(const Console &console, const StickResult &result, const QString &mountPoint) {
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

int fillStick(const QCommandLineParser &parser, Console &console) {
    const QString mountPoint = parser.positionalArguments().at(1);
    const QString key = parser.value(QStringLiteral("key"));
    QString error;
    if (!key.isEmpty() && !isUsableKey(key, &error))
        return refuse(console, error);
    StickResult result;
    {
        Progress progress(console, QStringLiteral("copying to %1").arg(mountPoint));
        result =
            layOutStick(first(parser), mountPoint, key, isForced(parser),
                        [&progress](qint64 done, qint64 total) { progress.reached(done, total); });
    }
    for (const QString &finding : qAsConst(result.findings))
        printLine(console, inked(console, Ink::Error, spelledOut(finding)));
    if (!result.findings.isEmpty())
        return Findings;
    if (!result.ok)
        return refuse(console, result.error);
    printStick(console, result, mountPoint);
    return Clean;
}

} // namespace

std::vector<Command> updateCommands() {
    const QString family = QStringLiteral("update");
    const QString manifest = QStringLiteral("manifest.json");
    return {
        {family, QStringLiteral("manifest"), QStringLiteral("[PACKAGE.zip...]"),
         QStringLiteral(
             "Makes an unsigned manifest of packages and installers, with their hashes."),
         QStringLiteral("quorvanectl update manifest --out update.json demo-1.2.0.zip"),
         declareManifest, makeManifest},
        {family, QStringLiteral("lint"), manifest,
         QStringLiteral("Finds a publisher's mistakes that the manifest's format does not forbid."),
         QStringLiteral("quorvanectl update lint manifest.json"), declareLint, lint},
        {family, QStringLiteral("canonical"), manifest,
         QStringLiteral("Prints the bytes that are signed."),
         QStringLiteral("quorvanectl update canonical manifest.json"), declareCanonical,
         printCanonical},
        {family, QStringLiteral("attach"), QStringLiteral("manifest.json SIGNATURE"),
         QStringLiteral("Puts a signature that was made elsewhere into a manifest."),
         QStringLiteral("quorvanectl update attach manifest.json manifest.sig --out signed.json"),
         declareAttach, attach},
        {family, QStringLiteral("verify"), manifest,
         QStringLiteral("Verifies a manifest as the launcher does."),
         QStringLiteral("quorvanectl update verify manifest.json --key update.pub"), declareVerify,
         verify},
        {family, QStringLiteral("stick"), QStringLiteral("DIR MOUNTPOINT"),
         QStringLiteral("Lays a signed update out on a stick."),
         QStringLiteral("quorvanectl update stick site stick"), declareStick, fillStick},
    };
}

} // namespace ctl
