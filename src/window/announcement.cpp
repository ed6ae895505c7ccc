// Qt 5 tells no screen reader on Linux of its own event for alerts. What reaches the bus is that a label
// has got another text, which a label tells by itself, and that an object is shown: a reader says that
// of an alert.
#include "window/announcement.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QLabel>

namespace {

constexpr const char *alertMark = "alert";

class AlertLabel : public QAccessibleWidget {
public:
    explicit AlertLabel(QLabel *shown)
        : QAccessibleWidget(shown, QAccessible::AlertMessage)
        , label(shown) {}

    QString text(QAccessible::Text kind) const override {
        return kind == QAccessible::Name ? label->text() : QAccessibleWidget::text(kind);
    }

private:
    QLabel *label;
};

QAccessibleInterface *alertFor(const QString &, QObject *object) {
    auto *label = qobject_cast<QLabel *>(object);
    return label != nullptr && label->property(alertMark).toBool() ? new AlertLabel(label)
                                                                   : nullptr;
}

} // namespace

void makeAlert(QLabel *label) {
    QAccessible::installFactory(alertFor); // once, however often it is asked to
    label->setProperty(alertMark, true);
}

void announce(QLabel *label) {
    if (!label->isVisible())
        return;
    QAccessibleEvent event(label, QAccessible::ObjectShow);
    QAccessible::updateAccessibility(&event);
}
