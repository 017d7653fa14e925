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
        # Frame by frame, runs reduced on one and on two threads: one result.
        expected = np.stack([rec.read(i)[0] for i in range(8)])
        for threads in (1, 2):
            np.testing.assert_array_equal(rec.read(threads=threads), expected)
        order = [5, 6, 7, 0, 2, 3]
        values, status = rec.read(order, status=True, threads=2)
        np.testing.assert_array_equal(values, expected[order])
        np.testing.assert_array_equal(status, rec.read(order, status=True, threads=1)[1])
        # Into the caller's array; a wrong one is refused before anything is read.
        out = np.full((3, *expected.shape[1:]), np.nan, dtype=np.float32)
        assert rec.read(slice(2, 5), out=out) is out
        np.testing.assert_array_equal(out, expected[2:5])
        for bad in (out[:2], out.astype(np.float64), np.asfortranarray(out), out[:, ::2]):
            with pytest.raises(ValueError, match="out"):
                rec.read(slice(2, 5), out=bad)
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


def test_stats_of_regions_match_the_program_and_the_scene(recording, tmp_path):
    import csv

    rois = orvreduce.RoiList()
    rois.set_image_size(64, 48)
    rois.add(orvreduce.Roi.rect("left band", 0, 0, 6, 48))
    hot = orvreduce.Roi.ellipse("disc, e=0.8", 16, 24, 3, 3)
    hot.emissivity = 0.8
    rois.add(hot)
    rois.add(orvreduce.Roi.line("profile", 2, 24, 60, 24))
    path = str(tmp_path / "regions.xml")
    rois.save(path)
    again = orvreduce.RoiList.load(path)
    assert again.names == rois.names and again[2].emissivity == pytest.approx(0.8)
    with orvreduce.open(recording) as rec:
        table = rec.stats(again, frames=slice(0, 3), as_dict=True)
        frame0 = rec.read(0)[0]
    assert list(table["name"][:4]) == ["Image", "left band", "disc, e=0.8", "profile"]
    assert len(table["frame"]) == 12 and table["time"].dtype.kind == "M"
    # The whole frame's figures are the frame's own; the band's mean is the gradient's.
    assert table["mean"][0] == pytest.approx(frame0.mean(dtype=np.float64), rel=1e-6)
    assert table["max"][0] == pytest.approx(frame0.max()) and table["valid"][0] == 64 * 48
    assert table["mean"][1] == pytest.approx(20 + 15 * 2.5 / 63, abs=0.05)
    assert table["mean"][2] > 125 and table["profile"][3] is not None and table["profile"][1] is None
    out = run("stats", recording, "--roi", path, "--frames", "0:3", "--csv").stdout
    rows = list(csv.DictReader(out.splitlines()))
    assert len(rows) == 12
    for i, row in enumerate(rows):
        assert int(row["frame"]) == table["frame"][i] and row["name"] == table["name"][i]
        for key in ("mean", "std", "min", "max", "center"):
            assert float(row[key]) == pytest.approx(table[key][i], rel=1e-5, abs=1e-4), (i, key)
        for key in ("min_x", "min_y", "max_x", "max_y", "valid"):
            assert int(row[key]) == table[key][i], (i, key)
    with pytest.raises(OSError, match="regions.bin"):
        (tmp_path / "regions.bin").write_bytes(b"SROI\xff\xff\xff\xff")
        orvreduce.RoiList.load(str(tmp_path / "regions.bin"))
