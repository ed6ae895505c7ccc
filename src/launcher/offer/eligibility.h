// The rules by which one item of a manifest is offered, free of where the installed version stands.
// Nothing is read but whether a package lies on the stick. Any thread.
#pragma once

#include "launcher/offer/update_context.h"

// One item of an offer against what is installed.
struct WeighedItem {
    bool available = false;
    QString reason;    // for either answer
    QString told;      // the manifest's version: a component's bare, a project's as it stands
    QString installed; // empty: unknown
};

// `label` names the component in the reasons.
[[nodiscard]] WeighedItem weighComponent(const QString &label, const QJsonObject &record,
                                         bool fromUsb, const QString &baseLocation,
                                         const QString &installed);

// The project record that `snapshot` holds.
[[nodiscard]] WeighedItem weighProject(const UpdateSnapshot &snapshot, const QString &installed);

// The line of the log about the project's two versions; none if the manifest names no version.
// `projectPath` is the project file, for the reader.
void logComparison(const WeighedItem &project, const QString &projectPath);
