#include "quorvanectl/package/package_names.h"

bool ctl::cannotHold(const QString &, QSet<QString> *) {
    return false;
}
