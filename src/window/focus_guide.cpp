#include "window/focus_guide.h"

#include <QAbstractButton>
#include <QApplication>
#include <QKeyEvent>

FocusGuide::FocusGuide(QWidget *guided, QWidget *field)
    : QObject(guided)
    , window(guided)
    , pathField(field) {
    guided->installEventFilter(this);
}

void FocusGuide::beforeChange() {
    before = window->focusWidget();
}

void FocusGuide::afterChange(QAbstractButton *button, int occasion) {
    const bool changed = occasion != lastOccasion;
    const bool wentGrey = button != nullptr && before == button && !button->isEnabled();
    const bool stays = before && isUsable(before) && (before == pathField || isTheUsers(before));
    if (changed || wentGrey)
        pending = button;
    if (button != nullptr && button != wanted) {
        button->removeEventFilter(this);
        button->installEventFilter(this);
    }
    if (stays)
        pending = nullptr;
    wanted = button;
    lastOccasion = occasion;
    move();
    // From a button that has gone Qt hands the focus on, and a second press of Space would press the next.
    if (button == nullptr && before && !isUsable(before) && window->focusWidget() != nullptr)
        window->focusWidget()->clearFocus();
    if (!stays)
        settled = window->focusWidget();
}

bool FocusGuide::isUsable(const QWidget *widget) const {
    return widget->isEnabled() && widget->isVisibleTo(window);
}

// Only while there is a button to go to: what the focus was on before that was no choice against it.
bool FocusGuide::isTheUsers(const QWidget *widget) const {
    return wanted && widget != settled;
}

void FocusGuide::move() {
    if (!pending || QApplication::activeModalWidget() != nullptr)
        return;
    QWidget *target = pending;
    if (pending->isEnabled()) {
        pending = nullptr;
        sinceMove.start();
    } else {
        target = target->parentWidget();
    }
    target->setFocus(Qt::OtherFocusReason);
}

bool FocusGuide::eventFilter(QObject *watched, QEvent *event) {
    if (watched == window && event->type() == QEvent::WindowActivate && pending) {
        const auto goOn = [this] {
            move();
            settled = window->focusWidget();
        };
        QMetaObject::invokeMethod(this, goOn, Qt::QueuedConnection);
    }
    if (watched != window && event->type() == QEvent::KeyPress) {
        const auto *key = static_cast<QKeyEvent *>(event);
        const bool early = sinceMove.isValid() && sinceMove.elapsed() < restAfterMove;
        if (key->key() == Qt::Key_Space && watched == wanted && (key->isAutoRepeat() || early))
            return true;
    }
    return QObject::eventFilter(watched, event);
}
