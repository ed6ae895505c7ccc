#include "quorvanectl/files/repeated_keys.h"

#include "quorvanectl/files/json_scan.h"

namespace ctl {

QVector<RepeatedKey> repeatedKeys(const QString &json) {
    QVector<RepeatedKey> found;
    const auto takeKey = [&found](JsonLevel &level, const TextPlace &place) {
        if (level.places.contains(level.key))
            found.append({pathBelow(level), level.places.value(level.key), place});
        else
            level.places.insert(level.key, place);
    };
    scanJson(json, {takeKey, {}});
    return found;
}

} // namespace ctl
