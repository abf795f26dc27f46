# The B3LYP counterpoise rows (Kohn–Sham fragment SCFs on the dense grid) run
# only under the "slow" label.
add_test(NAME properties_counterpoise_ks_slow
  COMMAND test_properties --gtest_also_run_disabled_tests
          --gtest_filter=Counterpoise.DISABLED_KohnShamFragmentsMatchPsi4)
set_tests_properties(properties_counterpoise_ks_slow PROPERTIES LABELS slow
                     ENVIRONMENT "OMP_NUM_THREADS=2;OMP_WAIT_POLICY=passive")
# Every row of the excitation references (NWChem's tddft), the Kohn-Sham ones on
# the dense grid, under the "slow" label.
add_test(NAME excited_states_references_slow
  COMMAND test_properties --gtest_also_run_disabled_tests
          --gtest_filter=ExcitedStates.DISABLED_MatchNwchemAllRows)
set_tests_properties(excited_states_references_slow PROPERTIES LABELS slow
                     ENVIRONMENT "OMP_NUM_THREADS=2;OMP_WAIT_POLICY=passive")
