# The host sizes the library's atom arrays from the file: a molecule of 1001
# atoms, one more than the capacity the host once had, is set up whole.  The
# basis set lacks the last atom (krypton in 6-31+G), so the library stops right
# after the report header, before any integral, which keeps the test fast.
include(${CMAKE_CURRENT_LIST_DIR}/cli.cmake)
file(READ ${WORK}/water.mol water)
string(FIND "${water}" "O    0.0" at)
string(SUBSTRING "${water}" 0 ${at} head)
string(REPLACE "\n6-31Gxx\n" "\n6-31+G\n" head "${head}")
set(atoms "")
foreach(i RANGE 999)
  math(EXPR x "${i} % 10 * 6")
  math(EXPR y "${i} / 10 % 10 * 6")
  math(EXPR z "${i} / 100 * 6")
  string(APPEND atoms "He ${x}.0 ${y}.0 ${z}.0\n")
endforeach()
file(WRITE ${WORK}/helium.mol "${head}${atoms}Kr 100.0 100.0 100.0\n")
run(atoms_1001 STATUS 1 ARGS run helium.mol
    STDOUT "job 'water': 1001 atoms, 1018 + 1018 electrons"
    STDERR " Zatom exceed limit in ZatmNSHL_631TG."
    CREATES helium.report.partial helium.log.partial helium.json.partial helium.molden.partial)
expect_in(helium.report.partial "#  Number of atoms: 1001")
