// Where the values of a project file begin, and what stands in for those that are missing.
#include "quorvanectl/files/json_places.h"
#include "support/staged_main.h"

#include <QCoreApplication>

class JsonPlacesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void places_data();
    void places();
    void severalAtOnce();
    void aLongText();
};

void JsonPlacesTest::places_data() {
    QTest::addColumn<QString>("json"); // with single quotes, which read better
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("place");
    const auto row = [](const char *name, const QString &json, const QString &path,
                        const QString &place) { QTest::newRow(name) << json << path << place; };
    row("a text", "{'a': 'x'}", "a", "1:7");
    row("a number", "{'a':-1}", "a", "1:6");
    row("a word", "{'a' : true}", "a", "1:8");
    row("an object", "{'b': 1, 'a': {}}", "a", "1:15");
    row("a list", "{'a': []}", "a", "1:7");
    row("on a line of its own", "{\n\t'a':\r\n  null}", "a", "3:3");
    row("in an object", "{'a': {'c': 1, 'b': 2}}", "a.b", "1:21");
    row("in a list", "{'a': [1, 22, 333]}", "a[2]", "1:15");
    row("in an object in a list", "{'a': [{'b': 1}, {'b': 2}]}", "a[1].b", "1:24");
    row("of a list at the top", "[{'b': 1}]", "[0].b", "1:8");
    row("behind Chinese, in units of 16 bits", QStringLiteral("{'产线': '😀', 'a': 1}"), "a",
        "1:19");
    row("under a key that is written otherwise", "{'\\u0061': 1}", "a", "1:12");
    row("a text that looks like a key", "{'b': 'a', 'a': 1}", "a", "1:17");
    row("the whole", " {}", "", "1:2");
    row("behind a byte-order mark", QStringLiteral("\uFEFF{'a': 1}"), "a", "1:8");
    row("missing in an object", "{'a': [{'b': 1}, {'c': 2}]}", "a[1].b", "1:18");
    row("missing in a list", "{'a': [1]}", "a[1].b", "1:7");
    row("missing at the top", "\n{'b': 1}", "a.b", "2:1");
    row("of a value of another kind", "{'a': 7}", "a[0].b", "1:7");
    row("of two values the last", "{'a': 1, 'a': 2}", "a", "1:15");
    row("within the last of two values", "{'a': {'b': 1}, 'a': {'b': 2}}", "a.b", "1:28");
    row("not within the first of two values", "{'a': {'b': 1}, 'a': {}}", "a.b", "1:22");
    row("not within the first of two lists", "{'a': [1, 2], 'a': []}", "a[0]", "1:20");
    row("of a text that is not the first in a list", "{'a': ['x', 'y', 'z']}", "a[2]", "1:18");
    row("a neighbour of the same beginning stays", "{'ab': 1, 'a': 1, 'a': 1}", "ab", "1:8");
    row("a key with a dot is no path", "{'a': {'b': 1}, 'a.b': 2}", "a.b", "1:13");
    row("nor with a bracket", "{'a': [1], 'a[0]': 2}", "a[0]", "1:8");
    row("nor within such a key", "{'a': {'b': {'c': 1}}, 'a.b': {'c': 2}}", "a.b.c", "1:19");
}

void JsonPlacesTest::places() {
    QFETCH(QString, json);
    QFETCH(QString, path);
    const QVector<ctl::TextPlace> found = ctl::placesInJson(json.replace("'", "\""), {path});
    QCOMPARE(found.size(), 1);
    QTEST(QString("%1:%2").arg(found.first().line).arg(found.first().column), "place");
}

void JsonPlacesTest::severalAtOnce() {
    const auto found = ctl::placesInJson("{\"a\": 1, \"b\": 2}", {"b", "a", "b"});
    QCOMPARE(found.size(), 3);
    QCOMPARE(found.at(0).column, 15);
    QCOMPARE(found.at(1).column, 7);
    QCOMPARE(found.at(2).column, 15);
    QVERIFY(ctl::placesInJson("{}", {}).isEmpty());
}

void JsonPlacesTest::aLongText() {
    constexpr int times = 200000;
    const QString json = "{\"a\": [" + QString("{\"b\": 1},\n").repeated(times) + "{\"b\": 1}]}";
    const auto found = ctl::placesInJson(json, {QString("a[%1].b").arg(times)});
    QCOMPARE(found.first().line, times + 1);
    QCOMPARE(found.first().column, 7);
}

QUORVANE_TEST_MAIN(QCoreApplication, JsonPlacesTest)
#include "json_places_test.moc"
