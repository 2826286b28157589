"""model-info prints one fixed page."""

PAGE = """
Zelvoran ANPR v3.2.1 — Model Info
=======================================================

★ V17 MODELS
-------------------------------------------------------

  Detector (--detector-model):
    • 320p_fp32
    • 640p_fp32 (default)

  OCR (--ocr-model):
    • fp32 (default)
    • int8

  Models are downloaded once with a certificate into ~/.zelvoran/anpr/.
  After that they run offline; copy that folder to an offline machine.


Regions (--region)
-------------------------------------------------------
    eup      Europe+ (EU, ex-USSR, Asia, Africa, Oceania, UK)
    na       North America (US, CA, MX)
    kr       Korea
    cn       China
    jp       Japan
    univ     Universal (default)
  Also accepts 2-letter codes (de, us, au) or names (germany, korea)


Backends (--backend)
-------------------------------------------------------
    cpu        Default, all platforms
    cuda       NVIDIA GPU (requires onnxruntime-gpu)
    directml   Windows GPU (requires onnxruntime-directml)


Examples
-------------------------------------------------------
  zv-anpr photo.jpg
  zv-anpr photo.jpg --region kr
  zv-anpr photo.jpg --detector-model 320p_fp32 --ocr-model fp32
  zv-anpr photo.jpg --backend cuda
  zv-anpr *.jpg --json results.json
"""


def test_the_page(zv):
    assert tuple(zv("model-info")) == (0, PAGE, "")


def test_the_engine_gives_the_version(zv):
    zv.engine_file("_version.py", "__version__ = '9.0rc1'\n")
    assert zv("model-info").out == PAGE.replace("3.2.1", "9.0rc1")
