"""Simulated cameras for the tests of the package onvif_client."""
import json
import os
import pathlib
import subprocess
import sys
import time
import urllib.request

import pytest

ROOT = pathlib.Path(__file__).resolve().parents[3]
PACKAGE = ROOT / "bindings" / "python"
BUILD = pathlib.Path(os.environ["ONVIF_CLIENT_BUILD"])
os.environ.setdefault("ONVIF_CLIENT_C_LIBRARY", str(BUILD / "libonvif_client_c.so.1"))
sys.path.insert(0, str(PACKAGE))

import onvif_client  # noqa: E402


def until(holds, seconds=30):
    """Waits for what others do, far longer than it takes."""
    end = time.monotonic() + seconds
    while not holds():
        assert time.monotonic() < end, "waited in vain"
        time.sleep(0.005)


class Camera:
    """One that the simulator plays."""

    def __init__(self, address):
        self.address = address
        self.host, port = address.split(":")
        self.port = int(port)
        self.login = {"host": self.host, "port": self.port, "user": "admin", "password": "camera-1"}

    def control(self, path, text=None):
        data = None if text is None else text.encode()
        with urllib.request.urlopen(f"http://{self.address}/control/{path}", data, 30) as reply:
            return reply.read().decode()

    def motion(self, active):
        self.control("motion", "true" if active else "false")

    def count(self, operation):
        return json.loads(self.control("counters")).get(f"tds:{operation}", 0)

    def pulled_from(self):
        return any(each["waitingPulls"] for each in json.loads(self.control("subscriptions")))


@pytest.fixture(name="cameras")
def make_cameras():
    """cameras(N, OPTIONS...) starts N cameras, which end with the test."""
    running = []

    def start(number=1, *options):
        process = subprocess.Popen(
            [BUILD / "onvif-camera-sim", "--exit-with-stdin", "--cameras", str(number), *options],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        running.append(process)
        return [Camera(process.stdout.readline().split()[-1]) for _ in range(number)]

    yield start
    for process in running:
        process.stdin.close()
        process.wait(30)
        process.stdout.close()


@pytest.fixture(name="device")
def make_device(cameras):
    return cameras()[0]


@pytest.fixture(name="library")
def start_library():
    with onvif_client.Library(extensions="all") as library:
        yield library


@pytest.fixture(name="camera")
def log_in(library, device):
    with library.login(**device.login) as camera:
        yield camera


def program(text, *arguments, **options):
    """Starts a Python program that has the package."""
    return subprocess.Popen(
        [sys.executable, "-X", "dev", "-c", text, *map(str, arguments)], text=True,
        env={**os.environ, "PYTHONPATH": str(PACKAGE)}, stdin=subprocess.PIPE,
        stdout=subprocess.PIPE, stderr=subprocess.PIPE, **options)


def said_by(process, seconds=60):
    """Standard output, once it has ended well and without a word on standard error."""
    out, err = process.communicate(timeout=seconds)
    assert (process.returncode, err) == (0, "")
    return out
