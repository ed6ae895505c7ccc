#include "update/files/place_facts.h"

#include "frame/qt_compat.h"

#include <QFileInfo>
#include <QStorageInfo>

bool isLink(const QFileInfo &info) {
    return info.isSymLink() || qt_compat::isJunction(info);
}

QString rootOfVolume(const QString &path) {
    return QStorageInfo(path).rootPath();
}
