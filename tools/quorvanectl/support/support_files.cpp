#include "quorvanectl/support/support_files.h"

#include "frame/app_paths.h"
#include "frame/pipe_or_device.h"
#include "frame/settings_schema.h"
#include "frame/settings_stand_in.h"
#include "launcher/offer/update_component.h"
#include "quorvanectl/support/machine_facts.h"
#include "quorvanectl/support/project_facts.h"
#include "quorvanectl/support/secrets.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QStringList>
#include <QSysInfo>

#include <algorithm>

namespace ctl {
namespace {

// The log only grows; its end tells what happened.
constexpr qint64 longestLog = 32LL * 1024 * 1024; // bytes

constexpr int longestWait = 2000; // ms, for settings that another program holds

QString notAFile() {
    return QStringLiteral("not a regular file");
}

QString endOfLog(const QString &path) {
    QFile file(path);
    if (isPipeOrDevice(path))
        return QStringLiteral("(%1)\n").arg(notAFile());
    if (!file.open(QIODevice::ReadOnly))
        return QStringLiteral("(%1)\n").arg(file.errorString());
    if (file.size() <= longestLog)
        return QString::fromUtf8(file.readAll());
    file.seek(file.size() - longestLog);
    file.readLine(); // the first one is cut
    return QStringLiteral("(the last %1 bytes of %2)\n")
               .arg(QString::number(longestLog), QString::number(file.size())) +
           QString::fromUtf8(file.readAll());
}

QString json(const QJsonObject &object) {
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Indented));
}

QString versions() {
    QJsonObject told{
        {QStringLiteral("collected"), QDateTime::currentDateTimeUtc().toString(Qt::ISODate)},
        {QStringLiteral("quorvanectl"), QCoreApplication::applicationVersion()},
        {QStringLiteral("qt"), QString::fromLatin1(qVersion())},
        {QStringLiteral("system"), QSysInfo::prettyProductName()},
        {QStringLiteral("kernel"), QSysInfo::kernelVersion()},
        {QStringLiteral("processor"), QSysInfo::currentCpuArchitecture()}};
    for (const UpdateComponent *component : updateComponents) {
        const QString key = component->keyText();
        told.insert(key, UpdateContext::currentComponentVersion(key));
    }
    return json(told);
}

// The rows of a statement, each its columns. A table that is missing has none; that another program holds
// the file is told in `error`.
QVector<QStringList> rows(const QSqlDatabase &database, const char *statement, int columns,
                          QString *error) {
    constexpr int busy = 5; // of SQLite; further bits tell why
    QVector<QStringList> found;
    QSqlQuery query(database);
    if (!query.exec(QLatin1String(statement)) &&
        (query.lastError().nativeErrorCode().toInt() & 0xFF) == busy)
        *error = query.lastError().text();
    while (query.next()) {
        QStringList row;
        for (int i = 0; i < columns; ++i)
            row.append(query.value(i).toString());
        found.append(row);
    }
    return found;
}

// The launcher refuses such a file as well: reading it may never end.
bool holdsStandIn(const QVector<QStringList> &objects) {
    return std::any_of(objects.begin(), objects.end(), [](const QStringList &object) {
        return settings_stand_in::isOne(object.at(0));
    });
}

bool isOwnKey(const QString &key) {
    return std::any_of(std::begin(settings_schema::ownKeys), std::end(settings_schema::ownKeys),
                       [&key](const char *own) { return key == QLatin1String(own); });
}

// The launcher's own keys and recent projects. Other programs may keep more in the same file.
QJsonObject settingsIn(const QSqlDatabase &database) {
    QJsonObject settings;
    QString error;
    if (holdsStandIn(rows(database, settings_stand_in::readObjects, 1, &error)))
        error = QStringLiteral("holds a view or a trigger for the settings");
    if (!error.isEmpty())
        return {{QStringLiteral("error"), error}};
    for (const QStringList &row : rows(database, settings_schema::readValues, 2, &error)) {
        if (isOwnKey(row.at(0)))
            settings.insert(row.at(0), row.at(1));
    }
    if (!error.isEmpty())
        return {{QStringLiteral("error"), error}};
    QJsonArray recent;
    for (const QStringList &row : rows(database, settings_schema::readRecentProjects, 3, &error))
        recent.append(QJsonArray::fromStringList(row));
    settings.insert(QStringLiteral("recent_projects"), recent);
    return settings;
}

QString installation() {
    const QString program = AppPaths::applicationDirectory();
    QString text = listing(QStringLiteral("Installation"), program);
    const QString root = AppPaths::installRoot();
    for (const char *const part : {"Runtime", "python"}) {
        const QString folder = root + QLatin1Char('/') + QLatin1String(part);
        if (QFileInfo(folder).isDir() && folder != program)
            text += listing(QLatin1String(part), folder);
    }
    return text;
}

// Whether the selected project is none of those in the folder of projects.
bool liesElsewhere(const QString &projectFile, const QString &projects) {
    const QString clean = QDir::cleanPath(projectFile);
    return QFileInfo(projectFile).isAbsolute() &&
           !clean.startsWith(QDir::cleanPath(projects) + QLatin1Char('/'), Qt::CaseInsensitive);
}

// The folder of a project that lies elsewhere. Where somebody keeps one beside all that is theirs, the rest
// is nobody's business.
QString selectedProject(const QString &projectFile) {
    const QString title = QStringLiteral("Selected project");
    const QString folder = QFileInfo(projectFile).path();
    const QString below = folder.endsWith(QLatin1Char('/')) ? folder : folder + QLatin1Char('/');
    if ((QDir::homePath() + QLatin1Char('/')).startsWith(below, Qt::CaseInsensitive))
        return QStringLiteral("%1: %2\n(not listed: the folder of a user lies in it)\n")
            .arg(title, folder);
    return listing(title, folder);
}

} // namespace

QJsonObject launcherSettings(const QString &databasePath) {
    const QString connection = QStringLiteral("quorvanectl");
    if (isPipeOrDevice(databasePath))
        return {{QStringLiteral("error"), notAFile()}};
    QJsonObject found;
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), connection);
        database.setConnectOptions(
            QStringLiteral("QSQLITE_OPEN_READONLY;QSQLITE_BUSY_TIMEOUT=%1").arg(longestWait));
        database.setDatabaseName(databasePath);
        if (database.open())
            found = settingsIn(database);
        else
            found.insert(QStringLiteral("error"), database.lastError().text());
    }
    QSqlDatabase::removeDatabase(connection);
    return found;
}

QVector<SupportFile> supportFiles(const SupportSources &sources) {
    const QString projects = AppPaths::projectsDirectory();
    const QJsonObject settings = launcherSettings(sources.data.database());
    const QString selected =
        settings.value(QLatin1String(settings_schema::defaultProjectKey)).toString();
    QStringList projectFiles = projectFilesBelow(projects);
    QVector<QPair<QString, QString>> texts{
        {QStringLiteral("launcher.log"), endOfLog(sources.data.launchLog())},
        {QStringLiteral("versions.json"), versions()},
        {QStringLiteral("machine.json"), json(machineFacts(sources.data, selected))},
        {QStringLiteral("settings.json"), json(settings)},
        {QStringLiteral("installation.txt"), installation()},
        {QStringLiteral("projects.txt"), listing(QStringLiteral("Projects"), projects)},
        {QStringLiteral("data.txt"), listing(QStringLiteral("Data"), sources.data.path)}};
    if (liesElsewhere(selected, projects)) {
        projectFiles.append(selected);
        texts.append({QStringLiteral("selected.txt"), selectedProject(selected)});
    }
    texts.append({QStringLiteral("findings.txt"),
                  sources.libraryError.isEmpty()
                      ? findingsAbout(projectFiles)
                      : QLatin1Char('(') + sources.libraryError + QStringLiteral(")\n")});
    QVector<SupportFile> files;
    for (const auto &[name, text] : qAsConst(texts)) {
        const QString told = withoutSecrets(text);
        files.append({name, (sources.keepHomePaths ? told : withoutHomePaths(told)).toUtf8()});
    }
    return files;
}

} // namespace ctl
