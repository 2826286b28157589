"""The class for Ray Data on a real Ray; `scripts/test-ray.sh` makes an environment that has it."""

from collections.abc import Iterator
from pathlib import Path

import pytest

ray = pytest.importorskip("ray", reason="needs Ray: scripts/test-ray.sh installs it and runs this")

SMALL = {"detector_model": "320p_fp32"}


@pytest.fixture(scope="module", autouse=True)
def cluster() -> Iterator[None]:
    """Two cores in all: with whole ones, two actors would leave none for fetching."""
    ray.init(num_cpus=2, include_dashboard=False, object_store_memory=200 << 20)
    ray.data.DataContext.get_current().enable_progress_bars = False
    yield
    ray.shutdown()


def test_rows_are_those_of_one_process(archive: Path):
    from zelvoran_anpr import reading
    from zelvoran_anpr.fleet.ray_reader import PlateReader, map_arguments

    photos = ray.data.read_binary_files(
        str(archive), include_paths=True, file_extensions=["jpg", "jpeg", "PNG"]
    )
    rows = photos.map_batches(
        PlateReader, fn_constructor_kwargs=SMALL, **map_arguments(actors=2)
    ).take_all()
    detector, ocr = reading.zv_anpr_detector_v17("320p_fp32"), reading.zv_anpr_ocr_v17("fp32")
    expected = set()
    for photo in archive.glob("plate-*.jpg"):
        plates = reading.read_plates(detector, ocr, reading.load_image(photo))["results"]
        expected |= {(photo.name, plate["ocr"], plate["ocr_conf"]) for plate in plates}
    found = {(Path(r["path"]).name, r["text"], r["confidence"]) for r in rows if r["text"]}
    assert len(expected) == 12 and found == expected
    errors = {Path(row["path"]).name: row["error"] for row in rows if row["error"]}
    assert errors["empty.jpeg"] == "The file is empty" and set(errors) == {"empty.jpeg", "torn.jpg"}


def test_an_actor_that_leaves_no_core_says_so(tmp_path: Path):
    from zelvoran_anpr.fleet import ray_reader

    @ray.remote
    class Greedy:
        def words(self) -> list[str]:
            said = []
            ray_reader._log.warning = said.append
            ray_reader.PlateReader(**SMALL)
            return said

    modest = Greedy.options(num_cpus=0.5).remote()
    assert ray.get(modest.words.remote()) == []
    ray.kill(modest)
    greedy = Greedy.options(num_cpus=2).remote()
    [word] = ray.get(greedy.words.remote())
    assert "map_arguments(actors)" in word
    ray.kill(greedy)
