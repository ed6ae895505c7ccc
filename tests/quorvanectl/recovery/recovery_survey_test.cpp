// Which projects a line PC knows, and which left-overs belong to none: also where folders were renamed by hand,
// copied twice, or remembered and gone.
#include "quorvanectl/recovery/recovery_survey.h"

#include "support/file_kinds.h"
#include "support/file_tree.h"
#include "support/library_file.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>

using ctl::Survey;
using support::FileTree;

namespace {

const QString projects = "pc/projects/";
const QString backups = "data/update/backup/";
const QString temps = "data/update/temp/";

const QByteArray yslib = R"({"schemaVersion": 1, "project": {"name": "line", "displayName": "a",
"createdAt": "2026-01-01", "version": "1.0"}, "scripts": [{"id": "main", "path": "main.ys",
"role": "main"}], "tasks": {"main": {"entryScriptId": "main"}}})";

// A whole project in `folder`.
FileTree whole(const QString &folder, const QString &name = "line") {
    return {{folder + '/' + name + ".yslib", yslib}, {folder + "/main.ys", ""}};
}

FileTree together(const QVector<FileTree> &trees) {
    FileTree all;
    for (const FileTree &tree : trees)
        all = support::laidOver(all, tree);
    return all;
}

} // namespace

class RecoverySurveyTest : public QObject {
    Q_OBJECT

private:
    QScopedPointer<QTemporaryDir> folder;

    QString path(const QString &name) const { return folder->filePath(name); }
    QStringList shortened(const QStringList &paths) const;
    Survey look(const QString &selected = {}, const QStringList &remembered = {}) const;
    QStringList projectsOf(const Survey &survey) const;

private Q_SLOTS:
    void initTestCase();
    void init();
    void whatIsSelectedAndRemembered_data();
    void whatIsSelectedAndRemembered();
    void whatLiesAmongTheProjects_data();
    void whatLiesAmongTheProjects();
    void whatBackupsTell_data();
    void whatBackupsTell();
    void theNewestLeftOversFirst();
    void aFolderThatCannotBeListed();
};

void RecoverySurveyTest::initTestCase() {
    QVERIFY(support::loadScriptVocabulary());
}

void RecoverySurveyTest::init() {
    folder.reset(new QTemporaryDir);
}

Survey RecoverySurveyTest::look(const QString &selected, const QStringList &remembered) const {
    QStringList files;
    for (const QString &name : remembered)
        files.append(name.isEmpty() ? QString() : path(name));
    return ctl::surveyRemains({{path("data")},
                               path("pc/projects"),
                               selected.isEmpty() ? QString() : path(selected),
                               files});
}

// Paths below the test's folder.
QStringList RecoverySurveyTest::shortened(const QStringList &paths) const {
    QStringList found;
    for (const QString &one : paths)
        found.append(QDir(folder->path()).relativeFilePath(one));
    return found;
}

QStringList RecoverySurveyTest::projectsOf(const Survey &survey) const {
    QStringList files;
    for (const ctl::SurveyedProject &project : survey.projects)
        files.append(project.projectFile);
    return shortened(files);
}

void RecoverySurveyTest::whatIsSelectedAndRemembered_data() {
    QTest::addColumn<FileTree>("tree");
    QTest::addColumn<QString>("selected");
    QTest::addColumn<QStringList>("remembered");
    QTest::addColumn<QStringList>("found");
    const FileTree far = whole("far");
    const QStringList one{"far/line.yslib"};
    QTest::newRow("nothing") << FileTree() << "" << QStringList() << QStringList();
    QTest::newRow("a selected one that is gone")
        << FileTree() << "far/line.yslib" << QStringList() << one;
    QTest::newRow("a remembered one that is gone") << FileTree() << "" << one << QStringList();
    QTest::newRow("a remembered one that is a folder")
        << FileTree{{"far/line.yslib/a", ""}} << "" << one << QStringList();
    QTest::newRow("an empty line in the memory")
        << far << "" << QStringList{"", one.first()} << one;
    QTest::newRow("selected and remembered, in two spellings")
        << far << "far/line.yslib" << QStringList{"far/../far/line.yslib", "far//line.yslib"}
        << one;
    QTest::newRow("selected, and among the projects")
        << whole(projects + "line") << projects + "line/./line.yslib" << QStringList()
        << QStringList{projects + "line/line.yslib"};
    QTest::newRow("by their paths, whatever came first")
        << together({whole("b"), whole("a"), whole(projects + "c")}) << "b/line.yslib"
        << QStringList{"a/line.yslib"}
        << QStringList{"a/line.yslib", "b/line.yslib", projects + "c/line.yslib"};
}

void RecoverySurveyTest::whatIsSelectedAndRemembered() {
    QFETCH(FileTree, tree);
    QFETCH(QString, selected);
    QFETCH(QStringList, remembered);
    support::writeTree(folder->path(), tree);
    QTEST(projectsOf(look(selected, remembered)), "found");
}

void RecoverySurveyTest::whatLiesAmongTheProjects_data() {
    QTest::addColumn<FileTree>("tree");
    QTest::addColumn<QStringList>("found");
    QTest::newRow("a project file among the folders, in none")
        << FileTree{{projects + "line.yslib", yslib}} << QStringList();
    QTest::newRow("of two project files the one that is called as the folder")
        << together({whole(projects + "line"), whole(projects + "line", "copy")})
        << QStringList{projects + "line/line.yslib"};
    QTest::newRow("a project file deeper down, as a package may have it")
        << whole(projects + "line/sub") << QStringList{projects + "line/sub/line.yslib"};
    QTest::newRow("what a recovery set aside, and what it was making")
        << together({whole(projects + "line.set_aside_20261120_164501"),
                     whole(projects + "line.set_aside_20261120_164501_2"),
                     whole(projects + "line.recovering")})
        << QStringList();
    QTest::newRow("a copy that somebody named by hand is a project")
        << together({whole(projects + "line.old"), whole(projects + "set_aside")})
        << QStringList{projects + "line.old/line.yslib", projects + "set_aside/line.yslib"};
}

void RecoverySurveyTest::whatLiesAmongTheProjects() {
    QFETCH(FileTree, tree);
    support::writeTree(folder->path(), tree);
    QTEST(projectsOf(look()), "found");
}

void RecoverySurveyTest::whatBackupsTell_data() {
    QTest::addColumn<FileTree>("tree");
    QTest::addColumn<QStringList>("remembered");
    QTest::addColumn<QStringList>("found");
    QTest::addColumn<QStringList>("left"); // backups of none
    const QString backup = backups + "line_20261120_164501";
    const QString older = backups + "line_20261119_164501";
    const QString ours = projects + "line/line.yslib";
    const QStringList none;
    QTest::newRow("a project that is gone") << whole(backup) << none << QStringList{ours} << none;
    QTest::newRow("two of one project, of which the older is left")
        << together({whole(backup), whole(older)}) << none << QStringList{ours}
        << QStringList{older};
    QTest::newRow("of a project that ran elsewhere, and is gone")
        << whole(backup) << QStringList{"far/line/line.yslib"} << QStringList{"far/line/line.yslib"}
        << none;
    QTest::newRow("of a project that ran elsewhere under another file's name")
        << whole(backup) << QStringList{"far/line/other.yslib"} << QStringList{ours} << none;
    QTest::newRow("of two that ran in folders of one name, both")
        << together({whole(backup), whole("a/line")})
        << QStringList{"a/line/line.yslib", "b/line/line.yslib"}
        << QStringList{"a/line/line.yslib", "b/line/line.yslib"} << none;
    QTest::newRow("without a project file nobody knows whose it is")
        << FileTree{{backup + "/main.ys", ""}} << none << none << QStringList{backup};
    QTest::newRow("without a name before its time")
        << whole(backups + "_20261120_164501") << none << none
        << QStringList{backups + "_20261120_164501"};
    QTest::newRow("with a time that never was")
        << whole(backups + "line_20261320_164501") << none << none << none;
    QTest::newRow("one that was recovered, and one that was set aside")
        << together({whole(backup + ".recovered"), whole(backup + ".set_aside")}) << none << none
        << none;
    QTest::newRow("a file of such a name") << FileTree{{backup, "x"}} << none << none << none;
    QTest::newRow("a project's name with a time in it")
        << whole(backups + "line_20250101_000000_20261120_164501") << none
        << QStringList{projects + "line_20250101_000000/line.yslib"} << none;
}

void RecoverySurveyTest::whatBackupsTell() {
    QFETCH(FileTree, tree);
    QFETCH(QStringList, remembered);
    support::writeTree(folder->path(), tree);
    const Survey survey = look({}, remembered);
    QTEST(projectsOf(survey), "found");
    QTEST(shortened(survey.backups), "left");
}

void RecoverySurveyTest::theNewestLeftOversFirst() {
    support::writeTree(folder->path(), {{backups + "b_20261120_164501/x", ""},
                                        {backups + "a_20261121_000000/x", ""},
                                        {backups + "c_20251231_235959/x", ""},
                                        {temps + "apply_20261120_164500/x", ""},
                                        {temps + "apply_20261120_164501/x", ""},
                                        {temps + "package_1f/p.zip", "of a stick"},
                                        {"data/update/cache/q.zip", ""},
                                        {"data/update/cache/notes.txt", ""}});
    const Survey survey = look();
    QCOMPARE(shortened(survey.backups),
             QStringList({backups + "a_20261121_000000", backups + "b_20261120_164501",
                          backups + "c_20251231_235959"}));
    QCOMPARE(shortened(survey.unpacked),
             QStringList({temps + "apply_20261120_164501", temps + "apply_20261120_164500"}));
    QCOMPARE(shortened(survey.packages),
             QStringList({"data/update/cache/q.zip", temps + "package_1f/p.zip"}));
    QCOMPARE(projectsOf(survey), QStringList());
}

// It is told in its place, and the others go on.
void RecoverySurveyTest::aFolderThatCannotBeListed() {
    if (!support::permissionsKeepOut())
        QSKIP("root lists every folder");
    support::writeTree(folder->path(), together({whole("a/shut"), whole("b")}));
    support::writeTree(folder->path(), {{"a/line.yslib", yslib}, {"a/main.ys", ""}});
    QVERIFY(QFile::setPermissions(path("a/shut"), {}));
    const Survey survey = look("a/line.yslib", {"b/line.yslib"});
    QVERIFY(QFile::setPermissions(path("a/shut"),
                                  QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    QCOMPARE(projectsOf(survey), QStringList({"a/line.yslib", "b/line.yslib"}));
    QCOMPARE(survey.projects[0].error, "cannot list the folder " + path("a/shut"));
    QCOMPARE(survey.projects[1].error, QString());
    QCOMPARE(survey.projects[1].remains.recovery, ctl::Recovery::None);
}

QUORVANE_TEST_MAIN(QCoreApplication, RecoverySurveyTest)
#include "recovery_survey_test.moc"
