// Whether things may move on the screen. motion_windows.cpp, motion_portable.cpp.
#pragma once

// True where the user has asked the system for less motion.
[[nodiscard]] bool wantsLessMotion();
