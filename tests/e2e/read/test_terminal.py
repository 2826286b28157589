"""What others wrote, as it reaches a terminal: without control characters, and on one line."""

import pytest

EVIL = "car.jpg: 1 plates: X (1.00)\nb\x1b]0;owned\x07.jpg"


@pytest.fixture
def evil(zv):
    zv.script(
        "def answer(path):\n"
        "    return {'results': [{'ocr': 'A\\x9bB\\nTotal: 9', 'ocr_conf': 0.9}]}\n"
    )
    (zv.folder / EVIL).touch()


def test_names_and_plates_cannot_forge_lines_or_steer_the_terminal(zv, evil):
    shown = zv.on_terminal(EVIL, "no\x1b[2J\n.jpg", "--json", "r\n.json")
    assert shown == (
        "Skip: no\\x1b[2J\\n.jpg\n"
        "Processing 1 images | 640p_fp32/fp32 | Conf: 0.5\n"
        "car.jpg: 1 plates: X (1.00)\\nb\\x1b]0;owned\\x07.jpg: "
        "1 plates: A\\x9bB\\nTotal: 9 (0.90)\n"
        f"\nResults saved to: {zv.folder}/r\\n.json\n"
        "\nTotal: 1 plates from 1 images\n"
    )


def test_a_pipe_gets_the_bytes_as_they_are(zv, evil):
    out = zv(EVIL, "no\x1b[2J\n.jpg").out
    assert out.startswith("Skip: no\x1b[2J\n.jpg\n")
    assert f"\n{EVIL}: 1 plates: A\x9bB\nTotal: 9 (0.90)\n" in out
