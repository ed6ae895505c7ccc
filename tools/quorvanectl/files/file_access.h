// Reading what a command is given and writing what it makes.
//
// Every error is one line that names the file, ready for refuse().
#pragma once

#include <QByteArray>
#include <QSaveFile>
#include <QString>
#include <QStringList>

namespace ctl {

// Far above any project file, script, library, manifest or key.
inline constexpr qint64 largestText = 67108864; // bytes, 64 MiB

// Whether the absolute path can be written as text, as all is that a project names: not if a folder on
// the way, this one among them, has a name in another encoding. For what is not there without such a
// name it is true.
[[nodiscard]] bool canBeNamed(const QString &path, QString *error);

// Whether there is a plain file that can be opened and has at most `limit` bytes.
[[nodiscard]] bool isUsableFile(const QString &path, QString *error, qint64 limit = largestText);

// The text of such a file, decoded as the launcher decodes it; null on failure.
[[nodiscard]] QString readText(const QString &path, QString *error);

// The bytes of such a file; null on failure, and not null for an empty file.
[[nodiscard]] QByteArray readBytes(const QString &path, QString *error);

// Whether something is at `path`: a link to nowhere does not exist and is there all the same.
[[nodiscard]] bool isTaken(const QString &path);

// Whether both names lead to the same file or folder, by whatever links and mounts. What is not there is
// the same as nothing.
[[nodiscard]] bool isOnePlace(const QString &one, const QString &other);

// Whether `path` may be written: nothing is there yet, or it is a plain file and `force` is given. One
// of `inputs`, which the command has read, may not be.
[[nodiscard]] bool mayWrite(const QString &path, bool force, QString *error,
                            const QStringList &inputs = {});

// Opens a file that shows at its place only once it is whole: with commitFile(). An interrupt before
// that leaves the folder as it was.
[[nodiscard]] bool openFile(QSaveFile &file, bool force, QString *error);
[[nodiscard]] bool commitFile(QSaveFile &file, QString *error);

// Both, around the bytes.
[[nodiscard]] bool writeFile(const QString &path, const QByteArray &bytes, bool force,
                             QString *error);

} // namespace ctl
