#include "quorvanectl/commands/recover_printing.h"

#include <QFileInfo>
#include <QRegularExpression>

namespace ctl {
namespace {

void describeCopy(const Console &console, const QString &what, const ProjectCopy &copy) {
    if (copy.folder.isEmpty())
        return printLine(console, QStringLiteral("%1 none").arg(what));
    const QString state = !QFileInfo(copy.folder).isDir() ? QStringLiteral("is gone")
                          : copy.projectFile.isEmpty()    ? QStringLiteral("no project file")
                          : copy.runs()                   ? QStringLiteral("passes the validator")
                                                          : QStringLiteral("fails the validator");
    printLine(console, QStringLiteral("%1 %2: %3 files, %4")
                           .arg(what, spelledOut(copy.folder),
                                QString::number(copy.content.files()), state));
    for (const QString &error : copy.errors.split(QLatin1Char('\n'))) {
        if (!error.isEmpty())
            printLine(console, QStringLiteral("           ") + spelledOut(error));
    }
}

void describeCopies(const Console &console, const UpdateRemains &remains) {
    describeCopy(console, QStringLiteral("Project:  "), remains.project);
    describeCopy(console, QStringLiteral("Backup:   "), remains.backup);
    describeCopy(console, QStringLiteral("Unpacked: "), remains.staging);
}

QString advice(const UpdateRemains &remains) {
    const QString source = spelledOut(remains.source);
    switch (remains.recovery) {
    case Recovery::None:
        return QStringLiteral("The project is whole.");
    case Recovery::Backup:
        return QStringLiteral("The backup belongs in the project's place: the old project, whole.");
    case Recovery::Staging:
        return QStringLiteral("The unpacked package belongs in the project's place: the new "
                              "project, whole.");
    case Recovery::ProjectFile:
        return QStringLiteral("The project file of %1 fits, all else is whole.").arg(source);
    case Recovery::Unknown:
        return QStringLiteral("Whether it is whole cannot be known: compare it with the backup, or "
                              "name the update's package with --package. Nothing is changed.");
    case Recovery::Impossible:
        break;
    }
    return QStringLiteral("No whole copy was found. Take the project from its last package or from "
                          "a copy of your own.");
}

QString verdict(const UpdateRemains &remains) {
    return (remains.reason + QLatin1Char(' ') + advice(remains)).trimmed();
}

// What ends the command that mends a project; null where none is needed.
QString mending(const UpdateRemains &remains) {
    switch (remains.recovery) {
    case Recovery::None:
        return remains.backup.folder.isEmpty() ? QString() : QStringLiteral(" --apply");
    case Recovery::Backup:
    case Recovery::Staging:
    case Recovery::ProjectFile:
        return QStringLiteral(" --apply");
    case Recovery::Unknown:
        return QStringLiteral(" --package PACKAGE.zip --apply");
    case Recovery::Impossible:
        break;
    }
    return QStringLiteral(" --from PACKAGE.zip --manifest manifest.json --apply");
}

QString stateOf(const SurveyedProject &project) {
    const UpdateRemains &remains = project.remains;
    if (!project.error.isEmpty())
        return project.error;
    if (remains.recovery == Recovery::None && remains.backup.folder.isEmpty())
        return QStringLiteral("whole");
    if (remains.recovery == Recovery::None)
        return verdict(remains) + QStringLiteral(" A backup is left: the command sets it aside.");
    return verdict(remains);
}

void describeLeft(const Console &console, const char *what, const QStringList &folders,
                  const QString &meaning) {
    for (const QString &folder : folders)
        printLine(
            console,
            QStringLiteral("%1 %2: %3").arg(QLatin1String(what), spelledOut(folder), meaning));
}

} // namespace

void describeRemains(const Console &console, const UpdateRemains &remains) {
    describeCopies(console, remains);
    for (const QString &package : remains.packages)
        printLine(console, QStringLiteral("Package:   ") + spelledOut(package));
    printLine(console, QStringLiteral("Found:     ") + verdict(remains));
}

void describePackage(const Console &console, const UpdateRemains &remains,
                     const ProvedPackage &package, const QString &path) {
    describeCopies(console, remains);
    printLine(console, QStringLiteral("Package:   %1: %2 %3, %4 files, passes the validator")
                           .arg(spelledOut(path), spelledOut(package.name()),
                                spelledOut(package.version()), QString::number(package.files())));
    if (package.isInPlaceOf(remains.project))
        return printLine(console, QStringLiteral("Found:     The package is wholly in place. The "
                                                 "project is whole."));
    printLine(console, QStringLiteral("Found:     The package is its publisher's, and belongs in "
                                      "the project's place: the new project, whole."));
    if (remains.recovery == Recovery::Backup || remains.recovery == Recovery::Staging)
        printLine(console, QStringLiteral("           Without --from: ") + verdict(remains));
}

void describeSurvey(const Console &console, const Survey &survey, const QString &options) {
    for (const SurveyedProject &project : survey.projects) {
        const bool isWhole = project.error.isEmpty() && project.remains.recovery == Recovery::None;
        printLine(console,
                  QStringLiteral("%1: %2").arg(spelledOut(project.projectFile),
                                               inked(console, isWhole ? Ink::Good : Ink::Error,
                                                     spelledOut(stateOf(project)))));
        const QString end = project.error.isEmpty() ? mending(project.remains) : QString();
        if (!end.isNull())
            printLine(console, QStringLiteral("    quorvanectl project recover ") +
                                   asWord(project.projectFile) + options + end);
    }
    if (survey.projects.isEmpty())
        printLine(console, QStringLiteral("There is no project."));
    describeLeft(console, "Backup:   ", survey.backups,
                 QStringLiteral("of an earlier update, or of a project that is not known here"));
    describeLeft(console, "Unpacked: ", survey.unpacked,
                 QStringLiteral("an update that runs, or was broken off before it touched a "
                                "project"));
    for (const QString &package : survey.packages)
        printLine(console,
                  QStringLiteral("Package:   %1: %2 bytes")
                      .arg(spelledOut(package), QString::number(QFileInfo(package).size())));
}

QString asWord(const QString &path) {
    // What a shell reads in its own way: the command is there to be pasted.
    static const QRegularExpression other(QStringLiteral("[^\\w./\\\\:@~+-]"),
                                          QRegularExpression::UseUnicodePropertiesOption);
    const QString shown = spelledOut(path);
    return shown.contains(other) ? QLatin1Char('"') + shown + QLatin1Char('"') : shown;
}

} // namespace ctl
