// Name and version of a project, read from its .yslib file and stamped into it.
//
// A .yslib file is a JSON document of unknown text encoding. Nothing is kept between two calls, so
// an edit on disk takes effect at the next one. No operation reports a reason: what cannot be read
// reads as nothing, and saying what is wrong with a file is the validator's business. Paths are
// those of the .yslib file. Any thread.
#pragma once

#include <QString>

// `project.name`. Null if the file cannot be read or parsed, if its root is no object, or if the
// value is no string.
[[nodiscard]] QString readProjectName(const QString &projectPath);

// `project.version`, normalised; a number reads with eight decimals. Where that gives nothing, the
// first "version": "..." anywhere in the text, even in a text that is no JSON; else empty.
[[nodiscard]] QString readProjectVersion(const QString &projectPath);

// The version in the file, else the trimmed text of the sidecar, else null.
[[nodiscard]] QString installedProjectVersion(const QString &projectPath);

// Name and installed version of a project, as the operations above give them.
struct ProjectIdentity {
    QString name;
    QString version;
};

// Both in one reading of the project file.
[[nodiscard]] ProjectIdentity readProjectIdentity(const QString &projectPath);

// `.quorvane-installed-version` in the file's absolute folder; null for a blank path.
[[nodiscard]] QString versionSidecarPath(const QString &projectPath);

// Records `version`, as passed, after an update: in the file, whose formatting and order of keys
// are not kept, and in the sidecar. A file that is damaged or cannot be written leaves the sidecar
// alone to hold it. False, with nothing written, for a blank path or version; false if the version
// stands in neither place.
[[nodiscard]] bool stampProjectVersion(const QString &projectPath, const QString &version);
