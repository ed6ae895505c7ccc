// The findings of one project as its files count at this moment, each where an editor shows it.
#pragma once

#include "quorvanectl/analysis/finding.h"
#include "quorvanectl/analysis/script_store.h"

namespace ctl {

// What a look at a project takes.
struct ProjectInput {
    QString path; // of the .yslib file, absolute and cleaned
    QString text; // of it, saved or not
    // As scriptsInFolder() gives them.
    QStringList scriptsBelow;
};

struct ProjectView {
    // The validator's, those across scripts at each script that takes part in them. The syntax of a
    // script is no matter of its project.
    FindingsByFile findings;
    QStringList scripts; // the paths of the listed ones, cleaned
};

// Scripts are asked of `store`. The function library must be loaded.
[[nodiscard]] ProjectView viewOf(const ProjectInput &project, ScriptStore &store);

} // namespace ctl
