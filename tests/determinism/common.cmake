# Helpers of the determinism tests.

# Runs the host on `mol` with PAR in `dir` (started afresh); the standard output in `var`.
function(run_job dir mol var)
  file(REMOVE_RECURSE ${dir})
  file(MAKE_DIRECTORY ${dir})
  execute_process(COMMAND ${NORVIK} run ${mol} ${PAR} --report job.report --log job.log
                  WORKING_DIRECTORY ${dir} OUTPUT_VARIABLE out ERROR_VARIABLE err
                  RESULT_VARIABLE rc)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "norvik ended with status ${rc} in ${dir}:\n${out}${err}")
  endif()
  set(${var} "${out}" PARENT_SCOPE)
endfunction()

# Requires the energy line to name the route: stored or direct.
function(check_route out route)
  if(NOT out MATCHES "E\\([RU]HF\\) = -?[0-9.]+ hartree \\(([a-z -]+),")
    message(FATAL_ERROR "no energy line in:\n${out}")
  endif()
  set(names_stored "stored integrals")
  set(names_direct "integral-direct")
  if(NOT CMAKE_MATCH_1 STREQUAL "${names_${route}}")
    message(FATAL_ERROR "expected the ${route} route, got ${CMAKE_MATCH_1}")
  endif()
endfunction()

# Removes the time stamps: the progress lines end in the local time as
# "hh:mm:ss mm/dd", each field two characters wide (' 1: 3:28 11/23').  Only a
# time (with or without the date) at the end of a line is taken out.
function(strip_time_stamps text var)
  set(d "[ 0-9][0-9]")
  string(REGEX REPLACE "${d}:${d}:${d}( ${d}/${d})?\n" "<time>\n" text "${text}")
  set(${var} "${text}" PARENT_SCOPE)
endfunction()

# The first line in which two texts differ, both versions, for the failure message.
function(first_difference a b var)
  set(line 1)
  while(1)
    string(FIND "${a}" "\n" ea)
    string(FIND "${b}" "\n" eb)
    if(ea EQUAL -1 OR eb EQUAL -1)
      set(${var} "line ${line}:\n  ${a}\n  ${b}" PARENT_SCOPE)
      return()
    endif()
    string(SUBSTRING "${a}" 0 ${ea} x)
    string(SUBSTRING "${b}" 0 ${eb} y)
    if(NOT x STREQUAL y)
      set(${var} "line ${line}:\n  ${x}\n  ${y}" PARENT_SCOPE)
      return()
    endif()
    math(EXPR ea "${ea} + 1")
    math(EXPR eb "${eb} + 1")
    string(SUBSTRING "${a}" ${ea} -1 a)
    string(SUBSTRING "${b}" ${eb} -1 b)
    math(EXPR line "${line} + 1")
  endwhile()
endfunction()
