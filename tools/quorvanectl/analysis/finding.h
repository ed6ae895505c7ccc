// A finding where an editor shows it.
#pragma once

#include "quorvanectl/analysis/text_range.h"

#include <QMap>
#include <QString>
#include <QVector>

namespace ctl {

// Another place that takes part in what was found.
struct RelatedPlace {
    QString file;
    TextRange at;
    QString message;
};

struct Finding {
    TextRange at;
    bool isError = true;
    QString code; // empty for those of the validator that have none
    QString message;
    QVector<RelatedPlace> related;
};

[[nodiscard]] inline bool operator==(const RelatedPlace &one, const RelatedPlace &other) {
    return one.file == other.file && one.at == other.at && one.message == other.message;
}
[[nodiscard]] inline bool operator==(const Finding &one, const Finding &other) {
    return one.at == other.at && one.isError == other.isError && one.code == other.code &&
           one.message == other.message && one.related == other.related;
}

// By the absolute path of the file that shows them, each file's in the order of the check.
using FindingsByFile = QMap<QString, QVector<Finding>>;

} // namespace ctl
