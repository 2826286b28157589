"""Memory, descriptors, processes and disks that run out."""

import pytest
from faults import Fault, disks_can_be_mounted
from sample import bears, bears_some
from stage import WRITERS


@pytest.mark.parametrize("kind", ["allocation", "limit"])
def test_a_shortage_leads_to_the_right_result_or_an_error(torturer, kind):
    bears_some(torturer, kind)


def test_a_small_disk_leads_to_whole_files_or_an_error(torturer):
    if torturer.stage.name not in WRITERS:
        pytest.skip("the command writes no file")
    if not disks_can_be_mounted():
        pytest.skip("no file system can be mounted here")
    bears_some(torturer, "disk")


def test_memory_that_ends_while_a_file_is_written_leaves_no_other_file(torturer):
    if torturer.stage.name != "json":
        pytest.skip("one command does")
    last = torturer.allocations()
    bears(torturer, [Fault("allocation", "json", f"{last - back}:0") for back in range(1, 60)])
