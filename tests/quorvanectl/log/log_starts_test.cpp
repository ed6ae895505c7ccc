// Where a start ends and the next one begins, and what is kept of each.
#include "quorvanectl/log/log_starts.h"

#include "support/staged_main.h"
#include "written_log.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QMap>

#include <algorithm>
#include <utility>

using ctl::LogStart;
using support::entriesOf;
using support::logOf;
using support::startsIn;

namespace {

// What a line below stands for; all others are lines of the log themselves.
const QMap<QString, QString> shortForms{
    {"search", "[task check_1] started kind=check"},
    {"found", "[task check_1] phase=check elapsedMs=0 found"},
    {"stop-search", "[task check_1] cancel requested by user"},
    {"apply", "[task apply_2] started kind=apply"},
    {"stop-apply", "[task apply_2] cancel requested by user"},
    {"setup", "[task setup_3] started kind=setup"},
    {"set-up", "[task setup_3] phase=setup elapsedMs=0"},
    {"settings", "Settings are not available: d is held by another program."},
    {"passed", "Precheck passed for p"},
    {"warned", "Precheck warnings:\nx"},
    {"refused", "Project file not found: p\nLog: l"},
    {"none-chosen", "未选择 yslib 项目。"},
    {"launch", "Launching a b"},
    {"end", "Target exited with code 0. Log: l"}};

QStringList written(const QString &line) {
    QStringList lines;
    for (const QString &word : line.split(' '))
        lines.append(shortForms.value(word, word));
    return lines;
}

// The lines of each start by their numbers, counted from 1: "1 2 | 3".
QString cutOf(const QVector<LogStart> &starts, const QStringList &lines) {
    QStringList told;
    for (const LogStart &start : starts) {
        QStringList numbers;
        for (const ctl::LogEntry &entry : start.entries)
            numbers.append(QString::number(
                entry.time - startsIn(logOf(lines.mid(0, 1))).first().entries.first().time + 1));
        told.append(numbers.join(' '));
    }
    return told.join(" | ");
}

QString textsOf(const LogStart &start) {
    QString texts;
    for (const ctl::LogEntry &entry : start.entries)
        texts += ctl::timeText(entry.time) + ' ' + entry.text + '|';
    return texts;
}

} // namespace

class LogStartsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void whereTheNextOneBegins_data();
    void whereTheNextOneBegins();
    void onlyTheLastIsLast();
    void whatWasWrittenBefore();
    void whatIsKept_data();
    void whatIsKept();
    void littleIsHeldOfAStartWithoutAnEnd();
    void startsThatAreLeft_data();
    void startsThatAreLeft();
    void whatMemoryIsLent_data();
    void whatMemoryIsLent();
    void aLogWithoutLines();
};

void LogStartsTest::whereTheNextOneBegins_data() {
    QTest::addColumn<QString>("lines");
    QTest::addColumn<QString>("cut");
    const auto row = [](const char *name, const QString &lines, const QString &cut) {
        QTest::newRow(name) << lines << cut;
    };
    row("an unknown line begins the first", "x search y launch end z", "1 2 3 4 5 6");
    row("an unknown line begins no other", "launch end x search", "1 2 3 | 4");
    row("a cancelled search, and one more", "search stop-search search found passed launch",
        "1 2 3 4 5 6");
    row("an update that was to be cancelled, and a search", "search found apply stop-apply search",
        "1 2 3 4 | 5");
    row("another project was chosen: checked, and searched for once more",
        "search found passed search found passed launch", "1 2 3 4 5 6 7");
    row("checked while the search still goes on, and another search",
        "search passed search found launch", "1 2 | 3 4 5");
    row("a search behind the check", "passed search found launch", "1 2 3 4");
    row("an update while the line runs", "launch apply", "1 | 2");
    row("installers after the line", "launch end setup set-up", "1 2 | 3 4");
    row("an update before it", "search found apply launch", "1 2 3 4");
    row("settings once it runs", "launch settings", "1 | 2");
    row("settings before it", "settings search settings launch", "1 2 3 4");
    row("a check once it runs", "launch passed launch", "1 | 2 3");
    row("warnings of a check once it runs", "launch warned passed", "1 | 2 3");
    row("warnings before it", "warned passed launch", "1 2 3");
    row("a check that fails once it runs", "launch refused", "1 | 2");
    row("a check that fails again", "refused refused", "1 | 2");
    row("a start without a project, twice", "none-chosen none-chosen", "1 | 2");
    row("a start that fails", "launch none-chosen", "1 2");
    row("one that fails after the line's end", "launch end none-chosen", "1 2 | 3");
    row("a phase and a button begin nothing", "launch end found stop-search", "1 2 3 4");
    row("the end of a line that runs on is told behind what the user did",
        "launch search found end", "1 4 | 2 3");
    row("the same, and another line", "launch search end launch end", "1 3 | 2 4 5");
    row("the same, and two lines run", "launch passed launch end end", "1 | 2 3 4 5");
    row("one that has ended already", "launch end search end", "1 2 | 3 4");
    row("the end of the start before the last one", "launch search launch search end",
        "1 | 2 3 5 | 4");
    row("an end that belongs to nothing", "end search", "1 | 2");
    row("two ends", "launch end end search", "1 2 3 | 4");
}

void LogStartsTest::whereTheNextOneBegins() {
    QFETCH(QString, lines);
    const QStringList log = written(lines);
    QTEST(cutOf(startsIn(logOf(log)), log), "cut");
}

void LogStartsTest::onlyTheLastIsLast() {
    const auto starts = startsIn(logOf(written("launch launch launch")));
    QCOMPARE(starts.size(), 3);
    QVERIFY(!starts[0].isLast && !starts[1].isLast && starts[2].isLast);
}

// Of another start too, to which a late end belongs.
void LogStartsTest::whatWasWrittenBefore() {
    const auto starts = startsIn(logOf(written("launch search end launch launch")));
    QCOMPARE(starts.size(), 3);
    QVERIFY(!starts[0].before);
    QCOMPARE(*starts[1].before, starts[0].entries.first().time);
    QCOMPARE(*starts[2].before, starts[1].entries.last().time);
}

void LogStartsTest::whatIsKept_data() {
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("kept");
    QTest::addColumn<qint64>("leftOut");
    QTest::newRow("all") << 200 << 200 << qint64(0);
    QTest::newRow("one too many") << 201 << 200 << qint64(1);
    QTest::newRow("as many as are held at once") << 300 << 200 << qint64(100);
    QTest::newRow("one more than are held at once") << 301 << 200 << qint64(101);
    QTest::newRow("very many") << 5000 << 200 << qint64(4800);
}

void LogStartsTest::whatIsKept() {
    QFETCH(int, count);
    QStringList lines;
    for (int i = 0; i < count; ++i)
        lines.append(QString::number(i));
    const LogStart start = startsIn(logOf(lines)).value(0);
    QTEST(start.entries.size(), "kept");
    QTEST(start.leftOut, "leftOut");
    QCOMPARE(start.entries.at(99).text, QByteArray("99"));
    QCOMPARE(start.entries.at(100).text, QByteArray::number(count - 100));
    QCOMPARE(start.entries.last().text, QByteArray::number(count - 1));
}

void LogStartsTest::littleIsHeldOfAStartWithoutAnEnd() {
    ctl::StartSplitter splitter([](LogStart *) {});
    QVector<QByteArray> texts;
    for (int i = 0; i < 5000; ++i) {
        texts.append(QByteArray::number(i));
        ctl::LogEntry entry;
        entry.text = texts.last();
        splitter.add(&entry);
    }
    const auto held = std::count_if(texts.begin(), texts.end(),
                                    [](const QByteArray &text) { return !text.isDetached(); });
    QVERIFY2(held >= 200 && held <= 400, qPrintable(QString::number(held)));
}

void LogStartsTest::startsThatAreLeft_data() {
    QTest::addColumn<int>("taken"); // each so many-th one
    QTest::addColumn<bool>("givesBack");
    QTest::newRow("none is left") << 1 << false;
    QTest::newRow("each other one is left") << 2 << false;
    QTest::newRow("most are left") << 10 << false;
    QTest::newRow("for each one that is taken another is given back") << 1 << true;
}

// Their memory serves those behind them, of which nothing is lost and to which nothing is added.
void LogStartsTest::startsThatAreLeft() {
    QFETCH(int, taken);
    QFETCH(bool, givesBack);
    QStringList lines;
    for (int i = 0; i < 60; ++i) {
        lines += written("search found passed launch end");
        for (int further = 0; further < i * i % 300; ++further)
            lines.append(QString(further * i % 1700, 'x') + '\n' + QString::number(i));
    }
    const QByteArray log = logOf(lines);
    LogStart other = startsIn(logOf({"another", QString(9000, 'y')})).value(0);
    QStringList told;
    int count = 0;
    ctl::StartSplitter splitter([&](LogStart *start) {
        if (count++ % taken != 0)
            return;
        const LogStart kept = std::move(*start);
        if (givesBack)
            *start = std::exchange(other, kept);
        told.append(textsOf(kept));
    });
    QByteArray bytes = log;
    QBuffer buffer(&bytes);
    QVERIFY(buffer.open(QIODevice::ReadOnly));
    ctl::LogReader reader(buffer);
    ctl::LogEntry entry;
    while (reader.next(&entry))
        splitter.add(&entry);
    splitter.end();
    QStringList all;
    const auto starts = startsIn(log); // takes each
    for (int i = 0; i < starts.size(); i += taken)
        all.append(textsOf(starts[i]));
    QCOMPARE(starts.size(), 60);
    QCOMPARE(told, all);
}

void LogStartsTest::whatMemoryIsLent_data() {
    QTest::addColumn<int>("length"); // of each text, in bytes
    QTest::addColumn<bool>("isLent");
    QTest::newRow("that of usual texts") << 100 << true;
    QTest::newRow("not that of long ones") << 2000 << false;
}

void LogStartsTest::whatMemoryIsLent() {
    QFETCH(int, length);
    const QByteArray launch = QByteArray("Launching a ").leftJustified(length, 'b');
    const QStringList lines{launch, launch, launch, launch};
    ctl::StartSplitter splitter([](LogStart *) {});
    bool isLent = false;
    for (ctl::LogEntry &entry : entriesOf(logOf(lines))) {
        splitter.add(&entry);
        isLent = isLent || entry.text.capacity() > 0;
    }
    QTEST(isLent, "isLent");
}

void LogStartsTest::aLogWithoutLines() {
    QCOMPARE(startsIn("").size(), 0);
    QCOMPARE(startsIn("no\nlog\n").size(), 0);
}

QUORVANE_TEST_MAIN(QCoreApplication, LogStartsTest)
#include "log_starts_test.moc"
