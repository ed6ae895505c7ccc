#include "update/package_address.h"

#include <QFileInfo>
#include <QUrl>

bool isUrl(const QString &address) {
    const QUrl url(address);
    return url.isValid() && url.scheme().size() > 1;
}

QString packageFileName(const QString &address) {
    return QFileInfo(address).fileName();
}
