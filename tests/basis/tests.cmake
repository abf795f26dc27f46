# The published basis sets that the generated tables come from, and the check
# that the committed tables are exactly what the generator makes of them.
# The data live beside the repository (../shared/data); a checkout elsewhere can
# point the cache variable at them.
set(_basis_data "${PROJECT_SOURCE_DIR}/../shared/data/basis")
if(NOT EXISTS ${_basis_data})
  set(_basis_data "/work/shared/data/basis")
endif()
set(NORVIK_BASIS_DATA_DIR "${_basis_data}" CACHE PATH
    "Folder of the published basis-set JSON files (tools/basis/generate.py input)")

if(TARGET test_basis)
  target_compile_definitions(test_basis PRIVATE NORVIK_BASIS_JSON_DIR="${NORVIK_BASIS_DATA_DIR}")
endif()

find_program(NORVIK_SYSTEM_PYTHON NAMES python3 PATHS /usr/bin NO_DEFAULT_PATH)
if(NORVIK_SYSTEM_PYTHON AND EXISTS ${NORVIK_BASIS_DATA_DIR})
  add_test(NAME basis_tables_regenerate
    COMMAND ${CMAKE_COMMAND} -DPYTHON=${NORVIK_SYSTEM_PYTHON} -DSOURCE=${PROJECT_SOURCE_DIR}
            -DDATA=${NORVIK_BASIS_DATA_DIR} -DOUT=${CMAKE_CURRENT_BINARY_DIR}/basis_regenerated
            -P ${CMAKE_CURRENT_LIST_DIR}/regenerate.cmake)
  set_tests_properties(basis_tables_regenerate PROPERTIES LABELS generator)
else()
  message(STATUS "basis: no published data at ${NORVIK_BASIS_DATA_DIR}; regeneration test skipped")
endif()
