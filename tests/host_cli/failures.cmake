# A failing run leaves the earlier report and log of that name byte for byte as
# they were, keeps what it wrote under the partial names, and says so on
# standard error; the next run that has a result replaces both.
include(${CMAKE_CURRENT_LIST_DIR}/cli.cmake)
file(WRITE ${WORK}/water.report "an earlier report\n")
file(WRITE ${WORK}/water.log "an earlier log\n")
set(names --report water.report --log water.log)

# An input problem found by the host: nothing is written at all.
variant(hex.mol water.mol "\nH    0.000000000   -0.757200000" "\nHex  0.000000000   -0.757200000")
run(host_setup_error STATUS 2 ARGS run hex.mol ${names}
    STDERR "'Hex' is not an element symbol" "nothing was run")

# A setup error of the library (an impossible multiplicity): empty partial files.
variant(doublet.mol water.mol "\n1\n# atoms" "\n2\n# atoms")
run(library_setup_error STATUS 1 ARGS run doublet.mol ${names}
    STDOUT " Invalid combination in Nelectron."
    STDERR "norvik: the library stopped the job (exit status 1):"
           " Invalid combination in Nelectron."
           "water.report, water.log, doublet.json and doublet.molden were not touched"
           "what the job wrote is in water.report.partial, water.log.partial, doublet.json.partial and doublet.molden.partial"
    CREATES water.report.partial water.log.partial doublet.json.partial doublet.molden.partial)

# A fatal error after the header (6-31+G has no krypton): the partial report
# holds the header, the earlier report is untouched.
variant(kr.mol water.mol "O    0.000000000    0.000000000    0.117300000\nH    0.000000000    0.757200000   -0.469200000\nH    0.000000000   -0.757200000   -0.469200000" "Kr 0.0 0.0 0.0")
variant(kr.mol kr.mol "\n6-31Gxx\n" "\n6-31+G\n")
run(library_fatal_after_header STATUS 1 ARGS run kr.mol ${names}
    STDOUT "1 atoms, 18 + 18 electrons" " Zatom exceed limit in ZatmNSHL_631TG."
    STDERR " Zatom exceed limit in ZatmNSHL_631TG."
           "water.report, water.log, kr.json and kr.molden were not touched"
    CHANGES water.report.partial water.log.partial
    CREATES kr.json.partial kr.molden.partial)
expect_in(water.report.partial "#  Number of atoms: 1")
expect_in(water.log.partial "# iopt isrc iscf")

# A run with a result replaces the report and the log and leaves no partial file.
run(success STATUS 0 ARGS run water.mol ${names}
    STDOUT "E(RHF) = -76.022611061 hartree" "report written to water.report"
    CHANGES water.report water.log water.report.partial water.log.partial
    CREATES water.json water.molden water.html)
foreach(gone water.report.partial water.log.partial)
  if(EXISTS ${WORK}/${gone})
    message(FATAL_ERROR "${gone} is left after a successful run")
  endif()
endforeach()
expect_in(water.report "Molecule: water")
