#!/usr/bin/env python3
"""Tests `orv bridge` with simulated devices: exact bytes, clients that misbehave, and lost links."""
import os
import pathlib
import random
import re
import signal
import socket
import struct
import subprocess
import threading
import unittest

from running import ORV, SECONDS, WINE, AtOnce, Running
from world_case import WorldCase

FIRST, SECOND = "A0:B1:C2:D3:E4:F5", "A0:B1:C2:D3:E4:F6"
DATA = random.Random(17).randbytes(65536)
FLOOD = 1 << 21  # more bytes than a link buffers for a client that does not read


def echoing(**fields):
    return {"address": FIRST, "echo": 1, **fields}


NEVER = {"operation": "WriteValue", "never": True}


class Bridge(Running):
    def place(self, device=FIRST):
        return self.shows(device + r" at (?:127.0.0.1:)?(\S+): ").group(1)

    def end(self):
        """Ends the bridge. Returns sent, received and lost bytes and lost links of each device."""
        self.process.send_signal(signal.SIGTERM)
        self.ends()
        rows = re.findall(r"^(\S+:\S+) +\S+ +(?:a program|\S+) +\w+ +(\d+) +(\d+) +(\d+) +(\d+)", self.shown, re.M)
        return {device: tuple(map(int, counts)) for device, *counts in rows}


class Serial:
    """A client of a pseudo-terminal, with the functions of a socket."""

    def __init__(self, path):
        self.file = open(path, "rb+", buffering=0, opener=lambda name, flags: os.open(name, flags | os.O_NOCTTY))
        self.close = self.file.close

    def sendall(self, data):
        while data:
            data = data[self.file.write(data):]

    def recv(self, most):
        return self.file.read(most)


def receive(peer, count, piece=65536):
    got = b""
    while len(got) < count:
        part = peer.recv(min(piece, count - len(got)))
        if not part:
            break
        got += part
    return got


def receive_until_end(peer):
    got = b""
    while not got.endswith(b"end"):
        got += peer.recv(65536)
    return got


def count_gaps(got, sent):
    """Returns the number of gaps in `got`. Raises a ValueError if `got` is not `sent` with parts left out."""
    at = gaps = 0
    while got:
        begin = sent.index(got[:16], at)  # 16 bytes contain a whole word, and no word occurs twice
        whole = len(os.path.commonprefix([got, sent[begin:]]))
        got, at, gaps = got[whole:], begin + whole, gaps + (begin > at)
    return gaps


class BridgeTest(WorldCase):
    worlds = {
        "echo": {"devices": [echoing(), {"address": SECOND, "echo": 1, "name": "ORV-0044", "interval": 20,
                                          "known": "OnceHeard"}]},
        # A write that starts in one of three intervals never completes, so the link is lost. The first interval ends before
        # the next link opens. The others are for a bridge that is too slow to write in the first one.
        "lossy": {"devices": [echoing()],
                  "events": [{"after": after, "times": 3, "every": 20000, "device": FIRST, "answer": answer}
                             for after, answer in ((300, NEVER), (2000, {"operation": "WriteValue"}))]},
        "flood": {"devices": [{"address": FIRST}],
                  "events": [{"after": 100, "device": FIRST, "notify": "55" * 4096, "times": FLOOD // 4096, "every": 1}]},
        "mute": {"devices": [{"address": FIRST, "answers": [NEVER]}]},
        "rejecting": {"devices": [{"address": FIRST, "known": False, "name": "ORV-0042", "interval": 20}]},
    }

    def bridge(self, world, options, devices=FIRST, columns=None):
        return Bridge(self, f"bridge {options} --simulated {world}.json {devices}", columns)

    def exchange(self, peer, piece=65536):
        sender = threading.Thread(target=peer.sendall, args=(DATA,))
        sender.start()
        self.assertEqual(receive(peer, len(DATA), piece), DATA)
        sender.join()


class Clients:
    """Tests that run with TCP clients and with clients of pseudo-terminals."""

    def test_bytes_are_exact_for_clients_that_are_fast_slow_or_gone(self):
        bridge = self.bridge("echo", self.KIND + " --block 244")
        gone = r"used by .*\n.*: open\n"
        for times, piece in ((1, 65536), (2, 1)):
            peer = self.client(bridge)
            self.exchange(peer, piece)
            peer.close()
            bridge.shows(gone, times)
        peer = self.client(bridge)
        sender = threading.Thread(target=peer.sendall, args=(DATA,))
        sender.start()
        receive(peer, 20000)
        sender.join()
        peer.close()  # during the echo: the bridge still sends the written bytes
        bridge.shows(gone, 3)
        peer = self.client(bridge)
        peer.sendall(b"end")
        got = receive_until_end(peer)  # comes after the rest of the echo
        self.assertTrue((DATA + b"end").endswith(got))
        peer.close()
        bridge.shows(gone, 4)
        sent, received, lost, losses = bridge.end()[FIRST]
        self.assertEqual((sent, received, losses), (3 * 65536 + 3, 3 * 65536 + 3, 0))
        in_system = received - 2 * 65536 - 20000 - len(got) - lost  # the bridge cannot count them
        self.assertIn(in_system, range(self.SYSTEM + 1))

    def test_a_lost_link_is_opened_again_for_the_same_client(self):
        bridge = self.bridge("lossy", self.KIND + " --block 100")
        peer = self.client(bridge)
        sent, isLost, got = bytearray(), threading.Event(), []

        def send():
            while not isLost.is_set():
                words = b"".join(b"%07d " % number for number in range(len(sent) // 8, len(sent) // 8 + 500))
                peer.sendall(words)
                sent.extend(words)
            peer.sendall(b"end")

        threads = [threading.Thread(target=send, daemon=True),
                   threading.Thread(target=lambda: got.append(receive_until_end(peer)), daemon=True)]
        for thread in threads:
            thread.start()
        bridge.shows("waiting.*not confirmed[^\0]*open, used")
        isLost.set()
        for thread in threads:
            thread.join()
        confirmed, received, lost, losses = bridge.end()[FIRST]
        self.assertEqual(len(got[0]), received)
        self.assertEqual(confirmed + lost, len(sent) + 3)
        self.assertLessEqual(count_gaps(got[0], bytes(sent) + b"end"), losses)

    def test_a_client_that_never_reads_loses_bytes_by_number(self):
        bridge = self.bridge("flood", self.KIND)
        peer = self.client(bridge)
        bridge.shows(r"which did not read: \d{7,} bytes lost|does not read and loses bytes")
        got = b"" if self.SYSTEM == 0 else receive(peer, FLOOD)  # a socket still has bytes in the system
        peer.close()
        bridge.shows("used by[^\0]*open\\b(?!, used)")
        _, received, lost, _ = bridge.end()[FIRST]
        self.assertEqual((len(got) + lost, got), (received, b"\x55" * len(got)))
        self.assertGreater(lost, 1 << 20)

    def test_bytes_that_wait_at_the_end_are_counted_as_lost(self):
        bridge = self.bridge("mute", self.KIND + " --block 100")
        self.client(bridge).sendall(bytes(1000))
        bridge.shows("not confirmed")
        self.assertEqual(bridge.end()[FIRST][:3], (0, 0, 1000))


class TcpTest(Clients, BridgeTest):
    KIND, SYSTEM = "tcp --listen 0", 1 << 18

    def client(self, bridge, device=FIRST):
        peer = socket.socket()
        peer.setsockopt(socket.SOL_SOCKET, socket.SO_SNDBUF, 1 << 14)  # the system would buffer megabytes
        peer.settimeout(SECONDS)
        peer.connect(("127.0.0.1", int(bridge.place(device))))
        peer.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))  # close resets the connection
        self.addCleanup(peer.close)
        return peer

    def test_several_devices(self):
        bridge = self.bridge("echo", "tcp --listen 0 --listen 0 --block 244", f"{FIRST} ORV-0044")
        other = threading.Thread(target=self.exchange, args=(self.client(bridge), 100))
        other.start()
        self.exchange(self.client(bridge, SECOND))
        other.join()
        self.assertEqual(bridge.end(), dict.fromkeys((FIRST, SECOND), (65536, 65536, 0, 0)))

    def test_one_client_at_a_time_until_it_sends_no_more(self):
        bridge = self.bridge("echo", "tcp --listen 0 --eager")
        bridge.shows("open")
        first = self.client(bridge)
        bridge.shows("used by")
        self.assertEqual(receive(self.client(bridge), 1), b"")
        bridge.shows("refused 127.0.0.1:.*uses the device")
        first.sendall(b"x")
        self.assertEqual(receive(first, 1), b"x")
        if not WINE:  # the system checks after a minute whether the client still exists
            port = first.getpeername()[1]
            [timer] = re.findall(r": 0100007F:%04X \S+ 01 \S+ (\S+)" % port, pathlib.Path("/proc/net/tcp").read_text())
            kind, ticks = timer.split(":")
            self.assertEqual(kind, "02")
            self.assertLessEqual(int(ticks, 16), 60 * os.sysconf("SC_CLK_TCK"))
        first.shutdown(socket.SHUT_WR)
        while not self.is_served(bridge):
            pass  # until the bridge has read the end of the first client's input
        self.assertEqual(receive(first, 1), b"")

    def is_served(self, bridge):
        try:
            peer = self.client(bridge)
            peer.sendall(b"y")
            return receive(peer, 1) == b"y"
        except ConnectionError:
            return False

    def test_a_client_that_sends_no_more_still_gets_the_answer(self):
        peer = self.client(self.bridge("echo", "tcp --listen 0 --block 244"))
        peer.sendall(DATA)
        peer.shutdown(socket.SHUT_WR)
        self.assertEqual(receive(peer, len(DATA) + 1), DATA)  # reads until the bridge closes the connection

    def test_pauses_between_attempts_grow(self):
        for _ in range(5):  # on a busy machine, a bridge may not show each pause
            bridge = self.bridge("rejecting", "tcp --listen 0 --eager")
            bridge.shows(r"the device rejects the link; next attempt after ([4-9]|\d\d+) s")
            pauses = [int(pause) for pause in re.findall(r"next attempt after (\d+) s", bridge.shown)]
            bridge.end()
            if set(pauses) == {1, 2, 4}:
                break
        self.assertEqual(pauses, sorted(pauses))
        self.assertEqual(set(pauses), {1, 2, 4})

    def test_wrong_options_are_named(self):
        taken = socket.create_server(("127.0.0.1", 0))
        self.addCleanup(taken.close)
        for options, text in [
                (f"tcp {FIRST}", "--listen is missing"),
                (f"tcp {FIRST} --listen", "--listen"),
                (f"tcp {FIRST} --listen 70000", "not an address and port"),
                (f"tcp {FIRST} --listen :7000", "not an address and port"),
                (f"tcp {FIRST} --listen ::1:7000", "not an address and port"),
                (f"tcp {FIRST} --listen 127.0.0.1:%d" % taken.getsockname()[1], "cannot listen on 127.0.0.1"),
                (f"tcp {FIRST} {SECOND} --listen 0", "2 devices and 1 place"),
                (f"tcp {FIRST} --listen 0 --listen 0", "1 device and 2 places"),
                (f"tcp {FIRST} {FIRST} --listen 0", "named twice"),
                (f"tcp {FIRST} --listen 0 --probe -1", "--probe"),
                (f"tcp nobody --listen 0", "is not an address"),
                ("tcp --listen 0", "DEVICE is missing"),
                ("", "command is missing: tcp, pty, mqtt")]:
            with self.subTest(options):
                run = subprocess.run(ORV + ["bridge"] + options.split(), capture_output=True, text=True, timeout=SECONDS)
                self.assertEqual(run.returncode, 2, run.stderr)
                self.assertIn(text, run.stderr)

    def test_a_socket_that_is_open_to_others_is_warned_of(self):
        self.bridge("echo", "tcp --listen 0.0.0.0:0").shows(r"warning: other machines .* 0\.0\.0\.0:\d+")


@unittest.skipIf(WINE, "there are no pseudo-terminals")
class PtyTest(Clients, BridgeTest):
    KIND, SYSTEM = "pty", 0

    def client(self, bridge):
        peer = Serial(bridge.place())
        self.addCleanup(peer.close)
        return peer

    def test_the_path_is_made_anew_and_removed(self):
        path = self.folder / "serial"
        os.symlink("/dev/pts/99999", path)  # the link that a killed bridge leaves
        bridge = self.bridge("echo", f"pty --link {path}")
        self.assertEqual(bridge.place(), str(path))
        self.exchange(self.client(bridge))
        bridge.end()
        self.assertFalse(os.path.lexists(path))

    def test_a_path_that_is_taken_is_kept(self):
        for name, make in [("file", lambda path: path.write_text("kept")),
                           ("terminal", lambda path: path.symlink_to(os.ttyname(os.openpty()[1]))),
                           ("elsewhere", lambda path: path.symlink_to(self.folder / "no/such"))]:
            with self.subTest(name):
                path = self.folder / name
                make(path)
                before = os.lstat(path).st_ino, os.lstat(path).st_mtime_ns
                run = subprocess.run(ORV + ["bridge", "pty", FIRST, "--simulated", "echo.json", "--link", path],
                                     cwd=self.folder, capture_output=True, text=True, timeout=SECONDS)
                self.assertEqual(run.returncode, 6, run.stderr)
                self.assertEqual((os.lstat(path).st_ino, os.lstat(path).st_mtime_ns), before)
                self.assertIn("cannot create the link", run.stderr)

    def test_a_terminal_shows_a_table_that_is_kept_up_to_date(self):
        bridge = self.bridge("echo", "tcp --listen 0 --eager --block 244", columns=80)
        bridge.shows(r"device +place[^\0]*open +0 [^\0]*Ctrl-C ends the bridge")
        with socket.create_connection(re.search(r"(127[.\d]+):(\d+)", bridge.shown).groups(), SECONDS) as peer:
            self.exchange(peer)
            bridge.shows(r"127\S+ +127\S+ +open +65536 +65536")
        bridge.type("\x03")
        bridge.ends()
        drawn, end = re.fullmatch(r"\x1b\[\?25l([^\0]*)\x1b\[\?25h([^\0]*)", bridge.shown).groups()
        lines = re.sub(r"\x1b\[[?\d]*[A-Za-z]", "", drawn).replace("^C", "").replace("\r", "").split("\n")
        self.assertEqual((max(map(len, lines)), len(re.findall("^device", end, re.M))), (80, 1))
        self.assertRegex(end, FIRST + r" .* 65536 +65536 +0 +0")


if __name__ == "__main__":
    unittest.main(testRunner=AtOnce)
