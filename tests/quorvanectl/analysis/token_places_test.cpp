// The tokens of scripts in which brackets do not match, texts stay open, or characters are unknown: each at its
// place in the text, and where what begins there ends.
#include "quorvanectl/analysis/token_places.h"

#include "support/library_file.h"
#include "support/staged_main.h"

#include <QCoreApplication>

using ctl::TokenPlaces;

namespace {

QString textAt(const QString &text, const ctl::Stretch &at) {
    return text.mid(at.from, at.to - at.from);
}

// The number of the token that begins at the bar, which is taken out.
int numberAtBar(QString *text) {
    const int index = text->indexOf('|');
    text->remove(index, 1);
    const TokenPlaces tokens(*text);
    for (int number = 0; number < tokens.count(); ++number) {
        if (tokens.stretchOf(number).from == index)
            return number;
    }
    return -1;
}

} // namespace

class TokenPlacesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void tokens_data();
    void tokens();
    void comments_data();
    void comments();
    void closings_data();
    void closings();
    void bodies_data();
    void bodies();
    void numbersOutsideOfTheText();
    void find_data();
    void find();
};

void TokenPlacesTest::initTestCase() {
    QVERIFY(support::loadScriptVocabulary());
}

// Each as it stands in the text, but for the ends of lines.
void TokenPlacesTest::tokens_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("nothing") << "" << QStringList();
    QTest::newRow("blanks and empty lines") << " \t\n\r\n " << QStringList();
    QTest::newRow("on two lines, the first with a return")
        << "ab = 1\r\n\tc" << QStringList{"ab", "=", "1", "c"};
    QTest::newRow("a text over lines, and what stands behind it")
        << "\"a\n\nb\" c" << QStringList{"\"a\n\nb\"", "c"};
    QTest::newRow("a text that nothing closes") << "a \"b\nc" << QStringList{"a", "\"b\nc"};
    QTest::newRow("unknown characters on several lines")
        << "a $ b\n@ c @\n`d" << QStringList{"a", "b", "c", "d"};
    QTest::newRow("one right before a text over lines")
        << "$\"a\nb\" c\nd" << QStringList{"\"a\nb\"", "c", "d"};
    QTest::newRow("one at the very end") << "a $" << QStringList{"a"};
    QTest::newRow("Chinese in a text and in names")
        << "\"高度\" 宽 $ 度" << QStringList{"\"高度\"", "宽", "度"};
}

void TokenPlacesTest::tokens() {
    QFETCH(QString, text);
    const TokenPlaces tokens(text);
    QStringList found;
    for (int number = 0; number < tokens.count(); ++number) {
        if (tokens.kindOf(number) == ast::Newline || tokens.kindOf(number) == ast::Eof)
            continue;
        const QString stands = textAt(text, tokens.stretchOf(number));
        QCOMPARE(stands, tokens.at(number).text);
        found.append(stands);
    }
    QTEST(found, "expected");
    QCOMPARE(int(tokens.kindOf(tokens.count() - 1)), int(ast::Eof));
}

void TokenPlacesTest::comments_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("none") << "a / b" << QStringList();
    QTest::newRow("alone, without a line's end") << "//" << QStringList{"//"};
    QTest::newRow("behind code, without the return") << "a // b\r\nc" << QStringList{"// b"};
    QTest::newRow("with another in it") << "// a // b\n" << QStringList{"// a // b"};
    QTest::newRow("in a text there is none") << "s = \"// a\"; // b" << QStringList{"// b"};
    QTest::newRow("a quote in a comment opens nothing") << "// \"a\nb // c\n"
                                                        << QStringList{"// \"a", "// c"};
    QTest::newRow("a brace in a comment opens nothing") << "// {\n// }\n"
                                                        << QStringList{"// {", "// }"};
    QTest::newRow("behind an unknown character") << "$ // a\nb // c" << QStringList{"// a", "// c"};
    QTest::newRow("one with an unknown character") << "// $ a\n" << QStringList{"// $ a"};
}

void TokenPlacesTest::comments() {
    QFETCH(QString, text);
    QStringList found;
    const TokenPlaces tokens(text);
    for (const ctl::Stretch &comment : tokens.commentsIn(text))
        found.append(textAt(text, comment));
    QTEST(found, "expected");
}

// From the bracket at the bar to the one that closes it; to the last token where none does.
void TokenPlacesTest::closings_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    QTest::newRow("braces") << "a |{ b } c"
                            << "{ b }";
    QTest::newRow("braces in braces") << "|{ { } { } } }"
                                      << "{ { } { } }";
    QTest::newRow("a brace that nothing closes") << "a |{ b c  "
                                                 << "{ b c";
    QTest::newRow("the outer one where one is missing") << "|{ { }"
                                                        << "{ { }";
    QTest::newRow("the inner one where one is missing") << "{ |{ } a"
                                                        << "{ }";
    QTest::newRow("one too many before it") << "} |{ a }"
                                            << "{ a }";
    QTest::newRow("a brace in quotes closes nothing") << "|{ \"}\" // }\n }"
                                                      << "{ \"}\" // }\n }";
    QTest::newRow("parentheses") << "f|(a) b"
                                 << "(a)";
    QTest::newRow("parentheses in them") << "f|(a, (b), (c)) d"
                                         << "(a, (b), (c))";
    QTest::newRow("one that nothing closes") << "f|(a, b  "
                                             << "(a, b";
    QTest::newRow("over lines") << "f|(a,\nb) c"
                                << "(a,\nb)";
    QTest::newRow("other brackets are not counted") << "f|(a]}) b"
                                                    << "(a]})";
}

void TokenPlacesTest::closings() {
    QFETCH(QString, text);
    const int number = numberAtBar(&text);
    const TokenPlaces tokens(text);
    const int closing = tokens.kindOf(number) == ast::LBrace ? tokens.closingBrace(number)
                                                             : tokens.closingParenthesis(number);
    const ctl::Stretch whole{tokens.stretchOf(number).from, tokens.stretchOf(closing).to};
    QTEST(textAt(text, whole), "expected");
}

// What belongs to the head that ends at the bar's token.
void TokenPlacesTest::bodies_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    QTest::newRow("braces") << "if (a|) { b; c } d"
                            << ") { b; c }";
    QTest::newRow("braces on a later line") << "if (a|)\n\n{ b }\nc"
                                            << ")\n\n{ b }";
    QTest::newRow("braces that nothing closes") << "if (a|) { b\nc"
                                                << ") { b\nc";
    QTest::newRow("a statement to its semicolon") << "if (a|) b = 1; c"
                                                  << ") b = 1";
    QTest::newRow("a statement to its line's end") << "if (a|) b\nc"
                                                   << ") b";
    QTest::newRow("a statement to a brace around it") << "{ if (a|) b } c"
                                                      << ") b";
    QTest::newRow("a call over lines") << "if (a|) f(b,\nc)\nd"
                                       << ") f(b,\nc)";
    QTest::newRow("an index over lines") << "if (a|) b[\n1] = 2\nd"
                                         << ") b[\n1] = 2";
    QTest::newRow("a call that nothing closes") << "if (a|) f(b\nc"
                                                << ") f(b\nc";
    QTest::newRow("nothing at all") << "if (a|)"
                                    << ")";
    QTest::newRow("nothing but lines") << "if (a|)\n\n"
                                       << ")\n\n";
}

void TokenPlacesTest::bodies() {
    QFETCH(QString, text);
    const int number = numberAtBar(&text);
    const TokenPlaces tokens(text);
    const ctl::Stretch whole{tokens.stretchOf(number).from,
                             tokens.stretchOf(tokens.endOfBody(number)).to};
    QTEST(textAt(text, whole), "expected");
}

void TokenPlacesTest::numbersOutsideOfTheText() {
    const TokenPlaces tokens("a");
    QCOMPARE(int(tokens.kindOf(-1)), int(ast::Eof));
    QCOMPARE(int(tokens.kindOf(99)), int(ast::Eof));
    QCOMPARE(int(tokens.kindOf(0)), int(ast::Identifier));
}

void TokenPlacesTest::find_data() {
    QTest::addColumn<int>("line");
    QTest::addColumn<int>("column");
    QTest::addColumn<QString>("expected");
    QTest::newRow("at a token") << 1 << 4 << "b";
    QTest::newRow("before one") << 1 << 3 << "b";
    QTest::newRow("within one the next") << 1 << 2 << "b";
    QTest::newRow("on a later line") << 2 << 1 << "c";
    QTest::newRow("behind a text over lines") << 3 << 2 << "d";
    QTest::newRow("behind all") << 9 << 1 << "";
    QTest::newRow("before all") << 0 << 0 << "aa";
}

void TokenPlacesTest::find() {
    QFETCH(int, line);
    QFETCH(int, column);
    const TokenPlaces tokens("aa b\nc = \"\n\" d");
    QTEST(tokens.at(tokens.find(line, column)).text, "expected");
}

QUORVANE_TEST_MAIN(QCoreApplication, TokenPlacesTest)

#include "token_places_test.moc"
