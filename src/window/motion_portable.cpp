#include "window/motion.h"

#include <QApplication>
#include <QStyle>

// Desktops tell their style, by Qt's platform theme, how long animations last: no time at all is none.
bool wantsLessMotion() {
    return QApplication::style()->styleHint(QStyle::SH_Widget_Animation_Duration) == 0;
}
