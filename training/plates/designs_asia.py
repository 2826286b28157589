"""Plates of Korea, China and Japan."""

from .design import BLACK, BLACK_ON_WHITE, BLUE, GREEN, WHITE, WHITE_ON_BLACK, YELLOW, Design

_KR_GREEN = ((20, 92, 62), (236, 236, 230))
_CN = {
    "group": "cn", "country": "cn", "script": "hanzi", "fonts": "cn", "border": 0.95,
    "letters": "ABCDEFGHJKLMNPQRSTUVWXYZ", "screws": (0.08, 0.92),
}  # fmt: skip
_CN_ROW = {"aspect": 3.14, "box": (0.035, 0.16, 0.965, 0.84), "script_width": 0.6, **_CN}
_CN_TWO = {"rows": (0.34, 0.6), "box": (0.06, 0.08, 0.94, 0.93), "script_width": 1.15, **_CN}
_CN_BLUES = tuple(
    ((r, g, b), WHITE)
    for r, g, b in (
        (20, 60, 160),
        (10, 30, 210),
        (20, 90, 230),
        (40, 130, 235),
        (40, 50, 150),
        (70, 100, 210),
    )
)
_CN_GREENS = tuple(
    (ground, BLACK)
    for ground in (
        (150, 214, 176),
        (220, 236, 224),
        (90, 190, 140),
        (190, 226, 150),
        (120, 200, 200),
    )
)
_KR_GROUNDS = (BLACK_ON_WHITE, BLACK_ON_WHITE, BLACK_ON_WHITE, ((170, 205, 235), BLACK),
               ((190, 214, 90), BLACK), ((120, 180, 225), BLACK))  # fmt: skip
_KR_YELLOWS = ((YELLOW, BLACK), ((240, 200, 60), (30, 34, 60)))
_KR_LONG = ("P1-1", "P1-3", "P1-4")
_KR = {"group": "kr", "country": "kr", "script": "hangul", "fonts": "wide"}
_JP = {
    "group": "jp", "country": "jp", "script": "kana", "fonts": "wide", "aspect": 2.0,
    "rows": (0.33, 0.6), "box": (0.05, 0.07, 0.95, 0.95), "screws": (0.13,), "border": 0.15,
    "letters": "ACFHKLMPXY",
}  # fmt: skip
_JP_PALETTES = ((WHITE, (20, 84, 56)), (GREEN, WHITE), (YELLOW, BLACK), (BLACK, YELLOW))

DESIGNS = (
    Design(patterns=("PL.DDDDD", "PL.LDDDD", "PL.DLDDD", "PL.DDDDL", "PL.DDDLL", "PL.LLDDD",
           "PL.XXXXX", "PL.DDLDD", "PL.LDDDL", "PL.LDDLD"), weight=6, palettes=_CN_BLUES,
           **_CN_ROW),
    Design(patterns=("PL.\\DDDDDD", "PL.\\FDDDDD", "PL.LDDDDD", "PL.\\DLDDDD", "PL.\\FLDDDD",
           "PL.DDDDDL", "PL.DDDDD\\D", "PL.DDDDD\\F", "PL.\\A\\ADDDD"), weight=2.5,
           palettes=_CN_GREENS, pictures=0.9, **{**_CN_ROW, "aspect": 3.43, "script_width": 0.58}),
    Design(patterns=("PL.DDDDD", "PL.LDDDD", "PL.DDDDL", "PL.DDDD学", "PL.LDDD学"), weight=1.2,
           palettes=((YELLOW, BLACK), ((250, 210, 20), BLACK), ((220, 160, 40), BLACK)), **_CN_ROW),
    Design(patterns=("PL.DDDD警", "PL.LDDD警", "PL.DLDD警", "PL.DDDDD"), weight=0.7,
           palettes=(BLACK_ON_WHITE,), **_CN_ROW),
    Design(patterns=("粤\\Z.DDDD港", "粤\\Z.LDDD港", "粤\\Z.DDDD澳", "粤\\Z.LDDD澳", "使DDDDDD",
           "DDDDDD使", "使DDD.DDD", "PL.DDDD领", "P.DDDDD领", "PL.DDDDD"), weight=0.8,
           palettes=(WHITE_ON_BLACK,), **_CN_ROW),
    Design(patterns=("P.L/DDDDD", "P.L/LDDDD", "P.L/DDDDL", "P.L/DDDD挂", "P.L/LDDD挂", "P.L/DDLDD",
           "PL/DDDDD", "PL/DLDDD"), weight=1.3, aspect=2.0, palettes=((YELLOW, BLACK),
           ((250, 210, 20), BLACK), ((220, 160, 40), BLACK)), **_CN_TWO),
    Design(patterns=("P.L/DDDDD", "P.L/LDDDD", "PL/DDDLD", "P.L/DDDD学", "P.L/DDDD警"), weight=0.5,
           aspect=1.57, palettes=((YELLOW, BLACK), *_CN_BLUES[:2], BLACK_ON_WHITE), **_CN_TWO),
    Design(patterns=("DDU DDDD", "DDDU DDDD", "DDDU DDDD"), weight=4, aspect=4.73,
           box=(0.05, 0.14, 0.95, 0.86), border=0.6, drawings=_KR_LONG,
           palettes=_KR_GROUNDS, **_KR),
    Design(patterns=("DDDU DDDD", "DDDU DDDD", "DDU DDDD"), weight=2.5, aspect=4.73, band=" ",
           box=(0.1, 0.14, 0.96, 0.86), border=0.6, drawings=_KR_LONG,
           palettes=_KR_GROUNDS, **_KR),
    Design(patterns=("VDDU DDDD",), weight=1.2, aspect=4.73, palettes=_KR_YELLOWS,
           box=(0.04, 0.12, 0.96, 0.88), drawings=("P4",), **_KR),
    Design(patterns=("RDDU DDDD",), weight=0.3, aspect=4.73, palettes=_KR_YELLOWS,
           box=(0.03, 0.14, 0.97, 0.86), drawings=("P3",), **_KR),
    Design(patterns=("DDU DDDD", "DDDU DDDD"), weight=1.2, aspect=2.16, box=(0.05, 0.2, 0.95, 0.8),
           palettes=(*_KR_GROUNDS, _KR_GREEN), screws=(0.1,), drawings=("P2", "P1-3"), **_KR),
    Design(patterns=("R DD/U DDDD", "R D/U DDDD", "R DDD/U DDDD"), weight=1.5, aspect=2.0,
           rows=(0.34, 0.58), box=(0.06, 0.07, 0.94, 0.94), palettes=(_KR_GREEN, _KR_GREEN,
           ((30, 60, 140), WHITE)), screws=(0.14,), drawings=("P5",), **_KR),
    Design(patterns=("R DD/U DDDD",), weight=1, aspect=2.0, rows=(0.34, 0.58), screws=(0.14,),
           box=(0.06, 0.07, 0.94, 0.94), palettes=(*_KR_YELLOWS, ((226, 110, 40), BLACK)),
           drawings=("P3",), **_KR),
    Design(patterns=("DD U/DDDD",), weight=1, aspect=2.0, rows=(0.36, 0.58), screws=(0.14,),
           box=(0.08, 0.07, 0.92, 0.94), palettes=(_KR_GREEN, BLACK_ON_WHITE), drawings=("P6",),
           **_KR),
    Design(patterns=("J NDD/K ND-DD", "J NDD/K ND-DD", "J ND/K ND-DD", "J NDD/K .NDD",
           "J NDL/K ND-DD", "J NDD/K ..ND", "J NDD/K ...N", "J NLL/K ND-DD"), weight=5,
           palettes=_JP_PALETTES[:1], **_JP),
    Design(patterns=("J NDD/K ND-DD", "J NDD/K ND-DD", "J NDL/K ND-DD", "J NDD/K .NDD"),
           weight=2.5, palettes=_JP_PALETTES[1:], **_JP),
    Design(patterns=("J NDD/K ND-DD", "J NDL/K ND-DD"), weight=1, pictures=0.8,
           palettes=((WHITE, BLUE), (WHITE, BLACK), BLACK_ON_WHITE), **_JP),
)  # fmt: skip
