# Molecule files that the library would read into something else, or reject
# late and cryptically: each problem is named with its file and record.
include(${CMAKE_CURRENT_LIST_DIR}/cli.cmake)
file(READ ${WORK}/water.mol water)

# A cut-off last atom: the library's read meets the end of the file and ends the
# atom list there, silently.
file(WRITE ${WORK}/cut.mol "${water}He\n")
run(cut_last_atom STATUS 2 ARGS run cut.mol
    STDERR "cut.mol, record 27 (atom 4): 'He' has no coordinates"
           "an atom record needs a symbol and x y z on one line"
           "nothing was run")
file(WRITE ${WORK}/cut_no_line_end.mol "${water}He 0.0 1.5")
run(cut_last_atom_without_line_end STATUS 2 ARGS run cut_no_line_end.mol
    STDERR "record 27 (atom 4): 'He' lacks a coordinate")
file(WRITE ${WORK}/final_slash.mol "${water}He 0.0 1.5 2.0 /")
run(atom_ending_the_file_on_a_slash STATUS 2 ARGS run final_slash.mol
    STDERR "record 27 (atom 4): a slash that is the last character of the file")
set(h2 "H    0.000000000   -0.757200000   -0.469200000")
variant(split.mol water.mol "${h2}" "H 0.0 -0.7572\n-0.4692")
run(atom_over_two_records STATUS 2 ARGS run split.mol
    STDERR "split.mol, record 26 (atom 3): 'H' lacks a coordinate")
variant(extra.mol water.mol "${h2}" "${h2} 1.008")
run(atom_with_fifth_value STATUS 2 ARGS run extra.mol
    STDERR "record 26 (atom 3): more than a symbol and x y z")

# Coordinates that are not numbers, or not finite: refused before the basis.
variant(nan.mol water.mol "${h2}" "H NaN -0.7572 -0.4692")
run(nan_coordinate STATUS 2 ARGS run nan.mol
    STDERR "nan.mol, record 26 (atom 3): coordinate NaN is not a finite position")
variant(inf.mol water.mol "${h2}" "H 0.0 -Infinity -0.4692")
run(infinite_coordinate STATUS 2 ARGS run inf.mol STDERR "coordinate -Infinity is not a finite")
variant(overflow.mol water.mol "${h2}" "H 0.0 -0.7572 1e999")
run(overflowing_coordinate STATUS 2 ARGS run overflow.mol STDERR "coordinate 1e999 is not a finite")
variant(same_place.mol water.mol "${h2}" "H 0.0 0.7572 -0.4692")
run(two_atoms_in_one_place STATUS 2 ARGS run same_place.mol
    STDERR "record 26 (atom 3): 0.0000 A from atom 2 (record 25), closer than 0.1 A")

# Symbols and texts that the library would cut: Hex is read as He, a NUL ends
# the basis-set name early.
variant(hex.mol water.mol "${h2}" "Hex 0.0 -0.7572 -0.4692")
run(symbol_cut_short STATUS 2 ARGS run hex.mol
    STDERR "hex.mol, record 26 (atom 3): 'Hex' is not an element symbol")
variant(case.mol water.mol "${h2}" "h 0.0 -0.7572 -0.4692")
run(symbol_in_lower_case STATUS 2 ARGS run case.mol STDERR "'h' is not an element symbol")
file(COPY ${DATA}/nul_basis.mol DESTINATION ${WORK})
run(nul_in_basis_name STATUS 2 ARGS run nul_basis.mol
    STDERR "nul_basis.mol, record 4 (basis set): '6-31G\\x00xx' holds a control character")
variant(stars.mol water.mol "\n6-31Gxx\n" "\n6-31G**\n")
run(basis_name_with_stars STATUS 2 ARGS run stars.mol
    STDERR "'6-31G**' is not a basis set of the library" "x stands for the asterisk")
variant(long_name.mol water.mol "\nwater 0\n" "\n'water, the long name of it' 0\n")
run(molecule_name_too_long STATUS 2 ARGS run long_name.mol
    STDERR "record 6 (molecule name): 'water, the long name of it' is longer than the 20")
variant(blank_name.mol water.mol "\nwater 0\n" "\nwater dimer 0\n")
run(unquoted_name_with_blank STATUS 2 ARGS run blank_name.mol
    STDERR "record 6 (molecule name, optimisation cycles): 'dimer' is not a whole number")

# Ghost ranges that the library takes as "no ghosts".
foreach(range "0 3" "-1 2" "2 1" "1 4")
  string(REPLACE " " "_" tag "${range}")
  variant(ghost${tag}.mol water.mol "\n0 0\n" "\n${range}\n")
  string(REPLACE " " " to " said "${range}")
  run(ghost_range_${tag} STATUS 2 ARGS run ghost${tag}.mol
      STDERR "record 16 (ghost atoms): the range ${said} is not a range of the molecule's 3 atoms")
endforeach()

# Settings out of range, a file cut short, no atoms, several problems at once.
variant(mult0.mol water.mol "\n1\n# atoms" "\n0\n# atoms")
run(multiplicity_zero STATUS 2 ARGS run mult0.mol
    STDERR "record 22 (multiplicity): spin multiplicity 0 is out of range")
variant(optimiser.mol water.mol "steepest descent)\n0\n" "steepest descent)\n3\n")
run(unknown_optimiser STATUS 2 ARGS run optimiser.mol STDERR "record 8 (optimiser): optimiser 3")
variant(population.mol water.mol "\nnone\n# ghost" "\nmulliken\n# ghost")
run(population_in_lower_case STATUS 2 ARGS run population.mol
    STDERR "'mulliken' is not one of none, Mulliken, Lowdin, both, shells")
string(FIND "${water}" "# molecular charge" at)
string(SUBSTRING "${water}" 0 ${at} short)
file(WRITE ${WORK}/short.mol "${short}")
run(file_cut_short STATUS 2 ARGS run short.mol
    STDERR "short.mol, record 19 (charge): the file ends before this record")
string(FIND "${water}" "O    0.0" at)
string(SUBSTRING "${water}" 0 ${at} no_atoms)
file(WRITE ${WORK}/no_atoms.mol "${no_atoms}")
run(no_atoms STATUS 2 ARGS run no_atoms.mol STDERR "(atoms): no atom records")
variant(two.mol hex.mol "\n0 0\n" "\n0 3\n")
run(every_problem_listed STATUS 2 ARGS run two.mol
    STDERR "record 26 (atom 3): 'Hex'" "record 16 (ghost atoms): the range 0 to 3")

# A counterpoise job reads record 16 as fragment A: it must name atoms and leave
# fragment B one; the correction belongs to the input geometry and to neutral
# fragments (HeH+ excepted).
variant(cp.mol water.mol "\nnone\n# molecular charge" "\ncounterpoise\n# molecular charge")
foreach(range "0 0" "1 3")
  string(REPLACE " " "_" tag "${range}")
  variant(cp${tag}.mol cp.mol "\n0 0\n" "\n${range}\n")
  run(counterpoise_fragments_${tag} STATUS 2 ARGS run cp${tag}.mol
      STDERR "record 16 (counterpoise fragments): a counterpoise job splits the molecule")
endforeach()
variant(cp_charged.mol cp.mol "\n0 0\n# basis-set superposition correction (none, counterpoise)\ncounterpoise\n# molecular charge\n0"
        "\n1 1\n# basis-set superposition correction (none, counterpoise)\ncounterpoise\n# molecular charge\n1")
run(counterpoise_of_an_ion STATUS 2 ARGS run cp_charged.mol
    STDERR "record 18 (counterpoise): without --fragments the fragments are neutral")
# --fragments: four integers, charges adding up to the molecule's, a counterpoise job.
run(fragments_malformed STATUS 2 ARGS run cp_charged.mol --fragments 1,1,0
    STDERR "--fragments '1,1,0': write the charge and multiplicity of fragment A")
run(fragments_negative_multiplicity STATUS 2 ARGS run cp_charged.mol --fragments 1,-1,0,1
    STDERR "--fragments '1,-1,0,1'")
run(fragments_charges_disagree STATUS 2 ARGS run cp_charged.mol --fragments 0,1,0,2
    STDERR "the fragment charges add up to 0, the molecule's charge (record 20) is 1")
run(fragments_without_counterpoise STATUS 2 ARGS run water.mol --fragments 0,1,0,1
    STDERR "--fragments is for a counterpoise job")
variant(cp_opt1.mol cp.mol "\n0 0\n" "\n1 1\n")
variant(cp_opt.mol cp_opt1.mol "water 0" "water 5")
run(counterpoise_with_optimisation STATUS 2 ARGS run cp_opt.mol
    STDERR "record 18 (counterpoise): the counterpoise correction is made at the input geometry")
