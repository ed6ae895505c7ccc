#include "quorvanectl/manifest/update_explain.h"

#include "frame/app_paths.h"
#include "frame/launch_log.h"
#include "launcher/offer/update_component.h"
#include "project/project_file.h"
#include "update/files/text_file.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>

namespace ctl {
namespace {

// While one lives, log lines go to a list.
class LogKeeper {
public:
    explicit LogKeeper(QStringList *lines) {
        redirectLaunchLog([lines](const QString &line) { lines->append(line); });
    }
    ~LogKeeper() { redirectLaunchLog(nullptr); }
    LogKeeper(const LogKeeper &) = delete;
    LogKeeper &operator=(const LogKeeper &) = delete;
};

// A stick's manifest may have any encoding, the network's is UTF-8.
QByteArray bytesOf(const QString &manifest) {
    QFile file(manifest);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool check(UpdateContext *context, const QString &manifest, const QString &url, QString *summary) {
    return url.isEmpty() ? context->runUpdateCheck(QFileInfo(manifest).absoluteFilePath(), summary)
                         : context->weighOnlineManifest(QUrl(url), bytesOf(manifest), summary);
}

// The check empties the record of a project that is not eligible, and the reason goes with it.
UpdateChoices weigh(const UpdateContext &checked) {
    UpdateChoices choices = checked.choices();
    UpdateContext again = checked;
    const QJsonDocument root = QJsonDocument::fromJson(checked.snapshot.manifestText.toUtf8());
    choices.project.available = again.weighProject(
        root.object().value(QLatin1String("projects")).toArray(), &choices.project.reason);
    return choices;
}

QJsonObject toJson(const UpdateChoice &choice) {
    return {{QStringLiteral("available"), choice.available},
            {QStringLiteral("reason"), choice.reason}};
}

} // namespace

Explanation explainUpdate(const QString &manifest, const QString &url, const QString &projectFile) {
    Explanation explanation;
    const QString text =
        url.isEmpty() ? readTextFile(manifest) : QString::fromUtf8(bytesOf(manifest));
    explanation.verify = verifyReport(text, AppPaths::updatePublicKeyPath());
    explanation.projectVersion =
        projectFile.isEmpty() ? QString() : installedProjectVersion(projectFile);
    UpdateContext context;
    context.projectPath = projectFile;
    {
        const LogKeeper keeper(&explanation.log);
        explanation.found = check(&context, manifest, url, &explanation.summary);
    }
    if (context.snapshot.manifestText.isEmpty())
        return explanation; // refused: there is nothing to weigh
    QStringList repeated;   // what was logged once already
    const LogKeeper keeper(&repeated);
    explanation.choices = weigh(context);
    explanation.fingerprint = context.onlineUpdateFingerprint();
    explanation.items = context.onlineUpdateItems();
    return explanation;
}

QJsonObject toJson(const Explanation &explanation) {
    QJsonObject choices{{QStringLiteral("project"), toJson(explanation.choices.project)}};
    QJsonObject versions{{QStringLiteral("project"), explanation.projectVersion}};
    for (const UpdateComponent *component : updateComponents) {
        const QString key = component->keyText();
        choices.insert(key, toJson(explanation.choices.*(component->choice)));
        versions.insert(key, UpdateContext::currentComponentVersion(key));
    }
    return {{QStringLiteral("verify"), toJson(explanation.verify)},
            {QStringLiteral("found"), explanation.found},
            {QStringLiteral("summary"), explanation.summary},
            {QStringLiteral("choices"), choices},
            {QStringLiteral("fingerprint"), explanation.fingerprint},
            {QStringLiteral("items"), explanation.items},
            {QStringLiteral("versions"), versions},
            {QStringLiteral("log"), QJsonArray::fromStringList(explanation.log)}};
}

} // namespace ctl
