#include "quorvanectl/shell/installation.h"

#include "frame/app_paths.h"
#include "library/function_library.h"
#include "quorvanectl/files/file_access.h"

#include <QCommandLineParser>

namespace ctl {
namespace {

const QLatin1String libraryOption("library");

} // namespace

void declareLibrary(QCommandLineParser &parser) {
    parser.addOption({libraryOption,
                      QStringLiteral("Reads the script language's words from this file, not from "
                                     "the one of the installation."),
                      QStringLiteral("FunctionLib.ini")});
}

QString installedLibraryPath() {
    AppPaths::inspect(AppPaths::applicationDirectory());
    return AppPaths::functionLibraryPath();
}

QString libraryPath(const QCommandLineParser &parser) {
    return parser.isSet(libraryOption) ? parser.value(libraryOption) : installedLibraryPath();
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
