// quorvanectl update pack, update sign and keys: what a publisher's machine does, and Windows is
// left without.
#include "quorvanectl/commands/commands.h"
#include "quorvanectl/files/file_access.h"
#include "quorvanectl/files/json_input.h"
#include "quorvanectl/keys/key_files.h"
#include "quorvanectl/keys/passphrase.h"
#include "quorvanectl/keys/signing_key.h"
#include "quorvanectl/manifest/manifest_attach.h"
#include "quorvanectl/package/project_pack.h"
#include "quorvanectl/shell/installation.h"
#include "quorvanectl/shell/progress.h"
#include "update/manifest_signature.h"

#include <QFileInfo>

namespace ctl {
namespace {

QString first(const QCommandLineParser &parser) {
    return parser.positionalArguments().constFirst();
}

// --- update pack ----------------------------------------------------------------------------------

void declarePack(QCommandLineParser &parser) {
    parser.addOption({QStringLiteral("version"),
                      QStringLiteral("The version of the package, three or four numbers."),
                      QStringLiteral("version")});
    parser.addOption({QStringLiteral("out"), QStringLiteral("The folder to write to."),
                      QStringLiteral("folder")});
    declareForce(parser);
    declareLibrary(parser);
}

void printIssues(const Console &console, const PackResult &result) {
    for (const ProjectIssue &issue : result.issues) {
        const Ink ink = issue.severity == 0 ? Ink::Error : Ink::Warning;
        printLine(console, inked(console, ink, spelledOut(formatProjectIssues({issue}))));
    }
    for (const QString &finding : result.findings)
        printLine(console, inked(console, Ink::Error, spelledOut(finding)));
}

int pack(const QCommandLineParser &parser, Console &console) {
    const QString version = parser.value(QStringLiteral("version"));
    const QString out = parser.value(QStringLiteral("out"));
    if (!isFullVersion(version)) {
        return refuse(console, QStringLiteral("--version %1: must be three or four numbers such as "
                                              "1.2.0")
                                   .arg(version));
    }
    if (out.isEmpty())
        return refuse(console, QStringLiteral("--out must name the folder to write to"));
    QString error;
    if (!loadLibrary(parser, &error))
        return refuse(console, error);
    PackResult result;
    {
        const Progress progress(console, QStringLiteral("packing %1").arg(first(parser)));
        result = packProject(first(parser), version, out, isForced(parser));
    }
    printIssues(console, result);
    if (result.ok) {
        printLine(console, QStringLiteral("%1: %2 files, SHA-256 %3")
                               .arg(spelledOut(result.zipPath), QString::number(result.files),
                                    result.sha256));
        return Clean;
    }
    return result.error.isEmpty() ? Findings : refuse(console, result.error);
}

// --- a passphrase ---------------------------------------------------------------------------------

void declarePassphrase(QCommandLineParser &parser) {
    parser.addOption(
        {QStringLiteral("passphrase-fd"),
         QStringLiteral("Reads the passphrase from this open file descriptor, up to the "
                        "first line feed."),
         QStringLiteral("number")});
}

bool getPassphrase(const QCommandLineParser &parser, const QString &prompt, bool twice,
                   Passphrase *passphrase, QString *error) {
    const QString option = QStringLiteral("passphrase-fd");
    if (!parser.isSet(option))
        return passphrase->ask(prompt, twice, error);
    bool isNumber = false;
    const int descriptor = parser.value(option).toInt(&isNumber);
    if (isNumber && descriptor >= 0)
        return passphrase->readFrom(descriptor, error);
    *error = QStringLiteral("--passphrase-fd %1: is no number of a descriptor")
                 .arg(parser.value(option));
    return false;
}

// --- update sign ----------------------------------------------------------------------------------

void declareSign(QCommandLineParser &parser) {
    parser.addOption(
        {QStringLiteral("key"), QStringLiteral("The private key."), QStringLiteral("private.pem")});
    declarePassphrase(parser);
    parser.addOption({QStringLiteral("out"),
                      QStringLiteral("Writes to this file, not to standard output."),
                      QStringLiteral("file")});
    declareForce(parser);
}

SigningKey readKey(const QCommandLineParser &parser, Console &console, QString *error) {
    const QString path = parser.value(QStringLiteral("key"));
    if (path.isEmpty()) {
        *error = QStringLiteral("no key given; --key names the file");
        return SigningKey();
    }
    QByteArray pem = readBytes(path, error);
    if (pem.isNull())
        return SigningKey();
    const auto ask = [&](Passphrase &passphrase, QString *why) {
        return getPassphrase(parser, QStringLiteral("Passphrase of %1: ").arg(path), false,
                             &passphrase, why);
    };
    const SigningKey key = SigningKey::fromPem(pem, path, ask, error);
    wipe(&pem);
    const bool isOpen =
        (QFileInfo(path).permissions() & (QFile::ReadGroup | QFile::ReadOther)) != 0;
    if (key.isValid() && isOpen)
        tell(console, QStringLiteral("%1: others can read this private key").arg(path));
    return key;
}

int sign(const QCommandLineParser &parser, Console &console) {
    const QString out = parser.value(QStringLiteral("out"));
    QString error;
    const QString text = readText(first(parser), &error);
    if (text.isNull() || (!out.isEmpty() && !mayWrite(out, isForced(parser), &error)))
        return refuse(console, error);
    if (!isJsonObject(first(parser), text, &error))
        return refuse(console, error);
    const SigningKey key = readKey(parser, console, &error);
    if (!key.isValid())
        return refuse(console, error);
    const QByteArray complete = whileTelling(console, QStringLiteral("signing"), [&] {
        const QByteArray signature = key.sign(canonicalManifestText(text).toUtf8());
        return signature.isEmpty() ? QByteArray() : withSignature(text, signature).toUtf8();
    });
    if (complete.isEmpty())
        return refuse(console, QStringLiteral("OpenSSL cannot sign with this key"));
    if (out.isEmpty())
        print(console, QString::fromUtf8(complete));
    else if (!writeFile(out, complete, isForced(parser), &error))
        return refuse(console, error);
    else
        printLine(console, QStringLiteral("%1: signed with a key of %2 bits")
                               .arg(spelledOut(out), QString::number(key.bits())));
    return Clean;
}

// --- keys new -------------------------------------------------------------------------------------

void declareKeys(QCommandLineParser &parser) {
    parser.addOption(
        {QStringLiteral("encrypt"),
         QStringLiteral("Encrypts the private half with a passphrase, asked for at the "
                        "terminal.")});
    declarePassphrase(parser);
}

int newKeys(const QCommandLineParser &parser, Console &console) {
    const bool encrypts =
        parser.isSet(QStringLiteral("encrypt")) || parser.isSet(QStringLiteral("passphrase-fd"));
    Passphrase passphrase;
    QString error;
    if (encrypts && !getPassphrase(parser, QStringLiteral("Passphrase of the new key: "), true,
                                   &passphrase, &error))
        return refuse(console, error);
    KeyFiles files;
    {
        const Progress progress(console, QStringLiteral("making a key pair"));
        files = makeKeyFiles(first(parser), encrypts ? &passphrase : nullptr);
    }
    if (!files.ok)
        return refuse(console, files.error);
    printLine(console,
              QStringLiteral("%1: private, %2")
                  .arg(spelledOut(files.privatePath),
                       encrypts ? QStringLiteral("encrypted") : QStringLiteral("not encrypted")));
    printLine(console, QStringLiteral("%1: public, SHA-256 %2")
                           .arg(spelledOut(files.publicPath), files.fingerprint));
    return Clean;
}

} // namespace

std::vector<Command> packingCommands() {
    return {
        {QStringLiteral("update"), QStringLiteral("pack"), QStringLiteral("PROJECT_DIR"),
         QStringLiteral("Makes a package of a project that passes its checks."),
         QStringLiteral("quorvanectl update pack demo --version 1.2.0 --out packages"), declarePack,
         pack},
    };
}

std::vector<Command> signingCommands() {
    return {
        {QStringLiteral("update"), QStringLiteral("sign"), QStringLiteral("manifest.json"),
         QStringLiteral("Signs a manifest."),
         QStringLiteral(
             "quorvanectl update sign manifest.json --key private.pem --out signed.json"),
         declareSign, sign},
        {QStringLiteral("keys"), QStringLiteral("new"), QStringLiteral("DIR"),
         QStringLiteral("Makes a key pair; never over another one."),
         QStringLiteral("quorvanectl keys new keys"), declareKeys, newKeys},
    };
}

} // namespace ctl
