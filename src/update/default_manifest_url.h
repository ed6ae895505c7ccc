// Where the launcher looks for an update manifest when no stick carries one.
#pragma once

#include <QString>

// An https URL on the host that the build names (QUORVANE_UPDATE_HOST). It stands alone in its
// file, so that a test can link one of its own.
[[nodiscard]] QString defaultManifestUrl();
