#include "quorvanectl/project/script_report.h"

#include "update/files/memory_guard.h"

#include <QJsonArray>

namespace ctl {

bool checkText(const QString &path, const QString &text, ScriptReport *report, QString *error) {
    const auto check = [&] {
        ast::ScriptCheckContext context = ast::makeCheckContext(text);
        // What was found stands in the context.
        (void)ast::checkScript(context);
        *report = {path, context.result, context.lines};
        return true;
    };
    if (unlessOutOfMemory(check, false))
        return true;
    *error = QStringLiteral("%1: memory does not suffice to check it").arg(path);
    return false;
}

QJsonObject reportJson(const ScriptReport &report) {
    QJsonArray diagnostics;
    for (const ast::ScriptDiagnostic &finding : report.result.diagnostics)
        diagnostics.append(ast::diagnosticJson(finding));
    return {{QStringLiteral("path"), report.path},
            {QStringLiteral("passed"), report.result.passed},
            {QStringLiteral("diagnostics"), diagnostics}};
}

} // namespace ctl
