"""System calls that fail, and signals that arrive in the middle of one."""

import pytest
from sample import bears_some


@pytest.mark.parametrize("kind", ["call", "signal"])
def test_a_fault_leads_to_the_right_result_or_an_error(torturer, kind):
    bears_some(torturer, kind)
