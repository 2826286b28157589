"""Adds up what all stages came to; the last line reads "N passed, N failed".

A stage with a JUnit report counts with the tests in it, any other as one check. A runner that
failed without a failed test in its report, or died before writing one, counts as one failure.
"""

import sys
import xml.etree.ElementTree as ElementTree
from collections import Counter
from pathlib import Path


def outcome(case: ElementTree.Element) -> str:
    tags = {child.tag for child in case}
    if tags & {"failure", "error"}:
        return "failed"
    left_out = "skipped" in tags or case.get("status") == "notrun"
    return "skipped" if left_out else "passed"


def report_counts(report: Path) -> Counter:
    """Count the outcomes in a report; OSError or ParseError when there is none to be read."""
    return Counter(outcome(case) for case in ElementTree.parse(report).getroot().iter("testcase"))


def stage_counts(succeeded: bool, report: Path, reports: bool) -> Counter:
    if not reports:
        return Counter(passed=int(succeeded), failed=int(not succeeded))
    try:
        counts = report_counts(report)
    except (OSError, ElementTree.ParseError):
        return Counter(failed=1)
    if not counts["failed"] and (not succeeded or not counts["passed"]):
        counts["failed"] += 1
    return counts


def main(folder: Path) -> int:
    total = Counter(passed=0, failed=0)
    print("\n=== Summary")
    for line in (folder / "stages.tsv").read_text().splitlines():
        name, status, seconds, report = line.split("\t")
        counts = stage_counts(status == "0", Path(report), name.endswith("tests"))
        total += counts
        said = ", ".join(f"{counts[key]} {key}" for key in ("passed", "failed", "skipped"))
        print(f"{name:32} {seconds:>5} s  {said}")
    print(f"{total['passed']} passed, {total['failed']} failed")
    return 1 if total["failed"] or not total["passed"] else 0


if __name__ == "__main__":
    sys.exit(main(Path(sys.argv[1])))
