import numpy as np
import pytest

from norvik import Molecule, MoleculeError

WATER_XYZ = """3
water  optimised elsewhere
O    0.000000   0.000000   0.117300
H    0.000000   0.757200  -0.469200
H    0.000000  -0.757200  -0.469200
"""


def test_reads_xyz_with_and_without_header():
    m = Molecule.from_xyz(WATER_XYZ)
    assert m.symbols == ["O", "H", "H"]
    assert m.name == "water"
    assert m.positions.shape == (3, 3)
    assert m.positions[1, 1] == pytest.approx(0.7572)
    assert (m.charge, m.multiplicity, m.electrons) == (0, 1, 10)
    bare = Molecule.from_xyz("\n".join(WATER_XYZ.splitlines()[2:]))
    np.testing.assert_array_equal(bare.positions, m.positions)
    # symbols in any letter case, or atomic numbers, come out in the library's spelling
    m = Molecule.from_xyz("CL 0 0 0\r\n17 0 0 2.0D+00 extra\r\n")
    assert m.symbols == ["Cl", "Cl"] and m.positions[1, 2] == 2.0
    assert "Cl2" in repr(m)


def test_xyz_round_trip_keeps_atoms():
    m = Molecule.from_atoms([("C", (0, 0, 0)), ("O", (0, 0, 1.128))], charge=0, name="co")
    back = Molecule.from_xyz(m.to_xyz())
    assert back.symbols == m.symbols and back.name == "co"
    np.testing.assert_allclose(back.positions, m.positions, atol=1e-10)


def test_multiplicity_defaults_and_checks():
    oh = Molecule.from_atoms([("O", (0, 0, 0)), ("H", (0, 0, 0.97))])
    assert oh.multiplicity == 2
    assert Molecule.from_atoms([("O", (0, 0, 0)), ("H", (0, 0, 0.97))], charge=-1).multiplicity == 1
    o2 = Molecule.from_atoms([("O", (0, 0, 0)), ("O", (0, 0, 1.21))], mult=3)
    assert o2.multiplicity == 3
    with pytest.raises(MoleculeError, match="impossible with 16 electrons"):
        Molecule.from_atoms([("O", (0, 0, 0)), ("O", (0, 0, 1.21))], mult=2)
    with pytest.raises(MoleculeError, match="impossible with 1 electrons"):
        Molecule.from_atoms([("H", (0, 0, 0))], mult=4)
    with pytest.raises(MoleculeError, match="leaves -1 electrons"):
        Molecule.from_atoms([("H", (0, 0, 0))], charge=2)


@pytest.mark.parametrize("text, message", [
    ("2\nx\nO 0 0 0\n", "announces 2 atoms"),
    ("Xx 0 0 0\n", "line 1: 'Xx' is not an element symbol"),
    ("Cs 0 0 0\n", "'Cs' is not an element symbol of H to Xe"),
    ("1\nx\nO 0 0\n", "line 3: 'O 0 0' is not 'symbol x y z'"),
    ("O 0 0 zero\n", "are not three numbers"),
    ("O 0 0 nan\n", "finite"),
    ("O 0 0 0\nH 0 0 0.05\n", r"atoms 1 \(O\) and 2 \(H\) are 0.0500 Å apart"),
    ("", "at least one atom"),
])
def test_refuses_bad_xyz(text, message):
    with pytest.raises(MoleculeError, match=message):
        Molecule.from_xyz(text)


def test_from_atoms_names_the_bad_atom():
    with pytest.raises(MoleculeError, match="atom 2"):
        Molecule.from_atoms([("H", (0, 0, 0)), ("H", (0, 0))])
    with pytest.raises(MoleculeError, match="55"):
        Molecule([55], [[0, 0, 0]])
