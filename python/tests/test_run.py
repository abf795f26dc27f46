"""norvik.run: the command it gives the host, what it makes of each exit
status (against a stand-in host), and whole jobs through the real host."""

import json
import os
import warnings

import pytest

import norvik
from conftest import DATA, PRINTED_ENERGY_TOLERANCE, host_energy, water_mol_text

FAKE_HOST = os.path.join(DATA, "fake_host.py")
WATER = norvik.Molecule.from_xyz(
    "3\nwater\nO 0 0 0.1173\nH 0 0.7572 -0.4692\nH 0 -0.7572 -0.4692\n")


def fake_run(monkeypatch, status, **kwargs):
    monkeypatch.setenv("FAKE_HOST_STATUS", str(status))
    return norvik.run(WATER, host=FAKE_HOST, **kwargs)


def test_options_reach_the_host_and_files_stay_with_workdir(monkeypatch, tmp_path):
    r = fake_run(monkeypatch, 0, method="B3LYP", basis="6-31G*", opt=True, raman=True,
                 threads=1, workdir=tmp_path, grid="dense", frozen_core=True,
                 cube=["homo", "lumo"], stability=False)
    args = json.loads((tmp_path / "fake_host_args.json").read_text())
    assert args == ["run", "water.xyz", "--method", "B3LYP", "--basis", "6-31G*", "--charge",
                    "0", "--mult", "1", "--opt", "--freq", "--raman", "--threads", "1",
                    "--json", "water.json", "--grid", "dense", "--frozen-core", "--cube",
                    "homo,lumo"]
    assert norvik.Molecule.from_file(tmp_path / "water.xyz").symbols == ["O", "H", "H"]
    assert r.energy == pytest.approx(-74.965901192)
    assert r.files.report == os.path.join(tmp_path, "water.report")
    assert r.report_text() == "fake report\n"
    assert "E(RHF)" in r.stdout


def test_never_writes_over_the_users_xyz(monkeypatch, tmp_path):
    fake_run(monkeypatch, 0, workdir=tmp_path)
    fake_run(monkeypatch, 0, workdir=tmp_path)  # its own file from the first run
    (tmp_path / "water.xyz").write_text("1\nmine\nHe 0 0 0\n")
    with pytest.raises(FileExistsError, match="not written by norvik.run"):
        fake_run(monkeypatch, 0, workdir=tmp_path)
    assert (tmp_path / "water.xyz").read_text() == "1\nmine\nHe 0 0 0\n"


def test_temporary_folder_goes_but_the_report_stays(monkeypatch):
    r = fake_run(monkeypatch, 0, charge=1)
    assert r.folder is None and not os.path.exists(os.path.dirname(r.files.report))
    assert r.report_text() == "fake report\n"


def test_charge_changes_the_default_multiplicity_and_cycles_go_with_opt(monkeypatch, tmp_path):
    fake_run(monkeypatch, 0, charge=1, opt=20, workdir=tmp_path)
    args = json.loads((tmp_path / "fake_host_args.json").read_text())
    assert args[args.index("--charge") + 1:args.index("--mult") + 2] == ["1", "--mult", "2"]
    assert args[args.index("--opt") + 1] == "20"


def test_not_converged_is_a_result_with_a_warning(monkeypatch):
    with pytest.warns(norvik.NotConvergedWarning, match="not converged"):
        r = fake_run(monkeypatch, 3)
    assert r.success is False and r.status == 3


@pytest.mark.parametrize("status, said", [(1, "library stopped"), (2, "'Xx' is not"),
                                          (-9, "signal 9")])
def test_failures_raise_job_error(monkeypatch, tmp_path, status, said):
    with pytest.raises(norvik.JobError, match=said) as err:
        fake_run(monkeypatch, status, workdir=tmp_path)
    assert err.value.status == status and err.value.folder == str(tmp_path)
    assert err.value.command[1:3] == ["run", "water.xyz"]


def test_success_without_json_is_an_error(monkeypatch):
    monkeypatch.setenv("FAKE_HOST_NO_JSON", "1")
    with pytest.raises(norvik.JobError, match="wrote no water.json"):
        fake_run(monkeypatch, 0)


def test_options_as_host_words():
    assert norvik.host_options({"grid": "dense", "memory": 2, "frozen_core": True,
                                "stability": False, "orbitals": None}) == [
        "--grid", "dense", "--memory", "2", "--frozen-core"]


# ---- the real host (needs its .xyz input and JSON result) -----------------------------


@pytest.fixture()
def real_host(host, host_writes_json):
    if not host_writes_json:
        pytest.skip("this host predates .xyz jobs or the JSON result (no --version, --json)")
    return host


def test_water_energy_is_the_hosts(real_host, tmp_path):
    (tmp_path / "water.mol").write_text(water_mol_text("STO-3G"))
    expected = host_energy(real_host, tmp_path / "water.mol")
    with warnings.catch_warnings():
        warnings.simplefilter("error")
        r = norvik.run(WATER, method="HF", basis="STO-3G", workdir=tmp_path / "run", threads=1)
    assert r.energy == pytest.approx(expected, abs=PRINTED_ENERGY_TOLERANCE)
    assert r.success and r.model.method == "HF" and r.model.reference == "RHF"
    assert r.molecule.symbols == ["O", "H", "H"]
    assert r.properties.calcinfo_nbasis == 7
    assert "STO-3G" in r.report_text()


def test_bad_input_raises_with_the_hosts_words(real_host, tmp_path):
    with pytest.raises(norvik.JobError) as err:
        norvik.run(WATER, basis="6-31Q", workdir=tmp_path)
    assert err.value.status == 2
    assert "norvik: " in err.value.stderr and "6-31Q" in str(err.value)


def test_optimisation_and_frequencies_fill_the_result(real_host, tmp_path):
    r = norvik.run(WATER, method="HF", basis="3-21G", opt=True, freq=True, threads=1,
                   workdir=tmp_path)
    assert r.success and r.driver == "frequency" and r.optimization.converged
    natom = 3
    assert r.final_molecule.geometry.shape == (natom, 3)
    assert r.optimization.trajectory[-1].energy == pytest.approx(r.energy, abs=1e-9)
    # the optimised point lies below the start and its gradient is small
    assert r.optimization.trajectory[0].energy > r.energy
    assert abs(r.gradient).max() < 1e-3
    vib = r.vibrations
    assert vib.frequencies.shape == (3 * natom - 6,) and vib.imaginary == 0
    assert vib.modes.shape == (3 * natom - 6, natom, 3)
    assert r.thermochemistry.zero_point_energy > 0
    assert r.thermochemistry.symmetry_number == 2
    assert os.path.isfile(r.files.report) and os.path.isfile(r.files.modes_xyz)
