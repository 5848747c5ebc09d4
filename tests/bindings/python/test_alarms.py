"""Alarms, by iteration, by callback and for asyncio."""
import asyncio
import logging
import threading
import time

import onvif_client
import pytest
from conftest import until
from onvif_client import aio


def told_of(alarms, kind="motion"):
    return [each.active for each in alarms if each.kind == kind]


def test_alarms_are_told_once_and_to_all(camera, device):
    with camera.alarms(timeout=30) as stream:
        device.motion(True)
        first = next(stream)
        assert (first.camera, first.kind, first.input, first.active) == (
            device.address, "motion", None, True)
        heard = []
        with camera.on_alarm(heard.append):  # what is active is told to who comes later
            assert told_of(heard) == [True]
            device.control("inputs/Input_2", "true")
            alarm = next(stream)
            assert (alarm.kind, alarm.input, alarm.active) == ("alarm-input", 2, True)
            device.motion(False)
            assert not next(stream).active
            until(lambda: len(heard) == 3)
        device.motion(True)
        assert next(stream).active
        assert len(heard) == 3
    assert list(stream) == []
    again = camera.alarms(timeout=30)
    assert {next(again).kind, next(again).kind} == {"alarm-input", "motion"}


def test_states_that_the_library_repeats_are_passed_on_once_unless_asked_for(cameras):
    device = cameras()[0]
    with onvif_client.Library() as library, library.login(**device.login) as camera:
        once, again = [], []
        with camera.on_alarm(once.append), camera.on_alarm(again.append, repeats=True):
            device.motion(True)
            until(lambda: len(told_of(again)) > 5)  # from the sixth second on
        assert told_of(once) == [True]


def test_a_callback_may_end_itself_and_fail(camera, device, caplog):
    calls = []

    def close(alarm):
        calls.append(alarm)
        subscriptions[0].close()
        camera.get("devInfo")

    def fail(alarm):
        calls.append(alarm)
        raise KeyError("a fault in the program")

    subscriptions = [camera.on_alarm(close), camera.on_alarm(fail)]
    with camera.alarms() as stream, caplog.at_level(logging.ERROR):
        for active in (True, False):
            device.motion(active)
            assert next(stream).active == active
    assert len(calls) == 3 and caplog.text.count("KeyError: ") == 2
    camera.close()
    device.motion(True)
    assert len(calls) == 3


def test_removing_waits_for_a_callback_that_runs(camera, device):
    inside, leave, done = threading.Event(), threading.Event(), []

    def slow(_alarm):
        inside.set()
        leave.wait(30)
        time.sleep(0.05)
        done.append(True)

    subscription = camera.on_alarm(slow)
    device.motion(True)
    assert inside.wait(30)
    leave.set()
    subscription.close()
    assert done


def test_who_waits_for_alarms_is_woken_when_the_camera_is_closed(camera):
    threading.Timer(0.2, camera.close).start()
    assert list(camera.alarms()) == []


def test_observers_come_and_go(cameras, library):
    """A late call would find its list closed; what stays behind shows in the library's tables."""
    device = cameras(1, "--motion-period", "3", "--max-subscriptions", "100000")[0]
    with library.login(**device.login) as camera:
        late, calls = [], []
        for number in range(3000):
            ended = []
            with camera.on_alarm(lambda _, gone=ended: (late if gone else calls).append(1)):
                if number % 500 == 0:
                    before = len(calls)
                    until(lambda: len(calls) > before)
            ended.append(True)
        assert calls and not late
        assert not camera._observers._subscriptions and not camera._observers._observed


def test_a_camera_that_restarts_is_heard_again(camera, device):
    with camera.alarms(timeout=150) as stream:
        device.motion(True)
        assert next(stream).active
        device.control("reboot", "")
        device.motion(False)  # told by the next subscription, 100 s later at the latest
        assert not next(stream).active


def test_asyncio_asks_and_hears_without_blocking(device):
    async def run():
        ticks = []

        async def tick():
            while True:
                ticks.append(time.monotonic())
                await asyncio.sleep(0.01)

        ticking = asyncio.create_task(tick())
        async with aio.Library(extensions="all") as library:
            async with library.login(**device.login) as camera:
                device.control("faults", "GetDeviceInformation@1=delay:3000")
                results = await asyncio.gather(camera.get("devInfo"), camera.get("dns"),
                                               camera.snapshot())
                assert results[0]["model"] == "SIM-DOME" and results[2].startswith(b"\xff\xd8")
                device.motion(True)
                stream = camera.alarms(timeout=30)
                assert (await anext(stream)).active
                assert [each.active async for each in camera.alarms(timeout=0)] == [True]
                device.control("faults", "GetDeviceInformation@1=silence")
                with pytest.raises(asyncio.TimeoutError):
                    await asyncio.wait_for(camera.get("devInfo"), 0.3)
                with pytest.raises(ValueError):
                    await camera.get("noSuchCommand")
                waiting = asyncio.create_task(anext(stream, "ended"))
                await asyncio.sleep(0.1)
            assert await waiting == "ended"
        ticking.cancel()
        return max(after - before for before, after in zip(ticks, ticks[1:]))

    assert asyncio.run(run()) < 2.5


def test_a_hundred_cameras_are_observed_from_asyncio(cameras):
    devices = cameras(100)

    async def hear(library, device):
        async with library.login(**device.login) as camera:
            async with camera.alarms(timeout=60) as alarms:
                heard = []
                async for alarm in alarms:
                    assert alarm.camera == device.address
                    heard.append(alarm.active)
                    if len(heard) == 4:
                        return heard

    async def move():
        for active in (True, False, True, False):
            for device in devices:
                await asyncio.get_running_loop().run_in_executor(None, device.motion, active)

    async def run():
        async with aio.Library(extensions="all") as library:
            hearing = [asyncio.create_task(hear(library, device)) for device in devices]
            while not all(each.pulled_from() for each in devices):
                await asyncio.sleep(0.1)
            await move()
            return await asyncio.gather(*hearing)

    assert asyncio.run(run()) == [[True, False, True, False]] * 100
