"""A real browser that shows the dashboard, and what tests look at on it."""

import shutil

import pytest
from processes import wait_until


@pytest.fixture(scope="session")
def chromium(tmp_path_factory):
    webdriver = pytest.importorskip("selenium.webdriver")
    if not (shutil.which("chromium") and shutil.which("chromedriver")):
        pytest.skip("needs Chromium")
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
    return [state.text for state in browser.find_elements("id", "state")]


def find(browser, selector: str):
    return browser.find_element("css selector", selector)


def text(browser, selector: str) -> str:
    return find(browser, selector).text


@pytest.fixture
def photo(tmp_path, plate_photo):
    file = tmp_path / "my <b>car &amp;.jpg"
    file.write_bytes(plate_photo)
    return file


def read(browser, photo):
    find(browser, "#files").send_keys(str(photo))
    wait_until(lambda: browser.find_elements("css selector", "#plates tr"))
