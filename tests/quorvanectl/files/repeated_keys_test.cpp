// Keys that stand twice in one object, wherever they do and however they are written.
#include "quorvanectl/files/repeated_keys.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QJsonObject>

class RepeatedKeysTest : public QObject {
    Q_OBJECT
    static QString quoted(QString json);
    static QStringList found(const QString &json);

private Q_SLOTS:
    void keys_data();
    void keys();
    void theLastValueIsTaken();
    void aHostileText();
};

// Single quotes read better here.
QString RepeatedKeysTest::quoted(QString json) {
    return json.replace("'", "\"");
}

// "where line:column < line:column", the second one being the first of the key.
QStringList RepeatedKeysTest::found(const QString &json) {
    QStringList lines;
    for (const ctl::RepeatedKey &key : ctl::repeatedKeys(json)) {
        lines.append(QStringLiteral("%1 %2:%3 < %4:%5")
                         .arg(key.where, QString::number(key.again.line),
                              QString::number(key.again.column), QString::number(key.first.line),
                              QString::number(key.first.column)));
    }
    return lines;
}

void RepeatedKeysTest::keys_data() {
    QTest::addColumn<QString>("json");
    QTest::addColumn<QStringList>("expected");
    const auto row = [](const char *name, const QString &json, const QStringList &expected) {
        QTest::newRow(name) << quoted(json) << expected;
    };
    row("none", "{'a': 1, 'b': [1, 2, {'a': 1}], 'c': {'a': 1}}", {});
    row("an empty object", "{}", {});
    row("no object at all", "[1, [2, \"a\"], \"a\"]", {});
    row("at the top", "{'a': 1, 'a': 2}", {"a 1:10 < 1:2"});
    row("three times", "{'a': 1, 'a': 1, 'a': 1}", {"a 1:10 < 1:2", "a 1:18 < 1:2"});
    row("in an object", "{'runtime': {'setupUrl': 'x', 'setupUrl': 'y'}}",
        {"runtime.setupUrl 1:31 < 1:14"});
    row("in an element of an array", "{'projects': [{'n': 1}, {'n': 1, 'n': 2}]}",
        {"projects[1].n 1:34 < 1:26"});
    row("in an array in an array", "[[], [[{'n': 1, 'n': 2}]]]", {"[1][0][0].n 1:17 < 1:9"});
    row("behind an object", "{'a': {'b': 1}, 'a': 2}", {"a 1:17 < 1:2"});
    row("behind an array", "{'a': [{'b': 1}, 2], 'b': 3, 'a': 2}", {"a 1:30 < 1:2"});
    row("one object again, and within it", "{'a': {'x': 1}, 'a': {'x': 1, 'x': 2}}",
        {"a 1:17 < 1:2", "a.x 1:31 < 1:23"});
    row("lines and their columns", "{\n  'a': 1,\r\n\t'a': 2\n}", {"a 3:2 < 2:3"});
    row("written in two ways", "{'name': 1, 'n\\u0061me': 2}", {"name 1:13 < 1:2"});
    row("with a quote in it", "{'a\\'': 1, 'a': 2, 'a\\'': 3}", {"a\" 1:20 < 1:2"});
    row("with a backslash at its end", "{'a\\\\': 1, 'b': 2, 'a\\\\': 3}", {"a\\ 1:20 < 1:2"});
    row("not in upper and lower case", "{'a': 1, 'A': 2}", {});
    row("in Chinese", QStringLiteral("{'产线': '三', '产线': 2}"),
        {QStringLiteral("产线 1:13 < 1:2")});
    row("an empty key", "{'': 1, '': 2}", {" 1:9 < 1:2"});
    row("values that look like keys", "{'a': 'b', 'b': 'b', 'c': ['c', 'c']}", {});
    row("the same text again and again in a list", "['c', 'c', 'c', {'c': 1}, 'c', 'c']", {});
    row("signs within a text", "{'a': '{\\'a\\': 1, [}', 'b': 'a'}", {});
}

void RepeatedKeysTest::keys() {
    QFETCH(QString, json);
    QFETCH(QStringList, expected);
    // Not parsed here: Qt leaks a repeated key's object or array.
    QCOMPARE(found(json), expected);
}

// What the finding says of the launcher.
void RepeatedKeysTest::theLastValueIsTaken() {
    const QByteArray json = quoted("{'a': 1, 'b': 0, 'a': 2}").toUtf8();
    QCOMPARE(QJsonDocument::fromJson(json).object().value("a").toInt(), 2);
}

// As deep and as long as the parser lets it be.
void RepeatedKeysTest::aHostileText() {
    constexpr int depth = 1000;
    const QString deep = quoted("{'a':").repeated(depth) + "1" + QString("}").repeated(depth);
    QVERIFY(!QJsonDocument::fromJson(deep.toUtf8()).isNull());
    QCOMPARE(found(deep), QStringList());
    constexpr int times = 200000;
    const QString longOne = "{" + QString("\"a\":1,\n").repeated(times) + "\"a\":1}";
    QCOMPARE(ctl::repeatedKeys(longOne).size(), times);
    QCOMPARE(ctl::repeatedKeys(longOne).last().again.line, times + 1);
}

QUORVANE_TEST_MAIN(QCoreApplication, RepeatedKeysTest)
#include "repeated_keys_test.moc"
