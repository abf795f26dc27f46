# Live progress: with --progress (or on a terminal) the host keeps one status line
# on standard error while the job runs, rewritten in place and cleared at the end:
# the SCF cycles, the optimisation cycles with their largest gradient component,
# and the Hessian's displaced coordinates.  The files are the same with and
# without it, and a job whose standard error is no terminal shows nothing.
include(${CMAKE_CURRENT_LIST_DIR}/cli.cmake)
string(ASCII 27 esc)
set(clear "\r${esc}[K")

# Water, HF/STO-3G: a quasi-Newton optimisation of at most 5 cycles (it takes 4),
# then its modes.  The Hessian's progress file goes to TMPDIR and is removed.
file(COPY ${EXAMPLES}/water-freq.mol DESTINATION ${WORK})
variant(a.mol water-freq.mol "\n6-31Gx\n" "\nSTO-3G\n")
variant(b.mol a.mol "water 30" "water 5")
variant(w.mol b.mol "\n2\n# start-density" "\n1\n# start-density")
file(REMOVE ${WORK}/a.mol ${WORK}/b.mol)
file(MAKE_DIRECTORY ${WORK}/tmp)
set(ENV{TMPDIR} ${WORK}/tmp)
set(outputs w.report w.log w.xyz w.modes.xyz w.modes.molden w.ir.dat)

execute_process(COMMAND ${NORVIK} run w.mol --progress WORKING_DIRECTORY ${WORK} TIMEOUT 60
                OUTPUT_VARIABLE out ERROR_VARIABLE err RESULT_VARIABLE rc)
set(said "\n--- stdout:\n${out}--- stderr:\n${err}")
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "--progress: exit status ${rc}${said}")
endif()
# Every phase is drawn at least once, however fast it ran; the last cycle with
# the largest gradient component that the job's summary gives.
if(NOT out MATCHES "converged after ([0-9]+) cycles: .* component ([0-9.e+-]+) eV/A")
  message(FATAL_ERROR "--progress: no optimisation summary${said}")
endif()
foreach(expected "\rnorvik: 0:0" "optimisation cycle 1 (max 5), largest gradient "
                 "optimisation cycle ${CMAKE_MATCH_1} (max 5), largest gradient ${CMAKE_MATCH_2} eV/A | SCF cycle "
                 ", dE " ", RMS density change " "Hessian: 6 of 6 displaced coordinates, ")
  string(FIND "${err}" "${expected}" at)
  if(at EQUAL -1)
    message(FATAL_ERROR "--progress: no '${expected}' on standard error${said}")
  endif()
endforeach()
# Only the status line: no line of its own, and gone at the end.
string(FIND "${err}" "\n" newline)
string(LENGTH "${err}" length)
string(LENGTH "${clear}" clear_length)
math(EXPR tail "${length} - ${clear_length}")
string(SUBSTRING "${err}" ${tail} -1 last)
if(NOT newline EQUAL -1 OR NOT last STREQUAL clear)
  message(FATAL_ERROR "--progress: standard error is more than the cleared status line${said}")
endif()
file(GLOB scratch ${WORK}/tmp/*)
if(scratch)
  message(FATAL_ERROR "--progress left ${scratch} behind")
endif()

# Without the option and with standard error in a pipe: nothing on standard
# error (run checks it) and the very same report and log.
run(quiet STATUS 0 ARGS run w.mol --report q.report --log q.log --xyz q.xyz --vib q
    CHANGES w.json w.molden w.html
    CREATES ${outputs} q.report q.log q.xyz q.modes.xyz q.modes.molden q.ir.dat)
foreach(kind report log xyz)
  file(SHA256 ${WORK}/w.${kind} with)
  file(SHA256 ${WORK}/q.${kind} without)
  if(NOT with STREQUAL without)
    message(FATAL_ERROR "w.${kind} and q.${kind} differ: the status line changed the job")
  endif()
endforeach()

# On a terminal (script gives the job a pseudo-terminal) the line is there
# unasked, and --no-progress takes it away.
find_program(SCRIPT script)
if(SCRIPT)
  foreach(mode shown no-progress)
    set(option)
    if(mode STREQUAL "no-progress")
      set(option --no-progress)
    endif()
    execute_process(
      COMMAND ${SCRIPT} -q -e -c "${NORVIK} run w.mol ${option} --report t.report --log t.log --xyz t.xyz --vib t" /dev/null
      WORKING_DIRECTORY ${WORK} TIMEOUT 60 INPUT_FILE /dev/null OUTPUT_VARIABLE tty
      RESULT_VARIABLE rc)
    string(FIND "${tty}" "Hessian: 6 of 6" hessian)
    string(FIND "${tty}" "norvik: report written to t.report" done)
    set(shown shown)
    if(hessian EQUAL -1)
      set(shown no-progress)
    endif()
    if(NOT rc EQUAL 0 OR done EQUAL -1 OR NOT shown STREQUAL mode)
      message(FATAL_ERROR "on a terminal (${mode}): status ${rc}\n${tty}")
    endif()
  endforeach()
endif()

# A single point that runs out of cycles (status 3): its last SCF cycle with the
# energy, which an optimisation's line leaves out.
parameters(three.par hf.par 6 "64 3")
run(single_point STATUS 3 ARGS run water.mol three.par --progress
    STDERR "SCF cycle 3, E -20" ", dE -" ", RMS density change " "${clear}"
    STDOUT "norvik: SCF not converged in 3 cycles" CREATES water.report water.log water.json
    water.molden water.html)
