"""What a kind of plate looks like, as data; `pattern` describes its text.

Pattern signs: L letter, D digit, N digit but 0, X letter or digit, P Chinese province, S Chinese
special ending, U Korean usage, R Korean place, V the same piled up, K kana, J Japanese place, d and
p Arabic and Persian digits, whose text is Western. Not of the text: a Arabic letter, e Arabic
digit, t Thai letter, w one of `words`. Digits and other scripts as they are, `\\` before a letter
that stands as it is; space, - dash, . dot, * seal or emblem, @ a broad one, ! line, | line (what
follows is smaller), / next row.
"""

from dataclasses import dataclass

Colour = tuple[int, int, int]

WHITE, BLACK, YELLOW = (232, 232, 228), (24, 24, 26), (236, 190, 40)
BLUE, RED, GREEN, GREY = (24, 60, 150), (180, 28, 34), (20, 110, 66), (186, 190, 190)
BLACK_ON_WHITE, BLACK_ON_YELLOW = (WHITE, BLACK), (YELLOW, BLACK)
WHITE_ON_BLACK, WHITE_ON_BLUE = (BLACK, WHITE), (BLUE, WHITE)

LETTERS = "ABCDEFGHIJKLMNOPQRSTUVWXYZ"
NO_IOQ = "ABCDEFGHJKLMNPRSTUVWXYZ"
CYRILLIC_LOOK_ALIKES = "ABEKMHOPCTYX"


@dataclass(frozen=True)
class Design:
    """One kind of plate. Lengths are shares of the plate's width or height."""

    group: str
    country: str
    patterns: tuple[str, ...]
    weight: float = 1.0
    aspect: float = 4.64
    palettes: tuple[tuple[Colour, Colour], ...] = (BLACK_ON_WHITE,)  # ground, ink
    fonts: str = "din"
    script: str = "hanzi"
    script_width: float = 1.0  # of characters of the script, as shares of a square's side
    drawings: tuple[str, ...] = ()  # types of official drawings it may be set in
    letters: str = LETTERS
    words: tuple[str, ...] = ()  # what w may be
    box: tuple[float, float, float, float] = (0.04, 0.13, 0.96, 0.87)  # where the text stands
    rows: tuple[float, ...] = (1.0,)  # heights of the text's rows
    band: str = ""  # letters of the country in a blue band; " " for an empty one
    band_right: bool = False
    band_colour: Colour = BLUE
    border: float = 0.75  # how often it has an edge line
    header: tuple[str, ...] = ()  # small text above the characters, one is taken
    footer: tuple[str, ...] = ()
    seals: tuple[str, ...] = ("seals", "shield")  # what * may be
    stickers: float = 0.0  # how often stickers are in the corners
    wire_seal: float = 0.0  # how often a red wire seal hangs at the upper left
    screws: tuple[float, ...] = ()  # heights at which screw pairs may sit
    pictures: float = 0.0  # how often the ground is a gradient or a faint picture
    stripes: tuple[Colour, ...] = ()  # top and bottom, as Mercosur's and Austria's
    captions: str = "caption"  # kind of font of header and footer

    @property
    def text_box(self) -> tuple[float, float, float, float]:
        """Return the box beside the band, wherever `box` begins."""
        left, top, right, bottom = self.box
        return (max(left, 0.44 / self.aspect + 0.01) if self.band else left, top, right, bottom)
