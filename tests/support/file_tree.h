// A folder as a value: what lies in it, to be written, packed, read back and compared.
#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>

namespace support {

// Relative paths and their contents. A path that ends in "/" is a folder without content of its own.
using FileTree = QMap<QString, QByteArray>;

// All files below `folder`, hidden ones included, and its empty folders. A link stands with its
// target behind "-> ". Empty if there is no such folder.
[[nodiscard]] FileTree readTree(const QString &folder);

// Adds the tree to a folder, over files of the same name. A failure ends the test run.
void writeTree(const QString &folder, const FileTree &tree);

// A zip archive of the tree, its names in UTF-8.
[[nodiscard]] QByteArray zipOf(const FileTree &tree);

// The files of the tree below a sub-folder of it, with paths from there.
[[nodiscard]] FileTree below(const FileTree &tree, const QString &subfolder);

// `base` with the files of `over` over it.
[[nodiscard]] FileTree laidOver(FileTree base, const FileTree &over);

} // namespace support
