"""Finds the connected regions of a binary mask, as runs of pixels per row."""

import numpy as np


class Region:
    """One 8-connected region: its runs, each [row, first column, end column (exclusive)]."""

    __slots__ = ("runs",)

    def __init__(self, runs: np.ndarray):
        self.runs = runs

    @property
    def area(self) -> int:
        return int((self.runs[:, 2] - self.runs[:, 1]).sum())

    def outline(self) -> np.ndarray:
        """Return the pixel corners at both ends of every run, as N x 2 (x, y) floats."""
        row, start, end = self.runs.T.astype(np.float64)
        corners = [(start, row), (end, row), (start, row + 1), (end, row + 1)]
        return np.concatenate([np.stack(pair, axis=1) for pair in corners])

    def mean(self, values: np.ndarray) -> float:
        """Return the mean of an H x W array over the region."""
        total = sum(float(values[y, a:b].sum()) for y, a, b in self.runs)
        return total / self.area


def find_regions(mask: np.ndarray) -> list[Region]:
    """Return the 8-connected regions of a boolean H x W mask, topmost first."""
    runs = _runs(mask)
    if len(runs) == 0:
        return []
    roots = _join(runs)
    order = np.argsort(roots, kind="stable")
    cuts = np.flatnonzero(np.diff(roots[order])) + 1
    return [Region(part) for part in np.split(runs[order], cuts)]


def _runs(mask: np.ndarray) -> np.ndarray:
    padded = np.zeros((mask.shape[0], mask.shape[1] + 2), np.int8)
    padded[:, 1:-1] = mask
    steps = np.diff(padded, axis=1)
    rows, starts = np.nonzero(steps == 1)
    ends = np.nonzero(steps == -1)[1]
    return np.stack([rows, starts, ends], axis=1)


def _join(runs: np.ndarray) -> np.ndarray:
    """Return for every run the lowest index of a run of the same region."""
    parent = list(range(len(runs)))
    for upper, lower in _touching(runs.tolist()):
        a, b = _root(parent, upper), _root(parent, lower)
        parent[max(a, b)] = min(a, b)
    return np.array([_root(parent, i) for i in range(len(runs))])


def _touching(runs: list[list[int]]):
    """Yield index pairs of runs that touch (diagonals count) in neighbouring rows."""
    above = 0
    for i, (row, start, end) in enumerate(runs):
        while above < i and _is_before(runs[above], row - 1, start):
            above += 1
        j = above
        while j < i and runs[j][0] == row - 1 and runs[j][1] <= end:
            yield j, i
            j += 1


def _is_before(run: list[int], row: int, column: int) -> bool:
    return run[0] < row or (run[0] == row and run[2] < column)


def _root(parent: list[int], i: int) -> int:
    while parent[i] != i:
        parent[i] = parent[parent[i]]
        i = parent[i]
    return i
