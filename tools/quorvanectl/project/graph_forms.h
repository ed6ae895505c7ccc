// The forms in which the graph of a project is shown.
#pragma once

#include "quorvanectl/project/project_graph.h"

namespace ctl {

// Lines for people: a paragraph for each script, then the circles.
[[nodiscard]] QStringList graphLines(const ProjectGraph &graph);

// In the language of Graphviz.
[[nodiscard]] QString graphDot(const ProjectGraph &graph);

// A flow chart in the language of Mermaid, which the pages of many code servers draw.
[[nodiscard]] QString graphMermaid(const ProjectGraph &graph);

// Drawn by Graphviz. Null, with a line in `error`, where it is not installed or does not answer.
[[nodiscard]] QString graphSvg(const ProjectGraph &graph, QString *error);

} // namespace ctl
