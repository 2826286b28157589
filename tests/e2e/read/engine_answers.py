"""Lets the scripted engine answer every photo alike."""

PLATE = '{"ocr": "12AB3456", "ocr_conf": 97.5, "ltrb": [10, 20, 110, 60], "ltrb_conf": 0.88}'


def answering(zv, results: str) -> None:
    zv.script(f"def answer(path):\n    return {{'results': {results}}}\n")
