// What belongs to a publisher's machine: the tool's own where it has the commands for it, and the
// tests' elsewhere.
#pragma once

#include <QByteArray>
#include <QString>

namespace support {
namespace publisher {

// The private half of the key; empty where no command reads one.
[[nodiscard]] QByteArray privatePem();
[[nodiscard]] QByteArray publicPem();
[[nodiscard]] QByteArray sign(const QByteArray &bytes);

// Packs the project of small_project.h, which lies in `project`, as version 1.2.0 into the folder
// `packages`.
void packSmallProject(const QString &project, const QString &packages);

} // namespace publisher
} // namespace support
