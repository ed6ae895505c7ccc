#include "quorvanectl/shell/installation.h"

#include "frame/app_paths.h"
#include "library/function_library.h"
#include "quorvanectl/files/file_access.h"

#include <QCommandLineParser>

namespace ctl {
namespace {

const QLatin1String option("library");

} // namespace

void declareLibrary(QCommandLineParser &parser) {
    parser.addOption({option,
                      QStringLiteral("Reads the script language's words from this file, not from "
                                     "the one of the installation."),
                      QStringLiteral("FunctionLib.ini")});
}

QString installedLibraryPath() {
    AppPaths::inspect(AppPaths::applicationDirectory());
    return AppPaths::functionLibraryPath();
}

QString libraryPath(const QCommandLineParser &parser) {
    return parser.isSet(option) ? parser.value(option) : installedLibraryPath();
}

bool loadLibrary(const QCommandLineParser &parser, QString *error) {
    return loadLibrary(libraryPath(parser), error);
}

bool loadLibrary(const QString &path, QString *error) {
    if (!isUsableFile(path, error))
        return false;
    QString reason;
    if (FunctionLibrary::instance().load(path, &reason))
        return true;
    if (error != nullptr)
        *error = QStringLiteral("%1: %2").arg(path, reason);
    return false;
}

} // namespace ctl
