"""Alarms of a camera: who hears of them."""
from __future__ import annotations

import collections
import dataclasses
import datetime
import logging
import threading
import time
import weakref
from types import TracebackType
from typing import Callable, Deque, Iterator, Optional, Type

from . import _door, errors

_log = logging.getLogger("onvif_client.alarms")
_MOST_WAITING = 10_000


@dataclasses.dataclass(frozen=True)
class Alarm:
    """Something began (active) or ended at a camera.

    camera: its name as given to login. kind: "motion" or "alarm-input". input: the number of the
    alarm input, relays from 1001 on; None for motion. time: this machine's, UTC.
    """

    camera: str
    kind: str
    input: Optional[int]
    active: bool
    time: datetime.datetime


class Subscription:
    """Something that alarms are passed on to, until close."""

    def __init__(self, observers: "Observers", call: Callable[[Alarm], None], repeats: bool,
                 ended: Callable[[], None]) -> None:
        self._observers = observers
        self._ended = ended
        self._call: Optional[Callable[[Alarm], None]] = call
        self._repeats = repeats
        # Held during the call, so that close waits for it; a call may close itself.
        self.lock = threading.RLock()

    def tell(self, alarm: Alarm, repeated: bool) -> None:
        with self.lock:
            if self._call is None or (repeated and not self._repeats):
                return
            try:
                self._call(alarm)
            except BaseException:
                _log.exception("the callback for alarms of %s has failed", alarm.camera)

    def close(self) -> None:
        """No call comes any more once this has returned: one that runs is waited for, unless it is
        the caller. So hold no lock here that the callback takes."""
        with self.lock:
            self._call = None
        self._observers.remove(self)
        self._ended()

    def __enter__(self) -> "Subscription":
        return self

    def __exit__(self, kind: Optional[Type[BaseException]], error: Optional[BaseException],
                 trace: Optional[TracebackType]) -> None:
        self.close()


class Observers:
    """All subscriptions to one session, which has one observer as long as there are any."""

    def __init__(self, door: _door.Door, session: int, camera: str) -> None:
        self._door = door
        self._session = session
        self._camera = camera
        # Guards the members below; leaf: not held while the library or a callback is called.
        self._lock = threading.Lock()
        self._subscriptions: tuple[Subscription, ...] = ()
        self._observed = False
        self._active: dict[tuple[str, Optional[int]], Alarm] = {}

    def add(self, call: Callable[[Alarm], None], repeats: bool,
            ended: Callable[[], None] = lambda: None) -> Subscription:
        """ended: called with every close."""
        subscription = Subscription(self, call, repeats, ended)
        with subscription.lock:  # what is active comes first
            with self._lock:
                self._subscriptions += (subscription,)
                active = list(self._active.values())
                first = not self._observed
                self._observed = True
            for alarm in active:
                subscription.tell(alarm, False)
        if first:
            try:
                self._observe()
            except BaseException:
                subscription.close()
                raise
        return subscription

    def remove(self, subscription: Subscription) -> None:
        with self._lock:
            self._subscriptions = tuple(
                each for each in self._subscriptions if each is not subscription)
            last = self._observed and not self._subscriptions
            self._observed = self._observed and not last
        if last:
            self._forget()

    def close(self) -> None:
        for each in self._subscriptions:
            each.close()

    def _observe(self) -> None:
        code = self._door.observe(self._session, self._tell)
        if code != errors.SUCCESS:
            raise errors.class_of(code)(self._door.error_text(code), code=code,
                                        camera=self._camera)
        with self._lock:
            gone = not self._observed  # who wanted it has gone meanwhile
        if gone:
            self._forget()

    def _forget(self) -> None:
        self._door.forget(self._session)
        with self._lock:
            self._active.clear()
            again = self._observed  # by who came in meanwhile, whose observer went, too
        if again:
            self._observe()

    def _tell(self, kind: int, number: int, active: bool) -> None:
        alarm = Alarm(self._camera, "motion" if kind == _door.MOTION else "alarm-input",
                      None if kind == _door.MOTION else number, active,
                      datetime.datetime.now(datetime.timezone.utc))
        source = (alarm.kind, alarm.input)
        with self._lock:
            repeated = active == (source in self._active)
            if active:
                self._active[source] = alarm
            else:
                self._active.pop(source, None)
            subscriptions = self._subscriptions
        for each in subscriptions:
            each.tell(alarm, repeated)


class AlarmStream:
    """Alarms one after the other, for one thread. At most 10,000 wait; of more the oldest go, and
    dropped counts them."""

    def __init__(self, timeout: Optional[float]) -> None:
        self._timeout = timeout
        self._waiting: Deque[Alarm] = collections.deque()
        self._news = threading.Condition()
        self._subscription: Optional[Subscription] = None
        self._closed = False
        self.dropped = 0

    def begin(self, observers: Observers, repeats: bool) -> None:
        stream = weakref.ref(self)  # one that was dropped ends with the next alarm

        def put(alarm: Alarm) -> None:
            target = stream()
            if target is not None:
                target.put(alarm)
            elif subscription is not None:
                subscription.close()

        def end() -> None:
            target = stream()
            if target is not None:
                target.end()

        subscription: Optional[Subscription] = None
        subscription = self._subscription = observers.add(put, repeats, end)

    def put(self, alarm: Alarm) -> None:
        with self._news:
            if len(self._waiting) >= _MOST_WAITING:
                self._waiting.popleft()
                self.dropped += 1
            self._waiting.append(alarm)
            self._news.notify()

    def __iter__(self) -> Iterator[Alarm]:
        return self

    def __next__(self) -> Alarm:
        """Ends when no alarm has come for the time-out, and when the stream is closed."""
        deadline = None if self._timeout is None else time.monotonic() + self._timeout
        with self._news:
            while not self._waiting and not self._closed:
                left = None if deadline is None else deadline - time.monotonic()
                if left is not None and left <= 0:
                    break
                self._news.wait(left)
            if self._waiting and not self._closed:
                return self._waiting.popleft()
        self.close()
        raise StopIteration

    def close(self) -> None:
        """Ends the iteration, from any thread."""
        self.end()
        if self._subscription is not None:
            self._subscription.close()

    def end(self) -> None:
        """What came before is lost."""
        with self._news:
            self._closed = True
            self._news.notify_all()

    def __enter__(self) -> "AlarmStream":
        return self

    def __exit__(self, kind: Optional[Type[BaseException]], error: Optional[BaseException],
                 trace: Optional[TracebackType]) -> None:
        self.close()
