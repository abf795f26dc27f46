cmake_minimum_required(VERSION 3.25)
# The 64-bit Windows DLL, run for real: cross-builds libnorvik.dll, the norvik host
# and the plain-C host of tests/host with MinGW-w64, then under Wine runs every
# scenario of tests/host/tests.cmake against its expected output and the water
# Hartree-Fock job, whose report must be the Linux host's.
#   -DSOURCE (repository) -DBINARY (the Windows build folder) -DLINUX_HOST (norvik)
set(mingw_cxx x86_64-w64-mingw32-g++-posix)
set(mingw_cc x86_64-w64-mingw32-gcc-posix)
find_program(cxx ${mingw_cxx})
find_program(wine wine)
if(NOT cxx OR NOT wine)
  message(FATAL_ERROR "the Windows check needs MinGW-w64 and Wine: apt-get install "
                      "g++-mingw-w64-x86-64-posix wine64 (tools/ensure-packages.sh does), or "
                      "leave the check out with ctest -LE windows")
endif()

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "${ARGN} failed (${rc}):\n${out}${err}")
  endif()
endfunction()

# The DLL and norvik.exe with the project's own build, the C host against the DLL.
run(${CMAKE_COMMAND} -S ${SOURCE} -B ${BINARY} -G Ninja
    -DCMAKE_TOOLCHAIN_FILE=${SOURCE}/cmake/mingw-w64-x86_64.cmake -DCMAKE_BUILD_TYPE=Release
    -DNORVIK_BUILD_TESTS=OFF -DNORVIK_WERROR=ON)
run(${CMAKE_COMMAND} --build ${BINARY} --target norvik norvik_host)
set(bin ${BINARY}/bin)
file(MAKE_DIRECTORY ${bin})
run(${mingw_cc} -std=c11 -Wall -Wextra -Werror -I${SOURCE}/include
    ${SOURCE}/tests/host/host_check.c ${BINARY}/libnorvik.dll.a -o ${bin}/host_check.exe)
file(COPY ${BINARY}/libnorvik.dll ${BINARY}/app/norvik.exe DESTINATION ${bin})
# The MinGW runtime beside them, as a Windows host ships it.
foreach(dll libgomp-1.dll libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
  execute_process(COMMAND ${mingw_cxx} -print-file-name=${dll} OUTPUT_VARIABLE path
                  OUTPUT_STRIP_TRAILING_WHITESPACE)
  if(NOT IS_ABSOLUTE "${path}" OR NOT EXISTS "${path}")
    file(GLOB_RECURSE path /usr/x86_64-w64-mingw32/*/${dll})
    list(GET path 0 path)
  endif()
  file(COPY ${path} DESTINATION ${bin})
endforeach()

# Wine in a prefix of its own, quiet, its first start made before anything is timed
# or compared.
set(ENV{WINEPREFIX} ${BINARY}/wineprefix)
set(ENV{WINEDEBUG} -all)
set(ENV{WINEDLLOVERRIDES} "mscoree,mshtml=")
execute_process(COMMAND ${wine} cmd /c exit OUTPUT_QUIET ERROR_QUIET)

# The scenarios of the C host, read from its test list.
set(host_data ${SOURCE}/tests/host/data)
set(host_work ${BINARY}/host_work)
file(MAKE_DIRECTORY ${host_work})
file(STRINGS ${SOURCE}/tests/host/tests.cmake cases REGEX "^host_case\\(")
set(failures "")
set(count 0)
foreach(line IN LISTS cases)
  string(REGEX MATCH "^host_case\\(([a-z_]+) ([0-9]+) ([a-z_.]+) (.*)\\)$" m "${line}")
  set(name ${CMAKE_MATCH_1})
  set(expect_rc ${CMAKE_MATCH_2})
  set(expect_file ${CMAKE_MATCH_3})
  string(REPLACE "\${host_work}" "${host_work}" args "${CMAKE_MATCH_4}")
  execute_process(COMMAND ${wine} ${bin}/host_check.exe ${args} WORKING_DIRECTORY ${host_data}
                  OUTPUT_VARIABLE out ERROR_QUIET RESULT_VARIABLE rc)
  string(REPLACE "\r\n" "\n" out "${out}")
  file(READ ${host_data}/${expect_file} expected)
  math(EXPR count "${count} + 1")
  if(NOT rc STREQUAL expect_rc OR NOT out STREQUAL expected)
    file(WRITE ${host_work}/${name}.actual "${out}")
    list(APPEND failures "${name} (status ${rc}, expected ${expect_rc}; output in ${host_work}/${name}.actual)")
  endif()
endforeach()
if(count LESS 10)
  message(FATAL_ERROR "only ${count} host scenarios found in tests/host/tests.cmake")
endif()

# The water job through norvik.exe and through the Linux host.
foreach(side windows linux)
  set(dir ${BINARY}/water_${side})
  file(REMOVE_RECURSE ${dir})
  file(MAKE_DIRECTORY ${dir})
  file(COPY ${SOURCE}/examples/water.mol ${SOURCE}/examples/hf.par DESTINATION ${dir})
endforeach()
execute_process(COMMAND ${wine} ${bin}/norvik.exe run water.mol hf.par
                WORKING_DIRECTORY ${BINARY}/water_windows OUTPUT_VARIABLE win_out
                ERROR_VARIABLE win_err RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "norvik.exe under Wine ended with ${rc}:\n${win_out}${win_err}")
endif()
execute_process(COMMAND ${LINUX_HOST} run water.mol hf.par
                WORKING_DIRECTORY ${BINARY}/water_linux OUTPUT_QUIET)
execute_process(
  COMMAND python3 ${SOURCE}/tests/windows/compare_reports.py ${BINARY}/water_linux/water.report
          ${BINARY}/water_windows/water.report
  RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
if(NOT rc EQUAL 0)
  list(APPEND failures "water report:\n${out}${err}")
endif()

if(failures)
  list(JOIN failures "\n" text)
  message(FATAL_ERROR "under Wine:\n${text}")
endif()
message(STATUS "${count} host scenarios and the water job agree under Wine")
