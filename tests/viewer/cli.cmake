cmake_minimum_required(VERSION 3.25)
# norvik view from the command line: the page it writes from the fixture result
# (tests/viewer/data: water, HF/6-31G*, optimisation, vibrations with Raman and
# excited states, its molden file and its HOMO and LUMO cubes made by the host),
# and every file it refuses.
include(${CLI})
set(fixture ${DATA}/water.json ${DATA}/water.homo.cube ${DATA}/water.lumo.cube ${DATA}/water.molden)
file(COPY ${fixture} DESTINATION ${WORK})

# Fails unless WORK/<file> holds (or, with NOT, lacks) <text>.
function(page_has file text)
  file(READ ${WORK}/${file} content)
  string(FIND "${content}" "${text}" at)
  if(ARGV2 STREQUAL "NOT" AND NOT at EQUAL -1)
    message(FATAL_ERROR "${file} holds '${text}'")
  elseif(NOT ARGV2 STREQUAL "NOT" AND at EQUAL -1)
    message(FATAL_ERROR "${file} lacks '${text}'")
  endif()
endfunction()

# The page beside the result: the result verbatim, the cubes' and the molden
# file's text, the library and the page's own parts, every marker of the
# template filled.
run(page STATUS 0 ARGS view water.json STDOUT "norvik: page written to water.html"
    CREATES water.html)
file(READ ${WORK}/water.json result)
page_has(water.html "<script type=\"application/json\" id=\"norvik-result\">${result}</script>")
page_has(water.html "norvik orbital 5 (alpha) [bohr**-3/2]\\n   -3   -7.558905")
page_has(water.html "norvik orbital 6 (alpha)")
file(READ ${WORK}/water.molden molden)
page_has(water.html "<script type=\"text/plain\" id=\"norvik-molden\">${molden}</script>")
page_has(water.html "{\"path\": \"water.molden\"}")
page_has(water.html "var norvikOrbitals")
page_has(water.html "3Dmol.js incorporates code from GLmol")
page_has(water.html "<title>norvik: water (HF/6-31G*)</title>")
page_has(water.html "var norvikPlot")
page_has(water.html "@@" NOT)

# Text in the result that would end a script element, open an HTML comment or
# break out of the title is carried safely; the browser test reads it back.
variant(tricky.json water.json "\"name\": \"water\"" "\"name\": \"</script><!--<b>&\"")
variant(tricky2.json tricky.json "\"messages\": \[" "\"messages\": [\"</SCRIPT> \\u00e9 \\ud83d\\ude00\", ")
run(escaped STATUS 0 ARGS view tricky2.json --output tricky.html CREATES tricky.json tricky2.json tricky.html)
page_has(tricky.html "\"name\": \"<\\/script>\\u003c!--<b>&\"")
page_has(tricky.html "<title>norvik: &lt;/script&gt;&lt;!--&lt;b&gt;&amp; (HF/6-31G*)</title>")
page_has(tricky.html "</script><!--" NOT)
file(REMOVE ${WORK}/tricky.json ${WORK}/tricky.html)
# The molden file goes in as plain text with a backslash after every "<".
variant(tricky.molden water.molden "water HF/6-31Gx" "</script><!--<\\x")
variant(tricky.json water.json "\"molden\": \"water.molden\"" "\"molden\": \"tricky.molden\"")
run(escaped_molden STATUS 0 ARGS view tricky.json CREATES tricky.json tricky.molden tricky.html)
page_has(tricky.html "<\\/script><\\!--<\\\\x")
page_has(tricky.html "</script><!--" NOT)
file(REMOVE ${WORK}/tricky.json ${WORK}/tricky.molden ${WORK}/tricky.html)

# A result in another folder: the page goes beside it, its cubes and molden file
# are found beside it; --output names another place, whose folder must exist.
file(MAKE_DIRECTORY ${WORK}/sub)
file(COPY ${fixture} DESTINATION ${WORK}/sub)
run(beside STATUS 0 ARGS view sub/water.json STDOUT "page written to sub/water.html")
page_has(sub/water.html "norvik orbital 5 (alpha)")
page_has(sub/water.html "[Molden Format]")
run(no_folder STATUS 2 ARGS view water.json --output nowhere/w.html
    STDERR "norvik: cannot write the partial page 'nowhere/w.html.partial'")

# A cube or a molden file that is gone or cut short: a page all the same,
# without that surface or those orbitals, and a note on standard error.
file(REMOVE ${WORK}/sub/water.homo.cube ${WORK}/sub/water.molden)
file(RENAME ${WORK}/water.homo.cube ${WORK}/kept.cube)
file(RENAME ${WORK}/water.molden ${WORK}/kept.molden)
run(cube_missing STATUS 0 ARGS view sub/water.json CHANGES sub/water.html
    STDERR "norvik: cannot find the cube file 'sub/water.homo.cube' (listed in sub/water.json); the page has no surface for it"
           "norvik: cannot find the molden file 'sub/water.molden' (listed in sub/water.json); the page has no orbitals from it"
    STDOUT "page written to sub/water.html")
page_has(sub/water.html "\"problem\": \"cannot find the cube file")
page_has(sub/water.html "\"problem\": \"cannot find the molden file")
page_has(sub/water.html "id=\"norvik-molden\"></script>")
file(READ ${WORK}/kept.molden molden LIMIT 1500)
file(WRITE ${WORK}/sub/water.molden "${molden}")
run(molden_short STATUS 0 ARGS view sub/water.json CHANGES sub/water.html
    STDERR "norvik: the molden file 'sub/water.molden' has no [GTO] and [MO] sections; the page has no orbitals from it")
file(READ ${WORK}/kept.cube cube LIMIT 2000)
file(WRITE ${WORK}/water.homo.cube "${cube}")
run(cube_short STATUS 0 ARGS view water.json CHANGES water.html
    STDERR "norvik: the cube file 'water.homo.cube' is not a Gaussian cube: it holds 123 values for a grid of 6783 points; the page has no surface for it")
file(RENAME ${WORK}/kept.cube ${WORK}/water.homo.cube)
file(RENAME ${WORK}/kept.molden ${WORK}/water.molden)

# Refused, and an earlier page left as it was: no result file, a folder, not
# JSON (line and column named), JSON of another program, a page over an input.
# The broken files are not named .json: every .json a case leaves must parse.
run(missing STATUS 2 ARGS view nothing.json STDERR "norvik: cannot find the result file 'nothing.json'")
run(folder STATUS 2 ARGS view sub STDERR "norvik: the result file 'sub' is a folder; name a file")
file(WRITE ${WORK}/bad.txt "{\"schema_name\": \"norvik_result\",\n  \"status\": 0,\n}\n")
run(not_json STATUS 2 ARGS view bad.txt --output water.html
    STDERR "norvik: the result file 'bad.txt' is not JSON (line 3, column 1: a member name in double quotes belongs here, not '}'); give the PREFIX.json file of a norvik run")
file(WRITE ${WORK}/bad.txt "[1, 2] 3")
run(trailing STATUS 2 ARGS view bad.txt STDERR "(line 1, column 8: more text after the end of the JSON value)")
file(WRITE ${WORK}/bad.txt "{\"a\": \"tab\there\"}")
run(control STATUS 2 ARGS view bad.txt STDERR "a control character inside a string must be escaped (the byte 0x09)")
file(WRITE ${WORK}/bad.txt "{\"a\": 01}")
run(leading_zero STATUS 2 ARGS view bad.txt STDERR "(line 1, column 8: a number may not start with 0)")
file(WRITE ${WORK}/bad.txt "{\"a\": \"\\ud800x\"}")
run(surrogate STATUS 2 ARGS view bad.txt STDERR "a high surrogate must be followed by a low one")
string(REPEAT "[" 300 deep)
file(WRITE ${WORK}/bad.txt "${deep}")
run(deep STATUS 2 ARGS view bad.txt STDERR "values nested deeper than 256")
file(WRITE ${WORK}/bad.txt "{\"schema_name\": \"qcschema_output\"}")
run(other_schema STATUS 2 ARGS view bad.txt
    STDERR "norvik: the result file 'bad.txt' is JSON but not a norvik result (its schema_name is not 'norvik_result')")
run(over_input STATUS 2 ARGS view water.json --output water.json
    STDERR "norvik: the page 'water.json' would overwrite the result file 'water.json'; name another file with --output")
run(over_cube STATUS 2 ARGS view water.json --output ./water.homo.cube
    STDERR "would overwrite the cube file 'water.homo.cube'")
run(over_molden STATUS 2 ARGS view water.json --output water.molden
    STDERR "would overwrite the molden file 'water.molden'")
file(REMOVE ${WORK}/bad.txt)

# Usage.
run(no_file STATUS 2 ARGS view STDERR "norvik: norvik view needs a result file")
run(two_files STATUS 2 ARGS view water.json other.json
    STDERR "norvik view takes one result file, not 'water.json' and 'other.json'")
run(unknown STATUS 2 ARGS view water.json --cube homo STDERR "unknown option '--cube' of norvik view")
run(no_output STATUS 2 ARGS view water.json --output STDERR "--output needs the name of the page")
run(help STATUS 0 ARGS view --help STDOUT "usage: norvik view RESULT.json [--output FILE.html]")
