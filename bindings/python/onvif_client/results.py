"""Result documents as dicts and lists, in the shapes of result-shapes.json: those of the tool."""
from __future__ import annotations

import json
import pathlib
import xml.etree.ElementTree as ET
from typing import Any, Optional

_NO_VALUE = ("errorCode", "description")


class Result(dict[str, Any]):
    """The values of a command: a dict whose members never come and go. Lists are lists, whatever
    the number of their items; what the device did not tell is None or []; values are texts.

    command: its name. xml: the whole result document. error: None, or the device's error code and
    its reason.
    """

    def __init__(self, command: str, values: dict[str, Any], xml: str) -> None:
        super().__init__(values)
        self.command = command
        self.xml = xml
        self.error: Optional[tuple[str, str]] = None


def _resolved(shape: Any, definitions: dict[str, Any]) -> Any:
    if isinstance(shape, str):
        return _resolved(definitions[shape], definitions)
    if isinstance(shape, list):
        return [_resolved(each, definitions) for each in shape]
    if isinstance(shape, dict):
        return {name: _resolved(each, definitions) for name, each in shape.items()}
    return shape


def _read_shapes() -> dict[str, Any]:
    path = pathlib.Path(__file__).with_name("result-shapes.json")
    shapes: dict[str, Any] = json.loads(path.read_text(encoding="utf-8"))
    for root in ("Get", "Set"):
        shapes[root] = _resolved(shapes[root], shapes["definitions"])
    return shapes


_SHAPES = _read_shapes()


def is_command(root: str, name: str) -> bool:
    """Whether docs/commands.md has it."""
    return name in _SHAPES[root]


def _nothing(shape: dict[str, Any]) -> dict[str, Any]:
    return {name: [] if isinstance(part, list) else None for name, part in shape.items()}


def _add(child: ET.Element, shape: dict[str, Any], values: dict[str, Any]) -> None:
    name = child.tag
    if name not in shape:  # nothing is known of it: any number may follow
        plain = len(child) == 0 and not child.attrib
        values.setdefault(name, []).append(_convert(child, None if plain else {}))
    elif isinstance(shape[name], list):
        values[name].append(_convert(child, shape[name][0]))
    elif values[name] is None:
        values[name] = _convert(child, shape[name])


def _convert(element: ET.Element, shape: Optional[dict[str, Any]]) -> Any:
    if shape is None:
        return element.text or ""
    values = _nothing(shape)
    values.update(element.attrib)
    if "text" in shape:
        values["text"] = element.text or ""
    for child in element:
        _add(child, shape, values)
    return values


def _read_status(status: ET.Element, command: ET.Element, shape: dict[str, Any],
                 result: Result) -> None:
    """What a status tells, and what stands in it beside an error."""
    if status.text == "fail" and result.error is None:
        # Some commands have the code beside the status.
        code = status.findtext("errorCode") or command.findtext("errorCode") or ""
        result.error = (code, status.findtext("description") or "")
    for child in status:
        if child.tag not in _NO_VALUE:
            _add(child, shape, result)


def _read_command(element: ET.Element, shape: dict[str, Any], result: Result) -> None:
    if "text" in shape:
        result["text"] = element.text or ""
    for child in element:
        status = child.find("status")
        if child.tag == "status":
            _read_status(child, element, shape, result)
        elif status is not None:  # of a second request of the command's
            _read_status(status, child, shape, result)
        elif child.tag != "errorCode":
            _add(child, shape, result)


def read_results(root: str, document: bytes) -> list[Result]:
    """One for each command that reported; ET.ParseError for what is no result document."""
    xml = document.decode("utf-8", errors="replace")
    results = []
    for element in ET.fromstring(xml.encode()):
        command = _SHAPES["resultNames"][root].get(element.tag, element.tag)
        shape = _SHAPES[root].get(command, {})
        result = Result(command, _nothing(shape), xml)
        _read_command(element, shape, result)
        results.append(result)
    return results
