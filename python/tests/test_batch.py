"""norvik batch: the job list, and a real batch on a local Dask cluster of two
workers through the host's `norvik batch` with one bad input among good ones."""

import json
import os
import shutil
import subprocess
import sys

import pytest

from conftest import PRINTED_ENERGY_TOLERANCE, ROOT, host_energy, water_mol_text
from norvik.batch import UsageError, collect_jobs, summary_table



def make_jobs(folder, with_xyz=False):
    folder.mkdir()
    (folder / "water.mol").write_text(water_mol_text("STO-3G"))
    (folder / "water2.mol").write_text(water_mol_text("STO-3G", name="water2", stretch=1.05))
    shutil.copy(os.path.join(ROOT, "examples", "hf.par"), folder / "water2.par")
    (folder / "bad.mol").write_text(water_mol_text("STO-3G").replace("\nO    0.0", "\nXx   0.0"))
    if with_xyz:
        (folder / "water.xyz").write_text(
            "3\nwater\nO 0 0 0.1173\nH 0 0.7572 -0.4692\nH 0 -0.7572 -0.4692\n")
    (folder / "notes.txt").write_text("not a job\n")
    return folder


def test_job_list_from_folders_lists_and_files(tmp_path):
    jobs = make_jobs(tmp_path / "jobs", with_xyz=True)
    found = collect_jobs([str(jobs)])
    assert [j["name"] for j in found] == ["bad", "water", "water-2", "water2"]
    by_name = {j["name"]: j for j in found}
    assert by_name["water2"]["parameters"] == str(jobs / "water2.par")
    assert by_name["water"]["parameters"] is None and by_name["water-2"]["kind"] == "xyz"
    listing = tmp_path / "list.txt"
    listing.write_text("# two jobs\njobs/water.mol\n\n" + str(jobs / "bad.mol") + "\n")
    assert [j["input"] for j in collect_jobs([str(listing)])] == [
        str(jobs / "water.mol"), str(jobs / "bad.mol")]
    listing.write_text("jobs/missing.mol\njobs/notes.txt\n")
    with pytest.raises(UsageError, match="line 1: cannot find 'jobs/missing.mol'") as err:
        collect_jobs([str(listing)])
    assert "line 2: 'jobs/notes.txt' is not an .xyz or .mol file" in str(err.value)
    (tmp_path / "empty").mkdir()
    with pytest.raises(UsageError, match="without .xyz or .mol"):
        collect_jobs([str(tmp_path / "empty")])


def test_usage_errors_end_with_status_2(tmp_path):
    env = dict(os.environ, PYTHONPATH=os.path.join(ROOT, "python"))
    proc = subprocess.run([sys.executable, "-m", "norvik", "batch", str(tmp_path / "none"),
                           "--workers", "0"], capture_output=True, text=True, env=env)
    assert proc.returncode == 2
    assert proc.stderr.startswith("norvik: --workers 0: give at least 1")
    proc = subprocess.run([sys.executable, "-m", "norvik", "batch", "--workers", "two"],
                          capture_output=True, text=True, env=env)
    assert proc.returncode == 2 and proc.stderr.startswith("norvik: argument --workers")


def test_host_finds_the_package_or_says_where_to_point(host, tmp_path):
    env = {k: v for k, v in os.environ.items() if k != "NORVIK_PYTHON"}
    if os.path.commonpath([host, ROOT]) == ROOT:  # a host built in this tree finds python/
        proc = subprocess.run([host, "batch", "--help"], capture_output=True, text=True, env=env)
        assert proc.returncode == 0 and "usage: norvik batch" in proc.stdout
    env["NORVIK_PYTHON"] = str(tmp_path)
    proc = subprocess.run([host, "batch", "jobs"], capture_output=True, text=True, env=env)
    assert proc.returncode == 2
    assert proc.stderr.startswith(f"norvik: NORVIK_PYTHON={tmp_path} does not hold the package")


def test_summary_table_lines_up():
    table = summary_table([
        {"name": "water", "state": "ok", "energy": -74.963023163, "wall_time": 0.25},
        {"name": "a-long-name", "state": "input error", "energy": None, "wall_time": None}])
    lines = table.splitlines()
    assert len({len(line.rstrip()) for line in lines}) == 1
    assert "-74.963023163" in lines[1] and lines[2].split()[-2:] == ["-", "-"]


def test_batch_on_two_local_workers_reports_the_bad_job(host, host_takes_xyz, tmp_path):
    jobs = make_jobs(tmp_path / "jobs", with_xyz=host_takes_xyz)
    out = tmp_path / "out"
    env = dict(os.environ, NORVIK_PYTHON=os.path.join(ROOT, "python"), NORVIK_HOST=host)
    proc = subprocess.run([host, "batch", str(jobs), "--out", str(out), "--workers", "2",
                           "--basis", "STO-3G"], capture_output=True, text=True, env=env,
                          cwd=tmp_path, timeout=300)
    assert proc.returncode == 3, proc.stderr
    summary = json.loads((out / "batch.json").read_text())
    assert summary["workers"] == 2 and summary["failed"] == 1
    records = {r["name"]: r for r in summary["results"]}
    bad = records["bad"]
    assert bad["status"] == 2 and bad["state"] == "input error" and "'Xx'" in bad["message"]
    assert "'Xx'" in (out / "bad" / "bad.stderr").read_text()
    expected = {"water": host_energy(host, jobs / "water.mol"),
                "water2": host_energy(host, jobs / "water2.mol", "water2.par")}
    if host_takes_xyz:
        expected["water-2"] = expected["water"]
    for name, energy in expected.items():
        assert records[name]["status"] == 0, records[name]
        assert records[name]["energy"] == pytest.approx(energy, abs=PRINTED_ENERGY_TOLERANCE)
        assert (out / name / f"{name}.report").is_file()
    table = proc.stdout.splitlines()
    assert table[0].split()[:2] == ["job", "status"]
    assert any(line.split()[:3] == ["bad", "input", "error"] for line in table)
    assert f"{len(expected)} of {len(expected) + 1} jobs ended with a result" in proc.stdout
    assert summary["times"]["jobs"] > 0


def test_failure_messages_are_the_hosts_words():
    from norvik.job import failure_message

    stopped = ("norvik: the library stopped the job (exit status 1):\n"
               " Zatom exceed limit in ZatmNSHL_631TG.          36\n"
               "norvik: w.report and w.log were not touched; ...\n")
    assert failure_message(1, "", stopped) == (
        "the library stopped the job (exit status 1): Zatom exceed limit in "
        "ZatmNSHL_631TG.          36")
    slow = ("norvik: HF / STO-3G job 'w': 3 atoms\n"
            "norvik: SCF not converged in 3 cycles (last energy change ...)\n")
    assert failure_message(3, slow, "").startswith("SCF not converged in 3 cycles")
    assert failure_message(2, "", "norvik: w.xyz, line 3: 'Xx' is not an element\n"
                           "norvik: nothing was run\n") == "w.xyz, line 3: 'Xx' is not an element"
