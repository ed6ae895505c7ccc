# Run by cpack between laying out the installation and packing it.
execute_process(COMMAND "${CMAKE_CURRENT_LIST_DIR}/copy_qt" "${CPACK_TEMPORARY_DIRECTORY}/bin"
                        "${CPACK_TEMPORARY_DIRECTORY}/licences"
                COMMAND_ERROR_IS_FATAL ANY)
