# The whole optimiser suite under one name, so that `ctest -R geometry_optimizer`
# selects it (the discovered cases carry only their gtest names).
add_test(NAME geometry_optimizer COMMAND test_geometry_optimizer)
set_tests_properties(geometry_optimizer PROPERTIES ENVIRONMENT "OMP_NUM_THREADS=2")
