# Compiler settings that every target of ours shares, carried by the target quorvane_options.

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

find_program(QUORVANE_CCACHE ccache)
if(QUORVANE_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    # Where headers are precompiled ccache has to overlook their times, which tell nothing, and should
    # not read the whole of them anew for each source file.
    set(CMAKE_CXX_COMPILER_LAUNCHER
        "${CMAKE_COMMAND}" -E env CCACHE_INODECACHE=1
        "CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime"
        "${QUORVANE_CCACHE}")
endif()

add_library(quorvane_options INTERFACE)
target_compile_options(quorvane_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Werror)
target_compile_definitions(
    quorvane_options
    INTERFACE QT_DEPRECATED_WARNINGS
              # What 5.15 itself marks as deprecated is an error; what a later release may mark is not.
              QT_DEPRECATED_WARNINGS_SINCE=0x050F00
              QT_NO_CAST_TO_ASCII
              QT_NO_FOREACH
              QT_NO_KEYWORDS
              QT_MESSAGELOGCONTEXT)

# Two hundred programs of tests, each with most of Qt's symbols: this linker takes a tenth of the time.
# What ships is linked by the system's own.
find_program(QUORVANE_LLD ld.lld)
if(QUORVANE_LLD AND NOT CMAKE_CROSSCOMPILING)
    add_link_options($<$<CONFIG:Debug>:-fuse-ld=lld>)
endif()

if(CMAKE_CROSSCOMPILING)
    # Warnings of Qt's tell the file that they stand in. It is told as seen from the build tree, so that two
    # clones give the same bytes; ccache writes most paths so itself.
    add_compile_options("-fmacro-prefix-map=${CMAKE_SOURCE_DIR}/=../../"
                        "-fmacro-prefix-map=${CMAKE_BINARY_DIR}/=")
    foreach(place IN ITEMS "${QT_MINGW_ROOT}" "${CRYPTO_MINGW_ROOT}")
        add_compile_options("-fmacro-prefix-map=${place}/=")
    endforeach()
endif()

if(QUORVANE_SANITIZE)
    # No recovery: a finding ends the test.
    add_compile_options(-fsanitize=${QUORVANE_SANITIZE} -fno-sanitize-recover=all
                        -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${QUORVANE_SANITIZE})
    if(QUORVANE_SANITIZE MATCHES address)
        # What the sanitizers keep of each check holds half a million addresses, which every start of a program
        # that may lie anywhere has to adjust: a quarter of its time, thousands of times in the tests.
        # Only that: with the runtimes linked in as well a start takes a tenth less, but the search for leaks then
        # misses, in one of thirty ends under load, who still holds a thread of Qt's that has just ended.
        add_link_options($<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:-no-pie>)
    endif()
endif()

if(QUORVANE_COVERAGE)
    # What counts is compiled so in src/CMakeLists.txt; each program has to write it down.
    add_link_options(-fprofile-instr-generate)
endif()
