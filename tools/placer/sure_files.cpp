#include "placer/sure_files.h"

#include "update/files/failure.h"
#include "update/files/text_file.h"

#include <QFile>

namespace placer {

// The platform's: waits until a file is on the disk.
bool flushWritten(QFile &file);

bool writeSurely(const QString &path, const QByteArray &bytes, QString *error) {
    const QString part = path + QStringLiteral(".part");
    if (!ensureParentDir(path, error))
        return false;
    QFile file(part);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return failAbout(part, file.errorString(), error);
    if (file.write(bytes) != bytes.size() || !file.flush() || !flushWritten(file)) {
        const QString reason = file.errorString();
        file.close();
        file.remove();
        return failAbout(part, reason, error);
    }
    file.close();
    return moveOver(part, path, error);
}

} // namespace placer
