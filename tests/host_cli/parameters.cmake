# Parameter files whose settings the library would take as they are: limits
# that give an energy without an SCF, factors outside their meaning, a
# screening threshold that changes the energy, a file of the other layout.
include(${CMAKE_CURRENT_LIST_DIR}/cli.cmake)

# case, record, new value record, expected text
set(cases
  "iterations_zero|6|64 0|record 6 (SCF iterations): the molecule's limit 0 is out of range"
  "iterations_negative|6|-1 128|the free atoms' limit -1 is out of range"
  "damping_above_one|8|0.5 1.5|record 8 (damping): the molecule's damping factor 1.5 is out of range"
  "damping_negative|8|-0.1 0.5|the free atoms' damping factor -0.1 is out of range"
  "screening_1e-2|14|1e-2|record 14 (screening threshold): screening threshold 1e-2 eV is out of range"
  "screening_1e3|14|1e3|screening threshold 1e3 eV is out of range"
  "screening_nan|14|nan|screening threshold nan is not a finite number"
  "threshold_pair|12|1e-6 0|the molecule's thresholds 1e-07 eV and 0 can never both be met"
  "threshold_too_loose|10|1e-6 0.5|the molecule's threshold 0.5 eV is out of range"
  "memory_zero|2|0|record 2 (memory limit): memory limit 0 GB is out of range"
  "threads_negative|4|-2|record 4 (threads): thread count -2 is out of range"
  "not_a_number|10|1e-6 1.0e-7x|record 10 (energy convergence): '1.0e-7x' is not a number"
  "more_values|14|1e-10 1e-12|record 14 (screening threshold): more values than the 1 this record takes")
foreach(case IN LISTS cases)
  string(REPLACE "|" ";" fields "${case}")
  list(GET fields 0 name)
  list(GET fields 1 record)
  list(GET fields 2 line)
  list(GET fields 3 expected)
  parameters(${name}.par hf.par ${record} "${line}")
  run(${name} STATUS 2 ARGS run water.mol ${name}.par STDERR "${name}.par, record" "${expected}")
endforeach()

# The layouts: a Hartree-Fock theory reads two values in records 6-12, a
# Kohn-Sham theory four.
run(kohn_sham_file_for_hartree_fock STATUS 2 ARGS run water.mol ks.par
    STDERR "ks.par, record 6 (SCF iterations): more values than the 2 this record takes"
           "(a Hartree-Fock theory: records 6 to 12 hold two values, record 20 one)")
run(hartree_fock_file_for_kohn_sham STATUS 2 ARGS run water-b3lyp.mol hf.par
    STDERR "hf.par, record 7 (SCF iterations): '#' is not a whole number"
           "(a Kohn-Sham theory: records 6 to 12 hold four values, record 20 two)")
file(STRINGS ${WORK}/hf.par lines)
list(SUBLIST lines 0 9 lines)
list(JOIN lines "\n" text)
file(WRITE ${WORK}/short.par "${text}\n")
run(file_cut_short STATUS 2 ARGS run water.mol short.par
    STDERR "short.par, record 10 (energy convergence): the file ends before this record")
