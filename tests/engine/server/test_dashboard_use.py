"""The dashboard as a page: settings, keyboard, contrast, small screens; in a real browser."""

import pytest
from dashboard_browser import find, read, text
from processes import wait_until

webdriver = pytest.importorskip("selenium.webdriver")
Keys = pytest.importorskip("selenium.webdriver.common.keys").Keys


def test_the_region_is_changed(browser, server):
    wait_until(lambda: browser.find_elements("css selector", "#region option"))
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
