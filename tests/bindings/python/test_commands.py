"""Requests and their results, in the shapes that the documents promise."""
import json
import logging
import os
import pickle
import re
import socket
import subprocess
import threading
import xml.etree.ElementTree as ET

import onvif_client
import pytest
from conftest import BUILD, ROOT, until

PAGE = (ROOT / "docs" / "commands.md").read_text(encoding="utf-8")
SHAPES = json.loads((ROOT / "docs" / "result-shapes.json").read_text(encoding="utf-8"))


def examples():
    """Root, name, request and documented result (or None), in the page's order."""
    for root, name, text in re.findall(r"^### (Get|Set) (\w+)\n(.*?)(?=^##|\Z)", PAGE, re.M | re.S):
        blocks = re.findall(r"```xml\n(.*?)```", text, re.S)
        yield root, name, ET.fromstring(blocks[0]), blocks[1] if len(blocks) > 1 else None


def parameters_of(element):
    """An element of a request as Python has it."""
    if len(element) == 0:
        return element.text or ""
    found = {}
    for child in element:
        found.setdefault(child.tag, []).append(parameters_of(child))
    return {name: each[0] if len(each) == 1 else each for name, each in found.items()}


def texts_of(element):
    """The texts in a documented result, without those of statuses."""
    if element.tag in ("status", "errorCode"):
        return [each.text for each in element if each.tag not in ("errorCode", "description")]
    own = [] if len(element) else [element.text or ""]
    return own + list(element.attrib.values()) + [text for each in element for text in texts_of(each)]


def strings_of(value):
    if isinstance(value, str):
        return [value]
    parts = value.values() if isinstance(value, dict) else value or []
    return [text for part in parts for text in strings_of(part)]


def fits(value, shape):
    shape = SHAPES["definitions"][shape] if isinstance(shape, str) else shape
    if isinstance(shape, list):
        return isinstance(value, list) and all(fits(each, shape[0]) for each in value)
    if isinstance(shape, dict):
        return value is None or (value.keys() == shape.keys()
                                 and all(fits(value[name], shape[name]) for name in shape))
    return value is None or isinstance(value, str)


def test_every_command_has_its_documented_result(device):
    asked = 0
    with onvif_client.Library() as library:
        with library.login(**device.login) as camera:
            camera.set("createPullPointSubscription")
        for root, name, request, documented in examples():
            with library.login(**device.login) as camera:  # each finds the clock set
                run = camera.get if root == "Get" else camera.set
                values = parameters_of(request[0]) or {}
                if name == "snapshotURI":
                    assert camera.snapshot(int(values["index"])).startswith(b"\xff\xd8")
                elif documented is None or "fail<" in documented:
                    with pytest.raises(onvif_client.Error):
                        run(request[0].tag, **values)
                else:
                    result = run(request[0].tag, **values)
                    assert result.command == name and "Response>" in result.xml
                    assert fits(dict(result), SHAPES[root][name]), name
                    wanted = [text for each in ET.fromstring(documented.encode())
                              for text in texts_of(each) if text]
                    found = [text for text in strings_of(result) if text]
                    assert len(found) == len(wanted), name
                    for text in wanted:
                        assert "…" in text or text in found, f"{name}: {text}"
                asked += 1
    assert asked >= 54


def test_results_are_those_of_the_tool(camera, device):
    names = ["devInfo", "ipv4", "dns", "profiles", "imageOpts", "alarmout",
             "alarmin", "streamCount", "serviceUrl", "motion", "presets", "cruises", "osd",
             "osdoption"]
    told = subprocess.run(
        [BUILD / "onvifctl", "get", device.address, *names, "--format", "json"], check=True,
        capture_output=True, env={**os.environ, "ONVIF_USER": "admin", "ONVIF_PASSWORD": "camera-1"})
    results = json.loads(told.stdout)["results"]
    assert [each["command"] for each in results] == names
    assert [dict(each) for each in camera.get_many(*names)] == [each["values"] for each in results]


def test_parameters_of_all_kinds_reach_the_device(camera):
    first = onvif_client.Command("streamURI", index=0)
    both = camera.get_many("devInfo", first)
    assert [each.command for each in both] == ["devInfo", "streamURI"]
    assert both[1]["uri"] != camera.get("streamURI", index=1)["uri"]
    with pytest.raises(ValueError):
        camera.get_many(first, onvif_client.Command("streamURI", index=1))
    camera.set("imageSettings", brightness=61.5, exposure={"mode": "MANUAL", "gain": None})
    assert camera.get("imageSettings")["brightness"] == "61.5"
    token = camera.set("addPreset", presetName="<Gate & yard>")["presetToken"]
    presets = {each["presetToken"]: each["presetName"] for each in camera.get("presets")["item"]}
    assert presets[token] == "<Gate & yard>"
    assert b"<devInfo>" in camera.send("Get", "<Get><devInfo/></Get>")
    for wrong in ("noSuchCommand", "snapshotURI", "devInfo/><dns"):
        with pytest.raises(ValueError):
            camera.get(wrong)
    for wrong in ({"a b": 1}, {"presetName": "\0"}, {"presetName": "\x1b"}):
        with pytest.raises(ValueError):
            camera.set("addPreset", **wrong)


FAILURES = [
    # fault of the device, the exception, its code, a part of its reason
    ("close", onvif_client.Unreachable, 5, "closed the connection"),
    ("soapfault:Sender,NotAuthorized,Ask your boss", onvif_client.NotAuthorized, 401, "Ask your boss"),
    ("status:503", onvif_client.BadReply, 4, "503"),
    ("soapfault:Receiver,Action/Busy,Try later", onvif_client.Refused, None, "Try later"),
]


@pytest.mark.parametrize("fault,kind,code,reason", FAILURES)
def test_a_failure_tells_its_cause(camera, device, fault, kind, code, reason):
    device.control("faults", f"GetDeviceInformation@1={fault}")
    with pytest.raises(kind) as raised:
        camera.get("devInfo")
    error = raised.value
    assert error.command == "devInfo" and error.camera == device.address
    assert code in (None, error.code) and reason in error.reason
    again = pickle.loads(pickle.dumps(error))
    assert (type(again), str(again), again.code) == (kind, str(error), error.code)
    assert camera.get("devInfo")["model"] == "SIM-DOME"


def test_logins_and_sessions_fail_in_their_own_ways(library, device):
    with socket.socket() as closed:
        closed.bind(("127.0.0.1", 0))
        with pytest.raises(onvif_client.Unreachable):
            library.login("127.0.0.1", closed.getsockname()[1])
    with pytest.raises(onvif_client.NotAuthorized) as refused:
        library.login(**{**device.login, "password": "wrong"})
    assert refused.value.code == 401
    with pytest.raises(onvif_client.Unreachable):
        library.login("no-such-host.invalid", 80)
    for wrong in ({"port": 0}, {"user": "a\0b"}):
        with pytest.raises(ValueError):
            library.login(**{**device.login, **wrong})
    with pytest.raises(RuntimeError):
        onvif_client.Library()
    camera = library.login(**device.login)
    with pytest.raises(onvif_client.NotSent):
        camera.get("streamURI")
    camera.close()
    camera.close()
    for use in (lambda: camera.get("devInfo"), camera.snapshot, camera.alarms):
        with pytest.raises(onvif_client.Closed):
            use()
    last = library.login(**device.login)
    library.close()
    for use in (lambda: last.get("devInfo"), lambda: library.login(**device.login)):
        with pytest.raises(onvif_client.Closed):
            use()


def test_eight_threads_ask_at_once(camera, device):
    wrong = []

    def ask():
        try:
            for _ in range(200):
                if camera.get("devInfo")["model"] != "SIM-DOME":
                    wrong.append("another model")
        except Exception as error:  # pylint: disable=broad-except
            wrong.append(error)

    before = device.count("GetDeviceInformation")
    threads = [threading.Thread(target=ask) for _ in range(8)]
    for each in threads:
        each.start()
    for each in threads:
        each.join()
    assert not wrong and device.count("GetDeviceInformation") - before == 1600


def test_memory_stays_flat(camera):
    def kilobytes():
        with open("/proc/self/status", encoding="ascii") as status:
            return int(re.search(r"VmRSS:\s+(\d+)", status.read()).group(1))

    def ask(times):
        for _ in range(times):
            camera.get("devInfo")

    ask(2500)  # the trace, which is kept in memory, has come to its full size
    before = kilobytes()
    ask(2500)
    assert kilobytes() - before < 2048


def test_the_librarys_lines_come_to_logging(library, device, caplog):
    caplog.set_level(logging.INFO, "onvif_client.library")
    library.login(**device.login).close()
    until(lambda: "login process takes" in caplog.text)
    assert device.address in caplog.text
    assert "no extension" not in caplog.text
    assert not [name for name in os.environ if re.match("ONVIF_CLIENT_(LOG|TRACE|EXT)", name)]
