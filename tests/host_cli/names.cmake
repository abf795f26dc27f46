# File names that the library cannot take (it pads them with blanks to 120
# characters and trims the blanks), and the command line itself.
include(${CMAKE_CURRENT_LIST_DIR}/cli.cmake)
file(WRITE ${WORK}/out.report "an earlier report\n")

# A trailing blank would be trimmed: the report would go to out.report.
run(report_trailing_blank STATUS 2 ARGS run water.mol --report "out.report "
    STDERR "the report name 'out.report ' ends in a blank")
run(log_trailing_blank STATUS 2 ARGS run water.mol --log "out.log "
    STDERR "the run log name 'out.log ' ends in a blank")
file(COPY_FILE ${WORK}/water.mol "${WORK}/blank.mol ")
run(molecule_trailing_blank STATUS 2 ARGS run "blank.mol "
    STDERR "the molecule file name 'blank.mol ' ends in a blank")
run(control_character STATUS 2 ARGS run water.mol --report "a\tb.report"
    STDERR "holds a control character")

# 120 characters for an input; an output leaves room for ".partial".
string(REPEAT "r" 106 stem)
run(report_name_too_long STATUS 2 ARGS run water.mol --report ${stem}.report
    STDERR "is longer than the 112 characters the library takes")
string(REPEAT "m" 117 stem)
run(molecule_name_too_long STATUS 2 ARGS run ${stem}.mol
    STDERR "is longer than the 120 characters the library takes")

# The command line.
run(no_arguments STATUS 2 ARGS STDERR "usage: norvik run")
run(help STATUS 0 ARGS --help STDOUT "Exit status:" "3  the SCF did not converge")
run(unknown_option STATUS 2 ARGS run water.mol --repot x STDERR "unknown option '--repot'")
run(unknown_command STATUS 2 ARGS chek water.mol STDERR "unknown command 'chek'")
run(option_without_name STATUS 2 ARGS run water.mol --log STDERR "--log needs a file name")
run(three_files STATUS 2 ARGS run water.mol hf.par ks.par STDERR "usage:")
# Excited states per spin type: a whole number from 1 to 200.
foreach(bad 0 201 3x -2)
  run(states_${bad} STATUS 2 ARGS run water.mol --states ${bad}
      STDERR "--states ${bad}: give a whole number of states per spin type from 1 to 200")
endforeach()
run(states_without_number STATUS 2 ARGS run water.mol --states STDERR "--states needs a number")

# Empty names (run() cannot pass an empty argument through its list).
foreach(args "water.mol;--log;" "water.mol;")
  list(GET args 0 molecule)
  if(args MATCHES "--log")
    set(expected "the run log name is empty")
    execute_process(COMMAND ${NORVIK} run ${molecule} --log "" WORKING_DIRECTORY ${WORK}
                    ERROR_VARIABLE err RESULT_VARIABLE rc)
  else()
    set(expected "the parameter file name is empty")
    execute_process(COMMAND ${NORVIK} run ${molecule} "" WORKING_DIRECTORY ${WORK}
                    ERROR_VARIABLE err RESULT_VARIABLE rc)
  endif()
  string(FIND "${err}" "${expected}" at)
  if(NOT rc EQUAL 2 OR at EQUAL -1)
    message(FATAL_ERROR "empty name: status ${rc}, expected 2 and '${expected}':\n${err}")
  endif()
endforeach()
