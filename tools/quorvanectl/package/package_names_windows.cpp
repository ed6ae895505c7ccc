#include "quorvanectl/package/package_names.h"

bool ctl::cannotHold(const QString &path, QSet<QString> *folded) {
    if (path.endsWith(QLatin1Char('/')))
        return !nameFault(path.chopped(1)).isEmpty();
    const QString one = path.toCaseFolded();
    if (!nameFault(path).isEmpty() || folded->contains(one))
        return true;
    folded->insert(one);
    return false;
}
