// placer: the part of the installer that changes an installation.
//
//     placer place DIR RUN     puts the package that lies in DIR/setup/RUN in place
//     placer finish DIR RUN    goes on where an earlier run was broken off
//     placer tidy DIR RUN      removes what earlier runs left
//     placer remove DIR RUN    removes what was installed
//
// The exit status is 0 for done, 1 if nothing was changed, 2 if all was taken back, 3 if something is left
// to be done, 64 for a wrong call. What the installer is to tell stands in DIR/setup/RUN/report.txt, or for
// `remove` in the file that a fourth argument names: lines in UTF-16 with a letter, a blank and a text.
#include "placer/placing.h"
#include "placer/report_text.h"
#include "placer/sure_files.h"

#include <QCoreApplication>

namespace {

constexpr int wrongCall = 64;

// Without a report the installer has the exit status, which says all that matters.
int told(const placer::Report &report, const QString &path) {
    (void)placer::writeSurely(path, placer::reportText(report), nullptr);
    return int(report.outcome);
}

} // namespace

int main(int argc, char **argv) {
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments().mid(1);
    if (arguments.size() < 3)
        return wrongCall;
    const QString &task = arguments.at(0);
    const placer::Places places{QDir::cleanPath(QDir::fromNativeSeparators(arguments.at(1))),
                                arguments.at(2)};
    const QString path = arguments.value(3, places.ofRun(QStringLiteral("report.txt")));
    if (task == QLatin1String("place"))
        return told(placer::place(places), path);
    if (task == QLatin1String("finish"))
        return told(placer::finish(places), path);
    if (task == QLatin1String("remove"))
        return told(placer::removeInstallation(places), path);
    if (task != QLatin1String("tidy"))
        return wrongCall;
    placer::tidy(places);
    return 0;
}
