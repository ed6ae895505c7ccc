// The openssl program, as another publisher's tool: what it makes we must read, and the reverse.
#pragma once

#include <QFile>
#include <QProcess>
#include <QtTest>

namespace support {

// Runs `openssl` to its end. Its output goes to `out`, if given; a failure shows its errors.
[[nodiscard]] inline bool openssl(const QStringList &arguments, QByteArray *out = nullptr) {
    QProcess process;
    process.start(QStringLiteral("openssl"), arguments);
    if (!process.waitForFinished(60000) || process.exitCode() != 0) {
        qWarning("openssl %s: %s", qPrintable(arguments.join(' ')),
                 process.readAllStandardError().constData());
        return false;
    }
    if (out != nullptr)
        *out = process.readAllStandardOutput();
    return true;
}

[[nodiscard]] inline QByteArray bytesOf(const QString &path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

inline void writeBytes(const QString &path, const QByteArray &bytes) {
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write %s", qPrintable(path));
}

} // namespace support
