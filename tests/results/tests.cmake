# The result files of a run: PREFIX.json against the report of the same run, and
# PREFIX.molden's orbitals against its own basis (check_results.py, which also
# runs check_molden.py); Jmol opening the molden file (check_jmol.py, Debian jmol
# under xvfb-run).  Restricted with Cartesian d and populations, unrestricted, an
# optimisation with frequencies, MP2, excited states (TDA) and B3LYP run in the
# default suite in about a second each; the 6-31G* optimisation with frequencies and Jmol (a Java start) are slow.
find_program(NORVIK_RESULTS_PYTHON NAMES python3 PATHS /usr/bin NO_DEFAULT_PATH)
if(NORVIK_RESULTS_PYTHON)
  set(results_dir ${CMAKE_CURRENT_LIST_DIR})
  set(results_cases
      rhf_cartesian ${results_dir}/data/water_cartesian.mol
      uhf ${PROJECT_SOURCE_DIR}/examples/oh-radical.mol
      opt_freq_sto3g ${results_dir}/data/water_sto3g_freq.mol
      mp2 ${results_dir}/data/water_mp2.mol
      tda ${results_dir}/data/water_tda.mol
      rks ${results_dir}/data/water_b3lyp.mol
      opt_freq ${PROJECT_SOURCE_DIR}/examples/water-freq.mol)
  while(results_cases)
    list(POP_FRONT results_cases name mol)
    add_test(NAME results.${name}
             COMMAND ${NORVIK_RESULTS_PYTHON} ${results_dir}/check_results.py
                     $<TARGET_FILE:norvik_host> ${mol} ${CMAKE_CURRENT_BINARY_DIR}/results/${name})
    set_tests_properties(results.${name} PROPERTIES
                         ENVIRONMENT "OMP_NUM_THREADS=2;OMP_WAIT_POLICY=passive")
  endwhile()
  set_tests_properties(results.opt_freq PROPERTIES LABELS slow)

  find_program(NORVIK_JMOL jmol)
  find_program(NORVIK_XVFB_RUN xvfb-run)
  if(NORVIK_JMOL AND NORVIK_XVFB_RUN)
    add_test(NAME results.jmol
             COMMAND ${NORVIK_RESULTS_PYTHON} ${results_dir}/check_jmol.py
                     $<TARGET_FILE:norvik_host> ${PROJECT_SOURCE_DIR}/examples/water.mol
                     ${CMAKE_CURRENT_BINARY_DIR}/results/jmol)
    set_tests_properties(results.jmol PROPERTIES LABELS slow
                         ENVIRONMENT "OMP_NUM_THREADS=2;OMP_WAIT_POLICY=passive")
  endif()
endif()
