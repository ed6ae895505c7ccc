// Failure as a value: a false result, with the reason where a place for it is given.
#pragma once

#include <QString>

// Puts the reason into `error`, which may be null, and returns false, so that an operation can end
// with it.
inline bool fail(const QString &reason, QString *error) {
    if (error != nullptr)
        *error = reason;
    return false;
}

// The same for a reason that is about one file.
inline bool failAbout(const QString &path, const QString &reason, QString *error) {
    return fail(QStringLiteral("%1: %2").arg(path, reason), error);
}
