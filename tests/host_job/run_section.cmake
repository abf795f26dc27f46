cmake_minimum_required(VERSION 3.25)
# Runs one whole job with the norvik host and compares the end of its report, from
# the "#" line before the first line that starts with TITLE, byte for byte with a
# file of expected lines:
#   -DNORVIK -DMOL -DPAR -DWORKDIR -DTITLE (text) -DEXPECTED (file)
#   [-DOPTIONS=list: more arguments of the run, e.g. --fragments;0,1,1,1]
file(MAKE_DIRECTORY ${WORKDIR})
execute_process(COMMAND ${NORVIK} run ${MOL} ${PAR} --report job.report --log job.log ${OPTIONS}
                WORKING_DIRECTORY ${WORKDIR} OUTPUT_VARIABLE out ERROR_VARIABLE err
                RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "norvik ended with status ${rc}:\n${out}${err}")
endif()
file(READ ${WORKDIR}/job.report report)
string(FIND "${report}" "\n${TITLE}" at)
if(at LESS 2)
  message(FATAL_ERROR "no line starting with '${TITLE}' in the report")
endif()
# Back to the section's opening "#" line.
math(EXPR at "${at} - 1")
string(SUBSTRING "${report}" ${at} -1 tail)
file(READ ${EXPECTED} expected)
if(NOT tail STREQUAL expected)
  file(WRITE ${WORKDIR}/section.txt "${tail}")
  message(FATAL_ERROR "the report's section differs from ${EXPECTED}; it is in "
                      "${WORKDIR}/section.txt")
endif()
