// What only the system can tell of a line PC. Nothing is changed. Any thread.
#pragma once

#include <QString>
#include <QVector>

namespace ctl {

struct Memory {
    qint64 total = 0;     // bytes; 0: unknown
    qint64 available = 0; // bytes
};

struct Screen {
    QString name;
    QString size;        // "1920x1080", in dots
    int dotsPerInch = 0; // by which the system scales; 0: unknown
};

[[nodiscard]] Memory memoryOfThisPc();

// Those that are connected; none where the system does not tell a program without a window.
[[nodiscard]] QVector<Screen> screensOfThisPc();

} // namespace ctl
