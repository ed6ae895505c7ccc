// The size of a window whose content comes and goes.
//
// It starts at startSize and grows where its content needs more, never beyond largestSize nor the free
// area of its screen, its frame counted in. Where that is too small, what is elastic gives way down to
// its minimum, then the long texts lose line after line, and on the smallest screens whole labels go.
// When a part goes that was shown, the window goes back to the larger of startSize and what it needs;
// a size that the user has set takes the place of startSize. Main thread only.
#pragma once

#include <QDeadlineTimer>
#include <QList>
#include <QObject>
#include <QSize>
#include <QTimer>
#include <QVector>

class QWidget;
class TextLabel;

// The largest size that the free area of the window's screen has room for, with a frame around it.
[[nodiscard]] QSize roomAround(const QWidget *window);

// A little longer, so that it is a whole number of pixels at the usual scales: any other length comes back
// from the window system rounded, and a letter is cut.
[[nodiscard]] int wholePixels(int length);

class WindowFit : public QObject {
public:
    static constexpr QSize startSize{640, 360};
    static constexpr QSize largestSize{1280, 720};

    struct Parts {
        QList<QWidget *> comeAndGo;    // when one of these goes, the window shrinks
        QList<TextLabel *> flowing;    // these lose lines
        QList<TextLabel *> lastToGive; // and these are left out, the first one first
    };

    // Takes over the size of `shown`, whose layout must be there. The window is the parent.
    WindowFit(QWidget *shown, Parts ofWindow);

    // Fits once, when the event loop turns next: until then any number of changes count as one.
    void request();

protected:
    // Follows the window's frame, fonts and screen, and learns of sizes that are not its own.
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void fit();
    void followScreen();
    void noteSize(const QSize &size);
    [[nodiscard]] bool isAnswer(const QSize &size) const;
    void layoutAnew() const;
    [[nodiscard]] int giveWay(int width, int mostHeight) const;
    [[nodiscard]] bool somethingWent();
    void holdTo(const QSize &minimum);
    void resizeTo(const QSize &size);
    void keepOnScreen() const;
    void settle();
    bool insistOn(const QSize &size) const;

    QWidget *window;
    Parts parts;
    QVector<bool> shownBefore; // as `comeAndGo`
    QSize usersSize;           // invalid unless the user has set one
    // Sizes that were asked for since, which a window system reports late, and the minimums that it was told.
    QVector<QSize> asked;
    QVector<QSize> minimums;
    QDeadlineTimer answersDue;
    bool requested = false;
    bool following = false; // the screen
    QTimer settling;
    int looksLeft = 0;     // at how the window system has settled the last size
    int lateLooksLeft = 0; // the same, each after an earlier size that came late
};
