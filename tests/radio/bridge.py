#!/usr/bin/env python3
"""Tests `orv bridge` with a device that echoes, through a pseudo-terminal and then a socket.

Usage: bridge.py ORV DEVICE
"""
import os
import re
import socket
import subprocess
import sys
import time

import dbus

SENT = bytes(i * 7 & 255 for i in range(8192))


def await_end(device):
    """Waits for the end of the link. The daemon closes it 2 s after a disconnect request, even if
    another process has connected meanwhile."""
    manager = dbus.Interface(dbus.SystemBus().get_object("org.bluez", "/"), "org.freedesktop.DBus.ObjectManager")
    while any(interfaces.get("org.bluez.Device1", {}).get("Connected")
              for path, interfaces in manager.GetManagedObjects().items()
              if path.endswith(device.replace(":", "_"))):
        time.sleep(0.1)


def main():
    orv, device = sys.argv[1:]
    for kind in (["pty"], ["tcp", "--listen", "0"]):
        await_end(device)
        bridge = subprocess.Popen([orv, "bridge", *kind, device], stdout=subprocess.PIPE, text=True)
        place = re.search(r" at (\S+): ", bridge.stdout.readline()).group(1)
        if kind == ["pty"]:
            client = os.fdopen(os.open(place, os.O_RDWR | os.O_NOCTTY), "rb+", buffering=0)
        else:
            peer = socket.create_connection(place.split(":"))
            client = peer.makefile("rwb", buffering=0)
        received = b""
        for start in range(0, len(SENT), 1024):
            client.write(SENT[start:start + 1024])
            while len(received) < start + 1024:
                received += client.read(65536)
        bridge.terminate()
        bridge.wait()
        if received != SENT:
            sys.exit(f"{kind}: {len(received)} bytes came back, not those that were sent")
    await_end(device)


if __name__ == "__main__":
    main()
