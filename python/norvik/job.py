"""One whole job through the ``norvik`` host program.

The job runs in a child process: the host owns the one job flow (setup, free
atoms, SCF or optimisation, properties, vibrations), and a fatal error of the
library ends that process, never the caller's interpreter.
"""

from __future__ import annotations

import os
import re
import shutil
import subprocess
import tempfile
import warnings
from typing import Any

from .locate import host_program
from .molecule import Molecule
from .result import Result

# The host's exit statuses (docs/host.md).
SUCCESS, LIBRARY_STOPPED, INPUT_ERROR, NOT_CONVERGED = 0, 1, 2, 3


class JobError(RuntimeError):
    """The host ended a job without a result (exit status 1 or 2, or a signal).

    ``status``, ``stdout``, ``stderr``, ``command`` and ``folder`` say what ran
    and what the host said; the message repeats its ``norvik:`` lines."""

    def __init__(self, message: str, status: int | None = None, stdout: str = "",
                 stderr: str = "", command: list[str] | None = None, folder: str | None = None):
        super().__init__(message)
        self.status = status
        self.stdout = stdout
        self.stderr = stderr
        self.command = command or []
        self.folder = folder


class NotConvergedWarning(UserWarning):
    """The job ended with status 3: a result to look at, not a converged one."""


def host_options(options: dict[str, Any]) -> list[str]:
    """Keyword arguments as host options: ``grid="dense"`` → ``--grid dense``,
    ``frozen_core=True`` → ``--frozen-core``, ``cube=["homo", "lumo"]`` →
    ``--cube homo,lumo``; False and None leave the option out."""
    args: list[str] = []
    for key, value in options.items():
        if value is None or value is False:
            continue
        flag = "--" + key.replace("_", "-")
        if value is True:
            args.append(flag)
        elif isinstance(value, (list, tuple)):
            args += [flag, ",".join(str(v) for v in value)]
        else:
            args += [flag, str(value)]
    return args


def job_command(host: str, xyz: str, *, method: str, basis: str, charge: int, mult: int,
                opt: bool | int, freq: bool, raman: bool, threads: int | None, json_file: str,
                options: dict[str, Any]) -> list[str]:
    cmd = [host, "run", xyz, "--method", method, "--basis", basis,
           "--charge", str(charge), "--mult", str(mult)]
    if opt is True:
        cmd.append("--opt")
    elif opt:  # a number of optimisation cycles
        cmd += ["--opt", str(int(opt))]
    if freq or raman:
        cmd.append("--freq")
    if raman:
        cmd.append("--raman")
    if threads is not None:
        cmd += ["--threads", str(int(threads))]
    cmd += ["--json", json_file]
    return cmd + host_options(options)


def _as_molecule(mol) -> Molecule:
    if isinstance(mol, Molecule):
        return mol
    if isinstance(mol, (str, os.PathLike)):
        text = os.fspath(mol)
        if "\n" not in text and os.path.isfile(text):
            return Molecule.from_file(text)
        return Molecule.from_xyz(text)
    raise TypeError(f"run() takes a Molecule, .xyz text or an .xyz file, not {type(mol).__name__}")


# The comment line of the .xyz files that run() writes ends with this, so that
# a later run in the same folder replaces its own file and never the user's.
_WRITTEN_MARK = "(written by norvik.run)"


def _written_by_run(path: str) -> bool:
    try:
        with open(path, encoding="utf-8", errors="replace") as f:
            f.readline()
            return f.readline().rstrip().endswith(_WRITTEN_MARK)
    except OSError:
        return False


def _file_stem(name: str) -> str:
    stem = re.sub(r"[^A-Za-z0-9_.+-]", "_", name).strip("._") or "molecule"
    return stem[:40]


_NOT_CONVERGED = re.compile(r"not converged|NOT converged|not a solution|used up")


def failure_message(status: int, stdout: str, stderr: str) -> str:
    """The host's words for a job without a clean result: for status 3 its line
    on standard output that says what did not converge; otherwise its first
    line on standard error, with the library's message when one follows."""
    if status == 3:
        for line in stdout.splitlines():
            if line.startswith("norvik: ") and _NOT_CONVERGED.search(line):
                return line[len("norvik: "):]
    lines = stderr.splitlines()
    for k, line in enumerate(lines):
        if line.startswith("norvik: "):
            text = line[len("norvik: "):]
            if text.endswith(":"):  # the library's own lines follow, indented
                more = [m.strip() for m in lines[k + 1:] if m and not m.startswith("norvik: ")]
                text = " ".join([text] + more[:3])
            return text
    return (stderr.strip().splitlines() or [""])[-1]


def run(mol, method: str = "HF", basis: str = "6-31G*", charge: int | None = None,
        mult: int | None = None, opt: bool | int = False, freq: bool = False, raman: bool = False,
        workdir=None, keep_files: bool | None = None, threads: int | None = None,
        host: str | None = None, timeout: float | None = None, **options) -> Result:
    """Runs one job through the host and returns its Result.

    ``mol`` is a Molecule, the text of an .xyz file or its path.  ``charge`` and
    ``mult`` default to the molecule's.  ``opt`` optimises the geometry (a number: at
    most that many cycles), ``freq``
    adds the vibrational analysis and thermochemistry, ``raman`` also the Raman
    activities.  The job runs in ``workdir`` (made when missing), or in a new
    temporary folder that is removed afterwards unless ``keep_files``; the report
    stays readable through ``Result.report_text()`` either way.  ``threads`` caps
    the job's OpenMP threads.  Other keywords become host options
    (``grid="dense"``, ``memory=2``, ``states=5``, ``frozen_core=True``,
    ``cube=["homo", "lumo"]``).

    Exit status 0 gives the Result; 3 (not converged) gives it with
    ``success`` False and a NotConvergedWarning; 1 or 2 raise JobError with the
    host's output.
    """
    molecule = _as_molecule(mol)
    charge = molecule.charge if charge is None else int(charge)
    if mult is None:
        mult = molecule.multiplicity if charge == molecule.charge else (
            1 if (molecule.electrons + molecule.charge - charge) % 2 == 0 else 2)
    host = host or host_program()
    made_temp = workdir is None
    if made_temp:
        folder = tempfile.mkdtemp(prefix="norvik-")
    else:
        folder = os.fspath(workdir)
        os.makedirs(folder, exist_ok=True)
    keep = (not made_temp) if keep_files is None else bool(keep_files)
    stem = _file_stem(molecule.name)
    xyz, json_file = stem + ".xyz", stem + ".json"
    xyz_path = os.path.join(folder, xyz)
    if os.path.exists(xyz_path) and not _written_by_run(xyz_path):
        if made_temp:
            shutil.rmtree(folder, ignore_errors=True)
        raise FileExistsError(
            f"{xyz_path} exists and was not written by norvik.run; run() writes the molecule "
            "there: give another workdir or rename the molecule")
    with open(xyz_path, "w", encoding="utf-8") as f:
        f.write(molecule.to_xyz(f"{molecule.name} {_WRITTEN_MARK}"))
    cmd = job_command(host, xyz, method=method, basis=basis, charge=charge, mult=mult, opt=opt,
                      freq=freq, raman=raman, threads=threads, json_file=json_file,
                      options=options)
    try:
        proc = subprocess.run(cmd, cwd=folder, capture_output=True, text=True,
                              timeout=timeout, errors="replace")
        status = proc.returncode
        if status not in (SUCCESS, NOT_CONVERGED):
            said = proc.stderr.strip() or failure_message(status, proc.stdout, "")
            why = (f"the job ended on signal {-status}" if status < 0
                   else f"the norvik host ended the job with status {status}")
            raise JobError(f"{why}:\n{said}", status, proc.stdout, proc.stderr, cmd,
                           folder if keep else None)
        path = os.path.join(folder, json_file)
        if not os.path.isfile(path):
            raise JobError(
                f"the host ended with status {status} but wrote no {json_file}; "
                "is the host older than its JSON result file?",
                status, proc.stdout, proc.stderr, cmd, folder if keep else None)
        result = Result.from_json(path, proc.stdout, proc.stderr)
        if status == NOT_CONVERGED:
            said = failure_message(status, proc.stdout, proc.stderr)
            warnings.warn(f"norvik job {stem} did not converge (status 3): {said}",
                          NotConvergedWarning, stacklevel=2)
        if not keep:
            result._keep_report()
        return result
    finally:
        if not keep:
            shutil.rmtree(folder, ignore_errors=True)
