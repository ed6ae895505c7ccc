#include "frame/long_name_windows.h"
#include "update/files/held_file.h"

#include <windows.h>

// Open for reading, and others may open it for nothing else. To run a program is to read its file.
struct HeldFile::Hold {
    HANDLE file;

    explicit Hold(const QString &path)
        : file(CreateFileW(longName(path).c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                           OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr)) {}
    ~Hold() {
        if (file != INVALID_HANDLE_VALUE)
            CloseHandle(file);
    }
    Hold(const Hold &) = delete;
    Hold &operator=(const Hold &) = delete;
};

HeldFile::HeldFile(const QString &path)
    : hold(std::make_unique<Hold>(path)) {}

HeldFile::~HeldFile() = default;

bool HeldFile::isUnchanged() const {
    return hold->file != INVALID_HANDLE_VALUE;
}
