# Lays out the installation of the build tree TREE, demo included, in the folder INSTALLATION.
file(REMOVE_RECURSE "${INSTALLATION}")
foreach(component IN ITEMS launcher demo tools)
    execute_process(COMMAND "${CMAKE_COMMAND}" --install "${TREE}" --prefix "${INSTALLATION}"
                            --component ${component} COMMAND_ERROR_IS_FATAL ANY OUTPUT_QUIET)
endforeach()
