# Regenerates the integrals tables and the Rys root/weight vectors (WHAT=tables)
# or the reference integral vectors (WHAT=reference) into WORK_DIR and compares
# them byte for byte with the committed files.  Run by ctest (see tests.cmake).
file(REMOVE_RECURSE ${WORK_DIR})
file(MAKE_DIRECTORY ${WORK_DIR})

function(run)
  execute_process(COMMAND ${PYTHON} ${ARGN} RESULT_VARIABLE status)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "generator failed: ${ARGN}")
  endif()
endfunction()

function(same generated committed)
  execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files ${generated} ${committed}
                  RESULT_VARIABLE status)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "${committed} differs from its regeneration ${generated}")
  endif()
endfunction()

if(WHAT STREQUAL "tables")
  run(${SOURCE_DIR}/tools/integrals/generate.py --output-dir ${WORK_DIR})
  run(${SOURCE_DIR}/tools/integrals/generate.py --vectors ${WORK_DIR}/rys_roots.txt)
  foreach(name rysgrid.h rysgrid.cpp boys_table.h)
    same(${WORK_DIR}/${name} ${SOURCE_DIR}/src/integrals/generated/${name})
  endforeach()
  same(${WORK_DIR}/rys_roots.txt ${SOURCE_DIR}/tests/rys/data/rys_roots.txt)
else()
  run(${SOURCE_DIR}/tools/reference/reference_integrals.py --output-dir ${WORK_DIR})
  foreach(name eri_reference.txt eri_reference_high.txt one_electron_reference.txt)
    same(${WORK_DIR}/${name} ${SOURCE_DIR}/tests/rys/data/${name})
  endforeach()
endif()
