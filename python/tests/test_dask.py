import os

import numpy as np
import pytest

import orvreduce
from conftest import synth

dask = pytest.importorskip("dask")
distributed = pytest.importorskip("distributed")


def test_dask_stack_on_a_two_process_cluster_matches_one_process(tmp_path):
    import orvreduce.dask

    paths = [synth(tmp_path / f"rec{i}.qrt", width=40, height=32, frames=5 + i) for i in range(3)]
    expected = np.concatenate([orvreduce.open(p).read() for p in paths])
    stack = orvreduce.dask.read(paths, frames_per_chunk=4)
    assert stack.shape == expected.shape and stack.dtype == np.float32
    assert stack.numblocks[0] == 2 + 2 + 2
    # The workers are new processes: they import the package from the same path.
    os.environ["PYTHONPATH"] = os.pathsep.join(p for p in [os.path.dirname(os.path.dirname(orvreduce.__file__)),
                                                            os.environ.get("PYTHONPATH", "")] if p)
    with distributed.LocalCluster(n_workers=2, threads_per_worker=1, processes=True,
                                  dashboard_address=None) as cluster, distributed.Client(cluster):
        mean = stack.mean(axis=0).compute()
        frames = stack[3:9].compute()
    np.testing.assert_allclose(mean, expected.mean(axis=0), rtol=1e-6)
    np.testing.assert_array_equal(frames, expected[3:9])
    with pytest.raises(ValueError):
        orvreduce.dask.read([paths[0], synth(tmp_path / "other.qrt", width=48, height=32)])
