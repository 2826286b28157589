"""Which free fonts plates are drawn with: fetches them from Debian's packages and sorts them.

python -m training.fonts FOLDER      (needs apt-get and dpkg-deb; nothing is installed)
"""

import subprocess
import sys
from pathlib import Path

PACKAGES = (
    "fonts-opendin", "fonts-roadgeek", "fonts-routed-gothic", "fonts-osifont",
    "fonts-national-park", "fonts-bebas-neue", "fonts-liberation", "fonts-dejavu-core",
    "fonts-dejavu-extra", "fonts-freefont-ttf", "fonts-roboto-unhinted", "fonts-urw-base35",
    "fonts-dosis", "fonts-b612", "fonts-jetbrains-mono", "fonts-mplus", "fonts-noto-mono",
    "fonts-noto-cjk", "fonts-nanum", "fonts-wqy-zenhei", "fonts-ipafont-gothic",
    "fonts-morisawa-bizud-gothic", "fonts-allerta", "fonts-play", "fonts-tlwg-garuda-ttf",
    "fonts-tlwg-loma-ttf", "fonts-tlwg-waree-ttf", "fonts-tlwg-umpush-ttf", "fonts-kacst",
    "fonts-hosny-amiri", "fonts-farsiweb",
)  # fmt: skip

# Kinds of lettering, each as font files without suffix.
KINDS = {
    "din": "OSP-DIN RG2014C RG2014D routed-gothic-narrow osifont MplusCodeLatin50-Medium "
    "JetBrainsMono-Medium RobotoCondensed-Regular BebasNeue-Regular Dosis-SemiBold",
    "die": "RG2014B RG2014C RG2014D routed-gothic-narrow routed-gothic NationalPark-Regular "
    "osifont MplusCodeLatin50-Medium MplusCodeLatin60-Bold JetBrainsMono-Medium "
    "JetBrainsMono-Bold DejaVuSansMono-Bold B612Mono-Bold RobotoCondensed-Bold OSP-DIN "
    "LiberationSansNarrow-Bold",
    "bold": "LiberationSansNarrow-Bold RobotoCondensed-Bold NimbusSansNarrow-Bold RG2014E RG2014F "
    "BebasNeue-Bold LiberationSans-Bold OSP-DIN NationalPark-Heavy",
    "wide": "NimbusSans-Bold LiberationSans-Bold FreeSansBold Roboto-Bold Roboto-Medium RG2014E "
    "RG2014F routed-gothic routed-gothic-wide B612-Bold NationalPark-Regular URWGothic-Demi "
    "DejaVuSansCondensed-Bold",
    "cn": "LiberationSans-Bold NimbusSans-Bold Roboto-Medium RobotoCondensed-Bold OSP-DIN RG2014D "
    "RG2014E LiberationSansNarrow-Bold NimbusSansNarrow-Bold B612-Bold routed-gothic",
    "caption": "LiberationSans-Bold FreeSansBold Roboto-Medium LiberationSansNarrow-Bold "
    "FreeSerifBoldItalic C059-BdIta Z003-MediumItalic Play-Bold allerta_stencil FreeSerifBold "
    "LiberationSerif-BoldItalic DejaVuSans-Bold",
    "hangul": "NanumGothicBold NanumSquareB NanumBarunGothicBold NotoSansCJK-Bold",
    "hanzi": "wqy-zenhei NotoSansCJK-Bold NotoSansCJK-Regular",
    "kana": "BIZUDGothic-Bold BIZUDGothic-Regular ipag NotoSansCJK-Bold",
    "arabic": "DejaVuSans-Bold FreeSerifBold KacstOffice KacstPoster KacstTitle "
    "Amiri-Bold titr homa nazlib",
    "persian": "DejaVuSans-Bold FreeSerifBold Amiri-Bold titr homa nazlib",
    "thai": "Garuda-Bold Loma-Bold Waree-Bold Umpush-Bold",
}
_SUFFIXES = (".otf", ".ttf", ".ttc")  # the order of preference


def catalogue(folder: Path, drawings: Path | None = None) -> dict[str, list[str]]:
    """Return font files by kind; a kind whose fonts are missing has those of the others.

    `drawings` is a folder of official characters (see plates/drawings.py), kept under that name.
    Raises FileNotFoundError when the folder holds none of them.
    """
    files = {p.stem: str(p) for s in reversed(_SUFFIXES) for p in sorted(folder.rglob("*" + s))}
    kinds = {k: [files[n] for n in names.split() if n in files] for k, names in KINDS.items()}
    anything = [file for found in kinds.values() for file in found]
    if not anything:
        raise FileNotFoundError(f"{folder} holds no known font: run python -m training.fonts")
    given = {"drawings": [str(drawings)]} if drawings else {}
    return {**given, **{kind: found or anything for kind, found in kinds.items()}}


def fetch(folder: Path) -> None:
    """Download the packages and unpack them into the folder."""
    packages = folder / "packages"
    packages.mkdir(parents=True, exist_ok=True)
    subprocess.run(["apt-get", "download", "-qq", *PACKAGES], cwd=packages, check=True)
    for package in sorted(packages.glob("*.deb")):
        subprocess.run(["dpkg-deb", "-x", str(package), str(folder)], check=True)


def keep_only_known(folder: Path) -> None:
    """Copy the fonts in use to FOLDER/fonts: what another machine needs, about 60 MB smaller."""
    target = folder / "fonts"
    target.mkdir(exist_ok=True)
    for file in {file for found in catalogue(folder / "usr").values() for file in found}:
        (target / Path(file).name).write_bytes(Path(file).read_bytes())


if __name__ == "__main__":
    fetch(Path(sys.argv[1]))
    keep_only_known(Path(sys.argv[1]))
    print(f"fonts are in {Path(sys.argv[1], 'fonts')}")
