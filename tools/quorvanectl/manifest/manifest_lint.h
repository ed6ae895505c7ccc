// A publisher's mistakes in a manifest: what its format cannot forbid, and the launcher does not say.
//
// The launcher skips what it does not understand, and reads a value of a wrong type as an empty one,
// so such a mistake shows only in that nobody is offered the update, or that everybody is offered it
// for ever. Signing belongs after this.
#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>
#include <QVector>

namespace ctl {

struct LintFinding {
    QString kind;     // a word that stays, such as "missing-hash"
    QString where;    // "runtime.setupUrl", "projects[0]"; empty for the manifest as a whole
    QString message;  // one line
    int severity = 0; // 0 error, 1 warning, as a project's issues have it
};

struct LintSubject {
    QByteArray manifest; // the file's bytes: a JSON object
    QString folder;      // where it lies: packages are looked for there
    QString ahead;       // before that they are looked for here; empty: there is no such folder
    QString base;        // the URL that stands for this folder in absolute addresses; may be empty
    QByteArray previous; // the manifest before it, as well; null if there is none
};

// The findings in the order of the manifest's parts; empty for a clean one. Unpacks the project packages
// that it finds. The function library must be loaded.
[[nodiscard]] QVector<LintFinding> lintManifest(const LintSubject &subject);

// The places of the keys that nobody reads and no signature covers, as "runtime.channel".
[[nodiscard]] QStringList unlistedKeys(const QJsonObject &manifest);

// Whether one of them is more than a warning.
[[nodiscard]] bool hasErrors(const QVector<LintFinding> &findings);

// "where: message [kind]".
[[nodiscard]] QString lintLine(const LintFinding &finding);

} // namespace ctl
