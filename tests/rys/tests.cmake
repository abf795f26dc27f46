# The committed Rys tables and root/weight vectors must be exactly what their
# generator writes: regenerate into the build tree and compare byte for byte.
add_test(NAME rys_generator_identity
  COMMAND ${CMAKE_COMMAND}
    -D PYTHON=/usr/bin/python3
    -D SOURCE_DIR=${PROJECT_SOURCE_DIR}
    -D WORK_DIR=${CMAKE_CURRENT_BINARY_DIR}/rys_regenerated
    -D WHAT=tables
    -P ${CMAKE_CURRENT_LIST_DIR}/regenerate.cmake)
set_tests_properties(rys_generator_identity PROPERTIES LABELS "generator" TIMEOUT 600)

# The McMurchie-Davidson reference vectors take a few minutes in mpmath.
add_test(NAME rys_reference_vectors_identity
  COMMAND ${CMAKE_COMMAND}
    -D PYTHON=/usr/bin/python3
    -D SOURCE_DIR=${PROJECT_SOURCE_DIR}
    -D WORK_DIR=${CMAKE_CURRENT_BINARY_DIR}/rys_reference_regenerated
    -D WHAT=reference
    -P ${CMAKE_CURRENT_LIST_DIR}/regenerate.cmake)
set_tests_properties(rys_reference_vectors_identity PROPERTIES LABELS "generator;slow" TIMEOUT 1800)
