# NORVIK_SANITIZE: every target of the tree (the core libraries, the host, the
# tests and their C hosts) is compiled and linked with AddressSanitizer and
# UndefinedBehaviorSanitizer.  Undefined behaviour is fatal
# (-fno-sanitize-recover), so a finding fails the test that met it instead of
# scrolling past in its output; float-cast-overflow (a double out of range of the
# integer it is converted to) is undefined as well and is not part of
# -fsanitize=undefined in GCC.
#
# OpenMP's runtime (libgomp) is not instrumented: ASan still sees every access
# that the instrumented code makes from the worker threads, and the threads
# themselves are ordinary pthreads that ASan follows.  Included by the top-level
# CMakeLists.txt before any target is made.
if(NOT NORVIK_SANITIZE)
  return()
endif()
if(MSVC)
  message(FATAL_ERROR "NORVIK_SANITIZE needs GCC or Clang")
endif()

set(_norvik_sanitizers -fsanitize=address,undefined,float-cast-overflow)
add_compile_options(${_norvik_sanitizers} -fno-sanitize-recover=all -fno-omit-frame-pointer)
add_link_options(${_norvik_sanitizers})

# The run-time options of every sanitized program under ctest.  ctest reads the
# file written here before any test (TEST_INCLUDE_FILES of the top directory), so
# the options reach the gtest executables, the C hosts and the programs that the
# cmake -P scripts start alike, however ctest is called.  Options already in the
# environment come last and win.
# - exitcode=23: a finding ends the process with a status that no test expects;
#   ASan's default, 1, is the status of a fatal library error (std::exit(1)) that
#   the host tests do expect, and would hide a finding there.
# - detect_leaks: a leak is a finding like any other.  The suite is leak-free,
#   libgomp's thread pool included (it stays reachable), so nothing is suppressed.
# - halt_on_error, print_stacktrace: UBSan stops at the first finding, with a stack.
set(_norvik_asan "detect_leaks=1:exitcode=23:abort_on_error=0:strict_string_checks=1")
string(APPEND _norvik_asan ":check_initialization_order=1:strict_init_order=1")
set(_norvik_ubsan "halt_on_error=1:print_stacktrace=1:exitcode=23")
file(WRITE ${PROJECT_BINARY_DIR}/sanitizer_environment.cmake
  "# Written by cmake/sanitize.cmake: sanitizer options for every test.\n"
  "set(ENV{ASAN_OPTIONS} \"${_norvik_asan}:\$ENV{ASAN_OPTIONS}\")\n"
  "set(ENV{UBSAN_OPTIONS} \"${_norvik_ubsan}:\$ENV{UBSAN_OPTIONS}\")\n")
set_property(DIRECTORY ${PROJECT_SOURCE_DIR} APPEND PROPERTY TEST_INCLUDE_FILES
             ${PROJECT_BINARY_DIR}/sanitizer_environment.cmake)
message(STATUS "norvik: AddressSanitizer and UndefinedBehaviorSanitizer on")
