# The layering of the core (cmake/layers.cmake, docs/layout.md), checked twice:
# on the #include lines of the sources, and on the symbols that each subsystem's
# objects take from the others.
add_test(NAME layout_includes
  COMMAND ${CMAKE_COMMAND} -DROOT=${PROJECT_SOURCE_DIR}
          "-DHOST_INCLUDES=$<TARGET_PROPERTY:norvik_host,INCLUDE_DIRECTORIES>"
          "-DHOST_LINKS=$<TARGET_PROPERTY:norvik_host,LINK_LIBRARIES>"
          -P ${CMAKE_CURRENT_LIST_DIR}/check_includes.cmake)

if(NOT WIN32 AND NOT APPLE AND CMAKE_NM)
  set(_layout_objects "")
  foreach(_lib IN LISTS NORVIK_CORE_LIBRARIES)
    string(REGEX REPLACE "^norvik_" "" _sub ${_lib})
    string(APPEND _layout_objects "set(NORVIK_OBJECTS_${_sub} \"$<TARGET_OBJECTS:${_lib}>\")\n")
  endforeach()
  file(GENERATE OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/layout_objects-$<CONFIG>.cmake
       CONTENT "${_layout_objects}")
  add_test(NAME layout_links
    COMMAND ${CMAKE_COMMAND} -DROOT=${PROJECT_SOURCE_DIR} -DNM=${CMAKE_NM}
            -DOBJECTS=${CMAKE_CURRENT_BINARY_DIR}/layout_objects-$<CONFIG>.cmake
            -P ${CMAKE_CURRENT_LIST_DIR}/check_links.cmake)
endif()
