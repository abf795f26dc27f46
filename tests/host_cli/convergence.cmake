# How the molecule's SCF ended decides the exit status: 3 when it ran out of
# cycles or stopped on a point that is not a solution, 0 when a fixed number of
# cycles was asked for (both thresholds 0).  The report and log of a run that
# ended with status 3 are in place: it is a result, with its note.
include(${CMAKE_CURRENT_LIST_DIR}/cli.cmake)
set(outputs CREATES water.report water.log water.json water.molden water.html
            CHANGES water.report water.log water.json water.molden water.html)

parameters(three.par hf.par 6 "64 3")
run(out_of_cycles STATUS 3 ARGS run water.mol three.par ${outputs}
    STDOUT "norvik: SCF not converged in 3 cycles (last energy change"
           "raise the molecule's iteration limit in record 6" "report written to water.report"
           "JSON result written to water.json")
# A run that did not converge is a result too: its JSON says so.
expect_in(water.json "  \"success\": false,\n  \"status\": 3,\n")
expect_in(water.json "\"SCF not converged in 3 cycles (last energy change")
expect_in(water.json "\"scf_converged\": false,")

parameters(fixed.par hf.par 6 "64 5")
parameters(fixed.par fixed.par 10 "1.0e-6 0")
parameters(fixed.par fixed.par 12 "1.0e-6 0")
run(fixed_cycles STATUS 0 ARGS run water.mol fixed.par ${outputs}
    STDOUT "norvik: ran the 5 SCF cycles asked for (both molecule thresholds 0)")

# Loose thresholds are met while |FPS-SPF| is still about 1e-2 hartree.
parameters(loose.par hf.par 10 "1.0e-6 1.0e-2")
parameters(loose.par loose.par 12 "1.0e-6 1.0e-2")
run(not_stationary STATUS 3 ARGS run water.mol loose.par ${outputs}
    STDOUT "norvik: the SCF stopped on a point that is not a solution (|FPS-SPF| = ")

run(converged STATUS 0 ARGS run water.mol hf.par ${outputs}
    STDOUT "E(RHF) = -76.022611061 hartree")
