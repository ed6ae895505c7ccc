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

// By the absolute path of the file that shows them, each file's in the order of the check.
using FindingsByFile = QMap<QString, QVector<Finding>>;

} // namespace ctl
