"""Signing in to the dashboard and out of it, in a real browser."""

import pytest
from dashboard_browser import find, text
from processes import wait_until

Keys = pytest.importorskip("selenium.webdriver.common.keys").Keys


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


def test_signing_out_ends_the_session(browser, server):
    find(browser, "#sign-out").click()
    wait_until(lambda: browser.current_url == f"{server.url}/login")
    assert browser.get_cookie(f"zv_anpr_session_{server.port}") is None
