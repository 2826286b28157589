"""Plates of Korea, China and Japan."""

from .design import BLACK, BLACK_ON_WHITE, BLUE, GREEN, NO_IOQ, WHITE, YELLOW, Design

_KR_GREEN = ((20, 92, 62), (236, 236, 230))
_CN = {"group": "cn", "country": "cn", "script": "hanzi", "fonts": "bold", "letters": NO_IOQ}
_KR = {"group": "kr", "country": "kr", "script": "hangul", "fonts": "wide"}
_JP = {
    "group": "jp", "country": "jp", "script": "kana", "fonts": "wide", "aspect": 2.0,
    "rows": (0.33, 0.6), "box": (0.05, 0.07, 0.95, 0.95), "screws": (0.13,), "border": 0.15,
}  # fmt: skip
_JP_PALETTES = ((WHITE, (20, 84, 56)), (GREEN, WHITE), (YELLOW, BLACK), (BLACK, YELLOW))

DESIGNS = (
    Design(patterns=("PL.DDDDD", "PL.LDDDD", "PL.DLDDD", "PL.DDDDL", "PL.DDDLL", "PL.LLDDD"),
           weight=5, aspect=3.14, palettes=(((20, 60, 160), WHITE),), border=0.95,
           box=(0.035, 0.16, 0.965, 0.84), screws=(0.08, 0.92), **_CN),
    Design(patterns=("PL.LDDDDD", "PL.LLDDDD", "PL.DDDDDL"), weight=2.5, aspect=3.43,
           palettes=(((150, 214, 176), BLACK), ((220, 236, 224), BLACK)), pictures=0.9,
           box=(0.035, 0.16, 0.965, 0.84), **_CN),
    Design(patterns=("PL.DDDDD", "PL.DDDDS", "PL.LDDDS"), weight=0.8, aspect=3.14,
           palettes=((YELLOW, BLACK), (BLACK, WHITE), (WHITE, BLACK)), border=0.95,
           box=(0.035, 0.16, 0.965, 0.84), **_CN),
    Design(patterns=("P.L/DDDDD", "P.L/LDDDD", "P.L/DDDDS"), weight=0.8, aspect=2.0,
           rows=(0.34, 0.6), box=(0.05, 0.08, 0.95, 0.93), palettes=((YELLOW, BLACK),
           ((20, 60, 160), WHITE)), border=0.95, **_CN),
    Design(patterns=("DDU DDDD", "DDDU DDDD", "DDDU DDDD"), weight=5, aspect=4.73,
           box=(0.05, 0.14, 0.95, 0.86), border=0.6, **_KR),
    Design(patterns=("DDDU DDDD",), weight=2, aspect=4.73, band=" ", box=(0.1, 0.14, 0.96, 0.86),
           border=0.6, **_KR),
    Design(patterns=("RDDU DDDD",), weight=1, aspect=4.73, palettes=((YELLOW, BLACK),),
           box=(0.03, 0.14, 0.97, 0.86), **_KR),
    Design(patterns=("DDU DDDD",), weight=1, aspect=2.16, box=(0.05, 0.2, 0.95, 0.8),
           palettes=(BLACK_ON_WHITE, _KR_GREEN), screws=(0.1,), **_KR),
    Design(patterns=("R DD/U DDDD", "R D/U DDDD", "R DDD/U DDDD"), weight=1.5, aspect=2.0,
           rows=(0.34, 0.58), box=(0.06, 0.07, 0.94, 0.94), palettes=(_KR_GREEN, (YELLOW, BLACK),
           ((30, 60, 140), WHITE)), screws=(0.14,), **_KR),
    Design(patterns=("J DDD/K DD-DD", "J DDD/K DD-DD", "J DD/K DD-DD", "J DDD/K .DDD",
           "J DDL/K DD-DD", "J DDD/K ..DD"), weight=5, palettes=_JP_PALETTES[:1], **_JP),
    Design(patterns=("J DDD/K DD-DD", "J DDD/K .DDD"), weight=2.5,
           palettes=_JP_PALETTES[1:], **_JP),
    Design(patterns=("J DDD/K DD-DD",), weight=1, palettes=((WHITE, BLUE), (WHITE, BLACK)),
           pictures=0.8, **_JP),
)  # fmt: skip
