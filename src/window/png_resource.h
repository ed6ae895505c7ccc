// Pictures that are compiled in.
#pragma once

#include <QPixmap>

class QString;

// The PNG of this resource path. It is read as PNG and nothing else: where Qt may look at the content, it
// loads every image plug-in first, named format or not, which would hold up the start. Main thread.
[[nodiscard]] QPixmap pngResource(const QString &path);
