import os
import shutil

import numpy as np
import pytest

from conftest import DATA
from norvik import BOHR_ANGSTROM, Result

FIXTURE = os.path.join(DATA, "water_freq.json")


@pytest.fixture()
def result(tmp_path):
    shutil.copy(FIXTURE, tmp_path / "water.json")
    (tmp_path / "water.report").write_text("the report\n")
    return Result.from_json(tmp_path / "water.json")


def test_keys_become_attributes_with_array_shapes(result, tmp_path):
    assert result.energy == result.return_result == result.properties.return_energy
    assert result.success and result.status == 0 and result.driver == "frequency"
    assert result.model.method == "HF" and result["model"]["basis"] == "STO-3G"
    mol = result.molecule
    assert mol.symbols == ["O", "H", "H"]
    assert mol.geometry.shape == (3, 3) and mol.geometry_angstrom.shape == (3, 3)
    np.testing.assert_allclose(mol.geometry * BOHR_ANGSTROM, mol.geometry_angstrom, atol=1e-9)
    assert result.final_molecule.geometry.shape == (3, 3)
    assert result.gradient.shape == (3, 3)
    assert result.properties.scf_dipole_moment.shape == (3,)
    assert result.properties.scf_quadrupole_moment.shape == (3, 3)
    assert result.properties.polarizability.shape == (3, 3)
    assert result.properties.scf_converged is True
    wf = result.wavefunction
    assert wf.orbital_energies_a.shape == (result.properties.calcinfo_nmo,)
    assert wf.occupations_a.sum() == result.properties.calcinfo_nalpha
    vib = result.vibrations
    assert vib.modes.shape == (3, 3, 3)
    # each mode is one unit vector over all atoms, as the file gives it
    np.testing.assert_allclose(np.linalg.norm(vib.modes.reshape(3, -1), axis=1), 1, atol=1e-5)
    traj = result.optimization.trajectory
    np.testing.assert_allclose(traj[-1].geometry, result.final_molecule.geometry)
    assert result.scf_history[-1].cycle == 2
    assert mol.real.dtype == bool


def test_files_are_found_from_the_json_folder(result, tmp_path):
    assert result.files.report == os.path.join(tmp_path, "water.report")
    assert result.files.cubes[0].path == os.path.join(tmp_path, "water.homo.cube")
    assert result.report_text() == "the report\n"
    assert "water" in repr(result) and "-74.965901192" in repr(result)


def test_absent_blocks_and_writes_are_refused(result):
    with pytest.raises(AttributeError, match="did not compute"):
        result.excited_states
    assert "excited_states" not in result and "vibrations" in result
    with pytest.raises(AttributeError, match="read-only"):
        result.energy_note = 1
    plain = result.to_dict()
    assert plain["vibrations"]["modes"][0][0][2] == pytest.approx(result.vibrations.modes[0, 0, 2])


def test_only_norvik_results_are_read(tmp_path):
    (tmp_path / "other.json").write_text('{"schema_name": "qcschema_output"}')
    with pytest.raises(ValueError, match="not a norvik result"):
        Result.from_json(tmp_path / "other.json")


def test_results_survive_pickling(result):
    import pickle

    back = pickle.loads(pickle.dumps(result))
    assert back.energy == result.energy and back.files.report == result.files.report
    assert back.vibrations.modes.shape == (3, 3, 3) and back.report_text() == "the report\n"
