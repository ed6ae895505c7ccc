#include "update/files/patience.h"

#include <QThread>

namespace {

constexpr unsigned long pauseMs = 50;

} // namespace

bool Patience::goesOn() {
    if (!isBegun)
        end.setRemainingTime(patienceMs);
    isBegun = true;
    if (end.hasExpired())
        return false;
    QThread::msleep(pauseMs);
    return true;
}
