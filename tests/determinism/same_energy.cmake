cmake_minimum_required(VERSION 3.25)
# Runs one host job at the input geometry and at a rotated and translated copy and
# requires the same molecular energy to 1e-10 hartree:
#   -DNORVIK -DMOL -DROTATED -DPAR -DWORKDIR
include(${CMAKE_CURRENT_LIST_DIR}/common.cmake)
run_job(${WORKDIR}/input ${MOL} out)
run_job(${WORKDIR}/rotated ${ROTATED} out)
# The report's energy in eV carries nine decimals (1e-9 eV = 3.7e-11 hartree); a
# printed difference of two units, 7.3e-11 hartree, is the largest that stays
# below 1e-10 hartree.
foreach(geometry input rotated)
  file(STRINGS ${WORKDIR}/${geometry}/job.report line REGEX "Molecular energy +=")
  if(NOT line MATCHES "= +(-?[0-9]+)\\.([0-9]+) \\[eV\\]")
    message(FATAL_ERROR "no molecular energy in ${WORKDIR}/${geometry}/job.report")
  endif()
  set(${geometry}_text "${CMAKE_MATCH_1}.${CMAKE_MATCH_2}")
  # CMake has no floating point: units of 1e-9 eV as integers ("1" in front keeps
  # leading zeros of the fraction from reading as octal)
  set(frac "${CMAKE_MATCH_2}000000000")
  string(SUBSTRING "${frac}" 0 9 frac)
  string(REPLACE "-" "" whole "${CMAKE_MATCH_1}")
  math(EXPR units "${whole} * 1000000000 + 1${frac} - 1000000000")
  if(CMAKE_MATCH_1 MATCHES "^-")
    math(EXPR units "0 - ${units}")
  endif()
  set(${geometry}_units ${units})
endforeach()
math(EXPR diff "${input_units} - ${rotated_units}")
if(diff LESS 0)
  math(EXPR diff "0 - ${diff}")
endif()
if(diff GREATER 2)
  message(FATAL_ERROR "energy ${rotated_text} eV at the rotated geometry, ${input_text} eV at "
                      "the input geometry: ${diff}e-9 eV apart")
endif()
message(STATUS "E = ${input_text} eV, rotated ${rotated_text} eV")
