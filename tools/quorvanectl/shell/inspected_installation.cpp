#include "quorvanectl/shell/inspected_installation.h"

#include "frame/app_paths.h"

#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>

namespace ctl {
namespace {

QString installationOption() {
    return QStringLiteral("install");
}

bool isProgramFolder(const QString &folder) {
    return QFileInfo(folder + QStringLiteral("/config")).isDir();
}

} // namespace

void declareInstall(QCommandLineParser &parser) {
    parser.addOption({installationOption(),
                      QStringLiteral("The installation to look at, if not the one of this program. "
                                     "Nothing in it is changed."),
                      QStringLiteral("folder")});
}

bool inspectInstallation(const QCommandLineParser &parser, QString *error) {
    if (parser.isSet(installationOption()))
        return inspectInstallation(parser.value(installationOption()), error);
    AppPaths::inspect(AppPaths::applicationDirectory());
    return true;
}

bool inspectInstallation(const QString &folder, QString *error) {
    const QString place = QDir(folder).absolutePath();
    for (const QString &program : {place + QStringLiteral("/bin"), place}) {
        if (isProgramFolder(program)) {
            AppPaths::inspect(program);
            return true;
        }
    }
    *error = QStringLiteral("%1: no installation is there: it has no folder bin/config or config")
                 .arg(folder);
    return false;
}

} // namespace ctl
