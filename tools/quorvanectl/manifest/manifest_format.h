// What an update manifest consists of, as tables and as a list of the packages that it names.
#pragma once

#include "update/package_address.h"

#include <QJsonObject>
#include <QString>
#include <QStringList>
#include <QVector>

namespace ctl {

// The four components, in the order of the format.
[[nodiscard]] const QStringList &componentKeys();

// The keys of each kind of object. All values in records are strings.
[[nodiscard]] const QStringList &rootKeys(); // `signature` among them
[[nodiscard]] const QStringList &componentRecordKeys();
[[nodiscard]] const QStringList &pluginRecordKeys();
[[nodiscard]] const QStringList &projectRecordKeys();

// A package that a manifest names.
struct PackageRecord {
    QString where; // "runtime" or "projects[0]"
    bool isProject = false;
    QJsonObject record;

    [[nodiscard]] QString urlKey() const;  // "setupUrl" or "zipUrl"
    [[nodiscard]] QString hashKey() const; // "setupSha256" or "zipSha256"
    [[nodiscard]] QString url() const;     // trimmed
    [[nodiscard]] QString hash() const;    // trimmed
    // The version that the launcher would see: of a component the one in `version`, else the one in
    // the package's name.
    [[nodiscard]] QString version() const;
    // What an installation calls the same thing: "runtime", or "project:" and the folded name.
    [[nodiscard]] QString identity() const;
};

// "runtime 1.3.0", or "demo 1.2.0" of a project.
[[nodiscard]] QString titleOf(const PackageRecord &package);

// The component and project records that are there and are objects, with or without a package.
[[nodiscard]] QVector<PackageRecord> packageRecords(const QJsonObject &root);

// The file beside the manifest that an address means: relative ones count from `folder`, and so
// does what follows `base` in a URL. Empty for any other address.
[[nodiscard]] QString localPackage(const QString &address, const QString &folder,
                                   const QString &base);

} // namespace ctl
