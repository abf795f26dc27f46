# Whole host jobs are reproducible: the same bits on one, two and three threads
# (report, run log and standard output, time stamps aside), and the same energy at
# a rotated and translated geometry.  Restricted and unrestricted, stored integrals
# and integral-direct, pure and Cartesian d functions, 24-30 basis functions.
set(det_dir ${CMAKE_CURRENT_LIST_DIR})
set(det_molecules ${PROJECT_SOURCE_DIR}/tests/references/data/molecules)
set(det_par ${PROJECT_SOURCE_DIR}/tests/host_job/data)

# determinism_threads(name molecule parameters route): the job on 1, 2 and 3 threads.
function(determinism_threads name mol par route)
  if(NOT IS_ABSOLUTE ${mol})
    set(mol ${det_molecules}/${mol})
  endif()
  add_test(NAME determinism.threads.${name}
    COMMAND ${CMAKE_COMMAND} -DNORVIK=$<TARGET_FILE:norvik_host> -DMOL=${mol}
            -DPAR=${det_par}/${par} -DROUTE=${route} -DTHREADS=1,2,3
            -DWORKDIR=${CMAKE_CURRENT_BINARY_DIR}/determinism/threads.${name}
            -P ${det_dir}/same_bits.cmake)
  set_tests_properties(determinism.threads.${name} PROPERTIES
    ENVIRONMENT "OMP_WAIT_POLICY=passive" LABELS determinism)
endfunction()

# determinism_rotation(name molecule parameters): the job at the input geometry and
# at the one of data/<molecule stem>_rotated.mol (written by rotate_molecule.py).
function(determinism_rotation name mol par)
  string(REGEX REPLACE "\\.mol$" "_rotated.mol" rotated ${mol})
  add_test(NAME determinism.rotation.${name}
    COMMAND ${CMAKE_COMMAND} -DNORVIK=$<TARGET_FILE:norvik_host> -DMOL=${det_molecules}/${mol}
            -DROTATED=${det_dir}/data/${rotated} -DPAR=${det_par}/${par}
            -DWORKDIR=${CMAKE_CURRENT_BINARY_DIR}/determinism/rotation.${name}
            -P ${det_dir}/same_energy.cmake)
  set_tests_properties(determinism.rotation.${name} PROPERTIES
    ENVIRONMENT "OMP_NUM_THREADS=2;OMP_WAIT_POLICY=passive" LABELS determinism)
endfunction()

determinism_threads(h2o_rhf_stored h2o_6-31Gxx.mol tight.par stored)
determinism_threads(h2o_rhf_direct h2o_6-31Gxx.mol direct.par direct)
determinism_threads(ch2_uhf_stored ch2_6-31Gxx.mol tight.par stored)
determinism_threads(ch2_uhf_direct ch2_6-31Gxx.mol direct.par direct)
# MP2 jobs (theory MP2): the MP2 step's sums as well, RMP2 and UMP2.
determinism_threads(h2o_rmp2 ${det_dir}/data/h2o_6-31Gxx_mp2.mol tight.par stored)
determinism_threads(ch2_ump2 ${det_dir}/data/ch2_6-31Gxx_mp2.mol tight.par stored)

determinism_rotation(h2o_rhf h2o_6-31Gxx.mol tight.par)
determinism_rotation(ch2_uhf ch2_6-31Gxx.mol tight.par)
determinism_rotation(nh3_cartesian_d nh3_6-31GxxC.mol tight.par)
