// The form of a path that may be longer than 260 characters, for calls of Windows itself.
#pragma once

#include <QDir>
#include <QFileInfo>
#include <QString>

#include <string>

inline std::wstring longName(const QString &path) {
    const QString native =
        QDir::toNativeSeparators(QDir::cleanPath(QFileInfo(path).absoluteFilePath()));
    const bool onServer = native.startsWith(QLatin1String("\\\\"));
    return ((onServer ? QStringLiteral("\\\\?\\UNC") : QStringLiteral("\\\\?\\")) +
            native.mid(onServer ? 1 : 0))
        .toStdWString();
}
