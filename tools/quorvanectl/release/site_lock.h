// One release at a time in a site.
#pragma once

#include <QLockFile>
#include <QString>

namespace ctl {

class SiteLock {
public:
    explicit SiteLock(const QString &site);
    // At once or not at all; one that was killed is no hindrance. False, with a line in `error` that says who
    // is at work there.
    [[nodiscard]] bool take(QString *error);

private:
    const QString site;
    const QString path;
    QLockFile lock; // given back when it goes
};

} // namespace ctl
