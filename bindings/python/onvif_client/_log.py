"""Where the library's log lines and its account of exchanges go: to Python, past the terminal."""
from __future__ import annotations

import logging
import os
import re
import threading
from typing import Optional

_log = logging.getLogger("onvif_client.library")
_LINE = re.compile(r"[\d-]+ [\d:.]+ (\w+) (.*)")
# An extension that does not exist. The library tells of it when it is started, which is its first
# line: what it does with its lines is settled then, and the environment can be as it was before.
FIRST_LINE = "-"

# DATE TIME DEVICE OPERATION PATH OUTCOME MILLISECONDS ms REMARK (docs/logging.md)
_EXCHANGE = re.compile(r"^== \S+ \S+ (\S+) (\S+) \S+ (\S+) (\d+) ms ?(.*)$", re.MULTILINE)
_BACKGROUND = {"PullMessages", "Renew", "CreatePullPointSubscription", "Unsubscribe"}


def _reopened(descriptor: int) -> Optional[str]:
    path = f"/proc/self/fd/{descriptor}"
    return path if os.path.exists(path) else None


class LogPipe:
    """Passes the library's lines on to the logger onvif_client.library."""

    def __init__(self, read: int, write: int, path: str) -> None:
        self._read = read
        self._write = write
        self.path = path

    def follow(self) -> None:
        """Once the library has opened it."""
        os.close(self._write)
        threading.Thread(target=self._pass_on, name="onvif_client log", daemon=True).start()

    def _pass_on(self) -> None:
        with open(self._read, encoding="utf-8", errors="replace") as lines:
            for line in lines:
                found = _LINE.match(line)
                level, text = found.groups() if found else ("info", line.rstrip())
                if not text.endswith(f"there is no extension {FIRST_LINE}"):
                    _log.log(logging.ERROR if level == "error" else logging.INFO, "%s", text)


def open_pipe() -> Optional[LogPipe]:
    """None where the library could not open it."""
    read, write = os.pipe()
    path = _reopened(write)
    if path is not None:
        return LogPipe(read, write, path)
    os.close(read)
    os.close(write)
    return None


class ExchangeTrace:
    """The library's trace of exchanges, by which it can be told why a request has failed. It lies in
    memory, at most 5 MiB, without credentials."""

    def __init__(self, path: Optional[str] = None) -> None:
        """path: the file that the user has named; an empty text for none at all."""
        self.path = path or None
        if path is None and hasattr(os, "memfd_create"):
            self.path = _reopened(os.memfd_create("onvif_client"))

    def now(self) -> int:
        """A place between two exchanges."""
        try:
            return 0 if self.path is None else os.stat(self.path).st_size
        except OSError:
            return 0

    def last(self, then: int, device: str) -> Optional[tuple[str, str, str, str]]:
        """The last exchange with a device (IP:PORT) since then: operation, outcome, milliseconds,
        remark. None when there was none, or nothing is known."""
        if self.path is None:
            return None
        try:
            with open(self.path, "rb") as file:
                file.seek(then if then <= self.now() else 0)  # it was emptied
                text = file.read().decode("utf-8", errors="replace")
        except OSError:
            return None
        found = [row for row in _EXCHANGE.findall(text)
                 if row[0] == device and row[1] not in _BACKGROUND]
        return found[-1][1:] if found else None
