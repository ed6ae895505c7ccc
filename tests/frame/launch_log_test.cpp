// The launch log: the bytes of a line, the view of one run, and that neither threads nor processes
// lose a line; one that cannot be written is lost in silence.
#include "frame/launch_log.h"

#include "frame/app_paths.h"
#include "support/file_kinds.h"
#include "support/message_capture.h"
#include "support/platform.h"
#include "support/staged_main.h"

#include <QRegularExpression>

#include <thread>
#include <vector>

namespace {

QByteArray logBytes() {
    QFile file(AppPaths::launchLogPath());
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void writeLog(const QByteArray &bytes) {
    QFile file(AppPaths::launchLogPath());
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), qint64(bytes.size()));
}

// Wine opens a file a hundred times more slowly.
const int linesOfEach = support::onWindows ? 1000 : 10000;

// How many whole lines "<time> <word> <number> end" there are for each number below `count`.
// Empty if a line is anything else.
QVector<int> countLines(const QString &word, int count) {
    QVector<int> seen(count, 0);
    const QRegularExpression form("^\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d (\\w+) (\\d+) end$");
    QList<QByteArray> lines = support::linesOf(logBytes()).split('\n');
    if (!lines.takeLast().isEmpty())
        return {};
    for (const QByteArray &line : qAsConst(lines)) {
        const auto match = form.match(QString::fromUtf8(line));
        if (!match.hasMatch() || match.captured(2).toInt() >= count)
            return {};
        if (match.captured(1) == word)
            ++seen[match.captured(2).toInt()];
    }
    return seen;
}

} // namespace

class LaunchLogTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void writesOneLine_data();
    void writesOneLine();
    void theTimeIsLocal();
    void linesCanGoElsewhere();
    void linesAreAdded();
    void lineThatCannotBeWrittenIsLostInSilence();
    void pipeOrDeviceInItsPlaceIsNotWaitedFor_data();
    void pipeOrDeviceInItsPlaceIsNotWaitedFor();
    void missingDataFolderLosesTheLineInSilence();
    void viewShowsThisRunAlone();
    void viewOfAFirstRunShowsTheWholeFile();
    void viewReadsAReplacedFileFromItsStart();
    void viewReadsPastANul();
    void threadsLoseNoLine();
    void longLinesOfThreadsStayWhole();
    void processesLoseNoLine();
};

void LaunchLogTest::init() {
    QVERIFY(QDir().mkpath(AppPaths::dataDirectory()));
    QFile::remove(AppPaths::launchLogPath());
}

void LaunchLogTest::writesOneLine_data() {
    QTest::addColumn<QString>("message");
    QTest::addColumn<QByteArray>("tail");
    QTest::newRow("a plain message") << "Launching" << QByteArray(" Launching\n");
    QTest::newRow("an empty message leaves the time and one blank") << "" << QByteArray(" \n");
    QTest::newRow("Chinese as UTF-8") << "启动 中" << QByteArray(" 启动 中\n");
    QTest::newRow("per cent signs are not places")
        << "%1 %2 a%20b %%" << QByteArray(" %1 %2 a%20b %%\n");
    QTest::newRow("further lines stand as they are") << "one\ntwo\n" << QByteArray(" one\ntwo\n\n");
    QTest::newRow("white space stays") << "  a\t " << QByteArray("   a\t \n");
}

void LaunchLogTest::writesOneLine() {
    QFETCH(QString, message);
    const QDateTime before = QDateTime::currentDateTime();
    appendLaunchLog(message);
    const QDateTime after = QDateTime::currentDateTime();
    const QByteArray line = logBytes();
    QFETCH(QByteArray, tail);
    QCOMPARE(line.mid(19), support::textLines(tail));
    const auto time = QDateTime::fromString(line.left(19), "yyyy-MM-dd HH:mm:ss");
    QVERIFY(time.isValid());
    QVERIFY(time >= before.addSecs(-1) && time <= after);
}

// In a zone of its own, five and a half hours before the world's time: here the two may be one.
void LaunchLogTest::theTimeIsLocal() {
    if (support::onWindows)
        QSKIP("the zone is the system's there, not the environment's");
    QProcess probe;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("TZ", "XST-5:30");
    probe.setProcessEnvironment(environment);
    const QDateTime before = QDateTime::currentDateTimeUtc();
    probe.start(FRAME_PROBE, {"log", "zone", "1"});
    QVERIFY(probe.waitForFinished());
    const QDateTime after = QDateTime::currentDateTimeUtc();
    auto time = QDateTime::fromString(logBytes().left(19), "yyyy-MM-dd HH:mm:ss");
    QVERIFY(time.isValid());
    time.setTimeSpec(Qt::UTC);
    time = time.addSecs(-qint64((5 * 60 + 30) * 60));
    QVERIFY(time >= before.addSecs(-1) && time <= after);
}

void LaunchLogTest::linesCanGoElsewhere() {
    QStringList lines;
    redirectLaunchLog([&lines](const QString &message) { lines << message; });
    appendLaunchLog("one");
    appendLaunchLog("%1 two\nlines");
    redirectLaunchLog(nullptr);
    QCOMPARE(lines, (QStringList{"one", "%1 two\nlines"}));
    QVERIFY(!QFileInfo::exists(AppPaths::launchLogPath()));
    appendLaunchLog("three");
    QVERIFY(support::linesOf(logBytes()).endsWith(" three\n"));
    QCOMPARE(lines.size(), 2);
}

void LaunchLogTest::linesAreAdded() {
    writeLog("of an earlier run\n");
    appendLaunchLog("one");
    appendLaunchLog("two");
    const QList<QByteArray> lines = support::linesOf(logBytes()).split('\n');
    QCOMPARE(lines.size(), 4);
    QCOMPARE(lines[0], QByteArray("of an earlier run"));
    QVERIFY(lines[1].endsWith(" one"));
    QVERIFY(lines[2].endsWith(" two"));
}

void LaunchLogTest::lineThatCannotBeWrittenIsLostInSilence() {
    QVERIFY(QDir().mkpath(AppPaths::launchLogPath())); // a folder in its place
    const support::MessageCapture capture;
    const RunLogView view;
    appendLaunchLog("lost");
    QCOMPARE(view.text(), QString());
    QVERIFY(QDir(AppPaths::launchLogPath()).isEmpty());
    QCOMPARE(capture.messages(), QStringList());
    QVERIFY(QDir().rmdir(AppPaths::launchLogPath()));
}

void LaunchLogTest::pipeOrDeviceInItsPlaceIsNotWaitedFor_data() {
    QTest::addColumn<QString>("target"); // of a link; empty for a pipe
    QTest::newRow("a pipe") << "";
    QTest::newRow("a device that never ends") << "/dev/zero";
}

void LaunchLogTest::pipeOrDeviceInItsPlaceIsNotWaitedFor() {
    QFETCH(QString, target);
    const QString path = AppPaths::launchLogPath();
    if (!(target.isEmpty() ? support::makePipe(path) : support::makeLink(target, path)))
        QSKIP("there are none");
    const support::MessageCapture capture;
    const RunLogView view;
    appendLaunchLog("lost");
    QCOMPARE(view.text(), QString());
    QCOMPARE(capture.messages(), QStringList());
    QVERIFY(QFile::remove(path));
}

void LaunchLogTest::missingDataFolderLosesTheLineInSilence() {
    QVERIFY(QDir(AppPaths::dataDirectory()).removeRecursively());
    const support::MessageCapture capture;
    appendLaunchLog("lost");
    QVERIFY(!QFileInfo::exists(AppPaths::dataDirectory()));
    QCOMPARE(capture.messages(), QStringList());
}

void LaunchLogTest::viewShowsThisRunAlone() {
    writeLog("of an earlier run\n");
    const RunLogView view;
    QCOMPARE(view.text(), QString());
    appendLaunchLog("启动");
    QVERIFY(view.text().endsWith(" 启动"));
    QCOMPARE(view.text().size(), 22);
    appendLaunchLog("two");
    QCOMPARE(view.text().count('\n'), 1);
}

void LaunchLogTest::viewOfAFirstRunShowsTheWholeFile() {
    const RunLogView view;
    QCOMPARE(view.text(), QString());
    writeLog("\n one\ntwo \n\n");
    QCOMPARE(view.text(), QString("one\ntwo"));
}

void LaunchLogTest::viewReadsAReplacedFileFromItsStart() {
    writeLog(QByteArray(1000, 'x'));
    const RunLogView view;
    QVERIFY(QFile::remove(AppPaths::launchLogPath()));
    QCOMPARE(view.text(), QString());
    appendLaunchLog("new");
    QVERIFY(view.text().endsWith(" new"));
    QCOMPARE(view.text().size(), 23);
}

void LaunchLogTest::viewReadsPastANul() {
    const RunLogView view;
    writeLog(QByteArray("a\0b", 3));
    QCOMPARE(view.text(), QString::fromLatin1("a\0b", 3));
}

void LaunchLogTest::threadsLoseNoLine() {
    constexpr int threads = 8;
    const int count = linesOfEach;
    std::vector<std::thread> writers;
    writers.reserve(threads);
    for (int t = 0; t < threads; ++t) {
        writers.emplace_back([t] {
            for (int i = 0; i < count; ++i)
                appendLaunchLog(QString("t%1 %2 end").arg(QString::number(t), QString::number(i)));
        });
    }
    for (std::thread &writer : writers)
        writer.join();
    for (int t = 0; t < threads; ++t)
        QCOMPARE(countLines(QString("t%1").arg(t), count), QVector<int>(count, 1));
}

void LaunchLogTest::longLinesOfThreadsStayWhole() {
    constexpr int threads = 4;
    constexpr int count = 100;
    const QString filler(100000, 'z');
    std::vector<std::thread> writers;
    writers.reserve(threads);
    for (int t = 0; t < threads; ++t) {
        writers.emplace_back([&filler] {
            for (int i = 0; i < count; ++i)
                appendLaunchLog(filler);
        });
    }
    for (std::thread &writer : writers)
        writer.join();
    const QList<QByteArray> lines = support::linesOf(logBytes()).split('\n');
    QCOMPARE(lines.size(), threads * count + 1);
    for (int i = 0; i < threads * count; ++i)
        QCOMPARE(lines[i].size(), 20 + filler.size());
}

void LaunchLogTest::processesLoseNoLine() {
    const int count = linesOfEach;
    QProcess one;
    QProcess two;
    one.start(FRAME_PROBE, {"log", "one", QString::number(count)});
    two.start(FRAME_PROBE, {"log", "two", QString::number(count)});
    QVERIFY(one.waitForFinished(120000) && two.waitForFinished(120000));
    QCOMPARE(countLines("one", count), QVector<int>(count, 1));
    QCOMPARE(countLines("two", count), QVector<int>(count, 1));
}

QUORVANE_TEST_MAIN(QCoreApplication, LaunchLogTest)
#include "launch_log_test.moc"
