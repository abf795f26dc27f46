# Whole Hartree-Fock jobs through the norvik host against the committed reference
# energies (tests/references/data/hf_energies.tsv, Psi4): restricted and
# unrestricted, stored and integral-direct, light and heavy elements.
set(job_data ${CMAKE_CURRENT_LIST_DIR}/data)
set(ref_molecules ${PROJECT_SOURCE_DIR}/tests/references/data/molecules)
# Tight thresholds converge the energy far below the tolerance; 1e-6 hartree is the
# agreement promised against an independent program in the same basis.
set(job_tolerance 0.000001)

function(host_job name mol par expect)
  add_test(NAME job.${name}
    COMMAND ${CMAKE_COMMAND} -DNORVIK=$<TARGET_FILE:norvik_host> -DMOL=${ref_molecules}/${mol}
            -DPAR=${job_data}/${par} -DWORKDIR=${CMAKE_CURRENT_BINARY_DIR}/jobs/${name}
            -DEXPECT=${expect} -DTOL=${job_tolerance} ${ARGN}
            -P ${CMAKE_CURRENT_LIST_DIR}/run_job.cmake)
  set_tests_properties(job.${name} PROPERTIES ENVIRONMENT "OMP_NUM_THREADS=2;OMP_WAIT_POLICY=passive")
endfunction()

host_job(h2o_sto3g h2o_STO-3G.mol tight.par -74.9629282083)
host_job(h2o_diffuse_cartesian h2o_6-31ppGxxC.mol tight.par -76.0307764558)
host_job(nh3_direct nh3_6-31GxxC.mol direct.par -56.1951999554 -DDIRECT=ON)
host_job(oh_uhf oh_6-31Gx.mol tight.par -75.3809375314)
host_job(o2_triplet o2_6-31G.mol tight.par -149.5455745515)
host_job(n_atom_quartet n_3-21G.mol tight.par -54.1053903978)
host_job(hbr hbr_6-31GC.mol tight.par -2572.6237403180)
host_job(xef2 xef2_3-21G.mol tight.par -7397.7204214198)
