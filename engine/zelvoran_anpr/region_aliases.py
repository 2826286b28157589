"""Translates the region names that people type into the names the engine and the API use.

Internal regions are the six groups `eup`, `na`, `kr`, `cn`, `jp`, `univ` and lower-case ISO 3166
alpha-2 country codes (the reader knows the plate formats of some countries). API names are the
words that the server shows for the groups (`euplus`, `korea`, ...).
"""

INTERNAL_GROUPS = ("univ", "eup", "na", "kr", "cn", "jp")

_ALIASES = {
    "univ": "univ", "universal": "univ", "world": "univ", "any": "univ",
    "eup": "eup", "euplus": "eup", "eu+": "eup", "europe+": "eup", "europeplus": "eup",
    "eu": "eup", "europe": "eup", "asia": "eup", "africa": "eup", "oceania": "eup",
    "exussr": "eup", "cis": "eup",
    "na": "na", "northamerica": "na",
    "kr": "kr", "cn": "cn", "jp": "jp", "uk": "gb",
}  # fmt: skip

_API_NAMES = {
    "univ": "univ", "eup": "euplus", "na": "na", "kr": "korea", "cn": "china", "jp": "japan",
}  # fmt: skip

_ACCEPTED = (
    "use univ, eup, na, kr, cn, jp, an alias (euplus, eu, asia, africa, oceania, exussr, korea, "
    "china, japan), a 2-letter country code (de, us, au) or a country name (germany, korea)"
)


def to_internal_region(region: str) -> str:
    """Return the internal region for what a user typed; letter case and blanks do not matter.

    Raises ValueError with one line that says what is accepted.
    """
    from .region_countries import CODES_BY_NAME, COUNTRIES, spelling

    key = spelling(region) if isinstance(region, str) else ""
    if key in _ALIASES:
        return _ALIASES[key]
    if key in COUNTRIES:
        return key
    if key in CODES_BY_NAME:
        code = CODES_BY_NAME[key]
        # Namibia's code is also the name of a group, which wins: the country is its group.
        return COUNTRIES[code][0] if code in _ALIASES else code
    raise ValueError(_unknown(region, key))


def to_api_region(region: str) -> str:
    """Return the name the server API shows for a region; accepts all that users may type."""
    internal = to_internal_region(region)
    return _API_NAMES.get(internal, internal)


def region_group(internal: str) -> str:
    """Return the group (one of INTERNAL_GROUPS) an internal region belongs to."""
    if internal in INTERNAL_GROUPS:
        return internal
    from .region_countries import COUNTRIES

    return COUNTRIES[internal][0]


def _unknown(region: object, key: str) -> str:
    import difflib

    from .region_countries import CODES_BY_NAME

    shown = ascii(region) if not isinstance(region, str) else _quoted(region)
    near = difflib.get_close_matches(key, [*CODES_BY_NAME, *_ALIASES], 1, 0.75)
    hint = f' (did you mean "{near[0]}"?)' if near else ""
    return f"Unknown region {shown}{hint}: {_ACCEPTED}"


def _quoted(text: str) -> str:
    short = text if len(text) <= 40 else text[:40] + "…"
    return '"' + "".join(c if c.isprintable() else ascii(c)[1:-1] for c in short) + '"'
