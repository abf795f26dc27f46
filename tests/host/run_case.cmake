cmake_minimum_required(VERSION 3.25)
# Runs one host scenario and compares its exit status and standard output with
# the expected ones.  -DPROGRAM -DARGS (;-list) -DWORKDIR -DEXPECT_RC -DEXPECT_FILE
execute_process(COMMAND ${PROGRAM} ${ARGS} WORKING_DIRECTORY ${WORKDIR}
                OUTPUT_VARIABLE out RESULT_VARIABLE rc)
file(READ ${EXPECT_FILE} expected)
if(NOT rc STREQUAL EXPECT_RC)
  message(FATAL_ERROR "exit status ${rc}, expected ${EXPECT_RC}; output:\n${out}")
endif()
if(NOT out STREQUAL expected)
  file(WRITE ${WORKDIR}/actual.txt "${out}")
  message(FATAL_ERROR "output differs from ${EXPECT_FILE}; see ${WORKDIR}/actual.txt:\n${out}")
endif()
