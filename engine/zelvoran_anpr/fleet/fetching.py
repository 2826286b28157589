"""Fetches the bytes of photos, some ahead of their use, so that no core waits for a storage."""

import os
import stat
import time
from collections import deque
from collections.abc import Iterator
from concurrent.futures import ThreadPoolExecutor

from . import addresses
from .errors import one_line

AHEAD = 4
LARGEST = 512 << 20  # bytes: a photo of the largest size that is read takes 450 MB as BMP
PAUSES = (1, 4)  # seconds before a storage is asked again


class StorageError(Exception):
    """The bytes of a photo could not be had; a later run may have more luck and tries again."""

    MARK = "storage: "

    def __str__(self) -> str:
        return self.MARK + super().__str__()

    @classmethod
    def made(cls, text: str | None) -> bool:
        """Tell whether a row's error came from here."""
        return bool(text) and text.startswith(cls.MARK)


def ahead(photos: list[str], source: str) -> Iterator[tuple[str, bytes | Exception]]:
    """Yield each photo with its bytes, or with what is in the way of having them."""
    with ThreadPoolExecutor(AHEAD) as pool:
        waiting: deque = deque()
        for photo in photos:
            waiting.append((photo, pool.submit(_bytes_or_error, photo, source)))
            if len(waiting) == AHEAD:
                yield _next(waiting)
        while waiting:
            yield _next(waiting)


def _next(waiting: deque) -> tuple[str, bytes | Exception]:
    photo, future = waiting.popleft()
    return photo, future.result()


def _bytes_or_error(photo: str, source: str) -> bytes | Exception:
    remote = addresses.is_remote(photo)
    for pause in (*PAUSES, None):
        try:
            return _remote(photo, source) if remote else _local(photo)
        except FileNotFoundError:
            return ValueError("No such file")
        except ValueError as error:
            return error
        except Exception as error:  # noqa: BLE001  storages fail in many types
            if pause is None or not remote or "ACCESS_DENIED" in str(error):
                return StorageError(one_line(error))
            time.sleep(pause)
    raise AssertionError("the last attempt returns")


def _local(photo: str) -> bytes:
    kind = os.stat(photo)
    if not stat.S_ISREG(kind.st_mode):
        raise ValueError("Not a file")
    _check(kind.st_size)
    with open(photo, "rb") as file:
        return file.read()


def _remote(photo: str, source: str) -> bytes:
    place = addresses.photo_place(photo, source)
    with place.fs.open_input_file(place.path) as file:
        _check(file.size())
        return file.read()


def _check(size: int) -> None:
    if size > LARGEST:
        raise ValueError(f"The file has {size >> 20} MiB: larger than {LARGEST >> 20} MiB")
