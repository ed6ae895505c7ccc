// The function library file, and a script under the words that it leaves.

#include "library/function_library.h"
#include "script/script_diagnostics.h"
#include "support.h"

namespace {

void silent(QtMsgType, const QMessageLogContext &, const QString &) {}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    qInstallMessageHandler(silent); // every broken line is told to the debug log
    FunctionLibrary &library = FunctionLibrary::instance();
    fuzz::demand(library.load(fuzz::write(QStringLiteral("input.ini"), fuzz::bytesOf(data, size))));
    fuzz::demand(library.functions.size() == library.functionNames.size());
    fuzz::demand(library.functions.size() == library.functionIds.size());
    fuzz::demand(library.functions.size() == library.rawLines.size());
    fuzz::demand(library.callTemplates.size() <= library.functionNames.size());
    for (const qint32 index : qAsConst(library.functionIndexByName))
        fuzz::demand(index >= 0 && index < library.functionNames.size());
    fuzz::demand(library.tokenKindByWord.size() <= 20);

    ast::ScriptCheckContext context = ast::makeCheckContext(QStringLiteral(
        "import \"a.ys\";\nglobal int a = 1;\nfunction f() { if (a) { return 1; } }\n"
        "for (int i = 0; i < 3; i++) { while (a) { break; } }\nswitch (a) { case 1: default: }\n"));
    static_cast<void>(ast::checkScript(context)); // any outcome: the words decide
    return 0;
}
