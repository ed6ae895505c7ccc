// Where the keyboard is: on the button that one most likely wants.
//
// When the state or the banner changes, the focus moves to that button, once. It never moves out of the
// path field, an open box or a control that the user has moved to since the last move. While the button is
// disabled the focus waits on its panel. Main thread only.
#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>

class QAbstractButton;
class QWidget;

class FocusGuide : public QObject {
public:
    // Milliseconds after a move in which Space presses nothing: the hand was on its way elsewhere.
    static constexpr int restAfterMove = 500;

    // The window is the parent. The focus never moves out of `field`.
    FocusGuide(QWidget *guided, QWidget *field);

    // Before the window shows and hides its parts, which moves the focus too, by itself.
    void beforeChange();
    // After it. `button` is the one to go to, null for none; the focus moves when `occasion` is another.
    void afterChange(QAbstractButton *button, int occasion);

protected:
    // Takes the keys that come too early, and goes on when a box has been closed.
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    [[nodiscard]] bool isUsable(const QWidget *widget) const;
    [[nodiscard]] bool isTheUsers(const QWidget *widget) const;
    void move();

    QWidget *window;
    QWidget *pathField;
    QPointer<QWidget> before;  // what had the focus before the change
    QPointer<QWidget> settled; // what had it after the last one, by no choice of the user's
    QPointer<QAbstractButton> wanted;
    QPointer<QAbstractButton> pending; // the focus is still to come to it
    int lastOccasion = -1;
    QElapsedTimer sinceMove;
};
