"""Request documents from commands and their parameters."""
from __future__ import annotations

from typing import Any, Mapping, Sequence, Union
from xml.sax.saxutils import escape

# A list is an element that is repeated, a mapping one with parts, None one that is left out.
Parameter = Union[str, int, float, None, Mapping[str, Any], Sequence[Any]]


class Command:
    """A command of docs/commands.md with its parameters, for requests of several commands."""

    def __init__(self, name: str, /, **parameters: Parameter) -> None:
        self.name = name
        self.parameters = parameters

    def __repr__(self) -> str:
        told = "".join(f", {name}={value!r}" for name, value in self.parameters.items())
        return f"Command({self.name!r}{told})"


def _text(value: Union[str, int, float]) -> str:
    if isinstance(value, bool):
        return "true" if value else "false"
    text = str(value)
    if any(ord(each) < 0x20 and each not in "\t\r\n" for each in text):
        raise ValueError(f"{text!r} has characters that XML does not have")
    return escape(text)


def _element(name: str, value: Parameter) -> str:
    if not name.replace("_", "").isalnum() or not name[:1].isalpha():
        raise ValueError(f"{name!r} is no name of a command or parameter")
    if value is None:
        return ""
    if isinstance(value, Mapping):
        parts = "".join(_element(part, each) for part, each in value.items())
        return f"<{name}>{parts}</{name}>"
    if isinstance(value, (str, int, float)):
        return f"<{name}>{_text(value)}</{name}>"
    return "".join(_element(name, each) for each in value)


def request_document(root: str, commands: Sequence[Command]) -> bytes:
    """The document of a request; ValueError for what cannot stand in one."""
    body = "".join(_element(each.name, each.parameters) for each in commands)
    return f'<{root} version="1.0" systemType="ipc">{body}</{root}>'.encode()
