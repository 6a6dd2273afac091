#!/usr/bin/env python3
"""numpy's digits on the NIST StRD linear least-squares problems.

Reads the problems from a file written by bench_lsq (one block per set:
"set <name> <model> <degree> <n> <p>", then lines "x ...", "y ...", "b ...")
and prints, per set, "numpy <name> polyfit=<digits|-> lstsq=<digits>
lstsq_scaled=<digits>" (the last on the column-scaled design) where
digits is the log relative error of the worst parameter against the certified
values, capped at 15. With --exact it instead checks the data against the
certified values by solving the normal equations in exact rational
arithmetic (a transcription error shows up as a large disagreement).
"""
import math
import sys
from fractions import Fraction

import numpy as np


def read_sets(path):
    sets = []
    with open(path) as f:
        cur = None
        for line in f:
            parts = line.split()
            if not parts:
                continue
            if parts[0] == "set":
                cur = {"name": parts[1], "model": parts[2], "degree": int(parts[3]),
                       "n": int(parts[4]), "p": int(parts[5])}
                sets.append(cur)
            else:
                cur[parts[0]] = [float(v) for v in parts[1:]]
    return sets


def design(s, exact=False):
    conv = Fraction if exact else float
    n, x = s["n"], s["x"]
    rows = []
    for i in range(n):
        if s["model"] == "poly":
            # repeated products, as bench_lsq and numpy.vander build them
            xi, row, power = conv(x[i]), [], conv(1)
            for _ in range(s["degree"] + 1):
                row.append(power)
                power = power * xi
            rows.append(row)
        elif s["model"] == "noint":
            rows.append([conv(x[i])])
        else:  # longley: 6 predictors per row
            rows.append([conv(1)] + [conv(v) for v in x[6 * i:6 * i + 6]])
    return rows


def digits(est, cert):
    worst = 15.0
    for e, c in zip(est, cert):
        err = abs(e - c) / abs(c) if c != 0 else abs(e - c)
        d = 15.0 if err == 0 else min(15.0, -math.log10(err))
        if not math.isfinite(d):
            d = 0.0
        worst = min(worst, max(0.0, d))
    return worst


def exact_check(sets):
    ok = True
    for s in sets:
        h = design(s, exact=True)
        y = [Fraction(v) for v in s["y"]]
        k = len(h[0])
        g = [[sum(r[p] * r[q] for r in h) for q in range(k)] + [sum(r[p] * yi for r, yi in zip(h, y))]
             for p in range(k)]
        for c in range(k):  # Gauss-Jordan, exact
            piv = next(r for r in range(c, k) if g[r][c] != 0)
            g[c], g[piv] = g[piv], g[c]
            g[c] = [v / g[c][c] for v in g[c]]
            for r in range(k):
                if r != c and g[r][c] != 0:
                    m = g[r][c]
                    g[r] = [a - m * b for a, b in zip(g[r], g[c])]
        b = [float(g[p][k]) for p in range(k)]
        d = digits(b, s["b"])
        print(f"exact {s['name']} digits={d:.1f}")
        ok = ok and d >= 13.5  # certified values carry 15 digits
    return ok


def time_case(sets, name, reps):
    import time
    by = {s["name"]: s for s in sets}
    if name == "polyfit_filip":
        s = by["Filip"]
        x, y = np.array(s["x"]), np.array(s["y"])
        call = lambda: np.polyfit(x, y, s["degree"])
    else:
        s = by["Longley"]
        h, y = np.array(design(s)), np.array(s["y"])
        call = lambda: np.linalg.lstsq(h, y, rcond=None)
    call()
    t0 = time.perf_counter()
    for _ in range(reps):
        call()
    print(f"time {name} {(time.perf_counter() - t0) / reps * 1e6:.3f}")


def main():
    sets = read_sets(sys.argv[-1])
    if "--exact" in sys.argv:
        sys.exit(0 if exact_check(sets) else 1)
    if "--time" in sys.argv:
        i = sys.argv.index("--time")
        time_case(sets, sys.argv[i + 1], int(sys.argv[i + 2]))
        return
    for s in sets:
        x = np.array(s["x"])
        y = np.array(s["y"])
        pf = "-"
        if s["model"] == "poly":
            pf = f"{digits(np.polyfit(x, y, s['degree'])[::-1], s['b']):.1f}"
        h = np.array(design(s))
        ls = digits(np.linalg.lstsq(h, y, rcond=None)[0], s["b"])
        # The same H with polyfit's column scaling: what numpy's solver makes
        # of exactly the matrix GenLSFit is given.
        norms = np.sqrt((h * h).sum(axis=0))
        lss = digits(np.linalg.lstsq(h / norms, y, rcond=None)[0] / norms, s["b"])
        print(f"numpy {s['name']} polyfit={pf} lstsq={ls:.1f} lstsq_scaled={lss:.1f}")


if __name__ == "__main__":
    main()
