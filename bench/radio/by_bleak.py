#!/usr/bin/env python3
"""Connects, receives and disconnects like radio.c, but with Bleak, a widely used Python client.

Usage: by_bleak.py ADDRESS
"""
import asyncio
import resource
import sys
import time

from bleak import BleakClient

STREAM = "fec26ec4-6d71-4442-9f81-55bc21d658d6"


def processor_us():
    usage = resource.getrusage(resource.RUSAGE_SELF)
    return (usage.ru_utime + usage.ru_stime) * 1e6


class Client:
    def __init__(self, address):
        self.address, self.client, self.count = address, None, 0

    async def connect(self, _):
        start = time.monotonic()
        try:
            self.client = BleakClient(self.address)
            await self.client.connect(timeout=10)
            await self.client.start_notify(STREAM, self.notified)
        except Exception as error:  # pylint: disable=broad-except
            print("bleak: %s" % error, file=sys.stderr)
            return "-1"
        return "%d" % ((time.monotonic() - start) * 1e3)

    def notified(self, _, data):
        self.count += len(data)

    async def receive(self, wanted):
        before, first, last, seen = processor_us(), 0, time.monotonic(), 0
        while self.count < wanted and time.monotonic() - last < 3:
            await asyncio.sleep(0.01)
            if self.count > seen:
                seen, last = self.count, time.monotonic()
                first = first or last
        return "%d %d %d" % (self.count, (last - first) * 1e3, processor_us() - before)

    async def disconnect(self, _):
        await self.client.disconnect()
        return "0"


async def main():
    client = Client(sys.argv[1])
    while True:
        line = await asyncio.get_running_loop().run_in_executor(None, sys.stdin.readline)
        if not line:
            break
        command, _, number = line.strip().partition(" ")
        print(await getattr(client, command)(int(number or 0)), flush=True)


asyncio.run(main())
