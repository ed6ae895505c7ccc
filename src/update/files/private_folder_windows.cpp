// A list of rights with one entry, this user's, which files and folders below take over; rights of the
// folder above are not taken over.
#include "update/files/long_name_windows.h"
#include "update/files/private_folder.h"

#include <windows.h>

#include <sddl.h>

#include <memory>
#include <vector>

namespace {

struct LocalDeleter {
    void operator()(void *memory) const { LocalFree(memory); }
};

// This user as text; empty on failure.
std::wstring userSid() {
    HANDLE token = nullptr;
    if (OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token) == 0)
        return std::wstring();
    DWORD size = 0;
    GetTokenInformation(token, TokenUser, nullptr, 0, &size);
    std::vector<char> about(size);
    const bool isKnown =
        size > 0 && GetTokenInformation(token, TokenUser, about.data(), size, &size) != 0;
    CloseHandle(token);
    wchar_t *text = nullptr;
    if (!isKnown || ConvertSidToStringSidW(
                        reinterpret_cast<const TOKEN_USER *>(about.data())->User.Sid, &text) == 0)
        return std::wstring();
    const std::unique_ptr<wchar_t, LocalDeleter> owned(text);
    return std::wstring(owned.get());
}

} // namespace

bool makePrivateFolder(const QString &path) {
    const std::wstring user = userSid();
    const std::wstring rights = L"D:P(A;OICI;FA;;;" + user + L")";
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    if (user.empty() || ConvertStringSecurityDescriptorToSecurityDescriptorW(
                            rights.c_str(), SDDL_REVISION_1, &descriptor, nullptr) == 0)
        return false;
    const std::unique_ptr<void, LocalDeleter> owned(descriptor);
    SECURITY_ATTRIBUTES attributes{sizeof attributes, descriptor, FALSE};
    return CreateDirectoryW(longName(path).c_str(), &attributes) != 0;
}
