# The Windows DLL built with MinGW-w64 and run under Wine (docs/windows.md).  It
# cross-builds the library once more, so it carries the label "windows": ctest
# -LE windows leaves it out locally; the test command runs it.
if(NOT NORVIK_SANITIZE AND NOT NORVIK_FUZZ)
  add_test(NAME windows.dll_under_wine
    COMMAND ${CMAKE_COMMAND} -DSOURCE=${PROJECT_SOURCE_DIR}
            -DBINARY=${CMAKE_BINARY_DIR}/build-win64 -DLINUX_HOST=$<TARGET_FILE:norvik_host>
            -P ${CMAKE_CURRENT_LIST_DIR}/run_windows.cmake)
  set_tests_properties(windows.dll_under_wine PROPERTIES LABELS windows TIMEOUT 1800)
endif()
