#include "window/refusals.h"

#include "window/text_label.h"

#include <QCheckBox>
#include <QEvent>
#include <QLabel>
#include <QStringList>
#include <QToolTip>

namespace {

class Refusals : public QObject {
public:
    explicit Refusals(QLabel *shownAt)
        : QObject(shownAt)
        , note(shownAt) {}

protected:
    bool eventFilter(QObject *, QEvent *event) override {
        if (event->type() == QEvent::FocusIn)
            // Later: any change of the focus hides a tool tip.
            QMetaObject::invokeMethod(
                this, [this] { show(); }, Qt::QueuedConnection);
        else if (event->type() == QEvent::FocusOut)
            QToolTip::hideText();
        return false;
    }

private:
    void show() {
        if (note->hasFocus())
            QToolTip::showText(note->mapToGlobal(QPoint()),
                               plainToolTip(note->accessibleDescription()), note);
    }

    QLabel *note;
};

} // namespace

void tellRefusalsByKeyboard(QLabel *note, const QList<QCheckBox *> &boxes) {
    QStringList refusals;
    for (const QCheckBox *box : boxes)
        if (!box->isEnabled() && !box->accessibleDescription().isEmpty())
            refusals.append(box->text().remove(QLatin1Char('&')) + QLatin1Char('\n') +
                            box->accessibleDescription());
    if (refusals.isEmpty())
        return;
    note->setAccessibleDescription(refusals.join(QLatin1Char('\n')));
    note->setFocusPolicy(Qt::TabFocus);
    note->installEventFilter(new Refusals(note));
}
