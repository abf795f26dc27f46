# Runs a table generator into the build tree and compares with the committed file.
execute_process(COMMAND /usr/bin/python3 ${GENERATOR} ${OUTPUT} RESULT_VARIABLE status)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "generator ${GENERATOR} failed (${status})")
endif()
execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files ${OUTPUT} ${COMMITTED}
                RESULT_VARIABLE differ)
if(NOT differ EQUAL 0)
  message(FATAL_ERROR "${COMMITTED} differs from what ${GENERATOR} makes")
endif()
