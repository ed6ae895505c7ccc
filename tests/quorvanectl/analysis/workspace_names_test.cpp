// What is offered while one types, and what is told of a name: by a function library of its own and a
// project on the disk. '|' is the place that is asked about.
#include "quorvanectl/analysis/workspace.h"

#include "support/file_tree.h"
#include "support/library_file.h"
#include "support/platform.h"
#include "support/project_folder.h"
#include "support/staged_main.h"

#include <QCoreApplication>

using support::FileTree;
using support::ProjectFolder;

namespace {

constexpr char library[] = "[ControlFlow]\n"
                           "keywords=if,end_if\n"
                           "[Completion]\n"
                           "snippet_only=end_if\n"
                           "[Highlight]\n"
                           "type=int,float,global,double\n"
                           "other=function,import\n"
                           "library=OpenCV\n"
                           "[Plugin]\n"
                           "functions=print,Return\n"
                           "1,print,1,内容#C,输出一行\n"
                           "2,mode,2,相机#I,模式#S#auto#manual,设置模式\n"
                           "3,now,0,毫秒数\n"
                           "4,short,3,a#C\n";

const char *nameOf(ctl::Proposal::Kind kind) {
    static const char *const names[] = {"choice", "variable", "function", "imported",
                                        "global", "library",  "keyword",  "word",
                                        "script", "key",      "role"};
    return names[int(kind)];
}

// A workspace in which one text is open, at a place of it.
struct Typing {
    Typing(const ProjectFolder &folder, const QString &name, QString text)
        : path(folder.path(name))
        , index(text.indexOf('|')) {
        text.remove(index, 1);
        workspace.open(path, text);
    }

    ctl::Proposals proposals() { return workspace.proposalsAt(path, index); }

    // "kind label -> text" for each, those of one kind of the library's as one line each.
    QStringList offered() {
        QStringList lines;
        for (const ctl::Proposal &proposal : proposals().list)
            lines.append(
                QString("%1 %2 -> %3").arg(nameOf(proposal.kind), proposal.label, proposal.text));
        return lines;
    }

    [[nodiscard]] QString replaced() {
        const ctl::Proposals all = proposals();
        return workspace.textOf(path).mid(all.from, all.to - all.from);
    }

    ctl::Workspace workspace;
    QString path;
    int index;
};

// What stands for itself wherever code does.
const QStringList libraryLines{"library print -> print( 内容  );",
                               "library mode -> mode( 相机 , 模式  );",
                               "library now -> now",
                               "library short -> short",
                               "keyword if -> if",
                               "word end_if -> end_if",
                               "keyword int -> int",
                               "keyword float -> float",
                               "keyword global -> global",
                               "word double -> double",
                               "keyword function -> function",
                               "keyword import -> import",
                               "word OpenCV -> OpenCV",
                               "word Return -> Return"};

// What the file holds that is typed in, and what the others of its project are.
FileTree line() {
    return {{"line.yslib",
             R"({"scripts": [{"path": "s/a.ys"}, {"path": "s/b.ys"}, {"path": "c.ys"}]})"},
            {"s/b.ys", "global int cam1_n;\nint own;\nfunction twice(int value, b) {\n}\n"},
            {"s/round.ys", "import \"b.ys\";\nimport \"a.ys\";\n"},
            {"s/nearer.ys", "import \"b.ys\";\nfunction twice(int nearer) {\n}\n"},
            {"c.ys", "\nglobal float cam2_mm = 1;\nfunction far() {\n}\n"}};
}

// "kind label -> text; detail; description", of what the library does not have.
QStringList namesOffered(Typing *typing) {
    QStringList lines;
    for (const ctl::Proposal &proposal : typing->proposals().list) {
        if (proposal.kind >= ctl::Proposal::Kind::Variable &&
            proposal.kind <= ctl::Proposal::Kind::Global)
            lines.append(QString("%1 %2 -> %3; %4; %5")
                             .arg(nameOf(proposal.kind), proposal.label,
                                  proposal.snippet.isEmpty() ? proposal.text : proposal.snippet,
                                  proposal.detail, proposal.description));
    }
    return lines;
}

QString recordText(Typing *typing) {
    const std::optional<ctl::NameRecord> record =
        typing->workspace.recordAt(typing->path, typing->index);
    if (!record)
        return "nothing";
    QStringList parameters;
    for (const ctl::Parameter &parameter : record->parameters)
        parameters.append(parameter.name +
                          (parameter.about.isEmpty() ? "" : "=" + parameter.about));
    const QString marked =
        typing->workspace.textOf(typing->path).mid(record->from, record->to - record->from);
    return QStringList{record->signature, record->description, parameters.join(", "), record->place,
                       marked}
        .join(" / ");
}

} // namespace

class WorkspaceNamesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void offersInScripts_data();
    void offersInScripts();
    void whatIsToldBesideAnOffer();
    void aCallThatHasItsArgumentsKeepsThem();
    void namesOfScripts_data();
    void namesOfScripts();
    void aNameThatStandsForTwo();
    void importPaths_data();
    void importPaths();
    void offersInAProjectsFile_data();
    void offersInAProjectsFile();
    void records_data();
    void records();
    void recordsOfScripts_data();
    void recordsOfScripts();
    void calls_data();
    void calls();
};

void WorkspaceNamesTest::initTestCase() {
    QVERIFY(support::loadLibraryText(library));
}

void WorkspaceNamesTest::offersInScripts_data() {
    QTest::addColumn<QString>("script");
    QTest::addColumn<QStringList>("expected");
    QTest::addColumn<QString>("replaced");
    const QStringList nothing;
    QTest::newRow("in an empty script") << "|" << libraryLines << "";
    QTest::newRow("in a word") << "x = pr|i;" << libraryLines << "pri";
    QTest::newRow("where an argument is one of a list")
        << "mode(1, |)"
        << (QStringList{"choice \"auto\" -> \"auto\"", "choice \"manual\" -> \"manual\""} +
            libraryLines)
        << "";
    QTest::newRow("where it is not") << "mode(|" << libraryLines << "";
    QTest::newRow("in a comment") << "// pr|" << nothing << "";
    QTest::newRow("in a text") << "print(\"pr|\");" << nothing << "pr";
    QTest::newRow("in a number") << "x = 1|" << nothing << "1";
    QTest::newRow("behind a dot") << "x.|" << nothing << "";
    QTest::newRow("where a new name is declared") << "int |" << nothing << "";
}

void WorkspaceNamesTest::offersInScripts() {
    QFETCH(QString, script);
    const ProjectFolder folder;
    Typing typing(folder, "a.ys", script);
    QTEST(typing.offered(), "expected");
    QTEST(typing.replaced(), "replaced");
}

void WorkspaceNamesTest::whatIsToldBesideAnOffer() {
    const ProjectFolder folder;
    QStringList lines;
    for (const ctl::Proposal &proposal : Typing(folder, "a.ys", "mode(1, |").proposals().list)
        lines.append(
            QStringList{proposal.label, proposal.snippet, proposal.detail, proposal.description}
                .join(" / "));
    const QString mode =
        "mode / mode( ${1:相机} , ${2:模式}  ); / mode( 相机 , 模式  ); / 设置模式";
    const QStringList expected{"\"auto\" /  / 模式 / ",
                               "\"manual\" /  / 模式 / ",
                               "print / print( ${1:内容}  ); / print( 内容  ); / 输出一行",
                               mode,
                               "now /  / now / 毫秒数",
                               "short /  /  / ",
                               "if /  / control flow / ",
                               "end_if /  / control flow / ",
                               "int /  / type / ",
                               "float /  / type / ",
                               "global /  / type / ",
                               "double /  / type / ",
                               "function /  / declaration / ",
                               "import /  / declaration / ",
                               "OpenCV /  / library / ",
                               "Return /  / plug-in / "};
    QCOMPARE(lines, expected);
}

void WorkspaceNamesTest::aCallThatHasItsArgumentsKeepsThem() {
    const ProjectFolder folder;
    const ctl::Proposals proposals = Typing(folder, "a.ys", "pri|(1)").proposals();
    QCOMPARE(proposals.list.first().text, QString("print"));
    QCOMPARE(proposals.list.first().snippet, QString());
}

void WorkspaceNamesTest::namesOfScripts_data() {
    QTest::addColumn<QString>("script");
    QTest::addColumn<QStringList>("expected");
    const QStringList globals{"global cam1_n -> cam1_n; global int cam1_n; s/b.ys",
                              "global cam2_mm -> cam2_mm; global float cam2_mm; c.ys"};
    QTest::newRow("globals of all scripts of the project") << "|" << globals;
    QTest::newRow("the functions of what is imported")
        << "import \"b.ys\";\n|"
        << (QStringList{"imported twice -> twice(${1:value}, ${2:b}); function twice(int value, "
                        "int b); s/b.ys"} +
            globals);
    QTest::newRow("also by way of others, which may import each other")
        << "import \"round.ys\";\n|"
        << (QStringList{"imported twice -> twice(${1:value}, ${2:b}); function twice(int value, "
                        "int b); s/b.ys"} +
            globals);
    QTest::newRow("of two of one name the one that fewer imports lead to")
        << "import \"nearer.ys\";\n|"
        << (QStringList{"imported twice -> twice(${1:nearer}); function twice(int nearer); "
                        "s/nearer.ys"} +
            globals);
    QTest::newRow("the script's own, the innermost first")
        << "int all;\nfunction f(int p) {\nfloat inner;\nx = |;\n}\nglobal int cam3_x;\n"
        << (QStringList{"variable inner -> inner; float inner; ", "variable p -> p; int p; ",
                        "variable all -> all; int all; ",
                        "function f -> f(${1:p}); function f(int p); ",
                        "global cam3_x -> cam3_x; global int cam3_x; "} +
            globals);
    QTest::newRow("but not those of another function")
        << "function f(int p) {\nfloat inner;\n}\n|"
        << (QStringList{"function f -> f(${1:p}); function f(int p); "} + globals);
    QTest::newRow("a function without parameters")
        << "function f() {\n}\n|" << (QStringList{"function f -> f(); function f(); "} + globals);
}

void WorkspaceNamesTest::namesOfScripts() {
    QFETCH(QString, script);
    const ProjectFolder folder;
    support::writeTree(folder.path(""), line());
    Typing typing(folder, "s/a.ys", script);
    QTEST(namesOffered(&typing), "expected");
    // What is open and not saved counts, and while it is spoilt what it was before.
    const QString other = folder.path("c.ys");
    typing.workspace.open(other, "global int cam9_new;\n");
    (void)typing.workspace.findings();
    typing.workspace.change(other, "global int cam9_new;\n}");
    const QString unsaved = "global cam9_new -> cam9_new; global int cam9_new; c.ys";
    QCOMPARE(namesOffered(&typing).last(), unsaved);
}

// An inner name hides the outer one, and an own function that of the library.
void WorkspaceNamesTest::aNameThatStandsForTwo() {
    const ProjectFolder folder;
    Typing typing(folder, "a.ys", "int n;\nfunction print(float n) {\n|\n}\n");
    const QStringList own{"variable n -> n; float n; ",
                          "function print -> print(${1:n}); function print(float n); "};
    QCOMPARE(namesOffered(&typing), own);
    QCOMPARE(typing.offered().filter("print").size(), 1);
}

void WorkspaceNamesTest::importPaths_data() {
    QTest::addColumn<FileTree>("disk");
    QTest::addColumn<QString>("script");
    QTest::addColumn<QStringList>("expected");
    QTest::addColumn<QString>("replaced");
    FileTree disk{{"line.yslib", "{}"}, {"s/a.ys", ""},   {"s/b.ys", ""},
                  {"s/sub/c.ys", ""},   {"lib/D.YS", ""}, {"readme.txt", ""}};
    if (!support::onWindows) // which has no such names
        disk.insert("s/\"odd\".ys", "");
    const auto paths = [](const QStringList &names) {
        QStringList lines;
        for (const QString &name : names)
            lines.append("script " + name + " -> " + name);
        return lines;
    };
    const QStringList others = paths({"../lib/D.YS", "b.ys", "sub/c.ys"});
    QTest::newRow("all other scripts of the project's folder")
        << disk << "import \"|\";" << others << "";
    QTest::newRow("they take the place of what is there")
        << disk << "import \"su|b/x.ys\";" << others << "sub/x.ys";
    QTest::newRow("in quotes that are open") << disk << "import \"b|\nint n;" << others << "b";
    QTest::newRow("of a script without a project")
        << FileTree{{"s/a.ys", ""}, {"s/b.ys", ""}} << "import \"|\";" << QStringList() << "";
}

void WorkspaceNamesTest::importPaths() {
    QFETCH(FileTree, disk);
    QFETCH(QString, script);
    const ProjectFolder folder;
    support::writeTree(folder.path(""), disk);
    Typing typing(folder, "s/a.ys", script);
    QTEST(typing.offered(), "expected");
    QTEST(typing.replaced(), "replaced");
}

void WorkspaceNamesTest::offersInAProjectsFile_data() {
    QTest::addColumn<QString>("json");
    QTest::addColumn<QStringList>("expected");
    QTest::addColumn<QString>("replaced");
    const QStringList roles{"role main -> \"main\"", "role sub -> \"sub\"",
                            "role module -> \"module\""};
    const QStringList nothing;
    QTest::newRow("the outermost keys, without those that are there")
        << R"({"schemaVersion": 1, "scripts": [], "|"})"
        << QStringList{"key hardware -> \"hardware\": ", "key models -> \"models\": ",
                       "key processGroups -> \"processGroups\": ", "key project -> \"project\": ",
                       "key tasks -> \"tasks\": "}
        << "\"\"";
    QTest::newRow("the keys of a script")
        << R"({"scripts": [{"id": "a"}, {|)"
        << QStringList{"key id -> \"id\": ", "key path -> \"path\": ", "key role -> \"role\": "}
        << "";
    QTest::newRow("a key that has its value keeps it")
        << R"({"scripts": [{"id": "a", "path": "p", "ro|": "main"}]})"
        << QStringList{"key role -> \"role\""} << "\"ro\"";
    QTest::newRow("the roles") << R"({"scripts": [{"role": "m|"}]})" << roles << "\"m\"";
    QTest::newRow("the roles without quotes") << R"({"scripts": [{"role": |}]})" << roles << "";
    QTest::newRow("a key that is out of use")
        << R"({"processGroups": [{"|"}]})" << nothing << "\"\"";
    QTest::newRow("a value that is anything")
        << R"({"project": {"name": "|"}})" << nothing << "\"\"";
    QTest::newRow("the role of something else") << R"({"role": "|"})" << nothing << "\"\"";
    QTest::newRow("behind a value") << R"({"tasks": {} |})" << nothing << "";
}

void WorkspaceNamesTest::offersInAProjectsFile() {
    QFETCH(QString, json);
    const ProjectFolder folder;
    Typing typing(folder, "line.yslib", json);
    QTEST(typing.offered(), "expected");
    QTEST(typing.replaced(), "replaced");
}

// "signature / description / parameters / place / the name".
void WorkspaceNamesTest::records_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *title, const char *name, const QString &text,
                        const QString &expected) {
        QTest::newRow(title) << name << text << expected;
    };
    row("a function of the library", "a.ys", "x = mo|de(1, 2)",
        "mode( 相机 , 模式  ); / 设置模式 / 相机, 模式=auto, manual /  / mode");
    row("one without a template", "a.ys", "|short()", "short /  /  /  / short");
    row("another word", "a.ys", "fo|o(1)", "nothing");
    row("in a text", "a.ys", "\"mo|de\"", "nothing");
    row("in a comment", "a.ys", "// mo|de", "nothing");
    row("behind a dot", "a.ys", "a.mo|de", "nothing");
    row("a keyword", "a.ys", "i|f (a)", "nothing");
    row("a key of a project's file", "line.yslib", R"({"scripts": [{"ro|le": "main"}]})",
        "role / What the script is for. /  /  / \"role\"");
    row("a key that the schema does not know", "line.yslib", R"({"ro|le": "main"})", "nothing");
    row("a value of a project's file", "line.yslib", R"({"scripts": [{"role": "ma|in"}]})",
        "nothing");
}

void WorkspaceNamesTest::records() {
    QFETCH(QString, name);
    QFETCH(QString, text);
    const ProjectFolder folder;
    Typing typing(folder, name, text);
    QTEST(recordText(&typing), "expected");
}

void WorkspaceNamesTest::recordsOfScripts_data() {
    QTest::addColumn<QString>("script");
    QTest::addColumn<QString>("expected");
    QTest::newRow("a variable") << "float n;\nx = n|;"
                                << "float n /  /  / s/a.ys:1 / n";
    QTest::newRow("where it is declared") << "\nfloat n|;"
                                          << "float n /  /  / s/a.ys:2 / n";
    QTest::newRow("an own function") << "function f(int p, q) {\n}\nf|(1)"
                                     << "function f(int p, int q) /  / int p, int q / s/a.ys:1 / f";
    QTest::newRow("a function of what is imported")
        << "import \"b.ys\";\ntwi|ce(1, 2)"
        << "function twice(int value, int b) /  / int value, int b / s/b.ys:3 / twice";
    QTest::newRow("a function that an imported script imports")
        << "import \"round.ys\";\ntwi|ce(1, 2)"
        << "function twice(int value, int b) /  / int value, int b / s/b.ys:3 / twice";
    QTest::newRow("a function of what is not imported") << "far|()"
                                                        << "nothing";
    QTest::newRow("a global of another script") << "x = cam2_mm|"
                                                << "global float cam2_mm /  /  / c.ys:2 / cam2_mm";
    QTest::newRow("an own function hides that of the library")
        << "\nfunction mode() {\n}\nmode|()"
        << "function mode() /  /  / s/a.ys:2 / mode";
    QTest::newRow("a variable does not hide the function that is called")
        << "int mode;\nmode|(1)"
        << "mode( 相机 , 模式  ); / 设置模式 / 相机, 模式=auto, manual /  / mode";
    QTest::newRow("a function of the library that is called by its name alone")
        << "x = now|"
        << "now / 毫秒数 /  /  / now";
}

void WorkspaceNamesTest::recordsOfScripts() {
    QFETCH(QString, script);
    const ProjectFolder folder;
    support::writeTree(folder.path(""), line());
    Typing typing(folder, "s/a.ys", script);
    QTEST(recordText(&typing), "expected");
}

void WorkspaceNamesTest::calls_data() {
    QTest::addColumn<QString>("script");
    QTest::addColumn<QString>("expected");
    QTest::newRow("the first argument") << "mode(|"
                                        << "mode( 相机 , 模式  ); 0";
    QTest::newRow("the second, which is a text") << "mode(1, \"a|"
                                                 << "mode( 相机 , 模式  ); 1";
    QTest::newRow("one too many") << "mode(1, 2, 3|)"
                                  << "mode( 相机 , 模式  ); 2";
    QTest::newRow("an inner call") << "mode(1, print(|)"
                                   << "print( 内容  ); 0";
    QTest::newRow("an inner call that is not known") << "mode(1, foo(|)"
                                                     << "nothing";
    QTest::newRow("a comment in a call") << "mode(1, // a|"
                                         << "nothing";
    QTest::newRow("no call") << "mode|"
                             << "nothing";
}

void WorkspaceNamesTest::calls() {
    QFETCH(QString, script);
    const ProjectFolder folder;
    Typing typing(folder, "a.ys", script);
    const std::optional<ctl::CallRecord> call = typing.workspace.callAt(typing.path, typing.index);
    const QString shown = call ? QString("%1 %2").arg(call->function.signature).arg(call->argument)
                               : QString("nothing");
    QTEST(shown, "expected");
}

QUORVANE_TEST_MAIN(QCoreApplication, WorkspaceNamesTest)

#include "workspace_names_test.moc"
