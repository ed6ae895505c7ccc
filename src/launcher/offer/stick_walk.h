// The walk over the mounted volumes for an update manifest.
#pragma once

#include "launcher/offer/stick_manifest.h"

// The manifest on the first volume that has one, read. Blocks for as long as any of the volumes does,
// which may be for good: launcher/offer/stick_search.h sets it an end. Any thread. It stands alone in its
// file, so that a test can link one of its own.
[[nodiscard]] StickManifest findStickManifest();
