// quorvanectl project new: a small project that passes its check, to begin with.
#include "quorvanectl/commands/commands.h"
#include "quorvanectl/package/new_project.h"

namespace ctl {
namespace {

const QLatin1String nameOption("display-name");

void declare(QCommandLineParser &parser) {
    parser.addOption({nameOption, QStringLiteral("The name that people see, if not the folder's."),
                      QStringLiteral("text")});
}

int run(const QCommandLineParser &parser, Console &console) {
    QString error;
    const QString project = makeProject(firstArgument(parser), parser.value(nameOption), &error);
    if (project.isNull())
        return refuse(console, error);
    printLine(console, QStringLiteral("%1: a project with a main script, a sub task and a module")
                           .arg(spelledOut(project)));
    return Clean;
}

} // namespace

Command projectNew() {
    return {QStringLiteral("project"),
            QStringLiteral("new"),
            QStringLiteral("DIR"),
            QStringLiteral("Makes a small project that passes its check, to begin with."),
            QStringLiteral("quorvanectl project new line4"),
            declare,
            run};
}

} // namespace ctl
