#include "quorvanectl/files/folder_content.h"

#include "update/files/folder_listing.h"
#include "update/files/place_facts.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringList>

#include <algorithm>

namespace ctl {
namespace {

constexpr qint64 pieceSize = 1 << 20; // bytes

enum class Likeness { Same, CutOff, Different };

// Qt copies to such a name first.
bool isTemporary(const QString &name) {
    return name.startsWith(QLatin1String("qt_temp.")) && name.size() == 14;
}

bool isZero(const QByteArray &bytes, int from) {
    return std::all_of(bytes.begin() + from, bytes.end(), [](char c) { return c == 0; });
}

// The cut-off form counts only if something of the file is missing.
Likeness compare(const QString &file, const QString &whole) {
    QFile one(file);
    QFile other(whole);
    if (!one.open(QIODevice::ReadOnly) || !other.open(QIODevice::ReadOnly) ||
        one.size() > other.size())
        return Likeness::Different;
    bool cut = one.size() < other.size();
    bool zeros = false; // behind the point up to which both are the same
    while (!one.atEnd()) {
        const QByteArray piece = one.read(pieceSize);
        const QByteArray same = other.read(piece.size());
        if (piece.isEmpty() || same.size() != piece.size())
            return Likeness::Different;
        const auto differs = std::mismatch(piece.begin(), piece.end(), same.begin()).first;
        const int point = zeros ? 0 : int(differs - piece.begin());
        if (point == piece.size())
            continue;
        if (!isZero(piece, point))
            return Likeness::Different;
        zeros = true;
        cut = true;
    }
    return cut ? Likeness::CutOff : Likeness::Same;
}

// With at most that many files that were cut off.
bool partFits(const FolderContent &part, const FolderContent &whole, int cutOffAllowed) {
    for (auto entry = part.entries.begin(); entry != part.entries.end(); ++entry) {
        if (!whole.entries.contains(entry.key()))
            return false; // before any byte is read
    }
    int cutOff = 0;
    for (auto entry = part.entries.begin(); entry != part.entries.end(); ++entry) {
        if (entry.key().endsWith(QLatin1Char('/')))
            continue;
        const QString below = QLatin1Char('/') + entry.key();
        const Likeness likeness = compare(part.folder + below, whole.folder + below);
        cutOff += likeness == Likeness::CutOff ? 1 : 0;
        if (likeness == Likeness::Different || cutOff > cutOffAllowed)
            return false;
    }
    return true;
}

} // namespace

int FolderContent::files() const {
    int number = 0;
    for (auto entry = entries.begin(); entry != entries.end(); ++entry)
        number += entry.key().endsWith(QLatin1Char('/')) ? 0 : 1;
    return number;
}

bool readContent(const QString &folder, FolderContent *content, QString *error) {
    content->folder = folder;
    content->entries.clear();
    if (!QFileInfo(folder).isDir())
        return true;
    QStringList folders{QString()}; // relative, each with a slash behind it
    for (int i = 0; i < folders.size(); ++i) {
        const QString below = folders.at(i);
        QFileInfoList entries;
        const QString place = QDir::cleanPath(folder + QLatin1Char('/') + below);
        if (!listFolder(place, &entries)) {
            *error = QStringLiteral("cannot list the folder %1").arg(place);
            return false;
        }
        for (const QFileInfo &info : qAsConst(entries)) {
            if (info.isHidden() || isTemporary(info.fileName()))
                continue;
            const QString relative = below + info.fileName();
            if (info.isDir())
                content->entries.insert(relative + QLatin1Char('/'), 0);
            else if (info.isFile())
                content->entries.insert(relative, info.size());
            if (info.isDir() && !isLink(info))
                folders.append(relative + QLatin1Char('/'));
        }
    }
    return true;
}

FolderContent without(FolderContent content, const QString &subfolder) {
    const QString prefix = subfolder + QLatin1Char('/');
    for (auto entry = content.entries.begin(); entry != content.entries.end();)
        entry = entry.key().startsWith(prefix) ? content.entries.erase(entry) : std::next(entry);
    return content;
}

bool isPartOf(const FolderContent &part, const FolderContent &whole) {
    return partFits(part, whole, 1);
}

bool isSame(const FolderContent &one, const FolderContent &other) {
    return one.entries == other.entries && partFits(one, other, 0);
}

} // namespace ctl
