// An update on offer, from the check in the background to the user's answer: the real window over a
// real worker, with a signed manifest on a server on loopback.
#include "launcher/installation.h"
#include "launcher/signal_log.h"
#include "support/manifest_maker.h"
#include "support/scripted_server.h"
#include "support/staged_main.h"
#include "update/default_manifest_url.h"
#include "window_scene.h"

#include <QDialogButtonBox>
#include <QFileDialog>
#include <QMessageBox>
#include <QSemaphore>

using State = LauncherService::State;
using PromptMode = LauncherService::UpdatePromptMode;

namespace {

QString onlineUrl; // of this test's server

constexpr char manifestPath[] = "/Quorvaner/Update/manifest.json";

const support::KeyPair &publisher() {
    static const support::KeyPair key = support::KeyPair::rsa(2048);
    return key;
}

QByteArray manifest() {
    const QJsonObject runtime{{"version", "9.0.0"}, {"setupUrl", "setup.exe"}};
    return support::signedManifest({{"runtime", runtime}}, publisher()).toUtf8();
}

// A window in a run whose countdown waits for the test's ticks.
struct Run : WindowScene {
    Run() {
        service.projectPath = installation::addRunnableProject("line", "1.0");
        service.countdownTimer.setInterval(1000 * 1000);
        refresh();
        window.show();
    }

    void startCheck() {
        service.start();
        QCoreApplication::sendPostedEvents();
        QTRY_VERIFY(service.isUpdateTaskActive());
    }

    void waitForCheck() {
        startCheck();
        QTRY_VERIFY(!service.isUpdateTaskActive());
    }
};

} // namespace

QString defaultManifestUrl() {
    return onlineUrl;
}

class OfferTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void theTaskPanelShowsTheRunningCheck();
    void f8IsRefusedWhileTheCheckRuns();
    void theLanguageChangesWhileTheCheckRuns();
    void aCancelledCheckLetsTheCountdownRunOn();
    void anotherProjectIsNotOfferedWhatWasFound();
    void theBannerStopsTheFlow();
    void theLanguageOfTheBannerFollows();
    void remindingLaterResumesTheCountdown();
    void skippingForGoodHoldsAfterARestart();
    void aStickIsPassedByAndTheTargetStarts();
    void theDialogTicksWhatCanBeHad();
    void aStartByHandPassesTheBannerBy();

private:
    std::unique_ptr<support::ScriptedServer> server;
};

void OfferTest::init() {
    installation::reset();
    QVERIFY(
        installation::write(installation::appPath("config/update.pub"), publisher().publicPem()));
    QVERIFY(installation::addTarget("wait"));
    stageTranslation();
    useLanguage(Language::Chinese);
    server = std::make_unique<support::ScriptedServer>();
    server->on(manifestPath, support::answer(200, manifest()));
    onlineUrl = server->url(manifestPath).toString();
}

void OfferTest::cleanup() {
    server.reset();
}

void OfferTest::theTaskPanelShowsTheRunningCheck() {
    server->on(manifestPath, {support::stall()});
    Run run;
    run.startCheck();
    QVERIFY(run.parts.taskPanel->isVisible());
    QCOMPARE(run.parts.taskTitleLabel->text(), "更新任务 [" + run.service.taskId + "]：检查更新");
    QCOMPARE(run.parts.taskDetailLabel->text(), QString("拉取并校验 manifest…"));
    QVERIFY(run.parts.countdownLabel->isVisible());
    QVERIFY(!run.parts.busyBar->isVisible());
    server.reset(); // ends the request
    QTRY_VERIFY(!run.service.isUpdateTaskActive());
    QVERIFY(!run.parts.taskPanel->isVisible());
}

void OfferTest::f8IsRefusedWhileTheCheckRuns() {
    server->on(manifestPath, {support::stall()});
    Run run;
    run.startCheck();
    QTest::keyClick(&run.window, Qt::Key_F8);
    QCOMPARE(run.service.state, State::Countdown);
    QCOMPARE(run.parts.statusLabel->text(), QString()); // refused in silence: it counts down
    QCOMPARE(run.service.statusText,
             QString("更新任务进行中。请先取消任务或等待完成，再进入修复模式（F8）。"));
    server.reset();
    QTRY_VERIFY(!run.service.isUpdateTaskActive());
    QTest::keyClick(&run.window, Qt::Key_F8);
    QCOMPARE(run.service.state, State::RepairMode);
}

void OfferTest::theLanguageChangesWhileTheCheckRuns() {
    server->on(manifestPath, {support::stall()});
    Run run;
    run.startCheck();
    run.parts.languageButton->click();
    QCOMPARE(run.parts.taskTitleLabel->text(),
             "Update [" + run.service.taskId + "]: Looking for updates");
    QCOMPARE(run.parts.taskDetailLabel->text(), QString("Getting and checking the update list…"));
    server.reset();
    QTRY_VERIFY(!run.service.isUpdateTaskActive());
}

void OfferTest::aCancelledCheckLetsTheCountdownRunOn() {
    server->on(manifestPath, {support::stall()});
    Run run;
    run.startCheck();
    run.parts.taskCancelButton->click();
    QCOMPARE(run.service.statusText, QString("正在取消更新任务…"));
    server.reset();
    QTRY_VERIFY(!run.service.isUpdateTaskActive());
    QCOMPARE(run.service.statusText, QString("更新检查已取消。"));
    QCOMPARE(run.service.state, State::Countdown);
    QVERIFY(!run.parts.taskPanel->isVisible());
    QVERIFY(run.parts.countdownLabel->isVisible());
}

// The operator selects it while the check is still under way, after the precheck has failed.
void OfferTest::anotherProjectIsNotOfferedWhatWasFound() {
    QSemaphore selected;
    server->on(manifestPath, support::ServerScript{support::call(
                                 [&selected] { (void)selected.tryAcquire(1, 10000); })} +
                                 support::answer(200, manifest()));
    const QString other = installation::addRunnableProject("other", "1.0");
    Run run;
    QVERIFY(QFile::remove(run.service.projectPath));
    run.startCheck();
    QVERIFY(duringModal(
        [&] {
            for (int i = 0; i < 5; ++i)
                run.service.tickCountdown();
        },
        [](QWidget *box) { box->close(); }));
    QCOMPARE(run.service.state, State::RepairMode);
    QVERIFY(run.service.isUpdateTaskActive());
    QVERIFY(run.parts.browseButton->isVisible() && run.parts.browseButton->isEnabled());
    QVERIFY(duringModal([&] { run.parts.browseButton->click(); },
                        [&](QWidget *widget) {
                            auto *dialog = qobject_cast<QFileDialog *>(widget);
                            QVERIFY(dialog);
                            dialog->selectFile(other);
                            QMetaObject::invokeMethod(dialog, "accept");
                        }));
    selected.release(2); // this check and the next
    QTRY_VERIFY(!run.service.isUpdateTaskActive());
    QCOMPARE(run.service.projectPath, other);
    QCOMPARE(run.parts.statusLabel->text(), QString("更新检查已取消。"));
    QVERIFY(!run.parts.bannerPanel->isVisible());
    QVERIFY(!run.parts.hasUpdateButton->isVisible());
    // The next start looks anew.
    run.parts.launchButton->click();
    QTRY_VERIFY(run.parts.bannerPanel->isVisible());
    QVERIFY(run.parts.bannerLabel->text().contains(other));
}

void OfferTest::theBannerStopsTheFlow() {
    Run run;
    run.waitForCheck();
    QCOMPARE(run.service.state, State::RepairMode);
    QVERIFY(run.parts.bannerPanel->isVisible());
    QVERIFY(run.parts.repairPanel->isVisible());
    QVERIFY(!run.parts.countdownLabel->isVisible());
    QVERIFY(run.parts.bannerLabel->text().contains("可更新项：Runtime -> 9.0.0"));
    QCOMPARE(run.parts.bannerLabel->text(), run.service.updateSummary);
    QVERIFY(run.parts.bannerRemindButton->isVisible());
    QCOMPARE(run.parts.bannerSkipButton->text(), QString("跳过此版本"));
    QCOMPARE(run.parts.statusLabel->text(), QString("发现在线更新。请选择是否更新，或继续启动。"));
}

void OfferTest::theLanguageOfTheBannerFollows() {
    Run run;
    run.waitForCheck();
    run.parts.languageButton->click();
    QVERIFY(run.parts.bannerLabel->text().contains("Runtime -> 9.0.0"));
    QVERIFY(!run.parts.bannerLabel->text().contains("可更新项"));
    QCOMPARE(run.parts.bannerLabel->text(), run.service.updateSummary);
    QCOMPARE(run.parts.bannerUpdateButton->text(), QString("&Update now"));
    QCOMPARE(run.parts.bannerSkipButton->text(), QString("S&kip this version"));
    QCOMPARE(run.parts.statusLabel->text(),
             QCoreApplication::translate("LauncherService",
                                         "发现在线更新。请选择是否更新，或继续启动。"));
}

void OfferTest::remindingLaterResumesTheCountdown() {
    Run run;
    run.waitForCheck();
    run.parts.bannerRemindButton->click();
    QCOMPARE(run.service.state, State::Countdown);
    QVERIFY(!run.parts.bannerPanel->isVisible());
    QVERIFY(run.parts.countdownLabel->isVisible());
    QVERIFY(!run.parts.hasUpdateButton->isVisible());
    QTest::keyClick(&run.window, Qt::Key_F8);
    QVERIFY(run.parts.hasUpdateButton->isVisible());
}

void OfferTest::skippingForGoodHoldsAfterARestart() {
    {
        Run run;
        run.waitForCheck();
        run.parts.bannerSkipButton->click();
        QCOMPARE(run.service.promptMode, PromptMode::BadgeOnly);
        QVERIFY(!run.parts.bannerPanel->isVisible());
    }
    Run run;
    run.waitForCheck();
    QCOMPARE(run.service.state, State::Countdown);
    QVERIFY(!run.parts.bannerPanel->isVisible());
    QTest::keyClick(&run.window, Qt::Key_F8);
    QVERIFY(run.parts.hasUpdateButton->isVisible());
    QVERIFY(run.parts.hasUpdateButton->isEnabled());
}

void OfferTest::aStickIsPassedByAndTheTargetStarts() {
    Run run;
    run.waitForCheck();
    run.service.snapshot.fromUsb = true;
    run.service.promptMode = PromptMode::UsbBanner;
    run.refresh();
    QVERIFY(!run.parts.bannerRemindButton->isVisible());
    QCOMPARE(run.parts.bannerSkipButton->text(), QString("跳过并启动"));
    run.parts.bannerSkipButton->click();
    QCOMPARE(run.service.state, State::Monitor);
    QVERIFY(run.service.updatesHandled);
}

void OfferTest::theDialogTicksWhatCanBeHad() {
    Run run;
    run.waitForCheck();
    const UpdateChoices choices = run.service.updateChoices();
    QVERIFY(choices.runtime.available);
    QVERIFY(duringModal([&] { run.parts.bannerUpdateButton->click(); },
                        [&](QWidget *dialog) {
                            const auto boxes = dialog->findChildren<QCheckBox *>();
                            QCOMPARE(boxes.size(), 5);
                            for (const QCheckBox *box : boxes) {
                                const bool runtime = box->text().contains("Runtime");
                                QCOMPARE(box->isChecked(), runtime);
                                QCOMPARE(box->isEnabled(), runtime);
                                QCOMPARE(box->text().endsWith("（不可用）"), !runtime);
                                QVERIFY(!box->toolTip().isEmpty());
                                if (runtime)
                                    QCOMPARE(box->toolTip(), choices.runtime.reason);
                            }
                        }));
    QVERIFY(run.parts.bannerPanel->isVisible());
}

void OfferTest::aStartByHandPassesTheBannerBy() {
    Run run;
    run.waitForCheck();
    QVERIFY(run.parts.launchButton->isEnabled());
    run.parts.launchButton->click();
    QCOMPARE(run.service.state, State::Monitor);
}

QUORVANE_TEST_MAIN(QApplication, OfferTest)
#include "offer_test.moc"
