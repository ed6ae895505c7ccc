#include "update/https_fallback.h"
#include "update/files/failure.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QUuid>

#include <algorithm>

namespace {

constexpr int graceMs = 5000; // beyond the client's own limit
constexpr int killMs = 30000; // for a killed client to be gone

// Deletes the client's file on every way out.
struct TargetFile {
    QString path;
    ~TargetFile() { QFile::remove(path); }
};

QString newTargetPath() {
    return QDir::temp().filePath(QStringLiteral("quorvane_https_%1.tmp")
                                     .arg(QUuid::createUuid().toString(QUuid::WithoutBraces)));
}

QString limitSeconds(int timeoutMs) {
    return QString::number(std::max(1, timeoutMs / 1000));
}

// Fully encoded, so ASCII: PowerShell takes typographic quotes for quotes, too.
QString encoded(const QUrl &url) {
    return QString::fromLatin1(url.toEncoded());
}

qint32 statusInExitCode(const ClientEnd &end) {
    return end.normal ? end.exitCode : 0;
}

qint32 statusInOutput(const ClientEnd &end) {
    return end.normal && end.exitCode == 0 ? end.output.trimmed().toInt() : 0;
}

bool readTarget(const FetchClient &client, QByteArray *body, QString *error) {
    QFile file(client.target);
    if (!file.open(QIODevice::ReadOnly)) {
        return fail(
            QStringLiteral("unable to read HTTPS fallback file: %1").arg(file.errorString()),
            error);
    }
    const QByteArray content = file.readAll();
    if (content.isEmpty()) {
        return fail(QStringLiteral("%1 HTTPS fallback returned empty payload").arg(client.name),
                    error);
    }
    *body = content;
    return true;
}

} // namespace

QString powershellQuote(const QString &text) {
    return QLatin1Char('\'') + QString(text).replace(QLatin1Char('\''), QLatin1String("''")) +
           QLatin1Char('\'');
}

QString powershellProgram() {
    const QString windows = qEnvironmentVariable("WINDIR");
    const QString program =
        QDir(windows).filePath(QStringLiteral("System32/WindowsPowerShell/v1.0/powershell.exe"));
    return !windows.isEmpty() && QFileInfo::exists(program) ? program
                                                            : QStringLiteral("powershell");
}

QStringList powershellFetchArguments(const QUrl &url, int timeoutMs, const QString &target) {
    const QString script = QStringLiteral(
        "$ProgressPreference='SilentlyContinue'; $ErrorActionPreference='Stop'; try { "
        "$resp=Invoke-WebRequest -Uri %1 -MaximumRedirection 8 -TimeoutSec %2 -UseBasicParsing "
        "-OutFile %3; if ($resp -and $resp.StatusCode) { exit [int]$resp.StatusCode } else { exit "
        "200 } } catch { Write-Error $_.Exception.Message; exit 1 }");
    return {QStringLiteral("-NoProfile"), QStringLiteral("-ExecutionPolicy"),
            QStringLiteral("Bypass"), QStringLiteral("-Command"),
            script.arg(powershellQuote(encoded(url)), limitSeconds(timeoutMs),
                       powershellQuote(QDir::toNativeSeparators(target)))};
}

QStringList curlFetchArguments(const QUrl &url, int timeoutMs, const QString &target) {
    return {QStringLiteral("--disable"), // no settings of the user's own; must stand first
            QStringLiteral("--silent"),
            QStringLiteral("--show-error"),
            QStringLiteral("--fail"), // a status of 400 or more is a failure, as in PowerShell
            QStringLiteral("--globoff"),
            QStringLiteral("--location"),
            QStringLiteral("--max-redirs"),
            QStringLiteral("8"),
            QStringLiteral("--proto"),
            QStringLiteral("=http,https"),
            QStringLiteral("--proto-redir"),
            QStringLiteral("=http,https"),
            QStringLiteral("--max-time"),
            limitSeconds(timeoutMs),
            QStringLiteral("--output"),
            target,
            QStringLiteral("--write-out"),
            QStringLiteral("%{http_code}"),
            QStringLiteral("--"),
            encoded(url)};
}

bool runFetchClient(const FetchClient &client, const QUrl &url, int waitMs, QByteArray *body,
                    qint32 *status, QUrl *finalUrl, QString *error) {
    const TargetFile target{client.target};
    QProcess process;
    process.start(client.program, client.arguments);
    // A program that cannot be started is reported as one that took too long.
    if (!process.waitForFinished(waitMs)) {
        process.kill();
        process.waitForFinished(killMs);
        return fail(QStringLiteral("%1 HTTPS fallback timed out").arg(client.name), error);
    }
    const ClientEnd end{process.exitStatus() == QProcess::NormalExit, process.exitCode(),
                        process.readAllStandardOutput()};
    const qint32 reported = client.statusOf(end);
    if (reported < 2 || !QFileInfo::exists(client.target)) {
        const QString reason = QString::fromUtf8(process.readAllStandardError()).trimmed();
        return fail(
            reason.isEmpty()
                ? QStringLiteral("%1 HTTPS fallback failed for %2").arg(client.name, url.toString())
                : reason,
            error);
    }
    if (!readTarget(client, body, error))
        return false;
    *status = reported;
    *finalUrl = url;
    return true;
}

int clientWaitMs(int timeoutMs) {
    return timeoutMs + graceMs;
}

bool powershellFetch(const QUrl &url, int timeoutMs, QByteArray *body, qint32 *status,
                     QUrl *finalUrl, QString *error) {
    const QString target = newTargetPath();
    const FetchClient client{QStringLiteral("powershell"), powershellProgram(),
                             powershellFetchArguments(url, timeoutMs, target), target,
                             statusInExitCode};
    return runFetchClient(client, url, clientWaitMs(timeoutMs), body, status, finalUrl, error);
}

bool curlFetch(const QUrl &url, int timeoutMs, QByteArray *body, qint32 *status, QUrl *finalUrl,
               QString *error) {
    const QString target = newTargetPath();
    const FetchClient client{QStringLiteral("curl"), QStringLiteral("curl"),
                             curlFetchArguments(url, timeoutMs, target), target, statusInOutput};
    return runFetchClient(client, url, clientWaitMs(timeoutMs), body, status, finalUrl, error);
}
