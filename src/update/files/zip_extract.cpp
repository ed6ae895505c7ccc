#include "update/files/zip_extract.h"
#include "update/files/failure.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>

namespace {

constexpr int extractLimitMs = 120000;
constexpr int killMs = 30000; // for a killed program to be gone

bool extract(const Unpack &unpack, const QString &zipPath, const QString &targetFolder, int limitMs,
             ZipFailure *failure) {
    if (!QFileInfo::exists(zipPath))
        return fail(QStringLiteral("zip not found: %1").arg(zipPath), &failure->reason);
    if (targetFolder.isEmpty() || !QDir().mkpath(targetFolder)) {
        return fail(QStringLiteral("unable to create destination directory: %1").arg(targetFolder),
                    &failure->reason);
    }
    return unpack(zipPath, targetFolder, limitMs, failure);
}

} // namespace

bool extractZip(const QString &zipPath, const QString &targetFolder, QString *error) {
    return extractZipWithin(zipPath, targetFolder, extractLimitMs, error);
}

bool extractZipWithin(const QString &zipPath, const QString &targetFolder, int limitMs,
                      QString *error) {
    ZipFailure failure;
    return extract(unpackZip, zipPath, targetFolder, limitMs, &failure) ||
           fail(failure.reason, error);
}

bool extractZip(const QString &zipPath, const QString &targetFolder, ZipFailure *failure) {
    return extractZipBy(unpackZip, zipPath, targetFolder, failure);
}

bool extractZipBy(const Unpack &unpack, const QString &zipPath, const QString &targetFolder,
                  ZipFailure *failure) {
    return extract(unpack, zipPath, targetFolder, extractLimitMs, failure);
}

bool isUnsafeZipName(const QString &name) {
    // The same pattern as in PowerShell's script.
    static const QRegularExpression unsafe(QStringLiteral(R"((^|/)\.\.(?=/|$)|^[A-Za-z]:|^[\\/])"));
    const QString slashed = QString(name).replace(QLatin1Char('\\'), QLatin1Char('/'));
    return unsafe.match(slashed).hasMatch();
}

QStringList powershellZipArguments(const QString &zipPath, const QString &targetFolder) {
    const QString script = QStringLiteral(
        "$ErrorActionPreference='Stop';Add-Type -AssemblyName System.IO.Compression.FileSystem;"
        "$zip=[IO.Compression.ZipFile]::OpenRead('%1');try {  foreach ($entry in $zip.Entries) {"
        "    $name=$entry.FullName.Replace('\\','/');    if ($name -match "
        "'(^|/)\\.\\.(?=/|$)|^[A-Za-z]:|^[\\\\/]') { throw 'unsafe zip entry: ' + $name }  }} "
        "finally { $zip.Dispose() }[IO.Compression.ZipFile]::ExtractToDirectory('%1','%2');");
    return {QStringLiteral("-NoProfile"), QStringLiteral("-ExecutionPolicy"),
            QStringLiteral("Bypass"), QStringLiteral("-Command"),
            script.arg(zipPath, targetFolder)};
}

bool powershellUnpack(const QString &zipPath, const QString &targetFolder, int limitMs,
                      QString *error) {
    QProcess process;
    process.start(QStringLiteral("powershell"), powershellZipArguments(zipPath, targetFolder));
    // A program that cannot be started is reported as one that took too long.
    if (!process.waitForFinished(limitMs)) {
        process.kill();
        process.waitForFinished(killMs);
        return fail(QStringLiteral("zip extraction timed out"), error);
    }
    if (process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0)
        return true;
    const QString reason = QString::fromLocal8Bit(process.readAllStandardError()).trimmed();
    return fail(
        reason.isEmpty()
            ? QStringLiteral("zip extraction failed with exit code %1").arg(process.exitCode())
            : reason,
        error);
}
