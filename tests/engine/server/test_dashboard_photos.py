"""What the dashboard makes of photos, in a real browser."""

import json
import struct

from conftest import upload
from dashboard_browser import find, read, text
from processes import wait_until


def test_a_photo_is_shown_with_its_plates_marked_and_listed(browser, server, photo):
    expected = upload(server.client(), photo.read_bytes()).json()
    read(browser, photo)
    plate = expected["results"][0]
    assert text(browser, "#plates tr .plate") == plate["plate_text"]
    assert f"{plate['confidence']:.1f} %" in text(browser, "#plates tr")
    assert photo.name in text(browser, "#photos li")  # as text, whatever it contains
    box = find(browser, "#photos rect")
    assert float(box.get_attribute("x")) == plate["bbox"][0]
    shown, image = find(browser, "#photos svg").size, find(browser, "#photos img").size
    assert abs(shown["width"] - image["width"]) <= 1
    assert abs(shown["height"] - image["height"]) <= 1
    wait_until(lambda: plate["plate_text"] in text(browser, "#recent li"))


def test_plates_are_saved_as_json_and_csv(browser, photo):
    read(browser, photo)
    find(browser, "#save-json").click()
    wait_until((browser.downloads / "plates.json").exists)
    saved = json.loads((browser.downloads / "plates.json").read_text())
    assert saved[0]["file"] == photo.name
    assert saved[0]["plate_text"] == text(browser, "#plates tr .plate")
    find(browser, "#save-csv").click()
    wait_until((browser.downloads / "plates.csv").exists)
    lines = (browser.downloads / "plates.csv").read_text().splitlines()
    assert lines[0].startswith("file,plate_text,confidence,left,")
    assert saved[0]["plate_text"] in lines[1]


_HOSTILE = {
    "file": "=1+1", "plate_text": "=1+cmd|' /C calc'!A0", "confidence": 97.1,
    "bbox": [-1.5, 2, 3, 4], "region": "@x", "mmc_make": "+1", "mmc_model": "-2+3",
    "mmc_color": "\t=1",
}  # fmt: skip


def test_no_text_reaches_a_spreadsheet_as_a_formula(browser):
    csv, text = browser.execute_async_script(
        "const [plate, done] = arguments; import('/static/export.js').then("
        "(m) => done([m.asCsv([plate]), m.asText([plate])]))",
        _HOSTILE,
    )
    assert csv.split("\r\n")[1] == (
        "'=1+1,'=1+cmd|' /C calc'!A0,97.1,-1.5,2,3,4,'@x,'+1,'-2+3,'\t=1"
    )
    assert text == "'=1+cmd|' /C calc'!A0\t97.1\t'=1+1"


# Answers of the server are held back by the page's own fetch, to see what it asks for meanwhile.
_HELD = """
window.asked = []; window.real = window.real ?? window.fetch;
window.fetch = (path, options) => path !== "/api/anpr" ? window.real(path, options)
  : new Promise((resolve, reject) => {
      window.asked.push(() => options.signal?.aborted || resolve(window.real(path, options)));
      options.signal?.addEventListener("abort", () => reject(options.signal.reason));
    });
"""


def test_photos_are_read_two_at_a_time_and_clear_ends_it(browser, photo, tmp_path):
    browser.execute_script(_HELD)
    names = [tmp_path / f"{number}.jpg" for number in range(4)]
    for name in names:
        name.write_bytes(photo.read_bytes())
    find(browser, "#files").send_keys("\n".join(map(str, names[:2])))
    assert browser.execute_script("return asked.length") == 2
    find(browser, "#files").send_keys("\n".join(map(str, names[2:])))
    assert text(browser, "#progress") == "Reading: 0 of 4 photos done"
    browser.execute_script("document.getElementById('clear').click()")
    find(browser, "#files").send_keys(str(photo))
    assert browser.execute_script("return asked.length") == 3  # the two that waited never went
    assert text(browser, "#progress") == "Reading: 0 of 1 photos done"
    browser.execute_script("asked.forEach((go) => go())")
    wait_until(lambda: text(browser, "#progress").startswith("1 photo read"))
    assert len(browser.find_elements("css selector", "#photos li")) == 1
    browser.execute_script("window.fetch = window.real")


def test_what_is_no_photo_is_told_beside_its_name(browser, tmp_path):
    file = tmp_path / "notes.jpg"
    file.write_text("not a photo")
    find(browser, "#files").send_keys(str(file))
    wait_until(lambda: "no JPEG" in text(browser, "#photos"))
    assert "notes.jpg" in text(browser, "#photos li")
    browser.get_log("browser")  # the browser reports the refusal as well


def test_a_photo_that_the_browser_cannot_draw_is_read_all_the_same(browser, tmp_path, plate_photo):
    import io

    from PIL import Image

    stream = io.BytesIO()
    Image.open(io.BytesIO(plate_photo)).save(stream, "TIFF")
    assert struct.unpack("<H", stream.getvalue()[2:4]) == (42,)
    file = tmp_path / "scan.tif"
    file.write_bytes(stream.getvalue())
    read(browser, file)
    wait_until(lambda: "No preview" in text(browser, "#photos li"))
    browser.get_log("browser")
