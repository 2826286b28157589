"""Drawn photos, and what every test of the fleet needs."""

from collections.abc import Iterator
from pathlib import Path

import drawn_archive
import pytest
from dask_processes import cluster_in


@pytest.fixture(scope="session")
def archive(tmp_path_factory: pytest.TempPathFactory) -> Path:
    """Return a folder of photos with a plate each, one without, and files that are no photos."""
    folder = tmp_path_factory.mktemp("archive")
    drawn_archive.draw(folder, 12)
    drawn_archive.draw_street(folder / "street.PNG")
    (folder / "torn.jpg").write_bytes((folder / "plate-000.jpg").read_bytes()[:3000])
    (folder / "empty.jpeg").touch()
    (folder / "notes.txt").write_text("no photo by its name")
    return folder


@pytest.fixture(scope="session")
def cluster(tmp_path_factory: pytest.TempPathFactory) -> Iterator[list[str]]:
    """Return the options that name a scheduler with one worker, whose engine stays warm."""
    with cluster_in(tmp_path_factory.mktemp("cluster"), 1) as running:
        yield ["--scheduler", running.address]
