// The settings' file: its schema, older and newer versions of it, and defaults where it cannot be
// used; a second connection looks at what was really stored.
#include "frame/settings_store.h"

#include "frame/app_paths.h"
#include "support/message_capture.h"
#include "support/platform.h"
#include "support/staged_main.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>

namespace {

SettingsStore &store() {
    return SettingsStore::instance();
}

// Looks at the file beside the store, over a connection of its own. Each result is one row, its
// columns joined by "|".
QStringList sql(const QString &statement) {
    QStringList rows;
    {
        QSqlDatabase database = QSqlDatabase::addDatabase("QSQLITE", "test");
        database.setDatabaseName(AppPaths::databasePath());
        QSqlQuery query(database);
        if (!database.open() || !(query = QSqlQuery(database)).exec(statement))
            rows.append("failed: " + query.lastError().text());
        while (query.next()) {
            QStringList columns;
            for (int i = 0; query.value(i).isValid(); ++i)
                columns.append(query.isNull(i) ? "NULL" : query.value(i).toString());
            rows.append(columns.join("|"));
        }
    }
    QSqlDatabase::removeDatabase("test");
    return rows;
}

void run(const QStringList &statements) {
    for (const QString &statement : statements)
        QCOMPARE(sql(statement), QStringList());
}

QStringList tables() {
    return sql("SELECT name FROM sqlite_master WHERE type='table' AND name NOT LIKE 'sqlite_%' "
               "ORDER BY rowid");
}

QString touch(const QString &name) {
    const QString path = QDir(support::stageRoot()).filePath(name);
    QFile file(path);
    return file.open(QIODevice::WriteOnly) ? path : QString();
}

void addRecent(const QString &path, const QString &name, int opened) {
    run({QString("INSERT INTO recent_projects VALUES('%1','%2',%3)")
             .arg(path, name, QString::number(opened))});
}

QStringList recentNames(int limit) {
    QStringList names;
    const auto projects = store().recentProjects(limit);
    for (const RecentProject &project : projects)
        names.append(project.displayName);
    return names;
}

const QStringList allTables{"schema_version", "app_settings",   "recent_files",
                            "debug_sessions", "debug_messages", "parameter_snapshots",
                            "recent_projects"};

} // namespace

class SettingsStoreTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void newFileGetsTheWholeSchema();
    void connectionIsNamed();
    void olderFileMigrates_data();
    void olderFileMigrates();
    void newerFileIsLeftAsItIs_data();
    void newerFileIsLeftAsItIs();
    void secondVersionIsMadeEvenWhenTheFirstFails();
    void failedMigrationKeepsItsVersion();
    void secondOpenReplacesTheConnectionInSilence();
    void fileThatIsNoDatabaseGivesDefaults();
    void fileThatCannotBeOpenedGivesDefaults();
    void storeThatWasNeverOpenedGivesDefaults();
    void fileWithStatementsOfItsOwnIsNotUsed_data();
    void fileWithStatementsOfItsOwnIsNotUsed();
    void whatOthersKeepInTheFileIsNoHindrance();
    void fileThatAnotherProgramHoldsIsWaitedForOnce_data();
    void fileThatAnotherProgramHoldsIsWaitedForOnce();
    void fileThatIsLetGoIsUsedAgain();
    void valuesAreKept_data();
    void valuesAreKept();
    void missingKeyReadsAsTheDefault();
    void nullTextIsStoredAsEmpty();
    void defaultProjectIsStoredInItsAbsoluteForm_data();
    void defaultProjectIsStoredInItsAbsoluteForm();
    void recentProjectsComeNewestFirst();
    void openDropsProjectsWhoseFileIsGone();
    void openExaminesTheNewestHundred();
    void rowStoredInAnotherFormStays();
    void removingTakesTheAbsoluteForm();
    void processesLoseNoSetting();
    void aVersionThatAnotherStartWritesMeanwhileStaysAlone();

private:
    void readsDefaultsAndLosesWrites();
};

void SettingsStoreTest::init() {
    QVERIFY(QDir().mkpath(AppPaths::dataDirectory()));
}

void SettingsStoreTest::cleanup() {
    QSqlDatabase::removeDatabase("quorvane");
    QVERIFY(QDir(AppPaths::dataDirectory()).removeRecursively());
}

void SettingsStoreTest::newFileGetsTheWholeSchema() {
    QVERIFY(store().open());
    QCOMPARE(sql("SELECT version FROM schema_version"), QStringList("2"));
    QStringList expected;
    expected.append("CREATE TABLE schema_version (version INTEGER NOT NULL)");
    expected.append("CREATE TABLE app_settings (key TEXT PRIMARY KEY, value TEXT)");
    expected.append("CREATE TABLE recent_files (path TEXT PRIMARY KEY, last_opened TEXT, "
                    "encoding TEXT)");
    expected.append("CREATE TABLE debug_sessions (id INTEGER PRIMARY KEY AUTOINCREMENT,"
                    "started_at TEXT, script_hash TEXT, status TEXT)");
    expected.append("CREATE TABLE debug_messages (id INTEGER PRIMARY KEY AUTOINCREMENT,"
                    "session_id INTEGER, ts TEXT, line_no INTEGER, message TEXT)");
    expected.append("CREATE TABLE parameter_snapshots (id INTEGER PRIMARY KEY AUTOINCREMENT,"
                    "session_id INTEGER, scope_id INTEGER, payload TEXT)");
    expected.append("CREATE TABLE recent_projects (yslib_path TEXT PRIMARY KEY,display_name TEXT,"
                    "last_opened INTEGER NOT NULL)");
    QCOMPARE(sql("SELECT sql FROM sqlite_master WHERE type='table' AND name NOT LIKE "
                 "'sqlite_%' ORDER BY rowid"),
             expected);
}

void SettingsStoreTest::connectionIsNamed() {
    QVERIFY(store().open());
    QCOMPARE(QSqlDatabase::connectionNames(), QStringList("quorvane"));
    const QSqlDatabase database = QSqlDatabase::database("quorvane");
    QCOMPARE(database.driverName(), QString("QSQLITE"));
    QCOMPARE(database.databaseName(), AppPaths::databasePath());
    QVERIFY(database.isOpen());
}

void SettingsStoreTest::olderFileMigrates_data() {
    QTest::addColumn<QStringList>("version"); // statements that fill schema_version
    QTest::newRow("version 1") << QStringList("INSERT INTO schema_version VALUES(1)");
    QTest::newRow("version 0 counts as 1") << QStringList("INSERT INTO schema_version VALUES(0)");
    QTest::newRow("a version below 0 counts as 1")
        << QStringList("INSERT INTO schema_version VALUES(-3)");
    QTest::newRow("a version that is no number counts as 1")
        << QStringList("INSERT INTO schema_version VALUES('x')");
    QTest::newRow("no row counts as 1") << QStringList();
}

void SettingsStoreTest::olderFileMigrates() {
    QFETCH(QStringList, version);
    run({"CREATE TABLE schema_version (version INTEGER NOT NULL)"});
    run(version);
    run({"CREATE TABLE app_settings (key TEXT PRIMARY KEY, value TEXT)",
         "INSERT INTO app_settings VALUES('kept','yes')"});
    QVERIFY(store().open());
    QCOMPARE(sql("SELECT version FROM schema_version"), QStringList("2"));
    QCOMPARE(tables(), allTables);
    QCOMPARE(store().value("kept", "no"), QString("yes"));
}

void SettingsStoreTest::newerFileIsLeftAsItIs_data() {
    QTest::addColumn<QString>("version");
    QTest::newRow("version 2") << "2";
    QTest::newRow("a version of the future") << "7";
}

void SettingsStoreTest::newerFileIsLeftAsItIs() {
    QFETCH(QString, version);
    QVERIFY(store().open());
    run({"UPDATE schema_version SET version=" + version, "DROP TABLE recent_projects",
         "INSERT INTO app_settings VALUES('a','b')"});
    QVERIFY(store().open());
    QCOMPARE(sql("SELECT version FROM schema_version"), QStringList(version));
    QCOMPARE(sql("SELECT * FROM app_settings"), QStringList("a|b"));
    QCOMPARE(tables(), allTables.mid(0, 6)); // no migration, so no recent projects
    QCOMPARE(recentNames(10), QStringList());
}

void SettingsStoreTest::secondVersionIsMadeEvenWhenTheFirstFails() {
    run({"CREATE TABLE schema_version (version INTEGER NOT NULL)",
         "INSERT INTO schema_version VALUES(1)", "CREATE TABLE other (x)",
         "CREATE INDEX recent_files ON other(x)"}); // in the way of a table
    support::MessageCapture capture;
    QVERIFY(!store().open());
    QCOMPARE(sql("SELECT version FROM schema_version"), QStringList("2"));
    QCOMPARE(tables(), QStringList({"schema_version", "other", "app_settings", "recent_projects"}));
    QCOMPARE(capture.messages().size(), 1);
    QVERIFY(capture.messages().constFirst().endsWith(
        "CREATE TABLE IF NOT EXISTS recent_files (path TEXT PRIMARY KEY, last_opened TEXT, "
        "encoding TEXT)"));
}

void SettingsStoreTest::failedMigrationKeepsItsVersion() {
    run({"CREATE TABLE schema_version (version INTEGER NOT NULL)",
         "INSERT INTO schema_version VALUES(1)", "CREATE TABLE other (x)",
         "CREATE INDEX recent_projects ON other(x)"});
    const support::MessageCapture capture;
    QVERIFY(!store().open());
    QCOMPARE(sql("SELECT version FROM schema_version"), QStringList("1"));
    QCOMPARE(capture.messages().size(), 1);
}

void SettingsStoreTest::secondOpenReplacesTheConnectionInSilence() {
    const support::MessageCapture capture;
    QVERIFY(store().open());
    store().setValue("a", "1");
    QVERIFY(store().open());
    QCOMPARE(store().value("a", ""), QString("1"));
    QCOMPARE(QSqlDatabase::connectionNames(), QStringList("quorvane"));
    QCOMPARE(capture.messages(), QStringList());
}

void SettingsStoreTest::fileThatIsNoDatabaseGivesDefaults() {
    QFile file(AppPaths::databasePath());
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("this is no database, though it is long enough to be looked at as one ........");
    file.close();
    const support::MessageCapture capture;
    QVERIFY(!store().open());
    QCOMPARE(capture.messages().size(), 1);
    QVERIFY(capture.messages().constFirst().contains("file is not a database"));
    readsDefaultsAndLosesWrites();
}

void SettingsStoreTest::fileThatCannotBeOpenedGivesDefaults() {
    QVERIFY(QDir().mkpath(AppPaths::databasePath())); // a folder in its place
    {
        const support::MessageCapture capture;
        QVERIFY(!store().open());
        QCOMPARE(capture.messages().size(), 1);
        QVERIFY(capture.messages().constFirst().startsWith("Database open failed: "));
        QVERIFY(capture.messages().constFirst().contains("unable to open database file"));
    }
    readsDefaultsAndLosesWrites();
}

void SettingsStoreTest::storeThatWasNeverOpenedGivesDefaults() {
    readsDefaultsAndLosesWrites();
}

namespace {

// Another program that keeps the file to itself, for the time of one object's life.
class Holder {
public:
    explicit Holder(const QString &lock) {
        QSqlDatabase database = QSqlDatabase::addDatabase("QSQLITE", "holder");
        database.setDatabaseName(AppPaths::databasePath());
        holds = database.open() && QSqlQuery(database).exec("BEGIN " + lock);
    }
    ~Holder() { QSqlDatabase::removeDatabase("holder"); }
    Q_DISABLE_COPY(Holder)

    bool holds = false;
};

// The milliseconds for which the store's next statement would wait.
int waitOfTheStore() {
    QSqlQuery query("PRAGMA busy_timeout", QSqlDatabase::database("quorvane", false));
    return query.next() ? query.value(0).toInt() : -1;
}

QStringList logLines() {
    QFile file(AppPaths::launchLogPath());
    QStringList lines;
    if (file.open(QIODevice::ReadOnly | QIODevice::Text))
        lines = QString::fromUtf8(file.readAll()).split('\n', Qt::SkipEmptyParts);
    for (QString &line : lines)
        line.remove(0, 20); // the time
    return lines;
}

} // namespace

void SettingsStoreTest::fileWithStatementsOfItsOwnIsNotUsed_data() {
    QTest::addColumn<QStringList>("statements");
    const QString noEnd = " WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x+1 FROM c) SELECT ";
    const QStringList tables{"CREATE TABLE app_settings (key TEXT PRIMARY KEY, value TEXT)",
                             "CREATE TABLE recent_projects (yslib_path, display_name, last_opened)",
                             "INSERT INTO recent_projects VALUES('/none.yslib','a',1)"};
    QTest::newRow("values without end")
        << QStringList("CREATE VIEW app_settings(key,value) AS" + noEnd + "x,x FROM c");
    QTest::newRow("recent projects without end")
        << QStringList("CREATE VIEW recent_projects(yslib_path,display_name,last_opened) AS" +
                       noEnd + "x,x,x FROM c");
    QTest::newRow("a version without end")
        << QStringList("CREATE VIEW schema_version(version) AS" + noEnd + "max(x) FROM c");
    QTest::newRow("a write without end")
        << tables + QStringList("CREATE TRIGGER t BEFORE INSERT ON app_settings BEGIN" + noEnd +
                                "max(x) FROM c; END");
    QTest::newRow("a removal without end")
        << tables + QStringList("CREATE TRIGGER t AFTER DELETE ON recent_projects BEGIN" + noEnd +
                                "max(x) FROM c; END");
}

void SettingsStoreTest::fileWithStatementsOfItsOwnIsNotUsed() {
    QFETCH(QStringList, statements);
    run(statements);
    const QStringList before = sql("SELECT name FROM sqlite_master");
    const support::MessageCapture capture;
    QVERIFY(!store().open());
    QCOMPARE(capture.messages(), QStringList());
    QCOMPARE(
        logLines(),
        QStringList(QString("Settings are not available: %1 holds a view or a trigger for them.")
                        .arg(AppPaths::databasePath())));
    readsDefaultsAndLosesWrites();
    QCOMPARE(sql("SELECT name FROM sqlite_master"), before);
}

void SettingsStoreTest::whatOthersKeepInTheFileIsNoHindrance() {
    QVERIFY(store().open());
    run({"CREATE TABLE other (x)", "CREATE VIEW names AS SELECT key FROM app_settings",
         "CREATE TRIGGER t AFTER INSERT ON other BEGIN DELETE FROM other; END"});
    QVERIFY(store().open());
    store().setValue("key", "kept");
    QCOMPARE(store().value("key", "default"), QString("kept"));
    QCOMPARE(logLines(), QStringList());
}

void SettingsStoreTest::fileThatAnotherProgramHoldsIsWaitedForOnce_data() {
    QTest::addColumn<QString>("lock");
    QTest::addColumn<bool>("opens"); // reading goes on
    QTest::newRow("for itself") << "EXCLUSIVE" << false;
    QTest::newRow("for writing") << "IMMEDIATE" << true;
}

// All waits of a start together must stay below three seconds, and each statement after the first may
// be one of many: so none but the first waits.
void SettingsStoreTest::fileThatAnotherProgramHoldsIsWaitedForOnce() {
    QFETCH(QString, lock);
    QVERIFY(store().open());
    store().setValue("key", "before");
    QVERIFY(waitOfTheStore() > 0 && waitOfTheStore() < 3000);
    const Holder holder(lock);
    QVERIFY(holder.holds);
    const support::MessageCapture capture; // of the schema
    store().setValue("key", "lost");
    QCOMPARE(waitOfTheStore(), 0);
    QTEST(store().open(), "opens");
    QCOMPARE(waitOfTheStore(), 0);
    QTEST(store().value("key", "default") == "before", "opens");
    store().setDefaultProject("/p/a.yslib");
    store().removeRecentProject("/p/a.yslib");
    QCOMPARE(waitOfTheStore(), 0);
    QCOMPARE(logLines(),
             QStringList(QString("Settings are not available: %1 is held by another program.")
                             .arg(AppPaths::databasePath())));
}

void SettingsStoreTest::fileThatIsLetGoIsUsedAgain() {
    QVERIFY(store().open());
    {
        const Holder holder("EXCLUSIVE");
        const support::MessageCapture capture;
        QVERIFY(!store().open());
    }
    store().setValue("key", "kept");
    QCOMPARE(store().value("key", "default"), QString("kept"));
}

void SettingsStoreTest::valuesAreKept_data() {
    QTest::addColumn<QString>("text");
    QTest::newRow("a word") << "en";
    QTest::newRow("the empty text") << "";
    QTest::newRow("Chinese") << "产线 一";
    QTest::newRow("quotes") << "a'b\"c;--";
    QTest::newRow("per cent signs and question marks") << "%1 ? %20";
}

void SettingsStoreTest::valuesAreKept() {
    QFETCH(QString, text);
    QVERIFY(store().open());
    store().setValue("key", "older");
    store().setValue("key", text);
    store().setValue(text, "other");
    QVERIFY(store().open());
    QCOMPARE(store().value("key", "default"), text);
    QCOMPARE(store().value(text, "default"), QString("other"));
    QCOMPARE(sql("SELECT COUNT(*) FROM app_settings"), QStringList("2"));
}

void SettingsStoreTest::missingKeyReadsAsTheDefault() {
    QVERIFY(store().open());
    QCOMPARE(store().value("none", "default"), QString("default"));
    QCOMPARE(store().value("none", ""), QString());
}

void SettingsStoreTest::nullTextIsStoredAsEmpty() {
    QVERIFY(store().open());
    store().setValue("key", QString());
    QCOMPARE(sql("SELECT value FROM app_settings"), QStringList(""));
    QCOMPARE(store().value("key", "default"), QString());
}

void SettingsStoreTest::defaultProjectIsStoredInItsAbsoluteForm_data() {
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("expected");
    const QString current = QDir::currentPath();
    QTest::newRow("an absolute path") << "/p/a.yslib"
                                      << "/p/a.yslib";
    QTest::newRow("a relative path") << "a.yslib" << current + "/a.yslib";
    QTest::newRow("a path with dots") << "/p/./q/../a.yslib"
                                      << "/p/a.yslib";
    QTest::newRow("the empty path") << ""
                                    << "";
    QTest::newRow("a null path") << QString() << "";
}

void SettingsStoreTest::defaultProjectIsStoredInItsAbsoluteForm() {
    QFETCH(QString, path);
    QFETCH(QString, expected);
    QVERIFY(store().open());
    QCOMPARE(store().defaultProject(), QString());
    store().setDefaultProject("/older.yslib");
    store().setDefaultProject(path);
    QCOMPARE(store().defaultProject(), support::rooted(expected));
    QCOMPARE(sql("SELECT * FROM app_settings"),
             QStringList("default_project_path|" + support::rooted(expected)));
}

void SettingsStoreTest::recentProjectsComeNewestFirst() {
    QVERIFY(store().open());
    addRecent(touch("a.yslib"), "a", 10);
    addRecent(touch("b.yslib"), "b", 30);
    addRecent(touch("c.yslib"), "c", 20);
    QCOMPARE(recentNames(10), QStringList({"b", "c", "a"}));
    QCOMPARE(recentNames(2), QStringList({"b", "c"}));
    QCOMPARE(recentNames(0), QStringList());
    QCOMPARE(store().recentProjects(1).constFirst().path,
             QDir(support::stageRoot()).filePath("b.yslib"));
}

void SettingsStoreTest::openDropsProjectsWhoseFileIsGone() {
    QVERIFY(store().open());
    addRecent(touch("a.yslib"), "a", 1);
    addRecent(support::rooted("/nowhere/gone.yslib"), "gone", 2);
    addRecent(support::stageRoot(), "a folder is there too", 3);
    QVERIFY(store().open());
    QCOMPARE(recentNames(10), QStringList({"a folder is there too", "a"}));
    QCOMPARE(sql("SELECT COUNT(*) FROM recent_projects"), QStringList("2"));
}

void SettingsStoreTest::openExaminesTheNewestHundred() {
    QVERIFY(store().open());
    addRecent(touch("a.yslib"), "present", 2000);
    for (int i = 0; i < 99; ++i) // the first of these is the hundredth
        addRecent(support::rooted(QString("/nowhere/%1.yslib").arg(i)), "gone", 1000 + i);
    addRecent(support::rooted("/nowhere/old.yslib"), "old", 800);
    addRecent(support::rooted("/nowhere/older.yslib"), "older", 700);
    QVERIFY(store().open());
    QCOMPARE(recentNames(10), QStringList({"present", "old", "older"}));
    QVERIFY(store().open()); // now they have come among the newest
    QCOMPARE(recentNames(10), QStringList("present"));
}

// The row is looked for by the absolute form of its path.
void SettingsStoreTest::rowStoredInAnotherFormStays() {
    QVERIFY(store().open());
    addRecent("/nowhere/../gone.yslib", "dots", 2);
    addRecent("gone.yslib", "relative", 1);
    QVERIFY(store().open());
    QCOMPARE(recentNames(10), QStringList({"dots", "relative"}));
}

void SettingsStoreTest::removingTakesTheAbsoluteForm() {
    QVERIFY(store().open());
    addRecent(QDir::currentPath() + "/a.yslib", "a", 1);
    store().removeRecentProject("a.yslib");
    QCOMPARE(recentNames(10), QStringList());
}

// As many as a slow disk takes while the other process still waits.
void SettingsStoreTest::processesLoseNoSetting() {
    constexpr int count = 10;
    QProcess one;
    QProcess two;
    for (QProcess *process : {&one, &two})
        process->setProcessChannelMode(QProcess::MergedChannels);
    one.start(FRAME_PROBE, {"settings", "one", QString::number(count)});
    two.start(FRAME_PROBE, {"settings", "two", QString::number(count)});
    QVERIFY(one.waitForFinished(120000) && two.waitForFinished(120000));
    QCOMPARE(one.readAll(), QByteArray());
    QCOMPARE(two.readAll(), QByteArray());
    QCOMPARE(sql("SELECT COUNT(*) FROM app_settings"), QStringList(QString::number(2 * count)));
    QCOMPARE(sql("SELECT version FROM schema_version"), QStringList("2"));
    QCOMPARE(tables().size(), allTables.size());
}

// Both have found none. Nobody tells when the second one has come to wait, so it is given the time for it.
void SettingsStoreTest::aVersionThatAnotherStartWritesMeanwhileStaysAlone() {
    (void)sql("CREATE TABLE schema_version (version INTEGER NOT NULL)");
    QProcess second;
    {
        const Holder first("IMMEDIATE");
        QVERIFY(first.holds);
        second.start(FRAME_PROBE, {"settings", "a", "1"});
        QVERIFY(second.waitForStarted());
        QTest::qWait(500);
        QSqlQuery query(QSqlDatabase::database("holder"));
        QVERIFY(query.exec("INSERT INTO schema_version VALUES(2)") && query.exec("COMMIT"));
    }
    QVERIFY(second.waitForFinished(120000));
    QCOMPARE(sql("SELECT version FROM schema_version"), QStringList("2"));
}

void SettingsStoreTest::readsDefaultsAndLosesWrites() {
    const support::MessageCapture capture; // Qt complains about each of them
    QCOMPARE(store().value("key", "default"), QString("default"));
    store().setValue("key", "lost");
    QCOMPARE(store().value("key", "default"), QString("default"));
    store().setDefaultProject("/p/a.yslib");
    QCOMPARE(store().defaultProject(), QString());
    store().removeRecentProject("/p/a.yslib");
    QVERIFY(store().recentProjects(10).isEmpty());
}

QUORVANE_TEST_MAIN(QCoreApplication, SettingsStoreTest)
#include "settings_store_test.moc"
