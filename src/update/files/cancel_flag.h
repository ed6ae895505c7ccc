// How a thread asks long work on another one to stop.
#pragma once

#include <QString>
#include <QtGlobal>

#include <atomic>

// Set to a non-zero value by another thread to cancel the work; read with relaxed loads.
using CancelFlag = std::atomic<qint32>;

// Whether the work is to stop. Without a flag it cannot be cancelled.
[[nodiscard]] inline bool isCancelled(const CancelFlag *flag) {
    return flag != nullptr && flag->load(std::memory_order_relaxed) != 0;
}

// What work that was stopped gives as its error.
[[nodiscard]] inline QString cancelledText() {
    return QStringLiteral("cancelled");
}
