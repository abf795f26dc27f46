"""The result of a job, read from the host's JSON result file (docs/json.md)."""

from __future__ import annotations

import json
import os
from typing import Any

import numpy as np

# Hartree in eV, as the library converts (include/norvik/common.h).
HARTREE_EV = 27.2113850785
BOHR_ANGSTROM = 0.5291772104


class Section:
    """One object of the JSON file: its keys as attributes (``s.key``) and items
    (``s["key"]``); nested objects are Sections, number arrays numpy arrays."""

    __slots__ = ("_data",)

    def __init__(self, data: dict[str, Any]):
        object.__setattr__(self, "_data", {k: _convert(v) for k, v in data.items()})

    def __getattr__(self, key: str):
        if key.startswith("__") or key in Section.__slots__ + Result.__slots__:
            raise AttributeError(key)
        try:
            return self._data[key]
        except KeyError:
            raise AttributeError(
                f"no '{key}' in this result (the job did not compute it); "
                f"present: {', '.join(sorted(self._data))}"
            ) from None

    def __setattr__(self, key, value):
        raise AttributeError("a result is read-only")

    # Results travel between processes (a Dask worker's to the client): every
    # slot goes as it is, past the read-only __setattr__.
    def __getstate__(self):
        return {k: getattr(self, k) for cls in type(self).__mro__
                for k in getattr(cls, "__slots__", ())}

    def __setstate__(self, state):
        for k, v in state.items():
            object.__setattr__(self, k, v)

    def __getitem__(self, key: str):
        return self._data[key]

    def __contains__(self, key: str) -> bool:
        return key in self._data

    def __iter__(self):
        return iter(self._data)

    def __len__(self) -> int:
        return len(self._data)

    def get(self, key: str, default=None):
        return self._data.get(key, default)

    def keys(self):
        return self._data.keys()

    def items(self):
        return self._data.items()

    def __dir__(self):
        return sorted(set(super().__dir__()) | set(self._data))

    def to_dict(self) -> dict[str, Any]:
        return {k: _plain(v) for k, v in self._data.items()}

    def __repr__(self) -> str:
        return f"<Section {', '.join(self._data)}>"


def _convert(value):
    if isinstance(value, dict):
        return Section(value)
    if isinstance(value, list):
        if value and all(isinstance(v, bool) for v in value):
            return np.array(value, dtype=bool)
        if value and all(isinstance(v, (int, float)) and not isinstance(v, bool) for v in value):
            return np.array(value, dtype=float if any(isinstance(v, float) for v in value) else int)
        if value and all(isinstance(v, list) for v in value):
            try:
                arr = np.array(value, dtype=float)
                if arr.dtype != object:
                    return arr
            except ValueError:
                pass
        return [_convert(v) for v in value]
    return value


def _plain(value):
    if isinstance(value, Section):
        return value.to_dict()
    if isinstance(value, np.ndarray):
        return value.tolist()
    if isinstance(value, list):
        return [_plain(v) for v in value]
    return value


def _reshape(section: Section | dict | None, key: str, shape) -> None:
    data = section._data if isinstance(section, Section) else section
    if data is None or key not in data:
        return
    if isinstance(data[key], np.ndarray):
        data[key] = data[key].reshape(shape)


def _molecule_arrays(mol: Section | None) -> None:
    if mol is None:
        return
    _reshape(mol, "geometry", (-1, 3))
    _reshape(mol, "geometry_angstrom", (-1, 3))


class Result(Section):
    """What one ``norvik run`` computed.

    Every top-level key of the JSON file is an attribute (``result.model``,
    ``result.molecule``, ``result.vibrations`` …), and so is every key of
    ``properties`` (``result.properties.scf_dipole_moment``).  ``result.energy``
    is ``return_result`` in hartree.  Shapes: geometries (natom, 3), gradient
    (natom, 3), modes (nmodes, natom, 3), tensors (3, 3); orbital energies are
    vectors.  ``files`` holds the other files of the run by kind, as paths
    joined to the folder the job ran in.
    """

    __slots__ = ("_folder", "_report", "_stdout", "_stderr", "_path")

    def __init__(self, data: dict[str, Any], folder: str | os.PathLike | None = None,
                 stdout: str = "", stderr: str = "", path: str | None = None):
        super().__init__(data)
        object.__setattr__(self, "_folder", None if folder is None else os.fspath(folder))
        object.__setattr__(self, "_report", None)
        object.__setattr__(self, "_stdout", stdout)
        object.__setattr__(self, "_stderr", stderr)
        object.__setattr__(self, "_path", path)
        d = self._data
        _molecule_arrays(d.get("molecule"))
        _molecule_arrays(d.get("final_molecule"))
        _reshape(d, "gradient", (-1, 3))
        if "properties" in d:
            _reshape(d["properties"], "scf_quadrupole_moment", (3, 3))
            _reshape(d["properties"], "polarizability", (3, 3))
        opt = d.get("optimization")
        if opt is not None:
            for point in opt.get("trajectory", []) or []:
                if isinstance(point, Section):
                    _reshape(point, "geometry", (-1, 3))
        vib = d.get("vibrations")
        if vib is not None and "modes" in vib:
            modes = vib._data["modes"]
            natom = self.natom
            if isinstance(modes, np.ndarray) and natom:
                vib._data["modes"] = modes.reshape(len(modes), natom, 3)
            elif isinstance(modes, list) and not modes:
                vib._data["modes"] = np.zeros((0, natom, 3))
        if "files" in d and self._folder is not None:
            d["files"] = _joined_files(d["files"], self._folder)

    # ---- construction -------------------------------------------------------

    @classmethod
    def from_json(cls, path, stdout: str = "", stderr: str = "", folder=None) -> "Result":
        """Reads a JSON result file.  The paths of its ``files`` are relative to
        the folder the host ran in: ``folder``, by default the JSON file's own
        (where ``norvik.run`` and ``norvik batch`` run the host)."""
        path = os.fspath(path)
        with open(path, encoding="utf-8") as f:
            data = json.load(f)
        if data.get("schema_name") != "norvik_result":
            raise ValueError(f"{path} is not a norvik result (schema_name "
                             f"{data.get('schema_name')!r})")
        if folder is None:
            folder = os.path.dirname(os.path.abspath(path))
        return cls(data, os.path.abspath(folder), stdout, stderr, path)

    @classmethod
    def from_dict(cls, data: dict[str, Any], folder=None) -> "Result":
        return cls(data, folder)

    # ---- convenience ------------------------------------------------------------

    @property
    def energy(self) -> float:
        """The final energy of the method (``return_result``), hartree."""
        return self._data["return_result"]

    @property
    def energy_ev(self) -> float:
        return self._data["return_result"] * HARTREE_EV

    @property
    def natom(self) -> int:
        mol = self._data.get("molecule")
        return len(mol.symbols) if mol is not None and "symbols" in mol else 0

    @property
    def folder(self) -> str | None:
        """The folder the job ran in (None when it was removed)."""
        return self._folder

    @property
    def json_path(self) -> str | None:
        return self._path

    @property
    def stdout(self) -> str:
        """What the host wrote on standard output."""
        return self._stdout

    @property
    def stderr(self) -> str:
        return self._stderr

    @property
    def warnings(self) -> list[str]:
        """The host's summary lines that say something went wrong."""
        return [m for m in self._data.get("messages", []) if "not converged" in m
                or "NOT converged" in m or "not a solution" in m]

    def report_text(self) -> str:
        """The text of the report file."""
        if self._report is not None:
            return self._report
        files = self._data.get("files")
        path = files.get("report") if files is not None else None
        if path is None:
            raise FileNotFoundError("this result names no report file")
        with open(path, encoding="utf-8", errors="replace") as f:
            return f.read()

    def _keep_report(self) -> None:
        """Reads the report into memory before the job's folder goes away."""
        try:
            text = self.report_text()
        except OSError:
            text = ""
        object.__setattr__(self, "_report", text)
        object.__setattr__(self, "_folder", None)

    def __repr__(self) -> str:
        model = self._data.get("model")
        mol = self._data.get("molecule")
        what = ""
        if model is not None:
            what = f"{model.get('method', '?')}/{model.get('basis', '?')}"
        name = mol.get("name", "?") if mol is not None else "?"
        energy = self._data.get("return_result")
        e = f"{energy:.9f} hartree" if isinstance(energy, float) else "no energy"
        ok = "" if self._data.get("success", True) else " (not converged)"
        return f"<Result {name} {what} {self._data.get('driver', '')}: {e}{ok}>"


def _joined_files(files: Section, folder: str) -> Section:
    out: dict[str, Any] = {}
    for kind, value in files.items():
        if isinstance(value, str):
            out[kind] = value if os.path.isabs(value) else os.path.join(folder, value)
        elif isinstance(value, list):
            entries = []
            for entry in value:
                if isinstance(entry, Section) and isinstance(entry.get("path"), str):
                    d = entry.to_dict()
                    if not os.path.isabs(d["path"]):
                        d["path"] = os.path.join(folder, d["path"])
                    entries.append(Section(d))
                else:
                    entries.append(entry)
            out[kind] = entries
        else:
            out[kind] = value
    s = Section({})
    s._data.update(out)
    return s
