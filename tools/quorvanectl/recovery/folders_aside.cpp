#include "quorvanectl/recovery/folders_aside.h"

#include "launcher/offer/apply_places.h"
#include "quorvanectl/files/file_access.h"
#include "update/files/failure.h"
#include "update/files/patient_files.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace ctl {

QString freeName(const QString &path, const QString &suffix) {
    QString name = path + suffix;
    for (int i = 2; isTaken(name); ++i)
        name = path + suffix + QStringLiteral("_%1").arg(i);
    return name;
}

QString asideOf(const QString &path) {
    return freeName(path, QStringLiteral(".set_aside_") + apply_places::stamp());
}

bool swapIn(const QString &source, const QString &target, const QStringList &asides,
            QString *keptAs, QString *error) {
    const bool occupied = isTaken(target);
    const auto aside = std::find_if(asides.begin(), asides.end(), [&](const QString &name) {
        return occupied && renameWhenFree(target, name);
    });
    if (occupied && aside == asides.end())
        return fail(QStringLiteral("cannot rename %1 to %2").arg(target, asides.constLast()),
                    error);
    if (!renameWhenFree(source, target)) {
        if (occupied)
            (void)renameWhenFree(*aside, target); // else it stays whole under the other name
        return fail(QStringLiteral("cannot rename %1 to %2").arg(source, target), error);
    }
    if (occupied)
        *keptAs = *aside;
    return true;
}

QString copyName(const QString &target) {
    return target + QStringLiteral(".recovering");
}

void retire(const QString &folder, QStringList *done) {
    if (folder.isEmpty() || !QFileInfo(folder).isDir())
        return;
    const QString retired = freeName(folder, QStringLiteral(".recovered"));
    if (renameWhenFree(folder, retired))
        done->append(retired);
}

} // namespace ctl
