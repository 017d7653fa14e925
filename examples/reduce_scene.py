#!/usr/bin/python3
"""From a recording to a picture and a time series, in a dozen lines.

    PYTHONPATH=build/python examples/reduce_scene.py [--program build/tools/orvreduce/orvreduce] [--out scene.png]

Makes a synthetic recording (a warm gradient with a 120 C disc crossing it),
reads every frame in degrees Celsius, measures a box in the middle of the
picture in every frame, and draws frame 0 with its colour bar beside the
box's mean over time (with matplotlib, when it is installed).
"""
import argparse
import os
import subprocess
import tempfile

import orvreduce


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("--program", default=os.environ.get("ORVREDUCE_PROGRAM", "build/tools/orvreduce/orvreduce"))
    ap.add_argument("--out", default="scene.png")
    args = ap.parse_args()

    with tempfile.TemporaryDirectory() as tmp:
        path = os.path.join(tmp, "scene.qrt")
        subprocess.run([args.program, "synth", path, "--size", "320x256", "--frames", "40"], check=True)

        with orvreduce.open(path) as rec:
            print(rec.info["camera"], rec.shape, rec.units)
            celsius = rec.read(unit="temperature", scale="C")          # (40, 256, 320) float32
            rois = orvreduce.RoiList()
            rois.set_image_size(320, 256)
            rois.add(orvreduce.Roi.rect("middle", 140, 108, 180, 148))
            table = rec.stats(rois, as_dict=True)                     # one row per frame and region

    box = table["name"] == "middle"
    print(f"frame 0: {celsius[0].min():.1f} to {celsius[0].max():.1f} C; "
          f"box mean peaks at {table['mean'][box].max():.1f} C")
    try:
        import matplotlib
        matplotlib.use("Agg")
        import matplotlib.pyplot as plt
    except ImportError:
        print("matplotlib is not installed: no picture")
        return
    fig, (left, right) = plt.subplots(1, 2, figsize=(10, 3.6))
    image = left.imshow(celsius[0], cmap="inferno")
    left.add_patch(plt.Rectangle((140, 108), 40, 40, fill=False, color="cyan"))
    left.set_title("frame 0")
    fig.colorbar(image, ax=left, label="temperature (C)")
    right.plot(table["frame"][box], table["mean"][box], marker=".")
    right.set_xlabel("frame")
    right.set_ylabel("mean of the box (C)")
    right.set_title("the disc crosses the box")
    fig.tight_layout()
    fig.savefig(args.out, dpi=80)
    print("wrote", args.out)


if __name__ == "__main__":
    main()
