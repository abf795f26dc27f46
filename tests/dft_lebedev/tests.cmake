# The published Lebedev-Laikov rules that the generated tables come from, and the
# check that the committed tables are exactly what the generator makes of them.
# The data live beside the repository (../shared/data); a checkout elsewhere can
# point the cache variable at them.
set(_lebedev_data "${PROJECT_SOURCE_DIR}/../shared/data/lebedev")
if(NOT EXISTS ${_lebedev_data})
  set(_lebedev_data "/work/shared/data/lebedev")
endif()
set(NORVIK_LEBEDEV_DATA_DIR "${_lebedev_data}" CACHE PATH
    "Folder of the published Lebedev-Laikov orbit lists (tools/dft/generate.py input)")

find_program(NORVIK_SYSTEM_PYTHON NAMES python3 PATHS /usr/bin NO_DEFAULT_PATH)
if(NORVIK_SYSTEM_PYTHON AND EXISTS ${NORVIK_LEBEDEV_DATA_DIR}/orbits.txt)
  add_test(NAME lebedev_tables_regenerate
    COMMAND ${CMAKE_COMMAND} -DPYTHON=${NORVIK_SYSTEM_PYTHON} -DSOURCE=${PROJECT_SOURCE_DIR}
            -DDATA=${NORVIK_LEBEDEV_DATA_DIR} -DOUT=${CMAKE_CURRENT_BINARY_DIR}/lebedev_regenerated
            -P ${CMAKE_CURRENT_LIST_DIR}/regenerate.cmake)
  set_tests_properties(lebedev_tables_regenerate PROPERTIES LABELS generator)
else()
  message(STATUS "lebedev: no published data at ${NORVIK_LEBEDEV_DATA_DIR}; regeneration test skipped")
endif()
