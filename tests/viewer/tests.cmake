# norvik view: the page written from a result file.  viewer.cli checks what the
# host writes and refuses (seconds); viewer.browser opens pages in headless
# Chromium and checks that every section drew without an error (label viewer,
# about 6 s).
add_test(NAME viewer.cli
  COMMAND ${CMAKE_COMMAND} -DNORVIK=$<TARGET_FILE:norvik_host> -DDATA=${CMAKE_CURRENT_LIST_DIR}/data
          -DEXAMPLES=${PROJECT_SOURCE_DIR}/examples -DWORK=${CMAKE_CURRENT_BINARY_DIR}/viewer/cli
          -DCLI=${PROJECT_SOURCE_DIR}/tests/host_cli/cli.cmake -P ${CMAKE_CURRENT_LIST_DIR}/cli.cmake)
add_test(NAME viewer.browser
  COMMAND ${CMAKE_COMMAND} -DNORVIK=$<TARGET_FILE:norvik_host> -DDATA=${CMAKE_CURRENT_LIST_DIR}/data
          -DWORK=${CMAKE_CURRENT_BINARY_DIR}/viewer/browser -P ${CMAKE_CURRENT_LIST_DIR}/browser.cmake)
set_tests_properties(viewer.cli PROPERTIES TIMEOUT 120)
set_tests_properties(viewer.browser PROPERTIES LABELS viewer TIMEOUT 180)
# The host's JSON reader, compiled into the folder's gtest executable.
target_sources(test_viewer PRIVATE ${PROJECT_SOURCE_DIR}/app/json_reader.cpp
                                   ${PROJECT_SOURCE_DIR}/app/json_writer.cpp)
target_include_directories(test_viewer PRIVATE ${PROJECT_SOURCE_DIR}/app)
