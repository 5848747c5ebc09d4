"""onvif_client for asyncio: the same, with await. No call blocks the event loop.

    async with aio.Library(extensions="all") as library:
        async with library.login("192.168.1.64", user="admin", password="secret") as camera:
            print((await camera.get("devInfo"))["model"])
            async for alarm in camera.alarms(timeout=60):
                print(alarm)

Up to 64 calls go on at once, more take turns. What a cancelled call still brings is dropped.
"""
from __future__ import annotations

import asyncio
import collections
from types import TracebackType
from typing import (Any, AsyncIterator, Callable, Deque, Generator, Iterable, Optional, Type,
                    TypeVar, Union)

from . import _process, _workers, camera, library
from .alarms import Alarm, Subscription
from .documents import Command, Parameter
from .results import Result

T = TypeVar("T")
_MOST_WAITING = 10_000


async def _wait(work: Callable[[], T], undo: Optional[Callable[[T], None]] = None) -> T:
    future = _process.current().submit(work)
    try:
        return await asyncio.shield(asyncio.wrap_future(future))
    except asyncio.CancelledError:
        if not future.cancel():
            _workers.give_back(future, undo)
        raise


class Library:
    """As onvif_client.Library."""

    def __init__(self, extensions: Union[str, Iterable[str], None] = None) -> None:
        self._library = library.Library(extensions)

    def login(self, host: str, port: int = 80, user: str = "", password: str = "") -> "Login":
        """To be awaited, or entered by async with."""
        return Login(lambda: self._library.login_now(host, port, user, password))

    async def close(self) -> None:
        """As onvif_client.Library.close."""
        await _wait(self._library.close)

    async def __aenter__(self) -> "Library":
        return self

    async def __aexit__(self, kind: Optional[Type[BaseException]], error: Optional[BaseException],
                        trace: Optional[TracebackType]) -> None:
        await self.close()


class Login:
    """A login that has not begun."""

    def __init__(self, login: Callable[[], camera.Camera]) -> None:
        self._login = login
        self._camera: Optional[Camera] = None

    async def _run(self) -> "Camera":
        self._camera = Camera(await _wait(self._login, camera.Camera.close))
        return self._camera

    def __await__(self) -> Generator[Any, None, "Camera"]:
        return self._run().__await__()

    async def __aenter__(self) -> "Camera":
        return await self._run()

    async def __aexit__(self, kind: Optional[Type[BaseException]], error: Optional[BaseException],
                        trace: Optional[TracebackType]) -> None:
        if self._camera is not None:
            await self._camera.close()


class Camera:
    """As onvif_client.Camera."""

    def __init__(self, session: camera.Camera) -> None:
        self._session = session
        self.name = session.name

    async def get(self, command: str, /, **parameters: Parameter) -> Result:
        return (await self.get_many(Command(command, **parameters)))[0]

    async def set(self, command: str, /, **parameters: Parameter) -> Result:
        return (await self.set_many(Command(command, **parameters)))[0]

    async def get_many(self, *commands: Union[str, Command]) -> list[Result]:
        return await _wait(lambda: self._session.request_now("Get", commands))

    async def set_many(self, *commands: Union[str, Command]) -> list[Result]:
        return await _wait(lambda: self._session.request_now("Set", commands))

    async def snapshot(self, index: int = 0) -> bytes:
        return await _wait(lambda: self._session.snapshot_now(index))

    def alarms(self, timeout: Optional[float] = None, repeats: bool = False) -> "AlarmStream":
        """For async for, alone or in async with, which ends it for certain."""
        return AlarmStream(self._session, timeout, repeats)

    async def close(self) -> None:
        await _wait(self._session.close)

    async def __aenter__(self) -> "Camera":
        return self

    async def __aexit__(self, kind: Optional[Type[BaseException]], error: Optional[BaseException],
                        trace: Optional[TracebackType]) -> None:
        await self.close()


class AlarmStream:
    """Alarms one after the other; at most 10,000 wait, of more the oldest go. Subscribes with the
    first step."""

    def __init__(self, session: camera.Camera, timeout: Optional[float], repeats: bool) -> None:
        self._session = session
        self._timeout = timeout
        self._repeats = repeats
        self._waiting: Deque[Alarm] = collections.deque(maxlen=_MOST_WAITING)
        self._news = asyncio.Event()
        self._subscription: Optional[Subscription] = None
        self._closed = False

    async def _begin(self) -> None:
        loop = asyncio.get_running_loop()

        def put(alarm: Optional[Alarm]) -> None:
            try:
                loop.call_soon_threadsafe(self._put, alarm)
            except RuntimeError:  # the loop has ended, and who waited with it
                pass

        def subscribe() -> Subscription:
            return self._session.on_alarm_now(put, self._repeats, lambda: put(None))

        subscription = await _wait(subscribe, Subscription.close)
        self._subscription = subscription

    def _put(self, alarm: Optional[Alarm]) -> None:
        if alarm is None:
            self._closed = True
        else:
            self._waiting.append(alarm)
        self._news.set()

    def __aiter__(self) -> AsyncIterator[Alarm]:
        return self

    async def __anext__(self) -> Alarm:
        if self._subscription is None:
            await self._begin()
        while not self._waiting or self._closed:
            if self._closed:
                raise StopAsyncIteration
            self._news.clear()
            try:
                await asyncio.wait_for(self._news.wait(), self._timeout)
            except asyncio.TimeoutError:
                await self.close()
                raise StopAsyncIteration from None
        return self._waiting.popleft()

    async def close(self) -> None:
        """No alarm comes any more."""
        if self._subscription is not None:
            await _wait(self._subscription.close)

    async def __aenter__(self) -> "AlarmStream":
        await self._begin()
        return self

    async def __aexit__(self, kind: Optional[Type[BaseException]], error: Optional[BaseException],
                        trace: Optional[TracebackType]) -> None:
        await self.close()
