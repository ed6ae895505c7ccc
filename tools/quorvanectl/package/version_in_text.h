// The version of a project, changed in the text of its file and nowhere else in it.
#pragma once

#include <QByteArray>
#include <QString>

namespace ctl {

// The bytes of a project file with `version` as its `project.version`: all others are as they were. Where the
// file says none, it becomes the first member of `project`. Null if that cannot be done: the file is no JSON,
// holds no object `project` with something in it, has bytes that its encoding does not know, or says its
// version by an object or an array.
[[nodiscard]] QByteArray withVersion(const QByteArray &projectFile, const QString &version);

} // namespace ctl
