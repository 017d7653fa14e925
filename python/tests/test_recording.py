import threading

import numpy as np
import pytest

import orvreduce
from conftest import run, scene, synth


def test_read_gives_the_scene_in_every_scale(recording):
    with orvreduce.open(recording) as rec:
        n, h, w = rec.shape
        assert (n, h, w) == (6, 48, 64) and len(rec) == 6
        celsius, status = rec.read(status=True)
        assert celsius.dtype == np.float32 and celsius.shape == (6, 48, 64)
        assert status.dtype == np.uint8 and not status.any()
        for f in range(n):
            truth, clear = scene(w, h, f, n)
            np.testing.assert_allclose(celsius[f][clear], truth[clear], atol=0.12)
        kelvin = rec.read(slice(1, 3), scale="K")
        fahrenheit = rec.read([1, 2], scale="fahrenheit")
        np.testing.assert_allclose(kelvin, celsius[1:3] + 273.15, atol=2e-3)
        np.testing.assert_allclose(fahrenheit, celsius[1:3] * 1.8 + 32, atol=2e-3)
        np.testing.assert_array_equal(rec.read(-1), celsius[5:6])
        frames = list(rec)
        assert len(frames) == 6
        np.testing.assert_array_equal(frames[3], celsius[3])


def test_units_raw_counts_and_overrides_match_the_program(recording, tmp_path):
    with orvreduce.open(recording) as rec:
        info = rec.info
        assert info["units"] == ["Counts", "Radiance (User)", "Temperature (User)"]
        assert info["base_unit"] == "Counts" and info["pixel_type"]
        assert info["frames"] == 6 and (info["width"], info["height"]) == (64, 48)
        raw = rec.raw(2)
        assert raw.dtype == np.uint16 and raw.shape == (48, 64)
        np.testing.assert_array_equal(rec.read(2, unit="counts")[0], raw.astype(np.float32))
        assert rec.resolve_unit("radiance") == "Radiance (User)"
        mine = rec.read(slice(0, 3), unit="Temperature (User)", scale="K", emissivity=0.8, distance=20)
        # The override lasts for its read only, and a second one starts from the recording's own.
        np.testing.assert_array_equal(rec.read(0, scale="K")[0], rec.read(0, scale="K", emissivity=0.95)[0])
        assert (rec.read(0, emissivity=0.8)[0] > rec.read(0)[0] + 5).all()
    out = tmp_path / "t.npy"
    run("convert", recording, "--frames", "0:3", "--scale", "K", "--emissivity", "0.8", "--distance", "20",
        "-o", str(out))
    np.testing.assert_array_equal(mine, np.load(out))


def test_frame_info_and_blocks(recording):
    with orvreduce.open(recording) as rec:
        first, second = rec.frame_info(0), rec.frame_info(1)
        assert first["FrameNumber"] == "0" and second["FrameNumber"] == "1"
        assert first["time_source"] == "PC"
        assert first["time"].tzinfo is not None and second["time"] >= first["time"]
        blocks = rec.blocks
        assert [b["name"] for b in blocks][0] == "SourceInfo" and blocks[-1]["name"] == "Pixels"
        assert all(b["ok"] for b in blocks) and rec.verify()


def test_failures_raise_with_the_reason(recording, tmp_path):
    with pytest.raises(OSError, match="missing.qrt"):
        orvreduce.open(tmp_path / "missing.qrt")
    text = tmp_path / "notes.qrt"
    text.write_text("not a recording at all\n" * 40)
    with pytest.raises(OSError):
        orvreduce.open(text)
    data = open(recording, "rb").read()
    cut = tmp_path / "cut.qrt"
    cut.write_bytes(data[:300])
    with pytest.raises(OSError):
        orvreduce.open(cut)
    damaged = tmp_path / "damaged.qrt"
    damaged.write_bytes(data[:200] + bytes([data[200] ^ 0xFF]) + data[201:])
    try:
        rec = orvreduce.open(damaged)
    except OSError:
        pass
    else:
        with rec:
            with pytest.raises(OSError):
                rec.verify()
            assert not all(b["ok"] for b in rec.blocks)
    with orvreduce.open(recording) as rec:
        for call, error in [
            (lambda: rec.read(unit="Object Signal"), ValueError),
            (lambda: rec.read(unit="furlongs"), ValueError),
            (lambda: rec.read(scale="Q"), ValueError),
            (lambda: rec.read(6), IndexError),
            (lambda: rec.read([0, -7]), IndexError),
            (lambda: rec.read(emissivity=1.5), ValueError),
            (lambda: rec.frame_info(99), IndexError),
        ]:
            with pytest.raises(error):
                call()
    with pytest.raises(ValueError, match="closed"):
        rec.read(0)


def test_threads_read_in_parallel_with_the_same_result(tmp_path):
    paths = [synth(tmp_path / f"r{i}.qrt", frames=8) for i in range(2)]
    with orvreduce.open(paths[0]) as rec:
        expected = rec.read()
    results = {}

    def work(key, path):
        with orvreduce.open(path) as rec:
            results[key] = rec.read()

    threads = [threading.Thread(target=work, args=(i, paths[i % 2])) for i in range(4)]
    for t in threads:
        t.start()
    for t in threads:
        t.join()
    for key, values in results.items():
        np.testing.assert_array_equal(values, expected)
