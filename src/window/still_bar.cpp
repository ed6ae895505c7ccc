#include "window/still_bar.h"

#include "window/motion.h"

#include <QEvent>
#include <QProgressBar>

namespace {

// A style moves a bar by an event for each step, and stops when nobody takes it.
class Stillness : public QObject {
public:
    explicit Stillness(QProgressBar *bar)
        : QObject(bar) {}

protected:
    bool eventFilter(QObject *, QEvent *event) override {
        return event->type() == QEvent::StyleAnimationUpdate && wantsLessMotion();
    }
};

} // namespace

void moveOnlyIfWanted(QProgressBar *bar) {
    bar->installEventFilter(new Stillness(bar));
}
