#include "frame/log_append.h"

#include <QDir>

#include <windows.h>

// The library's append seeks to the end and then writes, so two writers could overwrite each other.
// A handle with FILE_APPEND_DATA and without FILE_WRITE_DATA can only ever add at the end.
// https://learn.microsoft.com/windows/win32/fileio/file-access-rights-constants
bool appendToFile(const QString &path, const QByteArray &text) {
    const QString native = QDir::toNativeSeparators(path);
    const HANDLE file = CreateFileW(reinterpret_cast<LPCWSTR>(native.utf16()), FILE_APPEND_DATA,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return false;
    QByteArray bytes = text;
    bytes.replace("\n", "\r\n");
    DWORD written = 0;
    const BOOL done =
        WriteFile(file, bytes.constData(), static_cast<DWORD>(bytes.size()), &written, nullptr);
    CloseHandle(file);
    return done != FALSE && written == static_cast<DWORD>(bytes.size());
}
