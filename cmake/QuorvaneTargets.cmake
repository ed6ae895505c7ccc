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
    if(NOT TARGET tests_${folder})
        add_custom_target(tests_${folder})
    endif()
    add_dependencies(tests_${folder} ${target})
    add_test(NAME "${test}" COMMAND ${target})
    if(NOT ARG_TIMEOUT)
        set(ARG_TIMEOUT 300)
    endif()
    set_tests_properties(
        "${test}" PROPERTIES ENVIRONMENT "QT_QPA_PLATFORM=offscreen" TIMEOUT ${ARG_TIMEOUT}
                             LABELS "${folder};${ARG_LABELS}")
endfunction()
