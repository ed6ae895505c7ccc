// The syntax findings of one script, and their JSON.
#pragma once

#include "script/script_diagnostics.h"

#include <QJsonObject>

namespace ctl {

struct ScriptReport {
    QString path; // as it is shown
    ast::ScriptCheckResult result;
    QStringList lines; // of the source
};

// Checks a text. A text that memory does not suffice for fails, with a line in `error`.
[[nodiscard]] bool checkText(const QString &path, const QString &text, ScriptReport *report,
                             QString *error);

[[nodiscard]] QJsonObject reportJson(const ScriptReport &report);

} // namespace ctl
