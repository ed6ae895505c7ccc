#include "quorvanectl/keys/own_files.h"

#include "update/files/failure.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ctl {
namespace {

const mode_t ownerOnly = 0600;
const mode_t everybody = 0644;

bool writeAll(int descriptor, const QByteArray &content) {
    int written = 0;
    while (written < content.size()) {
        const ssize_t done =
            ::write(descriptor, content.constData() + written, size_t(content.size() - written));
        if (done < 0 && errno != EINTR)
            return false;
        written += done > 0 ? int(done) : 0;
    }
    return ::fsync(descriptor) == 0;
}

bool failBySystem(const QString &path, QString *error) {
    return failAbout(path, QString::fromLocal8Bit(std::strerror(errno)), error);
}

} // namespace

bool writeNewFile(const QString &path, const QByteArray &content, Readers readers, QString *error) {
    const QByteArray name = QFile::encodeName(path);
    const int descriptor = ::open(name.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC,
                                  readers == Readers::Owner ? ownerOnly : everybody);
    if (descriptor < 0)
        return failBySystem(path, error);
    const bool whole = writeAll(descriptor, content) || failBySystem(path, error);
    ::close(descriptor);
    if (!whole)
        ::unlink(name.constData()); // ours, and half a key is none
    return whole;
}

bool othersMayRead(const QString &path) {
    return (QFileInfo(path).permissions() & (QFile::ReadGroup | QFile::ReadOther)) != 0;
}

} // namespace ctl
