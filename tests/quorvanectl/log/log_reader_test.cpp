// How bytes become the lines of a log: moments, cut texts, zero bytes, and devices that fail.
#include "quorvanectl/log/log_reader.h"

#include "support/staged_main.h"
#include "written_log.h"

#include <QCoreApplication>
#include <QIODevice>

#include <cstring>

using ctl::LogEntry;
using ctl::LogReader;
using ctl::LogTime;
using support::entriesOf;

namespace {

const QByteArray stamp = "2026-11-20 06:00:00 ";

// Gives what it has in small pieces, then its end or a failure.
class SlowDevice : public QIODevice {
public:
    SlowDevice(const QByteArray &content, int bytesAtOnce, bool breaks)
        : left(content)
        , piece(bytesAtOnce)
        , failsAtEnd(breaks) {
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }

protected:
    qint64 readData(char *data, qint64 size) override {
        if (left.isEmpty() && failsAtEnd) {
            setErrorString("the stick was pulled");
            return -1;
        }
        const int count = int(qMin(qint64(qMin(piece, left.size())), size));
        std::memcpy(data, left.constData(), size_t(count));
        left.remove(0, count);
        return count;
    }
    qint64 writeData(const char *, qint64) override { return -1; }

private:
    QByteArray left;
    const int piece;
    const bool failsAtEnd;
};

QStringList textsOf(LogReader *reader) {
    QStringList texts;
    LogEntry entry;
    while (reader->next(&entry))
        texts.append(QString::fromUtf8(entry.text));
    return texts;
}

} // namespace

class LogReaderTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { qputenv("TZ", "UTC"); }
    void moments_data();
    void moments();
    void textsThatAreNoMoment_data();
    void textsThatAreNoMoment();
    void aClockThatWasPutForwardHere();
    void linesWithATime_data();
    void linesWithATime();
    void daysThatTakeTurns();
    void whereATextIsCut_data();
    void whereATextIsCut();
    void anEntryThatIsUsedAgain();
    void zeroBytes();
    void anEditorsMark();
    void aLackingBeginning_data();
    void aLackingBeginning();
    void aByteAtATime();
    void aLineAcrossTheBuffersEnd();
    void theRestOfAVeryLongLineIsNoLine();
    void aDeviceThatFails();
    void aDeviceThatFailsAtOnce();
};

void LogReaderTest::moments_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<qint64>("seconds");
    const auto row = [](const char *text, qint64 seconds) {
        QTest::newRow(text) << text << seconds;
    };
    row("1970-01-01 00:00:00", 0);
    row("1969-12-31 23:59:59", -1);
    row("2000-02-29 12:00:00", 951825600);
    row("2100-03-01 00:00:00", 4107542400);
    row("2026-12-31 23:59:59", 1798761599);
    row("9999-12-31 23:59:59", 253402300799);
}

// An option's value and a line's beginning, which are read by different hands.
void LogReaderTest::moments() {
    QFETCH(QString, text);
    LogTime read = 0;
    QVERIFY(ctl::readTime(text, &read));
    QTEST(read, "seconds");
    QTEST(entriesOf(text.toUtf8() + " a\n").value(0).time, "seconds");
    QCOMPARE(ctl::timeText(read), text);
}

void LogReaderTest::textsThatAreNoMoment_data() {
    QTest::addColumn<QString>("text");
    for (const char *const text : {"",
                                   "2026",
                                   "2026-11",
                                   "2026-11-2",
                                   "26-11-20",
                                   "20.11.2026",
                                   "2026/11/20",
                                   "2026-13-01",
                                   "2026-00-10",
                                   "2026-11-31",
                                   "2026-02-29",
                                   "2026-11-00",
                                   "2026-11-20 06:00",
                                   "2026-11-20 6:00:00",
                                   "2026-11-20T06:00:00",
                                   "2026-11-20 24:00:00",
                                   "2026-11-20 06:60:00",
                                   "2026-11-20 06:00:60",
                                   "2026-11-20 06:00:00Z",
                                   "2026-11-20  06:00:00",
                                   "2026-11-20 ",
                                   " 2026-11-20"})
        QTest::newRow(text) << text;
}

void LogReaderTest::textsThatAreNoMoment() {
    QFETCH(QString, text);
    LogTime read = 7;
    QVERIFY(!ctl::readTime(text, &read));
    QCOMPARE(read, LogTime(7));
}

// 02:30 is no time of this day in New York, and a line PC in another country wrote at it.
void LogReaderTest::aClockThatWasPutForwardHere() {
    qputenv("TZ", "EST5EDT,M3.2.0,M11.1.0");
    LogTime read = 0;
    QVERIFY(ctl::readTime("2026-03-08 02:30:00", &read));
    QCOMPARE(ctl::timeText(read), QString("2026-03-08 02:30:00"));
}

void LogReaderTest::linesWithATime_data() {
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<bool>("hasTime");
    const auto row = [](const char *line, bool hasTime) {
        QTest::newRow(line) << QByteArray(line) << hasTime;
    };
    row("2026-11-20 06:00:01 x", true);
    row("2026-11-20 06:00:01 ", true);
    row("2026-11-20 06:00:01", false);
    row("2026-11-20 06:00:01\tx", false);
    row("2026-11-20T06:00:01 x", false);
    row("2026-11-20 06.00.01 x", false);
    row("2026-1-20 06:00:01 xx", false);
    row(" 2026-11-20 06:00:01 x", false);
    row("2026-00-20 06:00:01 x", false);
    row("2026-13-20 06:00:01 x", false);
    row("2026-11-00 06:00:01 x", false);
    row("2026-11-32 06:00:01 x", false);
    row("2026-11-31 06:00:01 x", false);
    row("2026-02-28 06:00:01 x", true);
    row("2026-02-29 06:00:01 x", false);
    row("2024-02-29 06:00:01 x", true);
    row("1900-02-29 06:00:01 x", false);
    row("2000-02-29 06:00:01 x", true);
    row("2024-02-30 06:00:01 x", false);
    row("2026-01-31 23:59:59 x", true);
    row("2026-11-20 06:00:60 x", false);
    row("2026-11-20 24:00:01 x", false);
    row("2026-11-20 06:60:01 x", false);
    row("2026-11-20 0:6:00:01 x", false);
    row("2026-11-20 0/:00:01 x", false);
    row("2026-11-20 :6:00:01 x", false);
    row("2026-11-20 06:a0:01 x", false);
    row("2026-11-20 06:00:0b x", false);
    row("2026-11-20 06 00:01 x", false);
    row("2026-11-20 06:00 01 x", false);
    row("2026-11-2006:00:01  x", false);
    row("202a-11-20 06:00:01 x", false);
    row("a026-11-20 06:00:01 x", false);
    row("2026-1b-20 06:00:01 x", false);
    row("2026-11-2c 06:00:01 x", false);
    row("2026 11-20 06:00:01 x", false);
    row("2026-11 20 06:00:01 x", false);
    row("0000-02-29 06:00:01 x", true);
    row("9999-12-31 23:59:59 x", true);
}

void LogReaderTest::linesWithATime() {
    QFETCH(QByteArray, line);
    QFETCH(bool, hasTime);
    const auto entries = entriesOf(stamp + "first\n" + line + "\n");
    QCOMPARE(entries.size(), hasTime ? 2 : 1);
    if (!hasTime) // then it is a further line, and not lost
        QCOMPARE(entries[0].text, "first\n" + line);
}

// The day of the line before is no other line's, and that of a line without a time is nobody's.
void LogReaderTest::daysThatTakeTurns() {
    const auto entries =
        entriesOf("2026-11-20 23:59:59 a\n2026-11-21 00:00:00 b\n"
                  "2026-11-20 00:00:01 c\n2026-11-31 00:00:02 no\n2026-11-31 00:00:02 day\n"
                  "2026-11-20 00:00:03 d\n2026-12-01 24:00:00 further\n"
                  "2026-11-20 00:00:04 e\n");
    QStringList told;
    for (const LogEntry &entry : entries)
        told.append(ctl::timeText(entry.time) + ' ' + entry.text);
    QCOMPARE(told,
             (QStringList{"2026-11-20 23:59:59 a", "2026-11-21 00:00:00 b",
                          "2026-11-20 00:00:01 c\n2026-11-31 00:00:02 no\n2026-11-31 00:00:02 day",
                          "2026-11-20 00:00:03 d\n2026-12-01 24:00:00 further",
                          "2026-11-20 00:00:04 e"}));
}

void LogReaderTest::whereATextIsCut_data() {
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<bool>("isCut");
    constexpr int most = LogReader::longestText;
    const auto row = [](const char *name, const QByteArray &text, bool isCut) {
        QTest::newRow(name) << text << isCut;
    };
    row("as long as may be", QByteArray(most, 'a'), false);
    row("a byte longer", QByteArray(most + 1, 'a'), true);
    row("as long, with a further line", QByteArray(most - 2, 'a') + "\nb", false);
    row("a further line that is a byte too long", QByteArray(most - 2, 'a') + "\nbc", true);
    row("no room for the line feed", QByteArray(most, 'a') + "\nb", true);
}

void LogReaderTest::whereATextIsCut() {
    QFETCH(QByteArray, text);
    const LogEntry entry = entriesOf(stamp + text + "\n" + stamp + "next\n").value(0);
    QTEST(entry.isCut, "isCut");
    QCOMPARE(entry.text, text.left(LogReader::longestText));
}

// It keeps its memory and nothing else. A copy of its text is not touched.
void LogReaderTest::anEntryThatIsUsedAgain() {
    const QByteArray longText(LogReader::longestText + 1, 'a');
    SlowDevice device(QByteArray(3, '\0') + stamp + longText + "\n" + stamp + "cancelled\n" +
                          stamp + "\n" + stamp + "b\nc\n",
                      1000, false);
    LogReader reader(device);
    LogEntry entry;
    QVERIFY(reader.next(&entry));
    QVERIFY(entry.isCut);
    QCOMPARE(entry.zeros, qint64(3));
    const QByteArray copy = entry.text;
    QVERIFY(reader.next(&entry));
    QVERIFY(!entry.isCut);
    QCOMPARE(entry.zeros, qint64(0));
    QCOMPARE(entry.text, QByteArray("cancelled"));
    QVERIFY(entry.line != nullptr);
    QCOMPARE(copy, longText.left(LogReader::longestText));
    QVERIFY(reader.next(&entry));
    QCOMPARE(entry.text, QByteArray(""));
    QVERIFY(entry.line == nullptr);
    QVERIFY(reader.next(&entry));
    QCOMPARE(entry.text, QByteArray("b\nc"));
    QVERIFY(!reader.next(&entry));
}

void LogReaderTest::zeroBytes() {
    const auto entries = entriesOf(QByteArray(3, '\0') + stamp + "a\n" + QByteArray(2, '\0') +
                                   "further\n" + QByteArray(4, '\0') + "\n" + stamp + "b\n");
    QCOMPARE(entries.size(), 2);
    QCOMPARE(entries[0].zeros, qint64(3));
    QCOMPARE(entries[0].text, QByteArray("a\nfurther\n"));
    QCOMPARE(entries[1].zeros, qint64(0));
}

// At the beginning of the file alone: elsewhere it belongs to a text.
void LogReaderTest::anEditorsMark() {
    const QByteArray mark = "\xEF\xBB\xBF";
    auto entries = entriesOf(mark + stamp + "a\n" + mark + stamp + "b\n");
    QCOMPARE(entries.size(), 1);
    QCOMPARE(entries[0].text, "a\n" + mark + stamp + "b");
    entries = entriesOf(mark + "\n" + stamp + "b\n");
    QCOMPARE(entries.size(), 1);
    QCOMPARE(entries[0].text, QByteArray("b"));
}

void LogReaderTest::aLackingBeginning_data() {
    QTest::addColumn<QByteArray>("log");
    QTest::addColumn<bool>("lacks");
    const auto row = [](const char *name, const QByteArray &log, bool lacks) {
        QTest::newRow(name) << log << lacks;
    };
    row("said", "(the last 9 bytes of 99)\n" + stamp + "a\n", true);
    row("said behind the rest of a line", "b\n(the last 9 bytes of 99)\n" + stamp + "a\n", true);
    row("said before the rest of a line", "(the last 9 bytes of 99)\nb\n" + stamp + "a\n", true);
    row("something else before the first time", "(not a regular file)\n" + stamp + "a\n", false);
    row("the same words within a text", stamp + "a\n(the last 9 bytes of 99)\n", false);
}

void LogReaderTest::aLackingBeginning() {
    QFETCH(QByteArray, log);
    SlowDevice device(log, 1000, false);
    LogReader reader(device);
    QVERIFY(textsOf(&reader).first().startsWith('a'));
    QTEST(reader.lacksBeginning(), "lacks");
}

void LogReaderTest::aByteAtATime() {
    SlowDevice device(stamp + "a\r\nb\n" + stamp + "c", 1, false);
    LogReader reader(device);
    QVERIFY(!reader.isLog());
    QCOMPARE(textsOf(&reader), (QStringList{"a\nb", "c"}));
    QVERIFY(reader.isLog());
    QCOMPARE(reader.error(), QString());
}

// Of what is read at once, or of all that can be held.
void LogReaderTest::aLineAcrossTheBuffersEnd() {
    for (const int end : {1 << 17, 1 << 18, 1 << 20}) {
        for (const int before : {end - 22, end - 21, end - 20, end - 1}) {
            const QByteArray first = stamp + QByteArray(before - stamp.size(), 'a') + "\n";
            const auto entries = entriesOf(first + stamp + "b\n" + stamp + "c\n");
            QCOMPARE(entries.size(), 3);
            QCOMPARE(entries[1].text, QByteArray("b"));
            QCOMPARE(entries[2].text, QByteArray("c"));
        }
    }
}

// A time in the middle of it begins nothing.
void LogReaderTest::theRestOfAVeryLongLineIsNoLine() {
    constexpr int buffer = 1 << 20;
    const QByteArray longLine = stamp + QByteArray(buffer - stamp.size(), 'a') + stamp + "no line";
    auto entries = entriesOf(longLine + "\n" + stamp + "b\n");
    QCOMPARE(entries.size(), 2);
    QCOMPARE(entries[1].text, QByteArray("b"));
    entries = entriesOf(longLine);
    QCOMPARE(entries.size(), 1);
    QCOMPARE(entries[0].isCut, true);
    entries = entriesOf(stamp + "first\n" + longLine + "\n" + stamp + "b\n");
    QCOMPARE(entries.size(), 3);
    QCOMPARE(entries[1].text, longLine.mid(stamp.size(), LogReader::longestText));
    QCOMPARE(entries[2].text, QByteArray("b"));
    entries = entriesOf(longLine + QByteArray(2 * buffer, 'a') + "\n" + stamp + "b\n");
    QCOMPARE(entries.size(), 2);
    QCOMPARE(entries[1].text, QByteArray("b"));
}

// What was read before is told.
void LogReaderTest::aDeviceThatFails() {
    SlowDevice device(stamp + "a\n" + stamp + "b\n", 1000, true);
    LogReader reader(device);
    QCOMPARE(textsOf(&reader), (QStringList{"a", "b"}));
    QCOMPARE(reader.error(), QString("the stick was pulled"));
}

void LogReaderTest::aDeviceThatFailsAtOnce() {
    SlowDevice device({}, 1, true);
    LogReader reader(device);
    QCOMPARE(textsOf(&reader), QStringList());
    QVERIFY(!reader.isLog());
    QCOMPARE(reader.error(), QString("the stick was pulled"));
}

QUORVANE_TEST_MAIN(QCoreApplication, LogReaderTest)
#include "log_reader_test.moc"
