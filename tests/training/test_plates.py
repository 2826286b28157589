"""Drawn plates: their texts can be learnt, their ink stays in its place, a seed repeats them."""

import unicodedata
from random import Random

import pytest

from training import alphabet
from training.plates.catalogue import ALL, SHARES, choose
from training.plates.design import Design
from training.plates.face import draw_face
from training.plates.lettering import set_rows
from training.plates.text import write


@pytest.mark.parametrize("seed", range(5))
def test_every_design_writes_texts_of_the_alphabet(seed):
    rng = Random(seed)
    for design in ALL:
        text = write(design, rng)[1]
        assert 3 <= len(text) <= alphabet.LONGEST
        assert alphabet.decode(alphabet.encode(text)) == text


def test_every_pattern_has_as_many_rows_as_its_design():
    for design in ALL:
        assert {pattern.count("/") + 1 for pattern in design.patterns} == {len(design.rows)}, design


@pytest.mark.parametrize("group", SHARES)
def test_every_group_has_plates_of_one_and_of_two_rows(group):
    rows = {len(design.rows) for design in ALL if design.group == group}
    assert 2 in rows
    assert 1 in rows or group == "jp"


def test_shares_cover_the_groups_of_the_alphabet():
    assert set(SHARES) == set(alphabet.GROUPS) == {design.group for design in ALL}
    assert sum(SHARES.values()) == pytest.approx(1)


def test_ink_stays_in_the_text_box(fonts):
    rng = Random(4)
    for design in ALL:
        size = (round(100 * design.aspect), 100)
        ink = set_rows(design, write(design, rng)[0], size, fonts, rng).ink.getbbox()
        box = [share * side for share, side in zip(design.text_box, size * 2, strict=True)]
        assert ink[0] >= box[0] - 2 and ink[1] >= box[1] - 2, design
        assert ink[2] <= box[2] + 2 and ink[3] <= box[3] + 2, design


def test_marks_spell_the_text_inside_the_plate(fonts):
    rng = Random(6)
    for _ in range(60):
        face = draw_face(fonts, rng)
        assert "".join(mark.text for mark in face.marks) == face.text
        for mark in face.marks:
            left, top, right, bottom = mark.box
            assert -1 <= left < right <= face.picture.width + 1
            assert -1 <= top < bottom <= face.picture.height + 1


def test_a_japanese_plates_upper_row_and_kana_are_minor(fonts):
    face = draw_face(fonts, Random(2), "jp")
    big = "".join(mark.text for mark in face.marks if not mark.minor)
    assert big == face.text[-len(big) :] and 1 <= len(big) <= 4 and big.isdigit()


def test_other_scripts_give_their_digits_and_latin_letters_alone(fonts):
    for name in ("arabic", "thai"):
        faces = [draw_face(fonts, Random(seed), name) for seed in range(30)]
        assert all(face.text.isascii() and face.text.isalnum() for face in faces)
        assert all("".join(m.text for m in face.marks) == face.text for face in faces)


def test_arabic_digits_are_drawn_for_western_ones():
    design = Design("eup", "eg", ("dd pp a ee",), script="arabic")
    [signs], text = write(design, Random(1))
    drawn = [sign.char for sign in signs if sign.kind == "char"]
    assert [unicodedata.digit(c) for c in drawn[:4]] == list(map(int, text))
    assert len(drawn) == 7 and not any(c.isascii() for c in drawn)


def test_a_pile_is_one_place_of_the_text():
    [[sign]], text = write(Design("kr", "kr", ("V",)), Random(1))
    assert sign.kind == "pile" and sign.char == sign.text == text in alphabet.KR_PLACES


def test_doubled_and_look_alike_characters_are_common():
    design = Design("eup", "xx", ("LLLDDD",))
    texts = [write(design, Random(seed))[1] for seed in range(1500)]
    doubled = sum(t[4] == t[5] for t in texts) / len(texts)
    assert 0.15 < doubled < 0.26
    assert sum(t[0] in "OQ" for t in texts) > sum(t[0] in "KW" for t in texts)


def test_no_chinese_serial_has_an_o_or_an_i():
    rng = Random(8)
    for _ in range(400):
        assert not set("OI") & set(write(choose(rng, "cn"), rng)[1])


def test_a_seed_repeats_a_plate(fonts):
    first, second = (draw_face(fonts, Random(9)) for _ in range(2))
    other = draw_face(fonts, Random(10))
    assert first.text == second.text != other.text
    assert first.picture.tobytes() == second.picture.tobytes()


def test_a_group_can_be_asked_for(fonts):
    rng = Random(3)
    assert {draw_face(fonts, rng, "kr").design.group for _ in range(10)} == {"kr"}


def test_the_height_can_be_asked_for(fonts):
    assert draw_face(fonts, Random(1), height=57).picture.height == 57


def test_text_that_is_no_plate_is_refused():
    with pytest.raises(ValueError):
        alphabet.encode("ab-12")
    with pytest.raises(ValueError):
        alphabet.encode("A" * (alphabet.LONGEST + 1))


def test_folding_joins_what_plates_draw_alike():
    assert alphabet.folded("OI0A1") == "010A1"
