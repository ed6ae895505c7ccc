// Imports, cycles of imports and globals that several scripts declare: small projects on the disk,
// and the search of a graph held to the recursive rule on random ones.
#include "script/project_checks.h"

#include "support/library_file.h"
#include "support/platform.h"
#include "support/project_folder.h"
#include "support/staged_main.h"

#include <QDir>
#include <QFile>
#include <QJsonObject>
#include <QRandomGenerator>
#include <QThread>

#include <memory>

using namespace ast;
using support::ProjectFolder;

namespace {

using Files = QList<QPair<QString, QByteArray>>; // name to content

const QString cycleText = QStringLiteral("1:1-0 YS404 error: 检测到 import 循环依赖");

QString clashText(int line, const QString &name, const QString &places) {
    return QStringLiteral("%1:1-0 YS408 error: 跨脚本 global '%2' 重复定义：%3")
        .arg(QString::number(line), name, places);
}

void writeFiles(const ProjectFolder &folder, const Files &files) {
    for (const auto &file : files)
        folder.write(file.first, file.second);
}

QJsonArray listOf(const QStringList &paths) {
    QJsonArray scripts;
    for (const QString &path : paths)
        scripts.append(QJsonObject{{"path", path}});
    return scripts;
}

// The findings in their printed form, sorted, since the order of several names is not promised.
QStringList findings(const ScriptCheckResult &result) {
    QStringList texts;
    for (const ScriptDiagnostic &finding : result.diagnostics)
        texts.append(diagnosticText(finding));
    texts.sort();
    return texts;
}

struct SearchState {
    QSet<QString> onPath;
    QSet<QString> finished;
    QStringList path;
};

// The rule as one would write it down, which needs a stack as deep as the chain of imports.
bool searchRecursively(const QString &node, const ImportGraph &graph, SearchState &state) {
    if (state.onPath.contains(node)) {
        state.path.append(node);
        return true;
    }
    if (state.finished.contains(node))
        return false;
    state.onPath.insert(node);
    for (const QString &next : graph.value(node)) {
        if (searchRecursively(next, graph, state))
            return true;
    }
    state.onPath.remove(node);
    state.finished.insert(node);
    return false;
}

// Up to eight nodes with up to three imports each, some of them no keys.
ImportGraph randomGraph(QRandomGenerator &random) {
    ImportGraph graph;
    const int count = random.bounded(1, 9);
    for (int i = 0; i < count; ++i) {
        QSet<QString> &imports = graph[QString::number(i)];
        for (int left = random.bounded(0, 4); left > 0; --left)
            imports.insert(QString::number(random.bounded(0, 12)));
    }
    return graph;
}

// Runs `work` on a thread whose stack is far too small for a recursion in proportion to the input.
template<typename Work>
void runOnSmallStack(Work work) {
    const std::unique_ptr<QThread> thread(QThread::create(work));
    thread->setStackSize(256 * 1024);
    thread->start();
    QVERIFY(thread->wait());
}

} // namespace

Q_DECLARE_METATYPE(Files)

class ProjectChecksTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void imports_data();
    void imports();
    void importsOfWhatIsNoScript();
    void importsWithoutTheWord();
    void cycles_data();
    void cycles();
    void linkLoops();
    void globals_data();
    void globals();
    void globalsWithoutKeywords();
    void resultsAddUp();
    void entriesWithoutPath();
    void emptyArray();
    void searchOfAGraph();
    void searchEqualsTheRecursiveRule();
    void searchOfALongChain();
    void rootedPath_data();
    void rootedPath();
};

void ProjectChecksTest::init() {
    QVERIFY(support::loadScriptVocabulary());
}

void ProjectChecksTest::imports_data() {
    QTest::addColumn<QString>("script");
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QStringList>("expected"); // relative to the project's folder
    QTest::newRow("in the order of the text")
        << "a.ys" << QByteArray("import \"c.ys\";\nx = 1;\nimport \"b.ys\";\n")
        << QStringList({"c.ys", "b.ys"});
    QTest::newRow("the same one twice")
        << "a.ys" << QByteArray("import \"b.ys\";import \"./b.ys\";")
        << QStringList({"b.ys", "b.ys"});
    QTest::newRow("../ counts from the script's own folder and is resolved")
        << "sub/a.ys" << QByteArray("import \"../x/b.ys\";") << QStringList("x/b.ys");
    QTest::newRow("a name counts from the script's own folder")
        << "sub/a.ys" << QByteArray("import \"b.ys\";") << QStringList("sub/b.ys");
    QTest::newRow("a backslash separates on every platform")
        << "sub/a.ys" << QByteArray("import \"..\\x\\b.ys\";") << QStringList("x/b.ys");
    QTest::newRow("an absolute path is left out")
        << "a.ys" << QByteArray("import \"/tmp/b.ys\";") << QStringList();
    QTest::newRow("a path that begins with a backslash is left out")
        << "a.ys" << QByteArray("import \"\\b.ys\";") << QStringList();
    QTest::newRow("a drive letter with a slash is left out")
        << "a.ys" << QByteArray("import \"C:/b.ys\";import \"c:\\b.ys\";") << QStringList();
    QTest::newRow("a drive letter without a slash is relative")
        << "a.ys" << QByteArray("import \"C:b.ys\";") << QStringList("C:b.ys");
    QTest::newRow("a sign that is written small as a letter is no drive")
        << "a.ys" << QByteArray("import \"\xE2\x84\xAA:/b.ys\";") // of the Kelvin
        << QStringList(QChar(0x212A) + QStringLiteral(":/b.ys"));
    QTest::newRow("an empty path is the folder itself")
        << "sub/a.ys" << QByteArray("import \"\";") << QStringList("sub");
    QTest::newRow("inside a block is no import")
        << "a.ys" << QByteArray("if (a) { import \"b.ys\"; }") << QStringList();
    QTest::newRow("inside a function is no import")
        << "a.ys" << QByteArray("function f() { import \"b.ys\"; }") << QStringList();
    QTest::newRow("in a comment is no import")
        << "a.ys" << QByteArray("// import \"b.ys\";\n") << QStringList();
    QTest::newRow("a broken import adds nothing, and takes the others with it")
        << "a.ys" << QByteArray("import \"b.ys\";\nimport c.ys;\n") << QStringList();
    QTest::newRow("without its semicolon at the end of the file it is lost, the others stay")
        << "a.ys" << QByteArray("import \"b.ys\";\nimport \"c.ys\"") << QStringList("b.ys");
    QTest::newRow("a script that parses with an ignored error keeps its imports")
        << "a.ys" << QByteArray("import \"b.ys\";\nif (a) { static") << QStringList("b.ys");
    QTest::newRow("a lexical error takes all")
        << "a.ys" << QByteArray("import \"b.ys\";\n@") << QStringList();
    QTest::newRow("an empty script") << "a.ys" << QByteArray() << QStringList();
    QTest::newRow("GBK") << "a.ys" << QByteArray("import \"\xBC\xEC.ys\";")
                         << QStringList(QStringLiteral("检.ys"));
    QTest::newRow("behind a byte-order mark")
        << "a.ys" << QByteArray("\xEF\xBB\xBFimport \"b.ys\";") << QStringList("b.ys");
    QTest::newRow("broken UTF-8 behind a byte-order mark stays what it is")
        << "a.ys" << QByteArray("\xEF\xBB\xBFimport \"b.ys\";// \xFF\n") << QStringList("b.ys");
    QTest::newRow("UTF-16 is no script")
        << "a.ys" << QByteArray("\xFF\xFEi\0m\0p\0o\0r\0t\0", 14) << QStringList();
    QTest::newRow("NUL bytes are no script") << "a.ys" << QByteArray(64, '\0') << QStringList();
}

void ProjectChecksTest::imports() {
    QFETCH(QString, script);
    QFETCH(QByteArray, text);
    QFETCH(QStringList, expected);
    const ProjectFolder folder;
    // Where there are drives it counts from that drive's current folder, or is a drive's for Qt whatever the sign
    // before the colon: no file of the project.
    for (QString &path : expected)
        path = support::onWindows && path.contains(':') ? path : folder.path(path);
    const QString file = folder.write(script, text);
    QCOMPARE(collectImports(file, folder.path("")), expected);
    // The project's folder takes no part.
    QCOMPARE(collectImports(file, QStringLiteral("/elsewhere")), expected);
}

void ProjectChecksTest::importsOfWhatIsNoScript() {
    const ProjectFolder folder;
    folder.write("folder.ys/inside", "");
    QCOMPARE(collectImports(folder.path("missing.ys"), folder.path("")), QStringList());
    QCOMPARE(collectImports(folder.path("folder.ys"), folder.path("")), QStringList());
    QCOMPARE(collectImports(QString(), QString()), QStringList());
}

void ProjectChecksTest::importsWithoutTheWord() {
    QVERIFY(support::loadLibraryText("[Highlight]\nother=function,include\n"));
    const ProjectFolder folder;
    writeFiles(folder, {{"a.ys", "import \"a.ys\";\n"}});
    QCOMPARE(collectImports(folder.path("a.ys"), folder.path("")), QStringList());
    QVERIFY(checkImportGraph(folder.path(), listOf({"a.ys"})).passed);
}

void ProjectChecksTest::cycles_data() {
    QTest::addColumn<Files>("files");
    QTest::addColumn<QStringList>("listed");
    QTest::addColumn<bool>("cycle");
    const QByteArray a("import \"a.ys\";\n");
    const QByteArray b("import \"b.ys\";\n");
    const QByteArray c("import \"c.ys\";\n");
    QTest::newRow("a imports b, b imports nothing")
        << Files({{"a.ys", b}, {"b.ys", ""}}) << QStringList({"a.ys", "b.ys"}) << false;
    QTest::newRow("a imports b, b imports a")
        << Files({{"a.ys", b}, {"b.ys", a}}) << QStringList({"a.ys", "b.ys"}) << true;
    QTest::newRow("a imports itself") << Files({{"a.ys", a}}) << QStringList("a.ys") << true;
    QTest::newRow("three in a ring") << Files({{"a.ys", b}, {"b.ys", c}, {"c.ys", a}})
                                     << QStringList({"a.ys", "b.ys", "c.ys"}) << true;
    QTest::newRow("two ways to the same script are no cycle")
        << Files({{"a.ys", b + c}, {"b.ys", c}, {"c.ys", ""}})
        << QStringList({"a.ys", "b.ys", "c.ys"}) << false;
    QTest::newRow("two separate cycles are one finding")
        << Files({{"a.ys", a}, {"b.ys", b}, {"c.ys", c}}) << QStringList({"a.ys", "b.ys", "c.ys"})
        << true;
    QTest::newRow("a cycle through a script that is not listed is not seen")
        << Files({{"a.ys", c}, {"c.ys", a}}) << QStringList("a.ys") << false;
    QTest::newRow("a cycle that only an absolute path closes is not seen")
        << Files({{"a.ys", "import \"/a.ys\";"}}) << QStringList("a.ys") << false;
    QTest::newRow("a key that is not clean does not meet a clean import")
        << Files({{"a.ys", b}, {"b.ys", a}, {"sub/x", ""}}) << QStringList({"sub/../a.ys", "b.ys"})
        << false;
    QTest::newRow("a cycle between sub-folders")
        << Files({{"sub/a.ys", "import \"../x/b.ys\";"}, {"x/b.ys", "import \"../sub/a.ys\";"}})
        << QStringList({"sub/a.ys", "x/b.ys"}) << true;
    QTest::newRow("a script listed with a backslash is found, and its imports lead out of it")
        << Files({{"sub/a.ys", "import \"../b.ys\";"}, {"b.ys", b}})
        << QStringList({"sub\\a.ys", "b.ys"}) << true;
    QTest::newRow("a key with a backslash does not meet a clean import")
        << Files({{"sub/a.ys", "import \"../b.ys\";"}, {"b.ys", "import \"sub/a.ys\";"}})
        << QStringList({"sub\\a.ys", "b.ys"}) << false;
    QTest::newRow("two spellings of one path are two nodes")
        << Files({{"a.ys", "import \"B.ys\";"}, {"b.ys", a}}) << QStringList({"a.ys", "b.ys"})
        << false;
    QTest::newRow("a script listed twice is one node")
        << Files({{"a.ys", b}, {"b.ys", ""}}) << QStringList({"a.ys", "a.ys", "b.ys"}) << false;
    QTest::newRow("a script that does not parse breaks the ring")
        << Files({{"a.ys", b}, {"b.ys", a + "}\n"}}) << QStringList({"a.ys", "b.ys"}) << false;
    QTest::newRow("a missing script breaks the ring")
        << Files({{"a.ys", b}}) << QStringList({"a.ys", "b.ys"}) << false;
    QTest::newRow("a script outside the project takes part")
        << Files({{"p/a.ys", "import \"../b.ys\";"}, {"b.ys", "import \"p/../b.ys\";"}})
        << QStringList({"p/a.ys", "b.ys"}) << true;
}

void ProjectChecksTest::cycles() {
    QFETCH(Files, files);
    QFETCH(QStringList, listed);
    QFETCH(bool, cycle);
    const ProjectFolder folder;
    writeFiles(folder, files);
    // The .yslib file itself is not read; its folder is what counts.
    const ScriptCheckResult result = checkImportGraph(folder.path(), listOf(listed));
    QCOMPARE(findings(result), cycle ? QStringList(cycleText) : QStringList());
    QCOMPARE(result.errorCount, cycle ? 1 : 0);
    QCOMPARE(result.passed, !cycle);
}

void ProjectChecksTest::linkLoops() {
    if (support::onWindows)
        QSKIP("Qt makes shortcuts there, which are no links");
    const ProjectFolder folder;
    QVERIFY(QFile::link("loop.ys", folder.path("loop.ys")));
    folder.write("a.ys", "import \"loop.ys\"; global int a_b;");
    QVERIFY(QFile::link("a.ys", folder.path("linked.ys")));
    const QJsonArray scripts = listOf({"a.ys", "loop.ys"});
    QVERIFY(checkImportGraph(folder.path(), scripts).passed);
    QVERIFY(checkCrossScriptGlobals(folder.path(), scripts).passed);
    // A link is a path of its own.
    QCOMPARE(findings(checkCrossScriptGlobals(folder.path(), listOf({"a.ys", "linked.ys"}))),
             QStringList(clashText(1, "a_b", "a.ys:1, linked.ys:1")));
}

void ProjectChecksTest::globals_data() {
    QTest::addColumn<Files>("files");
    QTest::addColumn<QStringList>("listed");
    QTest::addColumn<QStringList>("expected");
    const QByteArray global("global int a;\n");
    const QStringList ab({"a.ys", "b.ys"});
    QTest::newRow("one declaration")
        << Files({{"a.ys", global}, {"b.ys", ""}}) << ab << QStringList();
    QTest::newRow("two scripts declare the same")
        << Files({{"a.ys", global}, {"b.ys", "\n\n" + global}}) << ab
        << QStringList(clashText(1, "a", "a.ys:1, b.ys:3"));
    QTest::newRow("the line is that of the first declaration in the order of the list")
        << Files({{"a.ys", global}, {"b.ys", "\n\n" + global}}) << QStringList({"b.ys", "a.ys"})
        << QStringList(clashText(3, "a", "b.ys:3, a.ys:1"));
    QTest::newRow("type and value are not compared")
        << Files({{"a.ys", "global int a = 1;"}, {"b.ys", "global string a[3];"}}) << ab
        << QStringList(clashText(1, "a", "a.ys:1, b.ys:1"));
    QTest::newRow("one script declares it twice")
        << Files({{"a.ys", global + global}, {"b.ys", ""}}) << ab << QStringList();
    QTest::newRow("one script listed twice under the same path")
        << Files({{"a.ys", global}}) << QStringList({"a.ys", "a.ys"}) << QStringList();
    QTest::newRow("one script listed under two spellings is two")
        << Files({{"a.ys", global}}) << QStringList({"a.ys", "./a.ys"})
        << QStringList(clashText(1, "a", "a.ys:1, ./a.ys:1"));
    QTest::newRow("three declarations in two scripts are all listed")
        << Files({{"a.ys", global + global}, {"b.ys", global}}) << ab
        << QStringList(clashText(1, "a", "a.ys:1, a.ys:2, b.ys:1"));
    QTest::newRow("a plain variable of the same name is none")
        << Files({{"a.ys", global}, {"b.ys", "int a;"}}) << ab << QStringList();
    QTest::newRow("a static variable of the same name is none")
        << Files({{"a.ys", global}, {"b.ys", "static int a;"}}) << ab << QStringList();
    QTest::newRow("inside a function is none")
        << Files({{"a.ys", global}, {"b.ys", "function f() { global int a; }"}}) << ab
        << QStringList();
    QTest::newRow("inside a block is none")
        << Files({{"a.ys", global}, {"b.ys", "if (x) { global int a; }"}}) << ab << QStringList();
    QTest::newRow("in a comment is none")
        << Files({{"a.ys", global}, {"b.ys", "// global int a;\n"}}) << ab << QStringList();
    QTest::newRow("names differ by case")
        << Files({{"a.ys", global}, {"b.ys", "global int A;"}}) << ab << QStringList();
    QTest::newRow("a finding for each name")
        << Files({{"a.ys", "global int a;\nglobal int b;\n"},
                  {"b.ys", "global int b;\nglobal int a;\n"}})
        << ab
        << QStringList({clashText(1, "a", "a.ys:1, b.ys:2"), clashText(2, "b", "a.ys:2, b.ys:1")});
    QTest::newRow("a script that does not parse drops out")
        << Files({{"a.ys", global + "}\n"}, {"b.ys", global}}) << ab << QStringList();
    QTest::newRow("a script with a bad character drops out")
        << Files({{"a.ys", global + "@\n"}, {"b.ys", global}}) << ab << QStringList();
    QTest::newRow("a script that parses with an ignored error counts")
        << Files({{"a.ys", global + "if (a) { static"}, {"b.ys", global}}) << ab
        << QStringList(clashText(1, "a", "a.ys:1, b.ys:1"));
    QTest::newRow("a missing script drops out") << Files({{"b.ys", global}}) << ab << QStringList();
    QTest::newRow("a folder in place of a script drops out")
        << Files({{"a.ys/inside", ""}, {"b.ys", global}}) << ab << QStringList();
    QTest::newRow("a path with a backslash is found and told as written")
        << Files({{"sub/a.ys", global}, {"b.ys", global}}) << QStringList({"sub\\a.ys", "b.ys"})
        << QStringList(clashText(1, "a", "sub\\a.ys:1, b.ys:1"));
    QTest::newRow("a path with a placeholder in it is told as written")
        << Files({{"%2.ys", global}, {"b.ys", global}}) << QStringList({"%2.ys", "b.ys"})
        << QStringList(clashText(1, "a", "%2.ys:1, b.ys:1"));
    QTest::newRow("a path that leaves the project")
        << Files({{"p/x", ""}, {"a.ys", global}, {"b.ys", global}})
        << QStringList({"p/../a.ys", "b.ys"})
        << QStringList(clashText(1, "a", "p/../a.ys:1, b.ys:1"));
    QTest::newRow("a Chinese name in GBK and in UTF-8 is one name")
        << Files({{"a.ys", "global int \xBC\xEC;"}, {"b.ys", "global int \xE6\xA3\x80;"}}) << ab
        << QStringList(clashText(1, QStringLiteral("检"), "a.ys:1, b.ys:1"));
}

void ProjectChecksTest::globals() {
    QFETCH(Files, files);
    QFETCH(QStringList, listed);
    QFETCH(QStringList, expected);
    const ProjectFolder folder;
    writeFiles(folder, files);
    const ScriptCheckResult result = checkCrossScriptGlobals(folder.path(), listOf(listed));
    QCOMPARE(findings(result), expected);
    QCOMPARE(result.errorCount, expected.size());
    QCOMPARE(result.warningCount, 0);
    QCOMPARE(result.passed, expected.isEmpty());
}

void ProjectChecksTest::globalsWithoutKeywords() {
    QVERIFY(support::loadLibraryText("[Highlight]\ntype=int\n"));
    const ProjectFolder folder;
    writeFiles(folder, {{"a.ys", "global int a;"}, {"b.ys", "global int a;"}});
    QVERIFY(checkCrossScriptGlobals(folder.path(), listOf({"a.ys", "b.ys"})).passed);
}

void ProjectChecksTest::resultsAddUp() {
    const ProjectFolder folder;
    const QByteArray many("global int a; global int b; global int c;");
    writeFiles(folder, {{"a.ys", many}, {"b.ys", many}});
    const QJsonArray scripts = listOf({"a.ys", "b.ys"});
    const ScriptCheckResult result = checkCrossScriptGlobals(folder.path(), scripts);
    QCOMPARE(result.errorCount, 3);
    QCOMPARE(result.diagnostics.size(), size_t(3));
    QVERIFY(!result.passed);
    // Nothing is kept between two calls.
    QCOMPARE(checkCrossScriptGlobals(folder.path(), scripts).errorCount, 3);
}

void ProjectChecksTest::entriesWithoutPath() {
    const ProjectFolder folder;
    folder.write("a.ys", "import \"a.ys\"; global int a;");
    const QJsonArray scripts = {5,
                                "a.ys",
                                QJsonArray{QJsonObject{{"path", "a.ys"}}},
                                QJsonObject{{"path", 5}},
                                QJsonObject{{"path", ""}},
                                QJsonObject{{"id", "a.ys"}},
                                QJsonValue()};
    QVERIFY(checkImportGraph(folder.path(), scripts).passed);
    QVERIFY(checkCrossScriptGlobals(folder.path(), scripts).passed);
}

void ProjectChecksTest::emptyArray() {
    const ScriptCheckResult imports = checkImportGraph("/a/b.yslib", QJsonArray());
    QVERIFY(imports.passed && imports.diagnostics.empty() && imports.errorCount == 0);
    const ScriptCheckResult globals = checkCrossScriptGlobals("/a/b.yslib", QJsonArray());
    QVERIFY(globals.passed && globals.diagnostics.empty() && globals.errorCount == 0);
}

void ProjectChecksTest::searchOfAGraph() {
    const ImportGraph graph = {{"a", {"b"}}, {"b", {"c"}}, {"c", {"b"}}, {"d", {"e"}}};
    QSet<QString> onPath;
    QSet<QString> finished;
    QStringList path;
    QVERIFY(!findImportCycle("d", graph, onPath, finished, &path));
    QCOMPARE(finished, QSet<QString>({"d", "e"})); // a node that is no key imports nothing
    QVERIFY(onPath.isEmpty());
    QVERIFY(findImportCycle("a", graph, onPath, finished, &path));
    QCOMPARE(path, QStringList("b")); // the node that closes the cycle, and no other
    QCOMPARE(onPath, QSet<QString>({"a", "b", "c"}));
    // A node that is finished is not entered again.
    onPath.clear();
    finished.insert("b");
    QVERIFY(!findImportCycle("a", graph, onPath, finished));
}

// Small graphs of every kind: same answer, same node that closes the cycle, same sets afterwards.
void ProjectChecksTest::searchEqualsTheRecursiveRule() {
    QRandomGenerator random(1);
    int cycles = 0;
    for (int round = 0; round < 5000; ++round) {
        const ImportGraph graph = randomGraph(random);
        SearchState found;
        SearchState expected;
        for (auto node = graph.keyBegin(); node != graph.keyEnd(); ++node) {
            found.onPath.clear();
            expected.onPath.clear();
            const bool cycle = searchRecursively(*node, graph, expected);
            QCOMPARE(findImportCycle(*node, graph, found.onPath, found.finished, &found.path),
                     cycle);
            QCOMPARE(found.onPath, expected.onPath);
            QCOMPARE(found.finished, expected.finished);
            QCOMPARE(found.path, expected.path);
            cycles += cycle ? 1 : 0;
        }
    }
    QVERIFY(cycles > 1000);
}

void ProjectChecksTest::searchOfALongChain() {
    runOnSmallStack([] {
        constexpr int length = 200000;
        ImportGraph graph;
        graph.reserve(length);
        for (int i = 0; i < length; ++i)
            graph.insert(QString::number(i), {QString::number(i + 1)});
        QSet<QString> onPath;
        QSet<QString> finished;
        QVERIFY(!findImportCycle("0", graph, onPath, finished));
        QCOMPARE(finished.size(), length + 1);
        finished.clear();
        graph.insert(QString::number(length), {"0"});
        QVERIFY(findImportCycle("0", graph, onPath, finished));
    });
}

void ProjectChecksTest::rootedPath_data() {
    QTest::addColumn<bool>("rooted");
    const QList<QPair<const char *, bool>> rows = {
        {"", false},        {"a.ys", false},     {"./a.ys", false},
        {"../a.ys", false}, {"/", true},         {"/a.ys", true},
        {"//a/b.ys", true}, {"\\a.ys", true},    {"\\\\a\\b", true},
        {"C:/a.ys", true},  {"z:\\a.ys", true},  {"C:a.ys", false},
        {"C:", false},      {"CC:/a.ys", false}, {"1:/a.ys", false},
        {" /a.ys", false},  {"a/C:/b", false},   {"[:/a", false},
        {"@:/a", false},    {"{:/a", false},     {"\xC3\x84:/a", false},
    };
    for (const auto &row : rows)
        QTest::newRow(row.first) << row.second;
}

void ProjectChecksTest::rootedPath() {
    QFETCH(bool, rooted);
    QCOMPARE(isRootedPath(QString::fromUtf8(QTest::currentDataTag())), rooted);
}

QUORVANE_TEST_MAIN(QCoreApplication, ProjectChecksTest)
#include "project_checks_test.moc"
