"""Model names, backends and regions of the public classes: what works, and how others fail."""

import numpy as np
import onnxruntime
import pytest
from zelvoran_anpr import zv_anpr_detector_v17, zv_anpr_ocr_v17
from zelvoran_anpr.reading import cuda_start
from zelvoran_anpr.reading.cpu_cores import physical_cores
from zelvoran_anpr.reading.runtime_session import PROVIDERS
from zelvoran_anpr.utils import cuda_runtime_problem


def missing_backends():
    offered = onnxruntime.get_available_providers()
    return [name for name, provider in PROVIDERS.items() if provider not in offered]


def test_every_model_loads():
    for name in ("320p_fp32", "640p_fp32"):
        assert zv_anpr_detector_v17(name).detect.__self__
    for name in ("fp32", "int8"):
        assert zv_anpr_ocr_v17(name, "univ").read.__self__


def test_an_unknown_model_name_lists_the_known_ones():
    with pytest.raises(ValueError, match='^Unknown detector model "foo": use 320p_fp32 or'):
        zv_anpr_detector_v17("foo")
    with pytest.raises(ValueError, match='^Unknown OCR model "foo": use fp32 or int8$'):
        zv_anpr_ocr_v17("foo", "univ")


def test_a_lost_model_file_says_how_it_comes_back(monkeypatch, tmp_path):
    monkeypatch.setattr("zelvoran_anpr.reading.model_registry._FOLDER", tmp_path)
    with pytest.raises(ValueError, match="detector_fp32.onnx is missing: reinstall it with"):
        zv_anpr_detector_v17("320p_fp32")
    with pytest.raises(ValueError, match="reader_int8.onnx is missing: reinstall it with"):
        zv_anpr_ocr_v17("int8", "univ")


def test_an_unknown_backend_lists_the_known_ones():
    with pytest.raises(ValueError, match='Unknown backend "tpu": use cpu, cuda or directml'):
        zv_anpr_detector_v17("640p_fp32", backend="tpu")


@pytest.mark.parametrize("backend", missing_backends())
def test_a_backend_that_the_runtime_lacks_names_its_set_up(backend):
    for make in (
        lambda: zv_anpr_detector_v17("640p_fp32", backend=backend),
        lambda: zv_anpr_ocr_v17("fp32", "univ", backend=backend),
    ):
        with pytest.raises(ValueError, match=f"zv-anpr gpu-setup {backend}") as caught:
            make()
        assert "\n" not in str(caught.value)


def test_an_unknown_region_is_refused_by_the_reader():
    with pytest.raises(ValueError, match='Unknown region "atlantis"'):
        zv_anpr_ocr_v17("fp32", "atlantis")


def test_the_missing_cuda_provider_is_named():
    if "CUDAExecutionProvider" in onnxruntime.get_available_providers():
        pytest.skip("this ONNX Runtime offers CUDA")
    assert "offers no CUDAExecutionProvider" in cuda_runtime_problem()


def test_the_cuda_probe_is_a_working_model():
    session = onnxruntime.InferenceSession(cuda_start._PROBE, providers=["CPUExecutionProvider"])
    assert session.run(None, {"x": np.array([3], np.float32)})[0] == [6]


def test_a_failing_check_becomes_text(monkeypatch):
    def fail():
        raise OSError("two\nlines")

    monkeypatch.setattr("zelvoran_anpr.reading.runtime_session.cuda_start_problem", fail)
    assert cuda_runtime_problem() == "OSError: two lines"


def test_threads_are_capped_at_the_physical_cores():
    from zelvoran_anpr.reading.runtime_session import _options

    assert _options(PROVIDERS["cpu"]).intra_op_num_threads == physical_cores() >= 1
