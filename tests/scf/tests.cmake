# The larger Psi4 reference cases run only under the "slow" label.
add_test(NAME scf_references_slow
  COMMAND test_scf --gtest_also_run_disabled_tests --gtest_filter=ReferenceEnergies.DISABLED_LargerCases)
set_tests_properties(scf_references_slow PROPERTIES LABELS slow ENVIRONMENT "OMP_NUM_THREADS=2")

# A C host running a whole single point through the public header (the example
# of docs/scf.md): water in STO-3G against the Psi4 reference energy.
enable_language(C)
add_executable(scf_single_point_example ${CMAKE_CURRENT_LIST_DIR}/single_point_example.c)
target_link_libraries(scf_single_point_example PRIVATE norvik m)
add_test(NAME scf_single_point_example
  COMMAND scf_single_point_example
          ${PROJECT_SOURCE_DIR}/tests/references/data/molecules/h2o_STO-3G.mol
          ${CMAKE_CURRENT_BINARY_DIR}/scf_single_point_example.report -74.9629282083)
set_tests_properties(scf_single_point_example PROPERTIES ENVIRONMENT "OMP_NUM_THREADS=2")
