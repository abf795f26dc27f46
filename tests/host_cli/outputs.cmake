# The host never writes to a file that is one of its inputs, however it is
# named, and never to something that is not a regular file.
include(${CMAKE_CURRENT_LIST_DIR}/cli.cmake)

# The default report name of job.report is job.report itself.
file(COPY_FILE ${WORK}/water.mol ${WORK}/job.report)
run(default_report_is_input STATUS 2 ARGS run job.report
    STDERR "the report 'job.report' would overwrite the molecule file 'job.report'"
           "name another file with --report")
run(report_names_molecule STATUS 2 ARGS run water.mol --report water.mol
    STDERR "the report 'water.mol' would overwrite the molecule file 'water.mol'")
run(log_names_molecule STATUS 2 ARGS run water.mol --log water.mol
    STDERR "the run log 'water.mol' would overwrite the molecule file 'water.mol'")
run(report_names_parameters STATUS 2 ARGS run water.mol hf.par --report hf.par
    STDERR "the report 'hf.par' would overwrite the parameter file 'hf.par'")

# Other names for the same file: a detour, a symbolic link, a hard link.
file(MAKE_DIRECTORY ${WORK}/sub)
run(detour STATUS 2 ARGS run water.mol --report ./sub/../water.mol
    STDERR "the report './sub/../water.mol' would overwrite the molecule file")
file(CREATE_LINK water.mol ${WORK}/symbolic.report SYMBOLIC)
run(symbolic_link STATUS 2 ARGS run water.mol --report symbolic.report
    STDERR "the report 'symbolic.report' would overwrite the molecule file 'water.mol'")
file(CREATE_LINK ${WORK}/hf.par ${WORK}/hard.log)
run(hard_link STATUS 2 ARGS run water.mol hf.par --log hard.log
    STDERR "the run log 'hard.log' would overwrite the parameter file 'hf.par'")
file(REMOVE ${WORK}/symbolic.report ${WORK}/hard.log)

# The partial name of an output, and the start-density file of record 12.
file(COPY_FILE ${WORK}/water.mol ${WORK}/w.partial)
run(partial_names_molecule STATUS 2 ARGS run w.partial --report w
    STDERR "the partial report 'w.partial' would overwrite the molecule file 'w.partial'")
file(WRITE ${WORK}/old.report "an earlier report, named as the start density\n")
variant(start.mol water.mol "\n''\n" "\n'old.report'\n")
run(report_names_start_density STATUS 2 ARGS run start.mol --report old.report
    STDERR "would overwrite the start-density file 'old.report'")

# The report and the log in one file.
run(report_is_log STATUS 2 ARGS run water.mol --report same --log same
    STDERR "the report 'same' and the run log 'same' are one file")
run(partial_is_log STATUS 2 ARGS run water.mol --report a --log a.partial
    STDERR "the partial report 'a.partial' and the run log 'a.partial' are one file")

# Not a regular file: a rename would replace a device or fail on a folder.
run(log_to_device STATUS 2 ARGS run water.mol --log /dev/null
    STDERR "the run log '/dev/null' exists and is not a regular file")
run(report_to_folder STATUS 2 ARGS run water.mol --report sub
    STDERR "the report 'sub' exists and is not a regular file")
run(missing_folder STATUS 2 ARGS run water.mol --log no-such/x.log
    STDERR "cannot write the partial run log 'no-such/x.log.partial'")

# The result files: checked like the report, and named by --json and --molden.
run(json_names_molecule STATUS 2 ARGS run water.mol --json water.mol
    STDERR "the JSON result 'water.mol' would overwrite the molecule file 'water.mol'"
           "name another file with --json")
run(molden_is_report STATUS 2 ARGS run water.mol --molden water.report
    STDERR "the report 'water.report' and the molden file 'water.report' are one file")
run(json_needs_name STATUS 2 ARGS run water.mol --json STDERR "--json needs a file name")
run(named_results STATUS 0 ARGS run water.mol --json sub/r.json --molden sub/r.molden
    STDOUT "JSON result written to sub/r.json" "molden file written to sub/r.molden"
    CREATES water.report water.log)
foreach(f sub/r.json sub/r.molden)
  if(NOT EXISTS ${WORK}/${f})
    message(FATAL_ERROR "named_results: no ${f}")
  endif()
endforeach()
expect_in(sub/r.json "\"molden\": \"sub/r.molden\"")
