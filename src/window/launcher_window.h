// The program's one window: a small dialog that shows what LauncherService says and forwards what
// the user chooses. It decides nothing: after each user action, and at each signal of the service,
// refreshUi() derives the whole widget state anew. Main thread only.
#pragma once

#include "frame/launch_log.h"
#include "launcher/launcher_service.h"

#include <QDialog>
#include <QString>

class QCheckBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QProgressBar;
class QPushButton;
class QToolButton;
class QVBoxLayout;
class FocusGuide;
class TextLabel;
class WindowFit;

class LauncherWindow : public QDialog {
    Q_OBJECT

public:
    // `launcher` is not owned and must outlive the window. Connects to all its signals.
    explicit LauncherWindow(LauncherService *launcher, QWidget *parent = nullptr);

protected:
    // A change of language: all texts anew, then the service's. Stands being told several times.
    void changeEvent(QEvent *event) override;
    // F8 leads to the repair mode; Esc closes the window and so ends the program.
    void keyPressEvent(QKeyEvent *event) override;

private Q_SLOTS:
    void onBrowseProject();
    void onOpenLogs();
    void onOpenDumps();
    void onLaunchNow();
    void onApplyUpdate();
    void onSkipUpdate();
    void onUpdateNow();
    void onRemindUpdateLater();
    void onSkipThisOnlineVersion();
    void onHasUpdateEntry();
    void onCancelUpdateTask();
    void onToggleLocale();
    void refreshUi();
    void retranslateUi();
    void onUpdateTaskProgress(const QString &taskId, const QString &phase, int percent,
                              const QString &detail);

private:
    // window_layout.cpp: the widgets, once.
    void createWidgets();
    void buildLayout();
    void buildRepairPanel();
    void buildBannerPanel();
    void buildTaskPanel();
    void buildActionRow();
    void orderTabs();

    // launcher_window.cpp: reactions.
    void connectButtons();
    void connectService();
    void onStatusChanged(const QString &message);
    void onCountdownChanged(int secondsRemaining);
    void onSuggestionReady(const QString &summary);
    void onPrecheckFailed(const QString &details);
    void onLaunchFailed(const QString &details);
    void onTargetExited(int exitCode, const QString &details);

    // window_refresh.cpp: what the state of the service looks like.
    void showProject();
    void showStatus(const QString &text);
    void showPanels(LauncherService::State s);
    void showBanner(bool shown);
    [[nodiscard]] QPushButton *likeliestButton() const;
    void guideFocus();
    void showCountdown(int secondsRemaining);
    void refreshLogView();
    void updateLanguageButton();
    void nameForAccessibility();

    // window_updates.cpp: banner, dialog, task panel and the end of an update.
    [[nodiscard]] bool bannerDue() const;
    void fillBanner();
    void openUpdateDialog();
    [[nodiscard]] static QString phaseText(const QString &phase);
    [[nodiscard]] static QString failureTitle(const QString &details);
    void onApplyFinished(bool success, const QString &details);

    LauncherService *service;
    TextLabel *titleLabel;
    TextLabel *projectLabel;
    TextLabel *versionLabel;
    QLabel *countdownLabel;
    TextLabel *statusLabel;
    QProgressBar *busyBar;
    QLineEdit *projectPathEdit;
    QCheckBox *skipPrecheckCheck;
    QPushButton *browseButton;
    QPushButton *openLogButton;
    QPushButton *openDumpsButton;
    QPushButton *launchButton;
    QPushButton *applyButton;
    QPushButton *skipButton;
    QToolButton *languageButton;
    QPlainTextEdit *logView;
    QWidget *repairPanel;
    QWidget *bannerPanel;
    TextLabel *bannerLabel;
    QPushButton *bannerUpdateButton;
    QPushButton *bannerRemindButton;
    QPushButton *bannerSkipButton;
    QPushButton *hasUpdateButton; // the badge
    QWidget *taskPanel;
    TextLabel *taskTitleLabel;
    TextLabel *taskDetailLabel;
    QProgressBar *taskProgressBar;
    QPushButton *taskCancelButton;
    QWidget *actionRow;    // kept and never shown: the banner's buttons do its work
    RunLogView runLog;     // the log from here on is this run's
    QString lastTaskPhase; // of the last report, for a change of language
    QString lastTaskDetail;
    QString announcedStatus; // while it stands, it is not said again
    WindowFit *fit;
    FocusGuide *focusGuide;
};
