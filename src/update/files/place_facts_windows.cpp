#include "frame/long_name_windows.h"
#include "update/files/passing_refusal_windows.h"
#include "update/files/patience.h"
#include "update/files/place_facts.h"
#include "update/files/read_only_mark_windows.h"

#include <windows.h>

namespace {

// A file or folder that is open for `access`, beside all others who have it open.
struct OpenPlace {
    HANDLE handle;

    OpenPlace(const QString &path, DWORD access, DWORD flags = 0)
        : handle(CreateFileW(longName(path).c_str(), access,
                             FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                             OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS | flags, nullptr)) {}
    ~OpenPlace() {
        if (isOpen())
            CloseHandle(handle);
    }
    OpenPlace(const OpenPlace &) = delete;
    OpenPlace &operator=(const OpenPlace &) = delete;

    [[nodiscard]] bool isOpen() const { return handle != INVALID_HANDLE_VALUE; }
};

constexpr DWORD longestPath = 32768; // characters, the end's zero among them

// Without the mark in front that takes away the limit of a path's length.
QString plainName(const QString &longPath) {
    const QString onServer = QStringLiteral("\\\\?\\UNC\\");
    if (longPath.startsWith(onServer))
        return QStringLiteral("\\\\") + longPath.mid(onServer.size());
    const QString local = QStringLiteral("\\\\?\\");
    return longPath.startsWith(local) ? longPath.mid(local.size()) : longPath;
}

// The share that a path on a server lies on, which Wine does not call a volume; else empty.
QString shareOf(const QString &path) {
    const QString place = QDir::cleanPath(QFileInfo(path).absoluteFilePath());
    return place.startsWith(QLatin1String("//")) ? place.section(QLatin1Char('/'), 0, 3)
                                                 : QString();
}

bool isGranted(const QString &entry, DWORD access, Patience *patience) {
    do {
        if (OpenPlace(entry, access, FILE_FLAG_OPEN_REPARSE_POINT).isOpen())
            return true;
    } while (isHeldByOthers(GetLastError()) && patience != nullptr && patience->goesOn());
    return false;
}

} // namespace

// Not by the C++ library, for which a long path leads nowhere there. Links are told by Qt.
std::filesystem::file_type kindOf(const QString &path) {
    const DWORD attributes = GetFileAttributesW(longName(path).c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES) {
        return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? std::filesystem::file_type::directory
                                                            : std::filesystem::file_type::regular;
    }
    switch (GetLastError()) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_NAME:
    case ERROR_DIRECTORY:
        return std::filesystem::file_type::not_found;
    default:
        return std::filesystem::file_type::none;
    }
}

// Short names, other cases, junctions and drives that stand for a folder have one path behind them.
QString realPath(const QString &path) {
    const OpenPlace place(path, FILE_READ_ATTRIBUTES);
    std::wstring name(longestPath, L'\0');
    const DWORD length = place.isOpen() ? GetFinalPathNameByHandleW(place.handle, name.data(),
                                                                    longestPath, VOLUME_NAME_DOS)
                                        : 0;
    if (length == 0 || length >= longestPath)
        return QFileInfo(path).canonicalFilePath();
    name.resize(length);
    return QDir::fromNativeSeparators(plainName(QString::fromStdWString(name)));
}

// The numbers hold as long as both are open. Some servers number nothing, and say 0 of each.
bool isSamePlace(const QString &one, const QString &other) {
    const OpenPlace first(one, FILE_READ_ATTRIBUTES);
    const OpenPlace second(other, FILE_READ_ATTRIBUTES);
    BY_HANDLE_FILE_INFORMATION a{};
    BY_HANDLE_FILE_INFORMATION b{};
    return first.isOpen() && second.isOpen() &&
           GetFileInformationByHandle(first.handle, &a) != FALSE &&
           GetFileInformationByHandle(second.handle, &b) != FALSE &&
           (a.nFileIndexHigh != 0 || a.nFileIndexLow != 0) &&
           a.dwVolumeSerialNumber == b.dwVolumeSerialNumber &&
           a.nFileIndexHigh == b.nFileIndexHigh && a.nFileIndexLow == b.nFileIndexLow;
}

// Not by Qt, for which each path on a server is a root.
QString rootOfVolume(const QString &path) {
    std::wstring root(longestPath, L'\0');
    if (GetVolumePathNameW(longName(path).c_str(), root.data(), longestPath) == FALSE)
        return shareOf(path);
    return QDir::cleanPath(
        QDir::fromNativeSeparators(plainName(QString::fromWCharArray(root.c_str()))));
}

// Rights lie too deep there to be foretold.
bool mayTakeFrom(const QString &) {
    return true;
}

bool mayRead(const QString &) {
    return true;
}

// A program that runs, and a library that is loaded, may be opened for removal and cannot be removed;
// only the right to write tells. A mark as read-only would refuse that right, but hinders no removal,
// which takes it off: so it is off while the system is asked.
bool isHeld(const QString &entry, Patience *patience) {
    const DWORD attributes = GetFileAttributesW(longName(entry).c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES)
        return kindOf(entry) != std::filesystem::file_type::not_found;
    const bool isMarked = (attributes & FILE_ATTRIBUTE_READONLY) != 0;
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
        return !isGranted(entry, DELETE | (isMarked ? FILE_WRITE_ATTRIBUTES : 0), patience);
    const WithoutReadOnlyMark unmarked(entry);
    return !isGranted(entry, DELETE | FILE_WRITE_DATA, patience);
}

// A mounted volume is a junction there, and removed as one.
bool isMountPoint(const QString &) {
    return false;
}
