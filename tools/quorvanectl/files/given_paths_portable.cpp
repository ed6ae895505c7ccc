#include "quorvanectl/files/given_paths.h"

QString ctl::pathFault(const QString &) {
    return QString();
}

QString ctl::withoutLengthMark(const QString &argument) {
    return argument;
}
