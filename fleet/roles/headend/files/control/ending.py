"""How a run ends that systemd ends, or whose terminal is closed: nothing that it began is left, neither
an ssh nor a folder with documents.
"""

from __future__ import annotations

import contextlib
import signal
import sys
from collections.abc import Iterator
from types import FrameType

SIGNALS = (signal.SIGTERM, signal.SIGHUP)


def _end(caught: int, _: FrameType | None) -> None:
    # A second one would break off what clears up after the first.
    for number in SIGNALS:
        signal.signal(number, signal.SIG_IGN)
    sys.exit(128 + caught)


def exit_on_signals() -> None:
    """Makes a `SystemExit` of each signal that is not ignored from the start, as after nohup."""
    for number in SIGNALS:
        if signal.getsignal(number) is not signal.SIG_IGN:
            signal.signal(number, _end)


@contextlib.contextmanager
def signals_afterwards() -> Iterator[None]:
    """For the start of a program: a signal in the midst of it would leave behind what nobody knows yet."""
    caught: list[int] = []
    handlers = {number: signal.getsignal(number) for number in SIGNALS}
    for number, handler in handlers.items():
        if callable(handler):
            signal.signal(number, lambda number, _: caught.append(number))
    try:
        yield
    finally:
        for number, handler in handlers.items():
            signal.signal(number, handler)
        for number in caught[:1]:
            signal.raise_signal(number)
