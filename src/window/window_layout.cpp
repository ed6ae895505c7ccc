// The widgets of the launcher window and how they lie.

#include "window/announcement.h"
#include "window/bounded_pane.h"
#include "window/focus_guide.h"
#include "window/launcher_window.h"
#include "window/png_resource.h"
#include "window/still_bar.h"
#include "window/text_label.h"
#include "window/window_fit.h"

#include <QBoxLayout>
#include <QCheckBox>
#include <QIcon>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QToolButton>

namespace {

const QMargins panelPadding(6, 6, 6, 6); // of the style sheets, which a layout does not see
// So narrow that the countdown with its log and the panel of a check fits the size at the start.
const QMargins edges(9, 4, 9, 4);
constexpr int gap = 3;

// A button that Enter never presses by accident: the buttons of a dialog are default buttons unless
// told otherwise, and Enter in the path field would start something.
QPushButton *plainButton(QWidget *parent) {
    auto *button = new QPushButton(parent);
    button->setAutoDefault(false);
    return button;
}

TextLabel *wrappedLabel(QWidget *parent) {
    auto *label = new TextLabel(parent);
    label->setWordWrap(true);
    return label;
}

QFont boldFont(QFont font) {
    font.setWeight(QFont::Bold);
    return font;
}

QFont headingFont(QFont font) {
    // A font that was sized in pixels has no point size.
    if (font.pointSize() > 0)
        font.setPointSize(font.pointSize() + 2);
    else
        font.setPixelSize(font.pixelSize() + 3);
    return boldFont(font);
}

// The panels stay light under every palette, so the text on them must stay dark.
void useDarkText(QWidget *label) {
    QPalette palette;
    palette.setColor(QPalette::WindowText, QColor(0x21, 0x21, 0x21));
    label->setPalette(palette);
}

// The badge's blue is too dark for a dark window: it brings a white ground of its own.
void useWhiteGround(QWidget *badge) {
    QPalette palette;
    palette.setColor(QPalette::Button, Qt::white);
    badge->setPalette(palette);
    badge->setAutoFillBackground(true);
}

QIcon programIcon() {
    QIcon icon;
    for (const int size : {16, 32, 48, 64})
        icon.addPixmap(pngResource(QStringLiteral(":/quorvaner-%1.png").arg(size)));
    return icon;
}

} // namespace

// In the order in which the eye meets them, which is the order that a screen reader walks.
void LauncherWindow::createWidgets() {
    setWindowIcon(programIcon());
    titleLabel = new TextLabel(this);
    titleLabel->setFont(headingFont(titleLabel->font()));
    projectLabel = new TextLabel(this);
    projectLabel->setElideMode(Qt::ElideMiddle);
    projectLabel->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    versionLabel = new TextLabel(this);
    statusLabel = wrappedLabel(this);
    makeAlert(statusLabel);
    statusLabel->setFont(boldFont(statusLabel->font()));
    busyBar = new QProgressBar(this);
    busyBar->setTextVisible(false);
    moveOnlyIfWanted(busyBar);
    busyBar->hide();
    taskPanel = new QWidget(this);
    buildTaskPanel();
    bannerPanel = new QWidget(this);
    buildBannerPanel();
    logView = new QPlainTextEdit(this);
    boundLayout(logView);
    logView->setReadOnly(true);
    logView->setTabChangesFocus(true);
    logView->setMinimumHeight(120);
    repairPanel = new QWidget(this);
    buildRepairPanel();
    actionRow = new QWidget(this);
    buildActionRow();
    countdownLabel = new QLabel(this);
    makeAlert(countdownLabel);
    countdownLabel->setTextFormat(Qt::PlainText);
    countdownLabel->setFont(headingFont(countdownLabel->font()));
    // Made last, so that Tab comes to it last; to the eye and a screen reader it is beside the title.
    languageButton = new QToolButton(this);
    languageButton->setAutoRaise(true);
    languageButton->setIconSize(QSize(28, 28));
    languageButton->stackUnder(projectLabel);
}

void LauncherWindow::buildRepairPanel() {
    projectPathEdit = new QLineEdit(repairPanel);
    skipPrecheckCheck = new QCheckBox(repairPanel);
    hasUpdateButton = plainButton(repairPanel);
    hasUpdateButton->setFlat(true);
    hasUpdateButton->setStyleSheet(
        QStringLiteral("QPushButton { color: #1565c0; text-align: left; }"));
    useWhiteGround(hasUpdateButton);
    auto *buttons = new QHBoxLayout;
    for (QPushButton **button : {&browseButton, &openLogButton, &openDumpsButton, &launchButton}) {
        *button = plainButton(repairPanel);
        buttons->addWidget(*button);
    }
    auto *panel = new QVBoxLayout(repairPanel);
    panel->setSpacing(gap);
    panel->setContentsMargins(QMargins()); // in line with the labels above it
    panel->addWidget(projectPathEdit);
    panel->addWidget(skipPrecheckCheck);
    panel->addWidget(hasUpdateButton, 0, Qt::AlignLeft);
    panel->addLayout(buttons);
}

void LauncherWindow::buildBannerPanel() {
    bannerPanel->setObjectName(QStringLiteral("updateBanner"));
    bannerPanel->setStyleSheet(
        QStringLiteral("#updateBanner { background-color: #e3f2fd; border: 1px solid #90caf9; "
                       "border-radius: 4px; padding: 6px; }"));
    bannerLabel = wrappedLabel(bannerPanel);
    makeAlert(bannerLabel);
    useDarkText(bannerLabel);
    auto *buttons = new QHBoxLayout;
    for (QPushButton **button : {&bannerUpdateButton, &bannerRemindButton, &bannerSkipButton}) {
        *button = plainButton(bannerPanel);
        buttons->addWidget(*button);
    }
    buttons->addStretch();
    auto *panel = new QVBoxLayout(bannerPanel);
    panel->setSpacing(gap);
    panel->setContentsMargins(panelPadding);
    panel->addWidget(bannerLabel);
    panel->addLayout(buttons);
}

void LauncherWindow::buildTaskPanel() {
    taskPanel->setObjectName(QStringLiteral("updateTaskPanel"));
    taskPanel->setStyleSheet(
        QStringLiteral("#updateTaskPanel { background-color: #fff8e1; border: 1px solid #ffcc80; "
                       "border-radius: 4px; padding: 6px; }"));
    taskTitleLabel = new TextLabel(taskPanel);
    taskDetailLabel = wrappedLabel(taskPanel);
    useDarkText(taskTitleLabel);
    useDarkText(taskDetailLabel);
    taskProgressBar = new QProgressBar(taskPanel);
    taskProgressBar->setTextVisible(true);
    moveOnlyIfWanted(taskProgressBar);
    taskCancelButton = plainButton(taskPanel);
    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(taskCancelButton);
    auto *panel = new QVBoxLayout(taskPanel);
    panel->setSpacing(gap);
    panel->setContentsMargins(panelPadding);
    panel->addWidget(taskTitleLabel);
    panel->addWidget(taskDetailLabel);
    panel->addWidget(taskProgressBar);
    panel->addLayout(buttons);
}

void LauncherWindow::buildActionRow() {
    applyButton = plainButton(actionRow);
    skipButton = plainButton(actionRow);
    auto *row = new QHBoxLayout(actionRow);
    row->setContentsMargins(QMargins());
    row->addWidget(applyButton);
    row->addWidget(skipButton);
}

void LauncherWindow::buildLayout() {
    auto *header = new QHBoxLayout;
    header->addWidget(titleLabel, 1);
    header->addWidget(languageButton, 0, Qt::AlignTop);
    auto *footer = new QHBoxLayout;
    footer->addWidget(countdownLabel, 0, Qt::AlignLeft | Qt::AlignBottom);
    footer->addStretch();
    auto *main = new QVBoxLayout(this);
    main->setContentsMargins(edges);
    main->setSpacing(gap);
    main->addLayout(header);
    for (QWidget *widget :
         {static_cast<QWidget *>(projectLabel), static_cast<QWidget *>(versionLabel),
          static_cast<QWidget *>(statusLabel), static_cast<QWidget *>(busyBar), taskPanel,
          bannerPanel, static_cast<QWidget *>(logView), repairPanel, actionRow})
        main->addWidget(widget);
    main->addStretch();
    main->addLayout(footer);
    focusGuide = new FocusGuide(this, projectPathEdit);
    fit = new WindowFit(this,
                        {{busyBar, taskPanel, bannerPanel, logView, repairPanel},
                         {statusLabel, bannerLabel, taskDetailLabel},
                         {versionLabel, projectLabel, taskDetailLabel, statusLabel, bannerLabel}});
}

// From top to bottom, as the eye goes; the language, which is rarely what one wants, stays behind all.
void LauncherWindow::orderTabs() {
    const QList<QWidget *> order = {
        taskCancelButton, bannerUpdateButton, bannerRemindButton, bannerSkipButton, logView,
        projectPathEdit,  skipPrecheckCheck,  hasUpdateButton,    browseButton,     openLogButton,
        openDumpsButton,  launchButton,       applyButton,        skipButton};
    for (int i = 1; i < order.size(); ++i)
        setTabOrder(order.at(i - 1), order.at(i));
}
