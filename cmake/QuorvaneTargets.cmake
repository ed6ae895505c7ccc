# Headers that most source files read are compiled once for all libraries and once for all tests. They
# hold Qt and the standard library alone, so what a folder may include does not change by it. A file
# still names all it uses: the qmake build and clang-tidy read every file without them.
#
# quorvane_add_precompiled(<name> HEADERS <header>... LINKS <target>... [DEFINITIONS <name>...])
# makes the target quorvane_<name>_headers; quorvane_use_precompiled(<target> <name>) gives them to
# a target, but for the file of meta-object code.
function(quorvane_add_precompiled name)
    cmake_parse_arguments(ARG "" "" "HEADERS;LINKS;DEFINITIONS" ${ARGN})
    if(NOT QUORVANE_PRECOMPILED)
        return()
    endif()
    set(source "${CMAKE_BINARY_DIR}/precompiled/${name}.cpp")
    file(CONFIGURE OUTPUT "${source}" CONTENT "// Made by CMake: something to compile beside the headers.\n")
    add_library(quorvane_${name}_headers OBJECT "${source}")
    target_link_libraries(quorvane_${name}_headers PRIVATE quorvane_options ${ARG_LINKS})
    target_compile_definitions(quorvane_${name}_headers PRIVATE ${ARG_DEFINITIONS})
    if(CMAKE_CXX_COMPILER_ID MATCHES Clang)
        # The same in every tree, so that ccache knows it again.
        target_compile_options(quorvane_${name}_headers PRIVATE "SHELL:-Xclang -fno-pch-timestamp")
    endif()
    target_precompile_headers(quorvane_${name}_headers PRIVATE ${ARG_HEADERS})
endfunction()

function(quorvane_use_precompiled target name)
    if(TARGET quorvane_${name}_headers)
        target_precompile_headers(${target} REUSE_FROM quorvane_${name}_headers)
        set_source_files_properties("${target}_autogen/mocs_compilation.cpp"
                                    PROPERTIES SKIP_PRECOMPILE_HEADERS ON)
    endif()
endfunction()

# quorvane_add_library(<folder> SOURCES <file>... [LINKS <target>...] [NAME <name>] [IN <folder>]
#                      [HEADERS <file>...] [META_OBJECTS] [REPLACED <file>...])
#
# The static library of one room: <folder> is its path in src, or in the folder IN. It is called
# quorvane_<name>, by default after the last part of <folder>. Headers are included by their path,
# "folder/header.h". Each library exports an include folder that holds nothing but a link to its own
# folder (with HEADERS: links to these alone, where two libraries share a folder), so an include
# compiles only where the library is linked: an upward include cannot build. META_OBJECTS: one of its
# headers has Q_OBJECT. Eight files are compiled as one, since a compiler spends more on Qt's headers than
# on what a file says: within a room a name stands for one thing, in unnamed namespaces too. REPLACED files
# are compiled alone, since a test links another in their place.
function(quorvane_add_library folder)
    cmake_parse_arguments(ARG "META_OBJECTS" "NAME;IN" "SOURCES;LINKS;HEADERS;REPLACED" ${ARGN})
    get_filename_component(name "${folder}" NAME)
    if(ARG_NAME)
        set(name "${ARG_NAME}")
    endif()
    if(NOT ARG_IN)
        set(ARG_IN "${CMAKE_SOURCE_DIR}/src")
    endif()
    set(include_root "${CMAKE_BINARY_DIR}/include/${name}")
    file(REMOVE_RECURSE "${include_root}")
    foreach(entry IN LISTS ARG_HEADERS)
        list(APPEND entries "${folder}/${entry}")
    endforeach()
    if(NOT ARG_HEADERS)
        set(entries "${folder}")
    endif()
    foreach(entry IN LISTS entries)
        get_filename_component(parent "${include_root}/${entry}" DIRECTORY)
        file(MAKE_DIRECTORY "${parent}")
        file(CREATE_LINK "${ARG_IN}/${entry}" "${include_root}/${entry}" SYMBOLIC)
    endforeach()
    add_library(quorvane_${name} STATIC ${ARG_SOURCES})
    target_include_directories(quorvane_${name} PUBLIC "${include_root}")
    target_compile_definitions(quorvane_${name} PRIVATE QT_NO_CAST_FROM_ASCII)
    target_link_libraries(quorvane_${name} PUBLIC ${ARG_LINKS} PRIVATE quorvane_options)
    set_target_properties(
        quorvane_${name} PROPERTIES AUTOMOC ${ARG_META_OBJECTS} UNITY_BUILD ${QUORVANE_UNITY}
                                    UNITY_BUILD_BATCH_SIZE 8)
    if(ARG_REPLACED)
        set_source_files_properties(${ARG_REPLACED} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
    endif()
    quorvane_use_precompiled(quorvane_${name} product)
endfunction()

# quorvane_add_mocs(<target> <source>...)
#
# For each <name>_test.cpp makes the <name>_test.moc that it includes: one short command a file, where
# AUTOMOC would add a run of CMake and an empty object to every program. No header is read for it, so what
# a class declares may depend on the platform alone.
function(quorvane_add_mocs target)
    if(WIN32)
        set(platform Q_OS_WIN)
    else()
        set(platform Q_OS_UNIX)
    endif()
    foreach(source IN LISTS ARGN)
        if(NOT source MATCHES "_test\\.cpp$")
            continue()
        endif()
        string(REGEX REPLACE "cpp$" "moc" moc "${CMAKE_CURRENT_BINARY_DIR}/${source}")
        get_filename_component(moc_folder "${moc}" DIRECTORY)
        file(MAKE_DIRECTORY "${moc_folder}")
        add_custom_command(
            OUTPUT "${moc}"
            COMMAND Qt5::moc -D${platform} -o "${moc}" "${CMAKE_CURRENT_SOURCE_DIR}/${source}"
            DEPENDS "${source}"
            COMMENT "Meta-object code of ${source}"
            VERBATIM)
        set_property(SOURCE "${source}" APPEND PROPERTY OBJECT_DEPENDS "${moc}")
        target_include_directories(${target} PRIVATE "${moc_folder}")
    endforeach()
endfunction()

# quorvane_add_test_program(<folder>/<name> SOURCES <file>... [LINKS <target>...])
#
# A QtTest program of its own, the target test_<folder>_<name>; the target tests_<first folder> builds all
# of that folder's. Its main is QUORVANE_TEST_MAIN of tests/support/staged_main.h.
function(quorvane_add_test_program test)
    cmake_parse_arguments(ARG "" "" "SOURCES;LINKS" ${ARGN})
    string(REPLACE "/" "_" target "test_${test}")
    string(REPLACE "/" ";" rooms "${test}")
    list(GET rooms 0 folder)
    add_executable(${target} ${ARG_SOURCES})
    if(QUORVANE_SANITIZE STREQUAL "thread")
        target_sources(${target} PRIVATE "${CMAKE_SOURCE_DIR}/tests/support/tsan_failed_start.cpp")
    endif()
    target_link_libraries(${target} PRIVATE quorvane_options quorvane_test_support ${ARG_LINKS}
                                            Qt5::Test)
    quorvane_add_mocs(${target} ${ARG_SOURCES})
    quorvane_use_precompiled(${target} test)
    if(NOT TARGET tests_${folder})
        add_custom_target(tests_${folder})
    endif()
    add_dependencies(tests_${folder} ${target})
endfunction()

# quorvane_add_test(<folder>/<name> SOURCES <file>... [LINKS <target>...] [LABELS <label>...]
#                   [TIMEOUT <seconds>])
#
# Such a program, registered with CTest under the name <folder>/<name>, offscreen and labelled with its
# first folder.
function(quorvane_add_test test)
    cmake_parse_arguments(ARG "" "TIMEOUT" "SOURCES;LINKS;LABELS" ${ARGN})
    quorvane_add_test_program(${test} SOURCES ${ARG_SOURCES} LINKS ${ARG_LINKS})
    string(REPLACE "/" "_" target "test_${test}")
    string(REPLACE "/" ";" rooms "${test}")
    list(GET rooms 0 folder)
    add_test(NAME "${test}" COMMAND ${target})
    if(CMAKE_CROSSCOMPILING)
        set(ARG_TIMEOUT 900) # programs start slowly under Wine
    elseif(NOT ARG_TIMEOUT)
        set(ARG_TIMEOUT 300)
    endif()
    set_tests_properties(
        "${test}" PROPERTIES ENVIRONMENT "QT_QPA_PLATFORM=offscreen" TIMEOUT ${ARG_TIMEOUT}
                             LABELS "${folder};${ARG_LABELS}")
endfunction()

# quorvane_run_as_user(<folder>/<name>...)
#
# Registers tests once more, as <folder>/<name>/as_user: where root runs the tests, an ordinary user runs
# these too, since root passes over their rows on permissions. Comes after all that is set for the test.
function(quorvane_run_as_user)
    if(CMAKE_CROSSCOMPILING)
        return() # no permissions keep anybody out there
    endif()
    find_package(Python3 REQUIRED COMPONENTS Interpreter)
    foreach(test IN LISTS ARGN)
        string(REPLACE "/" "_" target "test_${test}")
        add_test(NAME "${test}/as_user"
                 COMMAND Python3::Interpreter "${CMAKE_SOURCE_DIR}/tests/support/as_user.py"
                         $<TARGET_FILE:${target}>)
        set_tests_properties("${test}/as_user" PROPERTIES SKIP_RETURN_CODE 77)
        foreach(property IN ITEMS ENVIRONMENT TIMEOUT LABELS)
            get_test_property("${test}" ${property} value)
            set_tests_properties("${test}/as_user" PROPERTIES ${property} "${value}")
        endforeach()
    endforeach()
endfunction()

# quorvane_run_in_little_memory(<folder>/<name> <test function>)
#
# Registers one function of a test once more, as <folder>/<name>/in_little_memory: it limits the memory of a
# program, and a sanitizer has a memory of its own, so trees with one pass over it. Label and target of all that
# are such: little_memory, tests_in_little_memory.
function(quorvane_run_in_little_memory test function)
    if(CMAKE_CROSSCOMPILING OR QUORVANE_SANITIZE)
        return()
    endif()
    string(REPLACE "/" "_" target "test_${test}")
    add_test(NAME "${test}/in_little_memory" COMMAND ${target} ${function})
    set_tests_properties(
        "${test}/in_little_memory" PROPERTIES ENVIRONMENT "QT_QPA_PLATFORM=offscreen" TIMEOUT 300
                                              LABELS little_memory FAIL_REGULAR_EXPRESSION "SKIP  ")
    if(NOT TARGET tests_in_little_memory)
        add_custom_target(tests_in_little_memory)
    endif()
    add_dependencies(tests_in_little_memory ${target})
endfunction()
