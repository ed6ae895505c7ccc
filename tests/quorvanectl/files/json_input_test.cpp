// One line says what is wrong with a file that should hold a JSON object, and where.
#include "quorvanectl/files/json_input.h"
#include "support/staged_main.h"

#include <QCoreApplication>

class JsonInputTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void texts_data();
    void texts();
};

void JsonInputTest::texts_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("error"); // null: it is one
    QTest::newRow("an object") << "{\"a\": [1]}" << QString();
    QTest::newRow("an array") << "[1]"
                              << "a.json: is no JSON object";
    QTest::newRow("nothing") << ""
                             << "a.json: is no JSON: line 1, column 1: illegal value";
    QTest::newRow("cut off") << "{\n  \"a\": [1]"
                             << "a.json: is no JSON: line 2, column 11: unterminated object";
    QTest::newRow("a comma too many")
        << "{\n  \"产线\": 1,\n}"
        << "a.json: is no JSON: line 3, column 1: object is missing after a comma";
    QTest::newRow("behind letters of several bytes")
        << "{\"产线\": x}"
        << "a.json: is no JSON: line 1, column 8: illegal number";
    const auto row = [](const char *name, const char *text, const char *fault) {
        QTest::newRow(name) << QString(text) << QString("a.json: is no JSON: ") + fault;
    };
    row("a bracket that closes nothing", "\n ]", "line 2, column 2: illegal value");
    row("a bracket of the other kind", "{\"a\": 1]", "line 1, column 8: unterminated object");
    row("a bracket of the other kind, and blanks", "{\"a\": 1 ] \n\t",
        "line 1, column 9: unterminated object");
    row("a comma that is missing in an object", "{\"a\": 1\n  \"b\": 2}",
        "line 2, column 3: unterminated object");
    row("a comma that is missing in a list", "[1\n  2\n]",
        "line 2, column 3: missing value separator");
    row("a letter where a list ends", "[1 x", "line 1, column 4: unterminated array");
    row("a list that is cut off", "[1\n", "line 2, column 1: unterminated array");
    row("a list that has only begun", "[\n", "line 2, column 1: unterminated array");
    row("a colon that is missing", "{\"a\" \"b\"}", "line 1, column 6: missing name separator");
    row("a name alone", "{\"a\" ", "line 1, column 6: missing name separator");
    row("a value that is missing", "{\"a\": }",
        "line 1, column 7: object is missing after a comma");
    row("a value that is missing before a comma", "{\"a\": , \"b\": 1}",
        "line 1, column 7: illegal value");
    row("a name without quotes", "{\n  a: 1}", "line 2, column 3: unterminated object");
    row("a name in Chinese without quotes", "{产线: 1}", "line 1, column 2: unterminated object");
    row("a word that is none", "{\"a\": trux}", "line 1, column 10: illegal value");
    row("a string that does not end", "{\"a\": \"b}\n", "line 2, column 1: unterminated string");
    row("an escape of too few digits", "[\"\\u12x\"]", "line 1, column 7: invalid escape sequence");
    row("no JSON at all", "main() {}", "line 1, column 1: illegal value");
    QTest::newRow("nested too deeply")
        << QString(2000, '[')
        << "a.json: is no JSON: line 1, column 1025: too deeply nested document";
    QTest::newRow("two documents")
        << "{}\n{}"
        << "a.json: is no JSON: line 2, column 1: garbage at the end of the document";
}

void JsonInputTest::texts() {
    QFETCH(QString, text);
    QFETCH(QString, error);
    QString said;
    QCOMPARE(ctl::isJsonObject("a.json", text, &said), error.isNull());
    QCOMPARE(said, error);
}

QUORVANE_TEST_MAIN(QCoreApplication, JsonInputTest)
#include "json_input_test.moc"
