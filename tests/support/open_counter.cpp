#include "support/open_counter.h"

#include <QDir>
#include <QFile>

#include <array>

#include <sys/inotify.h>
#include <unistd.h>

namespace support {

// Told of each close too, since the kernel merges two equal events in a row.
OpenCounter::OpenCounter(const QStringList &folders)
    : queue(::inotify_init1(IN_NONBLOCK)) {
    for (const QString &folder : folders) {
        const QString path = QDir(folder).absolutePath();
        folderOf.insert(
            ::inotify_add_watch(queue, QFile::encodeName(path).constData(), IN_OPEN | IN_CLOSE),
            path);
    }
}

OpenCounter::~OpenCounter() {
    ::close(queue);
}

Opens OpenCounter::take() {
    Opens counts;
    alignas(inotify_event) std::array<char, 65536> events{};
    ssize_t length = 0;
    while ((length = ::read(queue, events.data(), events.size())) > 0) {
        for (const char *at = events.data(); at < events.data() + length;) {
            const auto &event = *reinterpret_cast<const inotify_event *>(at);
            if ((event.mask & IN_OPEN) != 0 && (event.mask & IN_ISDIR) == 0)
                ++counts[folderOf.value(event.wd) + '/' + QFile::decodeName(event.name)];
            at += sizeof(inotify_event) + event.len;
        }
    }
    return counts;
}

} // namespace support
