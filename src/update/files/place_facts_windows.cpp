#include "update/files/long_name_windows.h"
#include "update/files/place_facts.h"

#include <windows.h>

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

// Rights lie too deep there to be foretold.
bool mayTakeFrom(const QString &) {
    return true;
}

bool mayRead(const QString &) {
    return true;
}

// Asked for the right to remove it, the system says so.
bool isHeld(const QString &entry) {
    const HANDLE handle = CreateFileW(
        longName(entry).c_str(), DELETE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
        nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
    if (handle == INVALID_HANDLE_VALUE)
        return GetLastError() == ERROR_SHARING_VIOLATION;
    CloseHandle(handle);
    return false;
}

// A mounted volume is a junction there, and removed as one.
bool isMountPoint(const QString &) {
    return false;
}
