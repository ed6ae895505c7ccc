// Where the versions of the installed components stand. Read anew at each call. Any thread.
#pragma once

#include <QJsonObject>
#include <QString>

struct UpdateComponent;

// config/release_version.json in the program's folder; without keys if it cannot be read.
[[nodiscard]] QJsonObject readReleaseVersions();

// What `release` tells of the component, else what its own files carry; empty when unknown.
[[nodiscard]] QString installedVersion(const UpdateComponent &component,
                                       const QJsonObject &release);
