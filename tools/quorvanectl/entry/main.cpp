// quorvanectl: checks, publishes and explains from a command line what the launcher decides in its
// window. It needs no display, and makes nothing but what it is asked for.
#include "quorvanectl/entry/command_line.h"
#include "quorvanectl/files/given_paths.h"
#include "quorvanectl/shell/console.h"

#include <QCoreApplication>
#include <QFileDevice>
#include <QTextCodec>

#include <algorithm>

namespace {

// A build server often runs in the locale "C", whose ASCII would lose a path in Chinese.
void readPathsAsUtf8() {
    constexpr int asciiMib = 3;
    if (QTextCodec::codecForLocale()->mibEnum() == asciiMib)
        QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
}

bool allWritten(const ctl::Console &console) {
    auto *const out = qobject_cast<QFileDevice *>(console.out);
    return out == nullptr || // a screen, which has taken all
           (out->flush() && out->error() == QFileDevice::NoError);
}

// What the libraries write to the debug log is for developers of the launcher; a command says in its
// own words what went wrong.
void dropDebugLog(QtMsgType, const QMessageLogContext &, const QString &) {}

QStringList givenArguments() {
    QStringList arguments = QCoreApplication::arguments().mid(1);
    std::transform(arguments.begin(), arguments.end(), arguments.begin(), ctl::withoutLengthMark);
    return arguments;
}

} // namespace

int main(int argc, char **argv) {
    ctl::occupyStandardStreams();
    qInstallMessageHandler(dropDebugLog);
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("quorvanectl"));
    QCoreApplication::setApplicationVersion(QStringLiteral(QUORVANE_VERSION));
    readPathsAsUtf8();
    ctl::Console console = ctl::standardConsole();
    const int status = ctl::runCommandLine(givenArguments(), console);
    if (!allWritten(console))
        return ctl::refuse(console,
                           QStringLiteral("standard output: %1").arg(console.out->errorString()));
    return status;
}
