"""The library: started and stopped, and the way to cameras."""
from __future__ import annotations

import atexit
import os
import socket
import threading
from types import TracebackType
from typing import Iterable, Optional, Type, Union

from . import _log, _process, errors
from .camera import Camera

_EXTENSIONS = "ONVIF_CLIENT_EXTENSIONS"


def _settings(process: _process.Process, chosen: Optional[str]) -> dict[str, str]:
    """Variables for the start, unless the user has set them."""
    settings = {"ONVIF_CLIENT_TRACE": "off", "ONVIF_CLIENT_LISTEN_ADDRESS": "127.0.0.1"}
    if process.trace.path is not None:
        settings["ONVIF_CLIENT_TRACE_FILE"] = process.trace.path
    return {name: value for name, value in settings.items() if name not in os.environ} | (
        {} if chosen is None else {_EXTENSIONS: chosen})


class Library:
    """The started library, one at a time in a process. Any thread may use it.

    extensions: what real cameras need beyond the default, "all" or names (docs/real-cameras.md);
    None leaves it to the environment variable ONVIF_CLIENT_EXTENSIONS. The environment is as it was
    once this has returned.

    Its lines go to the logger "onvif_client.library" of logging, unless ONVIF_CLIENT_LOG_FILE names a
    file. A forked child has to make its own.
    """

    def __init__(self, extensions: Union[str, Iterable[str], None] = None) -> None:
        chosen = extensions
        if chosen is not None and not isinstance(chosen, str):
            chosen = ",".join(chosen)
        self._process = _process.current()
        self._lock = threading.Lock()  # guards the cameras
        self._cameras: set[Camera] = set()
        self._open = True
        with self._process.lock:
            if self._process.is_started:
                raise RuntimeError("the library is started already")
            self._start(chosen)
            self._process.is_started = True
        atexit.register(self.close)

    def _start(self, chosen: Optional[str]) -> None:
        process = self._process
        settings = _settings(process, chosen)
        pipe = None
        if not process.started_before and "ONVIF_CLIENT_LOG_FILE" not in os.environ:
            pipe = _log.open_pipe()
            if pipe is not None:
                settings["ONVIF_CLIENT_LOG_FILE"] = pipe.path
                names = settings.get(_EXTENSIONS, os.environ.get(_EXTENSIONS, ""))
                settings[_EXTENSIONS] = ",".join(name for name in (names, _log.FIRST_LINE) if name)
            elif "ONVIF_CLIENT_LOG" not in os.environ:
                settings["ONVIF_CLIENT_LOG"] = "off"
        before = {name: os.environ.get(name) for name in settings}
        os.environ.update(settings)
        try:
            process.door.start()
        finally:
            for name, value in before.items():
                if value is None:
                    del os.environ[name]
                else:
                    os.environ[name] = value
        process.started_before = True
        if pipe is not None:
            pipe.follow()

    @property
    def version(self) -> str:
        """That of the C library."""
        return self._process.door.version()

    def login(self, host: str, port: int = 80, user: str = "", password: str = "") -> Camera:
        """Log in to a camera: 5 to 10 exchanges. Without extensions this sets its clock to this
        machine's time. Use the camera in a with statement, or close it."""
        return self._process.wait(lambda: self.login_now(host, port, user, password),
                                  Camera.close)

    def login_now(self, host: str, port: int, user: str, password: str) -> Camera:
        """On this thread, also where Ctrl-C cannot end it."""
        name = host if port == 80 else f"{host}:{port}"
        process = self._require()
        if not 0 < port < 65536:
            raise ValueError(f"{port} is no port")
        for text in (host, user, password):
            if "\0" in text:
                raise ValueError("a zero character cannot be sent")
        try:
            address = str(socket.getaddrinfo(host, port, socket.AF_INET)[0][4][0])
        except (OSError, UnicodeError) as error:
            raise errors.Unreachable(f"{host} is not known: {error}", code=5, camera=name) from error
        then = process.trace.now()
        code, session = process.door.login(address, port, user, password)
        if code != errors.SUCCESS:
            reason = process.door.error_text(code)
            exchange = process.trace.last(then, f"{address}:{port}")
            if exchange is not None:
                reason += f" ({exchange[0]}: {' '.join(exchange[1:2] + exchange[3:])})".rstrip()
            raise errors.class_of(code)(reason, code=code, camera=name)
        camera = Camera(self, process, session, name, f"{address}:{port}")
        with self._lock:
            closed = not self._open
            self._cameras.add(camera)
        if closed:
            camera.close()
            raise errors.Closed("the library was stopped", camera=name)
        return camera

    def forget_camera(self, camera: Camera) -> None:
        """By the camera itself."""
        with self._lock:
            self._cameras.discard(camera)

    def is_open(self) -> bool:
        """Whether it is started, and by this process."""
        return self._open and _process.is_current(self._process)

    def _require(self) -> _process.Process:
        if not self.is_open():
            raise errors.Closed("the library was stopped, or belongs to a parent process")
        return self._process

    def close(self) -> None:
        """Stop the library: calls on other threads fail, and all cameras are closed."""
        with self._lock:
            was_open, self._open = self._open, False
            cameras = list(self._cameras)
        atexit.unregister(self.close)
        if not was_open or not _process.is_current(self._process):
            return
        self._process.door.stop()
        for camera in cameras:
            camera.close()
        with self._process.lock:
            self._process.is_started = False

    def __enter__(self) -> "Library":
        return self

    def __exit__(self, kind: Optional[Type[BaseException]], error: Optional[BaseException],
                 trace: Optional[TracebackType]) -> None:
        self.close()
