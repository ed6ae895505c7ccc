// Where one stands in a JSON text that may be broken anywhere.
#include "quorvanectl/analysis/json_cursor.h"

#include "support/staged_main.h"

#include <QCoreApplication>

class JsonCursorTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void places_data();
    void places();
};

// '|' is the place. "key scripts.[] [ro] : id" is a key, in what, the text around it, whether a colon
// follows, and the keys before it.
void JsonCursorTest::places_data() {
    QTest::addColumn<QString>("json");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const QString &json, const QString &expected) {
        QTest::newRow(name) << json << expected;
    };
    row("an empty text", "|", "nothing");
    row("the outermost object", "{|", "key []");
    row("a key in quotes", R"({"sc|"})", R"(key ["sc"])");
    row("a key whose quotes are open", "{\"sc|\n\"a\": 1}", "key [\"sc]");
    row("a key without quotes", "{sc|", "key [sc]");
    row("before a key", "{ |x", "key [x]");
    row("a key that has its value", R"({"s|": 1})", R"(key ["s"] :)");
    row("behind a key's quotes", R"({"s"|)", "nothing s");
    row("a value", R"({"s": |)", "value s []");
    row("a value in quotes", R"({"s": "v|"})", R"(value s ["v"])");
    row("a value that is a word", R"({"s": tr|ue})", "value s [true]");
    row("behind a value", R"({"s": 1 |})", "nothing s");
    row("the key behind a comma", R"({"s": 1, "t": {}, |})", "key [] s,t");
    row("an entry of an array", R"({"s": [|)", "value s.[] []");
    row("an object in an array", R"({"s": [{"a": 1}, {"b": 2, "|"}]})", R"(key s.[] [""] b)");
    row("a value of an object in an array", R"({"s": [{"role": "|)", "value s.[].role [\"]");
    row("behind an inner object", R"({"s": {"a": 1}, "|)", "key [\"] s");
    row("an escaped quote", R"({"a\"b": "|"})", R"(value a\"b [""])");
    row("a brace in quotes", R"({"a": "{[", "|)", "key [\"] a");
    row("a brace too many", R"(}]} {"|)", "key [\"]");
    row("behind a text that is left open", "{\"a\": \"b\n, \"|", "key [\"] a");
    row("behind the whole", "{} |", "nothing");
    row("a colon in a list", "[1: |]", "nothing []");
    row("two colons", R"({"a":: |)", "value a []");
    row("two commas", R"({"a": 1,, |)", "key [] a,a");
    row("a comma before all", "{, |", "key []");
    row("a comma outside of all", ", {|", "key []");
    row("a text outside of all", "\"a\", {|", "key []");
    row("a bracket of the other kind", R"({"a": [1}, "|)", "key [\"] a");
    row("a text that ends in a backslash", R"({"a": "b\|)", "value a [\"b\\]");
    row("a text of two lines", "{\"a\": \"b\n c|\"}", "nothing a");
    row("a text that a return alone ends", "{\"a\": \"b\r, \"|", "key [\"] a");
    row("a Chinese key", QString(R"({"高|": 1})"), QString(R"(key ["高"] :)"));
}

void JsonCursorTest::places() {
    QFETCH(QString, json);
    const int index = json.indexOf('|');
    json.remove(index, 1);
    const ctl::JsonCursor cursor = ctl::cursorInJson(json, index);
    QStringList words{cursor.isKey ? "key" : cursor.isValue ? "value" : "nothing"};
    words.append(cursor.path.join('.'));
    if (cursor.isKey || cursor.isValue)
        words.append('[' + json.mid(cursor.from, cursor.to - cursor.from) + ']');
    words.append(cursor.hasColon ? ":" : "");
    words.append(cursor.keysBefore.join(','));
    words.removeAll(QString());
    QTEST(words.join(' '), "expected");
}

QUORVANE_TEST_MAIN(QCoreApplication, JsonCursorTest)

#include "json_cursor_test.moc"
