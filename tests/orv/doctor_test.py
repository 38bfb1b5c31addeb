#!/usr/bin/env python3
"""Tests `orv doctor` in every shipped scenario: it must refute only the assumptions in REFUTED.

ORV is the path of the program, ORV_LIBRARY the path of the library. ORV_WINE is set if Wine runs orv.
"""
import hashlib
import json
import os
import pathlib
import pty
import re
import shutil
import subprocess
import tempfile
import unittest

SOURCE = pathlib.Path(__file__).resolve().parents[2]
ORV = ["wine"] * ("ORV_WINE" in os.environ) + [os.environ["ORV"]]
LIBRARY = pathlib.Path(os.environ["ORV_LIBRARY"])
ADDRESS, NAME = "A0:B1:C2:D3:E4:F5", "ORV-0042"
SECONDS = 100  # timeout of a run

# The assumptions that orv doctor must refute in each scenario, if any.
REFUTED = {
    "default": [],
    "close_hangs": ["close_returns"],
    "cut_name": ["name_whole"],
    "early_notifications": ["early_notifications"],
    "flood": ["quiet_device"],
    "held_by_another_program": ["not_in_use"],
    "hostile_names": ["name_harmless"],
    "name_in_scan_response": ["name_stays"],
    "no_longer_heard": ["signal"],
    "radio_off_during_scan": ["scan_lasts"],
    "single_threaded_apartment": [],
    "system_gives_up_late": ["connect_in_time"],
    "two_links": [],
    "unseen_since_boot": ["known_before_scan"],
    "vanishes": ["device_stays"],
    "write_arrives_late": ["write_answered"],
    "write_too_large": ["block_size"],
}
DEVICE = {"address": ADDRESS, "name": NAME, "interval": 100, "echo": 15}

# Further simulated worlds, each with the assumptions that orv doctor must refute in it.
WORLDS = {
    "no_radio": ({"radios": []}, []),
    "radio_not_seen": ({"devices": [DEVICE], "answers": [{"operation": "FindAdapter", "endsAs": "Error"}]},
                       ["radio_on"]),
    "talks_by_itself": ({"devices": [DEVICE], "events": [
        {"after": 10, "device": ADDRESS, "notify": "ff", "times": 5000, "every": 5}]}, ["notifications"]),
    "no_scan": ({"devices": [DEVICE], "faults": [{"member": "BluetoothLEAdvertisementWatcher.Start",
                                                 "code": "0x80004005"}]}, ["first_heard", "log_lines"]),
    "in_use": ({"devices": [{**DEVICE, "answers": [{"operation": "RequestAccess", "status": "DeniedByUser"}]}]},
               ["not_in_use"]),
    "fast_writes": ({"devices": [{**DEVICE, "echo": 1}]}, ["write_kind"]),
    "hangs": ({"devices": [DEVICE], "faults": [{"member": "BluetoothLEAdvertisementWatcher.Start", "hang": True}]},
              ["time_bounds"]),
    "never_there": ({"devices": [{**DEVICE, "present": False}]}, ["connect"]),
}


class DoctorTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.folder = pathlib.Path(folder.name)
        shutil.copy(LIBRARY, cls.folder)  # the library writes its log beside its file
        shutil.copytree(SOURCE / "scenarios", cls.folder / "scenarios")

    def doctor(self, line, status):
        report = self.folder / "report.json"
        command = ORV + ["doctor", "--library", self.folder / LIBRARY.name, "--report", report]
        run = subprocess.run(command + line.split(), cwd=self.folder, stdin=subprocess.DEVNULL,
                             capture_output=True, timeout=SECONDS)
        self.assertEqual(run.returncode, status, f"{line}\n{run.stdout.decode()}\n{run.stderr.decode()}")
        found = json.loads(report.read_text())
        self.assertEqual(found["text"], run.stdout.decode().replace("\r", ""))
        return found, {check["id"]: check["verdict"] for check in found["checks"]}

    def refuted(self, scenario, wanted, status):
        verdicts = self.doctor(f"--simulated {scenario} --device {ADDRESS} --echo", status)[1]
        self.assertEqual([name for name in verdicts if verdicts[name] == "refuted"], wanted)
        return verdicts

    def test_each_scenario_refutes_its_own(self):
        shipped = {path.stem for path in (SOURCE / "scenarios").glob("*.json")} - {"scenario.schema"}
        self.assertEqual(shipped, set(REFUTED))
        for scenario, wanted in REFUTED.items():
            with self.subTest(scenario):
                self.refuted(scenario, wanted, 7 if wanted else 0)

    def test_worlds_that_refute_the_other_checks(self):
        for name, (world, wanted) in WORLDS.items():
            (self.folder / f"{name}.json").write_text(json.dumps({"title": name, **world}))
            with self.subTest(name):
                self.refuted(f"{name}.json", wanted, 7 if wanted else 1)

    def test_default_world_confirms_everything(self):
        for line in (f"--device {ADDRESS} --echo --simulated", f"--simulated two_links --device {ADDRESS} --echo"):
            report, verdicts = self.doctor(line, 0)
            self.assertEqual(verdicts["second_link"], "confirmed")
        report, verdicts = self.doctor(f"--device {ADDRESS} --echo --simulated", 0)
        self.assertEqual(set(verdicts.values()), {"confirmed"})
        file = next(check for check in report["checks"] if check["id"] == "library_file")
        self.assertIn(hashlib.sha256(LIBRARY.read_bytes()).hexdigest().upper(), file["seen"].upper())

    def test_without_what_a_check_needs(self):
        report, verdicts = self.doctor("--simulated --anonymous", 0)
        untested = {name for name, verdict in verdicts.items() if verdict == "not tested"}
        self.assertLessEqual({"known_before_scan", "block_size", "radio_link"}, untested)
        self.assertNotIn("connect", untested)  # the doctor chose the device with the strongest signal
        for private in (ADDRESS, "ORV-00", str(0xA0B1C2D3E4F5), str(self.folder)):
            self.assertNotIn(private, json.dumps(report))
        self.assertEqual(self.doctor("--simulated --device nobody", 0)[1]["connect"], "not tested")
        log = self.folder / f"{LIBRARY.name}.log"
        log.unlink()
        log.mkdir()
        self.addCleanup(log.rmdir)
        verdicts = self.doctor(f"--simulated --device {NAME} --echo", 0)[1]
        untested = {name for name, verdict in verdicts.items() if verdict == "not tested"}
        self.assertEqual(untested, {"known_before_scan", "early_notifications", "late_notifications", "log_lines",
                                    "radio_scan"})

    def test_a_person_switches_the_radio(self):
        # This copy of the library lacks the export that switches the radio off and on, so orv asks
        # the user. Scheduled events switch the radio instead of the user.
        library = self.folder / "person.so"
        library.write_bytes(LIBRARY.read_bytes().replace(b"OrvWorld_SwitchRadio", b"OrvWorld_SwitchOther"))
        world = {"title": "switched", "devices": [DEVICE],
                 "events": [{"at": 5000, "radio": 0, "state": "Off"}, {"at": 8000, "radio": 0, "state": "On"}]}
        (self.folder / "switched.json").write_text(json.dumps(world))
        line = f"doctor --library {library} --device nobody --simulated"
        for scenario, answers, verdicts in [("switched.json", None, ["not tested", "not tested"]),
                                            ("switched.json", ["\n", "\n"], ["confirmed", "confirmed"]),
                                            ("switched.json", ["s\n"], ["not tested", "not tested"]),
                                            ("default", ["\n", "\n"], ["refuted", "not tested"])]:
            with self.subTest(scenario, answers=answers):
                text = self.in_terminal(f"{line} {scenario}", answers)
                self.assertEqual([re.search(f"^(.*?)  +.*\\({check}\\)", text, re.MULTILINE)[1]
                                  for check in ("radio_off", "radio_scan")], verdicts, text)

    def in_terminal(self, line, answers):
        command = ORV + line.split()
        if answers is None:
            return subprocess.run(command, cwd=self.folder, stdin=subprocess.DEVNULL, capture_output=True,
                                  timeout=SECONDS, text=True).stdout
        terminal, theirs = pty.openpty()
        shown = b""
        with subprocess.Popen(command, cwd=self.folder, stdin=theirs, stdout=theirs, stderr=subprocess.DEVNULL,
                              env=dict(os.environ, TERM="xterm")):
            os.close(theirs)
            try:
                while True:
                    shown += os.read(terminal, 65536)
                    if shown.endswith(b"skip): "):
                        os.write(terminal, answers.pop(0).encode())
            except OSError:  # orv has closed the terminal
                os.close(terminal)
        return shown.decode().replace("\r", "")

    def test_sections_exist(self):
        report = self.doctor("--simulated no_longer_heard", 7)[0]
        for entry in report["checks"] + report["notChecked"]:
            file, _, anchor = entry["section"].partition("#")
            text = (SOURCE / file).read_text(encoding="utf-8")
            headings = re.findall(r"^#+ (.*)", text, re.MULTILINE)
            anchors = {re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-") for heading in headings}
            self.assertIn(anchor, anchors | {""}, file)


if __name__ == "__main__":
    unittest.main()
