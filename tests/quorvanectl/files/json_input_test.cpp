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
        << "a.json: is no JSON: line 3, column 2: object is missing after a comma";
    QTest::newRow("behind letters of several bytes")
        << "{\"产线\": x}"
        << "a.json: is no JSON: line 1, column 8: illegal number";
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
