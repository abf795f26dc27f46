# Orbital tables and cube files: what the options ask for lands in the report
# and in PREFIX.WHAT.cube; a request the molecule cannot meet stops the job
# before anything is written over.
include(${CMAKE_CURRENT_LIST_DIR}/cli.cmake)

variant(w.mol water.mol "6-31Gxx" "STO-3G")
variant(shells.mol w.mol "\nnone\n# ghost" "\nshells\n# ghost")

run(bad_item STATUS 2 ARGS run w.mol --cube homo,hom
    STDERR "--cube: 'hom' is not a cube to write")
run(twice STATUS 2 ARGS run w.mol --cube homo,homo STDERR "'homo' is asked for twice")
run(bad_step STATUS 2 ARGS run w.mol --cube homo --cube-step 0 STDERR "--cube-step 0")

# An earlier cube survives a request for an orbital that water does not have.
file(WRITE ${WORK}/w.homo-5.cube "an earlier cube\n")
run(no_such_orbital STATUS 2 ARGS run w.mol --cube homo-5
    STDERR "--cube homo-5: the molecule has orbitals 1 to 7 (HOMO 5)" "nothing was computed"
    CREATES w.report.partial w.log.partial w.json.partial w.molden.partial w.homo-5.cube.partial)
file(REMOVE ${WORK}/w.homo-5.cube ${WORK}/w.report.partial ${WORK}/w.log.partial
     ${WORK}/w.json.partial ${WORK}/w.molden.partial ${WORK}/w.homo-5.cube.partial)

# A coarse box keeps the files small: 0.5 A steps, at most 4000 points.
run(cubes STATUS 0 ARGS run shells.mol --orbitals --cube homo,lumo+1,density,3 --cube-prefix pic
    --cube-step 0.5 --cube-points 4000
    STDOUT "cube homo written to pic.homo.cube" "cube density written to pic.density.cube"
    CREATES shells.report shells.log shells.json shells.molden shells.html pic.homo.cube pic.lumo+1.cube
            pic.density.cube pic.3.cube)
expect_in(shells.json "\"cubes\": [\n      {\n        \"what\": \"homo\",\n        \"path\": \"pic.homo.cube\"\n      },")
expect_in(pic.homo.cube "water\nnorvik orbital 5 (alpha) [bohr**-3/2]\n   -3")
expect_in(pic.lumo+1.cube "\n    1    7\n")
expect_in(pic.density.cube "water\nnorvik total density [e/bohr**3]\n    3")
expect_in(shells.report "#  Mulliken shell populations [e]")
expect_in(shells.report "#     1 O        2sp")
expect_in(shells.report "#  Electric quadrupole moment about the centre of nuclear charge")
expect_in(shells.report "#  Orbitals around the gap: energies [eV] and LCAO coefficients")
expect_in(shells.report "LUMO+1")
# The box grew its step to stay under the limit: fewer than 4000 points.
file(STRINGS ${WORK}/pic.homo.cube counts REGEX "^ +[0-9]+ +[0-9.]+ +0.000000 +0.000000$")
list(GET counts 0 first)
string(REGEX MATCH "^ +([0-9]+)" m "${first}")
if(CMAKE_MATCH_1 GREATER 16)
  message(FATAL_ERROR "the box was not widened: ${first}")
endif()

run(all_orbitals STATUS 0 ARGS run w.mol --orbitals all --report all.report --log all.log
    CREATES all.report all.log w.json w.molden w.html)
expect_in(all.report "#  Molecular orbitals: energies [eV] and LCAO coefficients")
