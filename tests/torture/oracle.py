"""Judges any run under any fault by the same rules: what is right, what is told, what is wrong."""

import io
import json
import re
from dataclasses import dataclass

from PIL import Image
from stage import Outcome

TOLD = re.compile(r"[Ee]rror|zv-anpr: |[Cc]annot|Failed|No valid|cancelled|timed out|✗|❌|✘")
UNTYPED = re.compile(r"Traceback \(most recent|terminate called|std::|Sanitizer|core dumped")
NOTE = re.compile(r"^zv-anpr: .* now holds .*\n", re.MULTILINE)
TEMPORARY = re.compile(r"(^|/)\.\d+\.tmp$")

RIGHT, TOLD_SO, MISSED = "right", "told", "missed"
SILENT = "silent"
WRONG = ("hang", "signal", SILENT, "destroyed", "leftover", "running", "untyped")


def whole(name: str, content: bytes | None) -> bool:
    """Whether a file that differs from both is a result all the same: of fewer photos, say."""
    try:
        if name.endswith(".json"):
            return isinstance(json.loads(content or b""), list)
        Image.open(io.BytesIO(content or b"")).load()
    except (OSError, ValueError):
        return False
    return True


@dataclass(frozen=True)
class Judge:
    """Knows what the command does on a good day, and the files that were there before."""

    good: Outcome
    old: dict[str, bytes]

    def verdicts(self, run: Outcome, sent: int = 0) -> list[str]:
        """What is wrong with the run, else "right" or "told"; `sent` is a signal it was sent."""
        wrong = [*self._ending(run, sent), *self._files(run, sent)]
        if run.running:
            wrong.append("running")
        if UNTYPED.search(run.text):
            wrong.append("untyped")
        if wrong:
            return wrong
        if self._is_good(run):
            return [RIGHT]
        died = run.status == -sent and sent
        return [TOLD_SO] if died or TOLD.search(self._news(run)) else [SILENT]

    def _ending(self, run: Outcome, sent: int) -> list[str]:
        if run.status is None:
            return ["hang"]
        return ["signal"] if run.status < 0 and run.status != -sent else []

    def _files(self, run: Outcome, sent: int) -> list[str]:
        wrong = []
        for name in self.old | self.good.files | run.files:
            found = run.files.get(name)
            if found in (self.old.get(name), self.good.files.get(name)) or whole(name, found):
                continue
            temporary = TEMPORARY.search(name)
            if temporary and sent == 9:
                continue  # nobody can clean up after that
            wrong.append("leftover" if temporary else "destroyed")
        return wrong

    def _is_good(self, run: Outcome) -> bool:
        """A note that cannot be written, or not found out, is no part of the result."""
        texts = (self.good.text, NOTE.sub("", self.good.text))
        same = (run.status, run.files) == (self.good.status, self.good.files)
        return same and run.text in texts

    def _news(self, run: Outcome) -> str:
        """The lines that a good run does not print."""
        usual = set(self.good.text.splitlines())
        return "\n".join(line for line in run.text.splitlines() if line not in usual)
