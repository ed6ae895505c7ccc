#include "update/files/place_facts.h"

#include "frame/qt_compat.h"

#include <QFileInfo>

bool isLink(const QFileInfo &info) {
    return info.isSymLink() || qt_compat::isJunction(info);
}

bool isRootOfVolume(const QString &folder) {
    const QString root = rootOfVolume(folder);
    return root == realPath(folder) || isSamePlace(root, folder);
}

bool lieOnOneVolume(const QString &one, const QString &other) {
    const QString root = rootOfVolume(one);
    const QString otherRoot = rootOfVolume(other);
    return root == otherRoot || isSamePlace(root, otherRoot);
}
