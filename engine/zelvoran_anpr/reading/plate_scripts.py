"""Which scripts a region's plates show, and whether a text makes sense in the one it shows."""

import re
from dataclasses import replace
from functools import lru_cache

import numpy as np

from ..region_aliases import region_group
from .plate_text import PlateText

_OF_GROUPS = {"kr": {"hangul"}, "cn": {"han"}, "jp": {"han", "kana"}}
_ASIAN = re.compile(
    r"[\u4e00-\u9fff][A-Z]([A-Z0-9]{5,6}|[A-Z0-9]{3,4}[使领警学港澳挂])"  # China
    r"|([\uac00-\ud7a3]{2})?\d{1,3}[\uac00-\ud7a3]\d{4}"  # Korea
    r"|[\u3040-\u30ff\u4e00-\u9fff]{1,4}[0-9A-Z]{2,3}[\u3040-\u30ff]\d{1,4}"  # Japan
    r"|[\u3040-\u30ff]\d{1,4}"  # Japan, the upper row too small to read
)
_CHINESE = re.compile(r"[\u4e00-\u9fff][A-Z]\w{5,6}")
_NO_CHINESE_LETTERS = {"O": "0", "I": "1"}  # Chinese plates leave them out
_UNSURE = 0.49
_JAPANESE_LOWER = re.compile(r"[\u3040-\u30ff]?\d{2,4}")
_LEGIBLE = 0.35  # confidence below which a character of the small upper row is as good as unread


@lru_cache(maxsize=32)
def allowed(characters: str, region: str) -> np.ndarray:
    """Return per class 1 where a region's plates show it, else 0; class 0 is the gap.

    What is struck out takes its probability along, so a reading against the region is unsure.
    """
    scripts = [_script(c) for c in characters]
    everywhere = region == "univ"
    group = region_group(region)
    own = set(scripts) if everywhere else _OF_GROUPS.get(group, set())
    left_out = _NO_CHINESE_LETTERS if group == "cn" else {}
    shown = (s == "latin" or s in own for s in scripts)
    kept = np.array([1, *(s and c not in left_out for s, c in zip(shown, characters, strict=True))])
    kept = kept.astype(np.float32)
    kept.setflags(write=False)  # all readings share it
    return kept


def is_of_one_country(text: str) -> bool:
    """Tell whether a text is Latin, or built as the plates of the country whose script it shows."""
    return text.isascii() or bool(_ASIAN.fullmatch(text))


def as_written(read: PlateText, region: str) -> PlateText:
    """Return a text as its country writes it, unsure where its country says that a part is missing.

    Chinese serials have no O and no I, and a Chinese plate begins with its province.
    """
    if _CHINESE.fullmatch(read.text):
        serial = "".join(_NO_CHINESE_LETTERS.get(c, c) for c in read.text[2:])
        return replace(read, text=read.text[:2] + serial)
    if region_group(region) == "cn" and read.text.isascii():
        return read.at_most(_UNSURE)
    return read


def without_unread_upper_row(read: PlateText) -> PlateText:
    """Return a Japanese plate's large lower row where its small upper row cannot be read.

    It is never sure: a part of the text is missing.
    """
    upper = [sure for sure, row in zip(read.confidences, read.rows, strict=False) if row == 0]
    if not upper or min(upper) >= _LEGIBLE or not any(_script(c) == "kana" for c in read.text):
        return read
    start = len(upper)
    lower = read.text[start:]
    if not _JAPANESE_LOWER.fullmatch(lower) or min(read.confidences[start:]) < _LEGIBLE:
        return read
    kept = replace(read, text=lower, confidences=read.confidences[start:], rows=read.rows[start:])
    return kept.at_most(_UNSURE)


def _script(character: str) -> str:
    if character.isascii():
        return "latin"
    if "\uac00" <= character <= "\ud7a3":
        return "hangul"
    return "kana" if "\u3040" <= character <= "\u30ff" else "han"
