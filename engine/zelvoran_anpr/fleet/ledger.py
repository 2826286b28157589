"""The photos that are still to be read, on disk: memory stays the same for archives of any size."""

import os
import sqlite3
from collections.abc import Iterable, Iterator

from . import addresses

_ROWS_AT_ONCE = 10_000


class Ledger:
    """Knows each photo once, by the name that results show."""

    def __init__(self) -> None:
        # The empty name is a file of SQLite's own, which goes with the connection.
        self._db = sqlite3.connect("", isolation_level=None)
        self._db.execute("PRAGMA journal_mode = OFF")
        self._db.execute("CREATE TABLE photo (name TEXT PRIMARY KEY, raw BLOB) WITHOUT ROWID")
        self._db.execute("BEGIN")

    def add(self, photos: Iterable[str]) -> None:
        rows = ((addresses.shown(photo), os.fsencode(photo)) for photo in photos)
        self._db.executemany("INSERT OR IGNORE INTO photo VALUES (?, ?)", rows)

    def strike(self, names: Iterable[str]) -> None:
        """Take out photos that have their result."""
        self._db.executemany("DELETE FROM photo WHERE name = ?", ((name,) for name in names))

    def __len__(self) -> int:
        return self._db.execute("SELECT count(*) FROM photo").fetchone()[0]

    def photos(self) -> Iterator[str]:
        """Yield the photos in the order of their names."""
        cursor = self._db.execute("SELECT raw FROM photo ORDER BY name")
        while rows := cursor.fetchmany(_ROWS_AT_ONCE):
            yield from (os.fsdecode(raw) for (raw,) in rows)

    def close(self) -> None:
        self._db.close()
