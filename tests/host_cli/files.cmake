# Input files that the host refuses before reading them: devices, pipes and
# folders, files and records beyond the bounds, line ends the library would read
# two ways.
include(${CMAKE_CURRENT_LIST_DIR}/cli.cmake)

# /dev/zero has no line end: it must be refused at once, not read.
run(dev_zero STATUS 2 TIMEOUT 10 ARGS run /dev/zero
    STDERR "molecule file '/dev/zero' is not a regular file")
run(dev_zero_parameters STATUS 2 TIMEOUT 10 ARGS run water.mol /dev/zero
    STDERR "parameter file '/dev/zero' is not a regular file")
# A pipe would block the reader.
file(MAKE_DIRECTORY ${WORK}/special)
execute_process(COMMAND mkfifo ${WORK}/special/pipe.mol RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "mkfifo failed")
endif()
run(pipe STATUS 2 TIMEOUT 10 ARGS run special/pipe.mol STDERR "is not a regular file")
run(folder STATUS 2 ARGS run special STDERR "molecule file 'special' is a folder")
run(missing STATUS 2 ARGS run no-such.mol STDERR "cannot find molecule file 'no-such.mol'")
run(missing_parameters STATUS 2 ARGS run water.mol no-such.par
    STDERR "cannot find parameter file 'no-such.par'")

# The bounds: 16 MiB a file, 1024 characters a record.
string(REPEAT "0123456789abcdef" 1048577 big)
file(WRITE ${WORK}/big.mol "# ${big}\n")
set(big)
run(too_big STATUS 2 ARGS run big.mol
    STDERR "molecule file 'big.mol' holds 16777235 bytes, more than the 16 MiB")
file(REMOVE ${WORK}/big.mol)
string(REPEAT "x" 2000 long)
variant(long.mol water.mol "# theory:" "# ${long}")
run(long_record STATUS 2 ARGS run long.mol
    STDERR "long.mol, record 1: " "characters, more than the 1024 a record may hold")

# A lone carriage return ends a comment record but is a blank in a value record.
variant(cr.mol water.mol "\nHF\n" "\nHF\r# stray\n")
run(lone_carriage_return STATUS 2 ARGS run cr.mol
    STDERR "cr.mol, record 2: a carriage return inside the line")
