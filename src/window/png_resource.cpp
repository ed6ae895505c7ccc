#include "window/png_resource.h"

#include <QImageReader>
#include <QString>

QPixmap pngResource(const QString &path) {
    QImageReader reader(path, "png");
    reader.setAutoDetectImageFormat(false);
    return QPixmap::fromImageReader(&reader);
}
