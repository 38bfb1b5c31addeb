"""Tests the behaviours that all bindings share, listed in the file $ORV_BEHAVIOURS, and Python's features."""
import asyncio
import ctypes
import json
import os
import subprocess
import sys
import threading

import pytest
import quelvixwinlib
from quelvixwinlib import Closed, OrvError, Scanner, _native, aio, connect
from quelvixwinlib.address import address_number

pytest_plugins = ["quelvixwinlib.simulated"]


def load(variable):
    with open(os.environ[variable], encoding="utf-8") as file:
        return json.load(file)


class Run:
    def __init__(self, world):
        self.world, self.named = world, {}

    def scan(self, step):
        with Scanner() as scanner:
            self.world.pass_time(step["ms"] / 1000)
            found = [dict(vars(device), data1118=device.data1118.hex()) for device in scanner.devices()]
        found.sort(key=lambda device: device["address"])  # devices advertise in any order
        wanted = step["gives"]
        assert len(found) == len(wanted)
        return [{key: device[key] for key in keys} for device, keys in zip(found, wanted)]

    def result(self, step):
        do, subject = step["do"], self.named.get(step.get("of") or step.get("to"))
        if do == "available":
            return self.world.library.available()
        if do == "scan":
            return self.scan(step)
        if do in ("scanner", "connect"):
            made = Scanner() if do == "scanner" else connect(step["to"])
            self.named[step["as"]] = made
            return made.start() if do == "scanner" else None
        if do == "read":
            wait = step["wait"] / 1000 if "wait" in step else -1
            return subject.read(step.get("count", 65536), wait).hex()
        if do == "write":
            return subject.write(bytes.fromhex(step["data"]))
        if do == "pass":
            return self.world.pass_time(step["ms"] / 1000)
        if do == "log":
            library = self.world.library
            return library.enable_log() and None if step["on"] else library.disable_log()
        if do == "together":
            return self.together(step)
        return getattr(subject, do)()  # close, flush, devices

    def together(self, step):
        failures = []

        def thread(steps):
            try:
                for _ in range(step["times"]):
                    self.steps(steps)
            except BaseException as error:  # raised again on the test's thread
                failures.append(error)

        threads = [threading.Thread(target=thread, args=(steps,)) for steps in step["threads"]]
        for one in threads:
            one.start()
        for one in threads:
            one.join()
        if failures:
            raise failures[0]

    def steps(self, steps):
        for step in steps:
            start = self.world.now()
            if "error" in step:
                with pytest.raises((OrvError, ValueError)) as caught:
                    self.result(step)
                error = caught.value
                kind = getattr(error, "kind", "closed" if isinstance(error, Closed) else "argument")
                assert kind == step["error"], step
                assert isinstance(error, TimeoutError) == (kind == "timeout")
                assert step.get("log", "") in str(error)
            else:
                assert self.result(step) == step.get("gives"), step
            if "takes" in step:
                assert abs(self.world.now() - start - step["takes"] / 1000) < 0.011, step


@pytest.mark.parametrize("behaviour", load("ORV_BEHAVIOURS"), ids=lambda behaviour: behaviour["name"])
def test_behaviour(behaviour, simulated_world):
    simulated_world.play(behaviour["world"])
    Run(simulated_world).steps(behaviour["steps"])
    for device in behaviour["world"].get("devices", []):
        assert simulated_world.call("OrvWorld_OpenObjects", address_number(device["address"])) == 0


def test_layout_is_that_of_the_header():
    for header in load("ORV_LAYOUT"):
        for name, value in header["constants"].items():
            assert getattr(_native, name) == value
        for wanted in header["structures"]:
            made = getattr(_native, wanted["name"])
            assert (ctypes.sizeof(made), ctypes.alignment(made)) == (wanted["size"], wanted["alignment"])
            for field in wanted["fields"]:
                assert getattr(made, field["name"]).offset == field["offset"], field["name"]


def test_asyncio(simulated_world):
    address = "A0:B1:C2:D3:E4:F5"
    simulated_world.play({"title": "echo", "devices": [
        {"address": address, "name": "ORV-0042", "interval": 100, "echo": 15}]})

    async def host():
        assert [device.address async for device in aio.scan(1)] == [address]
        async with await aio.connect(address) as stream:
            reading = asyncio.ensure_future(stream.read(timeout=None))
            await asyncio.sleep(0)
            reading.cancel()  # the next read returns its bytes
            await stream.write(b"hello")
            assert await stream.read() == b"hello"
            with pytest.raises(TimeoutError):
                await stream.read(timeout=0.1)
            assert await stream.flush() == 0

    asyncio.run(host())


def test_scan_on_the_command_line(monkeypatch):
    def run(*arguments):
        return subprocess.run([sys.executable, "-m", "quelvixwinlib", "scan", *arguments],
                              capture_output=True, text=True, check=False)

    found = run("--seconds", "1", "--simulated")  # the default world, in real time
    assert (found.returncode, "A0:B1:C2:D3:E4:F5" in found.stdout, "Lamp" in found.stdout) == (0, True, False)
    monkeypatch.delenv("QUELVIXWINLIB")
    assert run("--simulated").stderr.startswith("quelvixwinlib: the simulated library is not in")


def test_version_is_that_of_the_library(simulated_world):
    assert simulated_world.call("OrvWorld_Version").decode() == quelvixwinlib.__version__
