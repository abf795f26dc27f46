# Every table of src/integrals/generated/ (Rys grids and the Boys table) and the
# Rys root/weight vectors must be exactly what tools/integrals/generate.py
# writes: regenerate into the build tree and compare byte for byte.
add_test(NAME integrals_tables_regenerate
  COMMAND ${CMAKE_COMMAND}
    -D PYTHON=/usr/bin/python3
    -D SOURCE_DIR=${PROJECT_SOURCE_DIR}
    -D WORK_DIR=${CMAKE_CURRENT_BINARY_DIR}/integrals_regenerated
    -D WHAT=tables
    -P ${CMAKE_CURRENT_LIST_DIR}/regenerate.cmake)
set_tests_properties(integrals_tables_regenerate PROPERTIES LABELS "generator" TIMEOUT 600)

# The McMurchie-Davidson reference vectors take a few minutes in mpmath.
add_test(NAME rys_reference_vectors_regenerate
  COMMAND ${CMAKE_COMMAND}
    -D PYTHON=/usr/bin/python3
    -D SOURCE_DIR=${PROJECT_SOURCE_DIR}
    -D WORK_DIR=${CMAKE_CURRENT_BINARY_DIR}/rys_reference_regenerated
    -D WHAT=reference
    -P ${CMAKE_CURRENT_LIST_DIR}/regenerate.cmake)
set_tests_properties(rys_reference_vectors_regenerate PROPERTIES LABELS "generator;slow" TIMEOUT 1800)
