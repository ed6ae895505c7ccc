// The programs that lie together in an installation's program folder.
#pragma once

namespace program_names {

inline constexpr char launcher[] = "Quorvaner";
inline constexpr char launcherOnWindows[] = "Quorvaner.exe";
// The production runtime and the editor, under these names on every system.
inline constexpr char runtime[] = "LineRunner.exe";
inline constexpr char editor[] = "LineStudio.exe";

} // namespace program_names
