#!/usr/bin/env python3
"""orv as people and scripts use it: in a pipe and in a terminal, over simulated worlds.

ORV is the program, ORV_LIBRARY the simulated library, ORV_WINE is set where Wine runs the program.
"""
import csv
import io
import json
import os
import pathlib
import re
import select
import shutil
import struct
import subprocess
import tempfile
import time
import unittest

WINE = "ORV_WINE" in os.environ
ORV = ["wine"] * WINE + [os.environ["ORV"]]
LIBRARY = os.environ["ORV_LIBRARY"]
ENVIRONMENT = dict(os.environ, TERM="xterm", WINEDEBUG="-all")
ECHOING, BEACON, PLAIN = "A0:B1:C2:D3:E4:F5", "A0:B1:C2:D3:E4:F6", "11:22:33:44:55:66"
SECONDS = 60  # after which a run is given up as hanging


def heard(address, at, **fields):
    return {"at": at, "device": address, "advertise": "Advertisement", **fields}


# What a device may call itself, once it is listed under a harmless name.
HOSTILE = ["ORV\x1b]0;title\x07\n\x9b2J", "=cmd|'/C calc'!A0", "ORV\u202e<script>,\"", "ORVx" + 20 * "é", ""]
HOSTILE_AT = {f"00:00:00:00:00:{i + 1:02X}": name for i, name in enumerate(HOSTILE)}
WORLDS = {
    "off": {"radios": []},
    "hostile": {"devices": [{"address": address} for address in HOSTILE_AT],
                "events": [event for address, name in HOSTILE_AT.items() for event in
                           (heard(address, 100, name="ORV"), heard(address, 300, name=name, signal=-41),
                            {"at": 350, "device": address, "advertise": "ScanResponse", "signal": -70,
                             "sections": [{"type": 22, "data": "000541"}, {"type": 22, "data": "1811FF00AA"}]})]},
    "plain": {"devices": [{"address": PLAIN}, {"address": "00:1A:00:00:00:01"}]},
    "unstoppable": {"devices": [{"address": PLAIN, "name": "ORV-0042", "interval": 20}],
                    "faults": [{"member": "BluetoothLEAdvertisementWatcher.Stop", "code": "0x80004005"}]},
    "stops": {"devices": [{"address": PLAIN, "echo": 20}],
              "events": [{"after": 150, "device": PLAIN, "answer": {"operation": "WriteValue", "never": True}}]},
    "sends": {"devices": [{"address": PLAIN}],
              "events": [{"after": 200 + i, "device": PLAIN, "notify": bytes([i, 10, 255]).hex()} for i in range(9)]},
}


class WorldTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        for name, world in WORLDS.items():
            (self.folder / f"{name}.json").write_text(json.dumps({"title": name, **world}))
        (self.folder / "file").write_bytes(bytes(range(256)) * 8)


class HostTest(WorldTest):
    def orv(self, line, status=0, **more):
        run = subprocess.run(ORV + line.split(), cwd=self.folder, env=ENVIRONMENT, timeout=SECONDS,
                             capture_output=True, **more)
        out, error = run.stdout.decode(), run.stderr.decode()  # valid UTF-8 in any case
        self.assertEqual(run.returncode, status, f"{line}\n{out}\n{error}")
        return out if status == 0 else error

    def test_exit_statuses(self):
        for line, status, text in [
                ("check --simulated", 0, "Bluetooth  available"),
                ("--simulated check", 0, "simulated"),
                ("--simulated off.json check", 1, "switch Bluetooth on"),
                ("scan --simulated off.json", 1, "switch Bluetooth on"),
                ("", 2, "subcommand is required"),
                ("scan --json --csv", 2, "excludes"),
                ("talk --simulated nobody", 2, "is no address"),
                ("send --simulated 281474976710656 file", 2, "is no address"),
                ("check --library nowhere", 3, "--library PATH"),
                ("check --library file", 3, "cannot be loaded"),
                (f"send --simulated {BEACON} file", 4, "takes no link"),
                (f"receive --simulated {ECHOING} --output got --bytes 9 --seconds 0.2", 5, "9 of 9 bytes"),
                ("scan --simulated nothing", 6, "default"),
                ("scan --simulated file", 6, "file:1:"),
                (f"send --simulated {ECHOING} nothing", 6, "cannot be read"),
                (f"receive --simulated {ECHOING} --output no/got", 6, "cannot be written"),
                ("scan --simulated --record no/such", 6, "cannot be written")]:
            with self.subTest(line):
                self.assertIn(text, self.orv(line, status))

    @unittest.skipUnless(os.path.exists("/dev/full"), "no device that is full")
    def test_output_that_gets_lost_is_a_failure(self):
        for line in ("check", "scan --watch", "scan --seconds 0.1 --json"):
            with self.subTest(line), open("/dev/full", "w") as full:
                run = subprocess.run(ORV + line.split() + ["--simulated"], stdout=full, stderr=subprocess.PIPE,
                                     timeout=SECONDS)
                self.assertEqual((run.returncode, b"output cannot be written" in run.stderr), (6, True))

    def test_a_scan_that_cannot_be_stopped_has_told_what_it_heard(self):
        self.orv("scan --simulated unstoppable.json --seconds 0.3 --record heard.json", 1)
        self.assertIn("ORV-0042", (self.folder / "heard.json").read_text())

    def test_addresses(self):
        for text, address in [("11:22:33:44:55:66", PLAIN), ("112233445566", PLAIN), ("18838586676582", PLAIN),
                              ("0111669149697", "00:1A:00:00:00:01")]:
            with self.subTest(text):
                self.assertIn(f"2048 bytes to {address}", self.orv(f"send --simulated plain.json {text} file"))
        self.assertIn("AA:BB:CC:DD:EE:FF takes", self.orv("talk --simulated aabbccddeeff", 4))

    def test_a_block_that_is_not_confirmed_stops_the_transfer(self):
        said = self.orv(f"send --simulated stops.json {PLAIN} file --block 100", 5)
        confirmed, uncertain, unsent = map(int, re.search(r"first (\d+) .* the (\d+) .* last (\d+)", said).groups())
        self.assertEqual((confirmed % 100, uncertain, confirmed + uncertain + unsent), (0, 100, 2048))
        self.assertGreater(confirmed, 0)

    def test_received_bytes_are_those_that_were_sent(self):
        self.orv(f"receive --simulated sends.json {PLAIN} --output got --bytes 26")
        self.assertEqual((self.folder / "got").read_bytes(), b"".join(bytes([i, 10, 255]) for i in range(9))[:26])

    def test_lines_of_a_pipe_come_back_and_are_played_again(self):
        talked = self.orv(f"talk --simulated {ECHOING} --record talk.json", input=b"h\xc3\xa4\n\x1b[2J")
        said = {mark: "".join(re.findall(f"^{mark} (.*)$", talked, re.M)) for mark in "<>"}
        self.assertEqual(said, dict.fromkeys("<>", r"hä\x1B[2J"))
        self.assertIn("sent 7 bytes in 2 blocks, received 7 bytes", talked)
        again = self.orv(f"talk {ECHOING} --simulated talk.json --hex", input=b"")
        self.assertIn("< 68 C3 A4", again)
        self.assertIn("received 7 bytes", again)
        self.assertIn("not sent", self.orv(f"talk --simulated {ECHOING} --hex", 2, input=b"4\n"))

    def test_hostile_names_stay_text(self):
        shown = self.orv("scan --simulated hostile.json --seconds 0.8")
        self.assertNotRegex(shown, r"[\x00-\x09\x0b-\x1f\x7f-\x9f\u202e]")
        self.assertEqual(shown.count("\n"), len(HOSTILE) + 2)
        self.assertIn(r"ORV\x1B]0;title\x07\x0A\u009B2J", shown)

        rows = list(csv.reader(io.StringIO(self.orv("scan --csv --simulated hostile.json --seconds 0.8"))))
        self.assertEqual({len(row) for row in rows}, {6})
        self.assertFalse([row for row in rows if row[1][:1] in "=+-@" and row[1]])

        listed = json.loads(self.orv("scan --json --simulated hostile.json --seconds 0.8"))
        names = {device["address"]: device["name"] for device in listed}
        cut = "ORVx" + 12 * "é" + "\ufffd"
        self.assertEqual(names, HOSTILE_AT | {"00:00:00:00:00:04": cut})
        self.assertEqual(listed[0]["value0500"], 0x41)

    def test_a_recorded_scan_is_heard_again(self):
        first = self.orv("scan --json --simulated hostile.json --seconds 0.8 --record scan.json")
        again = self.orv("scan --json --simulated scan.json --seconds 1.6")
        order = lambda device: device["address"]  # devices do not keep an order among each other
        self.assertEqual(sorted(json.loads(again), key=order), sorted(json.loads(first), key=order))

    def test_the_log_is_switched_on_and_explained(self):
        library = shutil.copy(LIBRARY, self.folder)
        name = pathlib.Path(library).name
        self.orv(f"send --log --library {name} --simulated {BEACON} file", 4)
        log = (self.folder / f"{name}.log").read_text()
        self.assertRegex(log, r"Returned -1 after \d+ ms: OrvDevice_Connect 176685338322166\n")
        self.assertIn(BEACON, self.orv(f"log explain {name}.log"))

    @unittest.skipUnless(WINE, "the library of the ZIP")
    def test_the_shipped_library_tells_its_version(self):
        self.assertRegex(self.orv("check"), r"version +\d+\.\d+\.\d+\r?\nBluetooth +available")


@unittest.skipIf(WINE, "there are no terminals")
class TerminalTest(WorldTest):
    def start(self, line, columns=80):
        import fcntl  # which only systems with terminals have
        import termios
        self.terminal, inner = os.openpty()
        self.addCleanup(os.close, self.terminal)
        fcntl.ioctl(inner, termios.TIOCSWINSZ, struct.pack("HHHH", 10, columns, 0, 0))
        self.settings = lambda: termios.tcgetattr(self.terminal)
        self.before = self.settings()
        self.process = subprocess.Popen(ORV + line.split(), cwd=self.folder, env=ENVIRONMENT, stdin=inner, stdout=inner,
                                        stderr=inner, start_new_session=True,
                                        preexec_fn=lambda: fcntl.ioctl(0, termios.TIOCSCTTY, 0))
        self.addCleanup(self.process.kill)
        os.close(inner)
        self.shown = ""

    def await_shown(self, pattern):
        end = time.monotonic() + SECONDS
        while not re.search(pattern, self.shown):
            self.assertLess(time.monotonic(), end, f"{pattern} does not come: {self.shown[-500:]!r}")
            ready = select.select([self.terminal], [], [], SECONDS)[0]
            self.assertTrue(ready, f"{pattern} does not come: {self.shown[-500:]!r}")
            self.shown += os.read(self.terminal, 65536).decode(errors="replace")

    def type(self, keys):
        os.write(self.terminal, keys.encode())

    def end(self, status=0):
        try:
            self.await_shown("never shown: all of it is read")
        except OSError:
            pass  # the terminal's other side is closed
        self.assertEqual(self.process.wait(SECONDS), status, self.shown)
        self.assertEqual(self.settings(), self.before)

    def test_a_live_table_fits_a_narrow_terminal_and_ends_cleanly(self):
        for columns in (40, 25):
            self.start("scan --watch --simulated", columns)
            self.await_shown(f"{BEACON}[^\\0]*{BEACON}")
            self.type("\x03")
            self.end()
            lines = re.sub(r"\x1b\[[?\d]*[A-Za-z]", "", self.shown).replace("^C", "").replace("\r", "").split("\n")
            self.assertLessEqual(max(map(len, lines)), columns)
            self.assertIn("scan ended", lines[-2])
            self.assertRegex(self.shown, r"\A\x1b\[\?25l[^\0]*\x1b\[\?25h\Z")

    def test_what_is_typed_is_sent(self):
        self.start(f"talk --simulated {ECHOING}")
        self.await_shown("0 sent")
        self.type("hx\x7fä\x1b[A!\r")
        self.await_shown("< hä!")
        self.await_shown("4 sent, 4 received")
        self.type("\x04")
        self.await_shown("sent 4 bytes in 1 block, received 4 bytes")
        self.end()

    def test_a_transfer_shows_a_bar_that_goes(self):
        self.start(f"send --simulated {ECHOING} file")
        self.await_shown("█.* of 2.0 KiB, .*/s, 0:0. left")
        self.type("\x03")
        self.end(5)
        self.assertIn("stopped by Ctrl-C", self.shown)

    def test_a_second_interrupt_ends_what_does_not_come_back(self):
        hangs = pathlib.Path(LIBRARY).parent / "scenarios" / "close_hangs.json"
        self.start(f"talk --simulated {hangs} {ECHOING}")
        self.await_shown("0 sent")
        self.process.terminate()
        while self.settings() != self.before:
            time.sleep(0.01)
        self.process.terminate()
        self.end(-15)

    def test_an_interrupt_ends_a_conversation(self):
        self.start(f"talk --simulated {ECHOING}")
        self.await_shown("0 sent")
        self.process.terminate()
        self.end()


if __name__ == "__main__":
    unittest.main()
