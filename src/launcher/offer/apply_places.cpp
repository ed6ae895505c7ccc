#include "launcher/offer/apply_places.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

namespace apply_places {
namespace {

QString stampFormat() {
    return QStringLiteral("yyyyMMdd_HHmmss");
}

QString lockEnding() {
    return QStringLiteral(".lock");
}

} // namespace

QString stamp() {
    return QDateTime::currentDateTimeUtc().toString(stampFormat());
}

QDateTime stampOf(const QString &name) {
    return QDateTime::fromString(name.right(stampFormat().size()), stampFormat());
}

bool isStamped(const QString &name, const QString &prefix) {
    return name.size() == prefix.size() + stampFormat().size() && name.startsWith(prefix) &&
           stampOf(name).isValid();
}

QString stagingPrefix() {
    return QStringLiteral("apply_");
}

QString backupPrefix(const QString &projectFolder) {
    return QFileInfo(projectFolder).fileName() + QLatin1Char('_');
}

QString packagePrefix() {
    return QStringLiteral("package_");
}

QString packageLock(const QString &packageFolder) {
    return packageFolder + lockEnding();
}

QStringList packageFolders(const QString &temp) {
    static const QRegularExpression form(QLatin1Char('^') + packagePrefix() +
                                         QStringLiteral("[0-9a-f]+$"));
    QStringList folders;
    const QDir place(temp);
    for (QString name : place.entryList(QDir::AllEntries | QDir::Hidden, QDir::Name)) {
        if (name.endsWith(lockEnding()))
            name.chop(lockEnding().size());
        const QString folder = place.filePath(name);
        if (form.match(name).hasMatch() && !folders.contains(folder))
            folders.append(folder);
    }
    return folders;
}

QString lockName() {
    return QStringLiteral("apply.lock");
}

QString keptFolder() {
    return QStringLiteral("logs");
}

} // namespace apply_places
