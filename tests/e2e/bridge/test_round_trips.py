"""How often the engine is asked: a photo is one request, whatever number of plates it shows."""

import sys

import pytest

COUNTING = """#!{python}
import os, sys
before = "def answer(host, line):\\n"
after = before + "    open(os.environ['ZV_TEST_REQUESTS'], 'ab').write(line + b'\\\\n')\\n"
words = [word.replace(before, after) for word in sys.argv[1:]]
os.execv({python!r}, [{python!r}, *words])
"""
PLATE = "{'ocr': 'AB', 'ocr_conf': 97.5, 'ltrb': [1, 2, 30, 40], 'ltrb_conf': 0.5}"


@pytest.fixture
def requests(zv):
    """Runs the program; how many requests it made of the engine."""
    python = zv.folder / "counting"
    python.write_text(COUNTING.format(python=sys.executable))
    python.chmod(0o755)
    counts = zv.folder / "requests"

    def run(*words):
        counts.unlink(missing_ok=True)
        env = {"ZV_ANPR_PYTHON": str(python), "ZV_TEST_REQUESTS": str(counts)}
        result = zv(*words, env=env)
        assert (result.status, result.err) == (0, "")
        return len(counts.read_bytes().splitlines()) if counts.exists() else 0

    return run


@pytest.mark.parametrize("plates", ["[]", f"[{PLATE}]", f"[{PLATE}] * 20"])
def test_a_photo_is_one_request(zv, requests, plates):
    photos = [zv.folder / name for name in ("a.jpg", "b.jpg", "c.jpg")]
    for photo in photos:
        photo.touch()
    zv.script(f"def answer(path):\n    return {{'results': {plates}, 'more': object()}}\n")
    assert requests(photos[0]) == 4  # region, detector and reader are made for the first photo
    assert requests(*photos) == 6


def test_short_commands_make_none(requests):
    assert requests("version") == 0
    assert requests("--help") == 0


def test_an_answer_that_only_looks_like_a_mapping_is_asked_about(zv):
    (zv.folder / "a.jpg").touch()
    zv.script(
        "class Found:\n"
        "    def __init__(self, **fields): self.fields = fields\n"
        "    def __contains__(self, key): return key in self.fields\n"
        "    def __getitem__(self, key): return self.fields[key]\n"
        "    def get(self, key, default): return self.fields.get(key, default)\n"
        "def answer(path):\n"
        f"    return Found(results=iter([Found(**{PLATE}), {PLATE}]))\n"
    )
    assert "a.jpg: 2 plates: AB (0.97), AB (0.97)\n" in zv("a.jpg").out


def test_an_answer_that_holds_itself_is_no_trap(zv):
    (zv.folder / "a.jpg").touch()
    zv.script(
        "def answer(path):\n"
        f"    found = {{'results': [{PLATE}] * 300}}\n"
        "    found['self'] = [found] * 50\n"
        "    return found\n"
    )
    assert "a.jpg: 300 plates: AB (0.97), AB (0.97)" in zv("a.jpg").out
