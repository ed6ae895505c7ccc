// How an update reaches the user: the banner, the choice of what to update, the panel of a running
// task and the report of its end.

#include "window/launcher_window.h"

#include "window/box_buttons.h"
#include "window/refusals.h"
#include "window/report_box.h"
#include "window/text_label.h"
#include "window/window_fit.h"

#include <QCheckBox>
#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPalette>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>
#include <array>

using PromptMode = LauncherService::UpdatePromptMode;

// --- The banner --------------------------------------------------------------------------------

bool LauncherWindow::bannerDue() const {
    return service->updateAvailable && (service->promptMode == PromptMode::UsbBanner ||
                                        service->promptMode == PromptMode::OnlineBanner);
}

// A stick offers no reminder for later, and no version to skip for good.
void LauncherWindow::fillBanner() {
    const bool usb = service->promptMode == PromptMode::UsbBanner;
    const QString plain = usb ? tr("检测到离线更新包，建议尽快更新。")
                              : tr("发现在线更新，可选择立即更新或稍后处理。");
    bannerLabel->setText(service->updateSummary.isEmpty() ? plain : service->updateSummary);
    bannerRemindButton->setVisible(!usb);
    bannerSkipButton->setText(usb ? tr("跳过并启动") : tr("跳过此版本"));
}

// --- The dialog --------------------------------------------------------------------------------

namespace {

QLabel *wrappedText(const QString &text, QWidget *parent) {
    auto *label = new QLabel(text, parent);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    return label;
}

// Grey, but to be read all the same: what cannot be had is part of what the dialog tells. The grey of
// most styles is too faint for that.
QPalette readableWhileDisabled(QPalette palette) {
    const QColor ink = palette.color(QPalette::Active, QPalette::WindowText);
    const QColor ground = palette.color(QPalette::Active, QPalette::Window);
    const auto between = [](int text, int behind) { return (7 * text + 3 * behind) / 10; };
    palette.setColor(QPalette::Disabled, QPalette::WindowText,
                     QColor(between(ink.red(), ground.red()), between(ink.green(), ground.green()),
                            between(ink.blue(), ground.blue())));
    return palette;
}

// Ticked and enabled if it can be had; otherwise grey, with the reason as tool tip.
QCheckBox *choiceBox(const QString &text, const UpdateChoice &choice, const QString &unavailable,
                     QWidget *parent) {
    auto *box = new QCheckBox(text, parent);
    box->setChecked(choice.available);
    box->setEnabled(choice.available);
    box->setPalette(readableWhileDisabled(box->palette()));
    if (!choice.reason.isEmpty()) {
        box->setToolTip(plainToolTip(choice.reason));
        box->setAccessibleDescription(choice.reason); // whole, letter by letter
        if (!choice.available)
            box->setText(text + unavailable);
    }
    return box;
}

// What can be updated, in the order of the dialog.
struct ChoiceBoxes {
    QCheckBox *project;
    QCheckBox *pythonTools;
    QCheckBox *runtime;
    QCheckBox *launcher;
    QCheckBox *editor;

    QList<QCheckBox *> inOrder() const { return {project, pythonTools, runtime, launcher, editor}; }
    bool isAnyChecked() const;
    UpdateSelection chosen() const;
};

bool ChoiceBoxes::isAnyChecked() const {
    const QList<QCheckBox *> boxes = inOrder();
    return std::any_of(boxes.cbegin(), boxes.cend(),
                       [](const QCheckBox *box) { return box->isChecked(); });
}

UpdateSelection ChoiceBoxes::chosen() const {
    UpdateSelection chosen;
    chosen.project = project->isChecked();
    chosen.runtime = runtime->isChecked();
    chosen.launcher = launcher->isChecked();
    chosen.editor = editor->isChecked();
    chosen.pythonTools = pythonTools->isChecked();
    return chosen;
}

ChoiceBoxes choiceBoxes(const UpdateChoices &choices, QWidget *parent) {
    const auto boxFor = [parent](const QString &text, const UpdateChoice &choice) {
        return choiceBox(text, choice, LauncherWindow::tr("（不可用）"), parent);
    };
    ChoiceBoxes boxes = {};
    boxes.project = boxFor(LauncherWindow::tr("更新项目（USER/projects）"), choices.project);
    boxes.pythonTools =
        boxFor(LauncherWindow::tr("更新 Python 工具 (Black/Ruff)"), choices.pythonTools);
    boxes.runtime = boxFor(LauncherWindow::tr("更新 Runtime 组件"), choices.runtime);
    boxes.launcher = boxFor(LauncherWindow::tr("更新 Launcher 组件"), choices.launcher);
    boxes.editor = boxFor(LauncherWindow::tr("更新 Editor 组件"), choices.editor);
    return boxes;
}

// A dialog would take two thirds of the screen at most, and cut its last text on a small one. Where it
// needs more than the room there is, it becomes wider and denser, and at last the letters of `note` smaller.
void fitDialog(QDialog &dialog, QLabel *note, const QSize &room) {
    constexpr int widest = 640;
    constexpr int reserve = 4; // where a thin frame is rounded to none
    QLayout *layout = dialog.layout();
    int wide = wholePixels(layout->totalSizeHint().width());
    const auto isTooHigh = [&] {
        layout->invalidate();
        return layout->totalHeightForWidth(wide) > room.height();
    };
    if (isTooHigh()) {
        wide = qMin(widest, room.width() - reserve);
        layout->setSpacing(0);
        layout->setContentsMargins(6, 2, 6, 2);
    }
    QFont font = note->font();
    for (int smaller = 0; smaller < 3 && font.pointSize() > 6 && isTooHigh(); ++smaller) {
        font.setPointSize(font.pointSize() - 1);
        note->setFont(font);
    }
    dialog.resize(QSize(wide, wholePixels(layout->totalHeightForWidth(wide))).boundedTo(room));
}

} // namespace

void LauncherWindow::openUpdateDialog() {
    if (service->isUpdateTaskActive()) {
        showReport(this, QMessageBox::Information, tr("更新进行中"),
                   tr("当前已有更新任务在执行，请等待完成或取消后再试。"));
        return;
    }
    QDialog dialog(this);
    dialog.setWindowTitle(tr("选择更新内容"));
    const ChoiceBoxes boxes = choiceBoxes(service->updateChoices(), &dialog);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, &dialog);
    nameButtons(buttons);
    connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);

    auto *layout = new QVBoxLayout(&dialog);
    layout->addWidget(wrappedText(tr("请选择需要更新的内容（可多选）："), &dialog));
    for (QCheckBox *box : boxes.inOrder())
        layout->addWidget(box);
    auto *note = wrappedText(
        tr("说明：组件更新包会按勾选项提供安装引导。Python 工具优先于 Runtime/Editor "
           "安装；Runtime/Editor/Launcher 安装器会按既定顺序拉起，建议在空闲时执行更新。"),
        &dialog);
    layout->addWidget(note);
    layout->addWidget(buttons);
    tellRefusalsByKeyboard(note, boxes.inOrder());
    QWidget::setTabOrder(boxes.editor, note);
    fitDialog(dialog, note, roomAround(this));
    if (dialog.exec() != QDialog::Accepted)
        return;

    if (!boxes.isAnyChecked()) {
        showReport(this, QMessageBox::Warning, tr("未选择更新内容"),
                   tr("请至少勾选一项更新内容。"));
        return;
    }
    service->setUpdateSelection(boxes.chosen());
    service->applyChosenUpdate();
    refreshUi();
}

// --- The running task --------------------------------------------------------------------------

namespace {

struct DetailText {
    const char *key;
    const char *text; // in the context LauncherService
};

const std::array<DetailText, 6> detailTexts = {{
    {"download-project", QT_TRANSLATE_NOOP("LauncherService", "下载项目更新包…")},
    {"verify-manifest", QT_TRANSLATE_NOOP("LauncherService", "校验 manifest…")},
    {"fetch-manifest", QT_TRANSLATE_NOOP("LauncherService", "拉取并校验 manifest…")},
    {"verify-ok", QT_TRANSLATE_NOOP("LauncherService", "项目包校验完成")},
    {"verify-fail", QT_TRANSLATE_NOOP("LauncherService", "项目包校验失败")},
    {"setup-prepare", QT_TRANSLATE_NOOP("LauncherService", "准备组件安装包…")},
}};

QString detailText(const QString &detail) {
    const QLatin1String prefix("detail:");
    if (!detail.startsWith(prefix))
        return detail;
    const QString key = detail.mid(prefix.size());
    for (const DetailText &known : detailTexts)
        if (key == QLatin1String(known.key))
            return QCoreApplication::translate("LauncherService", known.text);
    return key;
}

} // namespace

QString LauncherWindow::phaseText(const QString &phase) {
    if (phase == QLatin1String("check"))
        return tr("检查更新");
    if (phase == QLatin1String("download"))
        return tr("下载");
    if (phase == QLatin1String("verify"))
        return tr("校验");
    if (phase == QLatin1String("setup"))
        return tr("安装组件");
    return phase;
}

// A late report of a task that is over is dropped.
void LauncherWindow::onUpdateTaskProgress(const QString &taskId, const QString &phase, int percent,
                                          const QString &detail) {
    if (taskId != service->taskId)
        return;
    lastTaskPhase = phase;
    lastTaskDetail = detail;
    taskTitleLabel->setText(tr("更新任务 [%1]：%2").arg(taskId, phaseText(phase)));
    taskDetailLabel->setText(detailText(detail));
    if (percent < 0) {
        taskProgressBar->setRange(0, 0);
        taskProgressBar->setFormat(tr("进行中…"));
    } else {
        taskProgressBar->setRange(0, 100);
        taskProgressBar->setValue(percent);
        taskProgressBar->setFormat(QStringLiteral("%p%"));
    }
    taskPanel->setVisible(service->isUpdateTaskActive());
    fit->request();
}

// --- The end of an update ----------------------------------------------------------------------

// The first hit decides. "校验失败" and "验签失败", a wrong hash and a wrong signature, are told
// apart by the class in brackets alone.
QString LauncherWindow::failureTitle(const QString &details) {
    const auto holds = [&details](const QString &text) {
        return details.contains(text, Qt::CaseInsensitive);
    };
    if (holds(QStringLiteral("[network]")))
        return tr("网络错误");
    if (holds(QStringLiteral("[hash]")))
        return tr("校验失败");
    if (holds(QStringLiteral("[verify]")))
        return tr("验签失败");
    if (holds(QStringLiteral("[cancel]")) || holds(tr("取消")) ||
        holds(QStringLiteral("cancelled")))
        return tr("已取消");
    return tr("更新失败");
}

void LauncherWindow::onApplyFinished(bool success, const QString &details) {
    if (success)
        showReport(this, QMessageBox::Information, tr("更新完成"), details);
    else
        showReport(this, QMessageBox::Warning, failureTitle(details), details);
    refreshUi();
}
