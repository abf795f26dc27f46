cmake_minimum_required(VERSION 3.25)
# Runs clang-format --dry-run -Werror over every hand-written .c/.cpp/.h file and
# fails with the names of the files it would change.  The file list is taken when
# the test runs, so new files are checked without reconfiguring.
# Usage: cmake -DCLANG_FORMAT=<clang-format> -DSOURCE=<repo> -P check_format.cmake
set(files "")
foreach(dir src app tests bench include fuzz)
  file(GLOB_RECURSE found LIST_DIRECTORIES false
       ${SOURCE}/${dir}/*.c ${SOURCE}/${dir}/*.cpp ${SOURCE}/${dir}/*.h)
  list(APPEND files ${found})
endforeach()
list(FILTER files EXCLUDE REGEX "/generated/")
list(SORT files)
list(LENGTH files count)
if(count EQUAL 0)
  message(FATAL_ERROR "no sources found under ${SOURCE}")
endif()

execute_process(COMMAND ${CLANG_FORMAT} --style=file --dry-run -Werror ${files}
                WORKING_DIRECTORY ${SOURCE}
                RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
if(rc EQUAL 0)
  message(STATUS "${count} files formatted as .clang-format asks")
  return()
endif()

# One diagnostic per violation, "<file>:<line>:<column>: error: code should be
# clang-formatted"; report each file once, relative to the repository.
string(REGEX MATCHALL "[^\n]+:[0-9]+:[0-9]+: error: code should be clang-formatted" hits "${err}")
set(bad "")
foreach(hit IN LISTS hits)
  string(REGEX REPLACE ":[0-9]+:[0-9]+: error: .*$" "" path "${hit}")
  file(RELATIVE_PATH path ${SOURCE} ${path})
  list(APPEND bad ${path})
endforeach()
list(REMOVE_DUPLICATES bad)
if(NOT bad)
  message(FATAL_ERROR "clang-format failed (${rc}):\n${err}${out}")
endif()
list(LENGTH bad nbad)
list(JOIN bad "\n  " listing)
message(FATAL_ERROR "${nbad} of ${count} files are not clang-formatted "
                    "(clang-format -i FILE ... fixes them):\n  ${listing}")
