"""The functions of libonvif_client_c, by ctypes, which lets other threads run during each call."""
from __future__ import annotations

import ctypes
import logging
import os
import sys
from typing import Callable, Optional

from . import errors

Hear = Callable[[int, int, bool], None]  # kind, input, active

MOTION = 0

_log = logging.getLogger("onvif_client.alarms")
_Observer = ctypes.CFUNCTYPE(None, ctypes.c_void_p, ctypes.c_uint32, ctypes.c_int, ctypes.c_uint,
                             ctypes.c_int)
_NAMES = {"win32": "libonvif_client_c-1.dll", "darwin": "libonvif_client_c.1.dylib"}


def _load() -> ctypes.CDLL:
    name = os.environ.get("ONVIF_CLIENT_C_LIBRARY") or _NAMES.get(
        sys.platform, "libonvif_client_c.so.1")
    try:
        library = ctypes.CDLL(name)
    except OSError as error:
        raise ImportError(f"{name} cannot be loaded ({error}): install the package "
                          "libonvif-client-c1, or let ONVIF_CLIENT_C_LIBRARY name the file"
                          ) from error
    text, pointer = ctypes.c_char_p, ctypes.c_void_p
    session, error_code = ctypes.c_uint32, ctypes.c_int
    size = ctypes.POINTER(ctypes.c_size_t)
    for function, result, arguments in (
            ("version", text, []),
            ("error_text", text, [ctypes.c_int]),
            ("start", error_code, []),
            ("stop", None, []),
            ("login", error_code, [text, ctypes.c_uint16, text, text, ctypes.POINTER(session)]),
            ("logout", None, [session]),
            ("get", error_code, [session, text, ctypes.POINTER(pointer), size]),
            ("set", error_code, [session, text, ctypes.POINTER(pointer), size]),
            ("free", None, [pointer]),
            ("observe", error_code, [session, _Observer, pointer]),
            ("forget", None, [session])):
        called = getattr(library, "onvif_client_" + function)
        called.restype = result
        called.argtypes = arguments
    return library


class Door:
    """All that the package asks of the C library. Any thread."""

    def __init__(self) -> None:
        self._library = _load()
        self._free = self._library.onvif_client_free
        self._runs = {"Get": self._library.onvif_client_get, "Set": self._library.onvif_client_set}
        self._hears: dict[int, Hear] = {}
        # One for all observers, which never goes: the library may be about to call it.
        self._observer = _Observer(self._tell)

    def version(self) -> str:
        return str(self._library.onvif_client_version().decode())

    def error_text(self, code: int) -> str:
        return str(self._library.onvif_client_error_text(code).decode())

    def start(self) -> None:
        self._library.onvif_client_start()

    def stop(self) -> None:
        self._library.onvif_client_stop()

    def login(self, address: str, port: int, user: str, password: str) -> tuple[int, int]:
        """The error code and the session."""
        session = ctypes.c_uint32()
        code = self._library.onvif_client_login(address.encode(), port, user.encode(),
                                                password.encode(), ctypes.byref(session))
        return code, session.value

    def logout(self, session: int) -> None:
        self._library.onvif_client_logout(session)
        self._hears.pop(session, None)

    def run(self, root: str, session: int, request: bytes) -> tuple[int, bytes]:
        """The error code and the document or picture."""
        result = ctypes.c_void_p()
        size = ctypes.c_size_t()
        code = self._runs[root](session, request, ctypes.byref(result), ctypes.byref(size))
        if not result:
            return code, b""
        try:
            return code, ctypes.string_at(result, size.value)
        finally:
            self._free(result)

    def observe(self, session: int, hear: Hear) -> int:
        """The error code."""
        self._hears[session] = hear
        code: int = self._library.onvif_client_observe(session, self._observer, None)
        if code != errors.SUCCESS:
            self._hears.pop(session, None)
        return code

    def forget(self, session: int) -> None:
        """Waits for a callback that runs on another thread."""
        self._library.onvif_client_forget(session)

    def _tell(self, _context: Optional[int], session: int, kind: int, number: int,
              active: int) -> None:
        hear = self._hears.get(session)
        if hear is not None:
            try:
                hear(kind, number, bool(active))
            except BaseException:  # nobody else would hear of it
                _log.exception("what an alarm was passed on to has failed")
