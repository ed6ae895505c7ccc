# libzip, as the target LibZip::LibZip. Debian's own description of it for CMake fails unless its command
# line tools are installed too, which nothing here calls.
find_path(LibZip_INCLUDE_DIR zip.h)
find_path(LibZip_VERSION_DIR zipconf.h)
find_library(LibZip_LIBRARY zip)
mark_as_advanced(LibZip_INCLUDE_DIR LibZip_VERSION_DIR LibZip_LIBRARY)
if(LibZip_VERSION_DIR)
    file(STRINGS "${LibZip_VERSION_DIR}/zipconf.h" line REGEX "^#define LIBZIP_VERSION \"")
    string(REGEX REPLACE ".*\"(.*)\".*" "\\1" LibZip_VERSION "${line}")
    unset(line)
endif()
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(
    LibZip
    REQUIRED_VARS LibZip_LIBRARY LibZip_INCLUDE_DIR LibZip_VERSION_DIR
    VERSION_VAR LibZip_VERSION)
if(LibZip_FOUND AND NOT TARGET LibZip::LibZip)
    add_library(LibZip::LibZip UNKNOWN IMPORTED)
    set_target_properties(
        LibZip::LibZip
        PROPERTIES IMPORTED_LOCATION "${LibZip_LIBRARY}"
                   INTERFACE_INCLUDE_DIRECTORIES "${LibZip_INCLUDE_DIR};${LibZip_VERSION_DIR}")
    if(WIN32)
        # A static one does not say by itself what it needs.
        find_library(LibZip_ZLIB z REQUIRED)
        mark_as_advanced(LibZip_ZLIB)
        set_target_properties(LibZip::LibZip PROPERTIES INTERFACE_LINK_LIBRARIES
                                                        "${LibZip_ZLIB};advapi32")
    endif()
endif()
