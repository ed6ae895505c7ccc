#include "quorvanectl/support/project_facts.h"

#include "launcher/offer/project_apply.h"
#include "project/project_validator.h"
#include "quorvanectl/files/interruption.h"
#include "update/files/text_file.h"

#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFileInfo>

#include <algorithm>

namespace ctl {
namespace {

// As a shell lists them: of the owner, the group and everybody.
QString rightsOf(const QFileInfo &info) {
    static constexpr QFile::Permission order[] = {
        QFile::ReadOwner, QFile::WriteOwner, QFile::ExeOwner,   QFile::ReadGroup, QFile::WriteGroup,
        QFile::ExeGroup,  QFile::ReadOther,  QFile::WriteOther, QFile::ExeOther};
    const QString letters = QStringLiteral("rwx");
    QString rights;
    for (const QFile::Permission right : order)
        rights +=
            (info.permissions() & right) != 0 ? letters.at(rights.size() % 3) : QLatin1Char('-');
    return rights;
}

// By numbers, as names are nobody's business; "-" where the system has none.
QString ownersOf(const QFileInfo &info) {
    const auto number = [](uint id) {
        return id == uint(-2) ? QStringLiteral("-") : QString::number(id);
    };
    return number(info.ownerId()) + QLatin1Char(':') + number(info.groupId());
}

QString contentOf(const QFileInfo &info) {
    if (info.isSymLink())
        return QStringLiteral("link to ") + info.symLinkTarget();
    if (info.isDir() && !info.isReadable()) // would be told as an empty one
        return QStringLiteral("(folder that may not be listed)");
    if (info.isDir())
        return QDir(info.filePath())
                       .isEmpty(QDir::AllEntries | QDir::Hidden | QDir::System |
                                QDir::NoDotAndDotDot)
                   ? QStringLiteral("(empty folder)")
                   : QStringLiteral("(folder)");
    QString error;
    const QString hash = fileSha256Hex(info.filePath(), &error, interrupted);
    return hash.isEmpty() ? QLatin1Char('(') + error + QLatin1Char(')') : hash;
}

QString listedLine(const QString &folder, const QString &name) {
    const QFileInfo info(folder + QLatin1Char('/') + name);
    const bool isFolder = info.isDir() && !info.isSymLink();
    return QStringLiteral("%1 %2 %3 %4 %5  %6\n")
        .arg(contentOf(info), QString::number(isFolder ? 0 : info.size()).rightJustified(12),
             info.lastModified().toUTC().toString(Qt::ISODate), rightsOf(info), ownersOf(info),
             name + (isFolder ? QStringLiteral("/") : QString()));
}

} // namespace

QString listing(const QString &title, const QString &folder) {
    QStringList names;
    QDirIterator entries(folder,
                         QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                         QDirIterator::Subdirectories);
    while (!interrupted() && entries.hasNext())
        names.append(QDir(folder).relativeFilePath(entries.next()));
    std::sort(names.begin(), names.end());
    QString text = QStringLiteral("%1: %2\n").arg(title, folder);
    for (const QString &name : qAsConst(names)) {
        if (interrupted())
            break;
        text += listedLine(folder, name);
    }
    return text;
}

QString findingsAbout(const QStringList &projectFiles) {
    QString text;
    for (const QString &file : projectFiles) {
        if (interrupted())
            break;
        const QVector<ProjectIssue> issues = validateProjectFile(file);
        text += file + QLatin1Char('\n') +
                (issues.isEmpty() ? QStringLiteral("(nothing)") : formatProjectIssues(issues)) +
                QLatin1Char('\n');
    }
    return text;
}

QStringList projectFilesBelow(const QString &projects) {
    QStringList files;
    for (const QString &name : QDir(projects).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        const QString file = findProjectFile(QDir(projects).filePath(name));
        if (!file.isEmpty())
            files.append(file);
    }
    return files;
}

} // namespace ctl
