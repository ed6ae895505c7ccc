// A list of rights with one entry, this user's; rights of the folder above are not taken over.
#pragma once

#include <windows.h>

#include <sddl.h>

#include <memory>
#include <string>
#include <vector>

struct LocalDeleter {
    void operator()(void *memory) const { LocalFree(memory); }
};
using LocalMemory = std::unique_ptr<void, LocalDeleter>;

class OwnerRights {
public:
    // `inheritance` is what SDDL has for the entry: L"OICI", and what lies below takes it over.
    explicit OwnerRights(const std::wstring &inheritance) {
        const std::wstring user = userSid();
        const std::wstring rights =
            L"O:" + user + L"D:P(A;" + inheritance + L";FA;;;" + user + L")";
        PSECURITY_DESCRIPTOR made = nullptr;
        if (!user.empty() && ConvertStringSecurityDescriptorToSecurityDescriptorW(
                                 rights.c_str(), SDDL_REVISION_1, &made, nullptr) != 0)
            owned.reset(made);
    }

    // Null on failure, with GetLastError().
    [[nodiscard]] PSECURITY_DESCRIPTOR descriptor() const { return owned.get(); }

private:
    // This user as text; empty on failure.
    static std::wstring userSid() {
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
        if (!isKnown ||
            ConvertSidToStringSidW(reinterpret_cast<const TOKEN_USER *>(about.data())->User.Sid,
                                   &text) == 0)
            return std::wstring();
        const LocalMemory ownedText(text);
        return std::wstring(text);
    }

    LocalMemory owned;
};
