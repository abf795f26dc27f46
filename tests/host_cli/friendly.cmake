# norvik run FILE.xyz: the molecule and parameter files it writes (byte for
# byte), a repeat from them that gives the same report, what it refuses (a bad
# .xyz file, a name or an option it does not know, a molecule file that is the
# user's own) and what a failing run keeps; norvik check; norvik --version.
include(${CMAKE_CURRENT_LIST_DIR}/cli.cmake)
file(COPY ${EXAMPLES}/water.xyz DESTINATION ${WORK})
set(expected ${DATA}/friendly)

# Fails unless WORK/<file> is byte for byte the file <reference>.
function(same_as file reference)
  execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files ${WORK}/${file} ${reference}
                  RESULT_VARIABLE rc)
  if(NOT rc EQUAL 0)
    file(READ ${WORK}/${file} got)
    message(FATAL_ERROR "${file} is not the same as ${reference}; it holds:\n${got}")
  endif()
endfunction()

# --version and version: one line, the project's version.
foreach(form --version version)
  execute_process(COMMAND ${NORVIK} ${form} OUTPUT_VARIABLE out ERROR_VARIABLE err
                  RESULT_VARIABLE rc)
  if(NOT rc EQUAL 0 OR NOT err STREQUAL "" OR NOT out MATCHES "^norvik [0-9]+\\.[0-9]+\\.[0-9]+\n$")
    message(FATAL_ERROR "norvik ${form}: status ${rc}, stdout '${out}', stderr '${err}'")
  endif()
endforeach()
run(version_extra STATUS 2 ARGS --version x STDERR "--version takes no arguments")

# norvik check: every file checked, one line for each good one, every problem
# of the others; a parameter file alone is refused.
file(RENAME ${WORK}/water.mol ${WORK}/ex.mol)
variant(doublet.mol ex.mol "\n1\n# atoms" "\n2\n# atoms")
variant(lower.mol ex.mol "\nHF\n" "\nb3lyp\n")
file(WRITE ${WORK}/hcl.xyz "H 0 0 0\nCL 0 0 1.27\n")
# Windows line ends, an atomic number, a Fortran exponent and an extra column.
file(WRITE ${WORK}/crlf.xyz "2\r\nhydrogen fluoride\r\n9 0 0 0\r\nH 0 0 0.92D0 0.4\r\n")
run(check_good STATUS 0
    ARGS check ex.mol hf.par water.xyz hcl.xyz crlf.xyz --method b3lyp --basis 6-31+G**
    STDOUT "norvik: ex.mol with hf.par: fine (HF / 6-31Gxx, 3 atoms, 10 electrons)"
           "norvik: water.xyz: fine (B3LYP / 6-31+Gxx, 3 atoms, 10 electrons)"
           "norvik: hcl.xyz: fine (B3LYP / 6-31+Gxx, 2 atoms, 18 electrons)"
           "norvik: crlf.xyz: fine (B3LYP / 6-31+Gxx, 2 atoms, 10 electrons)")
run(check_bad STATUS 2 ARGS check doublet.mol lower.mol ex.mol
    STDOUT "norvik: ex.mol: fine"
    STDERR "norvik: doublet.mol, record 22 (multiplicity): multiplicity 2 does not fit 10 electrons"
           "norvik: lower.mol, record 2 (theory): 'b3lyp' is not a theory of the library")
# The host's list of theories is the library's: every functional name of the
# core's table is in the message, and no other.
file(READ ${DATA}/../../../src/dft/functionals/functional_names.h table)
string(REGEX MATCHALL "{\"[A-Z0-9]+\", Combination::" entries "${table}")
list(TRANSFORM entries REPLACE "{\"([A-Z0-9]+)\".*" "\\1")
execute_process(COMMAND ${NORVIK} check lower.mol WORKING_DIRECTORY ${WORK} ERROR_VARIABLE err)
string(REGEX REPLACE ".* or a functional: ([^(]*) \\(.*" "\\1" listed "${err}")
string(REPLACE ", " ";" listed "${listed}")
list(SORT entries)
list(SORT listed)
if(NOT entries STREQUAL listed OR entries STREQUAL "")
  message(FATAL_ERROR "the host knows the functionals '${listed}', the library '${entries}'")
endif()
run(check_layout STATUS 2 ARGS check ex.mol ks.par
    STDERR "ks.par, record 6 (SCF iterations): more values than the 2 this record takes")
run(check_parameters_alone STATUS 2 ARGS check hf.par
    STDERR "hf.par: a parameter file is read in the layout of its molecule file's theory")
run(check_xyz_option STATUS 2 ARGS check ex.mol --charge 1
    STDERR "--charge is for an .xyz input; ex.mol is a molecule file, so set record 20")

# The options of an .xyz job, refused with a molecule file (naming the record
# to edit) and when their values are not the library's.
run(opt_with_molecule_file STATUS 2 ARGS run ex.mol hf.par --opt --threads 2
    STDERR "--opt is for an .xyz input; ex.mol is a molecule file, so set records 6"
           "--threads is for an .xyz input; ex.mol is a molecule file, so set record 4 (threads) of the parameter file")
run(unknown_basis STATUS 2 ARGS run water.xyz --basis 6-311G**
    STDERR "--basis 6-311G**: not a basis set of the library; give one of STO-3G, 3-21G"
           "6-31++G**C (x may stand for *")
run(unknown_method STATUS 2 ARGS run water.xyz --method PBE
    STDERR "--method PBE: not a theory of the library; give HF, MP2, RPA, TDA or a functional: B3LYP")
run(bad_values STATUS 2 ARGS run water.xyz --opt 0 --memory 0 --population Hirshfeld --mult 0
    STDERR "--opt 0: give the most optimisation cycles, 1 to 100000" "--memory 0: give the memory"
           "--population Hirshfeld: give none" "--mult 0: give the spin multiplicity")
run(odd_multiplicity STATUS 2 ARGS run water.xyz --mult 2
    STDERR "water.xyz with --charge 0 --mult 2: multiplicity 2 does not fit 10 electrons")
run(xyz_with_parameters STATUS 2 ARGS run water.xyz hf.par
    STDERR "hf.par: an .xyz job writes its own parameter file")

# A bad .xyz file: each problem with its line.
file(WRITE ${WORK}/count.xyz "4\nwater\nO 0 0 0.1173\nH 0 0.7572 -0.4692\nH 0 -0.7572 -0.4692\n")
file(WRITE ${WORK}/element.xyz "3\n\nO 0 0 0.1173\nHh 0 0.7572 -0.4692\nH 0 -0.7572 -0.4692\nH 0 0 9\n")
file(WRITE ${WORK}/short.xyz "O 0 0 0.1173\nH 0 0.7572\nH 0 -0.7572 -0.4692x\nH 0 -0.7572 -0.4\n")
file(WRITE ${WORK}/frames.xyz "1\nframe 1\nHe 0 0 0\n1\nframe 2\nHe 0 0 0\n")
run(count_mismatch STATUS 2 ARGS run count.xyz
    STDERR "count.xyz, line 1: the atom count is 4, but 3 atom lines follow the title line"
           "nothing was run")
run(unknown_element STATUS 2 ARGS run element.xyz
    STDERR "element.xyz, line 4: 'Hh' is not an element; norvik knows H to Xe"
           "element.xyz, line 6: more atom lines than the 3 of the count in line 1")
run(missing_coordinate STATUS 2 ARGS run short.xyz
    STDERR "short.xyz, line 2: 'H 0 0.7572' lacks the z coordinate"
           "short.xyz, line 3: '-0.4692x' is not a coordinate")
run(second_frame STATUS 2 ARGS run frames.xyz STDERR "frames.xyz, line 4: a second frame begins")
file(WRITE ${WORK}/close.xyz "O 0 0 0\nH 0 0 0.05\n")
run(close_atoms STATUS 2 ARGS run close.xyz
    STDERR "close.xyz, line 2: atom 2 is 0.0500 A from atom 1 (line 1), closer than 0.1 A")

# A molecule or parameter file of that name that norvik did not write stays.
file(WRITE ${WORK}/water.mol "# my own water\n")
run(foreign_molecule_file STATUS 2 ARGS run water.xyz
    STDERR "water.mol exists and norvik did not write it" "give the job another name with --report")
file(REMOVE ${WORK}/water.mol)
file(WRITE ${WORK}/water.par "# my settings\n")
run(foreign_parameter_file STATUS 2 ARGS run water.xyz STDERR "water.par exists and norvik did not")
file(REMOVE ${WORK}/water.par)

# The written files are outputs like the report: never the .xyz file, nor
# another output.
run(trajectory_over_xyz STATUS 2 ARGS run water.xyz --opt --xyz water.xyz
    STDERR "the trajectory 'water.xyz' would overwrite the xyz file 'water.xyz'")
run(report_is_molecule_file STATUS 2 ARGS run water.xyz --report water.mol
    STDERR "the report 'water.mol' and the molecule file 'water.mol' are one file; give --report another name")

# The job: the written files byte for byte, the trajectory beside the .xyz file.
run(xyz_job STATUS 0
    ARGS run water.xyz --basis sto-3g --opt 20 --freq --population MULLIKEN --memory 2
    STDOUT "norvik: HF / STO-3G job 'water': 3 atoms" "molecule file written to water.mol"
           "parameter file written to water.par" "trajectory written to water.opt.xyz"
    CREATES water.report water.log water.mol water.par water.opt.xyz water.modes.xyz
            water.modes.molden water.ir.dat water.json water.molden water.html)
same_as(water.mol ${expected}/water.mol)
same_as(water.par ${expected}/water.par)
expect_in(water.report "#  Mulliken")
file(RENAME ${WORK}/water.report ${WORK}/first.report)

# Run again from the written files: the same report, and the .xyz file is
# untouched (a repeat writes its trajectory to water.opt.xyz as well).
run(repeat STATUS 0 ARGS run water.mol water.par
    CHANGES water.log water.opt.xyz water.modes.xyz water.modes.molden water.ir.dat water.json
            water.molden water.html
    CREATES water.report)
same_as(water.report ${WORK}/first.report)

# A failing run leaves the earlier files, its own under partial names.
file(WRITE ${WORK}/kr.xyz "1\nkrypton\nkr 0 0 0\n")
run(failing STATUS 1 ARGS run kr.xyz --basis 6-31+G --report water.report
    STDERR " Zatom exceed limit" "water.mol and water.par were not touched"
    CREATES water.report.partial water.log.partial water.mol.partial water.par.partial
            water.json.partial water.molden.partial)
expect_in(water.mol.partial "(norvik run kr.xyz --basis 6-31+G --report water.report); theory:")

# Files norvik wrote are replaced by the next .xyz run of that name.
file(REMOVE ${WORK}/water.report.partial ${WORK}/water.log.partial ${WORK}/water.mol.partial
     ${WORK}/water.par.partial ${WORK}/water.json.partial ${WORK}/water.molden.partial)
run(replace STATUS 0 ARGS run water.xyz --basis STO-3G
    CHANGES water.report water.log water.mol water.par water.json water.molden water.html)
expect_in(water.mol "\nwater 0\n")
# The written parameter file holds the built-in settings: a molecule-file job
# without one gives the same report.
variant(sto.mol ex.mol "6-31Gxx" "STO-3G")
run(built_in_settings STATUS 0 ARGS run sto.mol CREATES sto.report sto.log sto.json
    sto.molden sto.html)
same_as(sto.report ${WORK}/water.report)

# A header-less .xyz file, symbols in any letter case or atomic numbers, the
# lowest multiplicity; a report in a folder takes the two files along, and the
# first line quotes the command as a shell would need it.
file(WRITE ${WORK}/oh.xyz "o 0 0 0\n1 0 0 0.97\n")
file(MAKE_DIRECTORY ${WORK}/sub)
run(header_less STATUS 0 ARGS run oh.xyz --basis STO-3G --report "sub/o h.report"
    STDOUT "E(UHF)" "molecule file written to sub/o h.mol" CREATES "o h.log" "o h.json" "o h.molden" "o h.html")
same_as("sub/o h.mol" ${expected}/oh.mol)

# A Kohn-Sham job writes the parameter file in the Kohn-Sham layout.
file(WRITE ${WORK}/h2.xyz "2\nhydrogen\nH 0 0 0\nH 0 0 0.74\n")
run(kohn_sham STATUS 0 ARGS run h2.xyz --method b3lyp --basis STO-3G --threads 1 --memory 0.5
    STDOUT "E(RKS)" CREATES h2.report h2.log h2.mol h2.par h2.json h2.molden h2.html)
same_as(h2.par ${expected}/h2.par)
