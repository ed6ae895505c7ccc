#include "parameter/ys_date.h"

#include <QMetaType>

namespace {

// Registering the same type again changes nothing.
void registerYsDate() {
    qRegisterNormalizedMetaType<YsDate>(QByteArrayLiteral("YsDate"));
}

} // namespace

YsDate::YsDate(const YsDate &other)
    : value(other.value)
    , kind(other.kind) {
    registerYsDate();
}

YsDate &YsDate::operator=(const YsDate &other) {
    if (this != &other) {
        value = other.value;
        kind = other.kind;
    }
    registerYsDate();
    return *this;
}
