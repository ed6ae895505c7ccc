// The pane that shows this run's part of the launch log.
#include "support/file_kinds.h"
#include "support/staged_main.h"
#include "window/shown_part.h"
#include "window_scene.h"

#include "frame/app_paths.h"

#include <QScrollBar>
#include <QTextBlock>
#include <QTextLayout>

using State = LauncherService::State;

class LogPaneTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void onlyLinesOfThisRunAreShown();
    void aFirstRunShowsTheWholeLog();
    void aReplacedLogIsShownFromItsStart();
    void theBuiltInNoticeIsTranslated();
    void theNoticeThatShipsSaysTheSameInBothLanguages();
    void theNoticeFileIsShownTrimmed();
    void anEmptyNoticeFileShowsNothing();
    void aNoticeThatIsAPipeIsNotWaitedFor();
    void ofALineBeyondAllMeasureThePaneLaysOutAPart();
    void statusAndCountdownRenewThePane();
    void anUnchangedLogKeepsTheScrollPosition();

private:
    static QString noticePath();
};

QString LogPaneTest::noticePath() {
    return support::stageRoot() + "/app/config/launcher_notice.txt";
}

namespace {

const QString chineseNotice = "倒计时结束后，启动器检查项目并自动启动产线，无需任何操作。\n"
                              "在此之前会查找更新；显示黄色面板时，F8 暂不起作用。\n"
                              "按 F8 可停止自动启动并进入修复模式：选择项目、查看日志或手动启动。";
const QString englishNotice =
    "When the count reaches zero, the project is checked and the line starts by itself.\n"
    "Until then updates are looked for. While the yellow panel shows this, F8 does nothing.\n"
    "Press F8 to stop and choose a project, read the log or start by hand (repair mode).";

void write(const QString &path, const QByteArray &bytes) {
    QVERIFY(QDir().mkpath(QFileInfo(path).path()));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), bytes.size());
}

} // namespace

void LogPaneTest::init() {
    QFile::remove(AppPaths::launchLogPath());
    QFile::remove(noticePath());
    useLanguage(Language::Chinese);
}

void LogPaneTest::onlyLinesOfThisRunAreShown() {
    AppPaths::initialize();
    LauncherService::appendLaunchLog("a line of the run before");
    WindowScene scene;
    QVERIFY(!scene.parts.logView->toPlainText().contains("run before"));
    LauncherService::appendLaunchLog("a line of this run");
    scene.refresh();
    QVERIFY(scene.parts.logView->toPlainText().endsWith(" a line of this run"));
    QCOMPARE(scene.parts.logView->toPlainText().count('\n'), 0);
}

void LogPaneTest::aFirstRunShowsTheWholeLog() {
    WindowScene scene;
    QVERIFY(!QFile::exists(AppPaths::launchLogPath()));
    LauncherService::appendLaunchLog("first");
    LauncherService::appendLaunchLog("second");
    scene.refresh();
    const QStringList lines = scene.parts.logView->toPlainText().split('\n');
    QCOMPARE(lines.size(), 2);
    QVERIFY(lines.first().endsWith(" first"));
    QVERIFY(lines.last().endsWith(" second"));
}

void LogPaneTest::aReplacedLogIsShownFromItsStart() {
    AppPaths::initialize();
    LauncherService::appendLaunchLog(QString("long ").repeated(100));
    WindowScene scene;
    QVERIFY(QFile::remove(AppPaths::launchLogPath()));
    LauncherService::appendLaunchLog("anew");
    scene.refresh();
    QVERIFY(scene.parts.logView->toPlainText().endsWith(" anew"));
}

void LogPaneTest::theBuiltInNoticeIsTranslated() {
    stageTranslation();
    WindowScene scene;
    QCOMPARE(scene.parts.logView->toPlainText(), chineseNotice);
    useLanguage(Language::English);
    QCOMPARE(scene.parts.logView->toPlainText(), englishNotice);
}

// Whoever installs it sees the same words, in both languages whichever is in force.
void LogPaneTest::theNoticeThatShipsSaysTheSameInBothLanguages() {
    QFile shipped(QUORVANE_SOURCES "/resources/config/launcher_notice.txt");
    QVERIFY(shipped.open(QIODevice::ReadOnly));
    QCOMPARE(QString::fromUtf8(shipped.readAll()), chineseNotice + '\n' + englishNotice + '\n');
}

void LogPaneTest::theNoticeFileIsShownTrimmed() {
    write(noticePath(), "\n  产线 3 的操作说明 <b>\n\n");
    const WindowScene scene;
    QCOMPARE(scene.parts.logView->toPlainText(), QString("产线 3 的操作说明 <b>"));
}

void LogPaneTest::anEmptyNoticeFileShowsNothing() {
    write(noticePath(), " \n");
    const WindowScene scene;
    QCOMPARE(scene.parts.logView->toPlainText(), QString());
}

void LogPaneTest::aNoticeThatIsAPipeIsNotWaitedFor() {
    QVERIFY(QDir().mkpath(QFileInfo(noticePath()).path()));
    if (!support::makePipe(noticePath()))
        QSKIP("there are none");
    const WindowScene scene;
    QCOMPARE(scene.parts.logView->toPlainText(), chineseNotice);
}

void LogPaneTest::ofALineBeyondAllMeasureThePaneLaysOutAPart() {
    const QString line = QString("word ").repeated(mostShown) + "end";
    WindowScene scene;
    LauncherService::appendLaunchLog(line);
    scene.put(State::Countdown);
    scene.window.show();
    scene.parts.logView->grab();
    const QTextBlock block = scene.parts.logView->document()->firstBlock();
    const QTextLayout &layout = *block.layout();
    QVERIFY(layout.lineCount() > 1);
    QCOMPARE(layout.lineAt(0).y(), 0.0);
    QCOMPARE(layout.lineAt(1).y(), layout.lineAt(0).height());
    const QTextLine last = layout.lineAt(layout.lineCount() - 1);
    QVERIFY(last.textStart() < mostShown);
    QVERIFY(last.textStart() + last.textLength() >= mostShown);
    QVERIFY(last.textStart() + last.textLength() < line.size() / 2);
    QCOMPARE(scene.parts.logView->toPlainText().mid(20), line);
    // The lines behind it are still there.
    LauncherService::appendLaunchLog("two");
    scene.refresh();
    scene.parts.logView->grab();
    QCOMPARE(scene.parts.logView->document()->lastBlock().layout()->lineCount(), 1);
    QVERIFY(scene.parts.logView->toPlainText().endsWith(" two"));
}

void LogPaneTest::statusAndCountdownRenewThePane() {
    WindowScene scene;
    scene.put(State::Countdown);
    LauncherService::appendLaunchLog("one");
    Q_EMIT scene.service.countdownChanged(4);
    QVERIFY(scene.parts.logView->toPlainText().endsWith(" one"));
    LauncherService::appendLaunchLog("two");
    Q_EMIT scene.service.statusChanged("x");
    QVERIFY(scene.parts.logView->toPlainText().endsWith(" two"));
}

void LogPaneTest::anUnchangedLogKeepsTheScrollPosition() {
    WindowScene scene;
    for (int i = 0; i < 100; ++i)
        LauncherService::appendLaunchLog("line");
    scene.put(State::Countdown);
    scene.window.show();
    QScrollBar *bar = scene.parts.logView->verticalScrollBar();
    QVERIFY(bar->maximum() > 0);
    bar->setValue(bar->maximum() / 2);
    const int before = bar->value();
    scene.refresh();
    QCOMPARE(bar->value(), before);
}

QUORVANE_TEST_MAIN(QApplication, LogPaneTest)
#include "log_pane_test.moc"
