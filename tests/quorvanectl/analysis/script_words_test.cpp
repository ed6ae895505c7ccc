// What an editor colours and folds: of a text in which something is wrong too.
#include "quorvanectl/analysis/script_words.h"

#include "support/library_file.h"
#include "support/staged_main.h"

#include <QCoreApplication>

namespace {

const char *const wordKinds[] = {"keyword", "type", "function", "variable", "property",
                                 "number",  "text", "operator", "comment"};
const char *const foldKinds[] = {"braces", "comments", "imports"};

template<typename Kind>
QString lineOf(const QString &text, const char *const *kinds, Kind kind, const ctl::Stretch &at) {
    return QString("%1 %2").arg(kinds[int(kind)], text.mid(at.from, at.to - at.from));
}

} // namespace

class ScriptWordsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void words_data();
    void words();
    void manyUnknownCharacters();
    void folds_data();
    void folds();
};

void ScriptWordsTest::initTestCase() {
    QVERIFY(support::loadScriptVocabulary());
}

void ScriptWordsTest::words_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("none") << "\n" << QStringList();
    QTest::newRow("a declaration")
        << "global int a_b = 1.5;"
        << QStringList{"keyword global", "type int", "variable a_b", "operator =", "number 1.5"};
    QTest::newRow("a function") << "function f(bool a) { return g(a, 2) }"
                                << QStringList{"keyword function", "function f",     "type bool",
                                               "variable a",       "keyword return", "function g",
                                               "variable a",       "number 2"};
    QTest::newRow("members, texts and signs")
        << "a.b() = !c[0] && \"d\ne\" + 'f'; ++g"
        << QStringList{"variable a", "property b", "operator =",  "operator !",
                       "variable c", "number 0",   "operator &&", "text \"d\ne\"",
                       "operator +", "text 'f'",   "operator ++", "variable g"};
    QTest::newRow("the last of the operators") << "--g" << QStringList{"operator --", "variable g"};
    QTest::newRow("an include") << "#include <a.b>"
                                << QStringList{"keyword #",  "keyword include", "operator <",
                                               "variable a", "property b",      "operator >"};
    QTest::newRow("comments") << "// a\r\nb // c // d\n//"
                              << QStringList{"comment // a", "variable b", "comment // c // d",
                                             "comment //"};
    QTest::newRow("in a text there is no comment")
        << "a(\"// b\")" << QStringList{"function a", "text \"// b\""};
    QTest::newRow("around unknown characters, and behind them")
        << "a $ // b $\n \u0001\u0002 c\nd@"
        << QStringList{"variable a", "comment // b $", "variable c", "variable d"};
    QTest::newRow("what does not parse")
        << "} if (a\n else" << QStringList{"keyword if", "variable a", "keyword else"};
}

void ScriptWordsTest::words() {
    QFETCH(QString, text);
    QStringList lines;
    const QVector<ctl::ScriptWord> words = ctl::wordsIn(text);
    for (const ctl::ScriptWord &word : words)
        lines.append(lineOf(text, wordKinds, word.kind, word.at));
    QTEST(lines, "expected");
}

// A text that is none at all is looked into no further.
void ScriptWordsTest::manyUnknownCharacters() {
    QCOMPARE(ctl::wordsIn(QString("$").repeated(99) + "a").size(), 1);
    QCOMPARE(ctl::wordsIn(QString("$").repeated(100) + "a").size(), 0);
    const QVector<ctl::ScriptWord> words = ctl::wordsIn(QString("a$\n").repeated(110) + "// b\nc");
    QCOMPARE(words.size(), 101);
    QCOMPARE(words.last().at, (ctl::Stretch{330, 334}));
}

void ScriptWordsTest::folds_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("none") << "a\n" << QStringList();
    QTest::newRow("braces in braces, the outer ones first")
        << "if (1) {\nif (2) { }\n}" << QStringList{"braces {\nif (2) { }\n}", "braces { }"};
    QTest::newRow("a brace that is not closed") << "{ a" << QStringList();
    QTest::newRow("comments one below the other")
        << "// a\n  // b\n\n// c\nd // e\n// f\n// g"
        << QStringList{"comments // a\n  // b", "comments // c", "comments // f\n// g"};
    QTest::newRow("imports one below the other")
        << "import \"a\";\n#include <b>\n\nimport \"c\"; d\ne import \"f\";"
        << QStringList{"imports import \"a\";\n#include <b>", "imports import \"c\"; d"};
}

void ScriptWordsTest::folds() {
    QFETCH(QString, text);
    QStringList lines;
    const QVector<ctl::Fold> folds = ctl::foldsIn(text);
    for (const ctl::Fold &fold : folds)
        lines.append(lineOf(text, foldKinds, fold.kind, fold.at));
    QTEST(lines, "expected");
}

QUORVANE_TEST_MAIN(QCoreApplication, ScriptWordsTest)

#include "script_words_test.moc"
