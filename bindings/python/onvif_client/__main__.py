"""What a camera is, and its alarms for a while: python3 -m onvif_client HOST [--user NAME]."""
import argparse
import os
import sys

from . import Error, Library


def main() -> int:
    parser = argparse.ArgumentParser(prog="python3 -m onvif_client", description=__doc__)
    parser.add_argument("host", help="address or name, with :PORT where it is not 80")
    parser.add_argument("-u", "--user", default=os.environ.get("ONVIF_USER", ""))
    parser.add_argument("-p", "--password", default=os.environ.get("ONVIF_PASSWORD", ""),
                        help="by default from ONVIF_PASSWORD")
    parser.add_argument("--for", dest="seconds", type=float, default=10, metavar="SECONDS",
                        help="end when no alarm has come for that long (10)")
    given = parser.parse_args()
    host, _, port = given.host.partition(":")
    if not host or not (port or "80").isdigit():
        parser.error(f"{given.host} is no address")
    try:
        with Library(extensions="all") as library, library.login(
                host, int(port or 80), given.user, given.password) as camera:
            for name, value in camera.get("devInfo").items():
                print(f"{name:16}  {value if value is None or value.isprintable() else ascii(value)}")
            for alarm in camera.alarms(timeout=given.seconds):
                number = "" if alarm.input is None else f" {alarm.input}"
                state = "begins" if alarm.active else "ends"
                print(f"{alarm.time:%H:%M:%S}  {alarm.kind}{number} {state}", flush=True)
    except KeyboardInterrupt:
        pass
    except (Error, ValueError) as error:
        text = str(error)
        print(text if text.isprintable() else ascii(text), file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
