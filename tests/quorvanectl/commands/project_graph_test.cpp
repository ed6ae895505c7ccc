// project graph: scripts, imports, globals and circles in each form, and what draws the picture.
#include "desk.h"
#include "support/staged_main.h"

#include <QCoreApplication>

using support::Desk;
using support::FileTree;
using support::outcome;
using support::refusal;

namespace {

const QString command = "quorvanectl project graph";

QByteArray projectOf(const QByteArray &scripts) {
    return R"({"schemaVersion": 1, "scripts": [)" + scripts + "]}";
}

// Two scripts that import each other, one that imports itself, a module, one that is nowhere, one that
// is not registered, and one that does not parse.
FileTree tangle() {
    return {{"line/line.yslib", projectOf(R"({"id": "m", "path": "./main.ys", "role": "main"},
                {"id": "a", "path": "sub\\a.ys", "role": "sub"},
                {"id": "again", "path": "sub/a.ys", "role": "module"},
                {"id": "l", "path": "limits.ys", "role": "module"},
                {"id": "n", "path": "none.ys", "role": "sub"},
                {"id": "b", "path": "bad.ys"},
                {"id": "p", "path": ""}, 7)")},
            {"line/main.ys", "import \"sub/a.ys\";\nimport \"sub/a.ys\";\nimport \"limits.ys\";\n"
                             "global int cam1_x = 1\n"},
            {"line/sub/a.ys", "import \"../main.ys\";\nimport \"other.ys\";\n"
                              "global int cam1_x = 1\nglobal bool cam1_ok\n"},
            {"line/sub/other.ys", "import \"../limits.ys\";\nglobal int unseen_x\n"},
            {"line/limits.ys", "import \"limits.ys\";\n"},
            {"line/bad.ys", "import \"limits.ys\";\n}\n"}};
}

const QString text = R"x(line/line.yslib: 6 scripts, 5 imports, 3 globals

main.ys (main)
    imports sub/a.ys, in a circle
    imports limits.ys
    global cam1_x, line 4, also in sub/a.ys:3

sub/a.ys (sub)
    imports main.ys, in a circle
    imports sub/other.ys
    global cam1_x, line 3, also in main.ys:4
    global cam1_ok, line 4

limits.ys (module)
    imports limits.ys, in a circle

none.ys (sub; missing)

bad.ys (has a syntax error)

sub/other.ys (not registered)

circle of imports: main.ys, sub/a.ys
circle of imports: limits.ys
)x";

const QString dot = R"(digraph "line" {
    rankdir=LR;
    node [shape=box, fontname="sans-serif"];
    s0 [label="main.ys (main)\lglobal cam1_x, line 4, also in sub/a.ys:3\l"];
    s1 [label="sub/a.ys (sub)\lglobal cam1_x, line 3, also in main.ys:4\lglobal cam1_ok, line 4\l"];
    s2 [label="limits.ys (module)\l"];
    s3 [label="none.ys (sub; missing)\l", style=dashed];
    s4 [label="bad.ys (has a syntax error)\l", style=dashed];
    s5 [label="sub/other.ys (not registered)\l", style=dashed];
    s0 -> s1 [color=red, label="circle"];
    s0 -> s2;
    s1 -> s0 [color=red, label="circle"];
    s1 -> s5;
    s2 -> s2 [color=red, label="circle"];
}
)";

const QString mermaid = R"x(flowchart LR
    s0["main.ys (main)<br/>global cam1_x, line 4, also in sub/a.ys:3"]
    s1["sub/a.ys (sub)<br/>global cam1_x, line 3, also in main.ys:4<br/>global cam1_ok, line 4"]
    s2["limits.ys (module)"]
    s3["none.ys (sub; missing)"]
    s4["bad.ys (has a syntax error)"]
    s5["sub/other.ys (not registered)"]
    s0 -- circle --> s1
    s0 --> s2
    s1 -- circle --> s0
    s1 --> s5
    s2 -- circle --> s2
)x";

// A program named dot in a folder of its own: the last word of the arrangement says what it does.
QString dotThat(const QString &does) {
    return "mkdir bin && printf '#!/bin/sh\\n" + does + "\\n' >bin/dot && chmod 755 bin/dot";
}

const QString withDot = "PATH=$PWD/bin:$PATH @ line/line.yslib --format svg";

} // namespace

class ProjectGraphTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void forms_data();
    void forms();
    void namesThatMeanSomethingToADrawing_data();
    void namesThatMeanSomethingToADrawing();
    void whatCannotBeDrawn_data();
    void whatCannotBeDrawn();
    void aLongChainOfImports();
};

void ProjectGraphTest::forms_data() {
    support::addOutcomes();
    outcome("text", "", "@ line/line.yslib", {0, text});
    outcome("for Graphviz", "", "@ line/line.yslib --format dot", {0, dot});
    outcome("for Mermaid", "", "@ line/line.yslib --format mermaid", {0, mermaid});
    outcome("drawn by Graphviz, which is given the same", dotThat("echo \"<svg $1/>\"; cat"),
            withDot, {0, "<svg -Tsvg/>\n" + dot});
    outcome("a project whose scripts are none", R"(echo '{"scripts": {"path": "a.ys"}}' >e.yslib)",
            "@ e.yslib", {0, "e.yslib: 0 scripts, 0 imports, 0 globals\n"});
    outcome("an import that is nowhere, and a global twice in one script",
            R"(printf 'import "no.ys";\nglobal int a_x\nglobal int a_x' >m.ys; )"
            R"(printf '{"scripts": [{"path": "m.ys"}]}' >e.yslib)",
            "@ e.yslib",
            {0,
             "e.yslib: 2 scripts, 1 import, 2 globals\n\nm.ys\n    imports no.ys\n    global a_x, "
             "line 2\n    global a_x, line 3\n\nno.ys (not registered; missing)\n"});
    outcome("two circles that hang together by one import alone",
            R"(for s in a b c d; do echo >$s.ys; done; )"
            R"(printf 'import "b.ys";' >a.ys; printf 'import "a.ys";import "c.ys";' >b.ys; )"
            R"(printf 'import "d.ys";' >c.ys; printf 'import "c.ys";' >d.ys; )"
            R"(printf '{"scripts": [{"path": "d.ys"}, {"path": "a.ys"}]}' >e.yslib)",
            "@ e.yslib",
            {0, "e.yslib: 4 scripts, 2 imports, 0 globals\n\nd.ys\n    imports c.ys\n\na.ys\n    "
                "imports b.ys\n\nc.ys (not registered)\n\nb.ys (not registered)\n"});
    outcome(
        "the same, all of them registered",
        R"(printf 'import "b.ys";' >a.ys; printf 'import "a.ys";import "c.ys";' >b.ys; )"
        R"(printf 'import "d.ys";' >c.ys; printf 'import "c.ys";' >d.ys; printf '{"scripts": )"
        R"([{"path": "d.ys"}, {"path": "a.ys"}, {"path": "b.ys"}, {"path": "c.ys"}]}' >e.yslib)",
        "@ e.yslib --format mermaid",
        {0, "flowchart LR\n    s0[\"d.ys\"]\n    s1[\"a.ys\"]\n    s2[\"b.ys\"]\n    "
            "s3[\"c.ys\"]\n    s0 -- circle --> s3\n    s1 -- circle --> s2\n    s2 -- circle --> "
            "s1\n    s2 --> s3\n    s3 -- circle --> s0\n"});
    outcome("a script in GBK, and one by its whole path",
            R"(printf '// \303\373\nglobal int a_x\n' >g.ys; )"
            R"(printf '{"scripts": [{"path": "g.ys"}, {"path": "%s/g.ys"}]}' "$PWD" >e.yslib)",
            "@ e.yslib",
            {0, "e.yslib: 1 script, 0 imports, 1 global\n\ng.ys\n    global a_x, line 2\n"});
    outcome("a project without scripts", "echo '{}' >e.yslib", "@ e.yslib",
            {0, "e.yslib: 0 scripts, 0 imports, 0 globals\n"});
}

void ProjectGraphTest::forms() {
    support::expectOutcome(Desk(command, tangle()));
}

void ProjectGraphTest::namesThatMeanSomethingToADrawing_data() {
    support::addOutcomes();
    const QString project = R"(printf '{"scripts": [{"path": "a\\"#<.ys"}]}' >q.yslib)";
    outcome("text", project, "@ q.yslib",
            {0, "q.yslib: 1 script, 0 imports, 0 globals\n\na\"#<.ys (missing)\n"});
    outcome("for Graphviz", project, "@ q.yslib --format dot", {0, R"(digraph "q" {
    rankdir=LR;
    node [shape=box, fontname="sans-serif"];
    s0 [label="a\"#<.ys (missing)\l", style=dashed];
}
)"});
    outcome("for Mermaid", project, "@ q.yslib --format mermaid",
            {0, "flowchart LR\n    s0[\"a#quot;#35;#lt;.ys (missing)\"]\n"});
    const QString steering = R"(printf '{"scripts": [{"path": "a\\u001b\\n.ys"}]}' >q.yslib)";
    outcome("steering a terminal", steering, "@ q.yslib",
            {0, "q.yslib: 1 script, 0 imports, 0 globals\n\na\\x1b\\n.ys (missing)\n"});
    const QString sign = QChar(QChar::ReplacementCharacter);
    outcome("steering a drawing", steering, "@ q.yslib --format mermaid",
            {0, "flowchart LR\n    s0[\"a" + sign + sign + ".ys (missing)\"]\n"});
}

void ProjectGraphTest::namesThatMeanSomethingToADrawing() {
    support::expectOutcome(Desk(command, {}));
}

void ProjectGraphTest::whatCannotBeDrawn_data() {
    support::addRefusals();
    refusal("without Graphviz", "",
            "tool=$(command -v quorvanectl); PATH=none \"$tool\" project graph line/line.yslib "
            "--format svg",
            "Graphviz draws the SVG, and its program dot is not installed; --format mermaid and "
            "--format dot need nothing");
    refusal("a Graphviz that fails", dotThat("echo no fonts >&2; echo more >&2; exit 3"), withDot,
            "@here/bin/dot has drawn nothing: no fonts");
    refusal("a Graphviz that says nothing", dotThat("exit 0"), withDot,
            "@here/bin/dot has drawn nothing: it gives no reason");
    refusal("a Graphviz that crashes", dotThat("kill -9 $$"), withDot,
            "@here/bin/dot has drawn nothing: it gives no reason");
    refusal("a Graphviz whose reason steers a terminal", dotThat("echo \\033[2J >&2; exit 1"),
            withDot, "@here/bin/dot has drawn nothing: \\x1b[2J");
    refusal("a Graphviz that draws and fails", dotThat("echo \"<svg>\"; exit 1"), withDot,
            "@here/bin/dot has drawn nothing: it gives no reason");
    refusal("a list for a project", "echo '[]' >p.yslib", "@ p.yslib",
            "p.yslib: JSON 无效：no error occurred (it is no JSON object)");
    refusal("the project's folder", "", "@ line", "line: is a folder");
    refusal("a script that is a folder", "rm line/main.ys; mkdir line/main.ys", "@ line/line.yslib",
            "@here/line/./main.ys: is a folder");
    refusal("a script of somebody else's", "chmod 755 . line; chmod 000 line/limits.ys",
            "$user @ line/line.yslib", "@here/line/limits.ys: Permission denied");
    refusal("a script larger than any", "truncate -s 65M line/limits.ys", "@ line/line.yslib",
            "@here/line/limits.ys: is larger than 64 MiB");
    refusal("a library that is missing", "", "@ line/line.yslib --library none.ini",
            "none.ini: no such file");
    refusal("two projects", "", "@ line/line.yslib line/line.yslib",
            "project graph takes FILE.yslib; see quorvanectl project graph --help");
    refusal("a form that is not there", "", "@ line/line.yslib --format json",
            "no format 'json'; there are: text, dot, mermaid, svg");
    refusal("no project", "echo '[' >p.yslib", "@ p.yslib",
            "p.yslib: JSON 无效：unterminated array (line 2, column 1)");
    refusal("a file that is missing", "", "@ none.yslib", "none.yslib: no such file");
    refusal("a script that is a pipe is not waited for", "rm line/main.ys; mkfifo line/main.ys",
            "@ line/line.yslib", "@here/line/./main.ys: is no plain file");
}

void ProjectGraphTest::whatCannotBeDrawn() {
    support::expectRefusal(Desk(command, tangle()));
}

// Longer than any stack, with one circle at its end.
void ProjectGraphTest::aLongChainOfImports() {
    constexpr int many = 3000;
    FileTree files;
    QByteArray scripts;
    for (int i = 0; i < many; ++i) {
        const QByteArray name = QByteArray::number(i) + ".ys";
        scripts += (i == 0 ? "" : ", ") + QByteArray(R"({"path": ")") + name + R"("})";
        files.insert(name, "import \"" + QByteArray::number(qMin(i + 1, many - 1)) + ".ys\";\n");
    }
    files.insert("p.yslib", projectOf(scripts));
    const Desk desk(command, files);
    const support::Answer answer = desk.type("@ p.yslib");
    QCOMPARE(answer.status, 0);
    QVERIFY(answer.out.startsWith("p.yslib: 3000 scripts, 3000 imports, 0 globals\n"));
    QVERIFY(answer.out.endsWith("\n2999.ys\n    imports 2999.ys, in a circle\n\n"
                                "circle of imports: 2999.ys\n"));
    QCOMPARE(answer.out.count("in a circle"), 1);
}

QUORVANE_TEST_MAIN(QCoreApplication, ProjectGraphTest)
#include "project_graph_test.moc"
