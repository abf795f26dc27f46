# What the free format allows must pass the host's reading untouched: quotes,
# commas, slashes with remarks, repeat counts, null values, blank records,
# Windows line ends, D exponents.  The job gives the water energy of
# examples/water.mol with examples/hf.par, and its report and log replace the
# earlier ones without leaving a partial file behind.
include(${CMAKE_CURRENT_LIST_DIR}/cli.cmake)
file(COPY ${DATA}/free_format.mol ${DATA}/free_format.par DESTINATION ${WORK})
file(WRITE ${WORK}/free_format.report "an earlier report\n")
file(WRITE ${WORK}/free_format.log "an earlier log\n")
run(free_format STATUS 0 ARGS run free_format.mol free_format.par
    STDOUT "job 'water molecule': 3 atoms, 5 + 5 electrons" "E(RHF) = -76.022611061 hartree"
           "report written to free_format.report"
    CHANGES free_format.report free_format.log CREATES free_format.json free_format.molden free_format.html)
expect_in(free_format.report "Molecule: water molecule")
expect_in(free_format.log "# iopt isrc iscf")

# A molecule name with a double quote and a backslash: the JSON result escapes
# both (and must still parse, which every run checks).
variant(quoted.mol water.mol "\nwater 0\n" "\n'wa\"t\\er' 0\n")
run(quoted_name STATUS 0 ARGS run quoted.mol
    CREATES quoted.report quoted.log quoted.json quoted.molden quoted.html)
expect_in(quoted.json "\"name\": \"wa\\\"t\\\\er\",")
