"""norvik from Python: molecules, whole jobs through the ``norvik`` host, and
thin ctypes wrappers of the library (``norvik.lib``).  docs/python.md."""

from .job import JobError, NotConvergedWarning, host_options, run
from .locate import NotFound, host_program, shared_library
from .molecule import SYMBOLS, Molecule, MoleculeError, atomic_number
from .result import BOHR_ANGSTROM, HARTREE_EV, Result, Section

__all__ = [
    "BOHR_ANGSTROM", "HARTREE_EV", "JobError", "Molecule", "MoleculeError", "NotConvergedWarning",
    "NotFound", "Result", "SYMBOLS", "Section", "atomic_number", "host_options", "host_program",
    "run", "shared_library",
]


def __getattr__(name):
    # norvik.lib loads the shared library only when a script asks for it.
    if name == "lib":
        import importlib
        return importlib.import_module(".lib", __name__)
    raise AttributeError(f"module 'norvik' has no attribute {name!r}")
