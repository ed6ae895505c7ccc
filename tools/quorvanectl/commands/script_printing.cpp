#include "quorvanectl/commands/script_printing.h"
#include "quorvanectl/project/script_report.h"
#include "quorvanectl/shell/command.h"
#include "quorvanectl/shell/progress.h"
#include "update/files/memory_guard.h"

#include <memory>

namespace ctl {

int printScript(const Script &script, const Console &console, const PrintScript &print) {
    QString error = QStringLiteral("%1: memory does not suffice for it").arg(script.path);
    auto progress =
        std::make_unique<Progress>(console, QStringLiteral("reading %1").arg(script.path));
    const ast::TextSink sink = [&](const QString &piece) {
        if (isTerminal(1)) // where the two would stand in each other's way
            progress.reset();
        ctl::print(console, script.asJson ? piece : harmless(piece));
    };
    const bool printed = unlessOutOfMemory([&] { return print(sink, &error); }, false);
    progress.reset();
    if (!printed)
        return refuse(console, error);
    if (script.asJson)
        printLine(console);
    return Clean;
}

QString faultLine(const Script &script, const ast::ScriptDiagnostic &fault) {
    return QStringLiteral("%1:%2:%3: %4 %5")
        .arg(script.path, QString::number(fault.line), QString::number(fault.column), fault.code,
             wordsOf(fault));
}

} // namespace ctl
