#include "window_parts.h"

#include <QLayout>

namespace {

QLayout *layoutAt(const QLayout *layout, int index) {
    QLayoutItem *item = layout != nullptr ? layout->itemAt(index) : nullptr;
    return item != nullptr ? item->layout() : nullptr;
}

template<typename Widget>
Widget *widgetAt(const QLayout *layout, int index) {
    QLayoutItem *item = layout != nullptr ? layout->itemAt(index) : nullptr;
    return item != nullptr ? qobject_cast<Widget *>(item->widget()) : nullptr;
}

const QLayout *inside(const QWidget *panel) {
    return panel != nullptr ? panel->layout() : nullptr;
}

} // namespace

WindowParts::WindowParts(const LauncherWindow &window) {
    const QLayout *main = window.layout();
    titleLabel = widgetAt<QLabel>(layoutAt(main, 0), 0);
    languageButton = widgetAt<QToolButton>(layoutAt(main, 0), 1);
    projectLabel = widgetAt<QLabel>(main, 1);
    versionLabel = widgetAt<QLabel>(main, 2);
    statusLabel = widgetAt<QLabel>(main, 3);
    busyBar = widgetAt<QProgressBar>(main, 4);
    taskPanel = widgetAt<QWidget>(main, 5);
    bannerPanel = widgetAt<QWidget>(main, 6);
    logView = widgetAt<QPlainTextEdit>(main, 7);
    repairPanel = widgetAt<QWidget>(main, 8);
    actionRow = widgetAt<QWidget>(main, 9);
    countdownLabel = widgetAt<QLabel>(layoutAt(main, 11), 0);

    const QLayout *task = inside(taskPanel);
    taskTitleLabel = widgetAt<QLabel>(task, 0);
    taskDetailLabel = widgetAt<QLabel>(task, 1);
    taskProgressBar = widgetAt<QProgressBar>(task, 2);
    taskCancelButton = widgetAt<QPushButton>(layoutAt(task, 3), 1);

    const QLayout *banner = inside(bannerPanel);
    bannerLabel = widgetAt<QLabel>(banner, 0);
    bannerUpdateButton = widgetAt<QPushButton>(layoutAt(banner, 1), 0);
    bannerRemindButton = widgetAt<QPushButton>(layoutAt(banner, 1), 1);
    bannerSkipButton = widgetAt<QPushButton>(layoutAt(banner, 1), 2);

    const QLayout *repair = inside(repairPanel);
    projectPathEdit = widgetAt<QLineEdit>(repair, 0);
    skipPrecheckCheck = widgetAt<QCheckBox>(repair, 1);
    hasUpdateButton = widgetAt<QPushButton>(repair, 2);
    browseButton = widgetAt<QPushButton>(layoutAt(repair, 3), 0);
    openLogButton = widgetAt<QPushButton>(layoutAt(repair, 3), 1);
    openDumpsButton = widgetAt<QPushButton>(layoutAt(repair, 3), 2);
    launchButton = widgetAt<QPushButton>(layoutAt(repair, 3), 3);

    const QLayout *actions = inside(actionRow);
    applyButton = widgetAt<QPushButton>(actions, 0);
    skipButton = widgetAt<QPushButton>(actions, 1);
}
