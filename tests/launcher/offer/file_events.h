// The file operations of this very program, as a test sees them: each just before it is done.
//
// So a test has something happen at a point that shows on the disk, whoever does the work and in
// whatever steps.
#pragma once

#include <QString>

#include <functional>

namespace file_events {

enum class Kind {
    Read,   // a file is opened, and not written to
    Write,  // a file is opened to be written to, and perhaps made
    Look,   // somebody asks whether it is there
    Remove, // an empty folder is removed
    Lock,   // a file is locked
    Wait, // the thread sleeps: the path is for how many milliseconds, and to fail is to go on at once
};

// Told of each operation of this thread. Returns 0, or the errno that the operation fails with instead
// of being done. Its own operations are not told.
using Listener = std::function<int(Kind kind, const QString &path)>;

// Listens as long as it lives; one at a time.
class Watch {
public:
    explicit Watch(const Listener &listener);
    ~Watch();
    Watch(const Watch &) = delete;
    Watch &operator=(const Watch &) = delete;
};

// False where a program's operations cannot be seen: nothing is told then.
[[nodiscard]] bool areSeen();

} // namespace file_events
