// A disk that takes no more of any file than so many bytes, for this process and as long as it lives. Not for
// Windows.
#pragma once

#include <QtGlobal>

#include <csignal>
#include <sys/resource.h>

namespace support {

class SizeLimit {
public:
    explicit SizeLimit(rlim_t bytes) {
        if (std::signal(SIGXFSZ, SIG_IGN) == SIG_ERR || ::getrlimit(RLIMIT_FSIZE, &before) != 0)
            qFatal("no limit can be set");
        set(bytes);
    }
    ~SizeLimit() { set(before.rlim_cur); }
    SizeLimit(const SizeLimit &) = delete;
    SizeLimit &operator=(const SizeLimit &) = delete;

private:
    void set(rlim_t bytes) const {
        const rlimit wanted{bytes, before.rlim_max};
        if (::setrlimit(RLIMIT_FSIZE, &wanted) != 0)
            qFatal("no limit can be set");
    }

    rlimit before = {};
};

} // namespace support
