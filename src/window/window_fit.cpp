#include "window/window_fit.h"

#include "window/text_label.h"

#include <QEvent>
#include <QGuiApplication>
#include <QLayout>
#include <QResizeEvent>
#include <QScreen>
#include <QWidget>
#include <QWindow>

#include <algorithm>
#include <utility>

namespace {

QRect freeArea(const QWidget *window) {
    const QWindow *handle = window->windowHandle();
    const QScreen *screen = handle != nullptr ? handle->screen() : QGuiApplication::primaryScreen();
    return screen != nullptr ? screen->availableGeometry()
                             : QRect(QPoint(), WindowFit::largestSize);
}

// None until the window system has told of it, which it does after the window has been shown. The widget
// itself may remember an older one.
QSize frameOf(const QWidget *window) {
    const QWindow *handle = window->windowHandle();
    const QMargins margins = handle != nullptr ? handle->frameMargins() : QMargins();
    return {margins.left() + margins.right(), margins.top() + margins.bottom()};
}

constexpr int usualLooks = 5; // at how the window system has settled a size
constexpr int lateLooks = 10;
constexpr int longestAnswer = 5000; // milliseconds

// Sizes are rounded at fractions of a pixel.
bool isAbout(int length, int other) {
    return qAbs(length - other) <= 1;
}

bool isAbout(const QSize &size, const QSize &other) {
    return isAbout(size.width(), other.width()) && isAbout(size.height(), other.height());
}

} // namespace

int wholePixels(int length) {
    return (length + 3) / 4 * 4;
}

QSize roomAround(const QWidget *window) {
    return freeArea(window).size() - frameOf(window);
}

WindowFit::WindowFit(QWidget *shown, Parts ofWindow)
    : QObject(shown)
    , window(shown)
    , parts(std::move(ofWindow))
    , shownBefore(parts.comeAndGo.size(), false) {
    constexpr int interval = 200; // milliseconds
    settling.setInterval(interval);
    settling.setSingleShot(true);
    connect(&settling, &QTimer::timeout, this, [this] { settle(); });
    // A layout would hold the window to its minimum, which may be larger than the screen.
    window->layout()->setSizeConstraint(QLayout::SetNoConstraint);
    window->setMaximumSize(largestSize);
    resizeTo(startSize);
    shown->installEventFilter(this);
}

void WindowFit::request() {
    if (std::exchange(requested, true))
        return;
    QMetaObject::invokeMethod(
        this, [this] { fit(); }, Qt::QueuedConnection);
}

// --- The fit -----------------------------------------------------------------------------------

void WindowFit::fit() {
    requested = false;
    const QSize most = largestSize.boundedTo(roomAround(window));
    const QSize base = usersSize.isValid() ? usersSize : startSize;
    // The size of now is the one last asked for: the window may still report an earlier one.
    const QSize now = asked.isEmpty() ? usersSize : asked.last();
    const QSize least = (somethingWent() ? base : base.expandedTo(now)).boundedTo(most);
    layoutAnew();
    QLayout *layout = window->layout();
    const int wide =
        qBound(least.width(), wholePixels(layout->totalSizeHint().width()), most.width());
    const int high = giveWay(wide, most.height());
    // A minimum above the size would resize the window itself.
    const QSize minimum = layout->totalMinimumSize().boundedTo(most);
    holdTo(minimum.boundedTo(window->size()));
    resizeTo({wide, qBound(least.height(), wholePixels(high), most.height())});
    holdTo(minimum.boundedTo(window->size()));
    layout->activate();
}

void WindowFit::holdTo(const QSize &minimum) {
    if (!minimums.contains(minimum))
        minimums.append(minimum);
    window->setMinimumSize(minimum);
}

// The height that the content needs at a width, once texts have given way to make it at most
// `mostHeight`; more where even that does not help.
int WindowFit::giveWay(int width, int mostHeight) const {
    constexpr int mostLines = 12;
    for (TextLabel *label : parts.lastToGive)
        label->setMaximumLines(mostLines);
    const auto height = [&] {
        layoutAnew();
        return window->layout()->minimumHeightForWidth(width);
    };
    int high = 0;
    for (int limit = mostLines; limit > 0; --limit) {
        for (TextLabel *label : parts.flowing)
            label->setMaximumLines(limit);
        high = height();
        if (high <= mostHeight)
            return high;
    }
    for (TextLabel *label : parts.lastToGive) {
        label->setMaximumLines(0);
        high = height();
        if (high <= mostHeight)
            break;
    }
    return high;
}

// A panel's layout keeps what it measured until it is told otherwise.
void WindowFit::layoutAnew() const {
    for (const QWidget *part : parts.comeAndGo)
        if (part->layout() != nullptr)
            part->layout()->activate();
    window->layout()->invalidate();
}

bool WindowFit::somethingWent() {
    bool went = false;
    for (int i = 0; i < parts.comeAndGo.size(); ++i) {
        const bool shown = parts.comeAndGo.at(i)->isVisibleTo(window);
        went = went || (shownBefore.at(i) && !shown);
        shownBefore[i] = shown;
    }
    return went;
}

// --- The screen --------------------------------------------------------------------------------

void WindowFit::followScreen() {
    if (std::exchange(following, true))
        return;
    const auto refit = [this] { request(); };
    const QWindow *handle = window->windowHandle();
    connect(handle, &QWindow::screenChanged, this, refit);
    const auto screens = QGuiApplication::screens();
    for (const QScreen *screen : screens)
        connect(screen, &QScreen::availableGeometryChanged, this, refit);
}

void WindowFit::resizeTo(const QSize &size) {
    if (window->windowState() & (Qt::WindowMaximized | Qt::WindowFullScreen))
        return;
    if (size == (asked.isEmpty() ? usersSize : asked.last()))
        return;
    asked.append(size);
    window->resize(size);
    keepOnScreen();
    looksLeft = usualLooks;
    lateLooksLeft = lateLooks;
    answersDue.setRemainingTime(longestAnswer);
    if (window->isVisible())
        settling.start();
}

// A window manager that is still about to place the window may push it out of the screen again, or let an
// earlier size come last.
void WindowFit::settle() {
    keepOnScreen();
    const bool askedAgain = !asked.isEmpty() && insistOn(asked.last());
    if (--looksLeft > 0 || (askedAgain && lateLooksLeft-- > 0))
        settling.start();
}

// Whether there was need to. The widget alone does not know: where two answers of the window system come
// together, Qt tells it of the last, and of that only if it is not what it told before.
bool WindowFit::insistOn(const QSize &size) const {
    QWindow *handle = window->windowHandle();
    const bool isSettled =
        isAbout(window->size(), size) && (handle == nullptr || isAbout(handle->size(), size));
    if (isSettled)
        return false;
    window->resize(size);
    if (handle != nullptr)
        handle->resize(size);
    return true;
}

// What grows downwards may grow out of the screen.
void WindowFit::keepOnScreen() const {
    if (!window->isVisible())
        return; // the window system has yet to find a place for it
    const QRect area = freeArea(window);
    QRect place(window->pos(), window->size() + frameOf(window));
    place.moveRight(qMin(place.right(), area.right()));
    place.moveBottom(qMin(place.bottom(), area.bottom()));
    place.moveLeft(qMax(place.left(), area.left()));
    place.moveTop(qMax(place.top(), area.top()));
    if (place.topLeft() != window->pos())
        window->move(place.topLeft());
}

// --- What others do to the window --------------------------------------------------------------

// A window system reports sizes late, and at fractions of a pixel it rounds: both are no user.
void WindowFit::noteSize(const QSize &size) {
    if (isAbout(usersSize, size) || isAnswer(size)) {
        // On a busy machine it comes when nobody looks any more. One that insists on its size gets it.
        const bool isLate = !asked.isEmpty() && !isAbout(size, asked.last());
        if (isLate && !settling.isActive() && lateLooksLeft-- > 0)
            settling.start();
        return;
    }
    usersSize = size;
    asked.clear();
    minimums.clear();
}

// A window manager reads the minimum when it comes to a size that was asked for, and by then there may be a newer
// one: it answers with the larger of both, which is the width of one and the height of another.
bool WindowFit::isAnswer(const QSize &size) const {
    const auto isOneOf = [](const QVector<QSize> &sizes, const auto &matches) {
        return std::any_of(sizes.cbegin(), sizes.cend(), matches);
    };
    if (isOneOf(asked, [&](const QSize &known) { return isAbout(known, size); }))
        return true;
    if (asked.isEmpty() || answersDue.hasExpired())
        return false;
    const auto isWide = [&](const QSize &known) { return isAbout(known.width(), size.width()); };
    const auto isHigh = [&](const QSize &known) { return isAbout(known.height(), size.height()); };
    return (isOneOf(asked, isWide) || isOneOf(minimums, isWide)) &&
           (isOneOf(asked, isHigh) || isOneOf(minimums, isHigh));
}

bool WindowFit::eventFilter(QObject *watched, QEvent *event) {
    switch (event->type()) {
    case QEvent::Show:
        if (!event->spontaneous()) {
            followScreen();
            fit();
        }
        break;
    case QEvent::Resize:
        if (window->isVisible() && !window->isMaximized() && !window->isFullScreen())
            noteSize(static_cast<QResizeEvent *>(event)->size());
        break;
    case QEvent::WindowActivate: // a frame is known by now
    case QEvent::FontChange:
    case QEvent::StyleChange:
        request();
        break;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}
