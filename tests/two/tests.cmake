# The Boys table is rebuilt by its generator and must match the committed file
# byte for byte.
add_test(NAME two_boys_table_regenerates
  COMMAND ${CMAKE_COMMAND}
    -DGENERATOR=${PROJECT_SOURCE_DIR}/tools/gen_boys_table.py
    -DCOMMITTED=${PROJECT_SOURCE_DIR}/src/integrals/two/generated/boys_table.h
    -DOUTPUT=${CMAKE_CURRENT_BINARY_DIR}/boys_table.h
    -P ${PROJECT_SOURCE_DIR}/tests/two/regenerate.cmake)
