"""Threads that calls of the library wait on, so that Ctrl-C and an event loop need not."""
from __future__ import annotations

import queue
import threading
from concurrent.futures import Future
from typing import Any, Callable, Optional, TypeVar

T = TypeVar("T")
_Job = tuple["Future[Any]", Callable[[], Any]]

MOST = 64  # calls at once from an event loop or the main thread


class Workers:
    """Daemon threads, made as they are needed: a call that nobody waits for any more keeps no
    program from ending."""

    def __init__(self) -> None:
        self._jobs: "queue.SimpleQueue[_Job]" = queue.SimpleQueue()
        self._idle = threading.Semaphore(0)
        self._lock = threading.Lock()  # guards the number
        self._number = 0

    def submit(self, work: Callable[[], T]) -> "Future[T]":
        """Has a thread do it."""
        future: "Future[T]" = Future()
        self._jobs.put((future, work))
        if not self._idle.acquire(blocking=False):
            self._add()
        return future

    def _add(self) -> None:
        with self._lock:
            if self._number >= MOST:
                return
            self._number += 1
        threading.Thread(target=self._serve, name="onvif_client", daemon=True).start()

    def _serve(self) -> None:
        while True:
            future, work = self._jobs.get()
            if not future.set_running_or_notify_cancel():
                self._idle.release()
                continue
            try:
                result, error = work(), None
            except BaseException as raised:
                result, error = None, raised
            # Before anybody can have the next job, who would else make another thread for it.
            self._idle.release()
            if error is None:
                future.set_result(result)
            else:
                future.set_exception(error)
            del future, work, result, error


def give_back(future: "Future[T]", undo: Optional[Callable[[T], None]]) -> None:
    """What a call brings that nobody waits for any more is undone, whenever it comes."""
    if undo is not None:
        take = undo
        future.add_done_callback(
            lambda done: None if done.cancelled() or done.exception() else take(done.result()))
