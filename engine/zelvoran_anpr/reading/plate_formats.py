"""The plate formats of countries, and how they guide a reading when the region is known.

A format is written with L for a letter, D for a digit, H for a Chinese character, K for kana.
Countries with many formats in use (Germany's districts, the states of the US) are not listed:
a format that is missing here would mislead more than none.
"""

from dataclasses import replace

from .plate_text import PlateText

FORMATS: dict[str, tuple[str, ...]] = {
    "al": ("LLDDDLL",),
    "am": ("DDLLDDD", "DDDLLDD"),
    "ar": ("LLLDDD", "LLDDDLL"),
    "az": ("DDLLDDD",),
    "ba": ("LDDLDDD",),
    "bg": ("LDDDDLL", "LLDDDDLL", "LLDDDDL", "LDDDDL"),
    "br": ("LLLDDDD", "LLLDLDD"),
    "by": ("DDDDLLD",),
    "cl": ("LLDDDD", "LLLLDD"),
    "cn": ("HLDDDDD", "HLLDDDD", "HLDDDDL", "HLDLDDD", "HLLLDDD", "HLLDDDDD", "HLDDDDDL"),
    "co": ("LLLDDD", "LLLDDL"),
    "cy": ("LLLDDD",),
    "ee": ("DDDLLL",),
    "es": ("DDDDLLL", "LDDDDLL", "LLDDDDLL", "LDDDDL", "LLDDDDL"),
    "fi": ("LLLDDD",),
    "fr": ("LLDDDLL", "DDDDLLDD", "DDDLLDD", "DDDLLLDD"),
    "gb": ("LLDDLLL", "LDDDLLL", "LDDLLL", "LLLDDDL", "LLLDDL"),
    "ge": ("LLDDDLL", "LLLDDD"),
    "gr": ("LLLDDDD",),
    "hr": ("LLDDDLL", "LLDDDL", "LLDDDDLL", "LLDDDDL"),
    "hu": ("LLLDDD", "LLLLDDD"),
    "il": ("DDDDDDD", "DDDDDDDD"),
    "it": ("LLDDDLL",),
    "kz": ("DDDLLLDD", "DDDLLDD"),
    "lt": ("LLLDDD",),
    "lu": ("LLDDDD", "DDDDD", "DDDD"),
    "lv": ("LLDDDD", "LLDDD", "LLDD"),
    "md": ("LLLDDD",),
    "me": ("LLLLDDD",),
    "mk": ("LLDDDDLL", "LLDDDLL"),
    "nl": (
        "LLDDDD", "DDDDLL", "DDLLDD", "LLDDLL", "LLLLDD", "DDLLLL", "DDLLLD", "DLLLDD",
        "LLDDDL", "LDDDLL", "LLLDDL", "LDDLLL", "DLLDDD", "DDDLLD",
    ),
    "no": ("LLDDDDD",),
    "pe": ("LDLDDD", "LLLDDD", "LDDDDD", "LLDDDD"),
    "pt": ("LLDDLL", "DDLLDD", "DDDDLL", "LLDDDD"),
    "py": ("LLLDDD", "LLLLDDD"),
    "ro": ("LDDLLL", "LDDDLLL", "LLDDLLL"),
    "rs": ("LLDDDLL", "LLDDDDLL"),
    "ru": ("LDDDLLDD", "LDDDLLDDD"),
    "se": ("LLLDDD", "LLLDDL"),
    "si": ("LLDDDLL", "LLLDDDD", "LLLLDDD", "LLDDLLL"),
    "sk": ("LLDDDLL",),
    "tr": ("DDLDDDD", "DDLDDDDD", "DDLLDDD", "DDLLDDDD", "DDLLLDD", "DDLLLDDD"),
    "ua": ("LLDDDDLL",),
    "uy": ("LLLDDDD",),
    "xk": ("DDDDDLL", "DDDDLL", "DDDDDL"),
}  # fmt: skip

_TO_LETTER = {"0": "O", "1": "I"}
_TO_DIGIT = {"O": "0", "Q": "0", "I": "1"}


def knows_formats(region: str) -> bool:
    """Tell whether the formats of an internal region are listed."""
    return region in FORMATS


def matches_format(text: str, region: str) -> bool:
    """Tell whether a text has a listed format of the region."""
    return any(_fits(text, form) for form in FORMATS.get(region, ()))


def countries_of(text: str) -> tuple[str, ...]:
    """Return the codes of the countries that have a listed format like the text's."""
    return tuple(code for code, forms in FORMATS.items() if any(_fits(text, f) for f in forms))


def fit_to_format(read: PlateText, region: str) -> PlateText:
    """Write O or 0 and I or 1 as the region's format demands that takes the fewest changes.

    Other characters never change; a text that fits no format, or two formats equally well, stays
    as it was read.
    """
    if region not in FORMATS or matches_format(read.text, region):
        return read
    fitted = {text for form in FORMATS[region] if (text := _written(read.text, form))}
    nearest = sorted(fitted, key=lambda text: _differences(text, read.text))
    if not nearest or (len(nearest) > 1 and _ties(nearest, read.text)):
        return read
    return replace(read, text=nearest[0])


def _ties(nearest: list[str], read: str) -> bool:
    return _differences(nearest[0], read) == _differences(nearest[1], read)


def _differences(one: str, other: str) -> int:
    return sum(a != b for a, b in zip(one, other, strict=True))


def _written(text: str, form: str) -> str | None:
    """Return the text with O/0 and I/1 as the format wants them; None when it does not fit."""
    if len(text) != len(form):
        return None
    swaps = {"L": _TO_LETTER, "D": _TO_DIGIT}
    letters = [swaps.get(kind, {}).get(c, c) for c, kind in zip(text, form, strict=True)]
    changed = "".join(letters)
    return changed if _fits(changed, form) else None


def _fits(text: str, form: str) -> bool:
    return len(text) == len(form) and all(
        _kind(c) == kind for c, kind in zip(text, form, strict=True)
    )


def _kind(character: str) -> str:
    if character.isdigit():
        return "D"
    if character.isascii():
        return "L"
    return "K" if "\u3040" <= character <= "\u30ff" else "H"
