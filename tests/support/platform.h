// Where tests have to expect something else on Windows. The one place that asks for the platform.
#pragma once

#include <QByteArray>
#include <QDir>
#include <QFileInfo>
#include <QLibrary>
#include <QProcess>

namespace support {

#ifdef Q_OS_WIN
constexpr bool onWindows = true;
#else
constexpr bool onWindows = false;
#endif

// The bytes of a text file that holds these lines.
inline QByteArray textLines(QByteArray lines) {
    return onWindows ? lines.replace("\n", "\r\n") : lines;
}

// The lines that the bytes of a text file stand for.
inline QByteArray linesOf(QByteArray bytes) {
    return onWindows ? bytes.replace("\r\n", "\n") : bytes;
}

// A path from the root as the system completes it: with the drive, where there are drives.
inline QString rooted(const QString &path) {
    return path.startsWith('/') ? QDir::cleanPath(QFileInfo(path).absoluteFilePath()) : path;
}

// The same beside a folder: on the drive that the folder lies on.
inline QString rootedBeside(const QString &folder, const QString &path) {
    return folder.section('/', 0, 0) + path;
}

// Whether Windows is Wine's. Its libraries say so, and those of Windows have no such function.
inline bool underWine() {
    return onWindows && QLibrary::resolve("ntdll", "wine_get_version") != nullptr;
}

// Refusals of signatures with the number of Windows, which itself is taken at its word. Wine's CryptoAPI has
// numbers of its own for one of the wrong length, and for one that, read as a number, is larger than the
// key: of a signature with its bytes reversed that is a matter of chance.
inline QString withWindowsNumbers(QString details, bool isWine = underWine()) {
    if (isWine)
        for (const char *const own : {"2148073504", "2148073488"})
            details.replace(own, "2148073478");
    return details;
}

// Has a program whose streams all lead elsewhere started without a console: on Windows that is a process more.
inline void leaveOutConsole(QProcess *program) {
#ifdef Q_OS_WIN
    constexpr unsigned long detachedProcess = 0x8; // CreateProcess's DETACHED_PROCESS
    program->setCreateProcessArgumentsModifier(
        [](QProcess::CreateProcessArguments *how) { how->flags |= detachedProcess; });
#else
    Q_UNUSED(program)
#endif
}

// What the system says of a failure.
inline QString systemText(const char *elsewhere, const char *windows) {
    return QString::fromLatin1(onWindows ? windows : elsewhere);
}

} // namespace support
