# Cross-building for Windows on x86-64 with Debian's mingw-w64, and running the outcome under Wine.
#
# QT_MINGW_ROOT, in the environment or the cache, names a Qt that packaging/windows/build-qt made;
# without it, it is looked for in build/qt5-mingw of this source tree. CRYPTO_MINGW_ROOT names in the same way
# what packaging/windows/build-deps made, libcrypto, libzip and zlib, or it is looked for in build/crypto-mingw.

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

# The posix thread model: the other one has no std::thread of the standard library.
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

# name_root(<variable> <default> <file> <script> <what>): the folder that the variable names, which holds the
# file.
function(name_root variable default file script what)
    set(root "${${variable}}")
    if(NOT root)
        set(root "$ENV{${variable}}")
    endif()
    if(NOT root)
        set(root "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/../../build/${default}")
    endif()
    get_filename_component(root "${root}" ABSOLUTE)
    if(NOT EXISTS "${root}/${file}")
        message(FATAL_ERROR "no ${what} for Windows in ${root}: make it with packaging/windows/${script}, "
                            "or name it by ${variable}")
    endif()
    set(${variable} "${root}" CACHE PATH "${what} for mingw-w64")
endfunction()
name_root(QT_MINGW_ROOT qt5-mingw bin/Qt5Core.dll build-qt "Qt")
name_root(CRYPTO_MINGW_ROOT crypto-mingw lib/libcrypto.a build-deps "libcrypto and libzip")
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES QT_MINGW_ROOT CRYPTO_MINGW_ROOT)

set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32 "${QT_MINGW_ROOT}" "${CRYPTO_MINGW_ROOT}")
set(CMAKE_PREFIX_PATH "${QT_MINGW_ROOT}" "${CRYPTO_MINGW_ROOT}")
set(OPENSSL_USE_STATIC_LIBS ON)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# lrelease and its kin are programs of this machine.
set(Qt5LinguistTools_DIR /usr/lib/x86_64-linux-gnu/cmake/Qt5LinguistTools)

# Tests and what else the build starts.
set(CMAKE_CROSSCOMPILING_EMULATOR "${CMAKE_CURRENT_LIST_DIR}/run-wine")
