#include "placer/placing.h"

#include "placer/journal.h"
#include "placer/plan.h"
#include "placer/release_version.h"
#include "placer/sure_files.h"
#include "update/files/patience.h"
#include "update/files/patient_files.h"
#include "update/files/place_facts.h"
#include "update/files/text_file.h"
#include "update/files/work_lock.h"

#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>

namespace placer {
namespace {

// What is in force there, which an exchange may have changed.
void tellInstalled(const Places &places, Report *report) {
    const PackageList installed = installedList(places);
    report->version = installed.version;
    report->run = installed.run;
}

Report refused(const QString &reason) {
    Report report;
    report.outcome = Outcome::Refused;
    report.reason = reason;
    return report;
}

// The lock of the one who is at work there.
class Turn {
public:
    explicit Turn(const Places &places)
        : lock(places.setup() + QStringLiteral("/lock"))
        , taken(QDir().mkpath(places.setup()) &&
                takeLock(lock, places.setup() + QStringLiteral("/lock"))) {}

    [[nodiscard]] bool isOurs() const { return taken; }
    [[nodiscard]] static QString refusal() {
        return QStringLiteral(
            "another installer is at work here, or this folder cannot be written to");
    }

private:
    QLockFile lock;
    bool taken;
};

// All steps, then the version as the last of them: only then does the journal go.
Report carryOut(const Places &places, const Journal &journal) {
    Report report;
    if (!takeSteps(places, journal, &report.reason)) {
        const bool back = takeBackSteps(places, journal, nullptr);
        report.outcome =
            back && removeJournal(places, nullptr) ? Outcome::TakenBack : Outcome::Unfinished;
        return report;
    }
    if (!writeLauncherVersion(versionFiles(places), journal.version, &report.setAside,
                              &report.reason) ||
        !removeJournal(places, &report.reason))
        report.outcome = Outcome::Unfinished;
    return report;
}

Report finishJournal(const Places &places) {
    Journal journal;
    switch (readJournal(places, &journal)) {
    case JournalState::None:
        break;
    case JournalState::Unreadable:
        return refused(QStringLiteral("%1 cannot be read; install again").arg(places.journal()));
    case JournalState::Read:
        return carryOut({places.root, journal.run}, journal);
    }
    return {};
}

// A journal that cannot be read was written by no run of ours. All files of the package are put in place
// over whatever it meant.
bool clearWay(const Places &places, Report *report) {
    Journal journal;
    if (readJournal(places, &journal) == JournalState::Unreadable)
        return moveOver(places.journal(), places.journal() + QStringLiteral(".bad"),
                        &report->reason);
    *report = finishJournal(places);
    return report->outcome != Outcome::Unfinished;
}

Report placePackage(const Places &places) {
    PackageList package;
    QString reason;
    if (!readList(places.ofRun(QStringLiteral("package.json")), &package, &reason) ||
        !isPackageWhole(places, package, &reason))
        return refused(reason);
    Plan plan;
    if (!planFor(places, package, &plan, &reason))
        return refused(reason);
    // The launcher would take the program's folder for a source tree without it.
    if (!QDir().mkpath(places.at(QLatin1String(userFolder))))
        return refused(
            QStringLiteral("%1 cannot be made").arg(places.at(QLatin1String(userFolder))));
    if (!prepare(places, plan, &reason) || !writeJournal(places, plan.journal, &reason))
        return refused(reason);
    Report report = carryOut(places, plan.journal);
    report.laidBeside = plan.laidBeside;
    report.keepsOtherKey = plan.keepsOtherKey;
    return report;
}

// What somebody has changed is not what was installed.
bool isChanged(const Places &places, const QString &path, const QString &hash) {
    return QFile::exists(places.at(path)) && fileSha256Hex(places.at(path)) != hash;
}

// The folders of the files, from the deepest up, and what the launcher makes beside them; but not the
// installation itself.
QStringList foldersOf(const QStringList &files) {
    QStringList folders{QStringLiteral("bin/plugins")};
    for (QString path : files) {
        while (path.contains(QLatin1Char('/'))) {
            path.truncate(path.lastIndexOf(QLatin1Char('/')));
            folders.append(path);
        }
    }
    folders.removeDuplicates();
    std::sort(folders.begin(), folders.end(),
              [](const QString &one, const QString &other) { return one.size() > other.size(); });
    return folders;
}

bool removeFile(const Places &places, const QString &path, QString *error) {
    const QString place = places.at(path);
    return !QFile::exists(place) || removeFileWhenFree(place, error);
}

Report removeFiles(const Places &places, const PackageList &installed) {
    Report report;
    // First what starts it: what is left of a removal that was broken off cannot run.
    QStringList paths{QLatin1String(launcherPath)};
    paths += installed.files.keys();
    paths.removeDuplicates();
    for (const QString &path : qAsConst(paths)) {
        if (isChanged(places, path, installed.files.value(path))) {
            report.leftBehind.append(path);
        } else if (!removeFile(places, path, &report.reason)) {
            report.outcome = Outcome::Unfinished;
            return report;
        }
    }
    if (!removeLauncherVersion(versionFiles(places).path, &report.reason))
        report.outcome = Outcome::Unfinished;
    for (const QString &folder : foldersOf(paths))
        (void)QDir().rmdir(places.at(folder)); // stays if it holds anything
    return report;
}

QString programInUse(const Places &places, const PackageList &installed) {
    Patience patience;
    for (auto file = installed.files.begin(); file != installed.files.end(); ++file) {
        if (isHeld(places.at(file.key()), &patience))
            return file.key();
    }
    return QString();
}

} // namespace

Report place(const Places &places) {
    const Turn turn(places);
    if (!turn.isOurs())
        return refused(Turn::refusal());
    Report earlier;
    if (!clearWay(places, &earlier))
        return earlier;
    Report report = placePackage(places);
    tellInstalled(places, &report);
    if (report.setAside.isEmpty())
        report.setAside = earlier.setAside;
    return report;
}

Report finish(const Places &places) {
    const Turn turn(places);
    if (!turn.isOurs())
        return refused(Turn::refusal());
    Report report = finishJournal(places);
    tellInstalled(places, &report);
    return report;
}

void tidy(const Places &places) {
    const Turn turn(places);
    if (!turn.isOurs() || QFile::exists(places.journal()))
        return;
    const QStringList runs = QDir(places.setup()).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString &run : runs) {
        bool isRun = false;
        (void)run.toUInt(&isRun);
        if (isRun && run != places.run)
            removeNowOrLater(places.setup() + QLatin1Char('/') + run);
    }
    removeNowOrLater(places.ofRun(QStringLiteral("new")));
    removeNowOrLater(places.ofRun(QStringLiteral("old")));
}

Report removeInstallation(const Places &places) {
    const QString list = places.at(QLatin1String(installedListPath));
    if (!QFile::exists(list))
        return refused(QStringLiteral("nothing is installed here: %1").arg(places.root));
    Report report;
    {
        const Turn turn(places);
        if (!turn.isOurs())
            return refused(Turn::refusal());
        PackageList installed;
        QString reason;
        if (QFile::exists(places.journal()))
            return refused(
                QStringLiteral("an installation was broken off here; install again first"));
        if (!readList(list, &installed, &reason))
            return refused(reason);
        const QString held = programInUse(places, installed);
        if (!held.isEmpty())
            return refused(QStringLiteral("%1 is in use; close it first").arg(held));
        report = removeFiles(places, installed);
        if (report.outcome != Outcome::Done)
            return report;
        // The last, since it says what else there is.
        if (!removeFileWhenFree(list, &report.reason)) {
            report.outcome = Outcome::Unfinished;
            return report;
        }
    }
    removeNowOrLater(places.setup());
    (void)QDir().rmdir(places.root); // stays with the user's folder in it
    return report;
}

} // namespace placer
