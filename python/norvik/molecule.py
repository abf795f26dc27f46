"""Molecules in ångström: the atoms, the charge and the spin multiplicity of a job."""

from __future__ import annotations

from typing import Iterable, Sequence

import numpy as np

# The elements the library knows, hydrogen to xenon, in the spelling its input
# files take (case matters there: "Cl", not "CL").
SYMBOLS = (
    "H", "He",
    "Li", "Be", "B", "C", "N", "O", "F", "Ne",
    "Na", "Mg", "Al", "Si", "P", "S", "Cl", "Ar",
    "K", "Ca", "Sc", "Ti", "V", "Cr", "Mn", "Fe", "Co", "Ni", "Cu", "Zn",
    "Ga", "Ge", "As", "Se", "Br", "Kr",
    "Rb", "Sr", "Y", "Zr", "Nb", "Mo", "Tc", "Ru", "Rh", "Pd", "Ag", "Cd",
    "In", "Sn", "Sb", "Te", "I", "Xe",
)  # fmt: skip
_Z = {s: z for z, s in enumerate(SYMBOLS, start=1)}
_BY_LOWER = {s.lower(): s for s in SYMBOLS}

# The host refuses atoms closer than this (they would make the basis linearly
# dependent or the nuclear repulsion meaningless); refusing them here names
# the pair before any program runs.
MIN_ATOM_DISTANCE = 0.1  # Å
# The host refuses coordinates farther than this from the origin.
MAX_COORDINATE = 1.0e5  # Å


class MoleculeError(ValueError):
    """A molecule that no job could run: the message names the atom or line."""


def atomic_number(symbol: str | int) -> int:
    """Z of an element symbol (any letter case) or of a number 1 … 54."""
    if isinstance(symbol, (int, np.integer)) and not isinstance(symbol, bool):
        if 1 <= int(symbol) <= len(SYMBOLS):
            return int(symbol)
        raise MoleculeError(f"atomic number {symbol}: the library knows H to Xe (1 to 54)")
    text = str(symbol).strip()
    if text.isdigit():
        return atomic_number(int(text))
    canonical = _BY_LOWER.get(text.lower())
    if canonical is None:
        raise MoleculeError(f"'{text}' is not an element symbol of H to Xe")
    return _Z[canonical]


class Molecule:
    """Atoms with positions in ångström, a charge and a spin multiplicity 2S+1.

    ``multiplicity`` left as None is the lowest one the electron count allows
    (1 for an even count, 2 for an odd one).
    """

    def __init__(
        self,
        symbols: Sequence[str | int],
        positions,
        charge: int = 0,
        mult: int | None = None,
        name: str = "molecule",
    ):
        numbers = [atomic_number(s) for s in symbols]
        pos = np.array(positions, dtype=float)
        if len(numbers) == 0:
            raise MoleculeError("a molecule needs at least one atom")
        if pos.shape != (len(numbers), 3):
            raise MoleculeError(
                f"{len(numbers)} atoms need positions of shape ({len(numbers)}, 3), "
                f"not {pos.shape}"
            )
        if not np.all(np.isfinite(pos)):
            raise MoleculeError("every coordinate must be a finite number")
        if np.max(np.abs(pos)) > MAX_COORDINATE:
            raise MoleculeError(f"a coordinate lies beyond {MAX_COORDINATE:g} Å of the origin")
        if int(charge) != charge:
            raise MoleculeError(f"charge {charge}: give a whole number")
        self._numbers = numbers
        self._positions = pos
        self._positions.setflags(write=False)
        self.charge = int(charge)
        self.name = name
        self._check_distances()
        if self.electrons < 0:
            raise MoleculeError(
                f"charge {self.charge} leaves {self.electrons} electrons; the nuclei "
                f"bring {sum(numbers)}"
            )
        self._mult = None if mult is None else self._checked_multiplicity(mult)

    # ---- construction -------------------------------------------------------

    @classmethod
    def from_atoms(cls, atoms: Iterable, charge: int = 0, mult: int | None = None,
                   name: str = "molecule") -> "Molecule":
        """From ``[("O", (x, y, z)), ("H", (x, y, z)), ...]`` in ångström."""
        symbols, positions = [], []
        for k, atom in enumerate(atoms, start=1):
            try:
                symbol, xyz = atom
                xyz = [float(v) for v in xyz]
            except (TypeError, ValueError):
                raise MoleculeError(
                    f"atom {k}: write it as (symbol, (x, y, z)), not {atom!r}"
                ) from None
            if len(xyz) != 3:
                raise MoleculeError(f"atom {k}: {len(xyz)} coordinates, x y z needed")
            symbols.append(symbol)
            positions.append(xyz)
        return cls(symbols, np.array(positions).reshape(-1, 3), charge, mult, name)

    @classmethod
    def from_xyz(cls, text: str, charge: int = 0, mult: int | None = None,
                 name: str | None = None) -> "Molecule":
        """From the text of an .xyz file: the atom count, a comment line (the
        name, unless ``name`` is given), then one ``symbol x y z`` line per atom
        in ångström.  Text without the two header lines is read as atom lines."""
        lines = text.splitlines()
        while lines and not lines[-1].strip():
            lines.pop()
        first = lines[0].split() if lines else []
        offset = 0
        comment = None
        if len(first) == 1 and first[0].isdigit():
            count = int(first[0])
            if len(lines) < 2:
                raise MoleculeError("line 2: the comment line of the .xyz text is missing")
            comment = lines[1].strip()
            offset = 2
            atom_lines = lines[2:]
            if len(atom_lines) != count:
                raise MoleculeError(
                    f"line 1 announces {count} atoms, the text holds {len(atom_lines)} atom lines"
                )
        else:
            atom_lines = lines
        symbols, positions = [], []
        for k, line in enumerate(atom_lines, start=offset + 1):
            fields = line.split()
            if len(fields) < 4:
                raise MoleculeError(f"line {k}: '{line.strip()}' is not 'symbol x y z'")
            try:
                symbols.append(atomic_number(fields[0]))
            except MoleculeError as e:
                raise MoleculeError(f"line {k}: {e}") from None
            try:
                # Fortran programs write exponents with D (1.5D-01)
                positions.append([float(v.replace("D", "E").replace("d", "e"))
                                  for v in fields[1:4]])
            except ValueError:
                raise MoleculeError(
                    f"line {k}: '{' '.join(fields[1:4])}' are not three numbers"
                ) from None
        if name is None:
            name = _name_from_comment(comment)
        return cls(symbols, np.array(positions).reshape(-1, 3), charge, mult, name)

    @classmethod
    def from_file(cls, path, charge: int = 0, mult: int | None = None) -> "Molecule":
        """From an .xyz file."""
        with open(path, encoding="utf-8") as f:
            return cls.from_xyz(f.read(), charge, mult)

    # ---- views ---------------------------------------------------------------

    @property
    def symbols(self) -> list[str]:
        return [SYMBOLS[z - 1] for z in self._numbers]

    @property
    def atomic_numbers(self) -> np.ndarray:
        return np.array(self._numbers, dtype=np.int32)

    @property
    def positions(self) -> np.ndarray:
        """(natom, 3) in ångström, read-only."""
        return self._positions

    @property
    def natom(self) -> int:
        return len(self._numbers)

    def __len__(self) -> int:
        return len(self._numbers)

    @property
    def electrons(self) -> int:
        return sum(self._numbers) - self.charge

    @property
    def multiplicity(self) -> int:
        if self._mult is not None:
            return self._mult
        return 1 if self.electrons % 2 == 0 else 2

    @multiplicity.setter
    def multiplicity(self, mult: int | None) -> None:
        self._mult = None if mult is None else self._checked_multiplicity(mult)

    @property
    def formula(self) -> str:
        """Hill order: C, H, then the others alphabetically."""
        counts: dict[str, int] = {}
        for s in self.symbols:
            counts[s] = counts.get(s, 0) + 1
        order = ["C", "H"] if "C" in counts else []
        order += sorted(s for s in counts if s not in order)
        return "".join(s + (str(counts[s]) if counts[s] > 1 else "") for s in order)

    def to_xyz(self, comment: str | None = None) -> str:
        """The .xyz text: atom count, comment (the name), atoms in ångström."""
        comment = self.name if comment is None else comment
        lines = [str(self.natom), comment.replace("\n", " ")]
        for s, (x, y, z) in zip(self.symbols, self._positions):
            lines.append(f"{s:<2} {x:16.10f} {y:16.10f} {z:16.10f}")
        return "\n".join(lines) + "\n"

    def write_xyz(self, path) -> None:
        with open(path, "w", encoding="utf-8") as f:
            f.write(self.to_xyz())

    def __repr__(self) -> str:
        return (
            f"<Molecule {self.name!r} {self.formula}: {self.natom} atoms, charge {self.charge}, "
            f"multiplicity {self.multiplicity}>"
        )

    def __str__(self) -> str:
        head = repr(self)
        rows = [
            f"  {s:<2} {x:12.6f} {y:12.6f} {z:12.6f}"
            for s, (x, y, z) in zip(self.symbols, self._positions)
        ]
        return "\n".join([head] + rows)

    # ---- checks ---------------------------------------------------------------

    def _check_distances(self) -> None:
        pos = self._positions
        for i in range(1, len(pos)):
            d = np.linalg.norm(pos[:i] - pos[i], axis=1)
            j = int(np.argmin(d))
            if d[j] < MIN_ATOM_DISTANCE:
                raise MoleculeError(
                    f"atoms {j + 1} ({SYMBOLS[self._numbers[j] - 1]}) and {i + 1} "
                    f"({SYMBOLS[self._numbers[i] - 1]}) are {d[j]:.4f} Å apart, closer than "
                    f"{MIN_ATOM_DISTANCE} Å; is a coordinate in bohr or repeated?"
                )

    def _checked_multiplicity(self, mult) -> int:
        if isinstance(mult, bool) or int(mult) != mult or mult < 1:
            raise MoleculeError(f"multiplicity {mult}: give 2S+1, a whole number from 1")
        mult = int(mult)
        n = self.electrons
        unpaired = mult - 1
        if unpaired > n or (n - unpaired) % 2 != 0:
            raise MoleculeError(
                f"multiplicity {mult} is impossible with {n} electrons (charge {self.charge}): "
                f"{'an even' if n % 2 == 0 else 'an odd'} count takes "
                f"{'1, 3, 5' if n % 2 == 0 else '2, 4, 6'} …"
            )
        return mult


def _name_from_comment(comment: str | None) -> str:
    if not comment:
        return "molecule"
    word = comment.split()[0]
    # a name of the library is at most 20 characters and holds no blanks
    return word[:20] if word.isprintable() else "molecule"
