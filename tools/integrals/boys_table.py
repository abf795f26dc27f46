"""The Boys-function grid of the closed-form two-electron kernels (boys_table.h).

F_m(T) = integral_0^1 t^(2m) exp(-T t^2) dt on the grid T_k = k/32, k = 0..1280
(T up to 40) for m = 0..14, computed with mpmath at 40 significant digits: the
top order from Kummer's function, F_M(T) = 1F1(M + 1/2; M + 3/2; -T)/(2M + 1),
the lower orders by the downward recursion F_m = (2T F_(m+1) + exp(-T))/(2m + 1),
which is stable.  Every value is written as the shortest decimal that reads back
as the nearest double, so the output is the same on every run.

Run through generate.py beside this file.
"""
import mpmath

GENERATOR = "tools/integrals/generate.py"
WORKING_DPS = 40

GRID_INVERSE_STEP = 32  # grid points per unit of T
GRID_POINTS = 40 * GRID_INVERSE_STEP + 1
MAX_ORDER = 14  # highest order stored: 8 for (dd|dd) plus 6 Taylor terms


def boys_column(t):
    """F_0(t) ... F_MAX_ORDER(t) as mpmath numbers."""
    m = MAX_ORDER
    top = mpmath.hyp1f1(m + mpmath.mpf(1) / 2, m + mpmath.mpf(3) / 2, -t) / (2 * m + 1)
    values = [None] * (MAX_ORDER + 1)
    values[m] = top
    et = mpmath.exp(-t)
    for k in range(m - 1, -1, -1):
        values[k] = (2 * t * values[k + 1] + et) / (2 * k + 1)
    return values


def render():
    """The text of boys_table.h."""
    lines = [
        "// Boys function table F_m(k/32), m = 0..14, k = 0..1280.",
        f"// Generator: {GENERATOR} (mpmath, {WORKING_DPS} digits; no input data).",
        "// This file is generated, do not edit: run the generator to rebuild it.",
        "#pragma once",
        "",
        "namespace norvik::integrals::two::detail {",
        "",
        f"inline constexpr int kBoysGridInverseStep = {GRID_INVERSE_STEP};",
        f"inline constexpr int kBoysGridPoints = {GRID_POINTS};",
        f"inline constexpr int kBoysTableOrders = {MAX_ORDER + 1};",
        "",
        "// Row k holds F_0(T_k) ... F_14(T_k).",
        "alignas(64) inline constexpr double kBoysTable[kBoysGridPoints * kBoysTableOrders] = {",
    ]
    with mpmath.workdps(WORKING_DPS):
        for k in range(GRID_POINTS):
            t = mpmath.mpf(k) / GRID_INVERSE_STEP
            row = ", ".join(repr(float(v)) for v in boys_column(t))
            lines.append(f"    {row},")
    lines += ["};", "", "}  // namespace norvik::integrals::two::detail", ""]
    return "\n".join(lines)
