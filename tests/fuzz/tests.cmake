# The fuzz targets' harnesses (fuzz/harness.h) over their committed corpus, built
# with the suite's own compiler: every seed and every input that a fuzzer once
# found keeps being checked in the normal suite and, in the NORVIK_SANITIZE
# build, under the sanitizers, also where Clang and libFuzzer are missing.
if(TARGET test_fuzz)
  target_sources(test_fuzz PRIVATE ${PROJECT_SOURCE_DIR}/fuzz/harness.cpp)
  target_include_directories(test_fuzz PRIVATE ${PROJECT_SOURCE_DIR}/fuzz)
  target_compile_definitions(test_fuzz PRIVATE
    NORVIK_FUZZ_CORPUS="${PROJECT_SOURCE_DIR}/fuzz/corpus")
endif()
