"""Thermal infrared recordings as numpy arrays.

    import orvreduce
    with orvreduce.open("scene.qrt") as rec:
        print(rec.info["units"])
        t = rec.read(frames=slice(0, 10), unit="temperature", scale="C")   # (10, H, W) float32
        t, status = rec.read(0, status=True)                               # status: 0 good
        table = rec.stats(orvreduce.RoiList.load("regions.xml"))

Every failure of the library becomes an exception carrying its reason:
OSError for files that cannot be opened, read or decoded, ValueError for bad
arguments, IndexError for frames outside the recording.
"""
from __future__ import annotations

import datetime as _dt
from typing import Any, Dict, Iterator, List, Optional, Sequence, Tuple, Union

import numpy as np

from ._orvreduce import Roi, RoiList, _Recording

__all__ = ["open", "Recording", "Roi", "RoiList", "UNITS", "SCALES"]

#: The unit texts of the library; read() also takes the short names below.
UNITS = (
    "Counts", "Radiance (User)", "Temperature (User)", "Object Signal", "Radiance (Factory)",
    "Temperature (Factory)", "RGB (24-bit)", "RGB (48-bit)", "Red Channel", "Green Channel",
    "Blue Channel", "RGB Average",
)
_SHORT_UNITS = {
    "counts": ("Counts",),
    "signal": ("Object Signal",),
    "radiance": ("Radiance (Factory)", "Radiance (User)"),
    "temperature": ("Temperature (Factory)", "Temperature (User)"),
}
#: Temperature scales: C, F, K, R (or their names).
SCALES = {"c": 0, "celsius": 0, "f": 1, "fahrenheit": 1, "k": 2, "kelvin": 2, "r": 3, "rankine": 3}

# Frame times count 100-nanosecond ticks from the start of 1601 (UTC).
_EPOCH = _dt.datetime(1601, 1, 1, tzinfo=_dt.timezone.utc)

Frames = Union[None, int, slice, Sequence[int], np.ndarray]


def open(path: str) -> "Recording":  # noqa: A001 - the natural name, as io.open
    """Opens a recording; use it as a context manager to close it."""
    return Recording(path)


class Recording:
    """One recording file: its frames in any unit it offers, frame info and blocks."""

    def __init__(self, path: str) -> None:
        self._rec = _Recording(str(path))
        self._info: Optional[Dict[str, Any]] = None

    # Context manager and lifetime.
    def __enter__(self) -> "Recording":
        return self

    def __exit__(self, *exc: Any) -> None:
        self.close()

    def close(self) -> None:
        """Closes the file; later reads raise ValueError."""
        self._rec.close()

    @property
    def closed(self) -> bool:
        return self._rec.closed

    @property
    def path(self) -> str:
        return self._rec.path

    def __len__(self) -> int:
        return self._rec.num_frames()

    def __repr__(self) -> str:
        if self.closed:
            return f"<orvreduce.Recording {self.path!r} (closed)>"
        i = self.info
        return f"<orvreduce.Recording {self.path!r}: {len(self)} frames of {i['width']}x{i['height']}>"

    @property
    def info(self) -> Dict[str, Any]:
        """Sizes, pixel type, base unit, presets, camera, frame count and the units offered."""
        if self._info is None:
            self._info = self._rec.info()
        return dict(self._info)

    @property
    def units(self) -> List[str]:
        """The units this recording can be read in, its base unit first."""
        return list(self.info["units"])

    @property
    def shape(self) -> Tuple[int, int, int]:
        i = self.info
        return (len(self), i["height"], i["width"])

    # Frames.
    def _indices(self, frames: Frames) -> List[int]:
        n = len(self)
        if frames is None:
            return list(range(n))
        if isinstance(frames, slice):
            return list(range(*frames.indices(n)))
        if isinstance(frames, (int, np.integer)):
            frames = [int(frames)]
        out = []
        for f in np.asarray(frames).reshape(-1).tolist():
            if not isinstance(f, int):
                raise ValueError(f"frame indices are whole numbers, not {f!r}")
            if f < -n or f >= n:
                raise IndexError(f"frame {f} is outside a recording of {n} frames")
            out.append(f + n if f < 0 else f)
        return out

    def resolve_unit(self, unit: str) -> str:
        """The library's unit text for a unit name: an exact text such as
        "Temperature (User)", or "counts", "signal", "radiance", "temperature",
        which take the first such unit the recording offers (factory before user)."""
        offered = self.units
        key = unit.strip().lower()
        for text in offered:
            if text.lower() == key:
                return text
        for text in _SHORT_UNITS.get(key, ()):
            if text in offered:
                return text
        raise ValueError(f"{self.path}: cannot be shown in {unit!r}; it offers: {', '.join(offered)}")

    @staticmethod
    def _scale(scale: Union[str, int]) -> int:
        if isinstance(scale, (int, np.integer)) and 0 <= int(scale) <= 3:
            return int(scale)
        if isinstance(scale, str) and scale.strip().lower() in SCALES:
            return SCALES[scale.strip().lower()]
        raise ValueError(f"unknown temperature scale {scale!r}; use C, F, K or R")

    def read(self, frames: Frames = None, unit: str = "temperature", scale: Union[str, int] = "C",
             emissivity: Optional[float] = None, distance: Optional[float] = None,
             status: bool = False, threads: int = 0,
             out: Optional[np.ndarray] = None) -> Union[np.ndarray, Tuple[np.ndarray, np.ndarray]]:
        """Frames in a unit, as float32 of shape (frames, height, width).

        frames: None (all), an index, a slice or a list of indices.
        unit: see resolve_unit; scale: C, F, K or R for temperatures.
        emissivity, distance: replace the recording's own for this read.
        status: also return the uint8 status planes (0 good, 1 outside the
        calibration's limits, 2 and 4 clamped low and high).
        threads: threads for runs of consecutive frames, 0 for every core;
        the values do not depend on it.
        out: a C-contiguous float32 array of the result's shape to fill and
        return instead of a new one (reading block after block into one
        buffer saves allocating and first touching the memory each time)."""
        indices = self._indices(frames)
        if int(threads) < 0:
            raise ValueError(f"threads must be 0 (every core) or more, not {threads}")
        values, planes = self._rec.read(indices, self.resolve_unit(unit), self._scale(scale),
                                        -1.0 if emissivity is None else float(emissivity),
                                        -1.0 if distance is None else float(distance), bool(status), int(threads),
                                        out)
        return (values, planes) if status else values

    def raw(self, index: int) -> np.ndarray:
        """Frame index as the camera's filter decodes it, in its own element type (a copy)."""
        return self._rec.raw(self._indices(index)[0])

    def __iter__(self) -> Iterator[np.ndarray]:
        """Each frame in turn, in the first temperature unit offered (else the base unit), Celsius."""
        unit = "temperature" if any(u.startswith("Temperature") for u in self.units) else self.units[0]
        for i in range(len(self)):
            yield self.read(i, unit=unit)[0]

    def frame_info(self, index: int) -> Dict[str, Any]:
        """The frame's entries by name (texts as the filter gives them), with
        "time" as a timezone-aware datetime, "time_source" and "units"."""
        entries, units, ticks, source = self._rec.frame_info(self._indices(index)[0])
        info: Dict[str, Any] = dict(entries)
        info["time"] = None if ticks is None else _EPOCH + _dt.timedelta(microseconds=ticks // 10)
        info["time_source"] = {1: "PC", 2: "Camera", 3: "IRIG"}.get(source, "Unknown")
        info["units"] = units
        return info

    # Blocks.
    @property
    def blocks(self) -> List[Dict[str, Any]]:
        """Every block of the file: name, type, version, preset, frame, offset,
        size, stored and computed CRC, ok and the reason when not."""
        return self._rec.verify()[1]

    def verify(self) -> bool:
        """True when every block's CRC matches and the frames are whole; else
        raises OSError naming the first problem."""
        ok, _, reason = self._rec.verify()
        if not ok:
            raise OSError(f"{self.path}: {reason}")
        return True

    # Regions.
    def stats(self, rois: RoiList, frames: Frames = None, unit: str = "temperature",
              scale: Union[str, int] = "C", emissivity: Optional[float] = None,
              distance: Optional[float] = None, as_dict: bool = False) -> Any:
        """Figures of every region of rois over frames: one row per frame and
        region with frame, time, region (its index in the list), name, type,
        mean, std, min, min_x, min_y, max, max_x, max_y, valid (pixels),
        center, and profile (a line region's values, else None), the columns
        of the program's stats --roi --csv. The list is sized to the
        frames first; element 0 is the whole frame. Regions that set their own
        emissivity or distance are measured with them, the others with
        emissivity and distance (None: the recording's own). A pandas
        DataFrame when pandas is importable (unless as_dict), else a dict of
        numpy columns."""
        table = self._rec.measure(rois, self._indices(frames), self.resolve_unit(unit), self._scale(scale),
                                  -1.0 if emissivity is None else float(emissivity),
                                  -1.0 if distance is None else float(distance))
        ticks = table.pop("ticks")
        epoch = np.datetime64("1601-01-01T00:00:00", "us")
        time = epoch + (ticks // 10).astype("timedelta64[us]")
        table = {"frame": table.pop("frame"), "time": np.where(ticks < 0, np.datetime64("NaT"), time),
                 "region": table.pop("region"), "name": np.array(table.pop("name"), dtype=object),
                 "type": np.array(table.pop("type"), dtype=object), **table}
        table["profile"] = np.array(table["profile"] + [None], dtype=object)[:-1]
        if not as_dict:
            try:
                import pandas as pd
            except ImportError:
                return table
            return pd.DataFrame(table)
        return table
