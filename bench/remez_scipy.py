"""Times scipy.signal.remez on bench_fir's designs.

usage: remez_scipy.py NUMTAPS F1 F2 OURS_FILE BATCHES
Designs the lowpass [0, F1] -> 1, [F2, 0.5] -> 0 (fs = 1, unit weights,
grid density 16). OURS_FILE holds our taps as little-endian doubles. Prints
    <microseconds per design, best batch> <max |scipy - ours|>
measured as process CPU time.
"""
import sys
import time

import numpy as np
from scipy import signal


def main():
    n, f1, f2 = int(sys.argv[1]), float(sys.argv[2]), float(sys.argv[3])
    ours = np.fromfile(sys.argv[4], dtype="<f8")
    batches = int(sys.argv[5])

    def design():
        return signal.remez(n, [0, f1, f2, 0.5], [1, 0], fs=1.0, grid_density=16)

    h = design()
    start = time.process_time()
    calls = 0
    while time.process_time() - start < 0.05:
        design()
        calls += 1
    best = float("inf")
    for _ in range(batches):
        t0 = time.process_time()
        for _ in range(calls):
            design()
        best = min(best, (time.process_time() - t0) / calls)
    print("%.3f %.3e" % (best * 1e6, float(np.max(np.abs(h - ours)))))


if __name__ == "__main__":
    main()
