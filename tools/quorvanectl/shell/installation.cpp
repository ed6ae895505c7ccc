#include "quorvanectl/shell/installation.h"

#include "frame/app_paths.h"
#include "library/function_library.h"
#include "quorvanectl/files/file_access.h"

#include <QCommandLineParser>

// Of a resource in a static library somebody has to ask; the macro wants no namespace around it.
static void initializeBuiltIn() {
    Q_INIT_RESOURCE(function_library);
}

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

bool loadLibrary(const QCommandLineParser &parser, const Console &console, QString *error) {
    return loadLibrary(
        parser.isSet(libraryOption) ? libraryPath(parser) : standingLibraryPath(console), error);
}

QString standingLibraryPath(const Console &console) {
    const QString installed = installedLibraryPath();
    if (isTaken(installed)) // one that cannot be used is refused, not passed over
        return installed;
    initializeBuiltIn();
    tell(console, QStringLiteral("no installation lies beside this program; scripts are read with "
                                 "the function library that is built in"));
    return QStringLiteral(":/built-in/FunctionLib.ini");
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
