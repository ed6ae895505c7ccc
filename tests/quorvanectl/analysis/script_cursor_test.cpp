// Where one stands in a script that may be broken anywhere: in code, in quotes, in which call.
#include "quorvanectl/analysis/script_cursor.h"

#include "support/library_file.h"
#include "support/staged_main.h"

#include <QCoreApplication>

namespace {

const char *nameOf(ctl::ScriptCursor::Within within) {
    static const char *const names[] = {"code",    "number", "member", "new name",
                                        "comment", "text",   "import"};
    return names[int(within)];
}

} // namespace

class ScriptCursorTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void places_data();
    void places();
    void importIsAWordWhereTheLibraryHasIt();
};

void ScriptCursorTest::initTestCase() {
    QVERIFY(support::loadScriptVocabulary());
}

// "code [ab] f:1 called": what it is, the text around, the open call, and whether one follows. '|' is the
// place.
static QString described(QString script) {
    const int index = script.indexOf('|');
    script.remove(index, 1);
    const ctl::ScriptCursor cursor = ctl::cursorIn(script, index);
    QString line = QString("%1 [%2]").arg(nameOf(cursor.within),
                                          script.mid(cursor.from, cursor.to - cursor.from));
    if (!cursor.callee.isEmpty())
        line += QString(" %1:%2").arg(cursor.callee).arg(cursor.argument);
    return cursor.isCalled ? line + " called" : line;
}

void ScriptCursorTest::places_data() {
    QTest::addColumn<QString>("script");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const QString &script, const QString &expected) {
        QTest::newRow(name) << script << expected;
    };
    row("an empty text", "|", "code []");
    row("at a word's end", "camera|", "code [camera]");
    row("inside a word", "cam|era", "code [camera]");
    row("before a word", "|camera", "code [camera]");
    row("between blanks", "a | b", "code []");
    row("a word with a digit and a line", "x = a_1|", "code [a_1]");
    row("a Chinese word", QString("高度|"), QString("code [高度]"));
    row("a number", "x = 12|", "number [12]");
    row("a number with a point", "x = 1.|", "number [1.]");
    row("behind a dot", "a.|", "member []");
    row("a word behind a dot", "a.b|", "member [b]");
    row("a word behind a dot and a blank", "a. b|", "member [b]");
    row("behind what stands behind a dot", "a.b + c|", "code [c]");
    row("the name behind a type", "int n|", "new name [n]");
    row("before the name behind a type", "global float |", "new name []");
    row("the name behind \"function\"", "function f|", "new name [f]");
    row("behind \"global\" a type comes", "global i|", "code [i]");
    row("a type ends with its line", "int\nn|", "code [n]");
    row("behind the name of a declaration", "int n = a|", "code [a]");

    row("a comment", "a // b|c\n", "comment []");
    row("a comment's end", "// b|", "comment []");
    row("before a comment", "a|// b", "code [a]");
    row("the line behind a comment", "// b\nc|", "code [c]");
    row("two signs in quotes are no comment", "\"//\" a|", "code [a]");
    row("a text", "x = \"a b|c\";", "text [a bc]");
    row("behind a text", "\"a\"|", "code []");
    row("before a text", "|\"a\"", "code []");
    row("an escaped quote does not close", R"("a\"b|")", R"(text [a\"b])");
    row("an escaped backslash does not keep open", R"("a\\" b|)", "code [b]");
    row("a text that is left open", "x = \"ab|\ncd", "text [ab]");
    row("a text over lines is a text in the next", "x = \"a\nb|c\" d", "text [a\nbc]");
    row("a character", "x = 'a|'", "text [a]");
    row("a backslash in a character means nothing", R"(x = '\' b|)", "code [b]");
    row("an import", "import \"a/b|.ys\";", "import [a/b.ys]");
    row("an import that is left open", "import \"a|\nint n;", "import [a]");
    row("an import that is left open before both signs of a line's end", "import \"a|\r\nint n;",
        "import [a]");
    row("an import's text in the next line is no path", "import \"a\nb|\";", "text [a\nb]");
    row("a text behind another word is none", "print \"a|\"", "text [a]");

    row("the first argument", "f(|", "code [] f:0");
    row("the second argument", "f(a, b|)", "code [b] f:1");
    row("an inner call", "f(a, g(b|", "code [b] g:0");
    row("behind an inner call", "f(a, g(b, c), d|", "code [d] f:2");
    row("a parenthesis of an argument", "f(a, (b + c|", "code [c] f:1");
    row("an element of an argument", "f(a, b[1, c|", "code [c] f:1");
    row("a text of an argument", "f(a, \"b, c|\")", "text [b, c] f:1");
    row("over lines", "f(a,\n  b|", "code [b] f:1");
    row("behind the call", "f(a)|", "code []");
    row("before the parenthesis", "f|(a)", "code [f] called");
    row("before a parenthesis behind a blank", "f| (a)", "code [f] called");
    row("a parenthesis of the next line is none of it", "f|\n(a)", "code [f]");
    row("a condition is no call", "if (a|", "code [a]");
    row("a call in a condition", "if (f(a|", "code [a] f:0");
    row("a declared function is not called", "function f(int a|", "new name [a]");
    row("a semicolon ends what was left open", "f(a; b|", "code [b]");
    row("but not in the head of a loop", "for (f(i); g(a|", "code [a] g:0");
    row("a brace ends what was left open", "f(a {\n b|", "code [b]");
    row("a parenthesis too many", ")) f(|", "code [] f:0");
    row("an unknown character", "$ f(|", "code [] f:0");
}

void ScriptCursorTest::places() {
    QFETCH(QString, script);
    QTEST(described(script), "expected");
}

void ScriptCursorTest::importIsAWordWhereTheLibraryHasIt() {
    QVERIFY(support::loadLibraryText("1,a,0\n"));
    QCOMPARE(described("import \"a|\""), QString("text [a]"));
    QVERIFY(support::loadScriptVocabulary());
    QCOMPARE(described("import \"a|\""), QString("import [a]"));
}

QUORVANE_TEST_MAIN(QCoreApplication, ScriptCursorTest)

#include "script_cursor_test.moc"
