// The size of the window on a large screen: it grows with its text and never beyond its limit, at every
// scale of the fonts. CMake runs this program once for each device scale.
#include "support/staged_main.h"
#include "window_scene.h"

#include "window/text_label.h"

#include <QResizeEvent>
#include <QScreen>
#include <QVector>
#include <QWindow>

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
    void aShorterTextShrinksNothing();
    void theWindowGoesBackWhenAPanelGoes_data();
    void theWindowGoesBackWhenAPanelGoes();
    void changesWithinOneTurnAreFittedOnce();
    void anEarlierSizeThatComesLateDoesNotStay();
    void anEarlierSizeThatNobodyIsToldOfDoesNotStay();
    void aSizeThatAWindowManagerHeldToALaterMinimumDoesNotStay();
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

bool isSmallerThanItsText(const QWidget *widget) {
    const QSize least = widget->minimumSizeHint();
    if (qobject_cast<const QAbstractButton *>(widget))
        return widget->width() < least.width() || widget->height() < least.height();
    return qobject_cast<const QLabel *>(widget) && widget->height() < least.height();
}

// Buttons, boxes and one-line labels of ours are never cut; labels with text from outside may be,
// and say so with an ellipsis. Nothing overlaps anything else in the same column.
QString whatIsCut(const WindowScene &scene) {
    const auto widgets = scene.window.findChildren<QWidget *>();
    for (QWidget *widget : widgets) {
        if (!widget->isVisible() || widget->parentWidget()->inherits("QAbstractScrollArea") ||
            widget->inherits("QScrollBar"))
            continue;
        if (!isEnclosed(widget, &scene.window) || !isEnclosed(widget, widget->parentWidget()) ||
            isSmallerThanItsText(widget))
            return widget->metaObject()->className() + (' ' + widget->accessibleName()) +
                   widget->property("text").toString().left(40);
    }
    const QList<QWidget *> column = {
        scene.parts.titleLabel,  scene.parts.projectLabel, scene.parts.versionLabel,
        scene.parts.statusLabel, scene.parts.taskPanel,    scene.parts.bannerPanel,
        scene.parts.logView,     scene.parts.repairPanel,  scene.parts.countdownLabel};
    int bottom = -1;
    for (const QWidget *part : column) {
        if (!part->isVisible())
            continue;
        if (part->geometry().top() <= bottom)
            return part->metaObject()->className() + QString(" overlaps");
        bottom = part->geometry().bottom();
    }
    return {};
}

// The sizes that the window system told of, however short a time they held. QWindow::size() is no such
// thing: it also says what was asked for and not yet answered.
class SizesTold : public QObject {
public:
    explicit SizesTold(const QWidget &window) { window.windowHandle()->installEventFilter(this); }

    QVector<QSize> sizes;

    QSize last() const { return sizes.isEmpty() ? QSize() : sizes.last(); }

protected:
    bool eventFilter(QObject *, QEvent *event) override {
        if (event->type() == QEvent::Resize)
            sizes.append(static_cast<QResizeEvent *>(event)->size());
        return false;
    }
};

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
        QTRY_COMPARE(whatIsCut(scene), QString());
        const QSize size = scene.window.size();
        QCOMPARE(size.expandedTo(QSize(640, 360)), size);
        QCOMPARE(size.boundedTo(largest), size);
    };
    for (const State state : allStates()) {
        for (const PromptMode mode :
             {PromptMode::None, PromptMode::OnlineBanner, PromptMode::BadgeOnly}) {
            scene.service.state = state;
            scene.offerUpdate(mode);
            compareAll();
            if (QTest::currentTestFailed())
                return;
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
    QTRY_VERIFY(scene.window.height() > 360);
    const auto *status = static_cast<const TextLabel *>(scene.parts.statusLabel);
    QTRY_VERIFY(!status->isElided());
    QCOMPARE(status->height(), status->heightForWidth(status->width()));
}

// A text that comes and goes moves nothing under the hand.
void SizeTest::aShorterTextShrinksNothing() {
    WindowScene scene;
    showFramed(scene.window);
    scene.service.statusText = findings();
    scene.put(State::RepairMode);
    QCoreApplication::processEvents();
    QTRY_COMPARE(whatIsCut(scene), QString());
    const QSize grown = scene.window.size();
    QVERIFY(grown.height() > 360);
    scene.service.statusText = "short";
    scene.put(State::Failed);
    QCoreApplication::processEvents();
    QCOMPARE(scene.window.size(), grown);
}

void SizeTest::theWindowGoesBackWhenAPanelGoes_data() {
    QTest::addColumn<QSize>("set");
    QTest::addColumn<QSize>("after");
    QTest::newRow("to its size at the start") << QSize() << QSize(640, 360);
    QTest::newRow("to the larger size that the user has set") << QSize(800, 500) << QSize(800, 500);
    QTest::newRow("to the smaller size that the user has set")
        << QSize(640, 300) << QSize(640, 300);
}

void SizeTest::theWindowGoesBackWhenAPanelGoes() {
    QFETCH(QSize, set);
    QFETCH(QSize, after);
    WindowScene scene;
    showFramed(scene.window);
    if (set.isValid()) {
        scene.window.resize(set);
        QTRY_COMPARE(scene.window.size(), set);
    }
    scene.service.statusText = findings().section('\n', 0, 11);
    scene.service.updateSummary = findings().section('\n', 0, 11);
    scene.service.state = State::RepairMode;
    scene.offerUpdate(PromptMode::OnlineBanner);
    QCoreApplication::processEvents();
    QTRY_VERIFY(scene.window.height() > 500);
    scene.service.statusText = "short";
    scene.offerUpdate(PromptMode::None);
    QCoreApplication::processEvents();
    QTRY_COMPARE(scene.window.size(), after);
}

void SizeTest::changesWithinOneTurnAreFittedOnce() {
    WindowScene scene;
    showFramed(scene.window);
    struct Sizes : QObject {
        QList<QSize> all;
        bool eventFilter(QObject *, QEvent *event) override {
            if (event->type() == QEvent::Resize)
                all.append(static_cast<QResizeEvent *>(event)->size());
            return false;
        }
    } sizes;
    scene.window.installEventFilter(&sizes);
    scene.service.statusText = findings();
    scene.put(State::RepairMode);
    scene.service.updateSummary = findings();
    scene.offerUpdate(PromptMode::OnlineBanner);
    scene.offerUpdate(PromptMode::None);
    scene.service.statusText = findings().section('\n', 0, 11);
    scene.put(State::Failed);
    QCOMPARE(sizes.all, QList<QSize>());
    QCoreApplication::processEvents();
    QCOMPARE(sizes.all, QList<QSize>{scene.window.size()});
    QVERIFY(scene.window.height() > 360);
}

// As of a window manager that answers two requests in the wrong order.
void SizeTest::anEarlierSizeThatComesLateDoesNotStay() {
    WindowScene scene;
    scene.window.show();
    SizesTold told(scene.window);
    const QSize start = scene.window.size();
    scene.service.statusText = findings();
    scene.put(State::RepairMode);
    QTRY_VERIFY(told.last().height() > start.height());
    const QSize grown = scene.window.size();
    // Also after the last of the looks that are taken without a reason.
    for (int late = 1; late <= 8; ++late) {
        told.sizes.clear();
        // Asked for until it came: the window may be looking just now, and nobody is told of what it undoes.
        const auto hasCome = [&] {
            if (!told.sizes.contains(start))
                scene.window.windowHandle()->resize(start);
            return told.sizes.contains(start);
        };
        QTRY_VERIFY(hasCome());
        QTRY_COMPARE(told.last(), grown);
        QCOMPARE(scene.window.size(), grown);
    }
}

// Qt folds answers that come together into the last, and tells of no size that it has told of before.
void SizeTest::anEarlierSizeThatNobodyIsToldOfDoesNotStay() {
    WindowScene scene;
    scene.window.show();
    QTRY_VERIFY(scene.window.windowHandle()->isExposed());
    const QSize start = scene.window.size();
    scene.service.statusText = findings();
    scene.put(State::RepairMode);
    while (scene.window.height() == start.height())
        QCoreApplication::sendPostedEvents();
    const QSize grown = scene.window.size();
    QWindow *handle = scene.window.windowHandle();
    handle->resize(start);
    handle->screen()->grabWindow(handle->winId(), 0, 0, 1,
                                 1); // which the window system answers after both
    QTRY_COMPARE(handle->size(), grown);
    QCOMPARE(scene.window.size(), grown);
}

// It answers the request for an earlier size once it knows of a minimum that came later.
void SizeTest::aSizeThatAWindowManagerHeldToALaterMinimumDoesNotStay() {
    WindowScene scene;
    scene.window.show();
    SizesTold told(scene.window);
    scene.service.statusText = findings();
    scene.put(State::RepairMode);
    QTRY_VERIFY(told.last().height() > 360);
    const QSize grown = scene.window.size();
    const QSize mixed(grown.width(), scene.window.minimumHeight());
    QVERIFY(mixed.height() != 360 && mixed.height() < grown.height());
    told.sizes.clear();
    const auto hasCome = [&] {
        if (!told.sizes.contains(mixed))
            scene.window.windowHandle()->resize(mixed);
        return told.sizes.contains(mixed);
    };
    QTRY_VERIFY(hasCome());
    QTRY_COMPARE(told.last(), grown);
    QCOMPARE(scene.window.size(), grown);
}

void SizeTest::aLabelAtItsLimitHoldsTheRestInItsToolTip() {
    WindowScene scene;
    scene.window.show();
    scene.service.statusText = findings();
    scene.put(State::RepairMode);
    QCoreApplication::processEvents();
    QTRY_COMPARE(whatIsCut(scene), QString());
    const auto *status = static_cast<const TextLabel *>(scene.parts.statusLabel);
    QVERIFY(status->isElided());
    QCOMPARE(status->text(), findings());
}

QUORVANE_TEST_MAIN(QApplication, SizeTest)
#include "size_test.moc"
