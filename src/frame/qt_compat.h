// What newer releases of Qt offer and the oldest one that we build with (5.11) lacks, under one name.
#pragma once

#include <QFileInfo>

namespace qt_compat {

// Whether the entry is a Windows junction: a folder that is a link, and not called one by
// QFileInfo::isSymLink. Releases before 5.15 cannot tell.
[[nodiscard]] inline bool isJunction(const QFileInfo &info) {
#if QT_VERSION >= QT_VERSION_CHECK(5, 15, 0)
    return info.isJunction();
#else
    Q_UNUSED(info)
    return false;
#endif
}

} // namespace qt_compat
