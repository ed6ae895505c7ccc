// Links and hidden files by the system's own calls; there are no pipes in folders here.
#include "support/file_kinds.h"

#include <QDir>
#include <QFileInfo>

#include <windows.h>

namespace support {
namespace {

std::wstring native(const QString &path) {
    return QDir::toNativeSeparators(path).toStdWString();
}

} // namespace

bool makeLink(const QString &target, const QString &path) {
    DWORD flags = SYMBOLIC_LINK_FLAG_ALLOW_UNPRIVILEGED_CREATE;
    if (QFileInfo(target).isDir())
        flags |= SYMBOLIC_LINK_FLAG_DIRECTORY;
    // Wine says that it has made one, and has not.
    return CreateSymbolicLinkW(native(path).c_str(), native(target).c_str(), flags) != 0 &&
           GetFileAttributesW(native(path).c_str()) != INVALID_FILE_ATTRIBUTES;
}

bool makePipe(const QString &) {
    return false;
}

void hide(const QString &path) {
    const DWORD before = GetFileAttributesW(native(path).c_str());
    if (!SetFileAttributesW(native(path).c_str(), before | FILE_ATTRIBUTE_HIDDEN))
        qFatal("cannot hide %s", qPrintable(path));
}

bool permissionsKeepOut() {
    return false; // by their lists of rights alone, which Qt does not write
}

} // namespace support
