"""Plates of North America, and of Brazil, Mercosur and their neighbours."""

from .design import BLACK, BLACK_ON_WHITE, BLUE, GREEN, GREY, RED, WHITE, YELLOW, Colour, Design

_NAVY: Colour = (36, 44, 96)
_SERIES = "ABCDEFGHJKLMNPRSTUVWXYZ"  # most states leave out I, O and Q
_US_BOX = (0.045, 0.23, 0.955, 0.79)
_US_PALETTES = (
    BLACK_ON_WHITE, BLACK_ON_WHITE, BLACK_ON_WHITE, ((226, 232, 240), _NAVY),
    ((226, 232, 240), _NAVY), ((206, 220, 234), _NAVY), ((210, 216, 220), (50, 54, 66)),
    ((230, 226, 206), BLACK), ((236, 236, 236), (150, 30, 40)), ((232, 236, 232), GREEN),
    ((40, 70, 150), WHITE), ((236, 206, 90), _NAVY), ((226, 200, 170), (110, 30, 40)),
    ((24, 26, 30), YELLOW),
)  # fmt: skip


def _us(state: str, patterns: str, slogans: str = "", weight: float = 1.0, **look) -> Design:
    defaults = {
        "aspect": 2.0, "box": _US_BOX, "fonts": "die", "letters": _SERIES,
        "palettes": _US_PALETTES, "header": (state, state, state.upper()),
        "footer": ("", *slogans.split("|")), "stickers": 0.7, "screws": (0.08, 0.92),
        "pictures": 0.45, "border": 0.3,
        "seals": ("map", "square", "dot", "space", "year", "emblem", "outline", "star", "stack"),
    }  # fmt: skip
    return Design("na", "us", tuple(patterns.split(",")), weight, **{**defaults, **look})


def _br(patterns: str, weight: float, **look) -> Design:
    defaults = {
        "aspect": 3.07, "box": (0.035, 0.27, 0.965, 0.9), "fonts": "wide", "border": 0.6,
        "captions": "bold", "wire_seal": 0.6, "screws": (0.1, 0.93),
        "palettes": ((GREY, BLACK), (GREY, BLACK), (GREY, BLACK), (GREY, (50, 54, 58)),
                     (GREY, (50, 54, 58)), (WHITE, BLACK), (WHITE, BLACK), (RED, WHITE)),
        "header": ("SP-SAO PAULO", "BA-SALVADOR", "MG-BELO HORIZONTE", "RJ-RIO DE JANEIRO",
                   "PR-CURITIBA", "DF-BRASILIA", "RS-PORTO ALEGRE", "ES-VITORIA", "CE-FORTALEZA",
                   "SE-ARACAJU", "SC-JOINVILLE", "GO-GOIANIA", "PE-RECIFE", "SP-CAMPINAS"),
    }  # fmt: skip
    return Design("sa", "br", tuple(patterns.split(",")), weight, **{**defaults, **look})


def _mercosur(country: str, name: str, patterns: str, weight: float) -> Design:
    return Design("sa", country, tuple(patterns.split(",")), weight, aspect=3.07, fonts="din",
                  box=(0.05, 0.32, 0.95, 0.93), header=(name,), captions="wide",
                  stripes=(BLUE,), border=0.9,
                  palettes=(*[BLACK_ON_WHITE] * 5, (WHITE, RED)))  # fmt: skip


DESIGNS = (
    _us("California", "DLLLDDD,DLLLDDD,DDDDDLD,DLDDDDD", "dmv.ca.gov", 4, palettes=((WHITE, _NAVY),
        (WHITE, BLACK), ((236, 236, 240), (50, 60, 130))), pictures=0.1),
    _us("Missouri", "LLD*LDL,LLD*LDL,DLL*DDD", "Show-Me State", 3,
        seals=("year", "year", "year", "map", "square", "space")),
    _us("Texas", "LLL*DDDD,LLD*LDDD,DDL*LDD", "The Lone Star State", 2),
    _us("New York", "LLL*DDDD", "Empire State|EXCELSIOR", 1.5),
    _us("Florida", "LLL*LDD,DDD*LLL,LDD*DLL,LLLL DD", "Sunshine State|MyFlorida.com", 1.5),
    _us("Illinois", "LL DDDDD,LDD DDDD,DDD*DDDD,L DDDDDD", "Land of Lincoln", 2),
    _us("Pennsylvania", "LLL*DDDD", "visitPA.com", 1),
    _us("Ohio", "LLL*DDDD", "Birthplace of Aviation", 1),
    _us("Georgia", "LLL DDDD,LLLDDDD", "Peach State|BARTOW", 1),
    _us("Michigan", "DLL*LDD,LLL*DDDD,LLL DDDD", "Pure Michigan|GREAT LAKES", 1),
    _us("Arizona", "LLLDDDD,LLLDLL", "Grand Canyon State", 1),
    _us("Washington", "LLLDDDD,DDD-LLL", "Evergreen State", 1),
    _us("Arkansas", "DDD LLL,DDD*LLL", "The Natural State", 0.8),
    _us("Kansas", "DDD*LLL", "", 0.8), _us("Tennessee", "LDD*DDL,DDD-LLL", "Volunteer State", 0.8),
    _us("Virginia", "LLL-DDDD", "", 0.8), _us("New Jersey", "LDD-LLL,LLL DDL", "Garden State", 0.8),
    _us("Maryland", "DLLDDDD,DLL*LDD", "War of 1812", 0.8),
    _us("Colorado", "DDD-LLL,LLL-LDD", "", 0.8),
    _us("Minnesota", "DDD-LLL,LLL-DDD", "10,000 lakes", 0.8),
    _us("WASHINGTON, DC", "LL*DDDD", "TAXATION WITHOUT REPRESENTATION", 0.8),
    _us("Oregon", "DDD LLL,LLL DDD", "", 0.8), _us("Alabama", "DDLDDDD", "Heart of Dixie", 0.6),
    _us("Indiana", "DDDLLL,DDD LL", "Crossroads of America", 0.8),
    _us("Wisconsin", "DDD-LLL,LLL-DDDD", "America's Dairyland", 0.8),
    _us("North Carolina", "LLL-DDDD", "First in Flight", 0.8),
    _us("Nevada", "DDD*LDD", "The Silver State", 0.6), _us("Utah", "LDD DLL", "Life Elevated", 0.6),
    _us("Idaho", "DL DDDDD,L DDDDDD", "Famous Potatoes", 0.5),
    _us("Oklahoma", "LLL DDD,LLL-DDD", "Native America", 0.8),
    _us("Massachusetts", "DDD LLD,DLL LDD", "The Spirit of America", 0.8),
    _us("Hawaii", "LLL DDD", "ALOHA STATE", 0.4),
    _us("Alaska", "LLL DDD", "The Last Frontier", 0.3),
    _us("Louisiana", "DDD LLL", "Sportsman's Paradise", 0.5),
    # Words and mixtures that owners choose, government, dealers, trucks
    _us("", "LLLLLL,LLLLLLL,LLLL,LL LLLL,XXXXXXX,XXXXX,XXXXXX,DDDDDDD,DDDDDD,DDDDL,DDDDD,LDDDDDD,"
        "LLLLL,DDDDD,LLLLLLLL,*LLDDL,*LLLDD,*LLLL,*DDDDL,*DDD,LLL*DDD,"
        "DDD*LLL,LLL*LDD,DDDD*L", "DEALER|U.S. GOVERNMENT|EXEMPT|TRUCK", 4.5,
        letters="ABCDEFGHIJKLMNOPQRSTUVWXYZ",
        header=("", "Montana", "Delaware", "South Dakota", "Wyoming", "Maine", "Vermont")),
    # Plates of clubs, schools, veterans: a badge or small letters beside the characters
    _us("", "@DDDLL,@LLDDD,@LLLDD,@DDDDD,@DDDL,@LLLL,@LDDDD,@DLLDD,*DDDDD,*LLDDD,*DDDLLL,DDDD*,"
        "DDDLL*,LLL@DDD,LL@DDDD,DDD@LL,LLL*DDDD,DDD*DDD,LDD*DDD,*LLLDDDD,DDDDDD*,@LLLLL", "", 4,
        header=("", "", "Oregon", "Florida", "Virginia", "Texas", "Georgia", "Indiana", "Iowa",
                "Nebraska", "Kentucky", "Mississippi", "South Carolina", "Rhode Island"),
        footer=("", "Veteran", "Firefighter", "SAVE OUR SEAS", "Environment", "University",
                "IN GOD WE TRUST", "Choose Life", "Wildlife", "Purple Heart", "Antique"),
        seals=("badge", "badge", "stack", "stack", "outline", "emblem", "star")),
    _us("Ontario", "LLLL*DDD,LLL*DDD", "YOURS TO DISCOVER", 1.2, seals=("map",),
        palettes=(((232, 234, 240), (40, 60, 140)),)),
    _us("Québec", "LDD LLL,DDD LLL", "Je me souviens", 1, palettes=((WHITE, BLUE),)),
    _us("BRITISH COLUMBIA", "LLD DDL,DDD LLL", "Beautiful", 0.6), _us("Alberta", "LLL-DDDD",
        "Wild Rose Country", 0.6, palettes=((WHITE, RED),)),
    _us("MÉXICO", "LLL-DD-DD,LLL-DDD-L,LDD-LLL,DDD-LLL,LL-DD-DDD,LL-DDDD-L,DDD-LLL-D,L-DD-LLL",
        "JALISCO|CDMX|NUEVO LEON|PUEBLA|VERACRUZ|SONORA|DELANTERA|TRASERA", 2, fonts="bold"),
    _us("", "LLL/DDDD,DDL/LDD,LL/DDDDD", "", 0.4, rows=(0.5, 0.5), aspect=1.75,
        box=(0.1, 0.16, 0.9, 0.86)),
    # South America
    _br("LLL.DDDD,LLL.DDDD,LLL-DDDD,LLL DDDD", 7),
    _br("LLL/DDDD", 1.5, aspect=1.15, rows=(0.5, 0.5), box=(0.08, 0.22, 0.92, 0.93)),
    _mercosur("br", "BRASIL", "LLLDLDD,LLLDLDD", 4),
    _mercosur("ar", "REPUBLICA ARGENTINA", "LL DDD LL,LL DDD LL,LL DDDLL", 2.5),
    _mercosur("uy", "URUGUAY", "LLL DDDD", 0.6), _mercosur("py", "PARAGUAY", "LLLL DDD", 0.5),
    Design("sa", "br", ("LLL/DLDD",), 1.2, aspect=1.18, rows=(0.5, 0.5), stripes=(BLUE,),
           box=(0.08, 0.22, 0.92, 0.93), header=("BRASIL",)),
    Design("sa", "ar", ("LLL DDD", "LLL DDD", "LLL  DDD"), 3, aspect=2.28,
           palettes=((BLACK, WHITE), (BLACK, (210, 210, 200)), ((44, 44, 48), (190, 190, 186))),
           fonts="wide", header=("ARGENTINA", "ARGENTINA", ""), box=(0.06, 0.28, 0.94, 0.86),
           border=0.9, captions="wide"),
    Design("sa", "ar", ("LLL DDD",), 1, aspect=2.28, palettes=((BLACK, WHITE),), fonts="die",
           header=("ARGENTINA",), box=(0.06, 0.26, 0.94, 0.9), border=0.9),
    Design("sa", "ar", ("DDD/LLL", "LDDD/LLL", "LLL/DDD"), 0.5, aspect=1.35, rows=(0.5, 0.5),
           palettes=((BLACK, WHITE), BLACK_ON_WHITE), box=(0.08, 0.2, 0.92, 0.92),
           header=("ARGENTINA",)),
    Design("sa", "ar", ("LDDD/LLL", "LLL/DDD"), 0.5, aspect=1.35, rows=(0.5, 0.5), stripes=(BLUE,),
           box=(0.08, 0.28, 0.92, 0.93), header=("REPUBLICA ARGENTINA",)),
    Design("sa", "uy", ("LLL DDDD",), 0.3, aspect=3.07, header=("URUGUAY",), fonts="wide",
           box=(0.05, 0.3, 0.95, 0.93)),
    Design("sa", "cl", ("LL*LL*DD", "LL.LL.DD", "LL DDDD"), 0.8, aspect=2.77, footer=("CHILE",),
           box=(0.05, 0.12, 0.95, 0.8), seals=("dot", "shield")),
    Design("sa", "co", ("LLL DDD", "LLL*DDD"), 0.8, aspect=2.06, palettes=((YELLOW, BLACK),
           BLACK_ON_WHITE), footer=("BOGOTA D.C.", "MEDELLIN", "CALI"), seals=("dot", "space"),
           box=(0.05, 0.14, 0.95, 0.78), screws=(0.1, 0.9)),
    Design("sa", "pe", ("LDL-DDD", "LLL-DDD"), 0.6, aspect=2.0, header=("PERU",),
           box=(0.05, 0.25, 0.95, 0.9), palettes=(BLACK_ON_WHITE, (YELLOW, BLACK))),
    Design("sa", "ve", ("LLDDDLL", "LLLDDL"), 0.4, aspect=2.0, header=("REPUBLICA BOLIVARIANA",),
           footer=("VENEZUELA",), box=(0.05, 0.24, 0.95, 0.78)),
    Design("sa", "ec", ("LLL-DDDD",), 0.4, aspect=2.6, header=("ECUADOR",),
           box=(0.05, 0.25, 0.95, 0.93)),
)  # fmt: skip
