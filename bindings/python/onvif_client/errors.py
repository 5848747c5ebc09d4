"""What can go wrong, as exceptions."""
from __future__ import annotations

from typing import Optional, Type


class Error(Exception):
    """A login or a request failed.

    code: the library's or the device's number. command: the name of the command, None for a login.
    reason: why, in the device's words where it told any. camera: its name as given to login.
    """

    def __init__(self, reason: str, *, code: int = 0, command: Optional[str] = None,
                 camera: str = "") -> None:
        self.reason = reason
        self.code = code
        self.command = command
        self.camera = camera
        parts = [part for part in (camera, command) if part]
        super().__init__(": ".join([*parts, reason]))

    def __reduce__(self) -> tuple[object, ...]:
        return _again, (type(self), self.reason, self.code, self.command, self.camera)


def _again(kind: Type[Error], reason: str, code: int, command: Optional[str],
           camera: str) -> Error:
    return kind(reason, code=code, command=command, camera=camera)


class Unreachable(Error):
    """The device did not answer, or not in time."""


class NotAuthorized(Error):
    """The device refused the credentials, or this account may not do it."""


class Refused(Error):
    """The device answered that it does not do it. reason is what it said, code its error code."""


class BadReply(Error):
    """The device answered something that the library cannot use."""


class NotSent(Error):
    """Nothing was sent: a parameter is missing, an index is out of range, there is no such
    command."""


class Closed(Error):
    """The session has ended, the library was stopped, or both belong to a parent process."""


# What the C library returns.
SUCCESS = 0
FAILED = -1
UNKNOWN_ID = -2

_BY_CODE = {1: NotSent, 4: BadReply, 5: Unreachable, 7: BadReply, 401: NotAuthorized,
            UNKNOWN_ID: Closed}


def class_of(code: int) -> Type[Error]:
    """The exception that a code of the library's stands for."""
    return _BY_CODE.get(code, Error if code < 0 else BadReply)
