// What editors show of faults that lie between files: circles of imports of every shape, globals of many
// scripts, lists in which people made a mistake.
#include "quorvanectl/analysis/project_view.h"

#include "support/file_tree.h"
#include "support/library_file.h"
#include "support/project_folder.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QDir>

using support::FileTree;
using support::ProjectFolder;

namespace {

QByteArray documentOf(const QByteArray &scripts) {
    return "{\"schemaVersion\": 1, \"project\": {\"name\": \"n\", \"displayName\": \"d\", "
           "\"createdAt\": \"c\"}, \"tasks\": {\"main\": {\"entryScriptId\": "
           "\"a\"}},\n\"scripts\": " +
           scripts + "}\n";
}

QByteArray entry(const QByteArray &id, const QByteArray &path) {
    return R"({"id": ")" + id + R"(", "role": "module", "path": ")" + path + "\"}";
}

// A clean list of scripts that are called as their files are.
QByteArray documentFor(const QStringList &names) {
    QByteArray entries;
    for (const QString &name : names)
        entries += (entries.isEmpty() ? "" : ",\n") + entry(name.toUtf8(), name.toUtf8() + ".ys");
    return documentOf('[' + entries + ']');
}

QString placeText(const ctl::TextRange &at) {
    return QString("%1:%2-%3")
        .arg(QString::number(at.from.line), QString::number(at.from.column),
             QString::number(at.to.column));
}

// "a.ys 1:8-14 YS404 (b.ys 2:8-14)" for each, "line.yslib 2:12-13 the message" of those without a code.
QStringList linesOf(const ProjectFolder &folder, const ctl::FindingsByFile &findings) {
    const QDir root(folder.path(""));
    QStringList lines;
    for (auto file = findings.begin(); file != findings.end(); ++file) {
        for (const ctl::Finding &finding : file.value()) {
            QStringList words{root.relativeFilePath(file.key()), placeText(finding.at),
                              finding.code.isEmpty() ? finding.message : finding.code};
            QStringList related;
            for (const ctl::RelatedPlace &place : finding.related)
                related.append(root.relativeFilePath(place.file) + ' ' + placeText(place.at));
            if (!related.isEmpty())
                words.append('(' + related.join(", ") + ')');
            lines.append(words.join(' '));
        }
    }
    return lines;
}

ctl::ProjectView viewOf(const ProjectFolder &folder, ctl::ScriptStore *store) {
    return ctl::viewOf({folder.path(), QString::fromUtf8(folder.read("line.yslib")), {}}, *store);
}

} // namespace

class ProjectViewTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void circles_data();
    void circles();
    void aCircleIsToldFromTheSameScript();
    void lists_data();
    void lists();
    void documents_data();
    void documents();
    void aGlobalOfManyScripts();
    void aScriptThatIsListedTwiceDeclaresNothingTwice();
    void theScriptsOfAList();
};

void ProjectViewTest::initTestCase() {
    QVERIFY(support::loadScriptVocabulary());
}

// At each import of the circle, and at nothing that only leads into it.
void ProjectViewTest::circles_data() {
    QTest::addColumn<FileTree>("disk");
    QTest::addColumn<QStringList>("expected");
    const auto row = [](const char *name, FileTree scripts, const QStringList &expected) {
        QStringList names;
        for (const QString &file : scripts.keys())
            names.append(file.chopped(3));
        scripts.insert("line.yslib", documentFor(names));
        QTest::newRow(name) << scripts << expected;
    };
    row("no circle where two ways lead to one",
        {{"a.ys", "import \"b.ys\"; import \"c.ys\";"},
         {"b.ys", "import \"d.ys\";"},
         {"c.ys", "import \"d.ys\";"},
         {"d.ys", ""}},
        {});
    row("of three, each beside the two others",
        {{"a.ys", "import \"b.ys\";"}, {"b.ys", "import \"c.ys\";"}, {"c.ys", "import \"a.ys\";"}},
        {"a.ys 1:8-14 YS404 (b.ys 1:8-14, c.ys 1:8-14)",
         "b.ys 1:8-14 YS404 (a.ys 1:8-14, c.ys 1:8-14)",
         "c.ys 1:8-14 YS404 (a.ys 1:8-14, b.ys 1:8-14)"});
    row("the way into it is no part of it",
        {{"a.ys", "import \"b.ys\";"}, {"b.ys", "import \"c.ys\";"}, {"c.ys", "import \"b.ys\";"}},
        {"b.ys 1:8-14 YS404 (c.ys 1:8-14)", "c.ys 1:8-14 YS404 (b.ys 1:8-14)"});
    row("of two circles the first that is met",
        {{"a.ys", "import \"b.ys\";"},
         {"b.ys", "import \"a.ys\";"},
         {"c.ys", "import \"d.ys\";"},
         {"d.ys", "import \"c.ys\";"}},
        {"a.ys 1:8-14 YS404 (b.ys 1:8-14)", "b.ys 1:8-14 YS404 (a.ys 1:8-14)"});
    row("the shortest way round it",
        {{"a.ys", "import \"b.ys\"; import \"c.ys\";"},
         {"b.ys", "import \"c.ys\";"},
         {"c.ys", "import \"a.ys\";"}},
        {"a.ys 1:23-29 YS404 (c.ys 1:8-14)", "c.ys 1:8-14 YS404 (a.ys 1:23-29)"});
    row("of two imports of one script the first",
        {{"a.ys", "import \"b.ys\";\nimport \"./b.ys\";"}, {"b.ys", "\nimport \"a.ys\";"}},
        {"a.ys 1:8-14 YS404 (b.ys 2:8-14)", "b.ys 2:8-14 YS404 (a.ys 1:8-14)"});
    row("of two ways that are as long the first by name",
        {{"a.ys", "import \"c.ys\"; import \"b.ys\"; import \"d.ys\";"},
         {"b.ys", "import \"a.ys\";"},
         {"c.ys", "import \"a.ys\";"},
         {"d.ys", "import \"a.ys\";"}},
        {"a.ys 1:23-29 YS404 (b.ys 1:8-14)", "b.ys 1:8-14 YS404 (a.ys 1:23-29)"});
    row("an import in a function is none of the check",
        {{"a.ys", "function f() { import \"b.ys\"; }"}, {"b.ys", "import \"a.ys\";"}}, {});
    row("a script that does not parse imports nothing",
        {{"a.ys", "import \"b.ys\";"}, {"b.ys", "import \"a.ys\"; }"}}, {});
    row("a rooted path is not followed", {{"a.ys", "import \"/a.ys\";"}}, {});
}

void ProjectViewTest::circles() {
    QFETCH(FileTree, disk);
    const ProjectFolder folder;
    support::writeTree(folder.path(""), disk);
    ctl::ScriptStore store;
    QTEST(linesOf(folder, viewOf(folder, &store).findings), "expected");
}

// Whichever is listed first.
void ProjectViewTest::aCircleIsToldFromTheSameScript() {
    const ProjectFolder folder;
    support::writeTree(
        folder.path(""),
        {{"a.ys", "import \"b.ys\";"}, {"b.ys", "import \"c.ys\";"}, {"c.ys", "import \"a.ys\";"}});
    const QStringList expected{"a.ys 1:8-14 YS404 (b.ys 1:8-14, c.ys 1:8-14)",
                               "b.ys 1:8-14 YS404 (a.ys 1:8-14, c.ys 1:8-14)",
                               "c.ys 1:8-14 YS404 (a.ys 1:8-14, b.ys 1:8-14)"};
    for (const QStringList &order :
         {QStringList{"a", "b", "c"}, {"b", "c", "a"}, {"c", "b", "a"}, {"c", "a", "b"}}) {
        (void)folder.write("line.yslib", documentFor(order));
        ctl::ScriptStore store;
        QCOMPARE(linesOf(folder, viewOf(folder, &store).findings), expected);
    }
}

// Mistakes in the list of scripts, each beside what is wrong across the scripts that it still names.
void ProjectViewTest::lists_data() {
    QTest::addColumn<QByteArray>("scripts");
    QTest::addColumn<QStringList>("expected");
    const auto row = [](const char *name, const QByteArray &scripts, const QStringList &expected) {
        QTest::newRow(name) << scripts << expected;
    };
    const QStringList circle{"a.ys 1:8-14 YS404 (b.ys 1:8-14)", "b.ys 1:8-14 YS404 (a.ys 1:8-14)"};
    const auto list = [](const QByteArrayList &entries) { return '[' + entries.join(", ") + ']'; };
    const QByteArray a = entry("a", "a.ys");
    const QByteArray b = entry("b", "b.ys");
    const QString at = "line.yslib 2:60-61 ";
    const QStringList none{"line.yslib 2:12-13 scripts[] 至少包含一项",
                           "line.yslib 1:122-125 entryScriptId 'a' 未在 scripts[] 中登记"};
    row("none", list({a, b}), circle);
    row("a way there and back: paths count as they are written",
        list({entry("a", R"(.\\sub\\..\\a.ys)"), b}), {});
    row("a circle of which half is listed", list({a}), {});
    row("one that is listed twice", list({a, a, b}), circle);
    row("an entry that is no object", list({a, "7", b}),
        circle +
            QStringList{at + "缺少 script id", at + "缺少 script path", at + "缺少 script role"});
    row("an entry without a path", list({a, R"({"id": "x", "role": "sub"})", b}),
        circle + QStringList(at + "缺少 script path"));
    row("no list", R"({"path": "a.ys"})", none);
    row("an empty list", "[]", none);
}

void ProjectViewTest::lists() {
    QFETCH(QByteArray, scripts);
    const ProjectFolder folder;
    support::writeTree(folder.path(""), {{"line.yslib", documentOf(scripts)},
                                         {"a.ys", "import \"b.ys\";"},
                                         {"b.ys", "import \"a.ys\";"},
                                         {"sub/", ""}});
    ctl::ScriptStore store;
    QTEST(linesOf(folder, viewOf(folder, &store).findings), "expected");
}

// A text that is no project at all is marked where it ceases to be one.
void ProjectViewTest::documents_data() {
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const QByteArray &text, const char *expected) {
        QTest::newRow(name) << text << QString(expected);
    };
    row("nothing", "", "1:1-1 illegal value");
    row("blanks", " \n ", "2:2-2 illegal value");
    row("a text", "\"scripts\"", "1:1-10 illegal value");
    row("a list", "[{}]", "1:1-2 no error occurred");
    row("an open brace", "{", "1:2-2 unterminated object");
    row("an open text in a later line", "{\n  \"scripts\": \"a\n}", "3:2-2 unterminated string");
    row("a word that is none", "{\"a\": yes}", "1:7-10 illegal number");
    row("a comma too many", "{\"a\": [1, 2,]}", "1:13-14 object is missing after a comma");
    row("something behind it", "{}\n{}", "2:1-2 garbage at the end of the document");
}

void ProjectViewTest::documents() {
    QFETCH(QByteArray, text);
    const ProjectFolder folder;
    support::writeTree(folder.path(""), {{"line.yslib", text}});
    ctl::ScriptStore store;
    const QStringList lines = linesOf(folder, viewOf(folder, &store).findings);
    QCOMPARE(lines.size(), 1);
    QTEST(QString(lines.first()).remove("line.yslib ").remove("JSON 无效："), "expected");
}

// Twenty others stand beside each, not all: the list would grow with the square of the scripts.
void ProjectViewTest::aGlobalOfManyScripts() {
    const ProjectFolder folder;
    QStringList names{"a"};
    for (int i = 10; i < 34; ++i)
        names.append(QString("s%1").arg(i));
    for (const QString &name : qAsConst(names))
        (void)folder.write(name + ".ys", "global int x_y;");
    (void)folder.write("line.yslib", documentFor(names));
    ctl::ScriptStore store;
    const ctl::FindingsByFile findings = viewOf(folder, &store).findings;
    QCOMPARE(findings.size(), 25);
    const QVector<ctl::Finding> first = findings.value(folder.path("a.ys"));
    QCOMPARE(first.size(), 1);
    QCOMPARE(first.first().related.size(), 19);
    QCOMPARE(first.first().related.first().message, QString("s10.ys:1"));
    QCOMPARE(first.first().related.last().message, QString("s28.ys:1"));
    const QVector<ctl::Finding> last = findings.value(folder.path("s33.ys"));
    QCOMPARE(last.first().related.size(), 20);
    QCOMPARE(last.first().related.first().message, QString("a.ys:1"));
    QVERIFY(last.first().message.endsWith("s33.ys:1"));
}

void ProjectViewTest::aScriptThatIsListedTwiceDeclaresNothingTwice() {
    const ProjectFolder folder;
    support::writeTree(folder.path(""), {{"a.ys", "global int x_y;"}, {"b.ys", "global int x_y;"}});
    (void)folder.write("line.yslib", documentFor({"a", "a", "b", "a"}));
    ctl::ScriptStore store;
    QCOMPARE(
        linesOf(folder, viewOf(folder, &store).findings),
        QStringList({"a.ys 1:12-15 YS408 (b.ys 1:12-15)", "b.ys 1:12-15 YS408 (a.ys 1:12-15)"}));
}

// What is read for them is kept; an import that nobody lists is not read.
void ProjectViewTest::theScriptsOfAList() {
    const ProjectFolder folder;
    support::writeTree(
        folder.path(""),
        {{"line.yslib", documentOf('[' + entry("a", "a.ys") + ", " + entry("b", R"(sub\\b.ys)") +
                                   ", " + entry("c", "gone.ys") + ", null]")},
         {"a.ys", "import \"lib.ys\";"},
         {"sub/b.ys", ""},
         {"lib.ys", "global int w;"}});
    ctl::ScriptStore store;
    const ctl::ProjectView view = viewOf(folder, &store);
    QCOMPARE(view.scripts,
             QStringList({folder.path("a.ys"), folder.path("sub/b.ys"), folder.path("gone.ys")}));
    QCOMPARE(store.summaryCount(), 3);
    (void)viewOf(folder, &store);
    QCOMPARE(store.summaryCount(), 3);
}

QUORVANE_TEST_MAIN(QCoreApplication, ProjectViewTest)

#include "project_view_test.moc"
