// Which statements of a database make what stands in for a settings table.
#include "frame/settings_schema.h"
#include "frame/settings_stand_in.h"
#include "support/staged_main.h"

#include <QCoreApplication>

class SettingsStandInTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void statements_data();
    void statements();
    void noneOfOurOwnIsOne();
};

void SettingsStandInTest::statements_data() {
    QTest::addColumn<QString>("statement");
    QTest::addColumn<bool>("isOne");
    const auto row = [](const char *name, const QString &statement, bool isOne) {
        QTest::newRow(name) << statement << isOne;
    };
    row("a view", "CREATE VIEW app_settings(key,value) AS SELECT 1,2", true);
    row("a view, in other letters", "create view App_Settings as select 1", true);
    row("a temporary view", "CREATE TEMP VIEW recent_projects AS SELECT 1", true);
    row("a view made if missing", "CREATE VIEW IF NOT EXISTS app_settings AS SELECT 1", true);
    row("a view behind its database", "CREATE VIEW main.app_settings AS SELECT 1", true);
    row("a view in quotes", "CREATE VIEW \"app_settings\" AS SELECT 1", true);
    row("a view in single quotes", "CREATE VIEW 'app_settings' AS SELECT 1", true);
    row("a view in brackets", "CREATE VIEW [schema_version] AS SELECT 1", true);
    row("a view in backquotes", "CREATE VIEW `app_settings` AS SELECT 1", true);
    row("a view behind comments", "CREATE/* AS x */VIEW -- y\n app_settings AS SELECT 1", true);
    row("a virtual table", "CREATE VIRTUAL TABLE app_settings USING fts5(key)", true);
    row("a trigger", "CREATE TRIGGER t AFTER INSERT ON app_settings BEGIN SELECT 1; END", true);
    row("a trigger of one column",
        "CREATE TRIGGER t BEFORE UPDATE OF value ON app_settings BEGIN SELECT 1; END", true);
    row("a trigger called ON",
        "CREATE TRIGGER \"on\" AFTER DELETE ON [recent_projects] BEGIN SELECT 1; END", true);
    row("a trigger with a quote in its name",
        "CREATE TRIGGER \"a'b\" AFTER DELETE ON recent_projects BEGIN SELECT 1; END", true);

    row("a table", "CREATE TABLE app_settings (key TEXT PRIMARY KEY, value TEXT)", false);
    row("a table, in other letters", "create table app_settings (key)", false);
    row("an index", "CREATE UNIQUE INDEX app_settings ON other(x)", false);
    row("an index of a settings table", "CREATE INDEX i ON app_settings(value)", false);
    row("another's view of the settings", "CREATE VIEW names AS SELECT key FROM app_settings",
        false);
    row("another's trigger that reads the settings",
        "CREATE TRIGGER t AFTER INSERT ON other BEGIN SELECT * FROM app_settings; END", false);
    row("another's virtual table", "CREATE VIRTUAL TABLE words USING fts5(text)", false);
    row("a name that is longer", "CREATE VIEW app_settings_2 AS SELECT 1", false);
    row("a name with a quote within", "CREATE VIEW \"app\"\"_settings\" AS SELECT 1", false);
    row("no statement", "nothing", false);
    row("the empty text", "", false);
    row("a statement that breaks off", "CREATE TRIGGER t AFTER INSERT ON", false);
}

void SettingsStandInTest::statements() {
    QFETCH(QString, statement);
    QTEST(settings_stand_in::isOne(statement), "isOne");
}

void SettingsStandInTest::noneOfOurOwnIsOne() {
    for (const char *statement : settings_schema::makeFirstVersion)
        QVERIFY(!settings_stand_in::isOne(statement));
    for (const char *table : settings_schema::tables)
        QVERIFY(settings_stand_in::isOne(QString("CREATE VIEW %1 AS SELECT 1").arg(table)));
}

QUORVANE_TEST_MAIN(QCoreApplication, SettingsStandInTest)
#include "settings_stand_in_test.moc"
