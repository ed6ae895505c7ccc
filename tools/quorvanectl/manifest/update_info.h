// What is in a manifest or in a project package: versions, sizes, and whether what it names is what lies there.
#pragma once

#include "quorvanectl/manifest/manifest_format.h"
#include "quorvanectl/package/project_package.h"

#include <QJsonObject>
#include <QString>
#include <QVector>

namespace ctl {

// A package that a manifest names, and the file at its address.
struct NamedPackage {
    PackageRecord package;
    qint64 bytes = -1;       // -1: no file is there, or its address leads elsewhere
    bool isNamedOne = false; // the file has the hash that the manifest says, or that says none
};

struct ManifestInfo {
    qint64 bytes = 0;
    QString publishedAt;
    QVector<NamedPackage> packages;
    QVector<QJsonObject> plugins;
    int signatureBytes = 0;
};

// Of the manifest with this text, which lies in `folder` or is published under `base`, a URL.
[[nodiscard]] ManifestInfo manifestInfo(const QString &text, const QString &folder,
                                        const QString &base);

// Whether each package that lies there is the one that the manifest names.
[[nodiscard]] bool areNamedOnes(const ManifestInfo &info);

// The keys are told in the man page.
[[nodiscard]] QJsonObject toJson(const ManifestInfo &info);
[[nodiscard]] QJsonObject toJson(const ProjectPackage &package);

// Whether the file begins as an archive does.
[[nodiscard]] bool isArchive(const QString &path);

} // namespace ctl
