"""python -m quelvixwinlib scan [--seconds S] [--simulated]"""
import argparse
import sys

from . import Library, OrvError, __version__, scan


def main() -> int:
    parser = argparse.ArgumentParser(prog="python -m quelvixwinlib")
    parser.add_argument("--version", action="version", version=__version__)
    parser.add_argument("command", choices=["scan"])
    parser.add_argument("--seconds", type=float, default=2.0, help="how long to scan; default 2")
    parser.add_argument("--simulated", action="store_true", help="use the simulated world")
    options = parser.parse_args()
    try:
        library = Library("simulated" if options.simulated else "radio")
        if not library.available():
            print("no Bluetooth radio is on", file=sys.stderr)
            return 1
        for device in scan(options.seconds, library):
            # A device chooses its name, so escape sequences in it must not reach the terminal.
            name = "".join(letter if letter.isprintable() else "\ufffd" for letter in device.name)
            print("%s  %4d dBm  %s" % (device.address, device.rssi, name))
    except OrvError as error:
        print("quelvixwinlib: %s" % error, file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
