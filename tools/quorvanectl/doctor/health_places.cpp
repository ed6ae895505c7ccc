// The data folder, the left-overs of updates, and the selected project.
#include "quorvanectl/doctor/health.h"

#include "frame/app_paths.h"
#include "launcher/offer/apply_places.h"
#include "project/project_validator.h"
#include "quorvanectl/support/support_files.h"
#include "update/files/file_operations.h"
#include "update/files/folder_listing.h"
#include "update/files/place_facts.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonObject>
#include <QPair>
#include <QStorageInfo>

namespace ctl {
namespace {

constexpr int mostOfAKind = 5; // more of them need the same remedy
constexpr int mebibyte = 1024 * 1024;

QString inMebibytes(qint64 bytes) {
    return QStringLiteral("%1 MiB").arg((bytes + mebibyte - 1) / mebibyte);
}

QStringList entriesOf(const QString &folder) {
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                                  QDir::Name);
}

// --- the project's folder --------------------------------------------------------------------------

QString nothingMayBeTaken() {
    return QStringLiteral("nothing may be taken out of this folder");
}

// Why an update could not take the entry away or copy it; empty if it could.
QString obstacle(const QFileInfo &info) {
    const QString path = info.filePath();
    if (isHeld(path))
        return QStringLiteral("a program holds it open, or a right is missing on it");
    if (isLink(info))
        return {};
    if (info.isDir() && isMountPoint(path))
        return QStringLiteral("a volume is mounted on it");
    if (info.isDir() && !mayTakeFrom(path))
        return nothingMayBeTaken();
    if (info.isFile() && !info.isHidden() && !mayRead(path))
        return QStringLiteral("it may not be read");
    return {};
}

void addObstacle(const QString &path, const QString &why, Health *health) {
    addError(health, "project-folder", QStringLiteral("%1: %2").arg(path, why),
             QStringLiteral("Give the line's user the right to it, or take it out of the project: "
                            "an update fails with it."));
}

// What stands in the way of an update below a folder, and the bytes of the files there.
struct FolderWalk {
    qint64 bytes = 0;
    QStringList folders; // still to be listed
    QVector<QPair<QString, QString>> obstacles;

    void look(const QFileInfo &info) {
        const QString why = obstacle(info);
        if (!why.isEmpty())
            obstacles.append({info.filePath(), why});
        else if (info.isDir() && !isLink(info))
            folders.append(info.filePath());
        bytes += info.isFile() && !isLink(info) ? info.size() : 0;
    }
};

qint64 examineFolder(const QString &folder, Health *health) {
    FolderWalk walk;
    const QString parent = QFileInfo(folder).path();
    if (!mayTakeFrom(parent))
        walk.obstacles.append({parent, nothingMayBeTaken()});
    walk.look(QFileInfo(folder));
    while (!walk.folders.isEmpty()) {
        QFileInfoList entries;
        QString unseen;
        if (!listFolder(walk.folders.takeLast(), &entries, &unseen))
            walk.obstacles.append(
                {unseen, QStringLiteral("it cannot be listed, or its name is no UTF-8")});
        for (const QFileInfo &entry : entries)
            walk.look(entry);
    }
    for (const auto &found : walk.obstacles.mid(0, mostOfAKind))
        addObstacle(found.first, found.second, health);
    return walk.bytes;
}

// The launcher refuses to replace any other folder.
bool isOfItsOwn(const HealthPlaces &places, const QString &folder, Health *health) {
    if (mayBeReplaced(folder, {places.data.updateTemp(), places.data.updateBackup(),
                               AppPaths::applicationDirectory()}))
        return true;
    addError(health, "project-folder",
             QStringLiteral("%1: is a whole volume, or holds the launcher or its data").arg(folder),
             QStringLiteral("Move the project into a folder of its own and choose it there: every "
                            "update of it fails."));
    return false;
}

void examineRules(const QString &projectFile, Health *health) {
    const QStringList errors = errorLines(validateProjectFile(projectFile));
    if (errors.isEmpty())
        return;
    addError(health, "project-check",
             QStringLiteral("%1: the launcher does not start it, by %2 %3; the first: %4")
                 .arg(projectFile, QString::number(errors.size()),
                      errors.size() == 1 ? QStringLiteral("error") : QStringLiteral("errors"),
                      errors.first()),
             QStringLiteral("Choose another project, and give its engineer what quorvanectl "
                            "project check shows; after an update, quorvanectl project recover."));
}

// An update unpacks a project there and copies the old one beside it.
void examineSpace(const HealthPlaces &places, qint64 projectBytes, Health *health) {
    health->neededBytes = 2 * projectBytes;
    if (!QStorageInfo(places.data.path).isValid() || health->freeBytes >= health->neededBytes)
        return;
    addError(health, "space",
             QStringLiteral("%1: %2 are free, and an update of the project needs %3")
                 .arg(places.data.path, inMebibytes(health->freeBytes),
                      inMebibytes(health->neededBytes)),
             QStringLiteral("Make room: an update that fills the disk may leave the project in "
                            "pieces."));
}

} // namespace

void examineDataFolder(const HealthPlaces &places, Health *health) {
    const QString folder = places.data.path;
    if (!QFileInfo(folder).isDir())
        return addWarning(health, "data-folder", QStringLiteral("%1: no such folder").arg(folder),
                          QStringLiteral("Start the launcher once, as the line's user."));
    health->freeBytes = QStorageInfo(folder).bytesAvailable();
    if (!QFileInfo(folder).isWritable())
        addError(health, "data-folder",
                 QStringLiteral("%1: this user may not write there").arg(folder),
                 QStringLiteral("Give the line's user the right to write there: without it nothing "
                                "is logged or remembered, and no update can be unpacked."));
    const QFileInfo log(places.data.launchLog());
    if (log.exists() && (!log.isFile() || !log.isWritable()))
        addWarning(health, "log",
                   QStringLiteral("%1: is no file that this user may write").arg(log.filePath()),
                   QStringLiteral("Find out who put it there: lines of the log are lost."));
    const QString error =
        launcherSettings(places.data.database()).value(QStringLiteral("error")).toString();
    if (QFileInfo::exists(places.data.database()) && !error.isEmpty())
        addWarning(health, "settings", QStringLiteral("%1: %2").arg(places.data.database(), error),
                   QStringLiteral("Find the program that holds or changed it: the launcher goes on "
                                  "without its settings."));
}

void examineLeftOvers(const HealthPlaces &places, Health *health) {
    QStringList left;
    for (const QString &name : entriesOf(places.data.updateTemp())) {
        if (apply_places::isStamped(name, apply_places::stagingPrefix()))
            left.append(QDir(places.data.updateTemp()).filePath(name));
    }
    for (const QString &name : entriesOf(places.data.updateBackup())) {
        if (apply_places::stampOf(name).isValid())
            left.append(QDir(places.data.updateBackup()).filePath(name));
    }
    for (const QString &path : left.mid(0, mostOfAKind))
        addWarning(health, "left-over",
                   QStringLiteral("%1: is left of an update that runs or was broken off").arg(path),
                   QStringLiteral("Close the launcher, then run quorvanectl project recover with "
                                  "the project's file."));
}

void examineProject(const HealthPlaces &places, Health *health) {
    if (places.projectFile.isEmpty())
        return addWarning(health, "project", QStringLiteral("no project is selected"),
                          QStringLiteral("Choose one in the launcher, or name it with --project."));
    const QFileInfo file(places.projectFile);
    if (!file.isFile())
        return addError(health, "project", noFileAt(places.projectFile),
                        QStringLiteral("Choose another; after an update, quorvanectl project "
                                       "recover."));
    examineRules(places.projectFile, health);
    if (!isOfItsOwn(places, file.absolutePath(), health))
        return;
    const qint64 bytes = examineFolder(file.absolutePath(), health);
    if (QFileInfo(places.data.path).isDir())
        examineSpace(places, bytes, health);
}

} // namespace ctl
