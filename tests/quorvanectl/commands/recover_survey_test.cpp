// project recover without a project: what it tells of all that a line PC knows, and how to mend it.
#include "run_tool.h"
#include "support/file_tree.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QDir>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>

using support::Answer;
using support::FileTree;

namespace {

QByteArray projectFile(const QByteArray &version) {
    return R"({"schemaVersion": 1,
"project": {"name": "line", "displayName": "a", "createdAt": "2026-01-01", "version": ")" +
           version + R"("},
"scripts": [{"id": "main", "path": "main.ys", "role": "main"}],
"tasks": {"main": {"entryScriptId": "main"}}})";
}

// A whole project below `place`, named `name`.
FileTree whole(const QString &place, const QString &name) {
    return {{place + '/' + name + ".yslib", projectFile("1.0")}, {place + "/main.ys", "// 1\n"}};
}

FileTree together(const QVector<FileTree> &trees) {
    FileTree all;
    for (const FileTree &tree : trees)
        all = support::laidOver(all, tree);
    return all;
}

const QString projects = "pc/USER/projects/";
const QString backups = "data/update/backup/";
const QString temps = "data/update/temp/";

} // namespace

class RecoverSurveyTest : public QObject {
    Q_OBJECT

private:
    QScopedPointer<QTemporaryDir> folder;

    QString path(const QString &name) const { return folder->filePath(name); }
    QString spelled(QString text) const { return text.replace('@', folder->path()); }
    Answer recover() const;
    void remember(const QString &selected, const QStringList &recent) const;

private Q_SLOTS:
    void init();
    void whatIsTold_data();
    void whatIsTold();
    void projectsElsewhere_data();
    void projectsElsewhere();
    void aMemoryThatCannotBeReadIsTold_data();
    void aMemoryThatCannotBeReadIsTold();
    void whatAShellReadsIsQuoted_data();
    void whatAShellReadsIsQuoted();
};

void RecoverSurveyTest::init() {
    folder.reset(new QTemporaryDir);
    support::writeTree(folder->path(), {{"pc/bin/config/", ""}, {"data/", ""}});
}

Answer RecoverSurveyTest::recover() const {
    const QString library = QUORVANE_SOURCE_TREE "/resources/config/FunctionLib.ini";
    return support::runTool({"project", "recover", "--install", path("pc"), "--data", path("data"),
                             "--library", library});
}

// As the launcher does.
void RecoverSurveyTest::remember(const QString &selected, const QStringList &recent) const {
    {
        QSqlDatabase database = QSqlDatabase::addDatabase("QSQLITE", "test");
        database.setDatabaseName(path("data/Quorvane.db"));
        QVERIFY(database.open());
        QSqlQuery query(database);
        QVERIFY(query.exec("CREATE TABLE app_settings (key TEXT, value TEXT)") &&
                query.exec("CREATE TABLE recent_projects (yslib_path TEXT, display_name TEXT, "
                           "last_opened INTEGER)"));
        query.prepare("INSERT INTO app_settings VALUES('default_project_path', ?)");
        query.addBindValue(selected);
        QVERIFY(query.exec());
        for (const QString &file : recent) {
            query.prepare("INSERT INTO recent_projects VALUES(?, 'a', 1)");
            query.addBindValue(file);
            QVERIFY(query.exec());
        }
    }
    QSqlDatabase::removeDatabase("test");
}

void RecoverSurveyTest::whatIsTold_data() {
    QTest::addColumn<FileTree>("tree");
    QTest::addColumn<QString>("told"); // "@" stands for the folder of all, "$" for the options
    QTest::addColumn<int>("status");
    const QString line = projects + "line";
    const QString backup = backups + "line_20261120_164501";
    const QString staging = temps + "apply_20261120_164430";
    const QString command = "    quorvanectl project recover @/" + line + "/line.yslib$";
    const FileTree zip{{"data/update/cache/p.zip", "no archive"}};
    QTest::newRow("nothing at all") << FileTree() << "There is no project.\n" << 0;
    QTest::newRow("two whole projects")
        << together({whole(line, "line"), whole(projects + "demo", "demo")})
        << "@/" + projects + "demo/demo.yslib: whole\n@/" + line + "/line.yslib: whole\n"
        << 0;
    QTest::newRow("a folder that is no project")
        << FileTree{{projects + "notes/a.txt", ""}} << "There is no project.\n"
        << 0;
    QTest::newRow("a project that is gone, and its backup")
        << whole(backup, "line")
        << "@/" + line +
               "/line.yslib: What lies in the project's folder cannot run. The backup "
               "belongs in the project's place: the old project, whole.\n" +
               command + " --apply\n"
        << 1;
    QTest::newRow("half a project, its backup and the unpacked package")
        << together({{{line + "/main.ys", "// 1\n"}},
                     whole(backup, "line"),
                     whole(staging, "line"),
                     {{staging + "/new.ys", ""}}})
        << "@/" + line +
               "/line.yslib: The old project was being removed. The backup belongs in "
               "the project's place: the old project, whole.\n" +
               command + " --apply\n"
        << 1;
    QTest::newRow("a project that cannot run, and a package")
        << together({{{line + "/line.yslib", "{}"}}, zip})
        << "@/" + line +
               "/line.yslib: No whole copy was found. Take the project from its last "
               "package or from a copy of your own.\n" +
               command + " --from PACKAGE.zip --manifest manifest.json --apply\n" +
               "Package:   @/data/update/cache/p.zip: 10 bytes\n"
        << 1;
    QTest::newRow("a whole project, and a backup that was not removed")
        << together({whole(line, "line"), whole(backup, "line")})
        << "@/" + line +
               "/line.yslib: The old project had not been touched yet. The project is "
               "whole. A backup is left: the command sets it aside.\n" +
               command + " --apply\n"
        << 0;
    QTest::newRow("one of which nobody knows whether it is whole")
        << together({whole(line, "line"), whole(backup, "line"), {{backup + "/more.csv", "1"}}})
        << "@/" + line +
               "/line.yslib: The project runs with the backup's project file and lacks "
               "other files of the backup. Whether it is whole cannot be known: compare "
               "it with the backup, or name the update's package with --package. Nothing "
               "is changed.\n" +
               command + " --package PACKAGE.zip --apply\n"
        << 1;
    QTest::newRow("what no project is known for")
        << together({whole(line, "line"),
                     {{backups + "line_20261120_164501/x", ""}, {staging + "/x", ""}}})
        << "@/" + line + "/line.yslib: whole\n" + "Backup:    @/" + backup +
               ": of an earlier update, or of a project that is not known here\n" +
               "Unpacked:  @/" + staging +
               ": an update that runs, or was broken off before it touched a project\n"
        << 0;
    QTest::newRow("what a recovery has set aside is no project")
        << together({whole(line, "line"), whole(line + ".set_aside_20261120_164501", "line"),
                     whole(line + ".recovering", "line"), whole(backup + ".set_aside", "line"),
                     whole(backup + ".recovered", "line")})
        << "@/" + line + "/line.yslib: whole\n"
        << 0;
}

void RecoverSurveyTest::whatIsTold() {
    QFETCH(FileTree, tree);
    QFETCH(QString, told);
    support::writeTree(folder->path(), tree);
    const FileTree before = support::readTree(folder->path());
    const Answer answer = recover();
    QCOMPARE(answer.err, QString());
    QCOMPARE(answer.out, spelled(told.replace(
                             '$', " --install @/pc --data @/data --library " QUORVANE_SOURCE_TREE
                                  "/resources/config/FunctionLib.ini")));
    QTEST(answer.status, "status");
    QCOMPARE(support::readTree(folder->path()), before);
}

void RecoverSurveyTest::projectsElsewhere_data() {
    QTest::addColumn<FileTree>("tree");
    QTest::addColumn<QString>("told"); // its first line, "@" stands for the folder of all
    QTest::newRow("the selected one is whole")
        << whole("far/line", "line") << "@/far/line/line.yslib: whole";
    QTest::newRow("the selected one is gone")
        << FileTree()
        << "@/far/line/line.yslib: No whole copy was found. Take the project from its "
           "last package or from a copy of your own.";
    QTest::newRow("one that ran before is whole")
        << together({whole("far/line", "line"), whole("earlier/old", "old")})
        << "@/earlier/old/old.yslib: whole";
    QTest::newRow("one that ran before has left a backup alone")
        << whole(backups + "old_20261120_164501", "old")
        << "@/earlier/old/old.yslib: What lies in the project's folder cannot run. The backup "
           "belongs in the project's place: the old project, whole.";
}

void RecoverSurveyTest::projectsElsewhere() {
    QFETCH(FileTree, tree);
    QFETCH(QString, told);
    support::writeTree(folder->path(), tree);
    remember(path("far/line/line.yslib"), {path("earlier/old/old.yslib")});
    QCOMPARE(recover().out.section('\n', 0, 0), spelled(told));
}

// A project that lies elsewhere might be broken, and nobody would know.
void RecoverSurveyTest::aMemoryThatCannotBeReadIsTold_data() {
    QTest::addColumn<QStringList>("statements"); // on the settings; none: a folder lies there
    QTest::addColumn<QString>("fault");          // its beginning
    const QString table = "CREATE TABLE app_settings (key TEXT, value TEXT)";
    QTest::newRow("a folder") << QStringList() << "";
    QTest::newRow("somebody else's statements in it")
        << QStringList{"CREATE VIEW app_settings AS SELECT 'a' AS key, 'b' AS value"}
        << "holds a view or a trigger for the settings;";
    QTest::newRow("held by another program")
        << QStringList{table, "BEGIN EXCLUSIVE"} << "database is locked";
}

void RecoverSurveyTest::aMemoryThatCannotBeReadIsTold() {
    QFETCH(QStringList, statements);
    QFETCH(QString, fault);
    support::writeTree(folder->path(), whole(projects + "line", "line"));
    const QString file = path("data/Quorvane.db");
    Answer answer;
    if (statements.isEmpty()) {
        QVERIFY(QDir().mkdir(file));
        answer = recover();
    } else {
        {
            QSqlDatabase database = QSqlDatabase::addDatabase("QSQLITE", "test");
            database.setDatabaseName(file);
            QVERIFY(database.open());
            for (const QString &statement : statements)
                QVERIFY2(QSqlQuery(database).exec(statement), qPrintable(statement));
            answer = recover();
        }
        QSqlDatabase::removeDatabase("test");
    }
    QVERIFY2(answer.err.startsWith("quorvanectl: " + file + ": " + fault), qPrintable(answer.err));
    QVERIFY2(answer.err.endsWith("; what the launcher remembers is not looked at\n"),
             qPrintable(answer.err));
    QCOMPARE(answer.out, path(projects + "line/line.yslib") + ": whole\n");
    QCOMPARE(answer.status, 2);
}

// The command is pasted into a shell, which has a meaning for some characters.
void RecoverSurveyTest::whatAShellReadsIsQuoted_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("isQuoted");
    QTest::newRow("a blank") << "产 线" << true;
    QTest::newRow("the brackets of a second copy") << "line3(1)" << true;
    QTest::newRow("an ampersand") << "cut&weld" << true;
    QTest::newRow("a semicolon") << "line3;old" << true;
    QTest::newRow("an apostrophe") << "chief's" << true;
    QTest::newRow("a comma") << "line3,4" << true;
    QTest::newRow("letters, digits and marks that mean nothing") << "产线_3-a.1+2@b~1" << false;
}

void RecoverSurveyTest::whatAShellReadsIsQuoted() {
    QFETCH(QString, name);
    QFETCH(bool, isQuoted);
    support::writeTree(folder->path(), whole(backups + name + "_20261120_164501", "line"));
    const QString out = recover().out;
    const QString file = path(projects + name + "/line.yslib");
    QVERIFY2(out.contains("\n    quorvanectl project recover " +
                          (isQuoted ? '"' + file + '"' : file) + " --install "),
             qPrintable(out));
}

QUORVANE_TEST_MAIN(QCoreApplication, RecoverSurveyTest)
#include "recover_survey_test.moc"
