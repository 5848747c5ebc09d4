"""A camera: its commands, pictures and alarms."""
from __future__ import annotations

import xml.etree.ElementTree as ET
from types import TracebackType
from typing import TYPE_CHECKING, Callable, Optional, Sequence, Type, Union

from . import _process, errors
from .alarms import Alarm, AlarmStream, Observers, Subscription
from .documents import Command, Parameter, request_document
from .results import Result, is_command, read_results

if TYPE_CHECKING:
    from .library import Library

_DENIED = ("NotAuthorized", "FailedAuthentication")
_NO_ANSWER = {
    "refused": "the device refused the connection",
    "no-connection": "no connection to the device came about",
    "closed": "the device closed the connection without a reply",
    "timeout": "the device did not reply in time",
    "stopped": "the request was broken off",
}


def _why(exchange: Optional[tuple[str, str, str, str]]) -> tuple[Type[errors.Error], int, str]:
    """What a request that brought nothing has failed by."""
    if exchange is None:
        return (errors.NotSent, 1, "nothing was sent: a parameter is missing or an index is out of "
                "range, or the device has nothing of the kind")
    operation, outcome, _, remark = exchange
    if outcome in _NO_ANSWER:
        return errors.Unreachable, 5, f"{_NO_ANSWER[outcome]} ({operation})"
    code, _, said = remark.partition(": ")
    fault = code[len("fault "):] if code.startswith("fault ") else ""
    told = f"{operation}: HTTP {outcome} {remark}".rstrip()
    if outcome in ("401", "403") or fault in _DENIED:
        return errors.NotAuthorized, 401, said if fault and said else told
    if fault or outcome == "400":
        return errors.Refused, 7, said if fault and said else told
    return errors.BadReply, 4, told


class Camera:
    """A session with a camera, made by Library.login. Any thread may use it.

    Requests of the main thread wait beside it, so that Ctrl-C ends them; what the camera still
    answers is dropped then.
    """

    def __init__(self, library: "Library", process: _process.Process, session: int, name: str,
                 address: str) -> None:
        self.name = name
        self.address = address
        self._library = library
        self._process = process
        self._session = session
        self._open = True
        self._observers = Observers(process.door, session, name)

    def __repr__(self) -> str:
        return f"<onvif_client.Camera {self.name}>"

    def get(self, command: str, /, **parameters: Parameter) -> Result:
        """Ask: a command of docs/commands.md with its parameters. Parameters with parts are dicts,
        repeated ones lists."""
        return self.get_many(Command(command, **parameters))[0]

    def set(self, command: str, /, **parameters: Parameter) -> Result:
        """Change something."""
        return self.set_many(Command(command, **parameters))[0]

    def get_many(self, *commands: Union[str, Command]) -> list[Result]:
        """Several commands in one request, each name once. It ends with the first that fails.
        Results of commands that were passed over are missing."""
        return self._process.wait(lambda: self.request_now("Get", commands))

    def set_many(self, *commands: Union[str, Command]) -> list[Result]:
        """As get_many. What earlier commands changed stays changed when a later one fails."""
        return self._process.wait(lambda: self.request_now("Set", commands))

    def send(self, root: str, document: str) -> bytes:
        """Send a request document of one's own, with the root "Get" or "Set"; the result document."""
        return self._process.wait(lambda: self._run(root, None, document.encode()))

    def snapshot(self, index: int = 0) -> bytes:
        """A picture, JPEG mostly, of the profile with that index."""
        return self._process.wait(lambda: self.snapshot_now(index))

    def snapshot_now(self, index: int) -> bytes:
        """On this thread, as the next one."""
        request = request_document("Get", [Command("snapshotURI", index=index)])
        picture = self._run("Get", "snapshotURI", request)
        if not picture:
            raise errors.BadReply("no picture came", code=4, command="snapshotURI",
                                  camera=self.name)
        return picture

    def request_now(self, root: str, commands: Sequence[Union[str, Command]]) -> list[Result]:
        """On this thread, also where Ctrl-C cannot end it."""
        rows = [Command(each) if isinstance(each, str) else each for each in commands]
        for each in rows:
            if not is_command(root, each.name) or each.name == "snapshotURI":
                raise ValueError(f"{each.name!r} is no command of {root}; send takes any document")
        if len({each.name for each in rows}) < len(rows):
            raise ValueError("a command stands in a request once; its results would be one")
        names = ", ".join(each.name for each in rows)
        reply = self._run(root, names, request_document(root, rows))
        try:
            results = read_results(root, reply)
        except ET.ParseError as error:
            raise errors.BadReply(f"the result cannot be read: {error}", code=4, command=names,
                                  camera=self.name) from error
        for result in results:
            if result.error is not None:
                code, reason = result.error
                raise errors.Refused(reason or "the device refused it", command=result.command,
                                     code=int(code) if code.isdigit() else 0, camera=self.name)
        if not results:
            raise errors.NotSent("nothing was sent: a parameter is missing", code=1,
                                 command=names, camera=self.name)
        return results

    def alarms(self, timeout: Optional[float] = None, repeats: bool = False) -> AlarmStream:
        """Alarms as they come, those that are active first. Ends when none has come for timeout
        seconds. repeats: also states that the library tells again."""
        stream = AlarmStream(timeout)
        self._process.wait(lambda: stream.begin(self._require(), repeats),
                           lambda _: stream.close())
        return stream

    def on_alarm(self, call: Callable[[Alarm], None], repeats: bool = False) -> Subscription:
        """Has a function called with every alarm, from the library's thread, which does nothing
        else meanwhile: for all cameras. What it throws is logged."""
        return self._process.wait(lambda: self.on_alarm_now(call, repeats, lambda: None),
                                  Subscription.close)

    def on_alarm_now(self, call: Callable[[Alarm], None], repeats: bool,
                     ended: Callable[[], None]) -> Subscription:
        """On this thread, which waits for the subscription. ended: called with every close."""
        return self._require().add(call, repeats, ended)

    def close(self) -> None:
        """End the session. Requests on other threads finish."""
        if not self._open:
            return
        self._open = False
        self._library.forget_camera(self)
        if _process.is_current(self._process):
            self._observers.close()
            self._process.door.logout(self._session)

    def _require(self) -> Observers:
        if not self._open or not self._library.is_open():
            raise errors.Closed("the session has ended, or belongs to a parent process",
                                code=errors.UNKNOWN_ID, camera=self.name)
        return self._observers

    def _run(self, root: str, command: Optional[str], request: bytes) -> bytes:
        self._require()
        if b"\0" in request:
            raise ValueError("a zero character cannot be sent")
        then = self._process.trace.now()
        code, reply = self._process.door.run(root, self._session, request)
        if code == errors.SUCCESS:
            return reply
        if code != errors.FAILED:
            raise errors.class_of(code)(self._process.door.error_text(code), code=code,
                                        command=command, camera=self.name)
        self._require()  # it may have been closed meanwhile
        trace = self._process.trace
        if trace.path is None:
            raise errors.Error(self._process.door.error_text(code), code=code, command=command,
                               camera=self.name)
        kind, code, reason = _why(trace.last(then, self.address))
        raise kind(reason, code=code, command=command, camera=self.name)

    def __enter__(self) -> "Camera":
        return self

    def __exit__(self, kind: Optional[Type[BaseException]], error: Optional[BaseException],
                 trace: Optional[TracebackType]) -> None:
        self.close()
