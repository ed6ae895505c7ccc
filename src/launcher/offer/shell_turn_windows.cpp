#include "launcher/offer/shell_turn.h"

#include <windows.h>

#include <objbase.h>

// A thread that is ready in another way stays so, and is ready enough.
ShellTurn::ShellTurn()
    : isReady(
          SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE))) {}

ShellTurn::~ShellTurn() {
    if (isReady)
        CoUninitialize();
}
