# The layering of the C++ core: one line per folder under src/, from the bottom up.
#
#   norvik_layer(<folder> <folders it may use>...)
#
# A folder may include its own headers, the public headers under include/ and the
# headers of the folders on its line, and its code may call only into those folders,
# which must have their lines before its own.  The top-level CMakeLists.txt (one
# object library per folder, linked to the folders on its line) and the tests
# layout_includes and layout_links all read this table, so the build and the checks
# cannot disagree.  A folder listed here that does not exist yet, or has no sources,
# builds nothing.  Details: docs/layout.md.

set(NORVIK_SUBSYSTEMS "")
macro(norvik_layer name)
  list(APPEND NORVIK_SUBSYSTEMS ${name})
  set(NORVIK_LAYER_${name} ${ARGN})
endmacro()

#            folder      may use
norvik_layer(common)
norvik_layer(setup       common)
norvik_layer(basis       common)
norvik_layer(linalg      common)
norvik_layer(integrals   common basis)
norvik_layer(report      common setup)
norvik_layer(dft         common basis integrals linalg)
norvik_layer(scf         common setup basis integrals linalg dft)
norvik_layer(properties  common setup basis integrals linalg dft scf)
norvik_layer(geometry    common setup basis integrals linalg dft scf properties)
norvik_layer(abi         common setup basis linalg integrals report dft scf geometry properties)
