#include "launcher/offer/stick_manifest.h"

#include "update/files/text_file.h"

StickManifest readStickManifest(const QString &path) {
    StickManifest manifest;
    if (path.isEmpty())
        return manifest;
    manifest.path = path;
    manifest.text = readTextFile(path, &manifest.error);
    if (!manifest.text.isEmpty())
        manifest.hash = fileSha256Hex(path, &manifest.error);
    return manifest;
}
