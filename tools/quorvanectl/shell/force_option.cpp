#include "quorvanectl/shell/force_option.h"

#include <QCommandLineParser>

namespace ctl {
namespace {

const QLatin1String option("force");

} // namespace

void declareForce(QCommandLineParser &parser) {
    parser.addOption({option, QStringLiteral("Overwrites what is there.")});
}

bool isForced(const QCommandLineParser &parser) {
    return parser.isSet(option);
}

} // namespace ctl
