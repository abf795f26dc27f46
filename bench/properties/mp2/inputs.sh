#!/bin/sh
# Writes the benchmark's inputs for one norvik molecule file into a folder:
# norvik.mol (theory MP2), psi4.in and nwchem.nw with the file's atoms.
#
#   bench/properties/mp2/inputs.sh MOLECULE_FILE FOLDER
set -eu
mol=$1
out=$2
atoms=$(tail -n +24 "$mol" | awk 'NF >= 4 { printf "%s %s %s %s\n", $1, $2, $3, $4 }')
# norvik's basis name (record 2) as the other programs write it: x is *, p is +, a
# trailing C asks for Cartesian d functions.
name=$(sed -n 4p "$mol" | tr -d "' ")
case $name in
  *C) shape=cartesian; puream=false; name=${name%C} ;;
  *) shape=spherical; puream=true ;;
esac
library=$(printf '%s' "$name" | sed 's/x/*/g; s/p/+/g')
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
  basis $library
  puream $puream
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
basis $shape
  * library $library
end
scf
  thresh 1e-8
end
task mp2 energy
NWCHEM
