// What belongs to a publisher's machine, by the tool's own means.
#pragma once

#include <QByteArray>
#include <QString>

namespace support {
namespace publisher {

[[nodiscard]] QByteArray privatePem();
[[nodiscard]] QByteArray publicPem();
[[nodiscard]] QByteArray sign(const QByteArray &bytes);

// Packs the project of small_project.h, which lies in `project`, as version 1.2.0 into the folder
// `packages`.
void packSmallProject(const QString &project, const QString &packages);

} // namespace publisher
} // namespace support
