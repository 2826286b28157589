"""Photos and results in a bucket; the storage fails, cuts off and refuses."""

from collections import Counter
from collections.abc import Iterator
from pathlib import Path

import moody_s3
import pyarrow.parquet as pq
import pytest
from fleet_command import plates, read, refused, results_per_photo
from moody_s3 import Storage

ODD = "a folder/50 % & a+b?.jpg"


@pytest.fixture(scope="module")
def running() -> Iterator[Storage]:
    with moody_s3.storage() as storage:
        yield storage


@pytest.fixture
def s3(running: Storage, archive: Path) -> Iterator[Storage]:
    """Yield a storage whose bucket `photos` has 15 photos below `eu`."""
    running.fs.create_dir("photos")
    running.fs.create_dir("results")
    for photo in archive.iterdir():
        upload(running, photo, f"photos/eu/{photo.name}")
    upload(running, archive / "plate-000.jpg", f"photos/eu/{ODD}")
    yield running
    running.server.rule = lambda _method, _path: None
    running.fs.delete_dir("photos")
    running.fs.delete_dir("results")


def upload(s3: Storage, photo: Path, key: str) -> None:
    with s3.fs.open_output_stream(key) as stream:
        stream.write(photo.read_bytes())


def rows(s3: Storage, folder: str) -> list[dict]:
    return pq.read_table(folder, filesystem=s3.fs).to_pylist()


def test_from_a_bucket_into_a_bucket(
    s3: Storage, archive: Path, tmp_path: Path, cluster: list[str]
):
    source, target = s3.address("photos/eu"), s3.address("results/eu")
    done = read(source, "--out", target, *cluster)
    assert done.returncode == 0, done
    assert done.stdout.endswith("could not be read; written to s3://results/eu\n")
    found = rows(s3, "results/eu")
    names = [f"s3://photos/eu/{p.name}" for p in archive.iterdir() if p.suffix != ".txt"]
    assert results_per_photo(found) == dict.fromkeys([*names, f"s3://photos/eu/{ODD}"], 1)
    assert read(archive, "--out", tmp_path / "local", *cluster).returncode == 0
    here = pq.read_table(tmp_path / "local").to_pylist()
    moved = [{**r, "path": f"s3://photos/eu/{Path(r['path']).name}"} for r in here]
    assert plates([r for r in found if not r["path"].endswith(ODD)]) == plates(moved)
    assert read(source, "--out", target, *cluster).stdout.startswith(
        "All 16 photos have been read before"
    )
    assert "test" not in str(found), "credentials of the address are no part of results"


def test_a_list_in_a_bucket_names_photos_anywhere(
    s3: Storage, archive: Path, tmp_path: Path, cluster: list[str]
):
    names = [f"s3://photos/eu/{ODD}", str(archive / "plate-001.jpg"), "s3://photos/eu/gone.jpg"]
    with s3.fs.open_output_stream("photos/list.txt") as stream:
        stream.write("\n".join(names).encode())
    done = read(s3.address("photos/list.txt"), "--out", tmp_path, *cluster, "--format", "parquet")
    assert done.returncode == 0, done
    found = {row["path"]: row["error"] for row in pq.read_table(tmp_path).to_pylist()}
    assert found == dict(zip(names, [None, None, "No such file"], strict=True))


def test_errors_that_pass_are_waited_for(s3: Storage, tmp_path: Path, cluster: list[str]):
    seen: Counter = Counter()

    def fail_at_first(method: str, path: str) -> str | None:
        seen[method, path] += 1
        first = seen[method, path] == 1 and method == "GET" and path.endswith(".jpg")
        return ["500", "cut"][len(path) % 2] if first else None

    s3.server.rule = fail_at_first
    done = read(s3.address("photos/eu"), "--out", tmp_path, *cluster)
    assert done.returncode == 0 and "1 photos could not be read" in done.stdout, done
    assert len(plates(pq.read_table(tmp_path).to_pylist())) == 13


def test_a_photo_that_cannot_be_fetched_is_tried_by_the_next_run(
    s3: Storage, tmp_path: Path, cluster: list[str]
):
    s3.server.rule = lambda _method, path: "denied" if "plate-00" in path else None
    done = read(s3.address("photos/eu"), "--out", tmp_path, *cluster)
    assert done.returncode == 0, done
    assert "10 photos could not be fetched: run it again" in done.stdout
    errors = [r["error"] for r in pq.read_table(tmp_path).to_pylist() if r["error"]]
    assert sum(e.startswith("storage: ") and "ACCESS_DENIED" in e for e in errors) == 10
    s3.server.rule = lambda _method, _path: None
    again = read(s3.address("photos/eu"), "--out", tmp_path, *cluster)
    assert again.stdout.startswith("10 photos in "), again
    found = pq.read_table(tmp_path).to_pylist()
    assert len(results_per_photo(found)) == 16 and set(results_per_photo(found).values()) == {1}
    assert len(plates(found)) == 13


def test_what_storage_refuses_is_one_line(
    s3: Storage, archive: Path, tmp_path: Path, cluster: list[str]
):
    def denied(part: str, *methods: str):
        return lambda method, path: "denied" if method in methods and part in path else None

    nothing = lambda _method, _path: None  # noqa: E731
    target = ("--out", tmp_path / "new")
    cases = [
        (nothing, "Nothing is at s3://nobucket/eu", (s3.address("nobucket/eu"), *target)),
        (nothing, "There is no bucket nobucket", (archive, "--out", s3.address("nobucket/out"))),
        (denied("photos", "GET", "HEAD"), "Cannot list s3://photos/eu",
         (s3.address("photos/eu"), *target)),
        (denied(".", "GET", "HEAD"), "No photo can be fetched", (s3.address("photos/eu"), *target)),
        (denied("results", "PUT", "POST"), "Cannot write to s3://results/new",
         (archive, "--out", s3.address("results/new"))),
    ]  # fmt: skip
    for rule, text, arguments in cases:
        s3.server.rule = rule
        assert text in refused(read(*arguments, *cluster))
    assert not (tmp_path / "new").exists()
