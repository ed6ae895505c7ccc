// Where a value of a JSON text ends that an editor marks, whatever is wrong with the text around it.
#include "quorvanectl/analysis/text_range.h"

#include "support/staged_main.h"

#include <QCoreApplication>

class TextRangeTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void indices_data();
    void indices();
    void values_data();
    void values();
};

void TextRangeTest::indices_data() {
    QTest::addColumn<int>("line");
    QTest::addColumn<int>("column");
    QTest::addColumn<int>("expected");
    QTest::newRow("the first") << 1 << 1 << 0;
    QTest::newRow("on the first line") << 1 << 2 << 1;
    QTest::newRow("on a line behind an empty one") << 3 << 2 << 5;
    QTest::newRow("behind its line it counts on") << 1 << 5 << 4;
    QTest::newRow("behind the last line it counts from that") << 4 << 1 << 4;
    QTest::newRow("far behind it too") << 9 << 2 << 5;
    QTest::newRow("no place") << 0 << 0 << -1;
}

// Of "a" and a return, which is no line's end, an empty line, and "cd".
void TextRangeTest::indices() {
    QFETCH(int, line);
    QFETCH(int, column);
    QTEST(ctl::indexOf("a\r\n\ncd", {line, column}), "expected");
}

// The value begins at the bar.
void TextRangeTest::values_data() {
    QTest::addColumn<QString>("json");
    QTest::addColumn<QString>("marked");
    const auto row = [](const char *name, const QString &json, const QString &marked) {
        QTest::newRow(name) << json << marked;
    };
    row("a text", R"({"a": |"b c"})", R"("b c")");
    row("a text with an escaped quote", R"([|"b\"c", 1])", R"("b\"c")");
    row("a text that ends in a backslash of its own", R"([|"b\\", 1])", R"("b\\")");
    row("a text with signs of the format", R"([|"{[,:]}", 1])", R"("{[,:]}")");
    row("an empty text", R"([|""])", R"("")");
    row("a text that nothing closes", R"([|"b, 1])", R"("b, 1])");
    row("one that ends behind a backslash", R"([|"b\)", R"("b\)");
    row("a quote alone", R"(|")", R"(")");
    row("a number", "[|-1.5e3,2]", "-1.5e3");
    row("a number before a blank", "[|12 ]", "12");
    row("a number before a line's end", "[|12\n]", "12");
    row("a number before a brace", R"({"a":|12})", "12");
    row("a word", "[|true]", "true");
    row("a word at the text's end", "|nul", "nul");
    row("an object", R"(|{"a": 1})", "{");
    row("a list", R"({"a": |[1, 2]})", "[");
    row("a sign that begins no value", "[1|,]", ",");
    row("a Chinese word", QString("[|高度,1]"), QString("高度"));
}

void TextRangeTest::values() {
    QFETCH(QString, json);
    const int at = json.indexOf('|');
    json.remove(at, 1);
    const ctl::TextRange range = ctl::valueRange(json, {1, at + 1});
    QCOMPARE(range.from.line, 1);
    QCOMPARE(range.from.column, at + 1);
    QCOMPARE(range.to.line, 1);
    QFETCH(QString, marked);
    QCOMPARE(range.to.column - range.from.column, marked.size());
    QCOMPARE(json.mid(at, marked.size()), marked);
    // Behind the text nothing is marked.
    const ctl::TextPlace behind{1, json.size() + 1};
    QVERIFY(ctl::valueRange(json, behind) == (ctl::TextRange{behind, behind}));
    QVERIFY(ctl::valueRange(json, {0, 0}) == (ctl::TextRange{{0, 0}, {0, 0}}));
}

QUORVANE_TEST_MAIN(QCoreApplication, TextRangeTest)

#include "text_range_test.moc"
