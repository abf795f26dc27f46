# The gfortran reference vectors in data/ must be exactly what their generator
# makes: regenerate them into the build tree and compare byte for byte.  Needs
# gfortran (the project's install step provides it) and Debian's python3.
find_program(NORVIK_SYSTEM_PYTHON NAMES python3 PATHS /usr/bin NO_DEFAULT_PATH)
find_program(NORVIK_GFORTRAN NAMES gfortran)
if(NORVIK_SYSTEM_PYTHON AND NORVIK_GFORTRAN)
  add_test(NAME fortran_vectors_regenerate
    COMMAND ${NORVIK_SYSTEM_PYTHON} ${PROJECT_SOURCE_DIR}/tools/fortran_vectors/generate.py
            --gfortran ${NORVIK_GFORTRAN}
            --out ${CMAKE_CURRENT_BINARY_DIR}/fortran_vectors
            --compare ${CMAKE_CURRENT_LIST_DIR}/data)
  set_tests_properties(fortran_vectors_regenerate PROPERTIES LABELS generator)
else()
  message(STATUS "fortran: gfortran or /usr/bin/python3 missing; vector regeneration test skipped")
endif()
