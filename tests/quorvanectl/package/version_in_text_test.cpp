// The version of a project changes in the text of its file, and all else of it stays to the byte.
#include "quorvanectl/package/version_in_text.h"

#include "support/staged_main.h"

#include <QTextCodec>

class VersionInTextTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void whatChanges_data();
    void whatChanges();
    void inTheEncodingOfAnOldEditor();
    void whatIsNotChangedInItsText_data();
    void whatIsNotChangedInItsText();
};

void VersionInTextTest::whatChanges_data() {
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QByteArray>("after");
    const auto row = [](const char *name, const QByteArray &before, const QByteArray &after) {
        QTest::newRow(name) << before << after;
    };
    row("a version", R"({"project": {"name": "a", "version": "1.0.0"}})",
        R"({"project": {"name": "a", "version": "2.0.1"}})");
    row("between lines that are laid out by hand",
        "{\n  \"z\": 1,\n\t\"project\" : {\n\t \"version\" :\t\"1.0\" ,\n \"name\":\"产线\" } "
        ",\r\n \"a\": [ ]\n}\n\n",
        "{\n  \"z\": 1,\n\t\"project\" : {\n\t \"version\" :\t\"2.0.1\" ,\n \"name\":\"产线\" } "
        ",\r\n \"a\": [ ]\n}\n\n");
    row("a version with signs that are spelled out", R"({"project": {"version": "1\"\\u0031\\"}})",
        R"({"project": {"version": "2.0.1"}})");
    row("an empty one", R"({"project": {"version": ""}})", R"({"project": {"version": "2.0.1"}})");
    row("a number", R"({"project": {"version": 1.5}})", R"({"project": {"version": "2.0.1"}})");
    row("a number before a blank", R"({"project": {"version": 1 , "a": 2}})",
        R"({"project": {"version": "2.0.1" , "a": 2}})");
    row("a word", R"({"project": {"version": null}})", R"({"project": {"version": "2.0.1"}})");
    row("of two the last, which counts", R"({"project": {"version": "1.0", "version": "1.1"}})",
        R"({"project": {"version": "1.0", "version": "2.0.1"}})");
    row("versions of something else stay",
        R"({"version": "1", "a": {"version": "1"}, "project": {"version": "1", "a": {"version": "1"}}})",
        R"({"version": "1", "a": {"version": "1"}, "project": {"version": "2.0.1", "a": {"version": "1"}}})");
    row("numbers keep their form", R"({"a": 1.50, "b": 1e2, "project": {"version": "1"}})",
        R"({"a": 1.50, "b": 1e2, "project": {"version": "2.0.1"}})");
    row("behind a byte-order mark", "\xEF\xBB\xBF{\"project\": {\"version\": \"1\"}}",
        "\xEF\xBB\xBF{\"project\": {\"version\": \"2.0.1\"}}");
    row("none yet, in one line", R"({"project": {"name": "a"}})",
        R"({"project": {"version": "2.0.1", "name": "a"}})");
    row("none yet, in lines", "{\n  \"project\": {\n    \"name\": \"a\"\n  }\n}\n",
        "{\n  \"project\": {\n    \"version\": \"2.0.1\",\n    \"name\": \"a\"\n  }\n}\n");
}

void VersionInTextTest::whatChanges() {
    QFETCH(QByteArray, before);
    QFETCH(QByteArray, after);
    QCOMPARE(ctl::withVersion(before, "2.0.1"), after);
}

void VersionInTextTest::inTheEncodingOfAnOldEditor() {
    const QTextCodec *const gbk = QTextCodec::codecForName("GBK");
    const QString text =
        "{\"project\": {\"name\": \"产线三\", \"version\": \"%1\"}, \"b\": \"相机\"}";
    QCOMPARE(ctl::withVersion(gbk->fromUnicode(text.arg("1.0")), "2.0.1"),
             gbk->fromUnicode(text.arg("2.0.1")));
}

void VersionInTextTest::whatIsNotChangedInItsText_data() {
    QTest::addColumn<QByteArray>("file");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("no JSON") << QByteArray(R"({"project": {"version": "1")");
    QTest::newRow("an array") << QByteArray("[1]");
    QTest::newRow("no project") << QByteArray(R"({"version": "1"})");
    QTest::newRow("a project that is a text") << QByteArray(R"({"project": "version"})");
    QTest::newRow("a project with nothing in it") << QByteArray(R"({"project": {}})");
    QTest::newRow("a version that is an object") << QByteArray(R"({"project": {"version": {}}})");
    QTest::newRow("bytes that are no text")
        << QByteArray("{\"a\": \"\x81 \", \"project\": {\"version\": \"1\"}}");
}

void VersionInTextTest::whatIsNotChangedInItsText() {
    QFETCH(QByteArray, file);
    QVERIFY(ctl::withVersion(file, "2.0.1").isNull());
}

QUORVANE_TEST_MAIN(QCoreApplication, VersionInTextTest)
#include "version_in_text_test.moc"
