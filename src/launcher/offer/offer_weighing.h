// The weighing of an offer: its five items against what is installed, in one record.
//
// All that is said of an offer is a view of such a record: the summary, the fingerprint, the items
// for the log, the choices of the update dialog, and what quorvanectl explains. One weighing opens
// each file of the installation once. Nothing is kept for the next one, which sees what an
// installer has done meanwhile. Any thread.
#pragma once

#include "launcher/offer/eligibility.h"
#include "launcher/offer/update_context.h"

struct OfferWeighing {
    WeighedItem project;
    WeighedItem runtime;
    WeighedItem launcher;
    WeighedItem editor;
    WeighedItem pythonTools;
    QString projectName; // in the project's record
};

// How a weighing begins, and all of it for a manifest that was refused: the installed versions,
// with nothing on offer. The project's own is the caller's to read.
[[nodiscard]] OfferWeighing installedNow(const QString &projectVersion);

// Weighs the records that `snapshot` holds.
[[nodiscard]] OfferWeighing weighOffer(const UpdateSnapshot &snapshot,
                                       const QString &projectVersion);

// At least one item is eligible.
[[nodiscard]] bool offersAnything(const OfferWeighing &offer);

// offer_summary.cpp: the lines for the user: what is offered, or why nothing is, and what is wrong
// with the plug-ins that `snapshot` names, from which the offer comes. `projectPath` is the project
// file, for the reader.
[[nodiscard]] QString offerSummary(const OfferWeighing &offer, const UpdateSnapshot &snapshot,
                                   const QString &projectPath);

// Tells this offer from another; empty if nothing is offered.
[[nodiscard]] QString offerFingerprint(const OfferWeighing &offer);
// The same offer for the log.
[[nodiscard]] QString offerItems(const OfferWeighing &offer);
// The same offer for the update dialog.
[[nodiscard]] UpdateChoices offerChoices(const OfferWeighing &offer);
