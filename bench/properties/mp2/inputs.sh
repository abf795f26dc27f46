#!/bin/sh
# Writes the benchmark's inputs for one norvik molecule file into a folder:
# norvik.mol (theory MP2), psi4.in and nwchem.nw with the file's atoms.
#
#   bench/properties/mp2/inputs.sh MOLECULE_FILE FOLDER
set -eu
mol=$1
out=$2
atoms=$(tail -n +24 "$mol" | awk 'NF >= 4 { printf "%s %s %s %s\n", $1, $2, $3, $4 }')
sed "2s/.*/'MP2'/" "$mol" > "$out/norvik.mol"
cat > "$out/psi4.in" <<PSI4
memory 3 gb
molecule {
0 1
$atoms
symmetry c1
no_reorient
no_com
}
set {
  basis 6-31G*
  puream true
  scf_type pk
  mp2_type conv
  e_convergence 1e-10
  d_convergence 1e-8
}
energy('mp2')
PSI4
cat > "$out/nwchem.nw" <<NWCHEM
start bench
memory total 3000 mb
geometry units angstrom noautoz noautosym
$atoms
end
basis spherical
  * library 6-31G*
end
scf
  thresh 1e-8
end
task mp2 energy
NWCHEM
