// An installation as the installer leaves it to the placer: the old files, and a run with new ones.
#pragma once

#include "placer/package_list.h"
#include "support/file_tree.h"

#include <QCryptographicHash>

namespace support {

inline QString hashOf(const QByteArray &bytes) {
    return QString::fromLatin1(QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex());
}

inline placer::PackageList packageOf(const FileTree &files, const QString &version) {
    placer::PackageList list;
    list.version = version;
    for (auto file = files.begin(); file != files.end(); ++file)
        list.files.insert(file.key(), hashOf(file.value()));
    return list;
}

// What the installer unpacks for a run.
inline void unpackRun(const placer::Places &places, const FileTree &files,
                      const placer::PackageList &list) {
    writeTree(places.ofRun("new"), files);
    writeTree(places.ofRun(""), {{"package.json", placer::listText(list)}});
}

inline void unpackRun(const placer::Places &places, const FileTree &files, const QString &version) {
    unpackRun(places, files, packageOf(files, version));
}

// All of an installation but what belongs to the installer.
inline FileTree programOf(const QString &root) {
    FileTree tree = readTree(root);
    for (const QString &path : tree.keys()) {
        if (path.startsWith("setup/"))
            tree.remove(path);
    }
    return tree;
}

} // namespace support
