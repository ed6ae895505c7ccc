// The envelopes of messages: what is read of a stream, in whatever pieces it comes, and what ends it.
#include "quorvanectl/language_server/frames.h"

#include "support/staged_main.h"

#include <QBuffer>
#include <QCoreApplication>

namespace {

// A stream that hands out its bytes so many at a time.
class Drip : public QIODevice {
public:
    Drip(const QByteArray &content, qint64 atATime)
        : bytes(content)
        , most(atATime) {
        (void)open(ReadOnly | Unbuffered);
    }
    [[nodiscard]] bool isSequential() const override { return true; }

protected:
    qint64 readData(char *data, qint64 length) override {
        const qint64 count = qMin(qMin(length, most), qint64(bytes.size()));
        std::copy_n(bytes.begin(), count, data);
        bytes.remove(0, int(count));
        return count;
    }
    qint64 writeData(const char *, qint64) override { return -1; }

private:
    QByteArray bytes;
    qint64 most;
};

// The bodies, then what came behind them: "end", or the fault.
QStringList readAll(QIODevice &in) {
    QStringList read;
    for (;;) {
        const ctl::Frame frame = ctl::readFrame(in);
        if (frame.kind == ctl::Frame::Kind::Message)
            read.append(QString::fromUtf8(frame.body));
        else
            return read << (frame.kind == ctl::Frame::Kind::End ? "end" : frame.fault);
    }
}

} // namespace

class FramesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void streams_data();
    void streams();
    void aBodyIsAsLargeAsTheLimit();
    void whatIsFramedIsRead();
};

void FramesTest::streams_data() {
    QTest::addColumn<QByteArray>("stream");
    QTest::addColumn<QStringList>("expected");
    const auto row = [](const char *name, const QByteArray &stream, const QStringList &expected) {
        QTest::newRow(name) << stream << expected;
    };
    const QByteArray two = "Content-Length: 2\r\n\r\n{}";
    row("nothing", "", {"end"});
    row("one message", two, {"{}", "end"});
    row("messages that are joined", two + "Content-Length: 4\r\n\r\n\r\n\n{" + two,
        {"{}", "\r\n\n{", "{}", "end"});
    row("an empty body", "Content-Length: 0\r\n\r\n" + two, {"", "{}", "end"});
    row("another header before it and behind it",
        "Content-Type: application/vscode-jsonrpc; charset=utf-8\r\nContent-Length: 2\r\nX: "
        "y\r\n\r\n{}",
        {"{}", "end"});
    row("names in any case, blanks around the number", "CONTENT-length:  2 \r\n\r\n{}",
        {"{}", "end"});
    row("lines that end in a line feed alone", "Content-Length: 2\n\n{}", {"{}", "end"});
    row("bytes, not characters, are counted", "Content-Length: 3\r\n\r\n\xe9\xab\x98",
        {QString::fromUtf8("\xe9\xab\x98"), "end"});
    row("no length", "Content-Type: x\r\n\r\n{}", {"a header without Content-Length"});
    row("an empty header", two + "\r\n{}", {"{}", "a header without Content-Length"});
    row("no number", "Content-Length: two\r\n\r\n{}", {"Content-Length is no number"});
    row("no number at all", "Content-Length:\r\n\r\n{}", {"Content-Length is no number"});
    row("a negative number", "Content-Length: -2\r\n\r\n{}", {"Content-Length is no number"});
    row("a signed number", "Content-Length: +2\r\n\r\n{}", {"Content-Length is no number"});
    row("a hexadecimal number", "Content-Length: 0x2\r\n\r\n{}", {"Content-Length is no number"});
    row("a length above the limit", "Content-Length: 67108865\r\n\r\n{}",
        {"Content-Length is above 64 MiB"});
    row("a length beyond all numbers", "Content-Length: 99999999999999999999\r\n\r\n{}",
        {"Content-Length is above 64 MiB"});
    row("a line without a colon", "Content-Length 2\r\n\r\n{}",
        {"a line of a header has no colon"});
    row("an end inside a header", two + "Content-Le", {"{}", "the input ends inside a header"});
    row("an end between two lines", "Content-Length: 2\r\n", {"the input ends inside a header"});
    row("an end inside a body", "Content-Length: 3\r\n\r\n{}", {"the input ends inside a message"});
    row("a large length and no body", "Content-Length: 67108864\r\n\r\n",
        {"the input ends inside a message"});
    row("the longest line", "X:" + QByteArray(4092, 'x') + "\r\n" + two, {"{}", "end"});
    row("a line that is too long", "X:" + QByteArray(4095, 'x') + "\r\n" + two,
        {"a line of a header is too long"});
    row("the most lines", QByteArray("X: y\r\n").repeated(62) + two, {"{}", "end"});
    row("too many lines", QByteArray("X: y\r\n").repeated(63) + two,
        {"a header has too many lines"});
}

void FramesTest::streams() {
    QFETCH(QByteArray, stream);
    QFETCH(QStringList, expected);
    QBuffer whole(&stream);
    QVERIFY(whole.open(QIODevice::ReadOnly));
    QCOMPARE(readAll(whole), expected);
    for (const int atATime : {1, 2, 7}) {
        Drip drip(stream, atATime);
        QCOMPARE(readAll(drip), expected);
    }
}

void FramesTest::aBodyIsAsLargeAsTheLimit() {
    QByteArray stream = ctl::framed(QByteArray(int(ctl::largestMessage), 'x'));
    QBuffer in(&stream);
    QVERIFY(in.open(QIODevice::ReadOnly));
    QCOMPARE(qint64(ctl::readFrame(in).body.size()), ctl::largestMessage);
    QCOMPARE(readAll(in), QStringList("end"));
}

void FramesTest::whatIsFramedIsRead() {
    QCOMPARE(ctl::framed("{\"a\":\"\xe9\xab\x98\"}"),
             QByteArray("Content-Length: 11\r\n\r\n{\"a\":\"\xe9\xab\x98\"}"));
}

QUORVANE_TEST_MAIN(QCoreApplication, FramesTest)

#include "frames_test.moc"
