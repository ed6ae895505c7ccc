#include "support/file_tree.h"

#include "support/platform.h"
#include "support/zip_maker.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

namespace support {
namespace {

QByteArray contentOf(const QFileInfo &info) {
    if (info.isSymLink())
        return "-> " + QFile::encodeName(info.symLinkTarget());
    QFile file(info.filePath());
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("unreadable");
}

const QDir::Filters everything =
    QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;

} // namespace

FileTree readTree(const QString &folder) {
    FileTree tree;
    const QDir root(folder);
    QDirIterator entries(folder, everything, QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        const QString path = entries.next();
        const QFileInfo info = entries.fileInfo();
        const QString name = root.relativeFilePath(path);
        if (info.isSymLink() || !info.isDir())
            tree.insert(name, contentOf(info));
        else if (QDir(path).isEmpty(everything))
            tree.insert(name + '/', QByteArray());
    }
    return tree;
}

void writeTree(const QString &folder, const FileTree &tree) {
    const QDir root(folder);
    for (auto entry = tree.begin(); entry != tree.end(); ++entry) {
        const QString path = root.filePath(entry.key());
        const bool isFolder = entry.key().endsWith('/');
        if (!QDir().mkpath(isFolder ? path : QFileInfo(path).absolutePath()))
            qFatal("cannot make the folder of %s", qPrintable(path));
        QFile file(path);
        if (!isFolder && (!file.open(QIODevice::WriteOnly) ||
                          file.write(entry.value()) != entry.value().size() || !file.flush()))
            qFatal("cannot write %s: %s", qPrintable(path), qPrintable(file.errorString()));
    }
}

QByteArray zipOf(const FileTree &tree) {
    QVector<ZipEntry> entries;
    for (auto entry = tree.begin(); entry != tree.end(); ++entry) {
        // What unpacks in Windows builds knows plain entries alone: see unpacker.cpp.
        const bool deflated = !onWindows && !entry.value().isEmpty();
        entries.append({entry.key().toUtf8(), entry.value(), deflated, 0x800});
    }
    return makeZip(entries);
}

FileTree below(const FileTree &tree, const QString &subfolder) {
    const QString start = subfolder + '/';
    FileTree part;
    for (auto entry = tree.begin(); entry != tree.end(); ++entry) {
        if (entry.key().startsWith(start) && entry.key() != start)
            part.insert(entry.key().mid(start.size()), entry.value());
    }
    return part;
}

FileTree laidOver(FileTree base, const FileTree &over) {
    for (auto entry = over.begin(); entry != over.end(); ++entry)
        base.insert(entry.key(), entry.value());
    return base;
}

} // namespace support
