// Each launcher and runtime that runs counts: a PC has one line, and a user one data folder.
#include "quorvanectl/recovery/running_programs.h"

#include "frame/program_names.h"

#include <QtGlobal>

#include <windows.h>

#include <tlhelp32.h>

namespace ctl {

QStringList programsAtWork(const QString &projectFile, const QString &dataFolder) {
    Q_UNUSED(projectFile)
    Q_UNUSED(dataFolder)
    QStringList found;
    const HANDLE processes = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    if (processes == INVALID_HANDLE_VALUE)
        return found;
    PROCESSENTRY32W process{};
    process.dwSize = sizeof process;
    for (BOOL more = Process32FirstW(processes, &process); more != FALSE;
         more = Process32NextW(processes, &process)) {
        const QString name = QString::fromWCharArray(process.szExeFile);
        if (name.compare(QLatin1String(program_names::launcherOnWindows), Qt::CaseInsensitive) ==
                0 ||
            name.compare(QLatin1String(program_names::runtime), Qt::CaseInsensitive) == 0)
            found.append(QStringLiteral("%1 (process %2)")
                             .arg(name, QString::number(process.th32ProcessID)));
    }
    CloseHandle(processes);
    return found;
}

} // namespace ctl
