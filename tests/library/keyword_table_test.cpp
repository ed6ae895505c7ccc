// Which words are keywords and of which kind: the built-in ones, and what each list of the
// library's file adds or takes away.
#include "library/function_library.h"

#include "support/library_file.h"
#include "support/staged_main.h"

#include <QCoreApplication>

class KeywordTableTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void words_data();
    void words();
    void theBuiltInMapHoldsNineteenWords();
    void theMapIsBuiltAnew();
};

void KeywordTableTest::words_data() {
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("word");
    // 0: not found.
    QTest::addColumn<int>("kind");

    const QPair<const char *, int> rows[] = {
        {"if", 7},      {"else", 8},     {"for", 9},       {"while", 10},    {"switch", 11},
        {"case", 12},   {"default", 13}, {"break", 14},    {"continue", 15}, {"int", 16},
        {"bool", 17},   {"float", 18},   {"string", 19},   {"char", 20},     {"static", 21},
        {"global", 22}, {"include", 23}, {"function", 25}, {"return", 26}};
    for (const auto &row : rows)
        QTest::addRow("built in: %s is %d", row.first, row.second)
            << QByteArray() << QString(row.first) << row.second;
    for (const char *word : {"import", "end_if", "end_for", "end_switch", "print", "Print",
                             "SendMessage", "QdebugFunction", "Return", "new_object", "ioDrive",
                             "ModbusTCP", "Halcon", "OpenCV", "If", "IF", "", "x"})
        QTest::addRow("built in: %s is no keyword", word) << QByteArray() << QString(word) << 0;

    QTest::newRow("import among the other words is a keyword")
        << QByteArray("[Highlight]\nother=function,include,import") << "import" << 24;
    QTest::newRow("a type that is left out is no keyword")
        << QByteArray("[Highlight]\ntype=int,float") << "bool" << 0;
    QTest::newRow("a type that stays is one")
        << QByteArray("[Highlight]\ntype=int,float") << "float" << 18;
    QTest::newRow("a control word that is left out is no keyword")
        << QByteArray("[ControlFlow]\nkeywords=if") << "else" << 0;
    QTest::newRow("a snippet is no keyword")
        << QByteArray("[Completion]\nsnippet_only=if") << "if" << 0;
    QTest::newRow("a word that is no longer a snippet still has no row")
        << QByteArray("[Completion]\nsnippet_only=if") << "end_if" << 0;
    QTest::newRow("return as a snippet is no keyword")
        << QByteArray("[Completion]\nsnippet_only=return") << "return" << 0;
    QTest::newRow("a type may be a snippet too")
        << QByteArray("[Completion]\nsnippet_only=int") << "int" << 16;
    QTest::newRow("another word may be a snippet too")
        << QByteArray("[Completion]\nsnippet_only=function") << "function" << 25;
    QTest::newRow("a type among the keywords is none by that")
        << QByteArray("[ControlFlow]\nkeywords=int\n[Highlight]\ntype=") << "int" << 0;
    QTest::newRow("a control word among the types is none by that")
        << QByteArray("[ControlFlow]\nkeywords=\n[Highlight]\ntype=if") << "if" << 0;
    QTest::newRow("a listed word with another case is no keyword")
        << QByteArray("[ControlFlow]\nkeywords=If") << "If" << 0;
    QTest::newRow("a word without a row is no keyword")
        << QByteArray("[Highlight]\nother=function,macro") << "macro" << 0;
    QTest::newRow("library words have no effect")
        << QByteArray("[Highlight]\nlibrary=import") << "import" << 0;
    QTest::newRow("plug-in functions have no effect")
        << QByteArray("[Plugin]\nfunctions=import") << "import" << 0;
}

void KeywordTableTest::words() {
    QFETCH(QByteArray, text);
    QFETCH(QString, word);
    QFETCH(int, kind);
    QVERIFY(support::loadLibraryText(text));
    QCOMPARE(FunctionLibrary::instance().tokenKindOf(word), std::make_pair(kind != 0, kind));
}

void KeywordTableTest::theBuiltInMapHoldsNineteenWords() {
    QVERIFY(support::loadLibraryText(""));
    QCOMPARE(FunctionLibrary::instance().tokenKindByWord.size(), 19);
}

void KeywordTableTest::theMapIsBuiltAnew() {
    QVERIFY(support::loadScriptVocabulary());
    QCOMPARE(FunctionLibrary::instance().tokenKindByWord.size(), 20);
    QVERIFY(support::loadLibraryText("[ControlFlow]\nkeywords=\n[Highlight]\ntype=\nother=\n"));
    QVERIFY(FunctionLibrary::instance().tokenKindByWord.isEmpty());
}

QUORVANE_TEST_MAIN(QCoreApplication, KeywordTableTest)
#include "keyword_table_test.moc"
