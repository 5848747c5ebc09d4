"""Programs as a whole: what they print, how they are interrupted, forked and ended."""
import signal
import time

import pytest
from conftest import program, said_by

LOGIN = """
import sys, onvif_client
library = onvif_client.Library(extensions="all")
camera = library.login(sys.argv[1], int(sys.argv[2]), "admin", "camera-1")
"""


def run(text, device, **options):
    return said_by(program(LOGIN + text, device.host, device.port, **options))


def test_a_program_that_asks_for_no_lines_gets_none(device):
    assert run("""
import socket
for name in ("devInfo", "dns", "profiles"):
    camera.get(name)
try:
    library.login("127.0.0.1", 1, "admin", "x")
except onvif_client.Unreachable:
    pass
list(camera.alarms(timeout=0.3))
camera.close()
library.close()
with onvif_client.Library() as library:  # sets the clock, and traces
    library.login(sys.argv[1], int(sys.argv[2]), "admin", "camera-1").get("ipv4")
""", device) == ""


def test_without_a_trace_a_failure_is_told_all_the_same(device, monkeypatch):
    device.control("faults", "GetDeviceInformation@1=close")
    monkeypatch.setenv("ONVIF_CLIENT_TRACE_FILE", "")
    assert run("""
try:
    camera.get("devInfo")
except onvif_client.Error as error:
    print(type(error).__name__, error.code)
""", device) == "Error -1\n"


@pytest.mark.parametrize("end", [
    "",
    "library.close(); library.close()",
    "camera.on_alarm(lambda alarm: time.sleep(0.2)); time.sleep(0.5)",
    "threading.Thread(target=camera.alarms().__next__, daemon=True).start()",
    "threading.Thread(target=camera.get, args=['dns'], daemon=True).start(); time.sleep(0.5)",
    "import asyncio; from onvif_client import aio\n"
    "async def run():\n await asyncio.wait_for(aio.Camera(camera).get('dns'), 0.5)\n"
    "try:\n asyncio.run(run())\nexcept asyncio.TimeoutError:\n pass",
])
def test_a_program_ends_at_once_whatever_goes_on(cameras, end):
    device = cameras(1, "--motion-period", "50", "--fault", "GetDNS=silence")[0]
    text = "import threading, time\nthreading.excepthook = lambda _: None\n"
    text += "camera.on_alarm(lambda alarm: None)\n"
    process = program(LOGIN + text + end + "\nprint('end', flush=True)", device.host, device.port)
    assert process.stdout.readline() == "end\n"
    before = time.monotonic()
    assert said_by(process) == ""
    assert time.monotonic() - before < 6  # the call in progress would take 8


def test_an_interrupt_reaches_a_call_that_waits(device):
    device.control("faults", "GetDeviceInformation@1=silence")
    process = program(LOGIN + """
print("asking", flush=True)
try:
    camera.get("devInfo")
except KeyboardInterrupt:
    print("interrupted", flush=True)
print(camera.get("devInfo")["model"])
""", device.host, device.port)
    assert process.stdout.readline() == "asking\n"
    while device.count("GetDeviceInformation") == 0:
        time.sleep(0.01)
    before = time.monotonic()
    process.send_signal(signal.SIGINT)
    assert said_by(process) == "interrupted\nSIM-DOME\n"
    assert time.monotonic() - before < 6


def test_a_forked_child_begins_anew_and_the_parent_goes_on(device):
    device.motion(True)
    assert run("""
import os
subscription = camera.on_alarm(lambda alarm: None)
child = os.fork()
if child == 0:
    for use in (lambda: camera.get("devInfo"), lambda: library.login("127.0.0.1")):
        try:
            use()
        except onvif_client.Closed:
            print("closed", flush=True)
    with onvif_client.Library(extensions="all") as own:
        with own.login(sys.argv[1], int(sys.argv[2]), "admin", "camera-1") as mine:
            with mine.alarms(timeout=30) as alarms:
                print(next(alarms).kind, flush=True)
else:
    assert os.waitpid(child, 0)[1] == 0
    print(camera.get("devInfo")["model"])
""", device) == "closed\nclosed\nmotion\nSIM-DOME\n"
