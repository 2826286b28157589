"""What the driver keeps: names, photos that are left, parts, and how far it is."""

import os
from pathlib import Path

import pytest
from fleet_command import rows
from zelvoran_anpr.fleet import addresses
from zelvoran_anpr.fleet.errors import FleetError
from zelvoran_anpr.fleet.job import Job
from zelvoran_anpr.fleet.ledger import Ledger
from zelvoran_anpr.fleet.progress import progress_text, span
from zelvoran_anpr.fleet.storage import folder_at
from zelvoran_anpr.fleet.target import Target
from zelvoran_anpr.fleet.worker import row_of_error

JOB = Job("1.0.0", "640p_fp32", "fp32", "univ", "cpu", 0.5)


@pytest.mark.parametrize(
    ("address", "name"),
    [
        ("s3://key:secret@bucket/a%20b.jpg?region=eu-west-1", "s3://bucket/a b.jpg"),
        ("abfs://container@account/a.jpg", "abfs://container@account/a.jpg"),
        ("/photos/ü.jpg", "/photos/ü.jpg"),
        (os.fsdecode(b"/photos/\xff.jpg"), "/photos/\\xff.jpg"),
    ],
)
def test_names_show_no_credentials_and_any_bytes(address: str, name: str):
    assert addresses.name_of(address) == name


def test_a_folder_is_local_with_or_without_its_scheme(tmp_path: Path):
    (tmp_path / "link").symlink_to(tmp_path / "a b")
    assert addresses.local_path(f"file://{tmp_path}/a%20b") == str(tmp_path / "a b")
    assert addresses.local_path(str(tmp_path / "link")) == str(tmp_path / "a b")
    assert not addresses.is_remote("C:/photos")


def test_the_ledger_knows_a_photo_once_and_loses_none():
    odd = os.fsdecode(b"/\xff.jpg")
    ledger = Ledger()
    ledger.add(["/b.jpg", odd, "/a.jpg", "/b.jpg"])
    assert len(ledger) == 3
    ledger.strike(["/a.jpg", "/unknown.jpg"])
    assert set(ledger.photos()) == {"/b.jpg", odd}


def test_parts_are_numbered_on_and_a_second_writer_stops(tmp_path: Path):
    def target() -> Target:
        return Target(folder_at(str(tmp_path)), "parquet", JOB)

    row = row_of_error(JOB, "/a.jpg", "it is broken")
    first, second = target(), target()
    first.write([row])
    with pytest.raises(FleetError, match="Another run writes to .* run it again when"):
        second.write([row])
    third = target()
    assert list(third.done()) == [["/a.jpg"]]
    third.write([row_of_error(JOB, "/b.jpg", "too")])
    assert [p.name for p in sorted(tmp_path.iterdir())] == [
        "part-000001.parquet",
        "part-000002.parquet",
    ]
    assert [r["path"] for r in rows(tmp_path)] == ["/a.jpg", "/b.jpg"]


def test_progress_reads_as_people_say_it():
    assert progress_text(0, 2000, 5, 0) == "0 of 2,000 photos, 0.0/s, no photo read yet, 0 workers"
    assert progress_text(500, 2000, 50, 1) == "500 of 2,000 photos, 10.0/s, 2:30 left, 1 worker"
    assert span(3725) == "1:02:05"
