#include "update/default_manifest_url.h"

QString defaultManifestUrl() {
    return QStringLiteral("https://" QUORVANE_UPDATE_HOST "/Quorvaner/Update/manifest.json");
}
