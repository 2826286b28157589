"""The networks: shapes, decoding, assignment, and files that answer as the networks do."""

import numpy as np
import pytest

torch = pytest.importorskip("torch")
pytest.importorskip("onnxruntime")
pytest.importorskip("onnx")

from zelvoran_anpr.reading.runtime_session import open_session  # noqa: E402

from training import alphabet  # noqa: E402
from training.detector import export as detector_export  # noqa: E402
from training.detector.loss import assign, loss, overlap  # noqa: E402
from training.detector.network import OUTPUTS, Detector  # noqa: E402
from training.detector.points import boxes, grid  # noqa: E402
from training.reader import export as reader_export  # noqa: E402
from training.reader.network import CELLS, Reader  # noqa: E402
from training.reader.shift import varied  # noqa: E402
from training.reader.train import _exact  # noqa: E402
from training.reader.train import loss as reader_loss  # noqa: E402
from training.scene.crop import HEIGHT, WIDTH  # noqa: E402


def _pictures(count: int, height: int, width: int) -> torch.Tensor:
    torch.manual_seed(1)
    return torch.randint(0, 255, (count, height, width, 3), dtype=torch.uint8)


def test_the_reader_gives_every_cell_every_class():
    characters, region = Reader(32)(_pictures(2, HEIGHT, WIDTH))
    assert characters.shape == (2, CELLS, alphabet.CLASSES)
    assert region.shape == (2, len(alphabet.GROUPS))


def test_variation_keeps_size_and_range_and_changes_little():
    pictures = _pictures(8, HEIGHT, WIDTH) // 2 + 60
    changed = varied(pictures)
    assert changed.shape == pictures.shape
    assert changed.min() >= 0 and changed.max() <= 255
    assert not torch.equal(changed, varied(pictures))


def test_points_cover_the_picture_and_boxes_surround_them():
    centres, strides = grid(64, 96)
    assert len(centres) == 8 * 12 + 4 * 6 + 2 * 3 == len(strides)
    assert centres[0].tolist() == [4, 4] and centres[-1].tolist() == [80, 48]
    found = boxes(torch.randn(1, len(centres), OUTPUTS), centres, strides)
    assert (found[..., :2] < centres).all() and (found[..., 2:] > centres).all()


def test_overlap_of_equal_and_of_distant_boxes():
    one, other = torch.tensor([0.0, 0, 10, 10]), torch.tensor([20.0, 0, 30, 10])
    assert float(overlap(one, one)[0]) == pytest.approx(1)
    assert float(overlap(one, other)[0]) == 0
    assert float(overlap(one, other)[1]) == pytest.approx(-1 / 3, abs=1e-3)


@pytest.mark.parametrize("box", [(100.0, 60, 104, 62), (20.0, 20, 110, 50), (0.0, 0, 128, 128)])
def test_every_plate_has_points_and_padding_has_none(box):
    centres, strides = grid(128, 128)
    raw = torch.zeros(1, len(centres), OUTPUTS)
    wanted = torch.zeros(1, 4, 4)
    wanted[0, 0] = torch.tensor(box)
    plate, aim = assign(raw[..., 0], boxes(raw, centres, strides), centres, strides, wanted)
    assert set(plate.unique().tolist()) == {-1, 0}
    assert ((aim > 0) == (plate >= 0)).all()
    middle = torch.tensor([(box[0] + box[2]) / 2, (box[1] + box[3]) / 2])
    away = (centres[plate[0] >= 0] - middle).abs().amax(1)
    half = torch.tensor([(box[2] - box[0]) / 2, (box[3] - box[1]) / 2]).amax()
    assert (away <= torch.maximum(strides[plate[0] >= 0], half)).all()


def test_the_detector_learns_one_picture():
    torch.manual_seed(2)
    network = Detector(0.5)
    pictures = _pictures(1, 64, 64)
    wanted, at = torch.zeros(1, 2, 4), torch.zeros(1, 2, 8)
    wanted[0, 0] = torch.tensor([10.0, 20, 50, 40])
    at[0, 0] = torch.tensor([10.0, 20, 50, 22, 50, 40, 10, 38])
    optimiser = torch.optim.AdamW(network.parameters(), lr=3e-3)
    first = None
    for _ in range(25):
        terms = loss(network, (pictures, wanted, at))
        first = first or float(terms["loss"].detach())
        optimiser.zero_grad()
        terms["loss"].backward()
        optimiser.step()
    assert float(terms["loss"].detach()) < first / 2


def test_an_exported_detector_takes_photos_of_any_shape(tmp_path):
    path = detector_export.export(Detector(0.5).eval(), tmp_path)
    assert path.stat().st_size < 3.5e6
    session = open_session(str(path), "cpu")
    for shape in ((1, 96, 160, 3), (3, 160, 128, 3)):
        scores, found, at = session.run(None, {"picture": np.zeros(shape, np.uint8)})
        points = sum(shape[1] // stride * (shape[2] // stride) for stride in (8, 16, 32))
        assert scores.shape == (shape[0], points)
        assert (found.shape, at.shape) == ((*scores.shape, 4), (*scores.shape, 8))


def test_exported_readers_answer_alike_and_int8_is_smaller(tmp_path):
    pictures = _pictures(8, HEIGHT, WIDTH).numpy()
    network = Reader(128).eval()
    plain, small = reader_export.export(network, 1.0, pictures, tmp_path)
    assert plain.stat().st_size < 5e6 and small.stat().st_size < 0.5 * plain.stat().st_size
    with torch.inference_mode():
        wanted = network(torch.from_numpy(pictures))[0].softmax(2).numpy()
    for path, within in ((plain, 1e-4), (small, 0.05)):
        found = open_session(str(path), "cpu").run(None, {"picture": pictures})[0]
        assert np.abs(found - wanted).max() < within


def test_the_share_of_exact_texts_collapses_runs_and_leaves_gaps_out():
    line = torch.zeros(3, CELLS, dtype=torch.long)
    line[0, 3:6], line[0, 7], line[0, 8] = 5, 5, 6
    line[1, :2], line[1, 2] = 5, 6
    line[2] = torch.arange(CELLS) % 2
    wanted = torch.tensor([[5, 5, 6, 0], [5, 5, 6, 0], [1, 1, 1, 1]])
    assert float(_exact(line, wanted)) == pytest.approx(1 / 3)


def test_the_reader_learns_one_plate():
    torch.manual_seed(3)
    network, (picture,) = Reader(32), _pictures(1, HEIGHT, WIDTH)
    batch = (picture.expand(4, -1, -1, -1), torch.tensor([[3, 3, 9, 0]] * 4), torch.zeros(4).long())
    optimiser = torch.optim.AdamW(network.parameters(), lr=3e-3)
    first = float(reader_loss(network, batch)["read"].detach())
    for _ in range(30):
        terms = reader_loss(network, batch)
        optimiser.zero_grad()
        terms["loss"].backward()
        optimiser.step()
    assert float(terms["read"].detach()) < first / 3
