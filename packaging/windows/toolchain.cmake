# Cross-building for Windows on x86-64 with Debian's mingw-w64, and running the outcome under Wine.
#
# QT_MINGW_ROOT, in the environment or the cache, names a Qt that packaging/windows/build-qt made;
# without it, it is looked for in build/qt5-mingw of this source tree.

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

# The posix thread model: the other one has no std::thread of the standard library.
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

if(NOT QT_MINGW_ROOT)
    set(QT_MINGW_ROOT "$ENV{QT_MINGW_ROOT}")
endif()
if(NOT QT_MINGW_ROOT)
    set(QT_MINGW_ROOT "${CMAKE_CURRENT_LIST_DIR}/../../build/qt5-mingw")
endif()
get_filename_component(QT_MINGW_ROOT "${QT_MINGW_ROOT}" ABSOLUTE)
if(NOT EXISTS "${QT_MINGW_ROOT}/bin/Qt5Core.dll")
    message(FATAL_ERROR "no Qt for Windows in ${QT_MINGW_ROOT}: make one with packaging/windows/build-qt, "
                        "or name one by QT_MINGW_ROOT")
endif()
set(QT_MINGW_ROOT "${QT_MINGW_ROOT}" CACHE PATH "A Qt for mingw-w64")
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES QT_MINGW_ROOT)

set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32 "${QT_MINGW_ROOT}")
set(CMAKE_PREFIX_PATH "${QT_MINGW_ROOT}")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# lrelease and its kin are programs of this machine.
set(Qt5LinguistTools_DIR /usr/lib/x86_64-linux-gnu/cmake/Qt5LinguistTools)

# Tests and what else the build starts.
set(CMAKE_CROSSCOMPILING_EMULATOR "${CMAKE_CURRENT_LIST_DIR}/run-wine")
