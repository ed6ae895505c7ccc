#include "frame/settings_store.h"

#include "frame/app_paths.h"

#include <QDebug>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

namespace {

const char *const versionTable =
    "CREATE TABLE IF NOT EXISTS schema_version (version INTEGER NOT NULL)";

const char *const firstVersionTables[] = {
    "CREATE TABLE IF NOT EXISTS app_settings (key TEXT PRIMARY KEY, value TEXT)",
    "CREATE TABLE IF NOT EXISTS recent_files (path TEXT PRIMARY KEY, last_opened TEXT, "
    "encoding TEXT)",
    "CREATE TABLE IF NOT EXISTS debug_sessions (id INTEGER PRIMARY KEY AUTOINCREMENT,"
    "started_at TEXT, script_hash TEXT, status TEXT)",
    "CREATE TABLE IF NOT EXISTS debug_messages (id INTEGER PRIMARY KEY AUTOINCREMENT,"
    "session_id INTEGER, ts TEXT, line_no INTEGER, message TEXT)",
    "CREATE TABLE IF NOT EXISTS parameter_snapshots (id INTEGER PRIMARY KEY AUTOINCREMENT,"
    "session_id INTEGER, scope_id INTEGER, payload TEXT)",
};

const char *const secondVersionTable =
    "CREATE TABLE IF NOT EXISTS recent_projects (yslib_path TEXT PRIMARY KEY,display_name TEXT,"
    "last_opened INTEGER NOT NULL)";

const int examinedAtOpen = 100; // older recent projects wait until they come among these

QString connectionName() {
    return QStringLiteral("quorvane");
}

QString defaultProjectKey() {
    return QStringLiteral("default_project_path");
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
    if (query.exec(QStringLiteral("SELECT version FROM schema_version LIMIT 1")) && query.next())
        return qMax(1, query.value(0).toInt());
    query.finish();
    (void)runSchema("INSERT INTO schema_version(version) VALUES(1)");
    return 1;
}

bool makeFirstVersion() {
    for (const char *statement : firstVersionTables) {
        if (!runSchema(statement))
            return false;
    }
    return true;
}

bool migrateToSecondVersion() {
    return runSchema(secondVersionTable) && runSchema("UPDATE schema_version SET version=2");
}

bool ensureSchema() {
    if (!runSchema(versionTable))
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
    query.prepare(QStringLiteral("SELECT value FROM app_settings WHERE key=?"));
    query.addBindValue(key);
    return query.exec() && query.next() ? query.value(0).toString() : defaultValue;
}

void SettingsStore::setValue(const QString &key, const QString &value) {
    QSqlQuery query(connection());
    query.prepare(QStringLiteral("INSERT OR REPLACE INTO app_settings(key,value) VALUES(?,?)"));
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
    query.prepare(QStringLiteral(
        "SELECT yslib_path, display_name FROM recent_projects ORDER BY last_opened DESC LIMIT ?"));
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
    query.prepare(QStringLiteral("DELETE FROM recent_projects WHERE yslib_path=?"));
    query.addBindValue(QFileInfo(path).absoluteFilePath());
    (void)query.exec(); // a row that stays is examined again at the next open
}
