# A host written in C from the public header alone, run scenario by scenario.
enable_language(C)
add_executable(host_check ${CMAKE_CURRENT_LIST_DIR}/host_check.c)
target_link_libraries(host_check PRIVATE norvik)
set(host_data ${CMAKE_CURRENT_LIST_DIR}/data)
set(host_work ${CMAKE_CURRENT_BINARY_DIR}/host_work)
file(MAKE_DIRECTORY ${host_work})

# Scenarios run in the data folder, so that file names in messages are short
# and stable; only the header scenario writes a file, into the build tree.
function(host_case name rc expect)
  add_test(NAME host.${name}
    COMMAND ${CMAKE_COMMAND} -DPROGRAM=$<TARGET_FILE:host_check> "-DARGS=${ARGN}"
            -DWORKDIR=${host_data} -DEXPECT_RC=${rc} -DEXPECT_FILE=${host_data}/${expect}
            -P ${CMAKE_CURRENT_LIST_DIR}/run_case.cmake)
endfunction()

host_case(header 0 header.out header;water.mol;hf.par;${host_work}/header.report)
host_case(missing_molecule 1 missing_molecule.out setup;no-such.mol;-)
host_case(missing_parameters 1 missing_parameters.out setup;water.mol;no-such.par)
host_case(ghost_range 1 ghost_range.out setup;bad_ghost.mol;-)
host_case(full_atom_arrays 1 full_atom_arrays.out setup;many_atoms.mol;-)
host_case(nelectron 1 nelectron.out nelectron;2;0;2)
host_case(inirho 1 inirho.out inirho;1;0;1)
host_case(symbol 1 symbol.out symbol;CL)
host_case(symbol_ok 0 symbol_ok.out symbol;Mo)
host_case(mass 1 mass.out mass;-1)
