# Headers that most source files read are compiled once for all libraries and once for all tests. They
# hold Qt and the standard library alone, so what a folder may include does not change by it. A file
# still names all it uses: the qmake build and clang-tidy read every file without them.
#
# quorvane_add_precompiled(<name> HEADERS <header>... LINKS <target>... [DEFINITIONS <name>...])
# makes the target quorvane_<name>_headers; quorvane_use_precompiled(<target> <name>) gives them to
# a target, but for the file of meta-object code, which is mostly empty.
function(quorvane_add_precompiled name)
    cmake_parse_arguments(ARG "" "" "HEADERS;LINKS;DEFINITIONS" ${ARGN})
    if(NOT QUORVANE_PRECOMPILED)
        return()
    endif()
    set(source "${CMAKE_BINARY_DIR}/precompiled/${name}.cpp")
    file(CONFIGURE OUTPUT "${source}" CONTENT "// Made by CMake: something to compile beside the headers.\n")
    add_library(quorvane_${name}_headers OBJECT "${source}")
    set_target_properties(quorvane_${name}_headers PROPERTIES AUTOMOC OFF)
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

# quorvane_add_library(<folder> SOURCES <file>... [LINKS <target>...])
#
# The static library quorvane_<folder> of one folder of src. Headers are included as
# "folder/header.h". Each library exports an include folder that holds nothing but a link to its own
# folder, so an include compiles only where the library is linked: an upward include cannot build.
function(quorvane_add_library folder)
    cmake_parse_arguments(ARG "" "" "SOURCES;LINKS" ${ARGN})
    set(include_root "${CMAKE_BINARY_DIR}/include/${folder}")
    file(MAKE_DIRECTORY "${include_root}")
    file(CREATE_LINK "${CMAKE_SOURCE_DIR}/src/${folder}" "${include_root}/${folder}" SYMBOLIC)
    add_library(quorvane_${folder} STATIC ${ARG_SOURCES})
    target_include_directories(quorvane_${folder} PUBLIC "${include_root}")
    target_compile_definitions(quorvane_${folder} PRIVATE QT_NO_CAST_FROM_ASCII)
    target_link_libraries(quorvane_${folder} PUBLIC ${ARG_LINKS} PRIVATE quorvane_options)
    quorvane_use_precompiled(quorvane_${folder} product)
endfunction()

# quorvane_add_test(<folder>/<name> SOURCES <file>... [LINKS <target>...] [LABELS <label>...]
#                   [TIMEOUT <seconds>])
#
# A QtTest program of its own, registered with CTest under the name <folder>/<name>, offscreen and
# labelled with its folder; the target tests_<folder> builds all of a folder's. Its main is
# QUORVANE_TEST_MAIN of tests/support/staged_main.h.
function(quorvane_add_test test)
    cmake_parse_arguments(ARG "" "TIMEOUT" "SOURCES;LINKS;LABELS" ${ARGN})
    string(REPLACE "/" "_" target "test_${test}")
    get_filename_component(folder "${test}" DIRECTORY)
    add_executable(${target} ${ARG_SOURCES})
    target_link_libraries(${target} PRIVATE quorvane_options quorvane_test_support ${ARG_LINKS}
                                            Qt5::Test)
    quorvane_use_precompiled(${target} test)
    if(NOT TARGET tests_${folder})
        add_custom_target(tests_${folder})
    endif()
    add_dependencies(tests_${folder} ${target})
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
