// A start of the launch log for programs.
#pragma once

#include "quorvanectl/log/line_advice.h"
#include "quorvanectl/log/start_verdict.h"

#include <QJsonObject>

namespace ctl {

[[nodiscard]] QJsonObject toJson(const LogStart &start, const StartVerdict &verdict,
                                 Language language);

} // namespace ctl
