// What is made of the bytes of one message, whoever wrote them: a request, a notification, an answer, or the
// reason why it is none of them.
#include "quorvanectl/language_server/message.h"

#include "support/staged_main.h"

#include <QCoreApplication>
#include <QJsonDocument>

namespace {

QString idText(const QJsonValue &id) {
    if (id.isString())
        return '"' + id.toString() + '"';
    return id.isDouble() ? QString::number(id.toInt()) : QString("none");
}

// "request 3 shutdown", "notification exit", "answer 3", "refusal 3", "-32600 3 the reason".
QString described(const ctl::Message &message) {
    const QString id = idText(message.id);
    switch (message.kind) {
    case ctl::Message::Kind::Request:
        return QString("request %1 %2").arg(id, message.method);
    case ctl::Message::Kind::Notification:
        return "notification " + message.method;
    case ctl::Message::Kind::Response:
        return (message.isRefused ? "refusal " : "answer ") + id;
    case ctl::Message::Kind::Malformed:
        return QString("%1 %2 %3").arg(QString::number(int(message.error)), id, message.reason);
    }
    return {};
}

} // namespace

class MessageTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void bytesThatAreNoJson_data();
    void bytesThatAreNoJson();
    void kinds_data();
    void kinds();
    void severalInAList();
    void paramsAreKeptAsTheyCame();
};

// The id of such a message cannot be told, so none is answered to.
void MessageTest::bytesThatAreNoJson_data() {
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("reason");
    const auto row = [](const char *name, const QByteArray &body, const char *reason) {
        QTest::newRow(name) << body << QString(reason);
    };
    const QByteArray whole = R"({"jsonrpc":"2.0","id":1,"method":"shutdown"})";
    row("two messages under one header", whole + whole, "garbage at the end of the document");
    row("a message that is cut off in a list", R"({"params":[{} )", "unterminated array");
    row("one that is cut off in a text", whole.left(18), "unterminated string");
    row("a missing colon", R"({"jsonrpc" "2.0"})", "missing name separator");
    row("a comma too many", R"({"jsonrpc":"2.0",})", "object is missing after a comma");
    row("a missing comma", R"({"jsonrpc":"2.0" "id":1})", "unterminated object");
    row("keys without quotes", "{jsonrpc:2}", "unterminated object");
    row("quotes of the other kind", "{'jsonrpc':'2.0'}", "unterminated object");
    row("a number with two points", R"({"id":1.2.3})", "unterminated object");
    row("a header in the place of the message", "Content-Length: 2\r\n", "illegal value");
    row("bytes that are no UTF-8", "{\"jsonrpc\":\"\xff\xfe\"}", "invalid UTF8 string");
    row("an escape that there is not", R"({"jsonrpc":"\u12"})", "invalid escape sequence");
    row("brackets without an end", QByteArray("[").repeated(5000), "too deeply nested document");
    row("a number alone", "3", "illegal value");
    row("nothing but blanks", "  \r\n", "illegal value");
}

void MessageTest::bytesThatAreNoJson() {
    QFETCH(QByteArray, body);
    QFETCH(QString, reason);
    QCOMPARE(described(ctl::parsedMessage(body)), "-32700 none " + reason);
}

void MessageTest::kinds_data() {
    QTest::addColumn<QByteArray>("members");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const QByteArray &members, const char *expected) {
        QTest::newRow(name) << members << QString(expected);
    };
    const char *const noId = "-32600 none id is neither a text nor a whole number";
    row("a request", R"("id":3,"method":"a")", "request 3 a");
    row("a negative id", R"("id":-3,"method":"a")", "request -3 a");
    row("an id that is an empty text", R"("id":"","method":"a")", "request \"\" a");
    row("a whole number that is written with a point", R"("id":3.0,"method":"a")", "request 3 a");
    row("a method without a name", R"("id":3,"method":"")", "request 3 ");
    row("a method that repeats itself: the last counts", R"("method":"a","method":"b")",
        "notification b");
    row("a notification", R"("method":"a","params":{})", "notification a");
    row("params that are null", R"("method":"a","params":null)", "notification a");
    row("an answer", R"("id":3,"result":null)", "answer 3");
    row("an answer that refuses", R"("id":"x","error":{"code":1,"message":""})", "refusal \"x\"");
    row("an answer with both", R"("id":3,"result":1,"error":{})", "refusal 3");
    row("an answer to nobody", R"("result":1)", "answer none");
    row("an answer to an id that is none", R"("id":{},"result":1)", "answer none");
    row("a method beside a result is a request", R"("id":3,"method":"a","result":1)",
        "request 3 a");

    row("neither a method nor a result", R"("id":3,"params":{})", "-32600 3 method is no text");
    row("a method that is null", R"("id":3,"method":null,"result":1)",
        "-32600 3 method is no text");
    row("a method in a list", R"("id":3,"method":["a"])", "-32600 3 method is no text");
    row("an id that is null", R"("id":null,"method":"a")", noId);
    row("an id that is true", R"("id":true,"method":"a")", noId);
    row("an id that is an object", R"("id":{"n":3},"method":"a")", noId);
    row("an id above all whole numbers", R"("id":2147483648,"method":"a")", noId);
    row("an id that is hardly a number", R"("id":1e300,"method":"a")", noId);
    row("params that are a number", R"("id":3,"method":"a","params":4)",
        "-32600 3 params is neither an object nor an array");
    row("params of a notification that are a text", R"("method":"a","params":"b")",
        "-32600 none params is neither an object nor an array");
}

void MessageTest::kinds() {
    QFETCH(QByteArray, members);
    QFETCH(QString, expected);
    QCOMPARE(described(ctl::parsedMessage(R"({"jsonrpc":"2.0",)" + members + "}")), expected);
    // Of another protocol nothing is looked at but the id, so that its sender learns of it.
    const ctl::Message foreign = ctl::parsedMessage("{\"jsonrpc\":2," + members + "}");
    QVERIFY2(described(foreign).endsWith(" jsonrpc is not \"2.0\""),
             qPrintable(described(foreign)));
    QCOMPARE(int(foreign.error), -32600);
    QVERIFY(foreign.method.isNull());
}

void MessageTest::severalInAList() {
    const QByteArray whole = R"({"jsonrpc":"2.0","id":1,"method":"shutdown"})";
    QCOMPARE(described(ctl::parsedMessage('[' + whole + ',' + whole + ']')),
             QString("-32600 none the message is no object"));
}

void MessageTest::paramsAreKeptAsTheyCame() {
    const auto params = [](const QByteArray &text) {
        return ctl::parsedMessage(R"({"jsonrpc":"2.0","method":"a")" + text + "}").params;
    };
    QVERIFY(params("").isUndefined());
    QVERIFY(params(R"(,"params":null)").isNull());
    QCOMPARE(params(R"(,"params":[1])").toArray().size(), 1);
    QCOMPARE(params(R"(,"params":{"b":2})").toObject().value("b").toInt(), 2);
}

QUORVANE_TEST_MAIN(QCoreApplication, MessageTest)

#include "message_test.moc"
