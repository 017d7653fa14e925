#!/usr/bin/python3
"""Reading frames to temperature from Python, beside the C++ library on the
same file in the same run, and beside numpy evaluating the same calibration.

    PYTHONPATH=build/python bench/python_read.py [--build build] [--frames 100]

Makes a 640 x 512 synthetic recording, then times
  - orvreduce's rec.read of all its frames (file to float32 temperatures),
    on one thread and on every core,
  - bench_reduction, the same through CRecordingReduction in C++ (one thread),
  - numpy: counts already in memory (not timed) to temperatures by the
    recording's calibration, radiance = c0 + c1 c + c2 c^2 over the
    emissivity, then the radiance-to-temperature table by interpolation.
"""
import argparse
import json
import os
import subprocess
import tempfile
import time

import numpy as np

import orvreduce

# The synthetic recording's calibration (see the program's synth command).
C0, C1, C2, EMISSIVITY = -2.0, 0.005, 2e-8, 0.95
SIGMA = 5.670374419e-8
TABLE_T = np.arange(-50, 501, dtype=np.float64)
TABLE_R = 0.3 * SIGMA * (TABLE_T + 273.15) ** 4 / np.pi


def numpy_temperature(counts):
    c = counts.astype(np.float32)
    radiance = (C0 + C1 * c + C2 * c * c) / EMISSIVITY
    return np.interp(radiance, TABLE_R, TABLE_T).astype(np.float32)


def best(fn, repeat=5):
    times = []
    for _ in range(repeat):
        start = time.perf_counter()
        fn()
        times.append(time.perf_counter() - start)
    return min(times)


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("--build", default="build")
    ap.add_argument("--frames", type=int, default=100)
    args = ap.parse_args()
    program = os.path.join(args.build, "tools/orvreduce/orvreduce")
    with tempfile.TemporaryDirectory() as tmp:
        path = os.path.join(tmp, "bench.qrt")
        subprocess.run([program, "synth", path, "--size", "640x512", "--frames", str(args.frames)],
                       check=True, capture_output=True)
        with orvreduce.open(path) as rec:
            rec.read(0)
            py = best(lambda: rec.read(threads=1))
            buffer = np.empty((len(rec),) + rec.shape[1:], dtype=np.float32)
            pyOut = best(lambda: rec.read(threads=1, out=buffer))
            pyAll = best(lambda: rec.read())
            counts = np.stack([rec.raw(i) for i in range(len(rec))])
            check = numpy_temperature(counts[:1])
            np.testing.assert_allclose(check, rec.read(0), atol=0.02)
        npy = best(lambda: numpy_temperature(counts))
        out = subprocess.run([os.path.join(args.build, "bench/bench_reduction"), "--benchmark_format=json",
                              "--benchmark_min_time=1"], check=True, capture_output=True, text=True,
                             env=dict(os.environ, ORV_BENCH_RECORDING=path))
        cpp = json.loads(out.stdout)["benchmarks"][0]["real_time"] / 1000.0
    n = args.frames
    print(f"{n} frames of 640x512 to temperature, load {os.getloadavg()[0]:.1f}")
    print(f"  C++ CRecordingReduction  {cpp * 1000:8.1f} ms  {n / cpp:8.0f} frames/s")
    print(f"  Python rec.read, 1 thr   {py * 1000:8.1f} ms  {n / py:8.0f} frames/s  {py / cpp:5.2f}x the C++ time")
    print(f"  ... into one array, out= {pyOut * 1000:8.1f} ms  {n / pyOut:8.0f} frames/s  {pyOut / cpp:5.2f}x the C++ time")
    print(f"  Python rec.read, {os.cpu_count()} thr   {pyAll * 1000:8.1f} ms  {n / pyAll:8.0f} frames/s")
    print(f"  numpy formula            {npy * 1000:8.1f} ms  {n / npy:8.0f} frames/s  {npy / py:5.1f}x slower than rec.read on 1 thread")


if __name__ == "__main__":
    main()
