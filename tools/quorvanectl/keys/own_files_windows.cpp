#include "quorvanectl/keys/own_files.h"

#include "frame/long_name_windows.h"
#include "update/files/failure.h"
#include "update/files/owner_rights_windows.h"

#include <windows.h>

#include <aclapi.h>

#include <algorithm>

namespace ctl {
namespace {

constexpr DWORD reading = FILE_READ_DATA | GENERIC_READ | GENERIC_ALL;

bool failBySystem(const QString &path, QString *error) {
    return failAbout(path, qt_error_string(int(GetLastError())), error);
}

bool writeAll(HANDLE file, const QByteArray &content) {
    DWORD written = 0;
    return WriteFile(file, content.constData(), DWORD(content.size()), &written, nullptr) != 0 &&
           written == DWORD(content.size()) && FlushFileBuffers(file) != 0;
}

// The system itself and its administrators get at everything, as root does elsewhere.
bool isOwnerOrSystem(PSID who, PSID owner) {
    return EqualSid(who, owner) != 0 || IsWellKnownSid(who, WinLocalSystemSid) != 0 ||
           IsWellKnownSid(who, WinBuiltinAdministratorsSid) != 0 ||
           IsWellKnownSid(who, WinCreatorOwnerRightsSid) != 0;
}

bool letsOthersRead(const ACL &list, PSID owner) {
    for (DWORD i = 0; i < list.AceCount; ++i) {
        void *entry = nullptr;
        if (GetAce(const_cast<ACL *>(&list), i, &entry) == 0)
            return true;
        const auto *const allowed = static_cast<const ACCESS_ALLOWED_ACE *>(entry);
        const bool counts = allowed->Header.AceType == ACCESS_ALLOWED_ACE_TYPE &&
                            (allowed->Header.AceFlags & INHERIT_ONLY_ACE) == 0 &&
                            (allowed->Mask & reading) != 0;
        if (counts && !isOwnerOrSystem(const_cast<DWORD *>(&allowed->SidStart), owner))
            return true;
    }
    return false;
}

enum class Access { OwnersAlone, Others, Unknown };

Access accessTo(HANDLE file) {
    PSID owner = nullptr;
    PACL list = nullptr;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    const DWORD failure = GetSecurityInfo(file, SE_FILE_OBJECT,
                                          OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION,
                                          &owner, nullptr, &list, nullptr, &descriptor);
    const LocalMemory owned(descriptor);
    if (failure != ERROR_SUCCESS || owner == nullptr)
        return Access::Unknown;
    // No list at all lets everybody in.
    return list == nullptr || letsOthersRead(*list, owner) ? Access::Others : Access::OwnersAlone;
}

HANDLE makeFile(const QString &path, Readers readers) {
    const OwnerRights rights(L"");
    SECURITY_ATTRIBUTES attributes{sizeof attributes, rights.descriptor(), FALSE};
    if (readers == Readers::Owner && rights.descriptor() == nullptr)
        return INVALID_HANDLE_VALUE;
    // Nobody else can open it before it is whole.
    return CreateFileW(longName(path).c_str(), GENERIC_WRITE | READ_CONTROL | DELETE, 0,
                       readers == Readers::Owner ? &attributes : nullptr, CREATE_NEW,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
}

} // namespace

bool writeNewFile(const QString &path, const QByteArray &content, Readers readers, QString *error) {
    const HANDLE file = makeFile(path, readers);
    if (file == INVALID_HANDLE_VALUE)
        return failBySystem(path, error);
    // A stick keeps no rights, whatever it is told.
    const bool isKept = readers == Readers::Everybody || accessTo(file) == Access::OwnersAlone;
    const bool whole =
        isKept
            ? writeAll(file, content) || failBySystem(path, error)
            : failAbout(path,
                        QStringLiteral("this volume keeps no rights of files, and everybody could "
                                       "read a private key there"),
                        error);
    // Ours, and half a key is none: it goes with the handle, before anybody else can open it.
    FILE_DISPOSITION_INFO goes{TRUE};
    if (!whole)
        (void)SetFileInformationByHandle(file, FileDispositionInfo, &goes, sizeof goes);
    CloseHandle(file);
    return whole;
}

bool othersMayRead(const QString &path) {
    const HANDLE file = CreateFileW(longName(path).c_str(), READ_CONTROL,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return false;
    const Access access = accessTo(file);
    CloseHandle(file);
    return access == Access::Others;
}

} // namespace ctl
