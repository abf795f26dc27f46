# Every hand-written C and C++ source follows .clang-format: clang-format 14 (the
# Debian 12 version, which tools/ensure-packages.sh installs) in dry-run mode over
# src/, app/, tests/, bench/ and include/, generated/ folders excluded.  Other
# clang-format versions lay some constructs out differently, so the check runs only
# with version 14.
find_program(NORVIK_CLANG_FORMAT NAMES clang-format-14 clang-format)
set(_clang_format_ok FALSE)
if(NORVIK_CLANG_FORMAT)
  execute_process(COMMAND ${NORVIK_CLANG_FORMAT} --version OUTPUT_VARIABLE _clang_format_version)
  if(_clang_format_version MATCHES "clang-format version 14\\.")
    set(_clang_format_ok TRUE)
  endif()
endif()
if(_clang_format_ok)
  add_test(NAME clang_format_check
    COMMAND ${CMAKE_COMMAND} -DCLANG_FORMAT=${NORVIK_CLANG_FORMAT} -DSOURCE=${PROJECT_SOURCE_DIR}
            -P ${CMAKE_CURRENT_LIST_DIR}/check_format.cmake)
  set_tests_properties(clang_format_check PROPERTIES LABELS format)
else()
  message(STATUS "format: clang-format 14 not found; formatting check skipped")
endif()
