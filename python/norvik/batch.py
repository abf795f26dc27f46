"""``norvik batch``: many jobs on a Dask cluster, each through the host.

    norvik batch JOBS... [--out DIR] [--workers N] [--threads T] [--scheduler ADDRESS]
                 [--method M] [--basis B] [--charge Q] [--mult M] [--opt] [--freq] [--raman]
                 [--timeout S] [--quiet] [HOST OPTIONS]

JOBS are folders (their .xyz and .mol files; a .mol file takes the .par file of
the same stem beside it), text files that list job files one per line, or job
files.  The options from --method to --raman apply to every .xyz job; any other
option (``--grid dense``, ``--memory 2``) goes to every host run.  Each job
runs in its own folder OUT/NAME with its input, everything the host wrote and
its standard output and error (NAME.stdout, NAME.stderr).  A job that fails is
reported and the others go on; at the end a summary table goes to standard
output and OUT/batch.json holds the same per job.  Exit status 0 when every job
ended with status 0, 3 when any did not, 2 for a usage error.
"""

from __future__ import annotations

import argparse
import json
import os
import re
import shutil
import subprocess
import sys
import time

from .job import failure_message
from .locate import NotFound, host_program

# The host's exit statuses (docs/host.md) as the summary names them.
STATES = {0: "ok", 1: "library stopped", 2: "input error", 3: "not converged"}
USAGE_ERROR, ANY_FAILED = 2, 3
JOB_SUFFIXES = (".xyz", ".mol")

_ENERGY_LINE = re.compile(r"^norvik: E\((\w+)\) = (-?\d+\.\d+) hartree", re.M)


class UsageError(Exception):
    pass


# ---- the job list ----------------------------------------------------------------


def _job_files_of(path: str, problems: list[str]) -> list[str]:
    if os.path.isdir(path):
        found = sorted(os.path.join(path, f) for f in os.listdir(path)
                       if f.endswith(JOB_SUFFIXES) and os.path.isfile(os.path.join(path, f)))
        if not found:
            problems.append(f"{path}: a folder without .xyz or .mol files")
        return found
    if path.endswith(JOB_SUFFIXES):
        if not os.path.isfile(path):
            problems.append(f"cannot find the job file '{path}'")
            return []
        return [path]
    if not os.path.isfile(path):
        problems.append(f"cannot find '{path}' (a folder of jobs, a job file or a list of them)")
        return []
    base = os.path.dirname(os.path.abspath(path))
    found = []
    with open(path, encoding="utf-8", errors="replace") as f:
        for number, line in enumerate(f, start=1):
            entry = line.strip()
            if not entry or entry.startswith("#"):
                continue
            full = entry if os.path.isabs(entry) else os.path.join(base, entry)
            if not entry.endswith(JOB_SUFFIXES):
                problems.append(f"{path}, line {number}: '{entry}' is not an .xyz or .mol file")
            elif not os.path.isfile(full):
                problems.append(f"{path}, line {number}: cannot find '{entry}'")
            else:
                found.append(full)
    return found


def collect_jobs(paths: list[str]) -> list[dict]:
    """One job per file: name (unique, the file's stem), input, parameter file."""
    problems: list[str] = []
    files: list[str] = []
    for p in paths:
        files += _job_files_of(p, problems)
    if problems:
        raise UsageError("\n".join(problems))
    if not files:
        raise UsageError("no jobs: name a folder of .xyz or .mol files, a list of them, or files")
    jobs, names = [], set()
    for f in files:
        stem, suffix = os.path.splitext(os.path.basename(f))
        name = stem
        k = 2
        while name in names:
            name = f"{stem}-{k}"
            k += 1
        names.add(name)
        par = os.path.splitext(f)[0] + ".par"
        jobs.append({"name": name, "input": os.path.abspath(f), "kind": suffix[1:],
                     "parameters": os.path.abspath(par) if suffix == ".mol" and
                     os.path.isfile(par) else None})
    return jobs


# ---- one job, on a worker ---------------------------------------------------------


def run_one(task: dict) -> dict:
    """Runs one job in its folder; never raises (a failure is a record)."""
    start = time.perf_counter()
    record = {"name": task["name"], "input": task["input"], "folder": task["folder"],
              "status": None, "state": "error", "energy": None, "json": None, "message": ""}
    try:
        folder = task["folder"]
        os.makedirs(folder, exist_ok=True)
        local = task["name"] + "." + task["kind"]
        shutil.copyfile(task["input"], os.path.join(folder, local))
        args = [task["host"], "run", local]
        if task.get("parameters"):
            par = task["name"] + ".par"
            shutil.copyfile(task["parameters"], os.path.join(folder, par))
            args.append(par)
        args += task["xyz_options"] if task["kind"] == "xyz" else []
        args += task["host_options"]
        env = dict(os.environ)
        env["OMP_NUM_THREADS"] = str(task["threads"])
        proc = subprocess.run(args, cwd=folder, capture_output=True, text=True, env=env,
                              errors="replace", timeout=task.get("timeout"))
        for stream, text in (("stdout", proc.stdout), ("stderr", proc.stderr)):
            with open(os.path.join(folder, f"{task['name']}.{stream}"), "w",
                      encoding="utf-8") as f:
                f.write(text)
        status = proc.returncode
        record["status"] = status
        record["state"] = STATES.get(status, f"signal {-status}" if status < 0 else
                                     f"status {status}")
        json_path = os.path.join(folder, task["name"] + ".json")
        if os.path.isfile(json_path):
            record["json"] = json_path
            with open(json_path, encoding="utf-8") as f:
                record["energy"] = json.load(f).get("return_result")
        elif status in (0, 3):
            found = _ENERGY_LINE.findall(proc.stdout)
            if found:
                record["energy"] = float(found[-1][1])
        if status != 0:
            record["message"] = failure_message(status, proc.stdout, proc.stderr)
    except subprocess.TimeoutExpired:
        record["state"] = "timed out"
        record["message"] = f"stopped after {task.get('timeout')} s"
    except Exception as e:  # a worker-side failure is this job's, not the batch's
        record["message"] = f"{type(e).__name__}: {e}"
    record["wall_time"] = time.perf_counter() - start
    return record


# ---- the cluster -------------------------------------------------------------------


def available_cores() -> int:
    try:
        return len(os.sched_getaffinity(0))
    except AttributeError:
        return os.cpu_count() or 1


def _package_parent() -> str:
    return os.path.dirname(os.path.dirname(os.path.abspath(__file__)))


def run_batch(tasks: list[dict], workers: int, scheduler: str | None, progress,
              times: dict | None = None) -> list[dict]:
    """Runs the jobs on the cluster; ``times`` receives the seconds spent
    starting the cluster, running the jobs and closing it."""
    import logging

    from distributed import Client, LocalCluster, as_completed

    times = {} if times is None else times
    clock = time.perf_counter()
    cluster = None
    if scheduler:
        client = Client(scheduler)
        try:  # the workers of another cluster need not have this package installed
            import cloudpickle

            from . import batch as this_module
            cloudpickle.register_pickle_by_value(this_module)
        except (ImportError, AttributeError):
            pass
    else:
        # worker processes import this package by name; their heartbeat may
        # still race the scheduler's shutdown, a harmless error not worth a trace
        parent = _package_parent()
        path = os.environ.get("PYTHONPATH", "")
        if parent not in path.split(os.pathsep):
            os.environ["PYTHONPATH"] = parent + (os.pathsep + path if path else "")
        cluster = LocalCluster(n_workers=workers, threads_per_worker=1, processes=True,
                               dashboard_address=None, silence_logs=logging.CRITICAL)
        client = Client(cluster)
    records: list[dict | None] = [None] * len(tasks)
    times["cluster_start"] = time.perf_counter() - clock
    clock = time.perf_counter()
    try:
        futures = client.map(run_one, tasks, pure=False)
        index = {f.key: k for k, f in enumerate(futures)}
        done = 0
        for future in as_completed(futures):
            k = index[future.key]
            try:
                record = future.result()
            except Exception as e:  # the worker itself died
                record = {"name": tasks[k]["name"], "input": tasks[k]["input"],
                          "folder": tasks[k]["folder"], "status": None, "state": "error",
                          "energy": None, "json": None, "wall_time": None,
                          "message": f"{type(e).__name__}: {e}"}
            records[k] = record
            done += 1
            progress(done, len(tasks), record)
    finally:
        times["jobs"] = time.perf_counter() - clock
        clock = time.perf_counter()
        client.close()
        if cluster is not None:
            cluster.close()
        times["cluster_close"] = time.perf_counter() - clock
    return records  # type: ignore[return-value]


# ---- the command ---------------------------------------------------------------------


def summary_table(records: list[dict]) -> str:
    width = max([len("job")] + [len(r["name"]) for r in records])
    lines = [f"{'job':<{width}}  {'status':<15}  {'energy [hartree]':>17}  {'wall [s]':>8}"]
    for r in records:
        energy = f"{r['energy']:17.9f}" if isinstance(r.get("energy"), float) else f"{'-':>17}"
        wall = f"{r['wall_time']:8.1f}" if r.get("wall_time") is not None else f"{'-':>8}"
        lines.append(f"{r['name']:<{width}}  {r['state']:<15}  {energy}  {wall}")
    return "\n".join(lines)


class _Parser(argparse.ArgumentParser):
    def error(self, message):  # the host's form: "norvik: cause; fix"
        print(f"norvik: {message} (see norvik batch --help)", file=sys.stderr)
        sys.exit(USAGE_ERROR)


def _parser() -> argparse.ArgumentParser:
    p = _Parser(
        prog="norvik batch", description="Runs many norvik jobs on a Dask cluster.",
        epilog="Any other option goes to every host run (e.g. --grid dense, --memory 2).")
    p.add_argument("jobs", nargs="+", metavar="JOBS",
                   help="folders of .xyz/.mol jobs, lists of job files, or job files")
    p.add_argument("--out", default="batch", help="folder of the job folders (default: batch)")
    p.add_argument("--workers", type=int, default=None,
                   help="local Dask workers (default: the cores)")
    p.add_argument("--threads", type=int, default=None,
                   help="threads per job (default: cores / workers, at least 1; "
                        "1 on a running cluster)")
    p.add_argument("--scheduler", default=None,
                   help="address of a running Dask scheduler, instead of a local cluster")
    p.add_argument("--timeout", type=float, default=None, help="seconds one job may take")
    p.add_argument("--quiet", action="store_true", help="no progress lines on standard error")
    g = p.add_argument_group("options of the .xyz jobs")
    g.add_argument("--method", default="HF")
    g.add_argument("--basis", default="6-31G*")
    g.add_argument("--charge", type=int, default=None)
    g.add_argument("--mult", type=int, default=None)
    g.add_argument("--opt", action="store_true")
    g.add_argument("--freq", action="store_true")
    g.add_argument("--raman", action="store_true")
    return p


def _xyz_options(a, threads: int) -> list[str]:
    out = ["--method", a.method, "--basis", a.basis]
    if a.charge is not None:
        out += ["--charge", str(a.charge)]
    if a.mult is not None:
        out += ["--mult", str(a.mult)]
    out += ["--opt"] if a.opt else []
    out += ["--freq"] if a.freq or a.raman else []
    out += ["--raman"] if a.raman else []
    return out + ["--threads", str(threads)]


def batch(argv: list[str]) -> int:
    parser = _parser()
    a, host_args = parser.parse_known_args(argv)
    try:
        if a.workers is not None and a.workers < 1:
            raise UsageError(f"--workers {a.workers}: give at least 1")
        if a.threads is not None and a.threads < 1:
            raise UsageError(f"--threads {a.threads}: give at least 1")
        jobs = collect_jobs(a.jobs)
        host = host_program()
    except (UsageError, NotFound) as e:
        for line in str(e).splitlines():
            print(f"norvik: {line}", file=sys.stderr)
        return USAGE_ERROR
    cores = available_cores()
    # A local cluster shares this machine's cores out; a running cluster's
    # machines are not known here, so its jobs take one thread unless told.
    workers = a.workers or cores
    threads = a.threads or (1 if a.scheduler else max(1, cores // workers))
    out = os.path.abspath(a.out)
    os.makedirs(out, exist_ok=True)
    tasks = [dict(job, folder=os.path.join(out, job["name"]), host=host, threads=threads,
                  timeout=a.timeout, xyz_options=_xyz_options(a, threads),
                  host_options=host_args) for job in jobs]

    def progress(done, total, r):
        if a.quiet:
            return
        e = f", {r['energy']:.9f} hartree" if isinstance(r.get("energy"), float) else ""
        why = f": {r['message']}" if r["state"] != "ok" and r.get("message") else ""
        print(f"norvik: [{done}/{total}] {r['name']} {r['state']}{e}{why}", file=sys.stderr,
              flush=True)

    where = a.scheduler or f"a local cluster of {workers} workers"
    if not a.quiet:
        print(f"norvik: {len(tasks)} jobs on {where}, {threads} thread(s) per job, "
              f"into {out}", file=sys.stderr, flush=True)
    start = time.perf_counter()
    times: dict = {}
    records = run_batch(tasks, workers, a.scheduler, progress, times)
    wall = time.perf_counter() - start
    failed = [r for r in records if r["status"] != 0]
    with open(os.path.join(out, "batch.json"), "w", encoding="utf-8") as f:
        json.dump({"schema_name": "norvik_batch", "schema_version": 1,
                   "scheduler": a.scheduler or "local",
                   "workers": None if a.scheduler else workers,
                   "threads_per_job": threads, "wall_time": wall,
                   "times": times, "jobs": len(records),
                   "failed": len(failed), "results": records}, f, indent=1)
        f.write("\n")
    print(summary_table(records))
    print(f"{len(records) - len(failed)} of {len(records)} jobs ended with a result in "
          f"{wall:.1f} s (cluster start {times['cluster_start']:.1f} s, jobs "
          f"{times['jobs']:.1f} s); batch.json and the job folders are in {out}")
    return ANY_FAILED if failed else 0


def main(argv: list[str]) -> int:
    if not argv or argv[0] in ("-h", "--help"):
        print("usage: python3 -m norvik batch JOBS... [options]  (norvik batch --help)",
              file=sys.stdout if argv else sys.stderr)
        return 0 if argv else USAGE_ERROR
    if argv[0] != "batch":
        print(f"norvik: unknown command '{argv[0]}'; the Python package runs 'batch'",
              file=sys.stderr)
        return USAGE_ERROR
    return batch(argv[1:])
