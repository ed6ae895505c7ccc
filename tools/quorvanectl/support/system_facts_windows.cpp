#include "quorvanectl/support/system_facts.h"

#include <QLibrary>

#include <qt_windows.h>

namespace ctl {
namespace {

using DpiOf = HRESULT(WINAPI *)(HMONITOR monitor, int kind, UINT *across, UINT *down);

// By which the screen is scaled. Older systems than Windows 8.1 scale all by one number, that of `device`.
int dotsPerInchOf(HMONITOR monitor, HDC device) {
    constexpr int effective = 0;
    const auto dpiOf =
        reinterpret_cast<DpiOf>(QLibrary::resolve(QStringLiteral("shcore"), "GetDpiForMonitor"));
    UINT across = 0;
    UINT down = 0;
    return dpiOf != nullptr && SUCCEEDED(dpiOf(monitor, effective, &across, &down))
               ? int(across)
               : GetDeviceCaps(device, LOGPIXELSX);
}

// Called once for each screen; a true answer goes on to the next one.
BOOL CALLBACK addScreen(HMONITOR monitor, HDC, LPRECT, LPARAM list) {
    MONITORINFOEXW told = {};
    told.cbSize = sizeof told;
    if (GetMonitorInfoW(monitor, &told) == 0)
        return TRUE;
    Screen screen;
    screen.name = QString::fromWCharArray(told.szDevice);
    if (HDC device = CreateDCW(L"DISPLAY", told.szDevice, nullptr, nullptr)) {
        screen.size =
            QStringLiteral("%1x%2").arg(QString::number(GetDeviceCaps(device, DESKTOPHORZRES)),
                                        QString::number(GetDeviceCaps(device, DESKTOPVERTRES)));
        screen.dotsPerInch = dotsPerInchOf(monitor, device);
        DeleteDC(device);
    }
    reinterpret_cast<QVector<Screen> *>(list)->append(screen);
    return TRUE;
}

} // namespace

Memory memoryOfThisPc() {
    MEMORYSTATUSEX status = {};
    status.dwLength = sizeof status;
    if (GlobalMemoryStatusEx(&status) == 0)
        return {};
    return {qint64(status.ullTotalPhys), qint64(status.ullAvailPhys)};
}

QVector<Screen> screensOfThisPc() {
    QVector<Screen> screens;
    EnumDisplayMonitors(nullptr, nullptr, addScreen, reinterpret_cast<LPARAM>(&screens));
    return screens;
}

} // namespace ctl
