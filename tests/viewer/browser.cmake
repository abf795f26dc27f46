cmake_minimum_required(VERSION 3.25)
# Pages of norvik view opened in headless Chromium.  The page collects every
# error (window errors, rejected promises, console.error) and, when it has drawn
# everything, sets data-status on its body; the DOM dumped after a few seconds
# of virtual time shows both.  With #check the page also walks through every
# surface, every optimisation step, every normal mode and every spectrum width.
file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK})
find_program(CHROMIUM NAMES chromium chromium-browser google-chrome)
if(NOT CHROMIUM)
  message(FATAL_ERROR "the viewer test needs Chromium: apt-get install chromium "
                      "(tools/ensure-packages.sh does), or leave it out with ctest -LE viewer")
endif()

function(norvik_view)
  execute_process(COMMAND ${NORVIK} view ${ARGN} WORKING_DIRECTORY ${WORK} RESULT_VARIABLE rc
                  OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "norvik view ${ARGN}: status ${rc}\n${out}${err}")
  endif()
endfunction()

# The <body> tag of the page after it has run, in `body`; more Chromium flags
# may follow the hash.
function(open_page page hash)
  file(MAKE_DIRECTORY ${WORK}/profile-${page})
  execute_process(
    COMMAND ${CHROMIUM} --headless --no-sandbox --disable-gpu --disable-quic --no-first-run
            --disable-background-networking --disable-component-update --disable-sync
            --use-angle=swiftshader --enable-unsafe-swiftshader
            --user-data-dir=${WORK}/profile-${page} --window-size=1280,900 ${ARGN}
            --virtual-time-budget=4000 --dump-dom "file://${WORK}/${page}${hash}"
    RESULT_VARIABLE rc OUTPUT_VARIABLE dom ERROR_VARIABLE err TIMEOUT 90)
  file(WRITE ${WORK}/${page}.dom "${dom}")
  string(REGEX MATCH "<body[^>]*>" tag "${dom}")
  if(NOT rc EQUAL 0 OR NOT tag)
    message(FATAL_ERROR "Chromium did not show ${page} (status ${rc}):\n${err}")
  endif()
  string(REGEX MATCH "<pre id=\"errors\">[^<]*" errors "${dom}")
  if(NOT tag MATCHES "data-status=\"ready\"" OR NOT tag MATCHES "data-errors=\"0\"")
    message(FATAL_ERROR "${page}${hash} did not draw cleanly: ${tag}\n${errors}")
  endif()
  set(body "${tag}" PARENT_SCOPE)
  set(dom "${dom}" PARENT_SCOPE)
endfunction()

function(expect_attribute name pattern)
  string(REGEX MATCH "${name}=\"([^\"]*)\"" m "${body}")
  if(NOT CMAKE_MATCH_1 MATCHES "${pattern}")
    message(FATAL_ERROR "${name} is '${CMAKE_MATCH_1}', not ${pattern}: ${body}")
  endif()
endfunction()

# Fails unless the number in attribute `name` lies within [lo, hi].
function(expect_between name lo hi)
  string(REGEX MATCH "${name}=\"([^\"]*)\"" m "${body}")
  if(NOT CMAKE_MATCH_1 MATCHES "^[0-9.]+$" OR CMAKE_MATCH_1 LESS lo OR CMAKE_MATCH_1 GREATER hi)
    message(FATAL_ERROR "${name} is '${CMAKE_MATCH_1}', not within [${lo}, ${hi}]: ${body}")
  endif()
endfunction()

# How far the page's own orbitals may be from norm 1 and from the host's cubes.
# The HOMO's Σ φ² ΔV on the page's grid (points 0.15 Å apart) misses 1 by the
# grid's coarseness against the tight oxygen primitives and by the tail beyond
# the box: 8e-4 measured.
set(kNormLow 0.997)
set(kNormHigh 1.003)
# The cubes hold five significant digits (E13.5): up to 5e-6 off for |φ| < 1
# (4.7e-6 measured).  A d function out of molden's order, or xx normalised as
# xy, puts the page 4e-3 or more away from the HOMO or the LUMO cube.
set(kCubeTolerance 0.00001)

# The full fixture: every section, the molecule drawn by WebGL, the orbitals of
# its molden file and its HOMO and LUMO cubes, each surface drawn each time it
# was shown.  The page's HOMO is normalised on its grid, and its HOMO and LUMO
# (O d functions in both) agree with the host's cubes of them at their points.
file(COPY ${DATA}/water.json ${DATA}/water.homo.cube ${DATA}/water.lumo.cube ${DATA}/water.molden
     DESTINATION ${WORK})
norvik_view(water.json)
open_page(water.html "#check")
expect_attribute(data-webgl "^yes$")
expect_attribute(data-atoms "^3$")
expect_attribute(data-surfaces "^[1-9][0-9]*$")
expect_between(data-homo-norm ${kNormLow} ${kNormHigh})
expect_attribute(data-cube-orbitals "^homo lumo$")
expect_between(data-cube-difference 0 ${kCubeTolerance})
expect_attribute(data-sections
  "^header molecule energies charges orbitals scf optimisation vibrations thermochemistry excited run check$")
# Numbers of the tables and plots as a reader sees them.
foreach(text "-76.009341328" "1826.3" "Gibbs free energy G" "142.9" "Play the path"
        "<circle class=\"marker series-0" "Orbitals from water.molden (19 Cartesian functions)"
        "<option value=\"m4\">HOMO (-13.55 eV)</option>" "<option value=\"m0\">HOMO-4 (-559.26 eV)</option>")
  string(FIND "${dom}" "${text}" at)
  if(at EQUAL -1)
    message(FATAL_ERROR "water.html shows no '${text}'")
  endif()
endforeach()

# A single point with little in it, its one cube gone and markup in its name:
# the page draws what there is, says where the surface would have been, and
# shows the name as text.  Its molden file (written here: bohr, Fortran
# exponents) has one orbital of each spin: the page offers the α HOMO and the
# β LUMO, and normalises the contracted s function itself.
file(WRITE ${WORK}/bare.molden [=[
[Molden Format]
[Atoms] AU
H     1   1    0.0 0.0 0.0
[GTO]
  1 0
 s    3 1.00
  3.42525091D+00  0.15432897D+00
  0.62391373      0.53532814
  0.16885540      0.44463454

[MO]
 Sym= A
 Ene= -0.466
 Spin= Alpha
 Occup= 1.0
   1  1.0
 Sym= A
 Ene= 0.2
 Spin= Beta
 Occup= 0.0
   1  -1.0
]=])
file(WRITE ${WORK}/bare.json [=[
{"schema_name": "norvik_result", "schema_version": 1, "success": false, "status": 3,
 "messages": ["SCF not converged in 3 cycles"],
 "files": {"cubes": [{"what": "density", "path": "gone.cube"}], "molden": "bare.molden"},
 "driver": "energy", "model": {"method": "HF", "basis": "STO-3G", "reference": "UHF"},
 "molecule": {"name": "<\/script><b>H</b>", "symbols": ["H"], "atomic_numbers": [1],
              "geometry": [0, 0, 0], "geometry_angstrom": [0, 0, 0],
              "molecular_charge": 0, "molecular_multiplicity": 2, "real": [true]},
 "return_result": -0.466581849,
 "properties": {"scf_total_energy": -0.466581849, "scf_converged": false},
 "wavefunction": {"restricted": false, "orbital_energies_a": [-0.466], "orbital_energies_b": [0.2],
                  "occupations_a": [1], "occupations_b": [0]}}
]=])
norvik_view(bare.json)
open_page(bare.html "#check")
expect_attribute(data-webgl "^yes$")
expect_attribute(data-sections "^header molecule energies orbitals run check$")
expect_between(data-homo-norm ${kNormLow} ${kNormHigh})
foreach(text "data-cube-orbitals=\"\"" "cannot find the cube file 'gone.cube'" "NOT converged" "&lt;/script&gt;&lt;b&gt;H&lt;/b&gt;"
        "<option value=\"m0\">HOMO α (-12.68 eV)</option>" "<option value=\"m1\">LUMO β (5.44 eV)</option>")
  string(FIND "${dom}" "${text}" at)
  if(at EQUAL -1)
    message(FATAL_ERROR "bare.html shows no '${text}'")
  endif()
endforeach()

# Without WebGL the page says so where the molecule would be and draws the rest.
open_page(water.html "#check" --disable-webgl)
expect_attribute(data-webgl "^no$")
expect_attribute(data-sections
  "^header energies charges orbitals scf optimisation vibrations thermochemistry excited run check$")
string(FIND "${dom}" "This browser offers no WebGL" at)
if(at EQUAL -1)
  message(FATAL_ERROR "water.html without WebGL does not say why the molecule is missing")
endif()
