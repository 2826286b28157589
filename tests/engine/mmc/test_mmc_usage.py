"""The daily counter: by calendar day, across restarts, threads and processes."""

import datetime
import json
import threading

import pytest
from zelvoran_anpr.mmc import MmcError
from zelvoran_anpr.mmc.serve.usage import FILE_NAME, DailyCounter


def test_a_new_day_begins_at_zero(tmp_path):
    day = [datetime.date(2026, 2, 28)]
    counter = DailyCounter("cloud", tmp_path, 1, lambda: day[0])
    counter.take()
    with pytest.raises(MmcError, match="today's 1 MMC calls are used up"):
        counter.take()
    day[0] = datetime.date(2026, 3, 1)
    assert counter.calls() == 0
    counter.take()
    assert counter.calls() == 1


def test_backends_are_counted_apart(tmp_path):
    cloud, local = DailyCounter("cloud", tmp_path, 9), DailyCounter("local", tmp_path)
    cloud.take()
    local.take()
    local.take()
    assert (cloud.calls(), local.calls()) == (1, 2)
    assert DailyCounter("cloud", tmp_path, 9).calls() == 1


def test_without_a_folder_it_counts_in_memory():
    counter = DailyCounter("local", None)
    counter.take()
    counter.take()
    counter.give_back()
    assert counter.calls() == 1


@pytest.mark.parametrize("text", ["", "{", "[]", '{"date": 3}', '{"date": "D", "calls": [1]}'])
def test_a_damaged_file_counts_as_none(tmp_path, text):
    today = datetime.date.today().isoformat()
    (tmp_path / FILE_NAME).write_text(text.replace("D", today))
    counter = DailyCounter("cloud", tmp_path, 5)
    assert counter.calls() == 0
    counter.take()
    assert counter.calls() == 1


def test_threads_never_exceed_the_limit(tmp_path):
    counter, refused = DailyCounter("cloud", tmp_path, 30), []

    def take_some() -> None:
        for _ in range(10):
            try:
                counter.take()
            except MmcError:
                refused.append(1)

    threads = [threading.Thread(target=take_some) for _ in range(5)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert (counter.calls(), len(refused)) == (30, 20)


def test_processes_share_the_count(tmp_path, run):
    code = (
        "from pathlib import Path\nfrom zelvoran_anpr.mmc.serve.usage import DailyCounter\n"
        f"counter = DailyCounter('cloud', Path({str(tmp_path)!r}), 1000)\n"
        "for _ in range(100): counter.take()"
    )
    children = [run(code) for _ in range(3)]
    assert [child.communicate()[1] for child in children] == ["", "", ""]
    assert DailyCounter("cloud", tmp_path).calls() == 300
    assert json.loads((tmp_path / FILE_NAME).read_text())["calls"] == {"cloud": 300}
    found = {p.name for p in tmp_path.iterdir() if "usage" in p.name}
    assert found == {FILE_NAME, f".{FILE_NAME}.lock"}


def test_a_folder_that_cannot_be_written_stops_no_call_but_the_limit_holds(tmp_path):
    (tmp_path / "file").write_text("in the way")
    counter = DailyCounter("cloud", tmp_path / "file" / "mmc", 2)
    counter.take()
    counter.take()
    with pytest.raises(MmcError, match="used up"):
        counter.take()
    assert counter.calls() == 2
