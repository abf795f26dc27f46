# The Python package (python/norvik, docs/python.md) under Debian's pytest, against
# the library and the host of this build: python.pytest the default cases (about
# 20 s, most of it the local Dask cluster of the batch case), python.pytest_slow
# the whole jobs marked slow.  Not in the sanitizer build: an instrumented
# libnorvik cannot be loaded into an uninstrumented interpreter.
if(NOT NORVIK_SANITIZE AND NOT NORVIK_FUZZ)
  set(python_env
    "NORVIK_LIBRARY=$<TARGET_FILE:norvik>;NORVIK_HOST=$<TARGET_FILE:norvik_host>"
    "NORVIK_PYTHON=${PROJECT_SOURCE_DIR}/python;OMP_NUM_THREADS=2;OMP_WAIT_POLICY=passive"
    "PYTHONDONTWRITEBYTECODE=1")
  add_test(NAME python.pytest
    COMMAND /usr/bin/python3 -m pytest -q -p no:cacheprovider -m "not slow" python/tests
    WORKING_DIRECTORY ${PROJECT_SOURCE_DIR})
  add_test(NAME python.pytest_slow
    COMMAND /usr/bin/python3 -m pytest -q -p no:cacheprovider -m slow python/tests
    WORKING_DIRECTORY ${PROJECT_SOURCE_DIR})
  set_tests_properties(python.pytest python.pytest_slow PROPERTIES ENVIRONMENT "${python_env}"
    TIMEOUT 600)
  set_tests_properties(python.pytest_slow PROPERTIES LABELS slow)
endif()
