"""Plates in Arabic and Thai script: of them only the digits and Latin letters are text."""

from .design import BLACK_ON_WHITE, BLACK_ON_YELLOW, BLUE, GREEN, WHITE, WHITE_ON_BLACK, Design

_ARABIC = {"group": "eup", "script": "arabic", "fonts": "bold"}
_WIDE = {"aspect": 4.64, "box": (0.04, 0.14, 0.96, 0.86), **_ARABIC}
_TALL = {"aspect": 2.1, "box": (0.05, 0.3, 0.95, 0.92), **_ARABIC}
_THAI_PROVINCES = (
    "กรุงเทพมหานคร", "กรุงเทพมหานคร", "เชียงใหม่", "ชลบุรี", "นนทบุรี", "ปทุมธานี", "ภูเก็ต", "ขอนแก่น",
    "นครราชสีมา", "สงขลา", "ระยอง", "สมุทรปราการ", "อุดรธานี", "เชียงราย",
)  # fmt: skip
_THAI = {
    "group": "eup", "country": "th", "script": "thai", "fonts": "wide", "words": _THAI_PROVINCES,
    "rows": (0.62, 0.3), "box": (0.05, 0.1, 0.95, 0.93), "screws": (0.1,),
}  # fmt: skip

ARABIC_DIGITS = (
    Design(country="eg", patterns=("dddd!a a a", "ddd!a a a", "dddd!a a", "ddd!a a"), weight=2,
           header=("EGYPT", "مصر", "مصر"), captions="wide", palettes=(BLACK_ON_WHITE,),
           stripes=((80, 150, 220),), **_TALL),
    Design(country="ir", patterns=("pp a ppp|pp",), weight=1.2, band=" ",
           palettes=(BLACK_ON_WHITE, BLACK_ON_WHITE, BLACK_ON_YELLOW, ((180, 28, 34), WHITE)),
           **{**_WIDE, "script": "persian"}),
    Design(country="iq", patterns=("dddddd", "ddddd a", "dddddd a"), weight=0.6, footer=("IRAQ",),
           header=("بغداد العراق", "البصرة العراق"), palettes=(BLACK_ON_WHITE, BLACK_ON_YELLOW),
           aspect=2.1, box=(0.05, 0.3, 0.95, 0.82), **_ARABIC),
)  # fmt: skip

DESIGNS = (
    *ARABIC_DIGITS,
    Design(country="tn", patterns=("DDD w DDDD", "DDD w DDDD", "DD w DDDD", "w DDDDDD"), weight=1.2,
           words=("تونس",), palettes=(WHITE_ON_BLACK, WHITE_ON_BLACK, ((24, 60, 150), WHITE)),
           border=0.6, **_WIDE),
    Design(country="tn", patterns=("DDD w/DDDD", "DDD/w DDDD"), weight=0.3, words=("تونس",),
           palettes=(WHITE_ON_BLACK,), aspect=1.6, rows=(0.5, 0.5), box=(0.06, 0.08, 0.94, 0.92),
           **_ARABIC),
    Design(country="sa", patterns=("eeee!a a a/DDDD!L L L", "eee!a a a/DDD!L L L",
           "eeee!a a a/DDDD!LLL"), weight=1.2, aspect=2.1, rows=(0.48, 0.48),
           box=(0.05, 0.07, 0.86, 0.93), letters="ABDEGHJKLNRSTUVXZ", border=0.9, **_ARABIC),
    Design(country="sa", patterns=("eeee a a a!DDDD L L L",), weight=0.4, aspect=4.64,
           box=(0.03, 0.15, 0.92, 0.85), letters="ABDEGHJKLNRSTUVXZ", **_ARABIC),
    Design(country="ae", patterns=("L w DDDDD", "DD w DDDDD", "L w DDDD"), weight=0.8,
           words=("دبي", "الإمارات", "أبوظبي", "الشارقة", "عجمان"), **_WIDE),
    Design(country="ae", patterns=("DDDDD", "L DDDDD", "DDDDD L"), weight=0.4, aspect=2.1,
           box=(0.06, 0.32, 0.94, 0.92), header=("DUBAI", "دبي", "U.A.E", "الإمارات"),
           **_ARABIC),
    Design(country="ma", patterns=("DDDDD!a!D", "DDDDD!a!DD", "DDDD!a!DD"), weight=0.8, **_WIDE),
    Design(country="ly", patterns=("D w DDDDDD", "DD w DDDDD"), weight=0.4, words=("ليبيا",),
           **_WIDE),
    Design(country="dz", patterns=("DDDDDD DDD DD", "DDDDD DDD DD"), weight=0.6, **_WIDE,
           palettes=(BLACK_ON_WHITE, BLACK_ON_YELLOW)),
    Design(country="jo", patterns=("DD-DDDDD", "DD-DDDD"), weight=0.4, **_TALL,
           header=("الأردن", "JORDAN")),
    Design(country="kw", patterns=("DD DDDDD", "DD!DDDD"), weight=0.3, **_TALL,
           header=("الكويت", "KUWAIT")),
    Design(country="qa", patterns=("DDDDDD", "DDDDD"), weight=0.3, band=" ",
           footer=("STATE OF QATAR",), band_colour=(120, 20, 50), aspect=4.64, header=("قطر",),
           box=(0.1, 0.1, 0.95, 0.75), **_ARABIC),
    Design(country="bh", patterns=("DDDDDD",), weight=0.2, header=("البحرين", "BAHRAIN"), **_TALL),
    Design(country="om", patterns=("DDDDD LL", "DDDD L", "DDDDD L"), weight=0.3, **_WIDE,
           palettes=(BLACK_ON_YELLOW, ((180, 28, 34), WHITE))),
    Design(country="lb", patterns=("L DDDDDD", "L DDDDD"), weight=0.3, band=" ", **_WIDE),
    Design(patterns=("tt DDDD/w", "tt DDD/w", "Dtt DDDD/w", "Dtt DDD/w", "tt DDDD/w"), weight=2,
           aspect=2.27, palettes=(BLACK_ON_WHITE, BLACK_ON_WHITE, BLACK_ON_WHITE, (WHITE, BLUE),
           (WHITE, GREEN), BLACK_ON_YELLOW), **_THAI),
    Design(patterns=("DD-DDDD/w", "DDD-DDDD/w"), weight=0.6, aspect=2.5, palettes=(BLACK_ON_YELLOW,
           BLACK_ON_WHITE), **_THAI),
)  # fmt: skip
