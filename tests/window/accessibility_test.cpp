// What a screen reader is told, and whether the text can be read on its ground.
#include "support/platform.h"
#include "support/staged_main.h"
#include "window/shown_part.h"
#include "window_scene.h"

#include <QAccessible>
#include <QCheckBox>
#include <QLabel>
#include <QMessageBox>
#include <QProgressBar>
#include <QProxyStyle>

#include <algorithm>
#include <cmath>

using State = LauncherService::State;
using PromptMode = LauncherService::UpdatePromptMode;

class AccessibilityTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void everyControlHasANameAndARole_data();
    void everyControlHasANameAndARole();
    void theDialogOfUpdatesIsNamedToo();
    void theRolesAreThoseOfTheControls();
    void thePanelsHaveNames_data();
    void thePanelsHaveNames();
    void whatShowsNoTextHasAName();
    void theChildrenStandInTheOrderOfTheEye();
    void theMovingBarStandsStillWhereLessMotionIsWanted_data();
    void theMovingBarStandsStillWhereLessMotionIsWanted();
    void theWindowHasAnIcon();
    void theLabelsAreReadInFull();
    void whatAToolTipCutsIsDescribedInFull();
    void textStandsOutFromItsGround_data();
    void textStandsOutFromItsGround();
};

void AccessibilityTest::initTestCase() {
    stageTranslation();
}

namespace {

QList<QAccessibleInterface *> withDescendants(QAccessibleInterface *root) {
    QList<QAccessibleInterface *> all = {root};
    for (int i = 0; i < root->childCount(); ++i)
        if (QAccessibleInterface *child = root->child(i))
            all += withDescendants(child);
    return all;
}

bool isInteractive(QAccessible::Role role) {
    static const QList<QAccessible::Role> roles = {
        QAccessible::PushButton,  QAccessible::ButtonMenu,    QAccessible::CheckBox,
        QAccessible::RadioButton, QAccessible::EditableText,  QAccessible::ProgressBar,
        QAccessible::ComboBox,    QAccessible::ButtonDropDown};
    return roles.contains(role);
}

QStringList namesOfInteractive(QWidget *root) {
    QStringList names;
    const auto all = withDescendants(QAccessible::queryAccessibleInterface(root));
    for (const QAccessibleInterface *item : all)
        if (isInteractive(item->role()) || (item->state().focusable && item->object() != root))
            names.append(item->text(QAccessible::Name));
    return names;
}

// --- Contrast, as the web's accessibility rules reckon it ---------------------------------------

double channel(int value) {
    const double c = value / 255.0;
    return c <= 0.03928 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
}

double luminance(const QColor &colour) {
    return 0.2126 * channel(colour.red()) + 0.7152 * channel(colour.green()) +
           0.0722 * channel(colour.blue());
}

double contrast(const QColor &a, const QColor &b) {
    const double high = std::max(luminance(a), luminance(b));
    const double low = std::min(luminance(a), luminance(b));
    return (high + 0.05) / (low + 0.05);
}

// The ground is the colour that covers most of the widget, the ink the one that differs most from
// it; between them lie only the smoothed edges of letters.
double contrastInPixels(QWidget *widget) {
    const QImage image =
        widget->window()
            ->grab(QRect(widget->mapTo(widget->window(), QPoint()), widget->size()))
            .toImage();
    QHash<QRgb, int> colours;
    for (int y = 2; y < image.height() - 2; ++y)
        for (int x = 2; x < image.width() - 2; ++x)
            ++colours[image.pixel(x, y)];
    const QRgb ground = std::max_element(colours.cbegin(), colours.cend()).key();
    double best = 1;
    for (auto it = colours.cbegin(); it != colours.cend(); ++it)
        best = std::max(best, contrast(QColor(it.key()), QColor(ground)));
    return best;
}

QPalette paletteNamed(const QString &name) {
    if (name == "light")
        return QPalette(QColor(0xef, 0xef, 0xef));
    QPalette palette(name == "dark" ? QColor(0x31, 0x36, 0x3b) : QColor(Qt::black));
    if (name == "high-contrast") {
        for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
            palette.setColor(role, Qt::yellow);
        for (const auto role : {QPalette::Window, QPalette::Base, QPalette::Button})
            palette.setColor(role, Qt::black);
    }
    return palette;
}

} // namespace

void AccessibilityTest::everyControlHasANameAndARole_data() {
    addLanguageRows();
}

void AccessibilityTest::everyControlHasANameAndARole() {
    QFETCH(Language, language);
    useLanguage(language);
    WindowScene scene;
    scene.window.show();
    for (const State state : allStates())
        for (const bool task : {false, true}) {
            scene.service.state = state;
            scene.service.checkInFlight = task;
            scene.offerUpdate(PromptMode::OnlineBanner);
            const QStringList names = namesOfInteractive(&scene.window);
            QVERIFY(names.size() >= 1);
            for (const QString &name : names)
                QVERIFY2(!name.trimmed().isEmpty(), nameOf(state));
        }
    scene.service.checkInFlight = false;
    // Hidden ones too: all there are.
    const auto widgets = scene.window.findChildren<QWidget *>();
    int controls = 0;
    for (QWidget *widget : widgets) {
        const QAccessibleInterface *item = QAccessible::queryAccessibleInterface(widget);
        QVERIFY(item);
        if (!isInteractive(item->role()))
            continue;
        ++controls;
        QVERIFY2(!item->text(QAccessible::Name).trimmed().isEmpty(),
                 widget->metaObject()->className());
        QVERIFY(item->role() != QAccessible::NoRole);
    }
    QCOMPARE(controls, 17); // 11 buttons, language, box, field, pane, two bars
}

void AccessibilityTest::theDialogOfUpdatesIsNamedToo() {
    useLanguage(Language::Chinese);
    WindowScene scene;
    scene.service.state = State::RepairMode;
    scene.offerUpdate(PromptMode::OnlineBanner);
    QVERIFY(duringModal([&] { scene.parts.bannerUpdateButton->click(); },
                        [](QWidget *dialog) {
                            const QStringList names = namesOfInteractive(dialog);
                            QCOMPARE(names.size(), 8); // five boxes, the note, OK and Cancel
                            for (const QString &name : names)
                                QVERIFY(!name.trimmed().isEmpty());
                        }));
}

void AccessibilityTest::theRolesAreThoseOfTheControls() {
    const WindowScene scene;
    const auto roleOf = [](QWidget *widget) {
        return QAccessible::queryAccessibleInterface(widget)->role();
    };
    QCOMPARE(roleOf(scene.parts.launchButton), QAccessible::PushButton);
    QCOMPARE(roleOf(scene.parts.hasUpdateButton), QAccessible::PushButton);
    QCOMPARE(roleOf(scene.parts.languageButton), QAccessible::PushButton);
    QCOMPARE(roleOf(scene.parts.skipPrecheckCheck), QAccessible::CheckBox);
    QCOMPARE(roleOf(scene.parts.projectPathEdit), QAccessible::EditableText);
    QCOMPARE(roleOf(scene.parts.taskProgressBar), QAccessible::ProgressBar);
    QCOMPARE(roleOf(scene.parts.versionLabel), QAccessible::StaticText);
    for (QLabel *said :
         {scene.parts.statusLabel, scene.parts.bannerLabel, scene.parts.countdownLabel})
        QCOMPARE(roleOf(said), QAccessible::AlertMessage);
}

void AccessibilityTest::thePanelsHaveNames_data() {
    QTest::addColumn<Language>("language");
    QTest::addColumn<QStringList>("names");
    QTest::newRow("Chinese") << Language::Chinese
                             << QStringList{"更新任务", "更新提示", "项目与手动启动"};
    QTest::newRow("English") << Language::English
                             << QStringList{"Update", "Update on offer",
                                            "Project and manual start"};
}

void AccessibilityTest::thePanelsHaveNames() {
    QFETCH(Language, language);
    QFETCH(QStringList, names);
    useLanguage(language);
    const WindowScene scene;
    QStringList told;
    for (QWidget *panel : {scene.parts.taskPanel, scene.parts.bannerPanel, scene.parts.repairPanel})
        told.append(QAccessible::queryAccessibleInterface(panel)->text(QAccessible::Name));
    QCOMPARE(told, names);
}

void AccessibilityTest::whatShowsNoTextHasAName() {
    useLanguage(Language::Chinese);
    const WindowScene scene;
    const auto nameOf = [](QWidget *widget) {
        return QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name);
    };
    QCOMPARE(nameOf(scene.parts.projectPathEdit), QString("项目文件路径"));
    QCOMPARE(nameOf(scene.parts.busyBar), QString("正在处理"));
    QCOMPARE(nameOf(scene.parts.taskProgressBar), QString("更新任务"));
}

void AccessibilityTest::theChildrenStandInTheOrderOfTheEye() {
    WindowScene scene;
    const WindowParts &parts = scene.parts;
    const QObjectList expected = {parts.titleLabel,   parts.languageButton, parts.projectLabel,
                                  parts.versionLabel, parts.statusLabel,    parts.busyBar,
                                  parts.taskPanel,    parts.bannerPanel,    parts.logView,
                                  parts.repairPanel,  parts.actionRow,      parts.countdownLabel};
    const QAccessibleInterface *window = QAccessible::queryAccessibleInterface(&scene.window);
    QObjectList told;
    for (int i = 0; i < window->childCount(); ++i)
        told.append(window->child(i)->object());
    QCOMPARE(told, expected);
}

namespace {

class StyleOfDuration : public QProxyStyle {
public:
    explicit StyleOfDuration(int lasting)
        : QProxyStyle("Fusion")
        , duration(lasting) {}

    int styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget,
                  QStyleHintReturn *data) const override {
        return hint == SH_Widget_Animation_Duration
                   ? duration
                   : QProxyStyle::styleHint(hint, option, widget, data);
    }

private:
    int duration;
};

} // namespace

void AccessibilityTest::theMovingBarStandsStillWhereLessMotionIsWanted_data() {
    QTest::addColumn<int>("duration"); // of animations, as the desktop tells
    QTest::addColumn<bool>("moves");
    QTest::newRow("as usual") << 200 << true;
    // Windows has a setting of its own for it, which Wine does not have: packaging/windows/first-run.md.
    if (!support::onWindows)
        QTest::newRow("less motion") << 0 << false;
}

void AccessibilityTest::theMovingBarStandsStillWhereLessMotionIsWanted() {
    QFETCH(int, duration);
    QFETCH(bool, moves);
    QApplication::setStyle(new StyleOfDuration(duration));
    WindowScene scene;
    scene.window.show();
    scene.put(State::UpdateCheck);
    for (QProgressBar *bar : {scene.parts.busyBar, scene.parts.taskProgressBar}) {
        QEvent step(QEvent::StyleAnimationUpdate);
        step.setAccepted(false);
        bar->parentWidget()->show();
        bar->show();
        QCoreApplication::processEvents();
        QVERIFY(bar->isVisible());
        QApplication::sendEvent(bar, &step);
        QCOMPARE(step.isAccepted(), moves);
    }
    QCOMPARE(scene.parts.busyBar->minimum(), 0);
    QCOMPARE(scene.parts.busyBar->maximum(), 0);
}

void AccessibilityTest::theWindowHasAnIcon() {
    const WindowScene scene;
    QCOMPARE(scene.window.windowIcon().availableSizes(),
             (QList<QSize>{{16, 16}, {32, 32}, {48, 48}, {64, 64}}));
}

void AccessibilityTest::theLabelsAreReadInFull() {
    WindowScene scene;
    scene.service.statusText = QString("finding\n").repeated(30);
    scene.put(State::RepairMode);
    QCOMPARE(
        QAccessible::queryAccessibleInterface(scene.parts.statusLabel)->text(QAccessible::Name),
        scene.service.statusText);
}

void AccessibilityTest::whatAToolTipCutsIsDescribedInFull() {
    const auto described = [](QWidget *widget) {
        return QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Description);
    };
    const QString beyond = "<b>9</b> " + QString("word ").repeated(mostShown);
    WindowScene scene;
    scene.service.projectPath = "/lines/" + beyond;
    scene.put(State::RepairMode);
    QCOMPARE(described(scene.parts.projectLabel), scene.service.projectPath);
    scene.offerUpdate(PromptMode::OnlineBanner);
    scene.service.snapshot.fromUsb = true; // where a missing package is named
    scene.service.snapshot.runtimeEntry = {{"setupUrl", beyond}};
    const UpdateChoices choices = scene.service.updateChoices();
    QVERIFY(choices.runtime.reason.contains(beyond));
    QVERIFY(duringModal([&] { scene.parts.bannerUpdateButton->click(); },
                        [&](QWidget *dialog) {
                            QStringList reasons;
                            for (QCheckBox *box : dialog->findChildren<QCheckBox *>())
                                reasons.append(described(box));
                            QVERIFY(reasons.contains(choices.runtime.reason));
                        }));
}

void AccessibilityTest::textStandsOutFromItsGround_data() {
    QTest::addColumn<QString>("palette");
    QTest::addColumn<QString>("style");
    for (const char *style : {"Fusion", "Windows"})
        for (const char *palette : {"light", "dark", "high-contrast"})
            QTest::addRow("%s palette, %s style", palette, style) << palette << style;
}

void AccessibilityTest::textStandsOutFromItsGround() {
    QFETCH(QString, palette);
    QFETCH(QString, style);
    useLanguage(Language::English);
    QApplication::setStyle(style);
    QApplication::setPalette(paletteNamed(palette));
    WindowScene scene;
    const WindowParts &parts = scene.parts;
    scene.service.projectPath = "/lines/a.yslib";
    scene.service.statusText = "A status";
    scene.service.state = State::RepairMode;
    scene.service.updateSummary = "Project -> 2.0";
    const auto readable = [&](const QList<QWidget *> &widgets) {
        scene.window.show();
        QCoreApplication::processEvents();
        for (QWidget *widget : widgets) {
            QVERIFY(widget->isVisible());
            const double found = contrastInPixels(widget);
            QVERIFY2(found >= 4.5, qPrintable(QString("%1: %2").arg(
                                       widget->metaObject()->className(), QString::number(found))));
        }
    };

    scene.offerUpdate(PromptMode::OnlineBanner);
    readable({parts.titleLabel, parts.projectLabel, parts.statusLabel, parts.bannerLabel,
              parts.bannerUpdateButton, parts.bannerRemindButton, parts.bannerSkipButton,
              parts.projectPathEdit, parts.skipPrecheckCheck, parts.launchButton});
    scene.offerUpdate(PromptMode::BadgeOnly);
    readable({parts.hasUpdateButton});
    scene.service.taskId = "apply_1";
    scene.setTaskActive(true);
    Q_EMIT scene.service.updateTaskProgressChanged("apply_1", "download", 0, "Five of seven");
    readable({parts.taskTitleLabel, parts.taskDetailLabel, parts.taskProgressBar,
              parts.taskCancelButton});
    scene.service.checkInFlight = false;

    scene.service.taskId.clear();
    scene.setTaskActive(false);
    scene.offerUpdate(PromptMode::OnlineBanner);
    QVERIFY(duringModal([&] { scene.parts.bannerUpdateButton->click(); },
                        [](QWidget *dialog) {
                            // Two labels and five boxes, also those that cannot be ticked.
                            QList<QWidget *> texts;
                            for (auto *label : dialog->findChildren<QLabel *>())
                                texts.append(label);
                            for (auto *box : dialog->findChildren<QCheckBox *>())
                                texts.append(box);
                            QCOMPARE(texts.size(), 7);
                            for (QWidget *widget : texts) {
                                const double found = contrastInPixels(widget);
                                QVERIFY2(found >= 4.5, qPrintable(QString::number(found)));
                            }
                        }));

    // The grounds of the panels are the style sheets' under every palette.
    QCOMPARE(parts.bannerPanel->styleSheet().contains("#e3f2fd"), true);
    QVERIFY(contrast(parts.bannerLabel->palette().color(QPalette::WindowText), QColor("#e3f2fd")) >=
            4.5);
    QVERIFY(contrast(parts.taskTitleLabel->palette().color(QPalette::WindowText),
                     QColor("#fff8e1")) >= 4.5);
    QVERIFY(contrast(parts.taskDetailLabel->palette().color(QPalette::WindowText),
                     QColor("#fff8e1")) >= 4.5);
    QVERIFY(parts.hasUpdateButton->autoFillBackground());
    QVERIFY(contrast(QColor("#1565c0"), parts.hasUpdateButton->palette().color(
                                            parts.hasUpdateButton->backgroundRole())) >= 4.5);
}

QUORVANE_TEST_MAIN(QApplication, AccessibilityTest)
#include "accessibility_test.moc"
