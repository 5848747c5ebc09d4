"""Talk to IP cameras and recorders over ONVIF.

    import onvif_client

    with onvif_client.Library(extensions="all") as library:
        with library.login("192.168.1.64", user="admin", password="secret") as camera:
            print(camera.get("devInfo")["model"])
            picture = camera.snapshot(index=0)
            for alarm in camera.alarms(timeout=60):
                print(alarm)

onvif_client.aio has the same for asyncio. docs/other-languages.md says more, docs/commands.md has
the commands.
"""
import logging

from ._version import VERSION as __version__
from .alarms import Alarm, AlarmStream, Subscription
from .camera import Camera
from .documents import Command, Parameter
from .errors import BadReply, Closed, Error, NotAuthorized, NotSent, Refused, Unreachable
from .library import Library
from .results import Result

__all__ = [
    "Alarm", "AlarmStream", "BadReply", "Camera", "Closed", "Command", "Error", "Library",
    "NotAuthorized", "NotSent", "Parameter", "Refused", "Result", "Subscription", "Unreachable",
    "__version__",
]

# The library's own lines are for who asks for them; a failing callback is for everybody.
logging.getLogger("onvif_client.library").addHandler(logging.NullHandler())
