#include "placer/journal.h"

#include "placer/package_list.h"
#include "placer/sure_files.h"

#include "update/files/patient_files.h"
#include "update/files/text_file.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace placer {
namespace {

// The installed list is exchanged like any other file, and is no file of a package.
bool isStepPath(const QString &path) {
    return isPackagePath(path) || path == QLatin1String(installedListPath);
}

bool readStep(const QJsonObject &object, Step *step) {
    step->path = object.value(QLatin1String("path")).toString();
    step->hadOld = object.value(QLatin1String("hadOld")).toBool();
    step->bringsNew = object.value(QLatin1String("bringsNew")).toBool();
    return isStepPath(step->path);
}

bool takeStep(const Places &places, const Step &step, QString *error) {
    const QString place = places.at(step.path);
    const QString fresh = places.fresh(step.path);
    const QString old = places.old(step.path);
    if (step.bringsNew && !QFile::exists(fresh))
        return true;
    if (step.hadOld && !QFile::exists(old) && QFile::exists(place) && !moveFile(place, old, error))
        return false;
    return !step.bringsNew || moveFile(fresh, place, error);
}

bool takeBackStep(const Places &places, const Step &step, QString *error) {
    const QString place = places.at(step.path);
    const QString fresh = places.fresh(step.path);
    const QString old = places.old(step.path);
    const bool isIn = step.bringsNew && !QFile::exists(fresh) && QFile::exists(place) &&
                      (!step.hadOld || QFile::exists(old));
    if (isIn && !moveFile(place, fresh, error))
        return false;
    return !step.hadOld || !QFile::exists(old) || moveFile(old, place, error);
}

} // namespace

JournalState readJournal(const Places &places, Journal *journal) {
    if (!QFile::exists(places.journal()))
        return JournalState::None;
    const QJsonObject object =
        QJsonDocument::fromJson(readTextFile(places.journal()).toUtf8()).object();
    journal->run = object.value(QLatin1String("run")).toString();
    journal->version = object.value(QLatin1String("version")).toString();
    const QJsonArray steps = object.value(QLatin1String("steps")).toArray();
    for (const QJsonValue &value : steps) {
        Step step{};
        if (!readStep(value.toObject(), &step))
            return JournalState::Unreadable;
        journal->steps.append(step);
    }
    bool isNumber = false;
    (void)journal->run.toUInt(&isNumber);
    return isNumber && !journal->steps.isEmpty() ? JournalState::Read : JournalState::Unreadable;
}

bool writeJournal(const Places &places, const Journal &journal, QString *error) {
    QJsonArray steps;
    for (const Step &step : journal.steps)
        steps.append(QJsonObject{{QStringLiteral("path"), step.path},
                                 {QStringLiteral("hadOld"), step.hadOld},
                                 {QStringLiteral("bringsNew"), step.bringsNew}});
    const QJsonObject object{{QStringLiteral("run"), journal.run},
                             {QStringLiteral("version"), journal.version},
                             {QStringLiteral("steps"), steps}};
    return writeSurely(places.journal(), QJsonDocument(object).toJson(), error);
}

bool removeJournal(const Places &places, QString *error) {
    return removeFileWhenFree(places.journal(), error);
}

bool takeSteps(const Places &places, const Journal &journal, QString *error) {
    for (const Step &step : journal.steps) {
        if (!takeStep(places, step, error))
            return false;
    }
    return true;
}

bool takeBackSteps(const Places &places, const Journal &journal, QString *error) {
    bool allBack = true;
    for (auto step = journal.steps.rbegin(); step != journal.steps.rend(); ++step)
        allBack = takeBackStep(places, *step, allBack ? error : nullptr) && allBack;
    return allBack;
}

} // namespace placer
