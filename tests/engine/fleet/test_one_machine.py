"""The command without a scheduler: what it writes, how it goes on, what it refuses."""

import hashlib
import os
import shutil
import signal
from pathlib import Path

import fleet_command
import pyarrow as pa
import pyarrow.parquet as pq
import pytest
from fleet_command import LIMIT, json_rows, plates, read, refused, results_per_photo, rows, run
from processes import wait_until


@pytest.fixture(scope="module")
def target(archive: Path, tmp_path_factory: pytest.TempPathFactory) -> Path:
    folder = tmp_path_factory.mktemp("results") / "plates"
    done = run(archive, "--out", folder)
    assert done.returncode == 0, done
    assert done.stdout.startswith("15 photos in ") and " 12 plates, 1 photos " in done.stdout
    assert "Dask's dashboard: " in done.stderr
    return folder


def test_rows_are_those_of_one_machine(target: Path, archive: Path, tmp_path: Path):
    expected = fleet_command.plates_of_one_machine(archive, tmp_path)
    assert len(expected) == 12
    assert plates(rows(target)) == expected


def test_every_photo_has_one_result(target: Path, archive: Path):
    photos = [p for p in archive.iterdir() if p.suffix != ".txt"]
    assert results_per_photo(rows(target)) == {str(photo): 1 for photo in photos}


def test_a_row_tells_of_the_photo(target: Path, archive: Path):
    photo = archive / "plate-003.jpg"
    [row] = [row for row in rows(target) if row["path"] == str(photo)]
    assert row["size"] == photo.stat().st_size
    assert row["digest"] == hashlib.sha256(photo.read_bytes()).hexdigest()
    assert (row["width"], row["height"], row["error"]) == (320, 240, None)
    assert row["seconds"] > 0
    assert row["versions"]["detector_model"] == "320p_fp32"


def test_what_cannot_be_read_is_a_row_with_its_error(target: Path):
    errors = {Path(row["path"]).name: row["error"] for row in rows(target) if row["error"]}
    assert errors == {
        "torn.jpg": "The photo is cut off, 67 % of it was read",
        "empty.jpeg": "The file is empty",
    }


def test_a_second_run_reads_nothing_again(target: Path, archive: Path):
    before = {part: part.stat().st_mtime_ns for part in target.iterdir()}
    done = read(archive, "--out", target)
    assert (done.returncode, done.stdout) == (
        0,
        f"All 15 photos have been read before: {target}\n",
    )
    assert {part: part.stat().st_mtime_ns for part in target.iterdir()} == before


def lose(target: Path, photo: str) -> None:
    """Let a row say that the storage did not give the photo."""
    for part in target.iterdir():
        table = pq.read_table(part)
        rows = table.to_pylist()
        for row in rows:
            if row["path"].endswith(photo):
                row |= {"text": None, "error": "storage: it was down"}
        pq.write_table(pa.Table.from_pylist(rows, table.schema), part)


def test_new_photos_and_those_that_could_not_be_fetched_are_added(
    target: Path, archive: Path, tmp_path: Path, cluster: list[str]
):
    grown = tmp_path / "grown"
    shutil.copytree(target, grown)
    lose(grown, "plate-005.jpg")
    new = tmp_path / "new.jpg"
    shutil.copy(archive / "plate-000.jpg", new)
    photo_list = tmp_path / "list"
    photo_list.write_text("\n".join([*map(str, sorted(archive.glob("*.jpg"))), "", str(new)] * 2))
    done = read(photo_list, "--out", grown, *cluster)
    assert done.stdout.startswith("2 photos in ")
    assert "12 of 14 photos have been read before" in done.stderr
    found = rows(grown)
    assert set(results_per_photo(found).values()) == {1}
    assert plates(found) == sorted(
        plates(rows(target))
        + plates([{**r, "path": str(new)} for r in rows(target) if "plate-000" in r["path"]])
    )


def test_json_lines_have_the_same_rows(target: Path, archive: Path, tmp_path: Path, cluster):
    lines = tmp_path / "lines"
    assert read(archive, "--out", f"file://{lines}", "--format", "jsonl", *cluster).returncode == 0
    both = [
        sorted(({**row, "seconds": 0} for row in some), key=str)
        for some in (json_rows(lines), rows(target))
    ]
    assert both[0] == both[1]
    again = read(archive, "--out", lines, "--format", "jsonl")
    assert again.stdout.startswith("All 15 photos have been read before")
    assert "use --format jsonl" in refused(read(archive, "--out", lines))


@pytest.mark.parametrize(
    ("option", "value", "key"),
    [("--region", "kr", "region kr"), ("--ocr-model", "int8", "ocr_model int8")],
)
def test_a_target_of_another_configuration_is_refused(target, archive, option, value, key):
    before = rows(target)
    wanted, given = key.split()
    line = refused(read(archive, "--out", target, option, value))
    assert f"was made with {wanted} " in line and f"not {given}: use the same" in line
    assert rows(target) == before


def test_bad_input_is_one_line(archive: Path, tmp_path: Path, cluster: list[str]):
    (tmp_path / "none").mkdir()
    (tmp_path / "other").mkdir()
    (tmp_path / "other" / "report.pdf").touch()
    new = tmp_path / "new"
    cases = {
        "No photos in": (tmp_path / "none", "--out", new),
        "Cannot read the source": (tmp_path / "missing", "--out", new),
        "holds report.pdf, which is no part": (archive, "--out", tmp_path / "other"),
        'Unknown region "nowhere"': (archive, "--out", new, "--region", "nowhere"),
        'Unknown OCR model "big"': (archive, "--out", new, "--ocr-model", "big", *cluster),
        "Cannot use the address nope://x": ("nope://x/y", "--out", new),
        "Cannot write to": (archive, "--out", "/proc/plates", *cluster),
        "No scheduler answers at tcp://127.0.0.1:9": (
            (archive, "--out", new, "--scheduler", "tcp://127.0.0.1:9")
        ),
    }
    for text, arguments in cases.items():
        assert text in refused(read(*arguments))
    assert not new.exists()


def test_a_damaged_part_is_named(archive: Path, tmp_path: Path):
    (tmp_path / "part-000001.parquet").write_bytes(b"half a part")
    line = refused(read(archive, "--out", tmp_path))
    assert "part-000001.parquet" in line and "remove it to read its photos again" in line


def test_an_interrupted_run_keeps_what_it_read(archive: Path, tmp_path: Path):
    many = tmp_path / "many"
    many.mkdir()
    for number in range(400):
        os.link(archive / f"plate-{number % 12:03d}.jpg", many / f"{number}.jpg")
    target = tmp_path / "plates"
    run = fleet_command.start(many, "--out", target, "--workers", 1, start_new_session=True)
    try:
        wait_until(lambda: target.exists() and any(target.glob("part-*")), LIMIT)
        os.killpg(run.pid, signal.SIGINT)  # as a terminal does
        out, err = run.communicate(timeout=LIMIT)
    finally:
        run.kill()
    assert run.returncode == 1 and "photos are left: run it again" in out
    assert "Traceback" not in err
    kept = results_per_photo(rows(target))
    assert 0 < len(kept) < 400 and set(kept.values()) == {1}
