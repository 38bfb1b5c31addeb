#!/usr/bin/env python3
"""Tests the program orv in pipes and terminals, with simulated devices."""
import contextlib
import csv
import io
import json
import os
import pathlib
import re
import select
import shutil
import signal
import subprocess
import unittest

from running import ENVIRONMENT, ORV, SECONDS, WINE, AtOnce, Running
from world_case import WorldCase

LIBRARY = os.environ["ORV_LIBRARY"]
ECHOING, BEACON, PLAIN = "A0:B1:C2:D3:E4:F5", "A0:B1:C2:D3:E4:F6", "11:22:33:44:55:66"


def heard(address, at, **fields):
    return {"at": at, "device": address, "advertise": "Advertisement", **fields}


# Names that a device may change to after it was listed with a harmless name.
HOSTILE = ["ORV\x1b]0;title\x07\n\x9b2J", "=cmd|'/C calc'!A0", "ORV;=1+1;\u3000\uff1dA1", "ORV\u202e<script>,\"", "ORVx" + 20 * "é", ""]
HOSTILE_AT = {f"00:00:00:00:00:{i + 1:02X}": name for i, name in enumerate(HOSTILE)}
WORLDS = {
    "off": {"radios": []},
    "goes": {"devices": [{"address": PLAIN, "name": "ORV-0042", "interval": 20, "signalSpread": 9},
                         {"address": BEACON}],
             "events": [*(heard(BEACON, at, name="ORV-0043") for at in (100, 1700)), heard(BEACON, 1800, name=None, signal=-127),
                        {"at": 300, "radio": 0, "state": "Off"}, {"at": 900, "radio": 0, "state": "On"}]},
    "hostile": {"devices": [{"address": address} for address in HOSTILE_AT],
                "events": [event for address, name in HOSTILE_AT.items() for event in
                           (heard(address, 100, name="ORV"), heard(address, 300, name=name, signal=-41),
                            {"at": 350, "device": address, "advertise": "ScanResponse", "signal": -70,
                             "sections": [{"type": 22, "data": "000541"}, {"type": 22, "data": "1811FF00AA"}]})]},
    "plain": {"devices": [{"address": PLAIN, "name": "ORV-0044", "interval": 20, "known": "OnceHeard"},
                          {"address": "00:1A:00:00:00:01"}]},
    "twins": {"devices": [{"address": address, "name": "ORV-0044", "interval": 20}
                          for address in (PLAIN, "AA:BB:CC:DD:EE:FF")]},
    "unstoppable": {"devices": [{"address": PLAIN, "name": "ORV-0042", "interval": 20}],
                    "faults": [{"member": "BluetoothLEAdvertisementWatcher.Stop", "code": "0x80004005"}]},
    "stops": {"devices": [{"address": PLAIN, "echo": 20}],
              "events": [{"after": 150, "device": PLAIN, "answer": {"operation": "WriteValue", "never": True}}]},
    # A connect takes 9.5 s. Each answer comes before the library's timeout of 2 s.
    "slow": {"devices": [{"address": PLAIN, "answers": [
        {"operation": operation, "after": 1900}
        for operation in ("FindDevice", "FindServices", "RequestAccess", "FindCharacteristics", "WriteDescriptor")]}]},
    "sends": {"devices": [{"address": PLAIN}],
              "events": [{"after": 200 + i, "device": PLAIN, "notify": bytes([i, 10, 255]).hex()} for i in range(9)]},
}


class WorldsTest(WorldCase):
    worlds = WORLDS

    def setUp(self):
        super().setUp()
        self.write_file(1)

    def write_file(self, pace):
        (self.folder / "file").write_bytes(bytes(range(256)) * 8 * pace)

    def write_world(self, name, pace):
        """Writes a world in which each event occurs `pace` times later than in WORLDS."""
        events = [{key: value * pace if key in ("at", "after") else value for key, value in event.items()}
                  for event in WORLDS[name]["events"]]
        (self.folder / f"{name}.json").write_text(json.dumps({"title": name, **WORLDS[name], "events": events}))


class HostTest(WorldsTest):
    def orv(self, line, status=0, **more):
        run = subprocess.run(ORV + line.split(), cwd=self.folder, env=ENVIRONMENT, timeout=SECONDS,
                             capture_output=True, **more)
        out, error = run.stdout.decode(), run.stderr.decode()  # fails if the output is not UTF-8
        self.assertEqual(run.returncode, status, f"{line}\n{out}\n{error}")
        return out if status == 0 else error

    def paced(self, paces, attempt, is_whole):
        """Returns the first outcome of attempt(pace) for which is_whole returns true, or the last outcome. The later paces
        are slower, for a busy machine: orv may start after the first events of a fast world, or end before its last ones."""
        for pace in paces:
            outcome = attempt(pace)
            if is_whole(outcome):
                break
        return outcome

    def scan_hostile(self, options, pace):
        self.write_world("hostile", pace)
        return self.orv(f"scan --simulated hostile.json --seconds {2.6 + 0.4 * pace} {options}")

    def scan_whole(self, options):
        return self.paced((1, 20, 110), lambda pace: self.scan_hostile(options, pace), self.has_last_packets)

    @staticmethod
    def has_last_packets(*scans):
        return all(shown.count("FF00AA") == len(HOSTILE) for shown in scans)

    def test_exit_statuses(self):
        (self.folder / "empty").touch()
        (self.folder / "host.log").write_text("09:00:00.000\tOrvDevice_Flush 5\n")
        (self.folder / "link").symlink_to("file")
        for line, status, text in [
                ("check --simulated", 0, "Bluetooth  available"),
                ("--simulated check", 0, "simulated"),
                ("--version --simulated", 0, "simulated"),
                ("--simulated --version", 0, "simulated"),
                ("help chekc", 2, "Did you mean check?"),
                ("help log report", 0, "orv log report"),
                ("--simulated off.json check", 1, "switch Bluetooth on"),
                ("scan --simulated off.json", 1, "switch Bluetooth on"),
                ("", 2, "command is missing: check, scan"),
                ("chekc", 2, "no command chekc. Did you mean check?"),
                ("scan --wach", 2, "no option --wach. Did you mean --watch?"),
                ("scan \x1b[1m", 2, r"unexpected argument \x1B[1m."),
                ("scan --json --csv", 2, "--json and --csv cannot be given together"),
                ("scan --seconds nan", 2, "number from 0.001 to 1000000000, not nan"),
                ("scan --record=", 2, "--record needs a value: FILE"),
                ("scan --simulated=", 2, "name is empty"),
                (f"talk {PLAIN} --hex --end lf", 2, "--hex and --end cannot"),
                ("log explain x --threads 3", 2, "give one or many, not 3"),
                ("talk --simulated nobody", 2, "not a name that begins with ORV"),
                ("send --simulated 281474976710656 file", 2, "is not an address"),
                ("check --library nowhere", 3, "--library PATH"),
                ("check --library file", 3, "cannot be loaded"),
                (f"send --simulated {BEACON} file", 4, "dBm, but"),
                (f"receive --simulated {ECHOING} -o got --bytes 9 --seconds 0.2", 5, "9 of 9 bytes"),
                ("scan --simulated nothing", 6, "close_hangs, cut_name, default, early"),
                ("scan --simulated file", 6, "file:1:"),
                (f"send --simulated {ECHOING} /nothing", 6, "cannot be read"),
                (f"send --simulated {ECHOING} .", 6, "neither a file nor a pipe"),
                (f"receive --simulated {ECHOING} --output no/got", 6, "cannot be written"),
                ("scan --simulated --record no/such", 6, "cannot be written"),
                ("log explain file", 6, "is not a log"),
                ("log explain file --json", 6, "is not a log"),
                ("log explain .", 6, "is a folder"),
                ("log follow .", 6, "is not a regular file"),
                ("log follow -", 6, "is not a regular file"),
                *([] if WINE else [("log report empty", 6, "is empty"),
                                   ("log report host.log -o link", 6, "is a link"),
                                   ("scan --simulated --record link", 6, "is a link")])]:
            with self.subTest(line):
                self.assertIn(text, self.orv(line, status))

    def test_help_fits_the_terminal_and_shows_the_command_itself(self):
        todo = [""]
        while todo:
            command = todo.pop()
            text = self.orv(f"{command} --help")
            self.assertLessEqual(max(map(len, text.splitlines())), 100, text)
            self.assertIn(f"orv {command}".strip(), text.partition("Example:")[2].replace(" --simulated", ""))
            names = re.findall(r"^  (\w+) +(?! |Not part)", text.partition("\nCommands:")[2].partition("Example:")[0], re.M)
            todo += [f"{command} {name}".strip() for name in names]

    @unittest.skipUnless(os.path.exists("/dev/full"), "no device that is full")
    def test_output_that_gets_lost_is_a_failure(self):
        for line in ("check", "scan --watch", "scan --seconds 0.1 --json"):
            with self.subTest(line), open("/dev/full", "w") as full:
                run = subprocess.run(ORV + line.split() + ["--simulated"], stdout=full, stderr=subprocess.PIPE,
                                     timeout=SECONDS)
                self.assertEqual((run.returncode, b"output cannot be written" in run.stderr), (6, True))

    def test_a_scan_that_cannot_be_stopped_has_told_what_it_heard(self):
        def scan(pace):
            self.orv(f"scan --simulated unstoppable.json --seconds {2 * pace} --record heard.json", 1)
            return (self.folder / "heard.json").read_text()
        self.assertIn("ORV-0042", self.paced((1, 10), scan, lambda heard: "ORV-0042" in heard))

    def test_addresses(self):
        for text, address in [("11:22:33:44:55:66", PLAIN), ("112233445566", PLAIN), ("18838586676582", PLAIN),
                              ("0111669149697", "00:1A:00:00:00:01"), ("11-22-33-44-55-66", PLAIN),
                              ("0x1a00000001", "00:1A:00:00:00:01"), ("ORV-0044", PLAIN)]:
            with self.subTest(text):
                self.assertIn(f"2048 bytes to {address}", self.orv(f"send --simulated plain.json {text} file"))
        self.assertIn("AA:BB:CC:DD:EE:FF", self.orv("receive --simulated twins.json ORV-0044 --output got", 2))

    def test_a_block_that_is_not_confirmed_stops_the_transfer(self):
        def send(pace):
            self.write_world("stops", pace)
            self.write_file(pace)
            said = self.orv(f"send --simulated stops.json {PLAIN} file --block 100", 5)
            counts = re.search(r": (\d+) bytes written, the next (\d+) .* last (\d+)", said).groups()
            return [2048 * pace, *map(int, counts)]
        size, confirmed, uncertain, unsent = self.paced((1, 10, 80), send, lambda counts: counts[1] > 0)
        self.assertEqual((confirmed % 100, uncertain, confirmed + uncertain + unsent), (0, 100, size))
        self.assertGreater(confirmed, 0)

    @unittest.skipIf(WINE, "its pipes are not polled")
    def test_a_pipe_is_read_no_faster_than_the_device_takes_it(self):
        for line in ("talk --simulated stops.json", "send --simulated stops.json --block 1"):
            command = ORV + f"{line} {PLAIN}".split() + ["-"] * line.startswith("send")
            with self.subTest(line), subprocess.Popen(command, cwd=self.folder, stdin=subprocess.PIPE,
                                                      stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL) as process:
                os.set_blocking(process.stdin.fileno(), False)
                written = 0
                with contextlib.suppress(BrokenPipeError):  # send ends when its write times out after 2 s
                    while written < 1 << 22 and select.select([], [process.stdin], [], 1)[1]:
                        written += os.write(process.stdin.fileno(), b"y\n" * 2048)
                process.kill()
                self.assertLess(written, 1 << 20)

    def test_received_bytes_are_those_that_were_sent(self):
        self.orv(f"receive --simulated sends.json {PLAIN} --output got --bytes 26")
        self.assertEqual((self.folder / "got").read_bytes(), b"".join(bytes([i, 10, 255]) for i in range(9))[:26])

    def test_lines_of_a_pipe_come_back_and_are_played_again(self):
        def talk(options, typed, received):
            return self.paced(("", "--seconds 20"), lambda pace: self.orv(f"talk {pace} {options}", input=typed),
                              lambda talked: f"received {received} byte" in talked)
        talked = talk(f"--simulated {ECHOING} --record talk.json", b"h\xc3\xa4\n\x1b[2J", 7)
        said = {mark: "".join(re.findall(f"^{mark} (.*)$", talked, re.M)) for mark in "<>"}
        self.assertEqual(said, dict.fromkeys("<>", r"hä\x1B[2J"))
        self.assertIn("sent 7 bytes in 2 blocks, received 7 bytes", talked)
        again = talk(f"{ECHOING} --simulated talk.json --hex", b"", 7)
        self.assertIn("< 68 C3 A4", again)
        self.assertIn("received 7 bytes", again)
        self.assertIn("not sent", self.orv(f"talk --simulated {ECHOING} --hex", 2, input=b"4\n"))
        for options, typed, sent in [("", b"a\r\n", "61"), ("--hex", b"61\r\n", "61"),
                                     ("--end crlf", b"a\r\nb", "610D0A620D0A")]:
            with self.subTest(typed):
                talk(f"--simulated {ECHOING} --record talk.json {options}", typed, len(sent) // 2)
                events = json.loads((self.folder / "talk.json").read_text())["events"]
                self.assertEqual("".join(event["notify"] for event in events), sent)

    def test_hostile_names_stay_text(self):
        shown = self.scan_whole("")
        self.assertNotRegex(shown, r"[\x00-\x09\x0b-\x1f\x7f-\x9f\u202e]")
        self.assertEqual(shown.count("\n"), len(HOSTILE) + 2)
        self.assertIn(r"ORV\x1B]0;title\x07\x0A\u009B2J", shown)

        rows = list(csv.reader(io.StringIO(self.scan_whole("--csv"))))
        self.assertEqual({len(row) for row in rows}, {6})
        cells = [cell for row in rows for cell in re.split(r"[^\w=+@|%'\uff1d-]", row[1])]
        self.assertFalse([cell for cell in cells if re.match("[=+@|%\uff1d-]", cell)])

        listed = json.loads(self.scan_whole("--json"))
        names = {device["address"]: device["name"] for device in listed}
        cut = "ORVx" + 12 * "é" + "\ufffd"
        self.assertEqual(names, HOSTILE_AT | {"00:00:00:00:00:05": cut})
        self.assertEqual(listed[0]["value0500"], 0x41)

    def test_a_watched_scan_shows_what_is_gone_and_goes_on_after_the_radio_was_off(self):
        def scan(pace):
            self.write_world("goes", pace)
            return self.orv(f"scan --watch --simulated goes.json --seconds {2.2 + 1.8 * pace}")
        wanted = f"Bluetooth went off\n(?s:.)* is on again(?s:.)* {BEACON} is no longer heard(?s:.)*{PLAIN} .* now "
        gone = f"{BEACON} ORV-0043 +-127 "
        scanned = self.paced((1, 5, 20), scan, lambda shown: re.search(wanted, shown) and re.search(gone, shown))
        self.assertRegex(scanned, wanted)
        lines = scanned.splitlines()
        shown = {line[:17]: line for line in lines[-2:]}
        self.assertRegex(shown[BEACON], gone)
        self.assertRegex(shown[PLAIN], r"ORV-0042 .*█.* now ")

    def test_a_recorded_scan_is_heard_again(self):
        def scan(pace):
            first = self.scan_hostile("--json --record scan.json", pace)
            return first, self.orv(f"scan --json --simulated scan.json --seconds {4.6 + 0.4 * pace}")
        first, again = self.paced((1, 20, 110), scan, lambda scans: self.has_last_packets(*scans))
        self.assertTrue(self.has_last_packets(first, again))
        order = lambda device: device["address"]  # the order of devices is undefined
        self.assertEqual(sorted(json.loads(again), key=order), sorted(json.loads(first), key=order))

    def test_the_log_is_switched_on_and_explained(self):
        library = shutil.copy(LIBRARY, self.folder)
        name = pathlib.Path(library).name
        self.orv(f"send --log --library {name} --simulated {BEACON} file", 4)
        log = (self.folder / f"{name}.log").read_text()
        self.assertRegex(log, r"Returned -1 after \d+ ms: OrvDevice_Connect 176685338322166\n")
        self.assertIn(BEACON, self.orv(f"log explain {name}.log"))
        self.orv(f"check --log --library {name}")
        self.assertEqual((self.folder / f"{name}.log.1").read_text(), log)

    def test_the_document_shows_what_a_log_is_explained_by(self):
        document = pathlib.Path(__file__).parents[2] / "docs" / "log_verdicts.md"
        log, verdicts = re.findall(r"```text\n(.*?)```", document.read_text(encoding="utf-8"), re.DOTALL)
        (self.folder / "host.log").write_text(log)
        self.assertEqual(self.orv("log explain host.log").partition("\n\n")[2], verdicts)

    def test_logs_come_through_pipes_and_stay_harmless(self):
        log = ("09:00:00.000\tOrvDevice_Connect 5\n09:00:00.001\tException: \x7f\x9b\u202e<x>\n"
               "09:00:00.002\tReturned -1 after 2 ms: OrvDevice_Connect 5\n").encode()
        for line in ("log explain -", "log explain - --json"):
            said = self.orv(line, input=log)
            self.assertNotRegex(said, r"[\x00-\x09\x0b-\x1f\x7f-\x9f\u202e]")
        self.assertEqual(json.loads(said)["calls"][0]["failureLines"]["text"], "\x7f\x9b\u202e<x>")
        self.assertIn("is not a log", self.orv("log explain -", 6, input=b"text\n"))

    @unittest.skipIf(WINE, "no pipe has a path")
    def test_a_log_without_end_is_refused(self):
        os.mkfifo(self.folder / "pipe")
        self.assertIn("is empty", self.orv("log explain pipe", 6))
        self.assertIn("is not a log", self.orv("log explain /dev/zero", 6))
        with open(self.folder / "sparse.log", "wb") as sparse:
            sparse.write(b"09:00:00.000\tOrvDevice_Flush 5\n")
            sparse.truncate(4 << 30)
        self.assertIn("more than 16 MiB", self.orv("log explain sparse.log", 6))

    @unittest.skipIf(WINE, "there are no signals")
    def test_a_hangup_that_the_caller_ignores_ends_nothing(self):
        log = self.folder / "host.log"
        lines = "09:00:0{0}.000\tOrvDevice_Flush {0}\n09:00:0{0}.001\tReturned 0 after 1 ms: OrvDevice_Flush {0}\n"
        log.write_text(lines.format(5))
        follower = Running(self, f"log follow {log}", ignored="HUP")
        follower.shows("OrvDevice_Flush .*:05")
        follower.process.send_signal(signal.SIGHUP)
        with open(log, "a") as more:
            more.write(lines.format(6))
        follower.shows("OrvDevice_Flush .*:06")
        follower.process.terminate()
        follower.ends()

    @unittest.skipUnless(WINE, "the library of the ZIP")
    def test_the_shipped_library_tells_its_version(self):
        self.assertRegex(self.orv("check"), r"version +\d+\.\d+\.\d+\r?\nBluetooth +available")


@unittest.skipIf(WINE, "there are no terminals")
class TerminalTest(WorldsTest):
    def start(self, line, columns=80):
        self.orv = Running(self, line, columns)
        self.process, self.await_shown, self.type, self.end = (
            self.orv.process, self.orv.shows, self.orv.type, self.orv.ends)

    @property
    def shown(self):
        return self.orv.shown

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
        self.assertIn(f"connected to {ECHOING}, Ctrl-D ends", self.shown)
        self.type("!x\x1b[D\x1b[3~\x1bOHä\x1b[1~hz\x08\r")  # cursor keys, Home, Delete
        self.await_shown("< hä!")
        self.await_shown("4 sent, 4 received")
        self.type("no\x1b[A\x1b[F?\r")  # Up (recalls the previous line), End
        self.await_shown(r"< hä!\?")
        self.type("draft\x1b[A\x1b[B\x15\x04")
        self.await_shown("sent 9 bytes in 2 blocks, received 9 bytes")
        self.end()

    def test_a_transfer_shows_a_bar_that_goes(self):
        self.start(f"send --simulated {ECHOING} file --block 1")  # slow, so that Ctrl-C comes before the end
        self.await_shown("█.* of 2.0 KiB, .*/s, .*:.. left")
        self.type("\x03")
        self.end(5)
        self.assertIn("stopped by Ctrl-C", self.shown)

    def test_a_step_is_shown_and_stopped(self):
        for line, step, answer in [("talk ORV-9999 --simulated", "scanning for ORV-9999: .* s, at most 10 s", ""),
                                   (f"talk --simulated slow.json {PLAIN}", f"connecting to {PLAIN}: .* s, at most 12 s",
                                    "stopping after SIGTERM: still connecting")]:
            self.start(line)
            self.await_shown(step)
            self.process.terminate()
            self.await_shown(answer)
            self.end(5)
            self.assertIn("stopped by SIGTERM while", self.shown)

    def test_a_second_interrupt_ends_what_does_not_come_back(self):
        hangs = pathlib.Path(LIBRARY).parent / "scenarios" / "close_hangs.json"
        self.start(f"send --simulated {hangs} {ECHOING} file")
        self.await_shown("sent 2048 bytes[^\\0]*disconnecting")
        self.process.terminate()
        self.await_shown("stopping after SIGTERM")
        self.process.terminate()
        self.end(-15)

    def test_a_recording_that_cannot_be_renamed_fails_once(self):
        self.start("scan --simulated --watch --record taken")
        self.await_shown(ECHOING)
        (self.folder / "taken").mkdir()
        self.type("\x03")
        self.end(6)
        self.assertIn("taken cannot be written", self.shown)

    def test_an_interrupt_ends_a_conversation(self):
        self.start(f"talk --simulated {ECHOING}")
        self.await_shown("0 sent")
        self.process.terminate()
        self.end()


if __name__ == "__main__":
    unittest.main(testRunner=AtOnce)
