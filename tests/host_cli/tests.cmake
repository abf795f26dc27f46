# The norvik host against hostile input and failing jobs, group by group: each
# group runs the built host on files made for it and checks the exit status, the
# message, that the inputs are untouched and what became of earlier reports and
# logs (cli.cmake).  All of them run in seconds.
set(host_cli_groups files names outputs molecule parameters accepted failures convergence
                    large plots mp2)
list(APPEND host_cli_groups friendly)
foreach(group IN LISTS host_cli_groups)
  add_test(NAME host_cli.${group}
    COMMAND ${CMAKE_COMMAND} -DNORVIK=$<TARGET_FILE:norvik_host>
            -DDATA=${CMAKE_CURRENT_LIST_DIR}/data -DEXAMPLES=${PROJECT_SOURCE_DIR}/examples
            -DWORK=${CMAKE_CURRENT_BINARY_DIR}/host_cli/${group}
            -P ${CMAKE_CURRENT_LIST_DIR}/${group}.cmake)
  set_tests_properties(host_cli.${group} PROPERTIES TIMEOUT 300
    ENVIRONMENT "OMP_NUM_THREADS=2;OMP_WAIT_POLICY=passive")
endforeach()

# The live status line (progress.cmake): a few seconds of one small job.
add_test(NAME host_cli.progress
  COMMAND ${CMAKE_COMMAND} -DNORVIK=$<TARGET_FILE:norvik_host>
          -DDATA=${CMAKE_CURRENT_LIST_DIR}/data -DEXAMPLES=${PROJECT_SOURCE_DIR}/examples
          -DWORK=${CMAKE_CURRENT_BINARY_DIR}/host_cli/progress
          -P ${CMAKE_CURRENT_LIST_DIR}/progress.cmake)
set_tests_properties(host_cli.progress PROPERTIES TIMEOUT 300
  ENVIRONMENT "OMP_NUM_THREADS=2;OMP_WAIT_POLICY=passive")
