"""Every command that talks to a server, against the real one."""

import os
import re
import shutil

import pytest


@pytest.fixture
def talk(service):
    def talk(*words):
        return service(*words, "--port", str(service.port))

    return talk


def test_detect_reads_a_plate(service, talk, car_photo):
    out = talk("detect", str(car_photo))
    assert re.fullmatch(r"  car\.jpg: 1 plate\(s\)  \[\d+\.\d\ds\]\n    BDK4827 \(\d+%\)\n", out), (
        out
    )


def test_detect_takes_patterns_and_reports_what_is_no_photo(service, talk, car_photo):
    folder = service.folder / "photos"
    folder.mkdir()
    shutil.copy(car_photo, folder / "a.jpg")
    (folder / "b.jpg").write_bytes(b"no photo")
    lines = talk("detect", "photos/*.jpg", "--region", "euplus").splitlines()
    assert sum(line.startswith("  a.jpg: 1 plate(s)  [") for line in lines) == 1
    assert sum(line.startswith("  b.jpg: Error - HTTP Error 4") for line in lines) == 1
    assert lines[-1] == "Total: 2 images processed"


def test_an_upload_beyond_the_limit_is_told_by_its_status(service, talk):
    big = service.folder / "big.jpg"
    with big.open("wb") as file:
        file.truncate(30_000_000)
    assert talk("detect", "big.jpg").startswith("  big.jpg: Error - HTTP Error 413: ")


def test_an_unknown_region_is_told(talk, car_photo):
    assert "car.jpg: Error - HTTP Error 4" in talk("detect", str(car_photo), "--region", "nowhere")


def test_status_shows_the_running_server(service):
    out = service("status")
    assert out.startswith(
        f"Server running (PID: {service.pid})\n  URL: http://127.0.0.1:{service.port}\n  Version:  "
    )
    assert (
        "\n  Detector: 320p_fp32 (v17)\n  OCR:      fp32\n  Region:   univ\n  Threads:  2\n" in out
    )
    assert "\n  Health:   OK\n  Memory:   " in out


def test_list_shows_it_in_a_table(service):
    head, row = service("list").split("\n")[1:3]
    assert head.split()[:3] == ["PID", "URL", "THREADS"]
    assert row.split()[:3] == [str(service.pid), f"http://127.0.0.1:{service.port}", "2"]


def test_health(talk):
    lines = talk("health").splitlines()
    labels = (
        "Status Version SDK Detector OCR Region Threads Requests Errors Uptime Healthy Memory MMC"
    )
    assert [line.split(":")[0] for line in lines] == labels.split()
    assert lines[0] == "Status:    ok"
    assert re.fullmatch(r"Uptime:    \d+[sm]", lines[9])
    assert re.fullmatch(r"Memory:    \d+ MB", lines[11])


def test_mmc(talk):
    assert talk("mmc").startswith("MMC:       ")


def test_region_is_changed_viewed_and_refused(talk):
    assert talk("region", "korea") == "Region changed: univ → korea\n"
    view = talk("region").splitlines()
    assert view[:2] == ["Region:    univ", "Active:    korea"]
    assert view[2].startswith("Available: univ, ") and view[2].endswith(", + 80 country codes")
    assert talk("region", "atlantis").startswith("Failed: {'success': False, ")
    assert talk("region", "univ") == "Region changed: korea → univ\n"
    assert talk("region").startswith("Region:    univ\nAvailable: ")


def test_the_server_is_found_by_name(service, talk):
    assert talk("health", "--host", "localhost").startswith("Status:    ok\n")


def test_logs_show_the_last_lines(service, talk):
    talk("health")
    lines = service("logs", "-n", "5").splitlines()
    assert len(lines) == 5
    assert lines == service.log().read_text().splitlines()[-5:]
    assert any('"GET /api/health" 200' in line for line in lines)


def test_a_second_server_runs_beside_it_and_wants_the_token(service, talk):
    service("token")
    guarded = service.configure("guarded.yaml", server={"require_token": True})
    port, pid = service.start("--config", str(guarded))
    token = service.config_dir / "api_token"
    assert service("health", "--port", str(port)).startswith("Status:    ok\n")
    os.rename(token, f"{token}.away")
    try:
        refused = service("region", "--port", str(port))
    finally:
        os.rename(f"{token}.away", token)
    assert "(HTTP Error 401: " in refused
    assert len(service("list").strip().splitlines()) == 3
    both = service.run("stop")
    assert both.returncode == 1
    assert both.stdout.endswith(
        "Error: Several servers are running; name one with --port or --pid, or use --all\n"
    )
    assert f"stopped (PID: {pid})" in service("stop", "--port", str(port))
    assert talk("health").startswith("Status:    ok\n")
