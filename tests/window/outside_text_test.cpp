// Text from outside that looks like mark-up: whatever field of a manifest it comes from, every place
// that shows it shows it letter by letter.
#include "launcher/installation.h"
#include "support/staged_main.h"
#include "window_scene.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QJsonArray>
#include <QJsonObject>
#include <QMessageBox>
#include <QTextDocumentFragment>

using State = LauncherService::State;
using PromptMode = LauncherService::UpdatePromptMode;

namespace {

const QString marked = QStringLiteral("<b>x</b><img src='https://h/a.png'>&amp;9.9.9");

// Whether the widget would read a text of it as mark-up; also counts the places that show the mark.
void look(const QWidget *widget, int *shown) {
    if (const auto *label = qobject_cast<const QLabel *>(widget)) {
        const bool plain =
            label->textFormat() == Qt::PlainText || !Qt::mightBeRichText(label->text());
        QVERIFY2(plain, qPrintable(label->text()));
        *shown += label->text().contains(marked);
    }
    for (const QString &tip : {widget->toolTip(), widget->statusTip(), widget->whatsThis()}) {
        const QString read =
            Qt::mightBeRichText(tip) ? QTextDocumentFragment::fromHtml(tip).toPlainText() : tip;
        const bool hasMark = tip.contains(QLatin1String("h/a.png"));
        QVERIFY2(!hasMark || read.contains(marked), qPrintable(tip));
        *shown += hasMark;
    }
    if (const auto *box = qobject_cast<const QMessageBox *>(widget)) {
        QCOMPARE(box->textFormat(), Qt::PlainText);
        QVERIFY(box->informativeText().isEmpty() && box->detailedText().isEmpty());
    }
}

int lookEverywhere() {
    int shown = 0;
    const QWidgetList widgets = QApplication::allWidgets();
    for (const QWidget *widget : widgets)
        look(widget, &shown);
    return shown;
}

QJsonObject component(const QString &key, const QString &value) {
    QJsonObject record{{"version", "9.0.0"}, {"setupUrl", "setup.exe"}};
    record.insert(key, value);
    return record;
}

QJsonObject projects(const QString &key, const QString &value) {
    QJsonObject record{
        {"name", "line"}, {"version", "9.0"}, {"zipUrl", "line.zip"}, {"zipSha256", "00"}};
    record.insert(key, value);
    return {{"projects", QJsonArray{record}}};
}

QJsonObject plugin(const QString &key) {
    QJsonObject record{{"id", "camera"}, {"path", "camera.dll"}, {"minVersion", "1.0"}};
    record.insert(key, marked);
    return {{"runtime", component("notes", "x")}, {"plugins", QJsonArray{record}}};
}

} // namespace

class OutsideTextTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void aManifest_data();
    void aManifest();
    void theEndOfAnUpdate_data();
    void theEndOfAnUpdate();
    void theTaskPanel();
    void otherReports_data();
    void otherReports();
};

void OutsideTextTest::init() {
    installation::reset();
    useLanguage(Language::Chinese);
}

void OutsideTextTest::aManifest_data() {
    QTest::addColumn<QJsonObject>("manifest");
    QTest::addColumn<bool>("fromUsb");
    QTest::addColumn<bool>("shows"); // the text is part of what is said
    const QString version = "9.9.9" + marked;
    for (const bool usb : {false, true}) {
        const auto row = [usb](const char *name, const QJsonObject &manifest, bool shows) {
            QTest::addRow("%s, %s", name, usb ? "on a stick" : "online")
                << manifest << usb << shows;
        };
        row("setupUrl", {{"runtime", component("setupUrl", marked)}}, usb);
        row("a component's version", {{"editor", component("version", version)}}, false);
        row("a component's minVersion", {{"launcher", component("minVersion", "5." + marked)}},
            true);
        row("setupSha256", {{"launcher", component("setupSha256", marked)}}, false);
        row("a project's version", projects("version", version), !usb);
        row("zipUrl", projects("zipUrl", marked), usb);
        row("zipSha256", projects("zipSha256", marked), false);
        row("a plug-in's id", plugin("id"), true);
        row("a plug-in's path", plugin("path"), true);
        row("a plug-in's minVersion", plugin("minVersion"), false);
    }
}

// In the banner, the status, the dialog and its tool tips.
void OutsideTextTest::aManifest() {
    QFETCH(QJsonObject, manifest);
    QFETCH(bool, fromUsb);
    QFETCH(bool, shows);
    QVERIFY(installation::write(installation::appPath("config/release_version.json"),
                                R"({"launcherPackageVersion": "1.0.0"})"));
    QVERIFY(installation::write(support::stageRoot() + "/stick/setup.exe", ""));
    WindowScene scene;
    LauncherService &service = scene.service;
    service.state = State::RepairMode;
    service.projectPath = installation::addRunnableProject("line", "1.0");
    service.snapshot.fromUsb = fromUsb;
    service.snapshot.baseLocation =
        fromUsb ? support::stageRoot() + "/stick" : QString("https://h/u/");
    service.snapshot.source = service.snapshot.baseLocation + "/manifest.json";
    QString summary;
    (void)service.evaluateManifest(manifest, &summary);
    service.updateAvailable = true;
    service.updateSummary = summary;
    service.promptMode = fromUsb ? PromptMode::UsbBanner : PromptMode::OnlineBanner;
    service.statusText = summary;
    scene.window.show();
    scene.refresh();
    int shown = lookEverywhere();
    QVERIFY(duringModal([&] { scene.parts.bannerUpdateButton->click(); },
                        [&shown](QWidget *dialog) {
                            shown += lookEverywhere();
                            dialog->close();
                        }));
    QVERIFY2(!shows || shown > 0, qPrintable(summary));
}

void OutsideTextTest::theEndOfAnUpdate_data() {
    QTest::addColumn<bool>("success");
    QTest::newRow("success") << true;
    QTest::newRow("failure") << false;
}

void OutsideTextTest::theEndOfAnUpdate() {
    QFETCH(bool, success);
    WindowScene scene;
    scene.window.show();
    int shown = 0;
    QVERIFY(
        duringModal([&] { Q_EMIT scene.service.applyUpdateFinished(success, "[hash] " + marked); },
                    [&shown](QWidget *box) {
                        shown = lookEverywhere();
                        box->close();
                    }));
    QVERIFY(shown > 0);
}

void OutsideTextTest::theTaskPanel() {
    WindowScene scene;
    scene.window.show();
    scene.service.taskId = "apply_" + marked;
    scene.setTaskActive(true);
    Q_EMIT scene.service.updateTaskProgressChanged(scene.service.taskId, marked, -1, marked);
    QVERIFY(lookEverywhere() >= 2); // the title and the detail
}

void OutsideTextTest::otherReports_data() {
    QTest::addColumn<QString>("kind");
    for (const char *kind : {"status", "suggestion", "precheck", "launch", "exit"})
        QTest::newRow(kind) << kind;
}

void OutsideTextTest::otherReports() {
    QFETCH(QString, kind);
    WindowScene scene;
    scene.put(State::RepairMode);
    scene.window.show();
    const auto tell = [&] {
        if (kind == "precheck")
            Q_EMIT scene.service.precheckFailed(marked);
        else if (kind == "launch")
            Q_EMIT scene.service.launchFailed(marked);
        else
            Q_EMIT scene.service.targetExited(3, marked);
    };
    int shown = 0;
    scene.service.statusText = marked;
    if (kind == "status") {
        Q_EMIT scene.service.statusChanged(marked);
        shown = lookEverywhere();
    } else if (kind == "suggestion") {
        Q_EMIT scene.service.updateSuggestionReady(marked);
        shown = lookEverywhere();
    } else {
        QVERIFY(duringModal(tell, [&shown](QWidget *box) {
            shown = lookEverywhere();
            box->close();
        }));
    }
    QVERIFY(shown > 0);
}

QUORVANE_TEST_MAIN(QApplication, OutsideTextTest)
#include "outside_text_test.moc"
