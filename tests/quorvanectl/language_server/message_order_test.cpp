// Messages that come at the wrong time, or twice, and those that take another one back.
#include "conversation.h"
#include "quorvanectl/language_server/frames.h"
#include "quorvanectl/language_server/serving.h"
#include "support/library_file.h"
#include "support/staged_main.h"

#include <QBuffer>
#include <QCoreApplication>

using namespace conversation;

namespace {

using Bodies = QList<QByteArray>;

const QString uri = "file:///nowhere/a.ys";

QByteArray shutdownAs(const QByteArray &id) {
    return R"({"jsonrpc":"2.0","id":)" + id + R"(,"method":"shutdown"})";
}

QByteArray symbolsAs(const QByteArray &id) {
    return R"({"jsonrpc":"2.0","id":)" + id +
           R"(,"method":"textDocument/documentSymbol",)"
           R"("params":{"textDocument":{"uri":"file:///nowhere/a.ys"}}})";
}

QByteArray cancel(const QByteArray &params) {
    return R"({"jsonrpc":"2.0","method":"$/cancelRequest","params":)" + params + "}";
}

// "0 answered", "\"x\" -32800 cancelled", "publishDiagnostics".
QString shortened(const QString &message) {
    const QJsonObject sent = QJsonDocument::fromJson(message.toUtf8()).object();
    if (!sent.contains("id"))
        return sent.value("method").toString().section('/', -1);
    const QJsonValue id = sent.value("id");
    const QString who = id.isString() ? '"' + id.toString() + '"'
                        : id.isNull() ? QString("none")
                                      : QString::number(id.toInt());
    const QJsonObject error = sent.value("error").toObject();
    return error.isEmpty() ? who + " answered"
                           : QString("%1 %2 %3")
                                 .arg(who, QString::number(error.value("code").toInt()),
                                      error.value("message").toString());
}

QStringList shortened(QStringList messages) {
    for (QString &message : messages)
        message = shortened(message);
    return messages;
}

} // namespace

Q_DECLARE_METATYPE(Bodies)

class MessageOrderTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cancels_data();
    void cancels();
    void aCancelThatComesTooLateIsForgotten();
    void times_data();
    void times();
    void streams_data();
    void streams();
    void anEditorThatReadsNoMore();
};

void MessageOrderTest::initTestCase() {
    QVERIFY(support::loadScriptVocabulary());
}

// Of a server that runs and has the text open. A cancel that names no request takes none back, the one with
// the number 0 no more than others.
void MessageOrderTest::cancels_data() {
    QTest::addColumn<Bodies>("messages");
    QTest::addColumn<QStringList>("expected");
    const auto row = [](const char *name, const Bodies &messages, const QStringList &expected) {
        QTest::newRow(name) << messages << expected;
    };
    const QString cancelled = " -32800 cancelled";
    row("its own number", {symbolsAs("7"), cancel(R"({"id":7})")}, {"7" + cancelled});
    row("its own name", {symbolsAs("\"s\""), cancel(R"({"id":"s"})")}, {"\"s\"" + cancelled});
    row("one of two", {symbolsAs("7"), symbolsAs("8"), cancel(R"({"id":8})")},
        {"7 answered", "8" + cancelled});
    row("twice", {symbolsAs("7"), cancel(R"({"id":7})"), cancel(R"({"id":7})")}, {"7" + cancelled});
    row("a text of the same digits", {symbolsAs("7"), cancel(R"({"id":"7"})")}, {"7 answered"});
    row("no params", {symbolsAs("0"), R"({"jsonrpc":"2.0","method":"$/cancelRequest"})"},
        {"0 answered"});
    row("params in a list", {symbolsAs("0"), cancel("[0]")}, {"0 answered"});
    row("no id", {symbolsAs("0"), cancel(R"({"token":"0"})")}, {"0 answered"});
    row("an id that is null", {symbolsAs("0"), cancel(R"({"id":null})")}, {"0 answered"});
    row("an id that is half a number", {symbolsAs("0"), cancel(R"({"id":0.5})")}, {"0 answered"});
    row("an id that is true", {symbolsAs("0"), cancel(R"({"id":true})")}, {"0 answered"});
    row("an id in an object", {symbolsAs("0"), cancel(R"({"id":{"id":0}})")}, {"0 answered"});
    row("a cancel that wants an answer has no other effect",
        {symbolsAs("7"),
         R"({"jsonrpc":"2.0","id":8,"method":"$/cancelRequest","params":{"id":7}})"},
        {"7 answered", "8 -32601 no method $/cancelRequest"});
    row("a change is taken all the same",
        {symbolsAs("7"), changed(uri, 2, {QJsonObject{{"text", "$"}}}), cancel(R"({"id":7})")},
        {"7" + cancelled, "publishDiagnostics"});
    row("what is cancelled has not shut down",
        {shutdownRequest, cancel(R"({"id":9})"), symbolsAs("1")}, {"9" + cancelled, "1 answered"});
}

void MessageOrderTest::cancels() {
    QFETCH(Bodies, messages);
    Conversation conversation;
    conversation.begin();
    (void)conversation.say({opened(uri, "int a;")});
    QTEST(shortened(conversation.say(messages)), "expected");
}

// An editor may use a number once more.
void MessageOrderTest::aCancelThatComesTooLateIsForgotten() {
    Conversation conversation;
    conversation.begin();
    (void)conversation.say({opened(uri, "int a;"), symbolsAs("7")});
    QCOMPARE(conversation.say({cancel(R"({"id":7})")}), QStringList());
    QCOMPARE(shortened(conversation.say({symbolsAs("7")})), QStringList("7 answered"));
}

// Of a server that has just been started; all come at once.
void MessageOrderTest::times_data() {
    QTest::addColumn<Bodies>("messages");
    QTest::addColumn<QStringList>("expected");
    QTest::addColumn<int>("status");
    const auto row = [](const char *name, const Bodies &messages, const QStringList &expected,
                        int status = -1) { QTest::newRow(name) << messages << expected << status; };
    const QByteArray initialized = told("initialized", {});
    const QByteArray spoilt = opened(uri, "$");
    const QString first = " -32002 initialize comes first";
    row("a request before all", {symbolsAs("1"), initialize()}, {"1" + first, "0 answered"});
    row("an unknown request before all", {R"({"jsonrpc":"2.0","id":1,"method":"a"})"},
        {"1" + first});
    row("no JSON before all", {"{", initialize()},
        {"none -32700 unterminated object", "0 answered"});
    row("an answer before all", {R"({"jsonrpc":"2.0","id":1,"result":1})"}, {});
    row("a text that is opened before all is not", {spoilt, initialize(), symbolsAs("1")},
        {"0 answered", "1 -32602 the text is not open: /nowhere/a.ys"});
    row("a text that is opened before all is set up", {initialize(), spoilt, initialized},
        {"0 answered", "publishDiagnostics"});
    row("an initialize that is cancelled",
        {initialize(), cancel(R"({"id":0})"), initialized, shutdownRequest},
        {"0 -32800 cancelled", "9" + first});
    row("two initializes", {initialize(), initialize()},
        {"0 answered", "0 -32600 initialize comes once"});
    row("an initialize that was refused may come again",
        {R"({"jsonrpc":"2.0","id":5,"method":"initialize","params":[]})", initialize()},
        {"5 -32602 params is no object", "0 answered"});
    row("what is opened before the end is not told of", {initialize(), spoilt, shutdownRequest},
        {"0 answered", "9 answered"});
    row("what is opened behind the end is not", {initialize(), shutdownRequest, spoilt},
        {"0 answered", "9 answered"});
    row("two shutdowns", {initialize(), shutdownAs("1"), shutdownAs("2")},
        {"0 answered", "1 answered", "2 -32600 the server is shut down"});
    row("a server that is shut down begins no more",
        {initialize(), shutdownAs("1"), initialize(), symbolsAs("2")},
        {"0 answered", "1 answered", "0 -32600 the server is shut down",
         "2 -32600 the server is shut down"});
    row("an exit is the last", {initialize(), spoilt, exitNotification, symbolsAs("1"), "{"},
        {"0 answered"}, 1);
    row("what is opened before an exit is not told of", {initialize(), spoilt, exitNotification},
        {"0 answered"}, 1);
    row("an exit that is asked for", {initialize(), R"({"jsonrpc":"2.0","id":1,"method":"exit"})"},
        {"0 answered", "1 -32601 no method exit"});
    row("an exit of another protocol", {initialize(), R"({"jsonrpc":"1.0","method":"exit"})"},
        {"0 answered", R"(none -32600 jsonrpc is not "2.0")"});
    row("an exit with params", {initialize(), shutdownAs("1"), told("exit", {{"code", 3}})},
        {"0 answered", "1 answered"}, 0);
    row("two exits", {initialize(), exitNotification, shutdownAs("1"), exitNotification},
        {"0 answered"}, 1);
}

void MessageOrderTest::times() {
    QFETCH(Bodies, messages);
    Conversation conversation;
    QTEST(shortened(conversation.say(messages)), "expected");
    QTEST(conversation.server.exitStatus().value_or(-1), "status");
}

// "answered" texts, then how the program ends.
void MessageOrderTest::streams_data() {
    QTest::addColumn<Bodies>("messages");
    QTest::addColumn<QByteArray>("behind");
    QTest::addColumn<QStringList>("expected");
    QTest::addColumn<QString>("end");
    const auto row = [](const char *name, const Bodies &messages, const QByteArray &behind,
                        const QStringList &expected, const char *end) {
        QTest::newRow(name) << messages << behind << expected << QString(end);
    };
    const QByteArray bad = "Content-Length: -1\r\n\r\n";
    const QByteArray asksToExit = R"({"jsonrpc":"2.0","id":1,"method":"exit"})";
    row("an exit that is asked for ends nothing",
        {initialize(), asksToExit, shutdownRequest, exitNotification}, "",
        {"0 answered", "1 -32601 no method exit", "9 answered"}, "0 ");
    row("a text that tells of an exit ends nothing",
        {initialize(), opened(uri, "\"exit\""), shutdownRequest, exitNotification}, "",
        {"0 answered", "9 answered"}, "0 ");
    row("an exit of another protocol ends nothing",
        {initialize(), R"({"jsonrpc":"1.0","method":"exit"})", shutdownRequest, exitNotification},
        "", {"0 answered", R"(none -32600 jsonrpc is not "2.0")", "9 answered"}, "0 ");
    row("an exit that is written with an escape",
        {initialize(), shutdownRequest, R"({"jsonrpc":"2.0","method":"\u0065xit"})"}, "",
        {"0 answered", "9 answered"}, "0 ");
    row("a fault behind an exit is not seen", {initialize(), exitNotification}, bad, {"0 answered"},
        "1 ");
    row("a shutdown without an exit", {initialize(), shutdownRequest}, "",
        {"0 answered", "9 answered"}, "1 ");
    row("a fault in the first header", {}, bad, {}, "2 Content-Length is no number");
    row("an editor that breaks off in a message", {initialize()}, "Content-Length: 9\r\n\r\n{}",
        {"0 answered"}, "2 the input ends inside a message");
    row("messages without their headers", {}, initialize() + "\n\n", {},
        "2 a header without Content-Length");
}

void MessageOrderTest::streams() {
    QFETCH(Bodies, messages);
    QFETCH(QByteArray, behind);
    QByteArray input;
    for (const QByteArray &body : qAsConst(messages))
        input += ctl::framed(body);
    input += behind;
    QBuffer in(&input);
    QVERIFY(in.open(QIODevice::ReadOnly));
    QBuffer out;
    QVERIFY(out.open(QIODevice::ReadWrite));
    const ctl::ServingEnd end = ctl::serve(in, out);
    QVERIFY(out.seek(0));
    QStringList answers;
    for (ctl::Frame frame = ctl::readFrame(out); frame.kind == ctl::Frame::Kind::Message;
         frame = ctl::readFrame(out))
        answers.append(shortened(QString::fromUtf8(frame.body)));
    QTEST(answers, "expected");
    QTEST(QString("%1 %2").arg(QString::number(end.status), end.error), "end");
}

// It goes on until the input ends, as it does when the editor is gone.
void MessageOrderTest::anEditorThatReadsNoMore() {
    QByteArray input = ctl::framed(initialize()) + ctl::framed(shutdownRequest);
    QBuffer in(&input);
    QVERIFY(in.open(QIODevice::ReadOnly));
    QBuffer out;
    QVERIFY(out.open(QIODevice::ReadOnly));
    QTest::ignoreMessage(QtWarningMsg, "QIODevice::write (QBuffer): ReadOnly device");
    QTest::ignoreMessage(QtWarningMsg, "QIODevice::write (QBuffer): ReadOnly device");
    const ctl::ServingEnd end = ctl::serve(in, out);
    QCOMPARE(end.status, 1);
    QCOMPARE(end.error, QString());
}

QUORVANE_TEST_MAIN(QCoreApplication, MessageOrderTest)

#include "message_order_test.moc"
