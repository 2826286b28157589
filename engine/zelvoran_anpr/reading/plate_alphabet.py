"""Which characters stand on plates, and how other scripts' letters are written on them."""

from ..region_aliases import region_group
from .plate_text import PlateText
from .text_recognition import ReadText

_LATIN = frozenset("ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789")
_PROVINCES = frozenset("京津沪渝冀豫云辽黑湘皖鲁新苏浙赣鄂桂甘晋蒙陕吉闽贵粤青藏川宁琼")
_CHINESE = _PROVINCES | frozenset("使领警学港澳挂")
_HIRAGANA = frozenset(chr(code) for code in range(0x3042, 0x3094))

# Cyrillic and Greek plates use only letters that have a Latin look-alike, and are written so.
_LOOK_ALIKES = str.maketrans("АВЕКМНОРСТУХІЈΑΒΕΖΗΙΚΜΝΟΡΤΥΧ", "ABEKMHOPCTYXIJABEZHIKMNOPTYX")


def plate_characters(read: ReadText, region: str) -> PlateText:
    """Return what was read as plate text: capitals and digits, no separators, no other signs."""
    letters = [c.upper().translate(_LOOK_ALIKES) for c in read.text]
    kept = [i for i, c in enumerate(letters) if _stands_on_plates(c, region_group(region))]
    return PlateText(
        "".join(letters[i] for i in kept),
        tuple(read.confidences[i] for i in kept),
        (read.text,),
    )


def _stands_on_plates(character: str, group: str) -> bool:
    if character in _LATIN:
        return True
    if group == "jp":
        return character in _HIRAGANA or "\u4e00" <= character <= "\u9fff"
    return group in ("cn", "univ") and character in _CHINESE
