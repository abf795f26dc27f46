cmake_minimum_required(VERSION 3.25)
# Regenerates the basis-set tables into a scratch folder and compares them byte
# for byte with the committed ones.  Usage:
#   cmake -DPYTHON=<python3> -DSOURCE=<repo> -DDATA=<json dir> -DOUT=<scratch> -P regenerate.cmake
file(REMOVE_RECURSE ${OUT})
execute_process(
  COMMAND ${PYTHON} ${SOURCE}/tools/basis/generate.py --data ${DATA} --out ${OUT}
  RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "tools/basis/generate.py failed (${rc})")
endif()
set(files
    src/basis/generated/basis_631g_tables.h
    src/basis/generated/basis_631g_tables.cpp
    src/basis/generated/basis_321g_tables.cpp
    src/basis/generated/basis_sto3g_tables.cpp
    abi/manifest/basis.txt)
set(failures 0)
foreach(file IN LISTS files)
  execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files ${SOURCE}/${file} ${OUT}/${file}
                  RESULT_VARIABLE same)
  if(NOT same EQUAL 0)
    message(SEND_ERROR "${file} differs from what the generator makes")
    math(EXPR failures "${failures} + 1")
  endif()
endforeach()
if(failures GREATER 0)
  message(FATAL_ERROR "${failures} generated basis file(s) out of date: run tools/basis/generate.py")
endif()
