// The attribute of Windows that keeps a file from being written to, and a file or folder from being
// removed, whatever rights one has on it.
#pragma once

#include "frame/long_name_windows.h"

#include <windows.h>

// While one lives, the file or folder at `path` has no such mark, if it may be taken off. One that is
// still there at the end gets it back. Of a link, the link's own.
class WithoutReadOnlyMark {
public:
    explicit WithoutReadOnlyMark(const QString &path)
        : name(longName(path))
        , before(GetFileAttributesW(name.c_str())) {
        const DWORD others = before & ~DWORD(FILE_ATTRIBUTE_READONLY);
        if (wasMarked())
            (void)SetFileAttributesW(name.c_str(), others != 0 ? others : FILE_ATTRIBUTE_NORMAL);
    }
    ~WithoutReadOnlyMark() {
        if (wasMarked())
            (void)SetFileAttributesW(name.c_str(), before);
    }
    WithoutReadOnlyMark(const WithoutReadOnlyMark &) = delete;
    WithoutReadOnlyMark &operator=(const WithoutReadOnlyMark &) = delete;

    [[nodiscard]] bool wasMarked() const {
        return before != INVALID_FILE_ATTRIBUTES && (before & FILE_ATTRIBUTE_READONLY) != 0;
    }

private:
    std::wstring name;
    DWORD before;
};
