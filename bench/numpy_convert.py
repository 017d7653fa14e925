#!/usr/bin/python3
"""Counts to temperature with numpy, for comparison with `orvreduce convert`.

Reads the raw 16-bit frames of a recording written by `orvreduce synth`
(frame bytes and data offset from `orvreduce info --json`), applies the
synthetic scene's calibration in float32 (radiance = c0 + c1 c + c2 c^2, then
the radiance-to-temperature table at radiance / emissivity, rows joined by
straight lines) and writes a float32 .npy of shape (frames, height, width).
Prints frames per second of the conversion and the write.

    numpy_convert.py RECORDING INFO_JSON OUT.npy
"""
import json
import sys
import time

import numpy as np

C0, C1, C2 = -2.0, 0.005, 2e-8
EMISSIVITY = 0.95
SIGMA = 5.670374419e-8


def main():
    recording, info_path, out = sys.argv[1:4]
    with open(info_path) as f:
        info = json.load(f)
    frames, stride, offset = info["frames"], info["frameBytes"], info["dataOffset"]
    width, height = info["sourceInfo"]["frameWidth"], info["sourceInfo"]["frameHeight"]
    rows_c = np.arange(-50, 501, dtype=np.float64)
    rows_r = 0.3 * SIGMA * (rows_c + 273.15) ** 4 / np.pi
    raw = np.memmap(recording, dtype=np.uint8, mode="r", offset=offset, shape=(frames, stride))
    result = np.lib.format.open_memmap(out, mode="w+", dtype=np.float32, shape=(frames, height, width))
    start = time.perf_counter()
    for i in range(frames):
        counts = raw[i, : width * height * 2].view("<u2").astype(np.float32)
        radiance = np.float32(C0) + counts * (np.float32(C1) + counts * np.float32(C2))
        result[i] = np.interp(radiance / np.float32(EMISSIVITY), rows_r, rows_c).astype(np.float32).reshape(height, width)
    result.flush()
    del result
    seconds = time.perf_counter() - start
    print(f"numpy: {frames} frames in {seconds:.2f} s, {frames / seconds:.0f} frames/s")


if __name__ == "__main__":
    main()
