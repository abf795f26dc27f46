# MP2 jobs and the memory limit: a single point whose limit is below the
# library's MP2 rule says so and runs its MP2 step in batches; an optimisation
# under the same limit is stopped by the library in its first cycle, with the
# note in the partial report.
include(${CMAKE_CURRENT_LIST_DIR}/cli.cmake)
set(outputs CREATES water.report water.log mp2.json mp2.molden mp2.html)
variant(mp2.mol water.mol "\nHF\n" "\nMP2\n")
parameters(small.par hf.par 2 "1.0e-4")
run(batched STATUS 0 ARGS run mp2.mol small.par --frozen-core --report water.report --log water.log
    ${outputs}
    STDOUT "norvik: MP2 with 24 basis functions: the library's MP2 rule asks 0.00299 GB and record 2 of the parameter file allows 0.0001 GB"
           "E(MP2) = -76.2172485" "frozen core)")
variant(mp2_opt.mol mp2.mol "\nwater 0\n" "\nwater 4\n")
run(optimisation STATUS 1 ARGS run mp2_opt.mol small.par
    STDOUT "Insufficient RAM for MP2 in Optimize_mole."
    CREATES mp2_opt.report.partial mp2_opt.log.partial mp2_opt.xyz.partial mp2_opt.json.partial
            mp2_opt.molden.partial)
file(READ ${WORK}/mp2_opt.report.partial report)
string(FIND "${report}" "# *** Insufficient RAM size for the MP2 calculation ****\n#    MP2 = 2.99E-03 [GB]\n" at)
if(at EQUAL -1)
  message(FATAL_ERROR "optimisation: no MP2 memory note in the partial report")
endif()
