// The findings of a project in the Static Analysis Results Interchange Format, version 2.1.0, which
// build servers show beside the source.
#pragma once

#include "quorvanectl/project/project_findings.h"

namespace ctl {

// One run. Paths are relative to the project's folder, whose own place stands in the run; columns
// count UTF-16 code units, as ours do.
[[nodiscard]] QJsonObject sarifLog(const ProjectFindings &findings);

} // namespace ctl
