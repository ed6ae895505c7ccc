// Which refusals of Windows are over once nobody else has a file open any more.
#pragma once

#include <windows.h>

// `reason` is what GetLastError() gave. A program that runs refuses its removal in another way.
inline bool isHeldByOthers(DWORD reason) {
    return reason == ERROR_SHARING_VIOLATION || reason == ERROR_LOCK_VIOLATION;
}

// Of a rename: a file that is to be replaced, and a folder with an open file in it, are refused as those are
// for which a right is missing.
inline bool mayBeRenamedLater(DWORD reason) {
    return isHeldByOthers(reason) || reason == ERROR_ACCESS_DENIED;
}
