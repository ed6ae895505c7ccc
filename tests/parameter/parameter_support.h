// What the tests of the parameter store share.
#pragma once

#include "parameter/ys_date.h"

#include <QMetaMethod>
#include <QStringList>

namespace support {

inline YsDate cell(const QVariant &value, qint32 kind = 5) {
    YsDate made;
    made.value = value;
    made.kind = kind;
    return made;
}

// The methods that a class adds to its base, one line each, in their order.
inline QStringList ownMethods(const QMetaObject &type) {
    const char *const kinds[] = {"method", "signal", "slot", "constructor"};
    const char *const accesses[] = {"private", "protected", "public"};
    QStringList lines;
    for (int i = type.methodOffset(); i < type.methodCount(); ++i) {
        const QMetaMethod method = type.method(i);
        lines.append(QStringLiteral("%1 %2 %3 %4")
                         .arg(QLatin1String(accesses[method.access()]),
                              QLatin1String(kinds[method.methodType()]),
                              QLatin1String(method.typeName()),
                              QLatin1String(method.methodSignature())));
    }
    return lines;
}

} // namespace support
