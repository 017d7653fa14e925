import os
import shutil
import subprocess

import numpy as np
import pytest


def program() -> str:
    path = os.environ.get("ORVREDUCE_PROGRAM") or shutil.which("orvreduce")
    if not path:
        pytest.skip("the orvreduce program is needed to make synthetic recordings")
    return path


def run(*args: str) -> subprocess.CompletedProcess:
    return subprocess.run([program(), *args], check=True, capture_output=True, text=True)


def synth(path, width=64, height=48, frames=6) -> str:
    run("synth", str(path), "--size", f"{width}x{height}", "--frames", str(frames))
    return str(path)


def scene(width: int, height: int, frame: int, frames: int):
    """The synthetic scene in Celsius without its +-0.1 noise, and the mask of
    pixels at least 1.5 pixels away from the disc's edge."""
    y, x = np.mgrid[0:height, 0:width].astype(np.float64)
    background = 20 + 15 * x / (width - 1)
    cx = width // 4 + frame * (width // 2) / max(1, frames - 1)
    cy = height // 2
    r = min(width, height) // 8
    d = np.hypot(x - cx, y - cy)
    t = np.where(d <= r, 120.0, background)
    clear = np.abs(d - r) > 1.5
    return t, clear


@pytest.fixture(scope="session")
def recording(tmp_path_factory):
    return synth(tmp_path_factory.mktemp("rec") / "scene.qrt")
