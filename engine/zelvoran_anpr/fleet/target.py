"""The results so far: parts of a dataset, which are the only state of a run.

One process writes them, and every part has rows of photos that no other part has: what is in a
part is done, what is in none is still to be read, whenever and however a run ended.
"""

import re
from collections.abc import Iterator

from .errors import FleetError, one_line
from .fetching import StorageError
from .job import CONFIGURATION, Job
from .rows import Row, decode, encode
from .storage import Folder

_PART = re.compile(r"part-(\d{6,})\.(parquet|jsonl)")


class Target:
    """Parts named part-000001.parquet and so on, or .jsonl."""

    def __init__(self, folder: Folder, ending: str, job: Job) -> None:
        self._folder, self._ending, self._job = folder, ending, job
        self.name = folder.name
        self._known = folder.names()
        self._check_endings()

    def done(self) -> Iterator[list[str]]:
        """Yield the names of the photos that have results, part by part.

        Photos whose bytes could not be had lose their row, as they are to be tried again.
        """
        for name in self._known.copy():
            rows = self._read(name, ["path", "error", "versions"])
            self._check_configuration(name, rows)
            if any(StorageError.made(row["error"]) for row in rows):
                rows = self._mended(name)
            yield list(dict.fromkeys(row["path"] for row in rows))

    def write(self, rows: list[Row]) -> None:
        """Add a part; raises FleetError when somebody else added one meanwhile."""
        if self._folder.names() != self._known:
            raise FleetError(
                f"Another run writes to {self.name}: this one stops, run it again when the other "
                "has ended"
            )
        number = 1 + max((int(_PART.fullmatch(part)[1]) for part in self._known), default=0)
        name = f"part-{number:06d}.{self._ending}"
        self._folder.write(name, encode(rows, self._ending))
        self._known.append(name)

    def _check_endings(self) -> None:
        for name in self._known:
            found = _PART.fullmatch(name)
            if not found:
                raise FleetError(
                    f"{self.name} holds {name}, which is no part of results: name another target"
                )
            if found[2] != self._ending:
                raise FleetError(
                    f"{self.name} holds {found[2]} parts: use --format {found[2]} or another target"
                )

    def _read(self, name: str, columns: list[str] | None = None) -> list[Row]:
        try:
            with self._folder.open(name) as file:
                return decode(file, self._ending, columns)
        except (OSError, ValueError, KeyError) as error:
            raise FleetError(
                f"Cannot read {self.name}/{name} ({one_line(error)}): remove it to read its photos "
                "again, or name another target"
            ) from None

    def _check_configuration(self, name: str, rows: list[Row]) -> None:
        ours = self._job.configuration()
        for row in rows[:1]:
            for key in CONFIGURATION:
                if row["versions"][key] != ours[key]:
                    raise FleetError(
                        f"{self.name} was made with {key} {row['versions'][key]}, not {ours[key]}: "
                        "use the same, or another target"
                    )

    def _mended(self, name: str) -> list[Row]:
        rows = [row for row in self._read(name) if not StorageError.made(row["error"])]
        if rows:
            self._folder.write(name, encode(rows, self._ending))
        else:
            self._folder.remove(name)
            self._known.remove(name)
        return rows
