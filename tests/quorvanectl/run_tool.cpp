#include "run_tool.h"

#include "quorvanectl/entry/command_line.h"
#include "support/platform.h"

#include <QBuffer>
#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>

namespace support {
namespace {

QProcessEnvironment withoutDisplay() {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char *name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        environment.remove(name);
    const QStringList path{QFileInfo(QUORVANE_TOOL).absolutePath(), environment.value("PATH")};
    environment.insert("PATH", path.join(QDir::listSeparator()));
    environment.insert("LC_ALL", "C.UTF-8");
    return environment;
}

Answer runProcess(const QString &program, const QStringList &arguments, const QString &folder,
                  const QProcessEnvironment &environment = withoutDisplay()) {
    QProcess process;
    process.setProcessEnvironment(environment);
    process.setWorkingDirectory(folder);
    process.setStandardInputFile(QProcess::nullDevice());
    leaveOutConsole(&process);
    process.start(program, arguments);
    if (!process.waitForFinished(120000) || process.exitStatus() != QProcess::NormalExit)
        return {-1, {}, process.errorString()};
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

// The words of a line that calls the tool and nothing else, with single quotes as in a shell.
QStringList wordsOf(const QString &line) {
    static const QRegularExpression word("'([^']*)'|(\\S+)");
    QStringList words;
    for (auto match = word.globalMatch(line); match.hasNext();) {
        const QRegularExpressionMatch next = match.next();
        words.append(next.captured(1) + next.captured(2));
    }
    return words;
}

} // namespace

Answer runTool(const QStringList &arguments) {
    QBuffer out;
    QBuffer err;
    out.open(QIODevice::WriteOnly);
    err.open(QIODevice::WriteOnly);
    ctl::Console console;
    console.out = &out;
    console.err = &err;
    const int status = ctl::runCommandLine(arguments, console);
    return {status, QString::fromUtf8(out.data()), QString::fromUtf8(err.data())};
}

Answer runProgram(const QStringList &arguments, const QString &folder) {
    return runProcess(QUORVANE_TOOL, arguments, folder);
}

Answer runLine(const QString &line, const QString &folder, const QMap<QString, QString> &more) {
    QProcessEnvironment environment = withoutDisplay();
    for (auto variable = more.begin(); variable != more.end(); ++variable)
        environment.insert(variable.key(), variable.value());
    if (!onWindows)
        return runProcess("sh", {"-c", line}, folder, environment);
    const QStringList words = wordsOf(line);
    if (words.first() != "quorvanectl")
        return {-1, {}, "no shell here"};
    return runProcess(QUORVANE_TOOL, words.mid(1), folder, environment);
}

const char *const privately = "unshare -Urm ";

bool canMountPrivately() {
    if (onWindows)
        return false;
    constexpr int notInstalled = 127; // is no reason to leave a test out: it fails
    const int status = runLine(QLatin1String(privately) + "true", ".").status;
    return status == 0 || status == notInstalled;
}

} // namespace support
