#include "quorvanectl/recovery/recovery_survey.h"

#include "launcher/offer/apply_places.h"
#include "launcher/offer/project_apply.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace ctl {
namespace {

// The folders of a place that end in a time, the newest first.
QStringList stampedBelow(const QString &place) {
    QStringList found;
    for (const QString &name : QDir(place).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        if (apply_places::stampOf(name).isValid())
            found.append(QDir(place).filePath(name));
    }
    std::sort(found.begin(), found.end(), [](const QString &one, const QString &other) {
        return apply_places::stampOf(one) > apply_places::stampOf(other);
    });
    return found;
}

// What a recovery has set aside or was making is no project.
bool isOfARecovery(const QString &folder) {
    return folder.contains(QLatin1String(".set_aside_")) ||
           folder.endsWith(QLatin1String(".recovering"));
}

bool isBackupOf(const QString &backup, const QString &projectFile) {
    const QFileInfo project(projectFile);
    return apply_places::isStamped(QFileInfo(backup).fileName(),
                                   apply_places::backupPrefix(project.absolutePath())) &&
           QFileInfo(QDir(backup).filePath(project.fileName())).isFile();
}

// The project that a backup was made of, if it lay among the others.
QString projectOf(const QString &backup, const QString &projects) {
    const QString file = QFileInfo(findProjectFile(backup)).fileName();
    QString name = QFileInfo(backup).fileName();
    name.chop(apply_places::stamp().size() + 1);
    return file.isEmpty() || name.isEmpty()
               ? QString()
               : QDir(projects).filePath(name + QLatin1Char('/') + file);
}

class ProjectList {
public:
    void add(const QString &projectFile) {
        const QString path = QDir::cleanPath(projectFile);
        if (!projectFile.isEmpty() && !files.contains(path))
            files.append(path);
    }
    [[nodiscard]] bool knows(const QString &backup) const {
        return std::any_of(files.begin(), files.end(),
                           [&](const QString &file) { return isBackupOf(backup, file); });
    }
    [[nodiscard]] QStringList sorted() const {
        QStringList list = files;
        list.sort();
        return list;
    }

private:
    QStringList files;
};

QStringList projectFiles(const SurveyPlaces &places, const QStringList &backups) {
    ProjectList list;
    const QDir projects(places.projects);
    list.add(places.selected);
    for (const QString &name : projects.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        if (!isOfARecovery(name))
            list.add(findProjectFile(projects.filePath(name)));
    }
    for (const QString &file : places.remembered) {
        const bool hasBackup = std::any_of(backups.begin(), backups.end(), [&](const QString &one) {
            return isBackupOf(one, file);
        });
        if (hasBackup || QFileInfo(file).isFile())
            list.add(file);
    }
    for (const QString &backup : backups) {
        if (!list.knows(backup))
            list.add(projectOf(backup, places.projects));
    }
    return list.sorted();
}

} // namespace

Survey surveyRemains(const SurveyPlaces &places) {
    Survey survey;
    survey.backups = stampedBelow(places.data.updateBackup());
    survey.unpacked = stampedBelow(places.data.updateTemp());
    survey.packages = packagesOf(places.data);
    for (const QString &file : projectFiles(places, survey.backups)) {
        SurveyedProject project;
        project.projectFile = file;
        (void)lookAtRemains({file, places.data, {}}, &project.remains, &project.error);
        survey.projects.append(project);
    }
    for (const SurveyedProject &project : qAsConst(survey.projects)) {
        survey.backups.removeAll(project.remains.backup.folder);
        survey.unpacked.removeAll(project.remains.staging.folder);
    }
    return survey;
}

} // namespace ctl
