#include "quorvanectl/support/path_spellings.h"

namespace ctl {

const QRegularExpression::PatternOption pathsAreRead = QRegularExpression::NoPatternOption;

QStringList otherSpellings(const QString &) {
    return {};
}

} // namespace ctl
