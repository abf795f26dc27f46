"""Thin ctypes wrappers of libnorvik's exported routines, for scripts that run
their own sequence of library calls.

Every routine takes every argument by reference: integers are 32-bit, reals
doubles, arrays numpy arrays in Fortran (column-major) order, texts blank-padded
buffers of a fixed length (file names 120 characters, the theory and functional
keyword 10, basis-set and other names 20).  ``Library`` declares the argument
types of a useful set of routines and converts Python values on the way in:
a Python int or float for a scalar input, a str for a text.  Outputs need
ctypes objects (``ctypes.c_int32()``, ``text_buffer(20)``) or numpy arrays.

A fatal condition in the library prints its message on standard output and ends
the calling process with exit status 1 — here, the Python interpreter.  Scripts
that must survive bad input should run whole jobs through ``norvik.run`` (a
child process) or call these routines in a child process of their own.

Units are the library's: ångström, electronvolt, e·Å.
"""

from __future__ import annotations

import ctypes
import dataclasses
import functools
import os

import numpy as np

from .locate import shared_library

FILE_NAME_LENGTH = 120
KEYWORD_LENGTH = 10
NAME_LENGTH = 20
SYMBOL_LENGTH = 2

HARTREE_EV = 27.2113850785  # NORVIK_HARTREE_EV
BOHR_ANGSTROM = 0.5291772104  # NORVIK_BOHR_ANGSTROM

# Smallest overlap eigenvalue kept and the grid's base radius (one bohr): the
# values the host passes, so that a script's point is the host's point.
ORTHOGONALITY_THRESHOLD = 1.0e-8
GRID_RADIUS = BOHR_ANGSTROM


def padded(text: str | bytes, length: int) -> bytes:
    """``text`` blank-padded to ``length`` bytes; longer text is refused, since
    the library would read a different name."""
    raw = text.encode() if isinstance(text, str) else bytes(text)
    if len(raw) > length:
        raise ValueError(f"'{raw.decode(errors='replace')}' is longer than the {length} "
                         "characters this argument takes")
    return raw.ljust(length, b" ")


def text_buffer(length: int, text: str | bytes = "") -> ctypes.Array:
    """A writable blank-padded buffer of ``length`` characters (no NUL)."""
    return ctypes.create_string_buffer(padded(text, length), length)


def text_of(buffer) -> str:
    """The text of a blank-padded buffer, trailing blanks removed."""
    raw = buffer.raw if hasattr(buffer, "raw") else bytes(buffer)
    return raw.decode(errors="replace").rstrip(" \0")


# ---- declarations ---------------------------------------------------------------
# One code per argument: i / d a scalar integer / double; I / D an integer /
# double array; T<n> a text of n characters.  See include/norvik/*.h.
_SETUP_MOLECULE = "T10 T20 T20 i i i T120 T20 T20 i i i i i i i i I I D"
DECLARATIONS: dict[str, str] = {
    # setup.h
    "SETUP_HF": "i i T120 T120 d i i i d d d d d d d d d d " + _SETUP_MOLECULE,
    "SETUP_KS": "i i T120 T120 d i i i i i d d d d d d d d d d d d d d d d d " + _SETUP_MOLECULE,
    "NELECTRON": "i i i i i",
    "HUNDSRULE": "i i",
    "CHG2SMB": "T2 i",
    "MAKEINIRHO": "i i i i D",
    # basis.h
    "ZATMNSHL": "T20 i i I i",
    # scf.h
    "NUCLEARREP": "i I D d",
    "NUCLEAREDM": "i I D D",
    "ATOMS": "T20 i I I I D D D d d i D D T10 d i",
    "HF_1POINT": "T20 i I I D i i i d d d d d d i D i D D d D d i i",
    "KS_1POINT": "T10 T20 i I I D i i I D D D d d d i D i D D d D d i i d i D",
    "SCF_1POINT": "T10 T20 T120 T120 i i I I D i i I D D D d d d i D i D D D D D d i i i i d d d D i",
    "GRADEMOL_HF": "T20 i I I D i i i D D D",
    "GRADEMOL_KS": "T10 T20 i I I D i i i D D d i D",
    # properties.h
    "MULLIKEN": "T20 i I I i D D D D",
    "LOWDIN": "T20 i I I i D D D D",
    "QUADRAPOLE": "T20 i I I D i D D",
    "POLARIZE": "T10 T20 i I I D i i i D D d d d d i D",
    "MOLLER_PLESSET_2ND": "T10 T20 i I I D i i i D d d d d i D d",
}
# Routines that return a value rather than write one.
RETURNS = {"SMB2CHG": ("T2", ctypes.c_int32), "ATOMMASS": ("i", ctypes.c_double)}

_INT = ctypes.c_int32
_DOUBLE = ctypes.c_double


class _Argument:
    def __init__(self, code: str):
        self.code = code
        self.length = int(code[1:]) if code[0] == "T" else 0
        if code == "i":
            self.ctype = ctypes.POINTER(_INT)
        elif code == "d":
            self.ctype = ctypes.POINTER(_DOUBLE)
        elif code == "I":
            self.ctype = np.ctypeslib.ndpointer(np.int32, flags="F_CONTIGUOUS")
        elif code == "D":
            self.ctype = np.ctypeslib.ndpointer(np.float64, flags="F_CONTIGUOUS")
        elif code[0] == "T":
            self.ctype = ctypes.POINTER(ctypes.c_char)
        else:
            raise ValueError(code)

    def convert(self, value, name: str, position: int):
        code = self.code
        if code in ("i", "d"):
            ctype = _INT if code == "i" else _DOUBLE
            if isinstance(value, ctype):
                return ctypes.byref(value)
            if isinstance(value, (int, float, np.integer, np.floating)) and not isinstance(
                    value, bool):
                return ctypes.byref(ctype(value))
            raise TypeError(f"{name}, argument {position}: a number or ctypes.{ctype.__name__} "
                            f"is needed, not {type(value).__name__}")
        if code[0] == "T":
            if isinstance(value, (str, bytes)):
                return ctypes.create_string_buffer(padded(value, self.length), self.length)
            if isinstance(value, ctypes.Array) and ctypes.sizeof(value) >= self.length:
                return value
            raise TypeError(f"{name}, argument {position}: a text of {self.length} characters "
                            "(str, or text_buffer for an output) is needed")
        if not isinstance(value, np.ndarray):
            raise TypeError(f"{name}, argument {position}: a numpy array in Fortran order "
                            f"is needed, not {type(value).__name__}")
        return value


class _Routine:
    def __init__(self, name: str, function, codes: list[str]):
        self.name = name
        self._arguments = [_Argument(c) for c in codes]
        function.argtypes = [a.ctype for a in self._arguments]
        function.restype = None
        self._function = function

    def __call__(self, *args):
        if len(args) != len(self._arguments):
            raise TypeError(f"{self.name} takes {len(self._arguments)} arguments, "
                            f"{len(args)} given")
        converted = [a.convert(v, self.name, k) for k, (a, v) in
                     enumerate(zip(self._arguments, args), start=1)]
        self._function(*converted)

    def __repr__(self) -> str:
        return f"<norvik routine {self.name}({' '.join(a.code for a in self._arguments)})>"


class Library:
    """libnorvik loaded through ctypes.  The declared routines are attributes
    (``lib.SCF_1POINT(...)``); ``lib.cdll`` is the plain CDLL for the others."""

    def __init__(self, path: str | None = None):
        self.path = path or shared_library()
        self.cdll = ctypes.CDLL(self.path)
        for name, codes in DECLARATIONS.items():
            setattr(self, name, _Routine(name, getattr(self.cdll, name), codes.split()))
        for name, (code, restype) in RETURNS.items():
            f = getattr(self.cdll, name)
            f.argtypes = [_Argument(code).ctype]
            f.restype = restype

    def SMB2CHG(self, symbol: str) -> int:  # noqa: N802 (the library's name)
        return int(self.cdll.SMB2CHG(ctypes.create_string_buffer(padded(symbol, 2), 2)))

    def ATOMMASS(self, z: int) -> float:  # noqa: N802
        return float(self.cdll.ATOMMASS(ctypes.byref(_INT(z))))

    def __repr__(self) -> str:
        return f"<norvik.lib.Library {self.path}>"


@functools.lru_cache(maxsize=None)
def load(path: str | None = None) -> Library:
    """The library (NORVIK_LIBRARY, ../build/libnorvik.so, or the system's),
    loaded once per path."""
    return Library(path)


# ---- a job's sequence, as the host runs it --------------------------------------------

_HARTREE_FOCK_FAMILY = ("HF", "MP2", "RPA", "TDA")


@dataclasses.dataclass
class Setup:
    """What SETUP_HF / SETUP_KS read from a molecule file and a parameter file."""

    molecule_file: str
    parameter_file: str
    theory: str
    basis: str
    name: str
    kohn_sham: bool
    optimisation_cycles: int
    optimiser: int
    vibrations: int
    population: str
    charge: int
    multiplicity: int
    nalpha: int
    nbeta: int
    natom: int
    nghost: int
    zat: np.ndarray  # (natom,) nuclear charges, 0 for a ghost
    zel: np.ndarray  # (natom,) elements
    pos: np.ndarray  # (3, natom) Å, Fortran order
    memory_gb: float
    threads: int
    # SCF settings: Hartree-Fock jobs use 0 (atoms) and 1 (molecule); Kohn-Sham
    # jobs 0 HF atoms, 1 KS atoms, 2 HF molecule, 3 KS molecule.
    niter: np.ndarray
    damp: np.ndarray
    thr_ene: np.ndarray
    thr_rms: np.ndarray
    screening: float

    @property
    def symbols(self) -> list[str]:
        from .molecule import SYMBOLS
        return [SYMBOLS[z - 1] for z in self.zel]


def _count_lines(path: str) -> int:
    with open(path, "rb") as f:
        return sum(1 for _ in f)


def setup(molecule_file, parameter_file="", library: Library | None = None) -> Setup:
    """Reads a job as the host does: the molecule file alone to learn its
    theory, then both files with the routine of that theory's family."""
    lib = library or load()
    molecule_file = os.fspath(molecule_file)
    parameter_file = os.fspath(parameter_file) if parameter_file else ""
    # The library refuses a file with maxatom atoms or more; the line count bounds them.
    maxatom = _count_lines(molecule_file) + 1
    maxorb = 4096
    out = {k: text_buffer(n) for k, n in
           (("theory", 10), ("basis", 20), ("name", 20), ("text12", 120),
            ("population", 20), ("bsse", 20))}
    ints = {k: _INT() for k in ("cycles", "optimiser", "vibrations", "charge", "mult", "nalpha",
                                "nbeta", "norb", "nshort", "natom", "nghost")}
    zat = np.zeros(maxatom, np.int32)
    zel = np.zeros(maxatom, np.int32)
    pos = np.zeros((3, maxatom), order="F")
    memory, threads = _DOUBLE(4.0), _INT(0)
    screening, grad, step = _DOUBLE(1e-10), _DOUBLE(1e-2), _DOUBLE(0.1)
    r20 = [_DOUBLE(1.0), _DOUBLE(0.0)]
    molecule_tail = (out["theory"], out["basis"], out["name"], ints["cycles"],
                     ints["optimiser"], ints["vibrations"], out["text12"], out["population"],
                     out["bsse"], ints["charge"], ints["mult"], ints["nalpha"], ints["nbeta"],
                     ints["norb"], ints["nshort"], ints["natom"], ints["nghost"], zat, zel, pos)

    def hartree_fock(par: str):
        niter = [_INT(64), _INT(128)]
        damp = [_DOUBLE(0.5), _DOUBLE(0.5)]
        ene = [_DOUBLE(1e-6), _DOUBLE(1e-7)]
        rms = [_DOUBLE(1e-6), _DOUBLE(1e-7)]
        lib.SETUP_HF(maxatom, maxorb, molecule_file, par, memory, threads, niter[0], niter[1],
                     damp[0], damp[1], ene[0], ene[1], rms[0], rms[1], screening, grad, step,
                     r20[0], *molecule_tail)
        return niter + [_INT(0), _INT(0)], damp + [_DOUBLE(0)] * 2, ene + [_DOUBLE(0)] * 2, \
            rms + [_DOUBLE(0)] * 2

    settings = hartree_fock("")
    theory = text_of(out["theory"])
    kohn_sham = theory not in _HARTREE_FOCK_FAMILY
    if not kohn_sham and parameter_file:
        settings = hartree_fock(parameter_file)
    elif kohn_sham:
        niter = [_INT(v) for v in (64, 64, 128, 128)]
        damp = [_DOUBLE(0.5) for _ in range(4)]
        ene = [_DOUBLE(v) for v in (1e-6, 1e-6, 1e-7, 1e-7)]
        rms = [_DOUBLE(v) for v in (1e-6, 1e-6, 1e-7, 1e-7)]
        lib.SETUP_KS(maxatom, maxorb, molecule_file, parameter_file, memory, threads, *niter,
                     *damp, *ene, *rms, screening, grad, step, r20[0], r20[1], *molecule_tail)
        settings = (niter, damp, ene, rms)
    natom = ints["natom"].value
    niter, damp, ene, rms = settings
    return Setup(
        molecule_file=molecule_file, parameter_file=parameter_file, theory=theory,
        basis=text_of(out["basis"]), name=text_of(out["name"]), kohn_sham=kohn_sham,
        optimisation_cycles=ints["cycles"].value, optimiser=ints["optimiser"].value,
        vibrations=ints["vibrations"].value, population=text_of(out["population"]),
        charge=ints["charge"].value, multiplicity=ints["mult"].value,
        nalpha=ints["nalpha"].value, nbeta=ints["nbeta"].value, natom=natom,
        nghost=ints["nghost"].value, zat=zat[:natom].copy(), zel=zel[:natom].copy(),
        pos=np.asfortranarray(pos[:, :natom]), memory_gb=memory.value, threads=threads.value,
        niter=np.array([v.value for v in niter], np.int32),
        damp=np.array([v.value for v in damp]), thr_ene=np.array([v.value for v in ene]),
        thr_rms=np.array([v.value for v in rms]), screening=screening.value)


def basis_size(basis: str, elements, library: Library | None = None) -> int:
    """Basis functions of the atoms ``elements`` (atomic numbers) in ``basis``."""
    lib = library or load()
    total = 0
    for z in elements:
        nshell, nfunc = _INT(), _INT()
        kinds = np.zeros(9, np.int32)
        lib.ZATMNSHL(basis, int(z), nshell, kinds, nfunc)
        total += nfunc.value
    return total


@dataclasses.dataclass
class FreeAtoms:
    energies: np.ndarray  # (natom,) eV, 0 for a ghost
    densities: np.ndarray  # (n, n, 2), the superposed start density


def free_atoms(job: Setup, library: Library | None = None) -> FreeAtoms:
    """ATOMS: every distinct element's free atom, with the job's atom settings."""
    lib = library or load()
    n = basis_size(job.basis, job.zel, lib)
    eatom = np.zeros(job.natom)
    atomrho = np.zeros((n, n, 2), order="F")
    lib.ATOMS(job.basis, job.natom, job.zat, job.zel, job.niter[:2].copy(),
              job.damp[:2].copy(), job.thr_ene[:2].copy(), job.thr_rms[:2].copy(),
              job.memory_gb, ORTHOGONALITY_THRESHOLD, n, eatom, atomrho, job.theory,
              GRID_RADIUS, 0)
    return FreeAtoms(eatom, atomrho)


@dataclasses.dataclass
class Point:
    """A converged (or not) SCF point of SCF_1POINT."""

    nbasis: int
    energy: float  # molecular energy, eV
    electronic: float  # eV
    nuclear: float  # eV
    dipole: np.ndarray  # (3,) e·Å
    overlap: np.ndarray  # (n, n)
    density: np.ndarray  # (n, n, 2)
    orbitals: np.ndarray  # (n, n+1, 2): coefficients, levels [eV] in the last column
    cycles: int
    converged: bool
    northo: int
    in_core: bool
    xc: np.ndarray  # (4,) Kohn-Sham exchange-correlation parts, eV

    @property
    def energy_hartree(self) -> float:
        return self.energy / HARTREE_EV

    def levels(self, spin: int = 0) -> np.ndarray:
        """Orbital levels [eV] of spin 0 (alpha) or 1 (beta), ascending."""
        return self.orbitals[: self.northo, self.nbasis, spin].copy()


def scf_point(job: Setup, atoms: FreeAtoms | None = None, report: str = os.devnull,
              log: str = "", grid_level: int = 0, library: Library | None = None) -> Point:
    """SCF_1POINT at the job's geometry, started from the free atoms when given
    (otherwise from the bare one-electron Hamiltonian).  ``report`` receives
    the point's notes (the basis's linear dependence, the in-core choice),
    ``log`` one line per SCF cycle."""
    lib = library or load()
    n = basis_size(job.basis, job.zel, lib)
    stage = 2 if job.kohn_sham else 1
    s = np.zeros((n, n), order="F")
    rho = np.zeros((n, n, 2), order="F")
    orbitals = np.zeros((n, n + 1, 2), order="F")
    energy, dipole, xc = np.zeros(3), np.zeros(3), np.zeros(4)
    de, rmsd, comm = _DOUBLE(), _DOUBLE(), _DOUBLE()
    northo, incore, ncycle, converged = _INT(), _INT(), _INT(), _INT()
    atomrho = atoms.densities if atoms is not None else np.zeros((n, n, 2), order="F")
    lib.SCF_1POINT(job.theory, job.basis, report, log, 0, job.natom, job.zat, job.zel, job.pos,
                   job.nalpha, job.nbeta, job.niter[stage:stage + 2].copy(),
                   job.damp[stage:stage + 2].copy(), job.thr_ene[stage:stage + 2].copy(),
                   job.thr_rms[stage:stage + 2].copy(), job.memory_gb, job.screening,
                   ORTHOGONALITY_THRESHOLD, 1 if atoms is not None else 0, atomrho, n, s, rho,
                   orbitals, energy, dipole, de, northo, incore, ncycle, converged, rmsd, comm,
                   GRID_RADIUS, xc, grid_level)
    return Point(nbasis=n, energy=energy[2], electronic=energy[0], nuclear=energy[1],
                 dipole=dipole, overlap=s, density=rho, orbitals=orbitals, cycles=ncycle.value,
                 converged=bool(converged.value), northo=northo.value,
                 in_core=incore.value == 1, xc=xc)


def populations(job: Setup, point: Point, kind: str = "Mulliken",
                library: Library | None = None) -> tuple[np.ndarray, np.ndarray]:
    """MULLIKEN or LOWDIN: the atoms' charges and spin populations."""
    lib = library or load()
    routine = {"mulliken": lib.MULLIKEN, "lowdin": lib.LOWDIN}[kind.lower()]
    charge, spin = np.zeros(job.natom), np.zeros(job.natom)
    routine(job.basis, job.natom, job.zat, job.zel, point.nbasis, point.overlap, point.density,
            charge, spin)
    return charge, spin


def quadrupole(job: Setup, point: Point, library: Library | None = None) -> np.ndarray:
    """QUADRAPOLE: the traceless quadrupole (3, 3) in e·Å² about the centre of
    nuclear charge."""
    lib = library or load()
    theta = np.zeros((3, 3), order="F")
    lib.QUADRAPOLE(job.basis, job.natom, job.zat, job.zel, job.pos, point.nbasis,
                   point.density, theta)
    return theta


def gradient(job: Setup, point: Point, grid_level: int = 0,
             library: Library | None = None) -> np.ndarray:
    """GRADEMOL_HF / GRADEMOL_KS: dE/dR of every atom, (natom, 3) eV/Å."""
    lib = library or load()
    grad = np.zeros((3, job.natom), order="F")
    if job.kohn_sham:
        lib.GRADEMOL_KS(job.theory, job.basis, job.natom, job.zat, job.zel, job.pos, job.nalpha,
                        job.nbeta, point.nbasis, point.density, point.orbitals, GRID_RADIUS,
                        grid_level, grad)
    else:
        lib.GRADEMOL_HF(job.basis, job.natom, job.zat, job.zel, job.pos, job.nalpha, job.nbeta,
                        point.nbasis, point.density, point.orbitals, grad)
    return grad.T.copy()


def nuclear_repulsion(zat, pos, library: Library | None = None) -> float:
    """NUCLEARREP: Σ Za Zb / Rab in eV; pos (3, natom) Å."""
    lib = library or load()
    e = _DOUBLE()
    lib.NUCLEARREP(len(zat), np.asarray(zat, np.int32), np.asfortranarray(pos, float), e)
    return e.value
