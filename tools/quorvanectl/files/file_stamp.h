// What tells that a file has become another without reading it.
#pragma once

#include <QString>

namespace ctl {

struct FileStamp {
    qint64 size = -1;   // bytes; -1 for what is no plain file, or is not there
    qint64 changed = 0; // the time of the last change, in units of the system's own
};

[[nodiscard]] inline bool operator==(const FileStamp &one, const FileStamp &other) {
    return one.size == other.size && one.changed == other.changed;
}

// Of the file that the path leads to, by way of links too. For any thread.
[[nodiscard]] FileStamp stampOf(const QString &path);

} // namespace ctl
