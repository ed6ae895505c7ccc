// The format that was asked for, and what is said to one that does not exist.
#include "quorvanectl/shell/json_output.h"

#include "run_tool.h"
#include "support/staged_main.h"

#include <QBuffer>
#include <QCommandLineParser>
#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

class JsonOutputTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void formats_data();
    void formats();
    void nobodyNeedHearTheReason();
    void everyCommandWithAFormatRefusesAnother_data();
    void everyCommandWithAFormatRefusesAnother();
    void documents_data();
    void documents();
};

void JsonOutputTest::formats_data() {
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("chosen");
    QTest::addColumn<QString>("error");
    const QString rest = "; there are: text, json, sarif";
    QTest::newRow("without the option it is the first") << QStringList() << "text"
                                                        << "";
    QTest::newRow("the first by its name") << QStringList{"--format", "text"} << "text"
                                           << "";
    QTest::newRow("the last") << QStringList{"--format", "sarif"} << "sarif"
                              << "";
    QTest::newRow("in one word") << QStringList{"--format=json"} << "json"
                                 << "";
    QTest::newRow("of two the later") << QStringList{"--format=json", "--format=text"} << "text"
                                      << "";
    QTest::newRow("one that does not exist") << QStringList{"--format=xml"} << ""
                                             << "no format 'xml'" + rest;
    QTest::newRow("in other letters") << QStringList{"--format=JSON"} << ""
                                      << "no format 'JSON'" + rest;
    QTest::newRow("the beginning of one") << QStringList{"--format=js"} << ""
                                          << "no format 'js'" + rest;
    QTest::newRow("with a blank behind") << QStringList{"--format", "json "} << ""
                                         << "no format 'json '" + rest;
    QTest::newRow("two in one") << QStringList{"--format=text,json"} << ""
                                << "no format 'text,json'" + rest;
    QTest::newRow("an empty one") << QStringList{"--format", ""} << ""
                                  << "no format ''" + rest;
    QTest::newRow("a place for another text") << QStringList{"--format=%2"} << ""
                                              << "no format '%2'" + rest;
}

void JsonOutputTest::formats() {
    QFETCH(QStringList, arguments);
    const QStringList formats{"text", "json", "sarif"};
    QCommandLineParser parser;
    ctl::declareFormat(parser, formats);
    QVERIFY(parser.parse(QStringList("quorvanectl") + arguments));
    QString error;
    QTEST(ctl::chosenFormat(parser, formats, &error), "chosen");
    QTEST(error, "error");
}

void JsonOutputTest::nobodyNeedHearTheReason() {
    QCommandLineParser parser;
    ctl::declareFormat(parser, {"text"});
    QVERIFY(parser.parse({"quorvanectl", "--format", "xml"}));
    QCOMPARE(ctl::chosenFormat(parser, {"text"}, nullptr), QString());
}

// Before anything is read: none of these files exists.
void JsonOutputTest::everyCommandWithAFormatRefusesAnother_data() {
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("formats");
    QTest::newRow("library list") << "library list none.ini"
                                  << "text, json";
    QTest::newRow("project check") << "project check none.yslib"
                                   << "text, json, sarif";
    QTest::newRow("project graph") << "project graph none.yslib"
                                   << "text, dot, mermaid, svg";
    QTest::newRow("script check") << "script check none.ys"
                                  << "text, json";
    QTest::newRow("script tokens") << "script tokens none.ys"
                                   << "text, json";
    QTest::newRow("script tree") << "script tree none.ys"
                                 << "text, json";
    QTest::newRow("update explain") << "update explain none.json"
                                    << "text, json";
    QTest::newRow("update lint") << "update lint none.json"
                                 << "text, json";
    QTest::newRow("update verify") << "update verify none.json --key none.pub"
                                   << "text, json";
}

void JsonOutputTest::everyCommandWithAFormatRefusesAnother() {
    QFETCH(QString, command);
    QFETCH(QString, formats);
    const support::Answer answer = support::runTool((command + " --format yaml").split(' '));
    QCOMPARE(answer.err, "quorvanectl: no format 'yaml'; there are: " + formats + "\n");
    QCOMPARE(answer.out, QString());
    QCOMPARE(answer.status, 2);
}

void JsonOutputTest::documents_data() {
    QTest::addColumn<QJsonDocument>("document");
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("keys in the order of the alphabet")
        << QJsonDocument(QJsonObject{{"b", 1}, {"a", "x"}})
        << QByteArray("{\n    \"a\": \"x\",\n    \"b\": 1\n}\n");
    QTest::newRow("an empty list") << QJsonDocument(QJsonArray()) << QByteArray("[\n]\n");
    QTest::newRow("Chinese as it is") << QJsonDocument(QJsonArray{QStringLiteral("名")})
                                      << QByteArray("[\n    \"\xE5\x90\x8D\"\n]\n");
    QTest::newRow("a control character cannot reach a terminal")
        << QJsonDocument(QJsonArray{"\x1b\n"}) << QByteArray("[\n    \"\\u001b\\n\"\n]\n");
    QTest::newRow("nor one of two bytes")
        << QJsonDocument(QJsonArray{QString(QChar(0x9b))}) << QByteArray("[\n    \"\\u009b\"\n]\n");
    QTest::newRow("nor a mark that turns the line around")
        << QJsonDocument(QJsonObject{{QString(QChar(0x202e)), 1}})
        << QByteArray("{\n    \"\\u202e\": 1\n}\n");
}

void JsonOutputTest::documents() {
    QFETCH(QJsonDocument, document);
    QBuffer out;
    QVERIFY(out.open(QIODevice::WriteOnly));
    ctl::Console console;
    console.out = &out;
    ctl::printJson(console, document);
    QTEST(out.data(), "text");
}

QUORVANE_TEST_MAIN(QCoreApplication, JsonOutputTest)
#include "json_output_test.moc"
