#include "update/files/patient_files.h"

#include "frame/long_name_windows.h"
#include "update/files/failure.h"
#include "update/files/file_operations.h"
#include "update/files/passing_refusal_windows.h"
#include "update/files/patience.h"
#include "update/files/read_only_mark_windows.h"

namespace {

// ERROR_SUCCESS, or why it is not done.
DWORD renamePatiently(const QString &from, const QString &to, DWORD flags) {
    Patience patience;
    for (;;) {
        if (MoveFileExW(longName(from).c_str(), longName(to).c_str(), flags) != FALSE)
            return ERROR_SUCCESS;
        const DWORD reason = GetLastError();
        if (!mayBeRenamedLater(reason) || !patience.goesOn())
            return reason;
    }
}

bool isDone(DWORD reason, const QString &path, QString *error) {
    return reason == ERROR_SUCCESS || failAbout(path, qt_error_string(int(reason)), error);
}

// Nobody who reads, writes or removes lets this one in.
bool isHeldNow(const std::wstring &name) {
    const HANDLE file = CreateFileW(name.c_str(), DELETE, 0, nullptr, OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return isHeldByOthers(GetLastError());
    CloseHandle(file);
    return false;
}

} // namespace

bool renameWhenFree(const QString &from, const QString &to) {
    return renamePatiently(from, to, 0) == ERROR_SUCCESS;
}

bool renameOverWhenFree(const QString &from, const QString &to, QString *error) {
    return isDone(renamePatiently(from, to, MOVEFILE_REPLACE_EXISTING), to, error);
}

bool removeFileWhenFree(const QString &path, QString *error) {
    const std::wstring name = longName(path);
    const WithoutReadOnlyMark unmarked(path);
    Patience patience;
    for (;;) {
        if (DeleteFileW(name.c_str()) != FALSE)
            return true;
        const DWORD reason = GetLastError();
        if (!isHeldByOthers(reason) || !patience.goesOn())
            return isDone(reason, path, error);
    }
}

// Of a folder that stays, nothing tells why.
bool removeFolderWhenFree(const QString &path, QString *error) {
    Patience patience;
    while (!removeDirectory(path, error)) {
        if (!patience.goesOn())
            return false;
    }
    return true;
}

void waitUntilFree(const QString &path) {
    const std::wstring name = longName(path);
    Patience patience;
    while (isHeldNow(name) && patience.goesOn()) {
    }
}
