cmake_minimum_required(VERSION 3.25)
# Checks the layering of the sources against the table cmake/layers.cmake:
#  - the table itself: each folder uses only folders whose line comes before its own,
#    and with each of them also the folders that one uses (the headers of a folder
#    include those, and its inline code calls into them);
#  - every folder under src/ is in the table;
#  - every #include of src/<folder>/ reaches only that folder, the folders its line
#    of the table names, and include/; of app/ only app/ and include/; of include/
#    only include/;
#  - the host norvik_host sees no include folder but include/ and links nothing
#    of the core but the shared library.
# An include is resolved the way the compiler does (the including file's folder
# first for "...", then include/ and src/); one that resolves to nothing in the
# tree is a system header and not checked.
# Usage: cmake -DROOT=<source tree> [-DHOST_INCLUDES=<dirs>] [-DHOST_LINKS=<libs>] -P
include(${ROOT}/cmake/layers.cmake)

set(failures 0)
macro(layout_fault text)
  message("${text}")
  math(EXPR failures "${failures} + 1")
endmacro()

# The table.
set(seen "")
foreach(sub IN LISTS NORVIK_SUBSYSTEMS)
  if(sub IN_LIST seen)
    layout_fault("cmake/layers.cmake: ${sub} has two lines")
  endif()
  foreach(dep IN LISTS NORVIK_LAYER_${sub})
    if(NOT dep IN_LIST NORVIK_SUBSYSTEMS)
      layout_fault("cmake/layers.cmake: ${sub} uses ${dep}, which has no line")
    elseif(NOT dep IN_LIST seen)
      layout_fault("cmake/layers.cmake: ${sub} uses ${dep}, whose line comes after it")
    else()
      foreach(below IN LISTS NORVIK_LAYER_${dep})
        if(NOT below IN_LIST NORVIK_LAYER_${sub})
          layout_fault("cmake/layers.cmake: ${sub} uses ${dep} but not ${below}, which ${dep} uses")
        endif()
      endforeach()
    endif()
  endforeach()
  list(APPEND seen ${sub})
endforeach()

file(GLOB entries LIST_DIRECTORIES true RELATIVE ${ROOT}/src ${ROOT}/src/*)
foreach(name IN LISTS entries)
  if(IS_DIRECTORY ${ROOT}/src/${name} AND NOT name IN_LIST NORVIK_SUBSYSTEMS)
    layout_fault("src/${name}: folder not in cmake/layers.cmake")
  endif()
endforeach()

# Which part of the tree a resolved file belongs to: a folder under src/, "app",
# "include", or the path itself for anything else.
function(layout_owner path out)
  file(RELATIVE_PATH rel ${ROOT} ${path})
  if(rel MATCHES "^src/([^/]+)/")
    set(${out} ${CMAKE_MATCH_1} PARENT_SCOPE)
  elseif(rel MATCHES "^(app|include)/")
    set(${out} ${CMAKE_MATCH_1} PARENT_SCOPE)
  else()
    set(${out} ${rel} PARENT_SCOPE)
  endif()
endfunction()

# Checks every #include of the files below ${ROOT}/${folder} against ${allowed}
# (owners as returned by layout_owner); ${who} names the includer in messages.
function(layout_scan folder who allowed)
  file(GLOB_RECURSE files ${ROOT}/${folder}/*.h ${ROOT}/${folder}/*.hpp ${ROOT}/${folder}/*.inc
       ${ROOT}/${folder}/*.c ${ROOT}/${folder}/*.cpp ${ROOT}/${folder}/*.cc)
  foreach(file IN LISTS files)
    file(READ ${file} text)
    if(NOT text MATCHES "#[ \t]*include")
      continue()
    endif()
    # One list element per line: neutralise the characters that CMake lists treat
    # specially before splitting at the line ends.
    string(REPLACE "\r" "" text "${text}")
    string(REPLACE "\\" "/" text "${text}")
    string(REPLACE ";" "," text "${text}")
    string(REPLACE "[" "(" text "${text}")
    string(REPLACE "]" ")" text "${text}")
    string(REPLACE "\n" ";" lines "${text}")
    get_filename_component(here ${file} DIRECTORY)
    file(RELATIVE_PATH shown ${ROOT} ${file})
    set(number 0)
    foreach(line IN LISTS lines)
      math(EXPR number "${number} + 1")
      if(NOT line MATCHES "^[ \t]*#[ \t]*include[ \t]*([<\"])([^>\"]+)[>\"]")
        continue()
      endif()
      set(name ${CMAKE_MATCH_2})
      set(search ${ROOT}/include ${ROOT}/src)
      if(CMAKE_MATCH_1 STREQUAL "\"")
        list(PREPEND search ${here})
      endif()
      set(target "")
      foreach(dir IN LISTS search)
        if(EXISTS ${dir}/${name} AND NOT IS_DIRECTORY ${dir}/${name})
          get_filename_component(target ${dir}/${name} ABSOLUTE)
          break()
        endif()
      endforeach()
      if(NOT target)
        continue()
      endif()
      layout_owner(${target} owner)
      if(NOT owner IN_LIST allowed)
        layout_fault("${shown}:${number}: ${who} may not include ${owner} (${name})")
      endif()
    endforeach()
  endforeach()
  set(failures ${failures} PARENT_SCOPE)
endfunction()

set(subsystems ${NORVIK_SUBSYSTEMS})
list(REMOVE_DUPLICATES subsystems)
foreach(sub IN LISTS subsystems)
  if(IS_DIRECTORY ${ROOT}/src/${sub})
    layout_scan(src/${sub} ${sub} "${sub};include;${NORVIK_LAYER_${sub}}")
  endif()
endforeach()
layout_scan(app "the host" "app;include")
layout_scan(include "a public header" "include")

# The host's build: only include/ to include from, only the shared library to link.
if(DEFINED HOST_INCLUDES)
  foreach(dir IN LISTS HOST_INCLUDES)
    get_filename_component(dir ${dir} ABSOLUTE)
    if(NOT dir STREQUAL "${ROOT}/include")
      layout_fault("app/CMakeLists.txt: the host may not include from ${dir}")
    endif()
  endforeach()
endif()
if(DEFINED HOST_LINKS)
  foreach(lib IN LISTS HOST_LINKS)
    string(REGEX REPLACE "^norvik_" "" stem "${lib}")
    if(NOT stem STREQUAL lib AND (stem MATCHES "^(static|core)$" OR stem IN_LIST NORVIK_SUBSYSTEMS))
      layout_fault("app/CMakeLists.txt: the host may not link ${lib}, only the shared library norvik")
    endif()
  endforeach()
endif()

if(failures GREATER 0)
  message(FATAL_ERROR "layout: ${failures} layering faults")
endif()
message(STATUS "layout: the includes keep to cmake/layers.cmake")
