#include "placer/package_list.h"

#include "update/files/failure.h"
#include "update/files/file_copy.h"
#include "update/files/text_file.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

namespace placer {

bool isPackagePath(const QString &path) {
    // Windows takes a dot or a blank from the end of a name.
    static const QRegularExpression names(
        QStringLiteral("^([^/\\\\:*?\"<>|\\x00-\\x1f]*[^/\\\\:*?\"<>|\\x00-\\x1f. ](/|$))+$"));
    const QString first = path.section(QLatin1Char('/'), 0, 0);
    return names.match(path).hasMatch() && !path.endsWith(QLatin1Char('/')) &&
           first.compare(QLatin1String(userFolder), Qt::CaseInsensitive) != 0 &&
           first.compare(QLatin1String(setupFolder), Qt::CaseInsensitive) != 0;
}

bool readList(const QString &path, PackageList *list, QString *error) {
    QString reason;
    const QString text = readTextFile(path, &reason);
    if (text.isNull())
        return failAbout(path, reason, error);
    const QJsonObject object = QJsonDocument::fromJson(text.toUtf8()).object();
    const QJsonObject files = object.value(QLatin1String("files")).toObject();
    list->version = object.value(QLatin1String("version")).toString();
    list->run = object.value(QLatin1String("run")).toString();
    list->replacesKey = object.value(QLatin1String("replacesKey")).toBool();
    for (auto file = files.begin(); file != files.end(); ++file) {
        if (!isPackagePath(file.key()))
            return failAbout(path, QStringLiteral("no path of a package: %1").arg(file.key()),
                             error);
        list->files.insert(file.key(), file.value().toString());
    }
    if (list->version.isEmpty() || list->files.isEmpty())
        return failAbout(path, QStringLiteral("no list of a package"), error);
    return true;
}

QByteArray listText(const PackageList &list) {
    QJsonObject files;
    for (auto file = list.files.begin(); file != list.files.end(); ++file)
        files.insert(file.key(), file.value());
    const QJsonObject object{{QStringLiteral("version"), list.version},
                             {QStringLiteral("run"), list.run},
                             {QStringLiteral("replacesKey"), list.replacesKey},
                             {QStringLiteral("files"), files}};
    return QJsonDocument(object).toJson();
}

PackageList installedList(const Places &places) {
    PackageList list;
    if (!readList(places.at(QLatin1String(installedListPath)), &list, nullptr))
        return {};
    return list;
}

bool isPackageWhole(const Places &places, const PackageList &list, QString *error) {
    for (auto file = list.files.begin(); file != list.files.end(); ++file) {
        const QString path = places.fresh(file.key());
        QString reason;
        const QString hash = fileSha256Hex(path, &reason);
        if (hash.isNull())
            return failAbout(path, reason, error);
        if (hash != file.value())
            return failAbout(path, QStringLiteral("is not as it was packed"), error);
    }
    return flushFolder(places.ofRun(QStringLiteral("new"))) ||
           fail(QStringLiteral("the new files could not be written to the disk"), error);
}

} // namespace placer
