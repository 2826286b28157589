"""Exported networks run in the engine's detector and reader; needs torch."""

import numpy as np
import pytest

torch = pytest.importorskip("torch")
pytest.importorskip("onnx")
pytest.importorskip("zelvoran_anpr")

from zelvoran_anpr.reading import model_registry, plate_detector, plate_reader  # noqa: E402

from training.detector import export as detector_export  # noqa: E402
from training.detector.network import Detector  # noqa: E402
from training.reader import export as reader_export  # noqa: E402
from training.reader.network import Reader  # noqa: E402
from training.scene.crop import HEIGHT, WIDTH  # noqa: E402


def test_the_engine_finds_and_reads_with_random_weights(tmp_path, monkeypatch):
    monkeypatch.setattr(model_registry, "_FOLDER", tmp_path)
    monkeypatch.setattr(plate_detector, "_LEAST_SCORE", 0.0)
    monkeypatch.setattr(plate_detector, "_LEAST_HINT", 0.0)
    monkeypatch.setattr(plate_detector, "_LEAST_WITNESS", 0.0)
    monkeypatch.setattr(plate_detector, "_CONFIRMED", 0.0)
    torch.manual_seed(1)
    detector_file = detector_export.export(Detector(0.5).eval(), tmp_path)
    pictures = np.zeros((4, HEIGHT, WIDTH, 3), np.uint8)
    reader_files = reader_export.export(Reader(32).eval(), 1.0, pictures, tmp_path)
    photo = np.random.default_rng(1).integers(0, 255, (180, 320, 3), dtype=np.uint8)
    detector = plate_detector.PlateDetector.named("320p_fp32", "cpu")
    found = detector.detect(photo)
    assert found and all(0 <= plate.confidence <= 1 for plate in found)
    assert [file.name for file in (detector_file, *reader_files)] == [
        model_registry.find_detector("640p_fp32").file, *model_registry.READERS.values()
    ]  # fmt: skip
    for name in model_registry.READERS:
        text = plate_reader.PlateReader.named(name, "cpu").read(photo, found[0], "univ")
        assert len(text.text) == len(text.confidences)
