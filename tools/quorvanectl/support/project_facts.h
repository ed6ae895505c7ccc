// What a support archive tells of folders and projects: names, hashes, owners, rights and findings, and
// never what is in a file.
#pragma once

#include <QString>
#include <QStringList>

namespace ctl {

// A line for each entry below the folder, in the order of their names: hash, size, time, rights, the numbers of
// owner and group, and the name; a folder's ends in a slash. Blocks for the hashes, at most until
// interrupted().
[[nodiscard]] QString listing(const QString &title, const QString &folder);

// What the validator finds about each project, its file first. The function library must be loaded.
[[nodiscard]] QString findingsAbout(const QStringList &projectFiles);

// The project files below the folder of projects, one for each project.
[[nodiscard]] QStringList projectFilesBelow(const QString &projects);

} // namespace ctl
