#include "frame/settings_store.h"

#include "frame/app_paths.h"
#include "frame/launch_log.h"
#include "frame/settings_schema.h"
#include "frame/settings_stand_in.h"

#include <QDebug>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

#include <optional>

namespace {

constexpr int examinedAtOpen = 100; // older recent projects wait until they come among these
constexpr int longestWait = 2000;   // ms, for a file that another program holds

QString connectionName() {
    return QStringLiteral("quorvane");
}

QString defaultProjectKey() {
    return QLatin1String(settings_schema::defaultProjectKey);
}

QSqlDatabase connection() {
    return QSqlDatabase::database(connectionName());
}

// How long a statement waits. The connection itself keeps the number; one that is not open has none yet.
int currentWait() {
    const QSqlDatabase database = QSqlDatabase::database(connectionName(), false);
    if (!database.isOpen())
        return longestWait;
    QSqlQuery query(database);
    return query.exec(QStringLiteral("PRAGMA busy_timeout")) && query.next()
               ? query.value(0).toInt()
               : longestWait;
}

bool isHeldElsewhere(const QSqlQuery &query) {
    constexpr int busy = 5; // of SQLite; further bits tell why
    return (query.lastError().nativeErrorCode().toInt() & 0xFF) == busy;
}

// The window waits for each statement of a start, so that only the first one waits: whoever holds the file
// that long does not let go between two of them.
void giveUpWaiting() {
    if (currentWait() == 0)
        return;
    (void)QSqlQuery(connection()).exec(QStringLiteral("PRAGMA busy_timeout = 0"));
    appendLaunchLog(QStringLiteral("Settings are not available: %1 is held by another program.")
                        .arg(AppPaths::databasePath()));
}

bool ended(bool done, const QSqlQuery &query) {
    if (!done && isHeldElsewhere(query))
        giveUpWaiting();
    return done;
}

// Asked before anything else is: what stands in for a table may never end, and the window waits for it. A
// file that cannot be read tells so with its first table.
bool hasStandIn() {
    QSqlQuery query(connection());
    if (!ended(query.exec(QLatin1String(settings_stand_in::readObjects)), query))
        return false;
    while (query.next()) {
        if (settings_stand_in::isOne(query.value(0).toString()))
            return true;
    }
    return false;
}

// Without its connection each operation gives its default.
bool giveUpFile() {
    QSqlDatabase::removeDatabase(connectionName());
    appendLaunchLog(
        QStringLiteral("Settings are not available: %1 holds a view or a trigger for them.")
            .arg(AppPaths::databasePath()));
    return false;
}

// To prepare a statement reads the file already.
bool run(QSqlQuery &query, const QString &statement, const QVariantList &values) {
    bool done = query.prepare(statement);
    for (const QVariant &value : values)
        query.addBindValue(value);
    done = done && query.exec();
    return ended(done, query);
}

bool runSchema(const char *statement) {
    QSqlQuery query(connection());
    if (ended(query.exec(QLatin1String(statement)), query))
        return true;
    qWarning().noquote() << query.lastError().text() << statement;
    return false;
}

// Nothing in a database that has none yet.
std::optional<int> storedVersion() {
    QSqlQuery query(connection());
    if (!ended(query.exec(QLatin1String(settings_schema::readVersion)), query) || !query.next())
        return std::nullopt;
    return query.value(0).toInt();
}

// What goes around statements; nobody needs to be told where it fails, for they tell it themselves.
bool runQuietly(const char *statement) {
    QSqlQuery query(connection());
    return ended(query.exec(QLatin1String(statement)), query);
}

// A database without a version gets the first; should that row not be written, the tables are made all the
// same. Two launchers may start for the first time at once: who has come to write looks once more.
int writeFirstVersion() {
    const bool isAlone = runQuietly(settings_schema::beginToWrite);
    const std::optional<int> written = isAlone ? storedVersion() : std::nullopt;
    if (!written)
        (void)runSchema(settings_schema::writeFirstVersion);
    if (isAlone && !runQuietly(settings_schema::endOfWriting))
        (void)runQuietly(settings_schema::giveUpWriting);
    return written.value_or(1);
}

// The stored version, at least 1.
int schemaVersion() {
    const std::optional<int> stored = storedVersion();
    return qMax(1, stored ? *stored : writeFirstVersion());
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

bool openFile() {
    const int wait = currentWait(); // of the connection before, which may have waited in vain
    // Adding a connection of the same name would replace it too, but with a warning.
    if (QSqlDatabase::contains(connectionName()))
        QSqlDatabase::removeDatabase(connectionName());
    QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), connectionName());
    database.setDatabaseName(AppPaths::databasePath());
    database.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=%1").arg(wait));
    if (!database.open()) {
        qWarning().noquote() << "Database open failed:" << database.lastError().text();
        return false;
    }
    return true;
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
    if (!openFile())
        return false;
    if (hasStandIn())
        return giveUpFile();
    if (!ensureSchema())
        return false;
    pruneRecentProjects(*this);
    return true;
}

QString SettingsStore::value(const QString &key, const QString &defaultValue) const {
    QSqlQuery query(connection());
    const bool done = run(query, QLatin1String(settings_schema::readValue), {key});
    return done && query.next() ? query.value(0).toString() : defaultValue;
}

void SettingsStore::setValue(const QString &key, const QString &value) {
    QSqlQuery query(connection());
    // A null text would be stored as NULL.
    const QString text = value.isNull() ? QStringLiteral("") : value;
    // A lost write is no reason to stop.
    (void)run(query, QLatin1String(settings_schema::writeValue), {key, text});
}

QString SettingsStore::defaultProject() const {
    return value(defaultProjectKey(), QString());
}

void SettingsStore::setDefaultProject(const QString &path) {
    setValue(defaultProjectKey(), path.isEmpty() ? path : QFileInfo(path).absoluteFilePath());
}

QList<RecentProject> SettingsStore::recentProjects(int limit) const {
    QSqlQuery query(connection());
    const QString statement =
        QLatin1String(settings_schema::readRecentProjects) + QLatin1String(" LIMIT ?");
    QList<RecentProject> projects;
    if (!run(query, statement, {limit}))
        return projects;
    while (query.next())
        projects.append({query.value(0).toString(), query.value(1).toString()});
    return projects;
}

void SettingsStore::removeRecentProject(const QString &path) {
    QSqlQuery query(connection());
    // A row that stays is examined again at the next open.
    (void)run(query, QLatin1String(settings_schema::removeRecentProject),
              {QFileInfo(path).absoluteFilePath()});
}
