#include "placer/plan.h"

#include "placer/release_version.h"
#include "placer/sure_files.h"
#include "update/files/failure.h"
#include "update/files/text_file.h"

#include <QFile>
#include <QFileInfo>

namespace placer {
namespace {

constexpr char besideSuffix[] = ".new";

bool isLast(const Step &step) {
    return step.path.compare(QLatin1String(launcherPath), Qt::CaseInsensitive) == 0;
}

class Planner {
public:
    Planner(const Places &places_, const PackageList &package)
        : places(places_)
        , before(installedList(places_)) {
        plan.journal.run = places.run;
        plan.journal.version = package.version;
        plan.installed = package;
        plan.installed.run = places.run;
    }

    void add(const QString &path, const QString &hash, bool replacesKey) {
        const QString there = fileSha256Hex(places.at(path));
        const bool isThere = QFile::exists(places.at(path));
        if (there == hash)
            return;
        if (!isThere || !path.startsWith(QLatin1String(configFolder)))
            exchange(path, isThere);
        else if (path == QLatin1String(publicKeyPath))
            addKey(path, replacesKey);
        else if (there == before.files.value(path))
            exchange(path, true);
        else
            layBeside(path, hash);
    }

    void removeUnknown() {
        for (auto file = before.files.begin(); file != before.files.end(); ++file) {
            if (!plan.installed.files.contains(file.key()) &&
                fileSha256Hex(places.at(file.key())) == file.value())
                plan.journal.steps.append({file.key(), true, false});
        }
    }

    Plan finished() {
        const QString list = QLatin1String(installedListPath);
        exchange(list, QFile::exists(places.at(list)));
        QVector<Step> &steps = plan.journal.steps;
        std::stable_partition(steps.begin(), steps.end(),
                              [](const Step &step) { return !isLast(step); });
        return plan;
    }

private:
    void exchange(const QString &path, bool hadOld) {
        plan.journal.steps.append({path, hadOld, true});
    }

    void addKey(const QString &path, bool replacesKey) {
        if (replacesKey)
            exchange(path, true);
        else
            plan.keepsOtherKey = true;
    }

    void layBeside(const QString &path, const QString &hash) {
        const QString beside = path + QLatin1String(besideSuffix);
        exchange(beside, QFile::exists(places.at(beside)));
        plan.installed.files.insert(beside, hash);
        plan.laidBeside.append(path.mid(int(qstrlen(configFolder))));
    }

    const Places &places;
    const PackageList before;
    Plan plan;
};

} // namespace

bool planFor(const Places &places, const PackageList &package, Plan *plan, QString *error) {
    Planner planner(places, package);
    for (auto file = package.files.begin(); file != package.files.end(); ++file)
        planner.add(file.key(), file.value(), package.replacesKey);
    planner.removeUnknown();
    *plan = planner.finished();
    for (const Step &step : qAsConst(plan->journal.steps)) {
        if (QFileInfo(places.at(step.path)).isDir())
            return failAbout(places.at(step.path), QStringLiteral("is a folder"), error);
    }
    return true;
}

bool prepare(const Places &places, const Plan &plan, QString *error) {
    for (const QString &name : plan.laidBeside) {
        const QString path = places.fresh(QLatin1String(configFolder) + name);
        if (!moveFile(path, path + QLatin1String(besideSuffix), error))
            return false;
    }
    for (const Step &step : plan.journal.steps) {
        for (const QString &path : {places.at(step.path), places.old(step.path)}) {
            if (!ensureParentDir(path, error))
                return false;
        }
    }
    return writeSurely(places.fresh(QLatin1String(installedListPath)), listText(plan.installed),
                       error) &&
           prepareLauncherVersion(versionFiles(places), plan.journal.version, error);
}

} // namespace placer
