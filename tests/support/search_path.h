// The search path of programs, replaced while an object lives, and small programs put on it.
#pragma once

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

namespace support {

// The path holds one temporary folder; what was there before follows if `keepsOthers`.
class SearchPath {
public:
    explicit SearchPath(bool keepsOthers)
        : before(qgetenv("PATH")) {
        const QByteArray own = QFile::encodeName(folder.path());
        qputenv("PATH", keepsOthers ? own + ":" + before : own);
    }
    ~SearchPath() { qputenv("PATH", before); }
    SearchPath(const SearchPath &) = delete;
    SearchPath &operator=(const SearchPath &) = delete;

    // A shell script under that name. It may use "$here", the folder it lies in.
    void addScript(const QString &name, const QByteArray &body) {
        QFile file(filePath(name));
        if (!file.open(QIODevice::WriteOnly))
            qFatal("cannot write %s", qPrintable(name));
        file.write("#!/bin/sh\nhere=$(/usr/bin/dirname \"$0\")\n" + body);
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }

    [[nodiscard]] QString filePath(const QString &name) const { return folder.filePath(name); }

    // What a script wrote to a file beside it.
    [[nodiscard]] QByteArray read(const QString &name) const {
        QFile file(filePath(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

private:
    QByteArray before;
    QTemporaryDir folder;
};

} // namespace support
