"""The dashboard in a real browser: sign in, read a photo, change the region, be usable by all."""

import json
import shutil
import struct

import pytest
from conftest import upload
from processes import wait_until

webdriver = pytest.importorskip("selenium.webdriver")
By = pytest.importorskip("selenium.webdriver.common.by").By
Keys = pytest.importorskip("selenium.webdriver.common.keys").Keys

pytestmark = pytest.mark.skipif(
    not (shutil.which("chromium") and shutil.which("chromedriver")), reason="needs Chromium"
)


@pytest.fixture(scope="module")
def chromium(tmp_path_factory):
    options = webdriver.ChromeOptions()
    options.binary_location = shutil.which("chromium")
    downloads = tmp_path_factory.mktemp("downloads")
    for argument in ("--headless=new", "--no-sandbox", "--disable-gpu", "--window-size=1280,1000",
                     "--disable-dev-shm-usage", "--no-proxy-server"):  # fmt: skip
        options.add_argument(argument)
    options.add_experimental_option("prefs", {"download.default_directory": str(downloads)})
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    service = webdriver.ChromeService(shutil.which("chromedriver"))
    driver = webdriver.Chrome(options=options, service=service)
    driver.downloads = downloads
    yield driver
    driver.quit()


@pytest.fixture
def browser(chromium, server):
    """A browser that is signed in by the link and shows the dashboard."""
    chromium.get("about:blank")  # what the page before still asked for is not this test's
    chromium.delete_all_cookies()
    chromium.get_log("browser")
    chromium.get(f"{server.url}/login#t={server.home.token()}")
    wait_until(lambda: chromium.current_url == f"{server.url}/")
    wait_until(lambda: shown_states(chromium) == ["ready"])
    yield chromium
    problems = [line for line in chromium.get_log("browser") if line["level"] == "SEVERE"]
    assert not problems


def shown_states(browser) -> list[str]:
    # The address changes before the page is there to be looked at.
    return [state.text for state in browser.find_elements(By.ID, "state")]


def find(browser, selector: str):
    return browser.find_element(By.CSS_SELECTOR, selector)


def text(browser, selector: str) -> str:
    return find(browser, selector).text


@pytest.fixture
def photo(tmp_path, plate_photo):
    file = tmp_path / "my <b>car &amp;.jpg"
    file.write_bytes(plate_photo)
    return file


def read(browser, photo):
    find(browser, "#files").send_keys(str(photo))
    wait_until(lambda: browser.find_elements(By.CSS_SELECTOR, "#plates tr"))


def test_a_page_without_a_session_leads_to_the_sign_in(chromium, server):
    chromium.delete_all_cookies()
    chromium.get(server.url)
    wait_until(lambda: chromium.current_url == f"{server.url}/login")
    find(chromium, "#token").send_keys("wrong" + Keys.ENTER)
    wait_until(lambda: "token is wrong" in text(chromium, "#note"))
    find(chromium, "#token").send_keys(server.home.token() + Keys.ENTER)
    wait_until(lambda: chromium.current_url == f"{server.url}/")
    chromium.get_log("browser")  # the refusals above were meant


def test_the_link_signs_in_with_a_token_of_signs(chromium, home):
    token = "c2l+nbg/==&t=x%41#z"
    (home.config_dir / "api_token").write_text(token)
    url = home.start().url
    chromium.get("about:blank")
    chromium.get(f"{url}/login#t={token}")
    wait_until(lambda: chromium.current_url == f"{url}/", 20)
    chromium.get_log("browser")


def test_the_link_leaves_no_token_where_scripts_or_history_find_it(browser, server):
    assert server.home.token() not in browser.current_url
    assert browser.execute_script("return document.cookie") == ""
    cookie = browser.get_cookie(f"zv_anpr_session_{server.port}")
    assert (cookie["httpOnly"], cookie["sameSite"]) == (True, "Strict")


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
    assert len(browser.find_elements(By.CSS_SELECTOR, "#photos li")) == 1
    browser.execute_script("window.fetch = window.real")


def test_what_is_no_photo_is_told_beside_its_name(browser, tmp_path):
    file = tmp_path / "notes.jpg"
    file.write_text("not a photo")
    find(browser, "#files").send_keys(str(file))
    wait_until(lambda: "no JPEG" in text(browser, "#photos"))
    assert "notes.jpg" in text(browser, "#photos li")
    browser.get_log("browser")  # the browser reports the refusal as well


def test_the_region_is_changed(browser, server):
    wait_until(lambda: browser.find_elements(By.CSS_SELECTOR, "#region option"))
    find(browser, '#region option[value="korea"]').click()
    find(browser, "#region-form button").click()
    wait_until(lambda: "Changed from univ to korea" in text(browser, "#region-note"))
    with server.client() as client:
        assert client.get("/api/region").json()["active_region"] == "korea"
        client.put("/api/region", json={"region": "univ"})


def test_health_is_shown(browser, server):
    version = server.client().get("/api/health").json()["version"]
    wait_until(lambda: version in text(browser, "#health"))
    assert "320p_fp32" in text(browser, "#health")
    assert "cloud" in text(browser, "#mmc")


def test_everything_is_reached_by_keyboard_and_named(browser, photo):
    read(browser, photo)
    unnamed = browser.execute_script(
        "return [...document.querySelectorAll('a, button, input, select, meter')]"
        ".filter(e => e.checkVisibility() && !e.textContent.trim() && !e.labels?.length"
        " && !e.ariaLabel).map(e => e.outerHTML)"
    )
    assert unnamed == []
    find(browser, "body").send_keys(Keys.TAB)
    reached = []
    for _ in range(30):
        active = browser.switch_to.active_element
        reached.append(active.get_attribute("id") or active.text or active.get_attribute("class"))
        webdriver.ActionChains(browser).send_keys(Keys.TAB).perform()
    assert {"theme", "sign-out", "files", "region", "save-csv", "Change"} <= set(reached)


@pytest.mark.parametrize("theme", ["light", "dark"])
def test_text_stands_out_from_its_ground(browser, photo, theme):
    """The contrast that accessibility guidelines ask for, 4.5 to 1, in both themes."""
    browser.execute_script(f"localStorage.setItem('zv-anpr-theme', '{theme}')")
    browser.refresh()
    wait_until(lambda: text(browser, "#state") == "ready")
    read(browser, photo)
    weak = browser.execute_script(_WEAK_TEXTS)
    browser.execute_script("localStorage.clear()")
    assert weak == []


_WEAK_TEXTS = """
const luminance = ([r, g, b]) => [r, g, b].map((c) => c / 255)
  .map((c) => (c <= 0.04045 ? c / 12.92 : ((c + 0.055) / 1.055) ** 2.4))
  .reduce((sum, c, i) => sum + c * [0.2126, 0.7152, 0.0722][i], 0);
const colour = (text) => {
  const values = text.match(/[\\d.]+/g).map(Number);
  return text.startsWith("color(") ? values.map((v, i) => (i < 3 ? v * 255 : v)) : values;
};
const ground = (element) => {
  for (let e = element; e; e = e.parentElement) {
    const values = colour(getComputedStyle(e).backgroundColor);
    if (values.length < 4 || values[3] > 0.5) return values;
  }
  return [255, 255, 255];
};
return [...document.querySelectorAll("body *")]
  .filter((e) => e.checkVisibility() && !e.closest("svg, .unseen, .skip, meter, select"))
  .filter((e) => [...e.childNodes].some((n) => n.nodeType === 3 && n.textContent.trim()))
  .map((e) => {
    const colours = [colour(getComputedStyle(e).color), ground(e)];
    const pair = colours.map(luminance).sort((a, b) => b - a);
    return [e.outerHTML.slice(0, 80), (pair[0] + 0.05) / (pair[1] + 0.05)];
  })
  .filter(([, ratio]) => ratio < 4.5);
"""


def test_the_page_fits_a_telephone(browser, photo):
    browser.set_window_size(500, 900)
    try:
        read(browser, photo)
        overflow = (
            "return document.documentElement.scrollWidth - document.documentElement.clientWidth"
        )
        assert browser.execute_script(overflow) <= 0
    finally:
        browser.set_window_size(1280, 1000)


def test_the_description_of_the_api_works_offline(browser, server):
    browser.get(f"{server.url}/docs")
    wait_until(lambda: "/api/anpr" in text(browser, "#swagger-ui"))
    loaded = browser.execute_script(
        "return performance.getEntriesByType('resource').map(entry => entry.name)"
    )
    assert all(name.startswith((server.url, "data:")) for name in loaded)


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


def test_signing_out_ends_the_session(browser, server):
    find(browser, "#sign-out").click()
    wait_until(lambda: browser.current_url == f"{server.url}/login")
    assert browser.get_cookie(f"zv_anpr_session_{server.port}") is None
