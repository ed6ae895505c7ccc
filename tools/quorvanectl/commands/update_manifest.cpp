// quorvanectl update manifest: an unsigned manifest of packages and installers.
#include "quorvanectl/commands/commands.h"
#include "quorvanectl/commands/update_options.h"
#include "quorvanectl/files/file_access.h"
#include "quorvanectl/files/json_input.h"
#include "quorvanectl/manifest/manifest_build.h"
#include "quorvanectl/manifest/manifest_format.h"
#include "quorvanectl/manifest/public_key.h"
#include "quorvanectl/shell/force_option.h"
#include "quorvanectl/shell/installation.h"
#include "quorvanectl/shell/progress.h"
#include "update/files/failure.h"
#include "update/manifest_keys.h"
#include "update/manifest_signature.h"

#include <QFileInfo>
#include <QJsonDocument>

namespace ctl {
namespace {

struct InstallerOption {
    const char *option;
    QLatin1String key;
};

const InstallerOption installerOptions[] = {
    {"runtime", manifest_keys::runtime},
    {"launcher", manifest_keys::launcher},
    {"editor", manifest_keys::editor},
    {"python-tools", manifest_keys::pythonTools},
};

void declare(QCommandLineParser &parser) {
    declareOut(parser, QString());
    for (const InstallerOption &installer : installerOptions) {
        parser.addOption(
            {QLatin1String(installer.option),
             QStringLiteral("Offers this installer as the component `%1`.").arg(installer.key),
             QStringLiteral("setup.exe")});
    }
    parser.addOption(
        {QStringLiteral("min-version"),
         QStringLiteral("The lowest version that a component may be updated from, such "
                        "as runtime=1.0.0 (default: that in --previous). May come again."),
         QStringLiteral("component=version")});
    parser.addOption({QStringLiteral("plugin"),
                      QStringLiteral("A plug-in that the runtime expects. May come again."),
                      QStringLiteral("id,minVersion,path")});
    parser.addOption({QStringLiteral("published-at"),
                      QStringLiteral("The time of publication (default: now)."),
                      QStringLiteral("time")});
    parser.addOption(
        {QStringLiteral("previous"),
         QStringLiteral("Carries over what this published manifest offers and is not given anew."),
         QStringLiteral("manifest.json")});
    declarePublicKey(
        parser, QStringLiteral("Carries nothing over unless this public key verifies that one."));
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

QStringList inputsOf(const ManifestWish &wish, const QCommandLineParser &parser) {
    return wish.projects + wish.installers.values()
           << libraryPath(parser) << parser.value(QStringLiteral("previous"))
           << parser.value(QStringLiteral("key"));
}

// False, with a line in `error`, if there is none to be had of what is asked for.
bool readPrevious(const QCommandLineParser &parser, ManifestWish *wish, QString *error) {
    const QString path = parser.value(QStringLiteral("previous"));
    const QString key = parser.value(QStringLiteral("key"));
    if (path.isEmpty())
        return key.isEmpty() || fail(QStringLiteral("--key verifies what --previous names"), error);
    const QString text = readJsonObject(path, error);
    if (text.isNull() || (!key.isEmpty() && !isPublicKey(key, error)))
        return false;
    wish->previous = QJsonDocument::fromJson(text.toUtf8()).object();
    if (key.isEmpty())
        return true;
    const VerifyResult verified = verifyManifest(text, key);
    return verified.ok || failAbout(path, verified.message, error);
}

bool readWish(const QCommandLineParser &parser, ManifestWish *wish, QString *error) {
    const QString out = parser.value(QStringLiteral("out"));
    if (out.isEmpty()) {
        *error =
            QStringLiteral("--out must name the manifest: packages are addressed from its folder");
        return false;
    }
    if (!readPrevious(parser, wish, error))
        return false;
    wish->folder = QFileInfo(out).absolutePath();
    wish->base = parser.value(QStringLiteral("base"));
    wish->publishedAt = parser.value(QStringLiteral("published-at"));
    if (wish->publishedAt.isEmpty())
        wish->publishedAt = timeBehind(wish->previous);
    wish->projects = parser.positionalArguments();
    wish->plugins = parser.values(QStringLiteral("plugin"));
    for (const InstallerOption &installer : installerOptions) {
        const QString file = parser.value(QLatin1String(installer.option));
        if (!file.isEmpty())
            wish->installers.insert(installer.key, file);
    }
    return readMinVersions(parser, wish, error) &&
           mayDeliver(parser, inputsOf(*wish, parser), error); // before the packages are read
}

// What a component that is given anew has of the published one.
void printCarriedOver(const Console &console, const ManifestWish &wish,
                      const QJsonObject &manifest) {
    for (auto given = wish.installers.begin(); given != wish.installers.end(); ++given) {
        const QString least =
            manifest.value(given.key()).toObject().value(manifest_keys::minVersion).toString();
        if (!least.isEmpty() && !wish.minVersions.contains(given.key())) {
            printLine(console, QStringLiteral("  carried over: --min-version %1=%2")
                                   .arg(given.key(), spelledOut(least)));
        }
    }
}

int run(const QCommandLineParser &parser, Console &console) {
    ManifestWish wish;
    QString error;
    if (!readWish(parser, &wish, &error) || !loadLibrary(parser, console, &error))
        return refuse(console, error);
    const QJsonObject manifest = whileTelling(console, QStringLiteral("reading the packages"),
                                              [&] { return buildManifest(wish, &error); });
    if (manifest.isEmpty())
        return refuse(console, error);
    const int status = deliver(manifestBytes(manifest), parser, console, inputsOf(wish, parser));
    if (status == Clean)
        printCarriedOver(console, wish, manifest);
    return status;
}

} // namespace

Command updateManifest() {
    return {
        QStringLiteral("update"),
        QStringLiteral("manifest"),
        QStringLiteral("[PACKAGE.zip...]"),
        QStringLiteral("Makes an unsigned manifest of packages and installers, with their hashes."),
        QStringLiteral("quorvanectl update manifest --out update.json demo-1.2.0.zip"),
        declare,
        run};
}

} // namespace ctl
