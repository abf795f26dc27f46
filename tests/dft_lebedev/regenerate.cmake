cmake_minimum_required(VERSION 3.25)
# Regenerates the Lebedev tables into a scratch folder and compares them byte for
# byte with the committed ones.  Usage:
#   cmake -DPYTHON=<python3> -DSOURCE=<repo> -DDATA=<orbits.txt dir> -DOUT=<scratch> -P regenerate.cmake
file(REMOVE_RECURSE ${OUT})
execute_process(
  COMMAND ${PYTHON} ${SOURCE}/tools/dft/generate.py --data ${DATA} --out ${OUT}
  RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "tools/dft/generate.py failed (${rc})")
endif()
set(file src/dft/generated/lebedev_tables.cpp)
execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files ${SOURCE}/${file} ${OUT}/${file}
                RESULT_VARIABLE same)
if(NOT same EQUAL 0)
  message(FATAL_ERROR "${file} differs from what the generator makes: run tools/dft/generate.py")
endif()
