#include "frame/steering_characters.h"

namespace {

bool turnsDirection(QChar unit) {
    const ushort code = unit.unicode();
    return code == 0x061C || code == 0x200E || code == 0x200F || // one character's direction
           (code >= 0x202A && code <= 0x202E) ||                 // embedded and overridden
           (code >= 0x2066 && code <= 0x2069);                   // isolated
}

} // namespace

bool steersDisplay(QChar unit) {
    return unit.category() == QChar::Other_Control || turnsDirection(unit);
}

QString unicodeEscape(QChar unit) {
    return QStringLiteral("\\u%1").arg(unit.unicode(), 4, 16, QLatin1Char('0'));
}
