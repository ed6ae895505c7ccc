// The four installed components that a manifest can update, and where each stands in our records.
//
// Its users go through the list in different orders, and each order is meant: update_check.cpp,
// offer_weighing.cpp and offer_summary.cpp in that of `updateComponents`
// (theComponentsKeepTheirOrder), the items for the log in offer_weighing.cpp in another
// (theFingerprintIsSortedAndTheItemsAreNot), component_setup.cpp with the launcher last
// (theLauncherGoesLast).
#pragma once

#include "launcher/offer/offer_weighing.h"
#include "launcher/offer/update_context.h"
#include "update/manifest_keys.h"

#include <QCoreApplication>

#include <array>

struct UpdateComponent {
    QLatin1String key; // in a manifest and in the files that tell versions
    const char *label; // to be translated in the context of LauncherService
    QJsonObject UpdateSnapshot::*record;
    bool UpdateSelection::*selected;
    UpdateChoice UpdateChoices::*choice;
    WeighedItem OfferWeighing::*item;

    [[nodiscard]] QString keyText() const { return key; }
    [[nodiscard]] QString labelText() const {
        return QCoreApplication::translate("LauncherService", label);
    }
};

inline constexpr UpdateComponent runtimeComponent{
    manifest_keys::runtime,        QT_TRANSLATE_NOOP("LauncherService", "Runtime"),
    &UpdateSnapshot::runtimeEntry, &UpdateSelection::runtime,
    &UpdateChoices::runtime,       &OfferWeighing::runtime};
inline constexpr UpdateComponent launcherComponent{
    manifest_keys::launcher,        QT_TRANSLATE_NOOP("LauncherService", "Launcher"),
    &UpdateSnapshot::launcherEntry, &UpdateSelection::launcher,
    &UpdateChoices::launcher,       &OfferWeighing::launcher};
inline constexpr UpdateComponent editorComponent{
    manifest_keys::editor,        QT_TRANSLATE_NOOP("LauncherService", "Editor"),
    &UpdateSnapshot::editorEntry, &UpdateSelection::editor,
    &UpdateChoices::editor,       &OfferWeighing::editor};
inline constexpr UpdateComponent pythonToolsComponent{
    manifest_keys::pythonTools,        QT_TRANSLATE_NOOP("LauncherService", "Python 工具"),
    &UpdateSnapshot::pythonToolsEntry, &UpdateSelection::pythonTools,
    &UpdateChoices::pythonTools,       &OfferWeighing::pythonTools};

// As the manifest and the update dialog's choices have them.
inline constexpr std::array<const UpdateComponent *, 4> updateComponents{
    &runtimeComponent, &launcherComponent, &editorComponent, &pythonToolsComponent};
