"""The API token: created once, kept private, replaced on request."""

import stat
from concurrent.futures import ThreadPoolExecutor

import pytest
from zelvoran_anpr.zelvoran_anpr_server_config import ensure_api_token, local_api_token


@pytest.fixture(autouse=True)
def token_file(tmp_path, monkeypatch):
    monkeypatch.setenv("ZELVORAN_CONFIG_DIR", str(tmp_path / "zv"))
    return tmp_path / "zv" / "api_token"


def test_without_a_file_there_is_no_token_and_none_is_made(token_file):
    assert local_api_token() is None
    assert not token_file.parent.exists()


def test_a_token_is_made_once_and_kept_private(token_file):
    token = ensure_api_token()
    assert len(token) >= 40
    assert ensure_api_token() == local_api_token() == token
    assert stat.S_IMODE(token_file.stat().st_mode) == 0o600
    assert stat.S_IMODE(token_file.parent.stat().st_mode) == 0o700


def test_rotation_replaces_the_token():
    first = ensure_api_token()
    second = ensure_api_token(rotate=True)
    assert second != first
    assert local_api_token() == second


def test_a_token_file_that_others_can_read_is_closed(token_file):
    token = ensure_api_token()
    token_file.chmod(0o644)
    assert ensure_api_token() == token
    assert stat.S_IMODE(token_file.stat().st_mode) == 0o600


def test_an_empty_token_file_counts_as_none(token_file):
    token_file.parent.mkdir()
    token_file.write_text(" \n")
    assert local_api_token() is None
    assert ensure_api_token() == local_api_token()


@pytest.mark.parametrize("data", [b"\xff\xfe", b"one\ntwo", b"a b", "t\u00f6k".encode(), b"a\0b"])
def test_a_token_that_no_header_can_carry_is_told_with_the_way_out(token_file, data):
    token_file.parent.mkdir()
    token_file.write_bytes(data)
    for operation in (local_api_token, ensure_api_token):
        with pytest.raises(ValueError) as refused:
            operation()
        assert str(refused.value) == (
            f"{token_file} holds no token; make a new one with: zv-anpr server token --rotate"
        )
    assert ensure_api_token(rotate=True) == local_api_token()


def test_two_first_users_at_once_get_the_same_token():
    with ThreadPoolExecutor(8) as pool:
        tokens = set(pool.map(lambda _: ensure_api_token(), range(32)))
    assert tokens == {local_api_token()}
