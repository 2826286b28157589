"""What the front end does for every command must load nothing heavy."""

import subprocess
import sys

HEAVY = {"numpy", "onnxruntime", "PIL", "re", "dataclasses", "typing", "pathlib", "enum"}

RESOLVE = """
import sys
before = set(sys.modules)
import zelvoran_anpr
from zelvoran_anpr._version import __version__
from zelvoran_anpr.region_aliases import to_api_region, to_internal_region
zelvoran_anpr.zv_anpr_detector_v17
zelvoran_anpr.zv_anpr_ocr_v17
zelvoran_anpr.zelvoran_anpr_from_image_file
print(__version__, *(set(sys.modules) - before))
"""


def test_resolving_the_names_loads_only_the_package():
    script = f"import sys; sys.path[:0] = {sys.path!r}\n{RESOLVE}"
    command = [sys.executable, "-S", "-c", script]
    done = subprocess.run(command, capture_output=True, text=True, check=True)
    version, *modules = done.stdout.split()
    assert version == "1.0.0"
    assert not {name.split(".")[0] for name in modules} & HEAVY
    assert all(name.startswith("zelvoran_anpr") for name in modules)


def test_the_package_tells_its_names_and_refuses_others():
    import zelvoran_anpr

    assert {"zv_anpr_detector_v17", "__version__"} <= set(dir(zelvoran_anpr))
    assert not hasattr(zelvoran_anpr, "no_such_name")
