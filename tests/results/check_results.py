"""Runs one job with the norvik host and checks its JSON result file and its
molden file against the report the same run wrote.

usage: check_results.py NORVIK MOLECULE_FILE WORKDIR [PARAMETER_FILE]

The JSON must parse, hold the blocks docs/json.md promises for this kind of job
(and only those), and agree with the report: energies, orbital levels, dipole,
populations, SCF cycles, the optimisation path, wavenumbers, intensities and
thermochemistry, each to the rounding of the report's printed digits.  The
molden file goes through check_molden.py (orthonormal orbitals, the electron
count).  Every file listed under "files" must exist.
"""
import json
import os
import re
import shutil
import subprocess
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, HERE)
import check_molden  # noqa: E402

# The library's constants (include/norvik/common.h): the file is in atomic units.
HARTREE_EV = 27.2113850785
BOHR_ANGSTROM = 0.5291772104

# Half a unit in the last digit the report prints, with room for the
# conversion: energies F.9 eV, levels F.6 eV, dipole F.6 eA, positions F.10 A,
# wavenumbers F.2, intensities F.4, charges F.5.
TOL_ENERGY_EV = 6e-10
TOL_LEVEL_EV = 6e-7
TOL_DIPOLE = 6e-7
TOL_POSITION = 6e-11
TOL_WAVENUMBER = 6e-3
TOL_INTENSITY = 6e-5
TOL_CHARGE = 6e-7

problems = []


def expect(ok, what):
    if not ok:
        problems.append(what)


def close(a, b, tol, what):
    expect(abs(a - b) <= tol, f"{what}: {a} against the report's {b} (tolerance {tol})")


def floats(text):
    return [float(x) for x in re.findall(r"[-+]?\d+\.\d*(?:[EeDd][-+]?\d+)?", text)]


def report_value(report, label):
    lines = [l for l in report if label in l]
    expect(lines, f"the report has no line '{label}'")
    return floats(lines[-1].split(label, 1)[1])[0] if lines else float("nan")


def main():
    norvik, mol, work = (os.path.abspath(a) for a in sys.argv[1:4])
    par = os.path.abspath(sys.argv[4]) if len(sys.argv) > 4 else None
    shutil.rmtree(work, ignore_errors=True)
    os.makedirs(work)
    shutil.copy(mol, work)
    args = [norvik, "run", os.path.basename(mol)]
    if par:
        shutil.copy(par, work)
        args.append(os.path.basename(par))
    run = subprocess.run(args, cwd=work, capture_output=True, text=True)
    if run.returncode != 0:
        sys.exit(f"norvik ended with status {run.returncode}\n{run.stdout}{run.stderr}")
    prefix = os.path.join(work, os.path.splitext(os.path.basename(mol))[0])
    with open(prefix + ".json") as f:
        d = json.load(f)
    report = open(prefix + ".report").read().split("\n")

    # the blocks of this kind of job
    optimised = "optimization" in d
    vib = "vibrations" in d
    always = ["schema_name", "schema_version", "success", "status", "messages", "provenance",
              "units", "input", "files", "driver", "model", "keywords", "molecule",
              "return_result", "properties", "wavefunction", "scf_history", "timings"]
    for key in always:
        expect(key in d, f"no '{key}'")
    expect(d["schema_name"] == "norvik_result" and d["success"] and d["status"] == 0,
           "schema name or status")
    expect(d["driver"] == ("frequency" if vib else "optimization" if optimised else "energy"),
           f"driver {d['driver']}")
    for key in ["final_molecule", "gradient"]:
        expect((key in d) == optimised, f"'{key}' present: {key in d}, optimised: {optimised}")
    expect(("thermochemistry" in d) == vib, "thermochemistry without vibrations or the reverse")
    for kind, path in d["files"].items():
        if kind != "cubes":
            expect(os.path.exists(os.path.join(work, path)), f"files.{kind}: no {path}")
    natom = len(d["molecule"]["symbols"])
    p = d["properties"]
    w = d["wavefunction"]

    # energies, in hartree, against the report in eV
    e = report_value(report, "Molecular energy   =")
    if "mp2_total_energy" in p:
        for key, label in [("mp2_total_energy", "MP2 total energy   ="),
                           ("mp2_correlation_energy", "MP2 correction     ="),
                           ("mp2_same_spin_correlation_energy", "MP2 same-spin      ="),
                           ("mp2_opposite_spin_correlation_energy", "MP2 opposite-spin  =")]:
            close(p[key] * HARTREE_EV, report_value(report, label), TOL_ENERGY_EV, key)
        close(d["return_result"], p["mp2_total_energy"], 0.0, "return_result of MP2")
    else:
        close(d["return_result"] * HARTREE_EV, e, TOL_ENERGY_EV, "return_result")
    close(p["scf_total_energy"] * HARTREE_EV, e, TOL_ENERGY_EV, "scf_total_energy")
    close(p["scf_electronic_energy"] * HARTREE_EV, report_value(report, "Electronic energy  ="),
          TOL_ENERGY_EV, "scf_electronic_energy")
    close(p["binding_energy"] * HARTREE_EV, report_value(report, "Binding energy     ="),
          TOL_ENERGY_EV, "binding_energy")
    close(p["scf_electronic_energy"] + p["nuclear_repulsion_energy"], p["scf_total_energy"], 1e-12,
          "electronic + nuclear repulsion")
    close(p["nuclear_repulsion_energy"] * HARTREE_EV, report_value(report, "Nuclear repulsion  ="),
          TOL_ENERGY_EV, "nuclear_repulsion_energy")
    if "scf_xc_energy" in p:
        for key, label in [("scf_xc_energy", "XC energy          ="),
                           ("scf_exchange_energy", "  exchange         ="),
                           ("scf_correlation_energy", "  correlation      =")]:
            close(p[key] * HARTREE_EV, report_value(report, label), TOL_ENERGY_EV, key)
        close(p["grid_electrons"], report_value(report, "Electrons on grid  ="), TOL_ENERGY_EV,
              "grid_electrons")
    # the SCF history ends on the final energy
    h = d["scf_history"]
    expect(h and h[-1]["cycle"] == p["scf_iterations"], "scf_history does not end on the last cycle")
    if h:
        close(h[-1]["energy"] * HARTREE_EV, e, TOL_ENERGY_EV, "last SCF cycle's energy")
        expect(h[0]["delta_energy"] is None, "the first cycle has an energy change")
    # orbital levels (the report's table: number, alpha level, beta level)
    start = max(i for i, l in enumerate(report) if "Orbital energies [eV]" in l) + 2
    end = next(i for i in range(start, len(report)) if report[i].strip() == "#")
    table = [floats(l) for l in report[start:end]]
    levels_a = [r[0] for r in table]
    levels_b = [r[1] for r in table]
    expect(len(levels_a) > 0, "no orbital table in the report")
    for k, (a, b) in enumerate(zip(levels_a, levels_b)):
        close(w["orbital_energies_a"][k] * HARTREE_EV, a, TOL_LEVEL_EV, f"alpha level {k + 1}")
        close(w["orbital_energies_b"][k] * HARTREE_EV, b, TOL_LEVEL_EV, f"beta level {k + 1}")
    expect(sum(w["occupations_a"]) == p["calcinfo_nalpha"]
           and sum(w["occupations_b"]) == p["calcinfo_nbeta"], "occupations")
    homo = [l for l in report if "HOMO =" in l]
    close(w["homo_energy"] * HARTREE_EV, max(floats(l)[0] for l in homo), TOL_LEVEL_EV, "HOMO")
    close(w["lumo_energy"] * HARTREE_EV, min(floats(l)[1] for l in homo), TOL_LEVEL_EV, "LUMO")
    dip = floats(next(l for l in reversed(report) if "Electric dipole moment [eA]" in l))[:3]
    for k in range(3):
        close(p["scf_dipole_moment"][k] * BOHR_ANGSTROM, dip[k], TOL_DIPOLE, f"dipole {k}")
    for kind in ("Mulliken", "Lowdin"):
        key = kind.lower() + "_charges"
        if key in p:
            start = report.index(f"#  {kind} atomic charges [e]") + 2
            for k in range(natom):
                close(p[key][k], floats(report[start + k])[-1], TOL_CHARGE, f"{kind} charge {k + 1}")
    if "scf_quadrupole_moment" in p:
        start = next(i for i, l in enumerate(report) if "Theta_ij" in l) + 2
        for i in range(3):
            row = floats(report[start + i])
            for j in range(3):
                close(p["scf_quadrupole_moment"][3 * i + j] * BOHR_ANGSTROM**2, row[j], TOL_DIPOLE,
                      f"quadrupole {i}{j}")
    if "spin_contamination" in p:
        s2 = report_value(report, "<S**2> =")
        close(p["spin_contamination"], s2, 6e-6, "<S^2>")

    if optimised:
        o = d["optimization"]
        frames = open(os.path.join(work, d["files"]["trajectory"])).read().count("cycle ")
        expect(len(o["trajectory"]) == frames, f"{len(o['trajectory'])} trajectory entries, {frames} frames")
        close(o["trajectory"][-1]["energy"] * HARTREE_EV, e, TOL_ENERGY_EV, "last trajectory energy")
        final = next(i for i, l in reversed(list(enumerate(report))) if "Energy gradient [eV/A]" in l)
        rows = [floats(l)[-3:] for l in report[final - natom - 1:final] if re.match(r"^#\s+\d+\s+[A-Z]", l)]
        for a in range(natom):
            for k in range(3):
                close(d["final_molecule"]["geometry_angstrom"][3 * a + k], rows[a][k], TOL_POSITION,
                      f"final position {a + 1}.{k}")
                close(d["final_molecule"]["geometry"][3 * a + k] * BOHR_ANGSTROM, rows[a][k],
                      TOL_POSITION, f"final position in bohr {a + 1}.{k}")
        expect(o["converged"], "optimisation not converged")

    if vib:
        v = d["vibrations"]
        start = next(i for i, l in enumerate(report) if "Harmonic vibrations" in l)
        rows = [floats(l) for l in report[start + 2:] if re.match(r"^#\s+\d+\s+-?\d", l)]
        rows = rows[:len(v["frequencies"])]
        expect(len(v["frequencies"]) == 3 * natom - 6 and len(v["modes"]) == len(v["frequencies"]),
               "number of modes")
        for k, r in enumerate(rows):
            close(v["frequencies"][k], r[0], TOL_WAVENUMBER, f"wavenumber {k + 1}")
            close(v["ir_intensities"][k], r[1], TOL_INTENSITY, f"IR intensity {k + 1}")
            if "raman_activities" in v:
                close(v["raman_activities"][k], r[2], TOL_INTENSITY, f"Raman activity {k + 1}")
        t = d["thermochemistry"]
        close(t["zero_point_energy"] * HARTREE_EV, report_value(report, "Zero-point energy [eV]:"),
              TOL_ENERGY_EV, "zero-point energy")
        close(t["enthalpy"] * HARTREE_EV, report_value(report, "Enthalpy H = U + kT [eV]:"),
              TOL_ENERGY_EV, "enthalpy")
        close(t["gibbs_free_energy"] * HARTREE_EV, report_value(report, "Gibbs free energy G = H - TS [eV]:"),
              TOL_ENERGY_EV, "Gibbs free energy")

    if "excited_states" in d:
        start = next(i for i, l in enumerate(report) if l.startswith("#  Excited states (")) + 2
        rows = []
        while re.match(r"^#\s+\d+\s+(singlet|triplet|\w+)\s", report[start + len(rows)]):
            rows.append(report[start + len(rows)])
        states = d["excited_states"]
        expect(len(states) == len(rows), f"{len(states)} excited states, the report {len(rows)}")
        for k, (state, row) in enumerate(zip(states, rows)):
            words = row.split()
            spin = {"singlet": 1, "triplet": 3}.get(words[2], 0)
            expect(state["multiplicity"] == spin, f"state {k + 1}: multiplicity")
            close(state["energy_ev"], float(words[3]), TOL_LEVEL_EV, f"state {k + 1}: energy")
            close(state["energy"] * HARTREE_EV, state["energy_ev"], 1e-12, f"state {k + 1}: hartree")
            close(state["oscillator_strength"], float(words[5]), TOL_LEVEL_EV, f"state {k + 1}: f")

    # the molden file of the same run
    sys.argv = ["check_molden.py", os.path.join(work, d["files"]["molden"]),
                str(p["calcinfo_nalpha"] + p["calcinfo_nbeta"])]
    try:
        check_molden.main()
    except SystemExit as end:
        expect(end.code in (0, None), "the molden file's orbitals (above)")
    for m in problems:
        print("FAIL:", m)
    print(f"{os.path.basename(mol)}: {'failed' if problems else 'JSON and molden agree with the report'}")
    sys.exit(1 if problems else 0)


if __name__ == "__main__":
    main()
