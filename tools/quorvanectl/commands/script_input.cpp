#include "quorvanectl/commands/script_input.h"
#include "quorvanectl/files/file_access.h"
#include "quorvanectl/shell/command.h"
#include "quorvanectl/shell/installation.h"
#include "quorvanectl/shell/json_output.h"

namespace ctl {

void declareScript(QCommandLineParser &parser) {
    declareLibrary(parser);
    declareFormat(parser, textOrJson());
}

bool readScript(const QCommandLineParser &parser, const Console &console, Script *script,
                QString *error) {
    script->path = firstArgument(parser);
    const QString format = chosenFormat(parser, textOrJson(), error);
    if (format.isEmpty() || !loadLibrary(parser, console, error))
        return false;
    if (script->path.endsWith(QLatin1String(".yslib"), Qt::CaseInsensitive)) {
        *error = QStringLiteral("%1: is a project file; quorvanectl project check reads those")
                     .arg(script->path);
        return false;
    }
    script->asJson = format == QLatin1String("json");
    script->text = readText(script->path, error);
    return !script->text.isNull();
}

} // namespace ctl
