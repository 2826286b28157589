"""How a line of the log looks: as text for people, or as JSON for programs."""

import json
import logging
import time


class TextLines(logging.Formatter):
    """Time in UTC, process, level, logger, message."""

    converter = time.gmtime
    default_time_format = "%Y-%m-%dT%H:%M:%S"
    default_msec_format = "%s.%03dZ"

    def __init__(self) -> None:
        super().__init__("%(asctime)s %(process)d %(levelname)s %(name)s %(message)s")


class JsonLines(TextLines):
    """One object per line; what a line is about stands in keys of its own beside the message."""

    def format(self, record: logging.LogRecord) -> str:
        line = {
            "time": self.formatTime(record), "pid": record.process, "level": record.levelname,
            "logger": record.name, "message": record.getMessage(),
            **getattr(record, "fields", {}),
        }  # fmt: skip
        if record.exc_info:
            line["traceback"] = self.formatException(record.exc_info)
        return json.dumps(line, default=str)


FORMATS = {"text": TextLines, "json": JsonLines}
