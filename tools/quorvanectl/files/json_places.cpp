#include "quorvanectl/files/json_places.h"

#include "quorvanectl/files/json_scan.h"

#include <QHash>
#include <QSet>

namespace ctl {
namespace {

using Places = QHash<QString, TextPlace>;

// The path of what holds this one; empty for a key of the outermost object.
QString parentPath(const QString &path) {
    const int end = qMax(path.lastIndexOf(QLatin1Char('.')), path.lastIndexOf(QLatin1Char('[')));
    return path.left(qMax(0, end));
}

// The paths, and those of all that holds them.
QSet<QString> wantedPaths(const QStringList &paths) {
    QSet<QString> wanted{QString()};
    for (QString path : paths) {
        for (; !wanted.contains(path); path = parentPath(path))
            wanted.insert(path);
    }
    return wanted;
}

bool isBelow(const QString &path, const QString &parent) {
    return path.size() > parent.size() && path.startsWith(parent) &&
           (path.at(parent.size()) == QLatin1Char('.') ||
            path.at(parent.size()) == QLatin1Char('['));
}

// Of a key that stands again, what stood in its first value is gone.
void forgetBelow(const QString &parent, Places *places) {
    for (auto place = places->begin(); place != places->end();) {
        if (isBelow(place.key(), parent))
            place = places->erase(place);
        else
            ++place;
    }
}

Places findPlaces(const QString &json, const QSet<QString> &wanted) {
    Places places;
    const auto take = [&](const JsonLevel *level, const TextPlace &place) {
        if (level != nullptr && !(wanted.contains(level->path) && isPlainBelow(*level)))
            return;
        const QString path = level == nullptr ? QString() : pathBelow(*level);
        if (!wanted.contains(path))
            return;
        if (places.contains(path))
            forgetBelow(path, &places);
        places.insert(path, place);
    };
    scanJson(json, {{}, take});
    return places;
}

} // namespace

QVector<TextPlace> placesInJson(const QString &json, const QStringList &paths) {
    const Places places = findPlaces(json, wantedPaths(paths));
    QVector<TextPlace> found;
    for (QString path : paths) {
        while (!path.isEmpty() && !places.contains(path))
            path = parentPath(path);
        found.append(places.value(path));
    }
    return found;
}

} // namespace ctl
