"""What a process has one of, and a forked child one of its own."""
from __future__ import annotations

import os
import threading
from concurrent.futures import Future
from typing import Callable, Optional, TypeVar

from . import _door, _log, _workers

T = TypeVar("T")


class Process:
    """The door to the library, the threads that wait for it, and where its lines go."""

    def __init__(self) -> None:
        self.door = _door.Door()
        self.workers = _workers.Workers()
        self.trace = _log.ExchangeTrace(os.environ.get("ONVIF_CLIENT_TRACE_FILE"))
        self.started_before = False
        self.lock = threading.Lock()  # held while a library starts
        self.is_started = False

    def submit(self, work: Callable[[], T]) -> "Future[T]":
        return self.workers.submit(work)

    def wait(self, work: Callable[[], T], undo: Optional[Callable[[T], None]] = None) -> T:
        """Does it. The main thread waits beside, so that Ctrl-C and other signals reach it; what
        it has left waiting goes on, and is undone."""
        if self is not _current or threading.current_thread() is not threading.main_thread():
            return work()  # which refuses what belongs to a parent process
        future = self.workers.submit(work)
        try:
            return future.result()
        except BaseException:
            if not future.done():
                _workers.give_back(future, undo)
            raise


_current: Optional[Process] = None


def current() -> Process:
    """That of this process."""
    global _current
    if _current is None:
        _current = Process()
    return _current


def is_current(process: Process) -> bool:
    """Not that of a parent process."""
    return process is _current


def _begin_anew() -> None:
    global _current
    _current = None


if hasattr(os, "register_at_fork"):
    os.register_at_fork(after_in_child=_begin_anew)
