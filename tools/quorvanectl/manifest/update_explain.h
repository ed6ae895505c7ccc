// What a launcher would make of a manifest: its own check, run here on an installation that is only
// looked at.
#pragma once

#include "launcher/offer/offer_weighing.h"
#include "quorvanectl/manifest/manifest_verify.h"

#include <QJsonObject>
#include <QString>
#include <QStringList>

namespace ctl {

struct Explanation {
    VerifyReport verify;
    bool found = false;  // the launcher would offer something
    QString summary;     // its own text, to the byte
    OfferWeighing offer; // of a refused manifest the installed versions alone
    QStringList log;     // the lines that the check would log, without their times
};

// Checks the manifest in the file `manifest` as one of a stick that lies there, or, with an `url`, as
// one that was fetched from that address. `projectFile` is the selected project, or empty. The
// installation is the one that is being inspected; log lines go nowhere else.
[[nodiscard]] Explanation explainUpdate(const QString &manifest, const QString &url,
                                        const QString &projectFile);

// With the keys verify, found, summary, choices, fingerprint, items, versions and log.
[[nodiscard]] QJsonObject toJson(const Explanation &explanation);

} // namespace ctl
