cmake_minimum_required(VERSION 3.25)
# What every group of host scenarios shares.  A group runs in its own folder,
# WORK, which starts empty; -DNORVIK (the host), -DDATA (tests/host_cli/data),
# -DEXAMPLES (examples/) and -DWORK come from tests.cmake.
file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK})
file(COPY ${EXAMPLES}/water.mol ${EXAMPLES}/hf.par ${EXAMPLES}/ks.par
          ${EXAMPLES}/water-b3lyp.mol DESTINATION ${WORK})

# Writes WORK/<out>: WORK/<source> with <old> replaced by <new> (which must occur).
function(variant out source old new)
  file(READ ${WORK}/${source} text)
  string(FIND "${text}" "${old}" at)
  if(at EQUAL -1)
    message(FATAL_ERROR "variant ${out}: '${old}' is not in ${source}")
  endif()
  string(REPLACE "${old}" "${new}" text "${text}")
  file(WRITE ${WORK}/${out} "${text}")
endfunction()

# WORK/<out>: the parameter file WORK/<source> with record <record> (1-based) replaced.
function(parameters out source record line)
  file(STRINGS ${WORK}/${source} lines)
  math(EXPR i "${record} - 1")
  list(REMOVE_AT lines ${i})
  list(INSERT lines ${i} "${line}")
  list(JOIN lines "\n" text)
  file(WRITE ${WORK}/${out} "${text}\n")
endfunction()

# The regular files of WORK (not its sub-folders) with their SHA-256, as
# "name|hash" entries.
function(snapshot var)
  file(GLOB names LIST_DIRECTORIES false RELATIVE ${WORK} ${WORK}/* ${WORK}/.*)
  set(entries)
  foreach(name IN LISTS names)
    file(SHA256 "${WORK}/${name}" hash)
    list(APPEND entries "${name}|${hash}")
  endforeach()
  set(${var} "${entries}" PARENT_SCOPE)
endfunction()

# run(<case> STATUS <n> ARGS <arg>... [STDERR <text>...] [STDOUT <text>...]
#     [CHANGES <file>...] [CREATES <file>...] [TIMEOUT <s>])
# Runs the host in WORK and checks: the exit status; that every text occurs in
# its stream (no stderr at all for a status 0 or 3 without STDERR texts); that
# every file that was in WORK before is byte for byte the same unless listed
# in CHANGES (inputs and earlier reports survive); that no file appeared
# but those in CREATES; and that every JSON result in WORK parses.
function(run case)
  cmake_parse_arguments(PARSE_ARGV 1 R "" "STATUS;TIMEOUT" "ARGS;STDERR;STDOUT;CHANGES;CREATES")
  if(NOT R_TIMEOUT)
    set(R_TIMEOUT 60)
  endif()
  snapshot(before)
  execute_process(COMMAND ${NORVIK} ${R_ARGS} WORKING_DIRECTORY ${WORK} TIMEOUT ${R_TIMEOUT}
                  OUTPUT_VARIABLE out ERROR_VARIABLE err RESULT_VARIABLE rc)
  set(said "\n--- stdout:\n${out}--- stderr:\n${err}")
  if(NOT rc STREQUAL R_STATUS)
    message(FATAL_ERROR "${case}: exit status ${rc}, expected ${R_STATUS}${said}")
  endif()
  foreach(stream STDERR STDOUT)
    set(text "${out}")
    if(stream STREQUAL "STDERR")
      set(text "${err}")
    endif()
    foreach(expected IN LISTS R_${stream})
      string(FIND "${text}" "${expected}" at)
      if(at EQUAL -1)
        message(FATAL_ERROR "${case}: no '${expected}' on ${stream}${said}")
      endif()
    endforeach()
  endforeach()
  if(NOT R_STDERR AND (rc EQUAL 0 OR rc EQUAL 3) AND NOT err STREQUAL "")
    message(FATAL_ERROR "${case}: unexpected standard error${said}")
  endif()
  snapshot(after)
  set(names_before)
  foreach(entry IN LISTS before)
    string(REGEX REPLACE "\\|[0-9a-f]+$" "" name "${entry}")
    list(APPEND names_before "${name}")
    if(NOT entry IN_LIST after AND NOT name IN_LIST R_CHANGES)
      message(FATAL_ERROR "${case}: '${name}' changed or went away${said}")
    endif()
  endforeach()
  foreach(entry IN LISTS after)
    string(REGEX REPLACE "\\|[0-9a-f]+$" "" name "${entry}")
    if(NOT name IN_LIST names_before AND NOT name IN_LIST R_CREATES)
      message(FATAL_ERROR "${case}: '${name}' appeared${said}")
    endif()
  endforeach()
  # Every JSON result in place must parse.
  foreach(entry IN LISTS after)
    string(REGEX REPLACE "\\|[0-9a-f]+$" "" name "${entry}")
    if(name MATCHES "\\.json$")
      file(READ ${WORK}/${name} json)
      string(JSON kind ERROR_VARIABLE bad TYPE "${json}")
      if(bad OR NOT kind STREQUAL "OBJECT")
        message(FATAL_ERROR "${case}: ${name} is no JSON object: ${bad}")
      endif()
    endif()
  endforeach()
endfunction()

# Fails unless WORK/<file> holds <text>.
function(expect_in file text)
  file(READ ${WORK}/${file} content)
  string(FIND "${content}" "${text}" at)
  if(at EQUAL -1)
    message(FATAL_ERROR "'${text}' is not in ${file}:\n${content}")
  endif()
endfunction()
