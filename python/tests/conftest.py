"""Shared fixtures: the package on the path, the built host and library, and a
water job in STO-3G made from the example molecule file."""

import os
import re
import subprocess
import sys

import pytest

TESTS = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.dirname(os.path.dirname(TESTS))
sys.path.insert(0, os.path.join(ROOT, "python"))

import norvik  # noqa: E402

DATA = os.path.join(TESTS, "data")

# The host prints the energy with nine decimals; a point computed the same way
# agrees to the last of them (half a unit, and a little for the rounding of 1e-10).
PRINTED_ENERGY_TOLERANCE = 0.6e-9  # hartree


@pytest.fixture(scope="session")
def host():
    return norvik.host_program()


@pytest.fixture(scope="session")
def host_takes_xyz(host):
    """Whether the host runs .xyz jobs (they came with --version)."""
    return subprocess.run([host, "--version"], capture_output=True).returncode == 0


@pytest.fixture(scope="session")
def host_writes_json(host, host_takes_xyz):
    """Whether the host also writes the JSON result (--json)."""
    usage = subprocess.run([host, "--help"], capture_output=True, text=True)
    return host_takes_xyz and "--json" in usage.stdout


def water_mol_text(basis="STO-3G", name="water", stretch=1.0):
    with open(os.path.join(ROOT, "examples", "water.mol"), encoding="utf-8") as f:
        text = f.read()
    text = text.replace("\n6-31Gxx\n", f"\n{basis}\n").replace("\nwater 0\n", f"\n{name} 0\n")
    if stretch != 1.0:
        text = text.replace("0.757200000", f"{0.7572 * stretch:.9f}")
    return text


@pytest.fixture()
def water_mol(tmp_path):
    path = tmp_path / "water.mol"
    path.write_text(water_mol_text())
    return path


def host_energy(host, mol_path, *extra):
    """The energy [hartree] on the host's summary line for a job file."""
    folder = os.path.dirname(os.fspath(mol_path))
    proc = subprocess.run([host, "run", os.path.basename(mol_path), *extra], cwd=folder,
                          capture_output=True, text=True, check=True)
    found = re.findall(r"^norvik: E\(\w+\) = (-?\d+\.\d+) hartree", proc.stdout, re.M)
    assert found, proc.stdout
    return float(found[-1])
