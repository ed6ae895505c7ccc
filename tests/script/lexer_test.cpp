// The tokens of a script with kind, text and place, and the characters that end a lexing; equal
// spellings share one string.
#include "script/lexer.h"

#include "support/library_file.h"
#include "support/staged_main.h"

#include <QCoreApplication>

namespace {

// "kind:text@line:column" of each token, joined by blanks; Eof is "0@line:column".
QString printed(const std::vector<ast::Token> &tokens) {
    QStringList parts;
    for (const ast::Token &token : tokens) {
        const QString text = QString(token.text).replace('\n', "\\n");
        parts.append(QString("%1%2@%3:%4")
                         .arg(QString::number(token.kind), text.isEmpty() ? text : ':' + text,
                              QString::number(token.line), QString::number(token.column)));
    }
    return parts.join(' ');
}

} // namespace

class LexerTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void tokens_data();
    void tokens();
    void unknownCharacters_data();
    void unknownCharacters();
    void aNewTokenIsAnEofAtTheStart();
    void aLexerStartsAtTheStart();
    void importIsAnIdentifierWithoutItsEntry();
    void equalSpellingsShareOneString();
    void manySpellingsStayApart();
};

void LexerTest::initTestCase() {
    QVERIFY(support::loadScriptVocabulary());
}

void LexerTest::tokens_data() {
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("tokens");
    QTest::newRow("an empty text") << ""
                                   << "0@1:1";
    QTest::newRow("a line feed") << "\n"
                                 << "1:\\n@1:1 0@2:1";
    QTest::newRow("blanks alone") << " \t\r "
                                  << "0@1:5";
    QTest::newRow("the line feed behind a comment gives its token") << "a//b\n"
                                                                    << "2:a@1:1 1:\\n@1:5 0@2:1";
    QTest::newRow("a comment on the last line") << "a //b"
                                                << "2:a@1:1 0@1:6";
    QTest::newRow("a comment swallows carriage returns and unknown characters")
        << "//$\r\na"
        << "1:\\n@1:5 2:a@2:1 0@2:2";
    QTest::newRow("there is no block comment")
        << "/*a*/"
        << "40:/@1:1 39:*@1:2 2:a@1:3 39:*@1:4 40:/@1:5 0@1:6";
    QTest::newRow("a carriage return counts as a column") << "a\r\nb"
                                                          << "2:a@1:1 1:\\n@1:3 2:b@2:1 0@2:2";
    QTest::newRow("a tab counts as one column") << "\ta"
                                                << "2:a@1:2 0@1:3";
    QTest::newRow("and") << "a&&b"
                         << "2:a@1:1 49:&&@1:2 2:b@1:4 0@1:5";
    QTest::newRow("three equals signs") << "a===b"
                                        << "2:a@1:1 43:==@1:2 42:=@1:4 2:b@1:5 0@1:6";
    QTest::newRow("three plus signs") << "+++"
                                      << "52:++@1:1 37:+@1:3 0@1:4";
    QTest::newRow("a Chinese identifier") << "相机1_a = 1"
                                          << "2:相机1_a@1:1 42:=@1:7 3:1@1:9 0@1:10";
    QTest::newRow("an underscore begins an identifier") << "_1"
                                                        << "2:_1@1:1 0@1:3";
    QTest::newRow("a string that ends in a backslash at the end of the text")
        << "\"a\\"
        << "5:\"a\\@1:1 0@1:4";
    QTest::newRow("an open string swallows the rest") << "\"a\nb;\n"
                                                      << "5:\"a\\nb;\\n@1:1 0@3:1";
    QTest::newRow("an escaped quote goes on") << "\"a\\\"b\" c"
                                              << "5:\"a\\\"b\"@1:1 2:c@1:8 0@1:9";
    QTest::newRow("an escaped backslash ends") << "\"a\\\\\" c"
                                               << "5:\"a\\\\\"@1:1 2:c@1:7 0@1:8";
    QTest::newRow("an escaped line feed counts as a line") << "\"\\\n\"a"
                                                           << "5:\"\\\\n\"@1:1 2:a@2:2 0@2:3";
    QTest::newRow("a string over two lines") << "\"a\nb\"c"
                                             << "5:\"a\\nb\"@1:1 2:c@2:3 0@2:4";
    QTest::newRow("a character literal") << "'ab'c"
                                         << "6:'ab'@1:1 2:c@1:5 0@1:6";
    QTest::newRow("a backslash has no meaning in a character literal")
        << "'\\''"
        << "6:'\\'@1:1 6:'@1:4 0@1:5";
    QTest::newRow("an open character literal swallows the rest") << "'a\n"
                                                                 << "6:'a\\n@1:1 0@2:1";
    QTest::newRow("a single quote inside a string") << "\"'\""
                                                    << "5:\"'\"@1:1 0@1:4";
    QTest::newRow("a number takes one dot") << "1.2.3"
                                            << "4:1.2@1:1 36:.@1:4 3:3@1:5 0@1:6";
    QTest::newRow("a dot may end a number") << "1."
                                            << "4:1.@1:1 0@1:3";
    QTest::newRow("two dots behind a number") << "1..2"
                                              << "4:1.@1:1 36:.@1:3 3:2@1:4 0@1:5";
    QTest::newRow("no radix prefix") << "0x10"
                                     << "3:0@1:1 2:x10@1:2 0@1:5";
    QTest::newRow("a dot does not begin a number") << ".5"
                                                   << "36:.@1:1 3:5@1:2 0@1:3";
    QTest::newRow("no sign and no exponent") << "-1e5"
                                             << "38:-@1:1 3:1@1:2 2:e5@1:3 0@1:5";
    QTest::newRow("a digit outside of ASCII begins a number") << "３x"
                                                              << "3:３@1:1 2:x@1:2 0@1:3";
    QTest::newRow("a fraction goes on an identifier") << "a½"
                                                      << "2:a½@1:1 0@1:3";
    QTest::newRow("a keyword compares with case") << "If if"
                                                  << "2:If@1:1 7:if@1:4 0@1:6";
    QTest::newRow("a keyword inside a word is none") << "iff"
                                                     << "2:iff@1:1 0@1:4";
    QTest::newRow("words without a kind are identifiers")
        << "end_if print Halcon"
        << "2:end_if@1:1 2:print@1:8 2:Halcon@1:14 0@1:20";
    QTest::newRow("two characters win over one")
        << "== != <= >= && || ++ --"
        << "43:==@1:1 44:!=@1:4 47:<=@1:7 48:>=@1:10 49:&&@1:13 50:||@1:16 52:++@1:19 "
           "53:--@1:22 0@1:24";
    QTest::newRow("every operator of one character")
        << "!%()*+,-./:;=<>[]{}#"
        << "51:!@1:1 41:%@1:2 27:(@1:3 28:)@1:4 39:*@1:5 37:+@1:6 34:,@1:7 38:-@1:8 36:.@1:9 "
           "40:/@1:10 35::@1:11 33:;@1:12 42:=@1:13 45:<@1:14 46:>@1:15 31:[@1:16 32:]@1:17 "
           "29:{@1:18 30:}@1:19 54:#@1:20 0@1:21";
    QTest::newRow("every keyword")
        << "if else for while switch case default break continue int bool float string char "
           "static global include import function return"
        << "7:if@1:1 8:else@1:4 9:for@1:9 10:while@1:13 11:switch@1:19 12:case@1:26 "
           "13:default@1:31 14:break@1:39 15:continue@1:45 16:int@1:54 17:bool@1:58 "
           "18:float@1:63 19:string@1:69 20:char@1:76 21:static@1:81 22:global@1:88 "
           "23:include@1:95 24:import@1:103 25:function@1:110 26:return@1:119 0@1:125";
}

void LexerTest::tokens() {
    QFETCH(QString, source);
    QString error = "untouched";
    QTEST(printed(ast::Lexer(source).tokenize(&error)), "tokens");
    QCOMPARE(error, QString("untouched"));
}

void LexerTest::unknownCharacters_data() {
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("message");
    const auto message = [](const QString &character, int line, int column) {
        return QString("Unknown character '%1' at %2:%3")
            .arg(character, QString::number(line), QString::number(column));
    };
    QTest::newRow("a lone ampersand") << "a&b" << message("&", 1, 2);
    QTest::newRow("an ampersand at the end") << "a&" << message("&", 1, 2);
    QTest::newRow("the position counts lines") << "a\n  $" << message("$", 2, 3);
    QTest::newRow("a full-width comma") << "f(a，b)" << message("，", 1, 4);
    QTest::newRow("a form feed is not skipped") << "a\fb" << message("\f", 1, 2);
    QTest::newRow("a NUL") << QString("a") + QChar(0) << message(QChar(0), 1, 2);
    QTest::newRow("the first unit beyond ASCII")
        << QString(QChar(0x80)) << message(QChar(0x80), 1, 1);
    QTest::newRow("a no-break space") << QString("a\u00a0b") << message("\u00a0", 1, 2);
    QTest::newRow("a fraction does not begin a word") << "½" << message("½", 1, 1);
    // A letter beyond the basic plane is two units, neither of which is a letter.
    QTest::newRow("a letter beyond the basic plane")
        << QString::fromUcs4(U"\U00020000") << message(QChar(0xd840), 1, 1);
    for (const char *character : {"|", "$", "?", "@", "^", "~", "\\", "`", "\x7f", "\x01"})
        QTest::addRow("character %d", *character) << character << message(character, 1, 1);
}

void LexerTest::unknownCharacters() {
    QFETCH(QString, source);
    QString error;
    QVERIFY(ast::Lexer(source).tokenize(&error).empty());
    QTEST(error, "message");
    QVERIFY(ast::Lexer(source).tokenize().empty());
}

void LexerTest::aNewTokenIsAnEofAtTheStart() {
    const ast::Token token;
    QCOMPARE(token.kind, 0);
    QVERIFY(token.text.isEmpty());
    QCOMPARE(token.line, 1);
    QCOMPARE(token.column, 1);
}

void LexerTest::aLexerStartsAtTheStart() {
    const ast::Lexer lexer("a");
    QCOMPARE(lexer.source, QString("a"));
    QCOMPARE(lexer.pos, 0);
    QCOMPARE(lexer.line, 1);
    QCOMPARE(lexer.column, 1);
}

void LexerTest::importIsAnIdentifierWithoutItsEntry() {
    QVERIFY(support::loadLibraryText(""));
    QCOMPARE(printed(ast::Lexer("import").tokenize()), QString("2:import@1:1 0@1:7"));
    QVERIFY(support::loadScriptVocabulary());
}

// Millions of equal words must not hold millions of strings.
void LexerTest::equalSpellingsShareOneString() {
    const auto tokens = ast::Lexer("abc 12 \"x\" abc 12 \"x\" if if").tokenize();
    for (size_t i = 0; i < 3; ++i)
        QCOMPARE(tokens[i].text.constData(), tokens[i + 3].text.constData());
    QCOMPARE(tokens[6].text.constData(), tokens[7].text.constData());
}

void LexerTest::manySpellingsStayApart() {
    QString source;
    for (int i = 0; i < 20000; ++i)
        source += QString("v%1 %1 ").arg(i);
    const auto tokens = ast::Lexer(source).tokenize();
    QCOMPARE(int(tokens.size()), 40001);
    for (int i = 0; i < 20000; ++i) {
        QCOMPARE(tokens[size_t(2 * i)].text, QString("v%1").arg(i));
        QCOMPARE(tokens[size_t(2 * i) + 1].text, QString::number(i));
    }
}

QUORVANE_TEST_MAIN(QCoreApplication, LexerTest)
#include "lexer_test.moc"
