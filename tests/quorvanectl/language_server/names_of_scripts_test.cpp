// What scripts declare, as an editor is offered it and told of it: each kind in the words of the protocol, in
// scripts that are whole, that do not parse, and that nobody lists.
#include "conversation.h"
#include "support/file_tree.h"
#include "support/library_file.h"
#include "support/project_folder.h"
#include "support/staged_main.h"

#include <QCoreApplication>

using namespace conversation;
using support::ProjectFolder;

namespace {

constexpr char project[] = R"({"scripts": [{"path": "a.ys"}, {"path": "b.ys"}]})";
constexpr char snippets[] =
    R"({"textDocument":{"completion":{"completionItem":{"snippetSupport":true}}}})";

// The text that is open is a.ys, and '|' the place that is asked about.
struct Asked {
    Asked(const ProjectFolder &folder, const QByteArray &capabilities, QString text)
        : uri(uriOf(folder.path("a.ys")))
        , index(text.indexOf('|')) {
        at = position(text.left(index).count('\n'), index - text.lastIndexOf('\n', index) - 1);
        conversation.begin(capabilities);
        (void)conversation.say({opened(uri, text.remove(index, 1))});
    }

    QJsonObject result(const char *method) {
        const QStringList sent = conversation.say(
            {asked(method, {{"textDocument", QJsonObject{{"uri", uri}}}, {"position", at}})});
        return QJsonDocument::fromJson(sent.value(0).toUtf8()).object().value("result").toObject();
    }

    Conversation conversation;
    QString uri;
    int index;
    QJsonObject at;
};

// "6 n b:n n int n" for each: kind, label, order, what is put in, detail, and where it is declared.
QStringList itemsIn(const QJsonObject &completion) {
    QStringList lines;
    const QJsonArray items = completion.value("items").toArray();
    for (const QJsonValue &value : items) {
        const QJsonObject item = value.toObject();
        const QString format = item.contains("insertTextFormat") ? "snippet" : "plain";
        lines.append(
            QStringList{QString::number(item.value("kind").toInt()), item.value("label").toString(),
                        item.value("sortText").toString(), format,
                        item.value("textEdit").toObject().value("newText").toString(),
                        item.value("detail").toString(), item.value("documentation").toString()}
                .join(" | "));
    }
    return lines;
}

} // namespace

class NamesOfScriptsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void offers_data();
    void offers();
    void importsAreOffered();
    void hover_data();
    void hover();
    void signatures_data();
    void signatures();
};

// So few words that a list can be read.
void NamesOfScriptsTest::initTestCase() {
    QVERIFY(support::loadLibraryText(
        "[ControlFlow]\nkeywords=\n[Completion]\nsnippet_only=end\n"
        "[Highlight]\ntype=int,float,string,global\nother=import,function\nlibrary=\n"
        "[Plugin]\nfunctions=\n"));
}

void NamesOfScriptsTest::offers_data() {
    QTest::addColumn<QByteArray>("capabilities");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("expected");
    const QStringList words{"14 | int | gint | plain | int | type | ",
                            "14 | float | gfloat | plain | float | type | ",
                            "14 | string | gstring | plain | string | type | ",
                            "14 | global | gglobal | plain | global | type | ",
                            "14 | import | gimport | plain | import | declaration | ",
                            "14 | function | gfunction | plain | function | declaration | ",
                            "1 | end | hend | plain | end | control flow | "};
    const QStringList far{"6 | x_far | ex_far | plain | x_far | global float x_far | b.ys"};
    QTest::newRow("each kind by its letter, in which they are ordered")
        << QByteArray("{}") << "import \"b.ys\"; function f(int p) { int q; | }\nglobal int x_y;"
        << (QStringList{"6 | q | bq | plain | q | int q | ", "6 | p | bp | plain | p | int p | ",
                        "3 | f | cf | plain | f(p) | function f(int p) | ",
                        "6 | x_y | ex_y | plain | x_y | global int x_y | ",
                        "3 | g | dg | plain | g(a, 高) | function g(int a, string 高) | b.ys"} +
            far + words);
    QTest::newRow("functions as snippets, one without parameters as it is")
        << QByteArray(snippets) << "import \"b.ys\"; function f() { }\n|"
        << (QStringList{"3 | f | cf | plain | f() | function f() | ",
                        "3 | g | dg | snippet | g(${1:a}, ${2:高}) | function g(int a, string 高) "
                        "| b.ys"} +
            far + words);
    QTest::newRow("before its arguments a function is its name")
        << QByteArray(snippets) << "function f(int p) { }\nf|(1)"
        << (QStringList{"3 | f | cf | plain | f | function f(int p) | "} + far + words);
    QTest::newRow("in a text that does not parse what others declare")
        << QByteArray("{}") << "int n; }\n|" << (far + words);
    QTest::newRow("of a function that is not whole nothing")
        << QByteArray("{}") << "function f(int p) { |" << (far + words);
    QTest::newRow("what an import names that is not there")
        << QByteArray("{}") << "import \"gone.ys\";\n|" << (far + words);
    QTest::newRow("an import of the script itself")
        << QByteArray("{}") << "import \"a.ys\"; int n;\n|"
        << (QStringList{"6 | n | bn | plain | n | int n | "} + far + words);
    QTest::newRow("behind the text's end it is that end")
        << QByteArray("{}") << "\n\n  |" << (far + words);
}

void NamesOfScriptsTest::offers() {
    QFETCH(QByteArray, capabilities);
    QFETCH(QString, text);
    const ProjectFolder folder;
    support::writeTree(folder.path(""),
                       {{"line.yslib", project},
                        {"a.ys", ""},
                        {"b.ys", "function g(a, string 高) { }\nglobal float x_far;\nint own;\n"}});
    Asked asked(folder, capabilities, text);
    QTEST(itemsIn(asked.result("textDocument/completion")), "expected");
}

// The quotes stay where they are.
void NamesOfScriptsTest::importsAreOffered() {
    const ProjectFolder folder;
    support::writeTree(folder.path(""), {{"line.yslib", project},
                                         {"a.ys", ""},
                                         {"b.ys", ""},
                                         {"sub/不 listed.ys", ""},
                                         {"notes.txt", ""}});
    Asked asked(folder, "{}", "import \"b|x\"; int n;");
    const QJsonObject completion = asked.result("textDocument/completion");
    QCOMPARE(itemsIn(completion),
             QStringList(
                 {"17 | b.ys | ib.ys | plain | b.ys |  | ",
                  "17 | sub/不 listed.ys | isub/不 listed.ys | plain | sub/不 listed.ys |  | "}));
    const QJsonObject item = completion.value("items").toArray().at(0).toObject();
    QCOMPARE(json(item.value("textEdit").toObject().value("range").toObject()),
             QByteArray(R"({"end":{"character":10,"line":0},"start":{"character":8,"line":0}})"));
    QVERIFY(!item.contains("filterText"));
}

void NamesOfScriptsTest::hover_data() {
    QTest::addColumn<bool>("readsMarkdown");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    QTest::newRow("a variable and its line") << false << "int n;\n\nn| = 1"
                                             << "int n\na.ys:1";
    QTest::newRow("a parameter has no paragraph of its own")
        << false << "function f(int p) { }\nf|(1)"
        << "function f(int p)\na.ys:1";
    QTest::newRow("in Markdown a place is no link or list")
        << true << "\nx_far|"
        << "```ys\nglobal float x_far\n```\n\nsub/b\\_1\\.ys:2";
    QTest::newRow("a function that is imported") << false << "import \"sub/b_1.ys\"; g|()"
                                                 << "function g(int a)\nsub/b_1.ys:1";
    QTest::newRow("the name of an import") << false << "import \"sub/b|_1.ys\";"
                                           << "";
    QTest::newRow("a number") << false << "n = 1|2"
                              << "";
    QTest::newRow("between two names") << false << "int n; | n"
                                       << "";
    QTest::newRow("a member of the name of a variable") << false << "int n; x.n|"
                                                        << "";
    QTest::newRow("a call of what is a variable") << false << "int n; n|(1)"
                                                  << "";
    QTest::newRow("a function that is not called") << false << "function f() { }\nx = f|"
                                                   << "";
    QTest::newRow("in a text that does not parse") << false << "int n; n| }"
                                                   << "";
    QTest::newRow("in such a text what others declare") << false << "x_far| }"
                                                        << "global float x_far\nsub/b_1.ys:2";
}

void NamesOfScriptsTest::hover() {
    QFETCH(bool, readsMarkdown);
    QFETCH(QString, text);
    const ProjectFolder folder;
    support::writeTree(folder.path(""),
                       {{"line.yslib", R"({"scripts": [{"path": "sub\\b_1.ys"}]})"},
                        {"sub/b_1.ys", "function g(a) { }\nglobal float x_far;\n"}});
    const QByteArray capabilities =
        readsMarkdown ? R"({"textDocument":{"hover":{"contentFormat":["markdown"]}}})" : "{}";
    Asked asked(folder, capabilities, text);
    const QJsonObject contents = asked.result("textDocument/hover").value("contents").toObject();
    QTEST(contents.value("value").toString(), "expected");
    if (!contents.isEmpty())
        QCOMPARE(contents.value("kind").toString(),
                 QString(readsMarkdown ? "markdown" : "plaintext"));
}

// "label; parameters; the one that stands here".
void NamesOfScriptsTest::signatures_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    QTest::newRow("parameters of which one is part of another")
        << "function f(int in, int i, int int1) { }\nf(1, |"
        << "function f(int in, int i, int int1); [11,17] [19,24] [26,34]; 1";
    QTest::newRow("a function of the name of its parameter") << "function p(int p) { }\np(|"
                                                             << "function p(int p); [11,16]; 0";
    QTest::newRow("a function without parameters, though one is typed")
        << "function f() { }\nf(1, |)"
        << "function f(); ; 1";
    QTest::newRow("an imported one") << "import \"b.ys\"; g(|"
                                     << "function g(int a); [11,16]; 0";
    QTest::newRow("one that is not imported") << "g(|"
                                              << "";
    QTest::newRow("a variable is not called") << "int n; n(|"
                                              << "";
    QTest::newRow("a global is not called") << "x_y(|"
                                            << "";
    QTest::newRow("a word of the library that is no function") << "end(|"
                                                               << "";
    QTest::newRow("where it is declared") << "function f(int| a) { }"
                                          << "";
    QTest::newRow("behind the call") << "import \"b.ys\"; g(1)|"
                                     << "";
    QTest::newRow("in an index of an argument") << "import \"b.ys\"; g(a[1, |"
                                                << "function g(int a); [11,16]; 0";
}

void NamesOfScriptsTest::signatures() {
    QFETCH(QString, text);
    const ProjectFolder folder;
    support::writeTree(folder.path(""),
                       {{"line.yslib", project}, {"b.ys", "function g(a) { }\nglobal int x_y;\n"}});
    const QByteArray offsets = R"({"textDocument":{"signatureHelp":{"signatureInformation":)"
                               R"({"parameterInformation":{"labelOffsetSupport":true}}}}})";
    Asked asked(folder, offsets, text);
    const QJsonObject help = asked.result("textDocument/signatureHelp");
    const QJsonObject signature = help.value("signatures").toArray().at(0).toObject();
    QStringList parameters;
    const QJsonArray all = signature.value("parameters").toArray();
    for (const QJsonValue &parameter : all)
        parameters.append(
            QString::fromUtf8(QJsonDocument(parameter.toObject().value("label").toArray())
                                  .toJson(QJsonDocument::Compact)));
    const QString shown = QString("%1; %2; %3")
                              .arg(signature.value("label").toString(), parameters.join(' '),
                                   QString::number(help.value("activeParameter").toInt()));
    QTEST(help.isEmpty() ? QString() : shown, "expected");
}

QUORVANE_TEST_MAIN(QCoreApplication, NamesOfScriptsTest)

#include "names_of_scripts_test.moc"
