// quorvanectl update withdraw: what is published gives way to a manifest of before, which is signed anew.
#include "quorvanectl/commands/commands.h"
#include "quorvanectl/commands/signing_key_option.h"
#include "quorvanectl/commands/update_options.h"
#include "quorvanectl/files/json_input.h"
#include "quorvanectl/manifest/manifest_build.h"
#include "quorvanectl/manifest/public_key.h"
#include "quorvanectl/shell/progress.h"
#include "update/manifest_keys.h"

#include <QDateTime>
#include <QJsonDocument>

namespace ctl {
namespace {

void declare(QCommandLineParser &parser) {
    parser.addOption({QStringLiteral("to"),
                      QStringLiteral("The manifest that is to be on offer again."),
                      QStringLiteral("previous.json")});
    declareSigningKey(parser);
    declareOut(parser, QStringLiteral(", not to standard output"), Place::OutOrInPlace);
}

QJsonObject objectIn(const QString &text) {
    return QJsonDocument::fromJson(text.toUtf8()).object();
}

// Nothing is signed that did not come from the owner of the key.
bool areOurs(const QMap<QString, QString> &manifests, const SigningKey &key,
             const Console &console) {
    bool all = true;
    for (auto manifest = manifests.begin(); manifest != manifests.end(); ++manifest) {
        if (verifiesWith(manifest.value(), key.publicPem()))
            continue;
        all = false;
        printLine(
            console,
            inked(
                console, Ink::Error,
                spelledOut(QStringLiteral("%1: is not signed with this key").arg(manifest.key()))));
    }
    return all;
}

QDateTime timeOf(const QJsonObject &manifest) {
    return QDateTime::fromString(manifest.value(manifest_keys::publishedAt).toString(),
                                 Qt::ISODate);
}

// Swapped in a hurry, what was a mistake would be on offer once more, in place of the copy of before.
bool areSwapped(const QJsonObject &published, const QJsonObject &previous) {
    const QDateTime now = timeOf(published);
    return now.isValid() && timeOf(previous) > now;
}

int run(const QCommandLineParser &parser, Console &console) {
    const QString path = firstArgument(parser);
    const QString to = parser.value(QStringLiteral("to"));
    if (to.isEmpty())
        return refuse(console, QStringLiteral("--to must name the manifest to go back to"));
    QString error;
    const QString published = readJsonObject(path, &error);
    const QString previous = published.isNull() ? QString() : readJsonObject(to, &error);
    const QStringList inputs{parser.value(QStringLiteral("key")), to};
    if (previous.isNull() || !mayDeliver(parser, inputs, &error, Place::OutOrInPlace))
        return refuse(console, error);
    const SigningKey key = readSigningKey(parser, console, &error);
    if (!key.isValid())
        return refuse(console, error);
    if (!areOurs({{path, published}, {to, previous}}, key, console))
        return Findings;
    if (areSwapped(objectIn(published), objectIn(previous)))
        return refuse(
            console,
            QStringLiteral("%1: is later than %2, which is to give way; are the two swapped?")
                .arg(to, path));
    const QJsonObject again = publishedAgain(objectIn(previous), objectIn(published));
    const QByteArray complete = whileTelling(console, QStringLiteral("signing"), [&] {
        return signedWith(key, QString::fromUtf8(manifestBytes(again)));
    });
    if (complete.isEmpty())
        return refuse(console, cannotSign());
    return deliver(complete, parser, console, inputs, Place::OutOrInPlace,
                   QStringLiteral("offers what %1 does, published at %2")
                       .arg(spelledOut(to), again.value(manifest_keys::publishedAt).toString()));
}

} // namespace

Command updateWithdraw() {
    return {QStringLiteral("update"),
            QStringLiteral("withdraw"),
            QStringLiteral("published.json"),
            QStringLiteral("Puts a manifest of before in the place of the one that is published."),
            QStringLiteral("quorvanectl update withdraw manifest.json --to site/manifest.json "
                           "--key private.pem --out withdrawn.json"),
            declare,
            run};
}

} // namespace ctl
