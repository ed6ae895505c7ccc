#include "frame/settings_store.h"

#include "frame/app_paths.h"
#include "frame/settings_schema.h"

#include <QDebug>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

namespace {

constexpr int examinedAtOpen = 100; // older recent projects wait until they come among these

QString connectionName() {
    return QStringLiteral("quorvane");
}

QString defaultProjectKey() {
    return QLatin1String(settings_schema::defaultProjectKey);
}

QSqlDatabase connection() {
    return QSqlDatabase::database(connectionName());
}

bool runSchema(const char *statement) {
    QSqlQuery query(connection());
    if (query.exec(QLatin1String(statement)))
        return true;
    qWarning().noquote() << query.lastError().text() << statement;
    return false;
}

// The stored version, at least 1. A database without one gets the first; should that row not be
// written, the tables are made all the same.
int schemaVersion() {
    QSqlQuery query(connection());
    if (query.exec(QLatin1String(settings_schema::readVersion)) && query.next())
        return qMax(1, query.value(0).toInt());
    query.finish();
    (void)runSchema(settings_schema::writeFirstVersion);
    return 1;
}

bool makeFirstVersion() {
    for (const char *statement : settings_schema::makeFirstVersion) {
        if (!runSchema(statement))
            return false;
    }
    return true;
}

bool migrateToSecondVersion() {
    return runSchema(settings_schema::makeSecondVersion) &&
           runSchema(settings_schema::writeSecondVersion);
}

bool ensureSchema() {
    if (!runSchema(settings_schema::makeVersionTable))
        return false;
    const int version = schemaVersion();
    bool done = makeFirstVersion();
    // Runs whatever became of the first version's tables.
    if (version < 2 && !migrateToSecondVersion())
        done = false;
    return done;
}

void pruneRecentProjects(SettingsStore &store) {
    const auto projects = store.recentProjects(examinedAtOpen);
    for (const RecentProject &project : projects) {
        if (!QFileInfo::exists(project.path))
            store.removeRecentProject(project.path);
    }
}

} // namespace

SettingsStore &SettingsStore::instance() {
    static SettingsStore store;
    return store;
}

bool SettingsStore::open() {
    // Adding a connection of the same name would replace it too, but with a warning.
    if (QSqlDatabase::contains(connectionName()))
        QSqlDatabase::removeDatabase(connectionName());
    QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), connectionName());
    database.setDatabaseName(AppPaths::databasePath());
    if (!database.open()) {
        qWarning().noquote() << "Database open failed:" << database.lastError().text();
        return false;
    }
    if (!ensureSchema())
        return false;
    pruneRecentProjects(*this);
    return true;
}

QString SettingsStore::value(const QString &key, const QString &defaultValue) const {
    QSqlQuery query(connection());
    query.prepare(QLatin1String(settings_schema::readValue));
    query.addBindValue(key);
    return query.exec() && query.next() ? query.value(0).toString() : defaultValue;
}

void SettingsStore::setValue(const QString &key, const QString &value) {
    QSqlQuery query(connection());
    query.prepare(QLatin1String(settings_schema::writeValue));
    query.addBindValue(key);
    // A null text would be stored as NULL.
    query.addBindValue(value.isNull() ? QStringLiteral("") : value);
    (void)query.exec(); // a lost write is no reason to stop
}

QString SettingsStore::defaultProject() const {
    return value(defaultProjectKey(), QString());
}

void SettingsStore::setDefaultProject(const QString &path) {
    setValue(defaultProjectKey(), path.isEmpty() ? path : QFileInfo(path).absoluteFilePath());
}

QList<RecentProject> SettingsStore::recentProjects(int limit) const {
    QSqlQuery query(connection());
    query.prepare(QLatin1String(settings_schema::readRecentProjects) + QLatin1String(" LIMIT ?"));
    query.addBindValue(limit);
    QList<RecentProject> projects;
    if (!query.exec())
        return projects;
    while (query.next())
        projects.append({query.value(0).toString(), query.value(1).toString()});
    return projects;
}

void SettingsStore::removeRecentProject(const QString &path) {
    QSqlQuery query(connection());
    query.prepare(QLatin1String(settings_schema::removeRecentProject));
    query.addBindValue(QFileInfo(path).absoluteFilePath());
    (void)query.exec(); // a row that stays is examined again at the next open
}
