// The address of a package, as a manifest states it: a URL, or a path from the manifest's place.
#pragma once

#include <QString>

// Whether it is a URL. A single letter before the colon is a drive and no scheme.
[[nodiscard]] bool isUrl(const QString &address);

// The last part of the address, which becomes the package's name on this machine.
[[nodiscard]] QString packageFileName(const QString &address);
