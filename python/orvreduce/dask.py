"""Recordings as lazy dask arrays, for campaigns larger than one machine.

    import orvreduce.dask
    stack = orvreduce.dask.read(["a.qrt", "b.qrt"], unit="temperature")
    mean = stack.mean(axis=0).compute()        # local scheduler, or a distributed Client

Each chunk is a block of frames of one recording, read by whichever worker
runs it: the workers open the files themselves, so they must see the paths.
"""
from __future__ import annotations

from typing import Optional, Sequence, Union

import numpy as np

__all__ = ["read"]


def _read_block(path: str, start: int, stop: int, unit: str, scale: Union[str, int],
                emissivity: Optional[float], distance: Optional[float]) -> np.ndarray:
    import orvreduce
    # One thread a chunk: the scheduler runs chunks side by side already.
    with orvreduce.open(path) as rec:
        return rec.read(slice(start, stop), unit=unit, scale=scale, emissivity=emissivity, distance=distance,
                        threads=1)


def read(paths: Union[str, Sequence[str]], unit: str = "temperature", scale: Union[str, int] = "C",
         emissivity: Optional[float] = None, distance: Optional[float] = None,
         frames_per_chunk: int = 64):
    """One lazy float32 array of shape (frames, height, width) over the
    recordings in order, one chunk per block of frames_per_chunk frames. All
    recordings must share one image size; each must offer the unit."""
    import dask
    import dask.array as da

    import orvreduce

    if isinstance(paths, (str, bytes)):
        paths = [paths]
    if frames_per_chunk < 1:
        raise ValueError("frames_per_chunk must be at least 1")
    blocks = []
    size = None
    for path in paths:
        path = str(path)
        with orvreduce.open(path) as rec:
            text = rec.resolve_unit(unit)  # fails here, not in a worker
            n, h, w = rec.shape
        if size is None:
            size = (h, w)
        elif size != (h, w):
            raise ValueError(f"{path}: frames of {w}x{h} do not stack with {size[1]}x{size[0]}")
        for start in range(0, n, frames_per_chunk):
            stop = min(n, start + frames_per_chunk)
            task = dask.delayed(_read_block, pure=True)(path, start, stop, text, scale, emissivity, distance)
            blocks.append(da.from_delayed(task, shape=(stop - start, h, w), dtype=np.float32))
    if not blocks:
        raise ValueError("no frames to read")
    return da.concatenate(blocks, axis=0)
