"""The ctypes layer on real calls: a job's own sequence reproduces the host's
point, and arguments are checked before they reach the library (where a wrong
one would crash or end the interpreter)."""

import ctypes
from pathlib import Path

import numpy as np
import pytest

import norvik.lib as lib
from conftest import PRINTED_ENERGY_TOLERANCE, ROOT, host_energy, water_mol_text

# Charges sum to the molecular charge and gradients to zero up to the SCF's
# convergence (1e-7 eV), far below this.
SUM_RULE_TOLERANCE = 1e-6


@pytest.fixture(scope="module")
def water(tmp_path_factory):
    folder = tmp_path_factory.mktemp("lib")
    mol = folder / "water.mol"
    mol.write_text(water_mol_text("STO-3G"))
    job = lib.setup(mol)
    atoms = lib.free_atoms(job)
    point = lib.scf_point(job, atoms, report=str(folder / "py.report"))
    return mol, job, atoms, point


def test_setup_reads_the_job(water):
    _, job, _, _ = water
    assert (job.theory, job.basis, job.name) == ("HF", "STO-3G", "water")
    assert not job.kohn_sham
    assert job.symbols == ["O", "H", "H"] and (job.nalpha, job.nbeta) == (5, 5)
    assert job.pos.shape == (3, 3) and job.pos.flags.f_contiguous
    assert job.pos[1, 1] == pytest.approx(0.7572)
    assert lib.basis_size("STO-3G", job.zel) == 7
    # five spherical d functions on oxygen, six Cartesian ones with the trailing C
    assert lib.basis_size("6-31Gxx", job.zel) == 24
    assert lib.basis_size("6-31GxxC", job.zel) == 25


def test_point_is_the_hosts(water, host):
    mol, job, atoms, point = water
    assert point.converged and point.nbasis == 7 and point.northo == 7
    assert point.energy_hartree == pytest.approx(host_energy(host, mol),
                                                 abs=PRINTED_ENERGY_TOLERANCE)
    assert point.energy == pytest.approx(point.electronic + point.nuclear)
    assert point.nuclear == pytest.approx(lib.nuclear_repulsion(job.zat, job.pos))
    levels = point.levels()
    assert np.all(np.diff(levels) > 0) and levels[job.nalpha - 1] < 0 < levels[job.nalpha]
    assert atoms.energies.shape == (3,) and atoms.energies[1] == atoms.energies[2]


def test_properties_keep_their_sum_rules(water):
    _, job, _, point = water
    for kind in ("Mulliken", "Lowdin"):
        charge, spin = lib.populations(job, point, kind)
        assert charge.sum() == pytest.approx(0, abs=SUM_RULE_TOLERANCE)
        assert charge[0] < 0 < charge[1] and charge[1] == pytest.approx(charge[2])
        np.testing.assert_allclose(spin, 0, atol=SUM_RULE_TOLERANCE)
    theta = lib.quadrupole(job, point)
    assert np.trace(theta) == pytest.approx(0, abs=SUM_RULE_TOLERANCE)
    grad = lib.gradient(job, point)
    assert grad.shape == (3, 3)
    np.testing.assert_allclose(grad.sum(axis=0), 0, atol=SUM_RULE_TOLERANCE)


def test_element_tables():
    library = lib.load()
    assert library.SMB2CHG("Cl") == 17 and library.SMB2CHG("Xe") == 54
    assert library.ATOMMASS(8) == pytest.approx(15.999, abs=1e-3)
    symbol = lib.text_buffer(2)
    library.CHG2SMB(symbol, 26)
    assert lib.text_of(symbol) == "Fe"
    na, nb = ctypes.c_int32(), ctypes.c_int32()
    library.NELECTRON(8, 0, 3, na, nb)
    assert (na.value, nb.value) == (5, 3)


def test_bad_arguments_stop_before_the_library():
    library = lib.load()
    z = np.zeros(9, np.int32)
    with pytest.raises(TypeError, match="takes 5 arguments"):
        library.ZATMNSHL("STO-3G", 8)
    with pytest.raises(ValueError, match="longer than the 20"):
        library.ZATMNSHL("x" * 21, 8, ctypes.c_int32(), z, ctypes.c_int32())
    with pytest.raises(TypeError, match="argument 2"):
        library.ZATMNSHL("STO-3G", "8", ctypes.c_int32(), z, ctypes.c_int32())
    with pytest.raises(ctypes.ArgumentError):  # a float64 array where int32 belongs
        library.ZATMNSHL("STO-3G", 8, ctypes.c_int32(), np.zeros(9), ctypes.c_int32())
    with pytest.raises(ctypes.ArgumentError):  # C order where Fortran order belongs
        library.NUCLEARREP(2, np.ones(2, np.int32), np.zeros((3, 2)),
                           ctypes.c_double())


def test_kohn_sham_job_reads_four_stages_and_matches_the_host(host, tmp_path):
    mol = tmp_path / "water.mol"
    mol.write_text(water_mol_text("STO-3G").replace("\nHF\n", "\nB3LYP\n", 1))
    par = tmp_path / "ks.par"
    par.write_text((Path(ROOT) / "examples" / "ks.par").read_text())
    job = lib.setup(mol, par)
    assert job.kohn_sham and job.theory == "B3LYP"
    # HF atoms, KS atoms, HF molecule, KS molecule, as the parameter file gives them
    np.testing.assert_array_equal(job.niter, [48, 64, 48, 128])
    np.testing.assert_allclose(job.thr_ene, [1e-5, 1e-6, 1e-5, 1e-7])
    point = lib.scf_point(job, lib.free_atoms(job))
    assert point.converged and point.xc[0] < 0
    assert point.energy_hartree == pytest.approx(host_energy(host, mol, "ks.par"),
                                                 abs=PRINTED_ENERGY_TOLERANCE)
