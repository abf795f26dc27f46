cmake_minimum_required(VERSION 3.25)
# One fuzz.<target> test: runs a libFuzzer target for SECONDS from the committed
# corpus and fails on any finding (a crash, a sanitizer report, an uncaught
# exception, a failed harness check, an input slower than 30 s or a process
# above 2 GB).  New inputs go to a scratch corpus in the build tree, crashing
# inputs to WORK/artifacts/; the committed corpus is only read.
# Usage: cmake -DFUZZER=<exe> -DCORPUS=<dir> -DDICTIONARY=<file> -DWORK=<dir>
#              -DSECONDS=<n> -P run_fuzzer.cmake
file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK}/corpus ${WORK}/artifacts)
set(ENV{UBSAN_OPTIONS} "print_stacktrace=1:$ENV{UBSAN_OPTIONS}")
execute_process(
  COMMAND ${FUZZER} -max_total_time=${SECONDS} -timeout=30 -rss_limit_mb=2048
          -dict=${DICTIONARY} -artifact_prefix=${WORK}/artifacts/ -print_final_stats=1
          ${WORK}/corpus ${CORPUS}
  RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
file(WRITE ${WORK}/fuzzer.log "${out}${err}")
file(GLOB artifacts ${WORK}/artifacts/*)
string(REGEX MATCH "stat::number_of_executed_units: *[0-9]+" runs "${err}")
string(REGEX REPLACE ".*: *" "" runs "${runs}")
if(NOT rc EQUAL 0 OR artifacts)
  # The report is at the end of libFuzzer's output, after its progress lines.
  string(LENGTH "${err}" length)
  if(length GREATER 20000)
    math(EXPR start "${length} - 20000")
    string(SUBSTRING "${err}" ${start} -1 err)
  endif()
  message("${err}")
  message(FATAL_ERROR "${FUZZER} found a fault (exit status ${rc}); the input is in "
                      "${WORK}/artifacts/, the whole log in ${WORK}/fuzzer.log")
endif()
message(STATUS "${runs} inputs in ${SECONDS} s, no finding")
