"""What the library says while it works: the reasons of failures, texts of displays, and the rest.

From the import on the library's messages come here and not to standard error. Those of a call that fails are
part of the H265Error; all others go to the logger "h265": errors (level 3) as ERROR, warnings and notices (4)
as WARNING, displays (5) as INFO, details (6 to 8) as DEBUG. DBGTRACE_LEVEL and DBGTRACE_LEVEL_H265LIB in the
environment set the level up to which there are messages; errors are always reported.
"""

import atexit
import ctypes
import logging
import threading
from collections.abc import Callable, Iterable
from typing import Any, NamedTuple

from ._functions import channel, library
from .records import DbgTraceMessage, DbgTraceSink

_ERROR = 3
_LOGGING_LEVELS = {_ERROR: logging.ERROR, 4: logging.WARNING, 5: logging.INFO}

_logger = logging.getLogger("h265")


class TraceMessage(NamedTuple):
    """One message of the trace service (dbgtrace.h)."""

    channel: str
    """H265LIB, H264LIB or ASSERT"""
    level: int
    """3 error, 4 warning or notice, 5 display, 6 information, 7 steps, 8 detail"""
    function: str
    file: str
    line: int
    text: str
    """as it was formatted: most texts end with a line end, a few do not"""


class H265Error(Exception):
    """A function of the library refused its input.

    As text, the name of the function and what it reported as errors.
    """

    def __init__(self, function: str, messages: Iterable[TraceMessage]) -> None:
        self.function = function
        """the name of the C function"""
        self.messages = tuple(messages)
        """everything that was reported during the call, in order"""
        errors = [message.text.strip() for message in self.messages if message.level <= _ERROR]
        super().__init__(f"{function}: {' '.join(errors) or 'no reason was reported'}")


class _Collected(threading.local):
    """The messages of the call that this thread is in; None outside of calls."""

    messages: list[TraceMessage] | None = None


_collected = _Collected()
_display_lock = threading.Lock()


@DbgTraceSink
def _sink(pointer: Any, _user: Any) -> None:
    record: DbgTraceMessage = pointer.contents

    def text(field: bytes) -> str:
        return field.decode("utf-8", "replace")

    message = TraceMessage(text(record.channel), record.level, text(record.function), text(record.file),
                           record.line, text(record.text))
    if _collected.messages is None:
        _log(message)
    else:
        _collected.messages.append(message)


def _log(message: TraceMessage) -> None:
    _logger.log(_LOGGING_LEVELS.get(message.level, logging.DEBUG), "%s (%s:%d): %s", message.function,
                message.file, message.line, message.text.rstrip("\n"))


def _collect(function: Any, *arguments: Any) -> tuple[Any, list[TraceMessage]]:
    messages: list[TraceMessage] = []
    _collected.messages = messages
    try:
        return function(*arguments), messages
    finally:
        _collected.messages = None


def call(function: Any, *arguments: Any, succeeded: Callable[[Any], bool] = bool) -> Any:
    """The result of a function of the library; raises H265Error unless `succeeded` says that it is good."""
    result, messages = _collect(function, *arguments)
    if not succeeded(result):
        raise H265Error(function.__name__, messages)
    for message in messages:
        _log(message)
    return result


def displayed(function: Any, *arguments: Any, level: int) -> str:
    """What a display function of the library prints up to a level.

    Other threads' calls may report more than usual meanwhile.
    """
    with _display_lock:
        level_before = channel.nMaxLevel
        channel.nMaxLevel = level
        try:
            _, messages = _collect(function, *arguments)
        finally:
            channel.nMaxLevel = level_before
    # assertions, of another channel, are about entries that the record has no room for
    return "".join(message.text for message in messages if message.channel == "H265LIB")


library.DbgTraceSetSink(_sink, None)
# The library is unloaded when there is no interpreter left that could take its messages.
atexit.register(library.DbgTraceSetSink, DbgTraceSink(), None)
channel.nMaxLevel = max(channel.nMaxLevel, _ERROR)
