// A temporary folder with the files that a row asks for: a project as it lies on disk.
#pragma once

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

namespace support {

class ProjectFolder {
public:
    // The path of `name` inside the folder.
    [[nodiscard]] QString path(const QString &name = QStringLiteral("line.yslib")) const;

    // Writes a file, with the folders above it, and returns its path. A failure ends the test run.
    QString write(const QString &name, const QByteArray &content) const;

    // A file of `size` zero bytes that takes no room on the disk.
    QString writeZeros(const QString &name, qint64 size) const;

    // The bytes of a file; empty if there is none.
    [[nodiscard]] QByteArray read(const QString &name) const;

private:
    QTemporaryDir folder;
};

} // namespace support
