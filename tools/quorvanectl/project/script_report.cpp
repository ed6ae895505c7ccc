#include "quorvanectl/project/script_report.h"

#include "quorvanectl/project/script_warnings.h"
#include "update/files/memory_guard.h"

#include <QJsonArray>

namespace ctl {
namespace {

QJsonArray findingsJson(const std::vector<ast::ScriptDiagnostic> &findings) {
    QJsonArray array;
    for (const ast::ScriptDiagnostic &finding : findings)
        array.append(ast::diagnosticJson(finding));
    return array;
}

} // namespace

bool checkText(const QString &path, const QString &text, ScriptReport *report, QString *error) {
    const auto check = [&] {
        ast::ScriptCheckContext context = ast::makeCheckContext(text);
        QString leftBehind;
        // What was found stands in the context.
        (void)ast::checkScript(context, nullptr, &leftBehind);
        *report = {path, path, context.result, scriptWarnings(text, leftBehind), context.lines};
        return true;
    };
    if (unlessOutOfMemory(check, false))
        return true;
    *error = QStringLiteral("%1: memory does not suffice to check it").arg(path);
    return false;
}

QString wordsOf(const ast::ScriptDiagnostic &finding) {
    const bool isWordless =
        finding.message.isEmpty() && finding.code == QLatin1String(ast::syntaxErrorCode);
    return isWordless ? QString(QLatin1String(syntaxErrorText)) : finding.message;
}

QJsonObject reportJson(const ScriptReport &report) {
    return {{QStringLiteral("path"), report.path},
            {QStringLiteral("passed"), report.result.passed},
            {QStringLiteral("diagnostics"), findingsJson(report.result.diagnostics)},
            {QStringLiteral("warnings"), findingsJson(report.warnings)}};
}

} // namespace ctl
