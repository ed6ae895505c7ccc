// The size of the window: it grows with its text and never beyond its limit, at every scale of the
// fonts. CMake runs this program once more for each device scale.
#include "support/staged_main.h"
#include "window_scene.h"

#include "window/text_label.h"

using State = LauncherService::State;
using PromptMode = LauncherService::UpdatePromptMode;

class SizeTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup();
    void everythingFitsAndCanBeRead_data();
    void everythingFitsAndCanBeRead();
    void aLongPathWidensNothing();
    void theWindowGrowsUntilTheStatusIsWhole();
    void theWindowNeverShrinksByItself();
    void aLabelAtItsLimitHoldsTheRestInItsToolTip();

private:
    QFont fontBefore;
};

namespace {

const QSize largest(1280, 720);

QString longPath() {
    return ("/media/line/" + QString("数据 folder/").repeated(40)).left(292) + "/a.yslib";
}

QString findings() {
    QString text = "项目预检失败：";
    for (int i = 1; i <= 30; ++i)
        text += QString("\n[error] YS%1 scripts/station_%1.ys: the import does not exist").arg(i);
    return text;
}

bool isEnclosed(const QWidget *widget, const QWidget *in) {
    return in->rect().contains(QRect(widget->mapTo(in, QPoint()), widget->size()));
}

// Buttons, boxes and one-line labels of ours are never cut; labels with text from outside may be,
// and say so with an ellipsis.
void compareNothingCut(const WindowScene &scene) {
    const auto widgets = scene.window.findChildren<QWidget *>();
    for (QWidget *widget : widgets) {
        if (!widget->isVisible() || widget->parentWidget()->inherits("QAbstractScrollArea") ||
            widget->inherits("QScrollBar"))
            continue;
        const QByteArray what = widget->metaObject()->className() +
                                (" " + widget->accessibleName()).toUtf8() +
                                widget->property("text").toString().left(40).toUtf8();
        QVERIFY2(isEnclosed(widget, &scene.window), what);
        QVERIFY2(isEnclosed(widget, widget->parentWidget()), what);
        if (qobject_cast<QAbstractButton *>(widget))
            QVERIFY2(widget->width() >= widget->minimumSizeHint().width() &&
                         widget->height() >= widget->minimumSizeHint().height(),
                     what);
        if (qobject_cast<QLabel *>(widget))
            QVERIFY2(widget->height() >= widget->minimumSizeHint().height(), what);
    }
    // Nothing overlaps anything else in the same column.
    const QList<QWidget *> column = {
        scene.parts.titleLabel,  scene.parts.projectLabel, scene.parts.versionLabel,
        scene.parts.statusLabel, scene.parts.taskPanel,    scene.parts.bannerPanel,
        scene.parts.logView,     scene.parts.repairPanel,  scene.parts.countdownLabel};
    int bottom = -1;
    for (const QWidget *part : column) {
        if (!part->isVisible())
            continue;
        QVERIFY(part->geometry().top() > bottom);
        bottom = part->geometry().bottom();
    }
}

} // namespace

void SizeTest::initTestCase() {
    stageTranslation();
    fontBefore = QApplication::font();
}

void SizeTest::cleanup() {
    QApplication::setFont(fontBefore);
}

void SizeTest::everythingFitsAndCanBeRead_data() {
    QTest::addColumn<Language>("language");
    QTest::addColumn<int>("percent");
    QTest::addColumn<QString>("text");
    for (const Language language : {Language::Chinese, Language::English})
        for (const int percent : {100, 150, 200})
            for (const char *text : {"short", "long"})
                QTest::addRow("%s at %d per cent with %s texts",
                              language == Language::English ? "English" : "Chinese", percent, text)
                    << language << percent << text;
}

void SizeTest::everythingFitsAndCanBeRead() {
    QFETCH(Language, language);
    QFETCH(int, percent);
    QFETCH(QString, text);
    QFont font = fontBefore;
    font.setPointSizeF(fontBefore.pointSizeF() * percent / 100);
    QApplication::setFont(font);
    useLanguage(language);
    WindowScene scene;
    QCOMPARE(longPath().size(), 300);
    scene.service.projectPath = text == "long" ? longPath() : QString("/lines/a.yslib");
    scene.service.statusText = text == "long" ? findings() + '\n' + longPath() : QString("ready");
    scene.service.updateSummary = scene.service.statusText;
    scene.service.taskId = "apply_12345678";
    scene.window.show();
    const auto compareAll = [&] {
        QCoreApplication::processEvents();
        QVERIFY(scene.window.width() >= 640 && scene.window.height() >= 360);
        QVERIFY2(scene.window.width() <= largest.width() &&
                     scene.window.height() <= largest.height(),
                 qPrintable(QString("%1: %2x%3")
                                .arg(QString(nameOf(scene.service.state)))
                                .arg(scene.window.width())
                                .arg(scene.window.height())));
        compareNothingCut(scene);
    };
    for (const State state : allStates()) {
        for (const PromptMode mode :
             {PromptMode::None, PromptMode::OnlineBanner, PromptMode::BadgeOnly}) {
            scene.service.state = state;
            scene.offerUpdate(mode);
            compareAll();
        }
        scene.setTaskActive(true);
        Q_EMIT scene.service.updateTaskProgressChanged("apply_12345678", "download", -1,
                                                       text == "long" ? findings() : "one");
        compareAll();
        scene.setTaskActive(false);
    }
}

void SizeTest::aLongPathWidensNothing() {
    WindowScene scene;
    scene.service.projectPath = longPath();
    scene.service.statusText = "已选项目：" + longPath();
    scene.window.show();
    scene.put(State::RepairMode);
    QCoreApplication::processEvents();
    QCOMPARE(scene.window.width(), 640);
    QCOMPARE(scene.parts.projectLabel->toolTip(), longPath());
}

void SizeTest::theWindowGrowsUntilTheStatusIsWhole() {
    WindowScene scene;
    scene.window.show();
    scene.service.statusText = findings().section('\n', 0, 11);
    scene.put(State::RepairMode);
    QCoreApplication::processEvents();
    QVERIFY(scene.window.height() > 360);
    const auto *status = static_cast<const TextLabel *>(scene.parts.statusLabel);
    QVERIFY(!status->isElided());
    QCOMPARE(status->height(), status->heightForWidth(status->width()));
}

void SizeTest::theWindowNeverShrinksByItself() {
    WindowScene scene;
    scene.window.show();
    scene.service.statusText = findings();
    scene.put(State::RepairMode);
    QCoreApplication::processEvents();
    const QSize grown = scene.window.size();
    scene.service.statusText = "short";
    scene.put(State::Monitor);
    QCoreApplication::processEvents();
    QCOMPARE(scene.window.size(), grown);
}

void SizeTest::aLabelAtItsLimitHoldsTheRestInItsToolTip() {
    WindowScene scene;
    scene.window.show();
    scene.service.statusText = findings();
    scene.put(State::RepairMode);
    QCoreApplication::processEvents();
    const auto *status = static_cast<const TextLabel *>(scene.parts.statusLabel);
    QVERIFY(status->isElided());
    QCOMPARE(status->text(), findings());
}

QUORVANE_TEST_MAIN(QApplication, SizeTest)
#include "size_test.moc"
