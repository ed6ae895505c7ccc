// Its list of rights has one entry, this user's, which files and folders below take over.
#include "update/files/private_folder.h"

#include "frame/long_name_windows.h"
#include "update/files/owner_rights_windows.h"

#include <windows.h>

bool makePrivateFolder(const QString &path) {
    const OwnerRights rights(L"OICI");
    SECURITY_ATTRIBUTES attributes{sizeof attributes, rights.descriptor(), FALSE};
    return rights.descriptor() != nullptr &&
           CreateDirectoryW(longName(path).c_str(), &attributes) != 0;
}
