// What unpacks an archive for the program under test.
#pragma once

namespace support {

// Windows has PowerShell for it, and Wine has none: a stand-in that unpacks is put into the program's
// folder, where it is found first. Elsewhere the program unpacks by itself, and nothing is done.
void provideUnpacking();

} // namespace support
