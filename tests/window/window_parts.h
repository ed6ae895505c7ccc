// The widgets of the launcher window, found by their place in its layout.
#pragma once

#include "window/launcher_window.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QToolButton>

struct WindowParts {
    // Every member is set, or null where the layout does not hold a widget of that kind there.
    explicit WindowParts(const LauncherWindow &window);

    QLabel *titleLabel;
    QToolButton *languageButton;
    QLabel *projectLabel;
    QLabel *versionLabel;
    QLabel *statusLabel;
    QProgressBar *busyBar;
    QWidget *taskPanel;
    QLabel *taskTitleLabel;
    QLabel *taskDetailLabel;
    QProgressBar *taskProgressBar;
    QPushButton *taskCancelButton;
    QWidget *bannerPanel;
    QLabel *bannerLabel;
    QPushButton *bannerUpdateButton;
    QPushButton *bannerRemindButton;
    QPushButton *bannerSkipButton;
    QPlainTextEdit *logView;
    QWidget *repairPanel;
    QLineEdit *projectPathEdit;
    QCheckBox *skipPrecheckCheck;
    QPushButton *hasUpdateButton;
    QPushButton *browseButton;
    QPushButton *openLogButton;
    QPushButton *openDumpsButton;
    QPushButton *launchButton;
    QWidget *actionRow;
    QPushButton *applyButton;
    QPushButton *skipButton;
    QLabel *countdownLabel;
};
