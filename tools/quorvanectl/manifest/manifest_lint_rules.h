// The groups of rules of the manifest's lint, each a function from its subject to findings.
#pragma once

#include "quorvanectl/manifest/manifest_format.h"
#include "quorvanectl/manifest/manifest_lint.h"

#include <QJsonObject>

namespace ctl {

// Keys that nobody reads, values of a wrong type, a version or a time that cannot be one.
[[nodiscard]] QVector<LintFinding> lintShape(const QJsonObject &root);
// Versions of one record: readable, and in agreement with each other.
[[nodiscard]] QVector<LintFinding> lintVersions(const PackageRecord &package);
// Address and hash of one record.
[[nodiscard]] QVector<LintFinding> lintAddress(const PackageRecord &package);
// What goes wrong between records: equal names.
[[nodiscard]] QVector<LintFinding> lintTogether(const QVector<PackageRecord> &packages);
// The file itself, where it can be found.
[[nodiscard]] QVector<LintFinding> lintPackageFile(const PackageRecord &package,
                                                   const LintSubject &subject);
// Steps back from the manifest before.
[[nodiscard]] QVector<LintFinding> lintSuccession(const QJsonObject &root,
                                                  const QJsonObject &previous);

} // namespace ctl
