"""Times numpy.convolve on the benchmark's data, for bench_convolve.

usage: convolve_numpy.py X_FILE Y_FILE OURS_FILE BATCHES
The files hold little-endian doubles. Prints one line:
    <microseconds per call, best batch> <max |numpy - ours|>
measured as process CPU time (all threads), like the C++ side.
"""
import sys
import time

import numpy as np


def main():
    x = np.fromfile(sys.argv[1], dtype="<f8")
    y = np.fromfile(sys.argv[2], dtype="<f8")
    ours = np.fromfile(sys.argv[3], dtype="<f8")
    batches = int(sys.argv[4])
    z = np.convolve(x, y)  # warm-up, and the result to compare
    start = time.process_time()
    calls = 0
    while time.process_time() - start < 0.05:
        np.convolve(x, y)
        calls += 1
    best = float("inf")
    for _ in range(batches):
        t0 = time.process_time()
        for _ in range(calls):
            np.convolve(x, y)
        best = min(best, (time.process_time() - t0) / calls)
    print("%.3f %.3e" % (best * 1e6, float(np.max(np.abs(z - ours)))))


if __name__ == "__main__":
    main()
