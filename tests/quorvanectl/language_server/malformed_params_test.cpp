// What each message of the protocol makes of params that are not what it takes: a request is refused with a
// reason, a notification is passed over or complained of, and the text that is open stays as it was.
#include "conversation.h"
#include "support/library_file.h"
#include "support/staged_main.h"

#include <QCoreApplication>

using namespace conversation;

namespace {

const QString uri = "file:///nowhere/a.ys";

// What the editor shows of it tells that no text was lost.
constexpr char text[] = "global int x_y; $";

QByteArray message(const QByteArray &method, const QByteArray &params, bool isRequest) {
    return R"({"jsonrpc":"2.0",)" + QByteArray(isRequest ? R"("id":1,)" : "") + R"("method":")" +
           method + R"(","params":)" + params + "}";
}

QString refusal(const QString &reason) {
    return QString(R"({"error":{"code":-32602,"message":"%1"},"id":1,"jsonrpc":"2.0"})")
        .arg(reason);
}

QString complaint(const QString &line) {
    return QString(R"({"jsonrpc":"2.0","method":"window/logMessage","params":{"message":"%1",)"
                   R"("type":1}})")
        .arg(line);
}

} // namespace

class MalformedParamsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void requestsOfAPlace_data();
    void requestsOfAPlace();
    void requestsOfAText_data();
    void requestsOfAText();
    void notifications_data();
    void notifications();
    void whatBelongsToARequest_data();
    void whatBelongsToARequest();

private:
    void theTextIsAsItWas(Conversation *conversation);
};

void MalformedParamsTest::initTestCase() {
    QVERIFY(support::loadScriptVocabulary());
}

void MalformedParamsTest::theTextIsAsItWas(Conversation *conversation) {
    const QByteArray moved = changed(uri, 9, {change(position(0, 0), position(0, 0), "\n")});
    QCOMPARE(conversation->findingsAfter({moved}), QStringList(uri + "@9 1:16-1:17 1 YS100"));
}

void MalformedParamsTest::requestsOfAPlace_data() {
    QTest::addColumn<QByteArray>("params");
    QTest::addColumn<QString>("reason");
    const auto row = [](const char *name, const QByteArray &params, const char *reason) {
        QTest::newRow(name) << params << QString(reason);
    };
    const auto at = [](const QByteArray &place) {
        return R"({"textDocument":{"uri":"file:///nowhere/a.ys"},"newName":"x_z","position":)" +
               place + "}";
    };
    const char *const noText = "the text is not open: ";
    const char *const noPlace = "position is no place in a text";
    row("params that are null", "null", noText);
    row("params in a list", R"([{"uri":"file:///nowhere/a.ys"}])", noText);
    row("no text", R"({"position":{"line":0,"character":0}})", noText);
    row("an address in the place of the text", R"({"textDocument":"file:///nowhere/a.ys"})",
        noText);
    row("an address that is a number", R"({"textDocument":{"uri":7}})", noText);
    row("an address that is none", R"({"textDocument":{"uri":"a.ys"}})",
        "the text is not open: a.ys");
    row("an address of the web", R"({"textDocument":{"uri":"http://nowhere/a.ys"}})",
        "the text is not open: http://nowhere/a.ys");
    row("the address of the folder", R"({"textDocument":{"uri":"file:///nowhere/"}})",
        "the text is not open: /nowhere");
    row("another case", R"({"textDocument":{"uri":"file:///nowhere/A.ys"}})",
        "the text is not open: /nowhere/A.ys");
    row("a position that is a number", at("12"), noPlace);
    row("a position that is a list", at("[0,12]"), noPlace);
    row("a line that is a text", at(R"({"line":"0","character":12})"), noPlace);
    row("a line that is null", at(R"({"line":null,"character":12})"), noPlace);
    row("half a column", at(R"({"line":0,"character":12.5})"), noPlace);
    row("a column before the line", at(R"({"line":0,"character":-1})"), noPlace);
    row("a line above all numbers", at(R"({"line":4294967296,"character":0})"), noPlace);
}

void MalformedParamsTest::requestsOfAPlace() {
    QFETCH(QByteArray, params);
    QFETCH(QString, reason);
    Conversation conversation;
    conversation.begin();
    (void)conversation.say({opened(uri, text)});
    for (const char *method : {"completion", "hover", "signatureHelp", "definition", "references",
                               "documentHighlight", "prepareRename", "rename"})
        QCOMPARE(conversation.say({message("textDocument/" + QByteArray(method), params, true)}),
                 QStringList(refusal(reason)));
    theTextIsAsItWas(&conversation);
}

void MalformedParamsTest::requestsOfAText_data() {
    QTest::addColumn<QByteArray>("params");
    QTest::addColumn<QString>("named");
    QTest::newRow("params that are null") << QByteArray("null") << "";
    QTest::newRow("params in a list") << QByteArray("[]") << "";
    QTest::newRow("an address in the place of the text")
        << QByteArray(R"({"textDocument":"file:///nowhere/a.ys"})") << "";
    QTest::newRow("an address that is null")
        << QByteArray(R"({"textDocument":{"uri":null}})") << "";
    QTest::newRow("another text") << QByteArray(
                                         R"({"textDocument":{"uri":"file:///nowhere/b.ys"}})")
                                  << "/nowhere/b.ys";
    QTest::newRow("one that has no file")
        << QByteArray(R"({"textDocument":{"uri":"untitled:a.ys"}})") << "untitled:a.ys";
}

void MalformedParamsTest::requestsOfAText() {
    QFETCH(QByteArray, params);
    QFETCH(QString, named);
    Conversation conversation;
    conversation.begin();
    (void)conversation.say({opened(uri, text)});
    for (const char *method : {"documentSymbol", "foldingRange", "semanticTokens/full"})
        QCOMPARE(conversation.say({message("textDocument/" + QByteArray(method), params, true)}),
                 QStringList(refusal("the text is not open: " + named)));
    theTextIsAsItWas(&conversation);
}

void MalformedParamsTest::notifications_data() {
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QByteArray>("params");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const char *method, const QByteArray &params,
                        const QString &expected) {
        QTest::newRow(name) << QByteArray(method) << params << expected;
    };
    const auto edits = [](const QByteArray &changes) {
        return R"({"textDocument":{"uri":"file:///nowhere/a.ys","version":2},"contentChanges":)" +
               changes + "}";
    };
    const auto edit = [&edits](const QByteArray &range) {
        return edits(R"([{"text":"","range":)" + range + "}]");
    };
    const QString noOpen = complaint("textDocument/didOpen without an address and a text");
    const QString noChange =
        complaint("textDocument/didChange without a text or with no range: /nowhere/a.ys");
    row("an open in a list", "textDocument/didOpen", "[]", noOpen);
    row("an open of a text that is a number", "textDocument/didOpen",
        R"({"textDocument":{"uri":"file:///nowhere/a.ys","text":4}})", noOpen);
    row("an open of a text that is null", "textDocument/didOpen",
        R"({"textDocument":{"uri":"file:///nowhere/a.ys","text":null}})", noOpen);
    row("an open without an address", "textDocument/didOpen", R"({"textDocument":{"text":"a"}})",
        noOpen);
    row("a change without anything", "textDocument/didChange", "{}",
        complaint("textDocument/didChange of a text that is not open: "));
    row("a change without its changes", "textDocument/didChange",
        R"({"textDocument":{"uri":"file:///nowhere/a.ys"}})", noChange);
    row("a change that stands in no list", "textDocument/didChange", edits(R"({"text":""})"),
        noChange);
    row("a change that is a text", "textDocument/didChange", edits(R"([""])"), noChange);
    row("a change without a text", "textDocument/didChange", edits("[{}]"), noChange);
    row("a change whose text is null", "textDocument/didChange", edits(R"([{"text":null}])"),
        noChange);
    row("a range that is null", "textDocument/didChange", edit("null"), noChange);
    row("a range that is a list", "textDocument/didChange", edit("[0,1]"), noChange);
    row("a range without its end", "textDocument/didChange",
        edit(R"({"start":{"line":0,"character":0}})"), noChange);
    row("a range that runs backwards", "textDocument/didChange",
        edit(R"({"start":{"line":0,"character":2},"end":{"line":0,"character":1}})"), noChange);
    row("a good change before a bad one", "textDocument/didChange",
        edits(R"([{"text":""},{"text":3}])"), noChange);
    row("a close without anything", "textDocument/didClose", "{}", "");
    row("a close of a number", "textDocument/didClose", R"({"textDocument":{"uri":3}})", "");
    row("a close of another text", "textDocument/didClose",
        R"({"textDocument":{"uri":"file:///nowhere/b.ys"}})", "");
    row("a save without anything", "textDocument/didSave", "null", "");
    row("a save in a list", "textDocument/didSave", R"(["file:///nowhere/a.ys"])", "");
    row("changed files in no list", "workspace/didChangeWatchedFiles",
        R"({"changes":{"uri":"file:///nowhere/a.ys"}})", "");
    row("changed files that are none", "workspace/didChangeWatchedFiles",
        R"({"changes":[3,null,{},{"uri":4},"file:///nowhere/a.ys"]})", "");
    row("a second word that all is set up", "initialized", "[]", "");
}

void MalformedParamsTest::notifications() {
    QFETCH(QByteArray, method);
    QFETCH(QByteArray, params);
    Conversation conversation;
    conversation.begin();
    (void)conversation.say({opened(uri, text)});
    QTEST(conversation.say({message(method, params, false)}).join('\n'), "expected");
    theTextIsAsItWas(&conversation);
}

void MalformedParamsTest::whatBelongsToARequest_data() {
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QByteArray>("member");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const char *method, const char *member,
                        const QString &expected) {
        QTest::newRow(name) << QByteArray(method) << QByteArray(member) << expected;
    };
    const QString noName = refusal("newName is no text");
    const QString others = R"({"id":1,"jsonrpc":"2.0","result":[]})";
    row("a new name that is null", "rename", R"("newName":null)", noName);
    row("a new name in a list", "rename", R"("newName":["x_z"])", noName);
    row("a new name under another key", "rename", R"("name":"x_z")", noName);
    // Who does not ask for the declaration in so many words gets the others.
    row("a context that is no object", "references", R"("context":true)", others);
    row("a declaration that is asked for by a word", "references",
        R"("context":{"includeDeclaration":"true"})", others);
    row("a declaration that is asked for one step too high", "references",
        R"("includeDeclaration":true)", others);
}

void MalformedParamsTest::whatBelongsToARequest() {
    QFETCH(QByteArray, method);
    QFETCH(QByteArray, member);
    Conversation conversation;
    conversation.begin();
    (void)conversation.say({opened(uri, "global int x_y;")});
    const QByteArray params = R"({"textDocument":{"uri":"file:///nowhere/a.ys"},)"
                              R"("position":{"line":0,"character":12},)" +
                              member + "}";
    QTEST(conversation.say({message("textDocument/" + method, params, true)}).join('\n'),
          "expected");
}

QUORVANE_TEST_MAIN(QCoreApplication, MalformedParamsTest)

#include "malformed_params_test.moc"
