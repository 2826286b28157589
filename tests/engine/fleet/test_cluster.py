"""A scheduler and workers as processes: what is killed, what is missing, what does not fit."""

import os
from collections.abc import Iterator
from pathlib import Path

import drawn_archive
import fleet_command
import pytest
from dask_processes import Cluster, cluster_in, kill
from fleet_command import LIMIT, plates, read, refused, results_per_photo, rows, run
from processes import wait_until

PHOTOS = 500


@pytest.fixture(scope="module")
def photos(tmp_path_factory: pytest.TempPathFactory) -> Path:
    folder = tmp_path_factory.mktemp("photos")
    drawn_archive.draw(folder, PHOTOS)
    return folder


@pytest.fixture
def two_workers(tmp_path: Path) -> Iterator[Cluster]:
    with cluster_in(tmp_path, 2) as running:
        yield running


def parts(target: Path) -> int:
    return len(list(target.glob("part-*")))


def test_whoever_is_killed_every_photo_has_one_result(
    two_workers: Cluster, photos: Path, tmp_path: Path
):
    cluster = two_workers
    target = tmp_path / "plates"
    first = fleet_command.start(photos, "--out", target, "--scheduler", cluster.address)
    wait_until(lambda: parts(target) >= 1, LIMIT)
    kill(cluster.workers[0])
    cluster.start_worker()
    wait_until(lambda: parts(target) >= 2, LIMIT)
    kill(cluster.scheduler)
    out, err = first.communicate(timeout=LIMIT)
    assert first.returncode == 1 and "Error: The scheduler is gone" in err, err
    assert "Traceback" not in err and "photos are left: run it again to go on" in out
    after_scheduler = len(results_per_photo(rows(target)))

    cluster.start_scheduler()
    cluster.start_worker()
    cluster.start_worker()
    second = fleet_command.start(photos, "--out", target, "--scheduler", cluster.address)
    before = parts(target)
    wait_until(lambda: parts(target) > before, LIMIT)
    kill(second)
    after_driver = len(results_per_photo(rows(target)))
    assert 0 < after_scheduler < after_driver < PHOTOS

    third = read(photos, "--out", target, "--scheduler", cluster.address, "--workers", 2)
    assert third.returncode == 0, third
    assert third.stdout.startswith(f"{PHOTOS - after_driver} photos in ")
    found = rows(target)
    assert results_per_photo(found) == {str(p): 1 for p in photos.iterdir()}
    assert plates(found) == fleet_command.plates_of_one_machine(photos, tmp_path)


def test_a_worker_with_another_version_is_refused(tmp_path: Path, photos: Path):
    other = tmp_path / "other" / "zelvoran_anpr"
    other.mkdir(parents=True)
    (other / "__init__.py").touch()
    (other / "_version.py").write_text('__version__ = "0.9.1"\n')
    environment = {**os.environ, "PYTHONPATH": str(other.parent)}
    target = tmp_path / "plates"
    with cluster_in(tmp_path, 0) as cluster:
        cluster.start_worker(env=environment)
        done = read(photos, "--out", target, "--scheduler", cluster.address, "--workers", 1)
    line = refused(done)
    assert "has zelvoran-anpr 0.9.1 and this is " in line and "same version" in line
    assert not target.exists()


DEADLY = """
import os
from zelvoran_anpr import reading
load_image = reading.load_image
def load(data):
    return load_image(data) if b"deadly" not in data else os._exit(9)
reading.load_image = load
"""


def test_a_photo_that_kills_its_worker_is_a_row(tmp_path: Path, photos: Path):
    """Decoding ends the process, as a system short of memory would."""
    few = tmp_path / "few"
    few.mkdir()
    os.link(photos / "plate-000.jpg", few / "good.jpg")
    (few / "bad.jpg").write_bytes(b"deadly")
    (tmp_path / "sitecustomize.py").write_text(DEADLY)
    environment = {
        **os.environ,
        "PYTHONPATH": str(tmp_path),
        "DASK_DISTRIBUTED__SCHEDULER__ALLOWED_FAILURES": "0",
    }
    target = tmp_path / "plates"
    done = run(few, "--out", target, "--workers", 1, env=environment)
    assert done.returncode == 0 and "1 photos could not be read" in done.stdout, done
    errors = {Path(row["path"]).name: row["error"] for row in rows(target)}
    assert errors.pop("good.jpg") is None
    assert errors.pop("bad.jpg").startswith("Every worker that read the photo died")
    assert not errors
