// A release: a project packed, named in the site's manifest beside all that it offers already, signed,
// verified and put in place.
//
// A site is the folder that is published: manifest.json and, below it, the packages. What it offers verifies
// at each moment, with the old manifest or the new one, wherever the release is broken off.
#pragma once

#include "quorvanectl/keys/signing_key.h"
#include "quorvanectl/manifest/manifest_lint.h"
#include "quorvanectl/package/project_pack.h"

#include <QString>
#include <QStringList>
#include <QVector>

namespace ctl {

struct ReleaseWish {
    QString site;    // is made if it is missing, in a folder that is there
    QString project; // its folder
    QString version;
    QString base;         // as of ManifestWish
    bool isTrial = false; // do all but put it in place; the site is only read
};

struct ReleaseResult {
    bool ok = false;
    QString error;             // what could not be done; empty if findings stand in the way
    QString manifestPath;      // in the site
    QString fault;             // why nothing is carried over from the manifest that lies there
    PackResult pack;           // its path is that in the site
    bool wasThere = false;     // the same package lay in the site already
    QStringList carriedOver;   // "runtime 1.3.0: packages/runtime-setup-1.3.0.exe"
    QVector<LintFinding> lint; // of the new manifest; warnings do not stand in the way
};

// The manifest that lies in the site is replaced, if the key signed it, and nothing else: a package that lies
// there with other bytes, and a version that is not above the one on offer, are refused. One release at a
// time in a site. The function library must be loaded.
[[nodiscard]] ReleaseResult releaseProject(const ReleaseWish &wish, const SigningKey &key);

} // namespace ctl
