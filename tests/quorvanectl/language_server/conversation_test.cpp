// What the server answers: each message, each refusal, in the order in which an editor sees them.
#include "quorvanectl/language_server/frames.h"
#include "quorvanectl/language_server/serving.h"

#include "conversation.h"
#include "support/file_tree.h"
#include "support/library_file.h"
#include "support/project_folder.h"
#include "support/staged_main.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QUrl>

using support::ProjectFolder;

using namespace conversation;

namespace {

const QString uri = "file:///nowhere/a.ys";

} // namespace

class ConversationTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void answers_data();
    void answers();
    void whatItCan_data();
    void whatItCan();
    void aRequestThatIsCancelledIsNotWorkedOn();
    void exitStatus_data();
    void exitStatus();
    void edits_data();
    void edits();
    void theColumnsThatTheEditorAsksFor();
    void findingsAreToldOnceForAllThatCame();
    void closingTakesBackWhatWasTold();
    void findingsAcrossFiles();
    void aTextWithoutAFile();
    void aConversationOverStreams_data();
    void aConversationOverStreams();
};

void ConversationTest::initTestCase() {
    QVERIFY(support::loadScriptVocabulary());
    QCoreApplication::setApplicationVersion("1.2.3");
}

// Of a server that has been told to begin.
void ConversationTest::answers_data() {
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<QStringList>("expected");
    const auto row = [](const char *name, const QByteArray &message, const QString &expected) {
        QTest::newRow(name) << message
                            << (expected.isEmpty() ? QStringList() : QStringList(expected));
    };
    const auto error = [](const QString &id, int code, const QString &text) {
        return QString(R"({"error":{"code":%1,"message":"%2"},"id":%3,"jsonrpc":"2.0"})")
            .arg(QString::number(code), text, id);
    };
    const auto complaint = [](const QString &text) {
        return QString(R"({"jsonrpc":"2.0","method":"window/logMessage",)"
                       R"("params":{"message":"%1","type":1}})")
            .arg(text);
    };
    row("shutdown", shutdownRequest, R"({"id":9,"jsonrpc":"2.0","result":null})");
    row("an id that is a text", R"({"jsonrpc":"2.0","id":"x","method":"shutdown","params":null})",
        R"({"id":"x","jsonrpc":"2.0","result":null})");
    row("initialize once more", initialize(), error("0", -32600, "initialize comes once"));
    row("an unknown request", R"({"jsonrpc":"2.0","id":1,"method":"a/b","params":{}})",
        error("1", -32601, "no method a/b"));
    row("an unknown request of the protocol's own",
        R"({"jsonrpc":"2.0","id":1,"method":"$/c","params":[]})",
        error("1", -32601, "no method $/c"));
    row("a notification sent as a request",
        R"({"jsonrpc":"2.0","id":1,"method":"textDocument/didOpen","params":{}})",
        error("1", -32601, "no method textDocument/didOpen"));
    row("an unknown notification", R"({"jsonrpc":"2.0","method":"a/b","params":{}})", "");
    row("a request sent as a notification", R"({"jsonrpc":"2.0","method":"shutdown"})", "");
    row("an answer", R"({"jsonrpc":"2.0","id":1,"result":null})", "");
    row("an answer that refuses", R"({"jsonrpc":"2.0","id":1,"error":{"code":1,"message":""}})",
        "");
    row("a cancel of what is not there",
        R"({"jsonrpc":"2.0","method":"$/cancelRequest","params":{"id":7}})", "");
    row("no JSON", "{", error("null", -32700, "unterminated object"));
    row("an empty message", "", error("null", -32700, "illegal value"));
    row("several in an array", "[]", error("null", -32600, "the message is no object"));
    row("an empty object", "{}", error("null", -32600, R"(jsonrpc is not \"2.0\")"));
    row("another version", R"({"jsonrpc":"1.0","id":3,"method":"shutdown"})",
        error("3", -32600, R"(jsonrpc is not \"2.0\")"));
    row("no method", R"({"jsonrpc":"2.0","id":3})", error("3", -32600, "method is no text"));
    row("a method that is a number", R"({"jsonrpc":"2.0","id":3,"method":4})",
        error("3", -32600, "method is no text"));
    row("an id that is an array", R"({"jsonrpc":"2.0","id":[],"method":"shutdown"})",
        error("null", -32600, "id is neither a text nor a whole number"));
    row("an id that is half a number", R"({"jsonrpc":"2.0","id":1.5,"method":"shutdown"})",
        error("null", -32600, "id is neither a text nor a whole number"));
    row("params that are a text", R"({"jsonrpc":"2.0","id":3,"method":"shutdown","params":""})",
        error("3", -32600, "params is neither an object nor an array"));
    row("an open without anything", told("textDocument/didOpen", {}),
        complaint("textDocument/didOpen without an address and a text"));
    row("an open without a text", about("textDocument/didOpen", uri),
        complaint("textDocument/didOpen without an address and a text"));
    row("a change of what is not open", changed(uri, 2, {QJsonObject{{"text", "$"}}}),
        complaint("textDocument/didChange of a text that is not open: /nowhere/a.ys"));
    row("a close of what is not open", about("textDocument/didClose", uri), "");
    row("a save of what is not open", about("textDocument/didSave", uri), "");
    row("changed files of another kind", told("workspace/didChangeWatchedFiles", {{"changes", 3}}),
        "");
}

void ConversationTest::answers() {
    QFETCH(QByteArray, message);
    Conversation conversation;
    conversation.begin();
    QTEST(conversation.say({message}), "expected");
}

void ConversationTest::whatItCan_data() {
    QTest::addColumn<QByteArray>("capabilities");
    QTest::addColumn<QString>("encoding");
    QTest::addColumn<bool>("watches");
    const auto offered = [](const QByteArray &encodings) {
        return R"({"general":{"positionEncodings":[)" + encodings + "]}}";
    };
    QTest::newRow("an editor that says nothing") << QByteArray("{}") << "utf-16" << false;
    QTest::newRow("one that counts in UTF-8") << offered(R"("utf-8","utf-16")") << "utf-8" << false;
    QTest::newRow("one that prefers UTF-16") << offered(R"("utf-16","utf-8")") << "utf-16" << false;
    QTest::newRow("one that prefers what is not known")
        << offered(R"("utf-32","utf-8")") << "utf-8" << false;
    QTest::newRow("one that watches files")
        << QByteArray(R"({"workspace":{"didChangeWatchedFiles":{"dynamicRegistration":true}}})")
        << "utf-16" << true;
}

void ConversationTest::whatItCan() {
    QFETCH(QByteArray, capabilities);
    QFETCH(QString, encoding);
    QFETCH(bool, watches);
    const QString expected =
        QString(R"({"id":0,"jsonrpc":"2.0","result":{"capabilities":{"completionProvider":)"
                R"({"triggerCharacters":["\""]},"definitionProvider":true,)"
                R"("documentHighlightProvider":true,"documentSymbolProvider":true,)"
                R"("foldingRangeProvider":true,"hoverProvider":true,"positionEncoding":"%1",)"
                R"("referencesProvider":true,"renameProvider":true,"semanticTokensProvider":)"
                R"({"full":true,"legend":{"tokenModifiers":[],"tokenTypes":["keyword","type",)"
                R"("function","variable","property","number","string","operator","comment"]}},)"
                R"("signatureHelpProvider":{"triggerCharacters":["(",","]},)"
                R"("textDocumentSync":{"change":2,"openClose":true,"save":true}},)"
                R"("serverInfo":{"name":"quorvanectl","version":"1.2.3"}}})")
            .arg(encoding);
    const QString watching =
        R"({"id":"files","jsonrpc":"2.0","method":"client/registerCapability","params":)"
        R"({"registrations":[{"id":"files","method":"workspace/didChangeWatchedFiles",)"
        R"("registerOptions":{"watchers":[{"globPattern":"**/*.{ys,yslib}"}]}}]}})";
    Conversation conversation;
    QCOMPARE(conversation.say({shutdownRequest}),
             QStringList(R"({"error":{"code":-32002,"message":"initialize comes first"},"id":9,)"
                         R"("jsonrpc":"2.0"})"));
    QCOMPARE(conversation.say({opened(uri, "$")}), QStringList());
    QCOMPARE(conversation.say({R"({"jsonrpc":"2.0","id":0,"method":"initialize"})"}),
             QStringList(R"({"error":{"code":-32602,"message":"params is no object"},"id":0,)"
                         R"("jsonrpc":"2.0"})"));
    QCOMPARE(conversation.say({initialize(capabilities)}), QStringList(expected));
    QCOMPARE(conversation.say({told("initialized", {})}),
             watches ? QStringList(watching) : QStringList());
    QCOMPARE(conversation.say({shutdownRequest}).size(), 1);
    QCOMPARE(conversation.say({shutdownRequest}),
             QStringList(R"({"error":{"code":-32600,"message":"the server is shut down"},"id":9,)"
                         R"("jsonrpc":"2.0"})"));
    QCOMPARE(conversation.say({opened(uri, "$")}), QStringList());
}

// Only where the cancel comes before the work: by then it stands behind it among those that have come. A
// text and a number of the same digits are two.
void ConversationTest::aRequestThatIsCancelledIsNotWorkedOn() {
    const QByteArray cancel = R"({"jsonrpc":"2.0","method":"$/cancelRequest","params":{"id":9}})";
    Conversation conversation;
    conversation.begin();
    QCOMPARE(conversation.say({shutdownRequest, cancel}),
             QStringList(R"({"error":{"code":-32800,"message":"cancelled"},"id":9,)"
                         R"("jsonrpc":"2.0"})"));
    // Of what is not worked on, not even the params are looked at.
    QCOMPARE(conversation.say({asked("textDocument/completion", {}, 9), cancel}),
             QStringList(R"({"error":{"code":-32800,"message":"cancelled"},"id":9,)"
                         R"("jsonrpc":"2.0"})"));
    const QByteArray named = R"({"jsonrpc":"2.0","id":"9","method":"a"})";
    QCOMPARE(conversation.say({named, cancel}),
             QStringList(R"({"error":{"code":-32601,"message":"no method a"},"id":"9",)"
                         R"("jsonrpc":"2.0"})"));
    QCOMPARE(conversation.say({shutdownRequest}),
             QStringList(R"({"id":9,"jsonrpc":"2.0","result":null})"));
}

void ConversationTest::exitStatus_data() {
    QTest::addColumn<QList<QByteArray>>("messages");
    QTest::addColumn<int>("expected");
    QTest::newRow("none") << QList<QByteArray>{initialize()} << -1;
    QTest::newRow("shutdown alone") << QList<QByteArray>{initialize(), shutdownRequest} << -1;
    QTest::newRow("both") << QList<QByteArray>{initialize(), shutdownRequest, exitNotification}
                          << 0;
    QTest::newRow("exit alone") << QList<QByteArray>{initialize(), exitNotification} << 1;
    QTest::newRow("exit before all") << QList<QByteArray>{exitNotification} << 1;
    QTest::newRow("shutdown before initialize")
        << QList<QByteArray>{shutdownRequest, exitNotification} << 1;
}

void ConversationTest::exitStatus() {
    QFETCH(QList<QByteArray>, messages);
    QFETCH(int, expected);
    Conversation conversation;
    (void)conversation.say(messages);
    QCOMPARE(conversation.server.exitStatus().value_or(-1), expected);
    const QStringList nothing;
    if (expected >= 0)
        QCOMPARE(conversation.say({initialize(), shutdownRequest}), nothing);
}

// What stands at the unknown character tells which text the changes left.
void ConversationTest::edits_data() {
    QTest::addColumn<QJsonArray>("changes");
    QTest::addColumn<QStringList>("expected");
    const auto found = [](const QString &findings) {
        return QStringList(QString(uri + "@2 " + findings).trimmed());
    };
    QTest::newRow("the whole text")
        << QJsonArray{QJsonObject{{"text", "\n\n  $"}}} << found("2:2-2:3 1 YS100");
    QTest::newRow("a stretch") << QJsonArray{change(position(0, 4), position(0, 5), "$")}
                               << found("0:4-0:5 1 YS100");
    QTest::newRow("an insertion behind a Chinese text")
        << QJsonArray{change(position(1, 9), position(1, 9), " $")} << found("1:10-1:11 1 YS100");
    QTest::newRow("over a line's end")
        << QJsonArray{change(position(0, 5), position(1, 0), "; $ ")} << found("0:7-0:8 1 YS100");
    QTest::newRow("one after the other, each in what those before leave")
        << QJsonArray{change(position(0, 0), position(0, 0), "\n\n"),
                      change(position(2, 0), position(2, 3), "$")}
        << found("2:0-2:1 1 YS100");
    QTest::newRow("the whole text, then a stretch")
        << QJsonArray{QJsonObject{{"text", "ab"}}, change(position(0, 1), position(0, 1), "$")}
        << found("0:1-0:2 1 YS100");
    QTest::newRow("nothing wrong")
        << QJsonArray{change(position(0, 4), position(0, 5), "b")} << QStringList();
    QTest::newRow("no change at all") << QJsonArray() << QStringList();
}

void ConversationTest::edits() {
    QFETCH(QJsonArray, changes);
    QFETCH(QStringList, expected);
    Conversation conversation;
    conversation.begin();
    QCOMPARE(conversation.say({opened(uri, QString("int a;\ns = \"高度\";\n"))}), QStringList());
    QCOMPARE(conversation.findingsAfter({changed(uri, 2, changes)}), expected);
    // Of several of which one is no change, none counts.
    QJsonArray spoilt{QJsonObject{{"text", "\n\n\n$"}}};
    spoilt.append(change(position(1, 0), position(0, 0), ""));
    QCOMPARE(conversation.say({changed(uri, 3, spoilt)}),
             QStringList(R"({"jsonrpc":"2.0","method":"window/logMessage","params":{"message":)"
                         R"("textDocument/didChange without a text or with no range: )"
                         R"(/nowhere/a.ys","type":1}})"));
    const QString cleared = uri + "@4";
    QCOMPARE(conversation.findingsAfter({changed(uri, 4, {QJsonObject{{"text", ""}}})}),
             expected.isEmpty() ? QStringList() : QStringList(cleared));
}

void ConversationTest::theColumnsThatTheEditorAsksFor() {
    Conversation conversation;
    conversation.begin(R"({"general":{"positionEncodings":["utf-8"]}})");
    const QByteArray open = opened(uri, QString("s = \"高\" $;\n"));
    QCOMPARE(conversation.findingsAfter({open}), QStringList(uri + "@1 0:10-0:11 1 YS100"));
    QCOMPARE(conversation.findingsAfter(
                 {changed(uri, 2, {change(position(0, 5), position(0, 8), "h")})}),
             QStringList(uri + "@2 0:8-0:9 1 YS100"));
}

void ConversationTest::findingsAreToldOnceForAllThatCame() {
    Conversation conversation;
    conversation.begin();
    const auto whole = [](int version, const char *text) {
        return changed(uri, version, {QJsonObject{{"text", text}}});
    };
    QCOMPARE(conversation.findingsAfter({opened(uri, "$"), whole(2, ""), whole(3, " $")}),
             QStringList(uri + "@3 0:1-0:2 1 YS100"));
    // What is the same is not told again.
    QCOMPARE(conversation.findingsAfter({whole(4, " $ ")}), QStringList());
    QCOMPARE(conversation.findingsAfter({whole(5, "")}), QStringList(uri + "@5"));
}

void ConversationTest::closingTakesBackWhatWasTold() {
    Conversation conversation;
    conversation.begin();
    const QString odd = "file:///nowhere/%61.ys"; // as no one else would write it
    QCOMPARE(conversation.findingsAfter({opened(odd, "$")}),
             QStringList(odd + "@1 0:0-0:1 1 YS100"));
    QCOMPARE(conversation.findingsAfter({about("textDocument/didClose", odd)}),
             QStringList(odd + "@0"));
    QCOMPARE(conversation.say({about("textDocument/didClose", odd)}), QStringList());
}

void ConversationTest::findingsAcrossFiles() {
    const ProjectFolder folder;
    support::writeTree(
        folder.path(""),
        {{"line.yslib", R"({"schemaVersion": 1, "project": {"name": "n", "displayName": "d",
"createdAt": "c"}, "scripts": [{"id": "a", "path": "a.ys", "role": "main"},
{"id": "b", "path": "b.ys", "role": "sub"}], "tasks": {"main": {"entryScriptId": "a"}}})"},
         {"a.ys", ""},
         {"b.ys", "global int x_y;\n"}});
    const QString a = uriOf(folder.path("a.ys"));
    const QString b = uriOf(folder.path("b.ys"));
    Conversation conversation;
    conversation.begin(R"({"textDocument":{"publishDiagnostics":{"relatedInformation":true}}})");
    const QStringList sent = conversation.say({opened(a, "int n;\nglobal int x_y;\n")});
    QCOMPARE(sent.size(), 2);
    const QString form =
        R"({"jsonrpc":"2.0","method":"textDocument/publishDiagnostics","params":{"diagnostics":)"
        R"([{"code":"YS408","message":"跨脚本 global 'x_y' 重复定义：a.ys:2, b.ys:1","range":)"
        R"({"end":{"character":14,"line":1},"start":{"character":11,"line":1}},)"
        R"("relatedInformation":[{"location":{"range":{"end":{"character":14,"line":0},)"
        R"("start":{"character":11,"line":0}},"uri":"%1"},"message":"b.ys:1"}],"severity":1,)"
        R"("source":"quorvane"}],"uri":"%2","version":1}})";
    QCOMPARE(sent.at(0), form.arg(b, a));
    QVERIFY2(sent.at(1).contains("\"uri\":\"" + b + "\"}"), qPrintable(sent.at(1)));
    QCOMPARE(conversation.findingsAfter({changed(a, 2, {QJsonObject{{"text", ""}}})}),
             QStringList({a + "@2", b + "@0"}));
    // What changes on the disk counts when the editor tells of it.
    folder.write("b.ys", "global int bad;\n");
    const QJsonObject event{{"uri", b}, {"type", 2}};
    QCOMPARE(conversation.findingsAfter(
                 {told("workspace/didChangeWatchedFiles", {{"changes", QJsonArray{event}}})}),
             QStringList(b + "@0 0:11-0:14 2"));
    folder.write("c.ys", "");
    QCOMPARE(conversation.findingsAfter({about("textDocument/didSave", a)}),
             QStringList(uriOf(folder.path("line.yslib")) + "@0 1:30-1:31 2"));
}

void ConversationTest::aTextWithoutAFile() {
    Conversation conversation;
    conversation.begin();
    QCOMPARE(conversation.findingsAfter({opened("untitled:Untitled-1", "$ global int bad;")}),
             QStringList("untitled:Untitled-1@1 0:0-0:1 1 YS100"));
    QCOMPARE(conversation.findingsAfter({opened(":Untitled-2", "$ global int bad;")}),
             QStringList(":Untitled-2@1 0:0-0:1 1 YS100"));
}

void ConversationTest::aConversationOverStreams_data() {
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("error");
    QTest::addColumn<int>("answers");
    const auto all = [](const QList<QByteArray> &bodies) {
        QByteArray stream;
        for (const QByteArray &body : bodies)
            stream += ctl::framed(body);
        return stream;
    };
    QTest::newRow("to its end") << all({initialize(), shutdownRequest, exitNotification}) << 0 << ""
                                << 2;
    QTest::newRow("nothing is read behind its end")
        << all({initialize(), shutdownRequest, exitNotification}) + "Content-Length: x\r\n\r\n"
        << 0 << "" << 2;
    QTest::newRow("an end without a shutdown")
        << all({initialize(), exitNotification}) << 1 << "" << 1;
    QTest::newRow("an editor that is gone") << all({initialize()}) << 1 << "" << 1;
    QTest::newRow("an editor that says nothing") << QByteArray() << 1 << "" << 0;
    QTest::newRow("a fault behind what is answered")
        << all({initialize(), shutdownRequest}) + "Content-Length: x\r\n\r\n"
        << 2 << "Content-Length is no number" << 2;
    QTest::newRow("many messages")
        << all({initialize()}) + all({R"({"jsonrpc":"2.0","id":1,"method":"a"})"}).repeated(3000) +
               all({shutdownRequest, exitNotification})
        << 0 << "" << 3002;
}

void ConversationTest::aConversationOverStreams() {
    QFETCH(QByteArray, input);
    QFETCH(int, answers);
    QBuffer in(&input);
    QVERIFY(in.open(QIODevice::ReadOnly));
    QByteArray output;
    QBuffer out(&output);
    QVERIFY(out.open(QIODevice::ReadWrite));
    const ctl::ServingEnd end = ctl::serve(in, out);
    QTEST(end.status, "status");
    QTEST(end.error, "error");
    QVERIFY(out.seek(0));
    int count = 0;
    while (ctl::readFrame(out).kind == ctl::Frame::Kind::Message)
        ++count;
    QCOMPARE(count, answers);
}

QUORVANE_TEST_MAIN(QCoreApplication, ConversationTest)

#include "conversation_test.moc"
