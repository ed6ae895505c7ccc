// How often the files of a project are opened: the launcher checks a project at the end of every
// countdown, so one validation opens each file once. The kernel counts.
#include "project/project_validator.h"
#include "script/project_checks.h"

#include "support/library_file.h"
#include "support/open_counter.h"
#include "support/project_folder.h"
#include "support/staged_main.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>

namespace {

using Files = QMap<QString, QByteArray>; // name to content
using support::OpenCounter;
using support::Opens;

// What was opened in the folder and in its sub-folder "sub", by relative path.
class ProjectOpens {
public:
    explicit ProjectOpens(const support::ProjectFolder &folder)
        : place(folder.path(""))
        , counter({place.path(), place.filePath("sub")}) {}

    Opens take() {
        Opens relative;
        const Opens opens = counter.take();
        for (auto open = opens.cbegin(); open != opens.cend(); ++open)
            relative.insert(place.relativeFilePath(open.key()), open.value());
        return relative;
    }

private:
    QDir place;
    OpenCounter counter;
};

QJsonArray listOf(const QStringList &paths) {
    QJsonArray scripts;
    for (const QString &path : paths)
        scripts.append(QJsonObject{{"id", path}, {"path", path}, {"role", "main"}});
    return scripts;
}

// Writes the files and a project that lists `paths`; gives the project's path.
QString writeProject(const support::ProjectFolder &folder, const Files &files,
                     const QStringList &paths) {
    folder.write("sub/data.json", "{}");
    for (auto file = files.cbegin(); file != files.cend(); ++file)
        folder.write(file.key(), file.value());
    const QJsonObject root{{"schemaVersion", 1}, {"scripts", listOf(paths)}};
    return folder.write("line.yslib", QJsonDocument(root).toJson());
}

} // namespace

Q_DECLARE_METATYPE(Files)
Q_DECLARE_METATYPE(Opens)

class ScriptReadsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void validation_data();
    void validation();
    void everyCheckByItselfReadsAnew();
    void nothingIsKeptForTheNextValidation();
};

void ScriptReadsTest::initTestCase() {
    QVERIFY(support::loadScriptVocabulary());
}

void ScriptReadsTest::validation_data() {
    QTest::addColumn<Files>("files");
    QTest::addColumn<QStringList>("listed");
    QTest::addColumn<Opens>("expected");
    const Files ring{{"a.ys", "import \"sub/b.ys\";\nglobal int cam1_w;\n"},
                     {"sub/b.ys", "import \"../c.ys\";\nglobal int cam1_w; global int bad;\n"},
                     {"c.ys", "import \"a.ys\";\nglobal int cam1_w;\n"}};
    QTest::newRow("scripts that import each other and declare the same globals")
        << ring << QStringList({"a.ys", "sub/b.ys", "c.ys"})
        << Opens({{"line.yslib", 1}, {"a.ys", 1}, {"sub/b.ys", 1}, {"c.ys", 1}});
    QTest::newRow("what is imported or lies there but is not listed is not opened")
        << ring << QStringList("a.ys") << Opens({{"line.yslib", 1}, {"a.ys", 1}});
    QTest::newRow("a script listed three times")
        << ring << QStringList({"c.ys", "a.ys", "c.ys", "c.ys"})
        << Opens({{"line.yslib", 1}, {"a.ys", 1}, {"c.ys", 1}});
    QTest::newRow("a backslash leads to the same file")
        << ring << QStringList({"sub/b.ys", "sub\\b.ys"})
        << Opens({{"line.yslib", 1}, {"sub/b.ys", 1}});
    // Its imports count from the path as it is written.
    QTest::newRow("another spelling counts as another file")
        << ring << QStringList({"a.ys", "./a.ys"}) << Opens({{"line.yslib", 1}, {"a.ys", 2}});
    QTest::newRow("scripts that do not parse")
        << Files({{"a.ys", "} global int w;"}, {"c.ys", "global int w; @"}})
        << QStringList({"a.ys", "c.ys"}) << Opens({{"line.yslib", 1}, {"a.ys", 1}, {"c.ys", 1}});
    QTest::newRow("a missing script")
        << Files() << QStringList("a.ys") << Opens({{"line.yslib", 1}});
}

void ScriptReadsTest::validation() {
    QFETCH(Files, files);
    QFETCH(QStringList, listed);
    const support::ProjectFolder folder;
    const QString project = writeProject(folder, files, listed);
    ProjectOpens counter(folder);
    QVERIFY(!validateProjectFile(project).isEmpty());
    QTEST(counter.take(), "expected");
}

void ScriptReadsTest::everyCheckByItselfReadsAnew() {
    const support::ProjectFolder folder;
    const QStringList listed{"a.ys", "b.ys", "a.ys"};
    const QString project = writeProject(
        folder, {{"a.ys", "import \"b.ys\"; global int w;"}, {"b.ys", "global int w;"}}, listed);
    const Opens once{{"a.ys", 1}, {"b.ys", 1}};
    ProjectOpens counter(folder);
    QVERIFY(ast::checkImportGraph(project, listOf(listed)).passed);
    QCOMPARE(counter.take(), once);
    QVERIFY(!ast::checkCrossScriptGlobals(project, listOf(listed)).passed);
    QCOMPARE(counter.take(), once);
    QCOMPARE(ast::collectImports(folder.path("a.ys"), QString()), QStringList(folder.path("b.ys")));
    QCOMPARE(counter.take(), Opens({{"a.ys", 1}}));
}

void ScriptReadsTest::nothingIsKeptForTheNextValidation() {
    const support::ProjectFolder folder;
    const QString project = writeProject(folder, {{"a.ys", "global int cam1_w;"}}, {"a.ys"});
    const QString before = formatProjectIssues(validateProjectFile(project));
    folder.write("a.ys", "import \"a.ys\"; global int cam;\n");
    QCOMPARE(formatProjectIssues(validateProjectFile(project)),
             before + QStringLiteral("\n[Warning] a.ys: global 变量 'cam' 不符合 {camId}_{metric} "
                                     "命名\n[Error] scripts: 检测到 import 循环依赖"));
}

QUORVANE_TEST_MAIN(QCoreApplication, ScriptReadsTest)
#include "script_reads_test.moc"
