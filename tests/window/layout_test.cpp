// The widgets, how they lie, their looks, and the slots that the meta-object offers.
#include "support/staged_main.h"
#include "window_scene.h"

#include <QLayout>
#include <QMetaMethod>

class LayoutTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theMainLayoutHoldsEveryPartInItsPlace();
    void thePanelsHoldTheirParts();
    void theWidgetsLookAsTold();
    void theTitleIsBoldAndTwoPointsLarger();
    void theCountdownIsAsBoldAsTheTitleAndTheStatusIsBold();
    void theTitleOfAFontSizedInPixelsIsLargerToo();
    void onlyThreeStyleSheetsExist();
    void noButtonIsADefaultButton();
    void textFromOutsideIsNeverRichText();
    void theSlotsStandInTheirOrderAndArePrivate();
    void theWindowIsAModelessDialogOf640By360();
};

void LayoutTest::theMainLayoutHoldsEveryPartInItsPlace() {
    WindowScene scene;
    const WindowParts &parts = scene.parts;
    const auto *main = qobject_cast<QVBoxLayout *>(scene.window.layout());
    QVERIFY(main);
    QCOMPARE(main->count(), 12);
    auto *header = qobject_cast<QHBoxLayout *>(main->itemAt(0)->layout());
    QVERIFY(header);
    QCOMPARE(header->count(), 2);
    QVERIFY(parts.titleLabel);
    QCOMPARE(header->stretch(0), 1);
    QVERIFY(parts.languageButton);
    QCOMPARE(header->itemAt(1)->alignment(), Qt::Alignment(Qt::AlignTop));
    QVERIFY(parts.projectLabel);
    QVERIFY(parts.versionLabel);
    QVERIFY(parts.statusLabel);
    QVERIFY(parts.busyBar);
    QVERIFY(parts.taskPanel);
    QVERIFY(parts.bannerPanel);
    QVERIFY(parts.logView);
    QVERIFY(parts.repairPanel);
    QVERIFY(parts.actionRow);
    QVERIFY(main->itemAt(10)->spacerItem());
    const auto *footer = qobject_cast<QHBoxLayout *>(main->itemAt(11)->layout());
    QVERIFY(footer);
    QCOMPARE(footer->count(), 2);
    QVERIFY(parts.countdownLabel);
    QCOMPARE(footer->itemAt(0)->alignment(), Qt::AlignLeft | Qt::AlignBottom);
    QVERIFY(footer->itemAt(1)->spacerItem());
}

void LayoutTest::thePanelsHoldTheirParts() {
    WindowScene scene;
    const WindowParts &parts = scene.parts;
    QVERIFY(qobject_cast<QVBoxLayout *>(parts.repairPanel->layout()));
    QCOMPARE(parts.repairPanel->layout()->count(), 4);
    QVERIFY(parts.projectPathEdit && parts.skipPrecheckCheck && parts.hasUpdateButton);
    QCOMPARE(parts.repairPanel->layout()->itemAt(2)->alignment(), Qt::Alignment(Qt::AlignLeft));
    QCOMPARE(parts.repairPanel->layout()->itemAt(3)->layout()->count(), 4);
    QVERIFY(parts.browseButton && parts.openLogButton && parts.openDumpsButton &&
            parts.launchButton);

    QVERIFY(qobject_cast<QVBoxLayout *>(parts.bannerPanel->layout()));
    QCOMPARE(parts.bannerPanel->layout()->count(), 2);
    QVERIFY(parts.bannerLabel);
    QLayout *answers = parts.bannerPanel->layout()->itemAt(1)->layout();
    QCOMPARE(answers->count(), 4);
    QVERIFY(parts.bannerUpdateButton && parts.bannerRemindButton && parts.bannerSkipButton);
    QVERIFY(answers->itemAt(3)->spacerItem());

    QVERIFY(qobject_cast<QVBoxLayout *>(parts.taskPanel->layout()));
    QCOMPARE(parts.taskPanel->layout()->count(), 4);
    QVERIFY(parts.taskTitleLabel && parts.taskDetailLabel && parts.taskProgressBar);
    QLayout *cancel = parts.taskPanel->layout()->itemAt(3)->layout();
    QCOMPARE(cancel->count(), 2);
    QVERIFY(cancel->itemAt(0)->spacerItem());
    QVERIFY(parts.taskCancelButton);

    QVERIFY(qobject_cast<QHBoxLayout *>(parts.actionRow->layout()));
    QCOMPARE(parts.actionRow->layout()->count(), 2);
    QVERIFY(parts.applyButton && parts.skipButton);
}

void LayoutTest::theWidgetsLookAsTold() {
    WindowScene scene;
    const WindowParts &parts = scene.parts;
    QVERIFY(parts.statusLabel->wordWrap());
    QVERIFY(parts.bannerLabel->wordWrap());
    QVERIFY(parts.taskDetailLabel->wordWrap());
    QVERIFY(!parts.busyBar->isTextVisible());
    QVERIFY(parts.taskProgressBar->isTextVisible());
    QVERIFY(parts.languageButton->autoRaise());
    QCOMPARE(parts.languageButton->iconSize(), QSize(28, 28));
    QVERIFY(parts.logView->isReadOnly());
    QCOMPARE(parts.logView->minimumHeight(), 120);
    QCOMPARE(parts.bannerPanel->objectName(), QString("updateBanner"));
    QCOMPARE(parts.taskPanel->objectName(), QString("updateTaskPanel"));
    QVERIFY(parts.hasUpdateButton->isFlat());
    QCOMPARE(parts.projectLabel->sizePolicy().horizontalPolicy(), QSizePolicy::Ignored);
}

void LayoutTest::theTitleIsBoldAndTwoPointsLarger() {
    const WindowScene scene;
    const QFont plain = QLabel().font();
    QCOMPARE(scene.parts.titleLabel->font().pointSize(), plain.pointSize() + 2);
    QCOMPARE(scene.parts.titleLabel->font().weight(), 75);
    QCOMPARE(scene.parts.projectLabel->font(), plain);
}

// What one must know is what one sees first.
void LayoutTest::theCountdownIsAsBoldAsTheTitleAndTheStatusIsBold() {
    const WindowScene scene;
    const QFont plain = QLabel().font();
    QCOMPARE(scene.parts.countdownLabel->font(), scene.parts.titleLabel->font());
    QCOMPARE(scene.parts.statusLabel->font().weight(), 75);
    QCOMPARE(scene.parts.statusLabel->font().pointSize(), plain.pointSize());
}

void LayoutTest::theTitleOfAFontSizedInPixelsIsLargerToo() {
    const QFont before = QApplication::font();
    QFont pixels = before;
    pixels.setPixelSize(13);
    QApplication::setFont(pixels);
    {
        const WindowScene scene;
        QCOMPARE(scene.parts.titleLabel->font().pointSize(), -1);
        QCOMPARE(scene.parts.titleLabel->font().pixelSize(), 16);
        QCOMPARE(scene.parts.titleLabel->font().weight(), 75);
    }
    QApplication::setFont(before);
}

void LayoutTest::onlyThreeStyleSheetsExist() {
    const WindowScene scene;
    const WindowParts &parts = scene.parts;
    QCOMPARE(parts.hasUpdateButton->styleSheet(),
             QString("QPushButton { color: #1565c0; text-align: left; }"));
    QCOMPARE(parts.bannerPanel->styleSheet(),
             QString("#updateBanner { background-color: #e3f2fd; border: 1px solid #90caf9; "
                     "border-radius: 4px; padding: 6px; }"));
    QCOMPARE(parts.taskPanel->styleSheet(),
             QString("#updateTaskPanel { background-color: #fff8e1; border: 1px solid #ffcc80; "
                     "border-radius: 4px; padding: 6px; }"));
    int sheets = scene.window.styleSheet().isEmpty() ? 0 : 1;
    const auto widgets = scene.window.findChildren<QWidget *>();
    for (const QWidget *widget : widgets)
        sheets += widget->styleSheet().isEmpty() ? 0 : 1;
    QCOMPARE(sheets, 3);
}

void LayoutTest::noButtonIsADefaultButton() {
    const WindowScene scene;
    const auto buttons = scene.window.findChildren<QPushButton *>();
    QCOMPARE(buttons.size(), 11);
    for (const QPushButton *button : buttons) {
        QVERIFY2(!button->autoDefault(), qPrintable(button->text()));
        QVERIFY2(!button->isDefault(), qPrintable(button->text()));
    }
}

void LayoutTest::textFromOutsideIsNeverRichText() {
    WindowScene scene;
    const auto labels = scene.window.findChildren<QLabel *>();
    for (const QLabel *label : labels)
        QCOMPARE(label->textFormat(), Qt::PlainText);
    scene.service.projectPath = "/lines/<b>bold</b>/demo.yslib";
    scene.refresh();
    QCOMPARE(scene.parts.projectLabel->text(), QString("项目：/lines/<b>bold</b>/demo.yslib"));
    QVERIFY(scene.parts.projectLabel->toolTip().contains("&lt;b&gt;bold&lt;/b&gt;"));
    scene.service.projectPath = "/lines/plain/demo.yslib";
    scene.refresh();
    QCOMPARE(scene.parts.projectLabel->toolTip(), QString("/lines/plain/demo.yslib"));
}

void LayoutTest::theSlotsStandInTheirOrderAndArePrivate() {
    const QList<QByteArray> expected = {"onBrowseProject()",
                                        "onOpenLogs()",
                                        "onOpenDumps()",
                                        "onLaunchNow()",
                                        "onApplyUpdate()",
                                        "onSkipUpdate()",
                                        "onUpdateNow()",
                                        "onRemindUpdateLater()",
                                        "onSkipThisOnlineVersion()",
                                        "onHasUpdateEntry()",
                                        "onCancelUpdateTask()",
                                        "onToggleLocale()",
                                        "refreshUi()",
                                        "retranslateUi()",
                                        "onUpdateTaskProgress(QString,QString,int,QString)"};
    const QMetaObject &meta = LauncherWindow::staticMetaObject;
    QList<QByteArray> found;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        QCOMPARE(meta.method(i).methodType(), QMetaMethod::Slot);
        QCOMPARE(meta.method(i).access(), QMetaMethod::Private);
        found.append(meta.method(i).methodSignature());
    }
    QCOMPARE(found, expected);
    QCOMPARE(meta.method(meta.methodCount() - 1).parameterNames(),
             QList<QByteArray>({"taskId", "phase", "percent", "detail"}));
}

void LayoutTest::theWindowIsAModelessDialogOf640By360() {
    WindowScene scene;
    QCOMPARE(scene.window.size(), QSize(640, 360));
    scene.window.show();
    QVERIFY(!scene.window.isModal());
    QCOMPARE(scene.window.size(), QSize(640, 360));
    QCOMPARE(scene.window.maximumSize(), QSize(1280, 720));
}

QUORVANE_TEST_MAIN(QApplication, LayoutTest)
#include "layout_test.moc"
