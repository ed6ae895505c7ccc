// quorvanectl update pack: a package of a project that passes its checks.
#include "quorvanectl/commands/commands.h"
#include "quorvanectl/commands/package_printing.h"
#include "quorvanectl/package/project_pack.h"
#include "quorvanectl/shell/force_option.h"
#include "quorvanectl/shell/installation.h"
#include "quorvanectl/shell/progress.h"

namespace ctl {
namespace {

void declare(QCommandLineParser &parser) {
    parser.addOption({QStringLiteral("version"),
                      QStringLiteral("The version of the package, three or four numbers."),
                      QStringLiteral("version")});
    parser.addOption({QStringLiteral("out"), QStringLiteral("The folder to write to."),
                      QStringLiteral("folder")});
    declareForce(parser);
    declareLibrary(parser);
}

int run(const QCommandLineParser &parser, Console &console) {
    const QString version = parser.value(QStringLiteral("version"));
    const QString out = parser.value(QStringLiteral("out"));
    if (!isFullVersion(version))
        return refuse(console, notFullVersion(version));
    if (out.isEmpty())
        return refuse(console, QStringLiteral("--out must name the folder to write to"));
    QString error;
    if (!loadLibrary(parser, console, &error))
        return refuse(console, error);
    const QString folder = firstArgument(parser);
    const PackResult result = whileTelling(console, QStringLiteral("packing %1").arg(folder), [&] {
        return packProject(folder, version, out, isForced(parser));
    });
    printIssues(console, result);
    if (result.ok) {
        printLine(console, QStringLiteral("%1: %2 files, SHA-256 %3")
                               .arg(spelledOut(result.zipPath), QString::number(result.files),
                                    result.sha256));
        return Clean;
    }
    return result.error.isEmpty() ? Findings : refuse(console, result.error);
}

} // namespace

Command updatePack() {
    return {QStringLiteral("update"),
            QStringLiteral("pack"),
            QStringLiteral("PROJECT_DIR"),
            QStringLiteral("Makes a package of a project that passes its checks."),
            QStringLiteral("quorvanectl update pack demo --version 1.2.0 --out packages"),
            declare,
            run};
}

} // namespace ctl
