# The Python package (python/norvik, docs/python.md) under Debian's pytest, against
# the library and the host of this build: about 5 s on a quiet machine, most of it
# the local Dask cluster of the batch case.  Not in the sanitizer build: an
# instrumented libnorvik cannot be loaded into an uninstrumented interpreter.
if(NOT NORVIK_SANITIZE AND NOT NORVIK_FUZZ)
  add_test(NAME python.pytest
    COMMAND /usr/bin/python3 -m pytest -q -p no:cacheprovider python/tests
    WORKING_DIRECTORY ${PROJECT_SOURCE_DIR})
  set_tests_properties(python.pytest PROPERTIES TIMEOUT 600 ENVIRONMENT
    "NORVIK_LIBRARY=$<TARGET_FILE:norvik>;NORVIK_HOST=$<TARGET_FILE:norvik_host>;NORVIK_PYTHON=${PROJECT_SOURCE_DIR}/python;OMP_NUM_THREADS=2;OMP_WAIT_POLICY=passive;PYTHONDONTWRITEBYTECODE=1")
endif()
