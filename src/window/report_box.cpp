#include "window/report_box.h"

#include "window/box_buttons.h"
#include "window/shown_part.h"

#include <QDialogButtonBox>
#include <QFontMetrics>
#include <QGridLayout>
#include <QLabel>
#include <QPlainTextEdit>

namespace {

constexpr int boxLines = 16;             // beyond these the text scrolls
const QSize scrollingTextSize(560, 320); // pixels; leaves the OK button on a small screen

bool isLong(const QMessageBox &box) {
    if (box.text().size() > mostShown)
        return true;
    const QRect area(QPoint(), scrollingTextSize);
    const QRect needed =
        box.fontMetrics().boundingRect(area, Qt::TextWordWrap | Qt::TextWrapAnywhere, box.text());
    return needed.height() > boxLines * box.fontMetrics().lineSpacing();
}

// Puts a read-only text pane in the place of the box's label, which stays as it is but hidden.
void letTextScroll(QMessageBox &box) {
    auto *grid = qobject_cast<QGridLayout *>(box.layout());
    auto *label = box.findChild<QLabel *>(QStringLiteral("qt_msgbox_label"));
    if (grid == nullptr || label == nullptr)
        return; // a platform with a box of its own shows long texts in its own way
    auto *pane = new QPlainTextEdit(&box);
    pane->setPlainText(inShownParts(box.text()));
    pane->setReadOnly(true);
    pane->setTabChangesFocus(true);
    pane->setAccessibleName(box.windowTitle());
    pane->setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    pane->setMinimumSize(scrollingTextSize);
    delete grid->replaceWidget(label, pane);
    label->hide();
}

} // namespace

void showReport(QWidget *parent, QMessageBox::Icon icon, const QString &title,
                const QString &text) {
    QMessageBox box(parent);
    box.setIcon(icon);
    box.setWindowTitle(title);
    box.setTextFormat(Qt::PlainText);
    box.setText(text);
    box.setStandardButtons(QMessageBox::Ok);
    if (auto *buttons = box.findChild<QDialogButtonBox *>())
        nameButtons(buttons);
    if (isLong(box))
        letTextScroll(box);
    box.exec();
}
