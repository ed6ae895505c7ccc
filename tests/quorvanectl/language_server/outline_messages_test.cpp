// What a script is made of, where something is wrong with it or nothing is in it: its outline, what can be
// folded, and the words that an editor colours.
#include "conversation.h"
#include "support/library_file.h"
#include "support/staged_main.h"

#include <QCoreApplication>

using namespace conversation;

namespace {

const QString uri = "file:///no/a.ys";
constexpr char nested[] =
    R"({"textDocument":{"documentSymbol":{"hierarchicalDocumentSymbolSupport":true}}})";

QJsonValue answered(Conversation *conversation, const char *method) {
    const QStringList sent =
        conversation->say({asked(method, {{"textDocument", QJsonObject{{"uri", uri}}}})});
    return QJsonDocument::fromJson(sent.value(0).toUtf8()).object().value("result");
}

// "12 f (int a)" for each.
QString outlineOf(Conversation *conversation) {
    QStringList lines;
    const QJsonArray symbols = answered(conversation, "textDocument/documentSymbol").toArray();
    for (const QJsonValue &value : symbols) {
        const QJsonObject symbol = value.toObject();
        lines.append(QString("%1 %2 %3")
                         .arg(QString::number(symbol.value("kind").toInt()),
                              symbol.value("name").toString(), symbol.value("detail").toString()));
    }
    return lines.join("; ");
}

} // namespace

class OutlineMessagesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void outline_data();
    void outline();
    void anOutlineOutlivesAMistake();
    void folds_data();
    void folds();
    void words_data();
    void words();
};

void OutlineMessagesTest::initTestCase() {
    QVERIFY(support::loadScriptVocabulary());
}

void OutlineMessagesTest::outline_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    QTest::newRow("nothing") << ""
                             << "";
    QTest::newRow("a comment alone") << "// int a;"
                                     << "";
    QTest::newRow("what is local is no part of it")
        << "int a; { int b; } for (int i = 0; i < 3; i++) { }\nfunction f(c) { int d; }"
        << "13 a int; 12 f (int c)";
    QTest::newRow("a global in a function is") << "function f() { global bool x_y; }"
                                               << "12 f (); 13 x_y global bool";
    QTest::newRow("declared twice stands twice") << "int a; float a;"
                                                 << "13 a int; 13 a float";
    QTest::newRow("a text that never parsed") << "int a; }"
                                              << "";
    QTest::newRow("one with an unknown character") << "int a; $"
                                                   << "";
    QTest::newRow("one with something open is whole otherwise") << "int a; ("
                                                                << "13 a int";
}

void OutlineMessagesTest::outline() {
    QFETCH(QString, text);
    Conversation conversation;
    conversation.begin(nested);
    (void)conversation.say({opened(uri, text)});
    QTEST(outlineOf(&conversation), "expected");
}

// Else it would be gone at every second key. What is closed is forgotten.
void OutlineMessagesTest::anOutlineOutlivesAMistake() {
    Conversation conversation;
    conversation.begin(nested);
    (void)conversation.say({opened(uri, "int a; function f() { }")});
    const auto whole = [](int version, const char *text) {
        return changed(uri, version, {QJsonObject{{"text", text}}});
    };
    (void)conversation.say({whole(2, "int a; function f() { ")});
    QCOMPARE(outlineOf(&conversation), QString("13 a int; 12 f ()"));
    (void)conversation.say({whole(3, "} int ab; function f() { ")});
    QCOMPARE(outlineOf(&conversation), QString("12 f ()"));
    (void)conversation.say({whole(4, "int ab; function f() { }")});
    QCOMPARE(outlineOf(&conversation), QString("13 ab int; 12 f ()"));
    (void)conversation.say(
        {about("textDocument/didClose", uri), opened(uri, "} int ab; function f() {")});
    QCOMPARE(outlineOf(&conversation), QString());
}

void OutlineMessagesTest::folds_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("expected");
    const auto row = [](const char *name, const char *text, const char *expected) {
        QTest::newRow(name) << QString(text) << QByteArray(expected);
    };
    row("nothing", "", "[]");
    row("braces of one line", "{ a }", "[]");
    row("braces of two lines show both", "{\n}", "[]");
    row("braces of three lines", "{\na\n}", R"([{"endLine":1,"startLine":0}])");
    row("a brace that nothing closes", "{\na\nb\n", "[]");
    row("a brace that closes nothing", "}\na\n}\n", "[]");
    row("the inner of two of which one is left open", "{\n{\na\n}\n",
        R"([{"endLine":2,"startLine":1}])");
    row("a brace in a text", "s = \"{\n\n\n}\"", "[]");
    row("a brace in a comment", "// {\na\nb\n// }", "[]");
    row("one comment", "// a\nb", "[]");
    row("lines that end in a return alone", "{\ra\r}", R"([{"endLine":1,"startLine":0}])");
    row("comments whose lines end in both", "// a\r\n// b\r\nc",
        R"([{"endLine":1,"kind":"comment","startLine":0}])");
    row("with an unknown character in it", "{\n$\n}", R"([{"endLine":1,"startLine":0}])");
}

void OutlineMessagesTest::folds() {
    QFETCH(QString, text);
    Conversation conversation;
    conversation.begin();
    (void)conversation.say({opened(uri, text)});
    const QJsonArray found = answered(&conversation, "textDocument/foldingRange").toArray();
    QTEST(QJsonDocument(found).toJson(QJsonDocument::Compact), "expected");
}

void OutlineMessagesTest::words_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("expected");
    const auto row = [](const char *name, const char *text, const char *expected) {
        QTest::newRow(name) << QString(text) << QByteArray(expected);
    };
    row("nothing", "", "[]");
    row("brackets have none", "( [ { } ] ) , ;", "[]");
    row("an unknown character has none", "$ a", "[0,2,1,3,0]");
    row("a text that is left open to the end of the file", "a \"b\nc",
        "[0,0,1,3,0,0,2,2,6,0,1,0,1,6,0]");
    row("a text over an empty line", "\"a\n\nb\"", "[0,0,2,6,0,2,0,2,6,0]");
    row("a text whose lines end in a return alone", "\"a\rb\"", "[0,0,2,6,0,1,0,2,6,0]");
    row("two on one line, one on a later", "a b\n\n  c", "[0,0,1,3,0,0,2,1,3,0,2,2,1,3,0]");
    row("behind a sign of two units", "\"\U0001F600\" a", "[0,0,4,6,0,0,5,1,3,0]");
    row("a word of the library's alone has none of its own", "print(1)", "[0,0,5,2,0,0,6,1,5,0]");
}

void OutlineMessagesTest::words() {
    QFETCH(QString, text);
    Conversation conversation;
    conversation.begin();
    (void)conversation.say({opened(uri, text)});
    const QJsonArray found = answered(&conversation, "textDocument/semanticTokens/full")
                                 .toObject()
                                 .value("data")
                                 .toArray();
    QTEST(QJsonDocument(found).toJson(QJsonDocument::Compact), "expected");
}

QUORVANE_TEST_MAIN(QCoreApplication, OutlineMessagesTest)

#include "outline_messages_test.moc"
