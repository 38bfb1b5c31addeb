#!/usr/bin/env python3
"""Tests `orv bridge mqtt` with simulated devices and the broker mosquitto. ORV_SCHEMA is the JSON schema of messages."""
import json
import os
import pathlib
import random
import re
import signal
import socket
import subprocess
import time
import unittest

import jsonschema

from bridge_test import DATA, FIRST, SECOND, Bridge
from broker import Consumer, Mosquitto
from running import ORV, SECONDS, AtOnce
from world_case import WorldCase

SCHEMA = json.loads(pathlib.Path(os.environ["ORV_SCHEMA"]).read_text())
KINDS = [(r"gateway/\w+/status", "status"), (r"gateway/\w+/heard/\S+", "heard"), (r"gateway/\w+/device/\S+/link", "link"),
         (r"gateway/\w+/device/\S+/sent", "sent"), (r"device/\S+/claim", "claim")]
SILENT = {"address": FIRST, "name": "ORV-0042", "interval": 50}
DEVICE = {**SILENT, "echo": 1}
CROWD = [FIRST, *(f"00:00:00:00:01:{i:02X}" for i in range(69))]  # more devices than a gateway can connect to
LINES = {"after": 100, "device": FIRST, "notify": "6c696e650a", "times": 10000, "every": 20}


class SiteTest(WorldCase):
    worlds = {
        "strong": {"devices": [{**DEVICE, "signal": -50}]},
        "weak": {"devices": [{**DEVICE, "signal": -80}]},
        "connecting": {"devices": [{**DEVICE, "signal": -80,
                                    "answers": [{"operation": "FindServices", "never": True}]}]},
        "busy": {"devices": [SILENT], "events": [LINES]},
        "flood": {"devices": [SILENT],
                  "events": [{**LINES, "notify": "55" * 4000, "every": 2}]},
        "rejecting": {"devices": [{**DEVICE, "signal": -40,
                                   "answers": [{"operation": "FindServices", "status": "Unreachable"}]}]},
        "crowd": {"devices": [{**SILENT, "address": address} for address in CROWD]},
        "hostile": {"devices": [{**DEVICE, "name": "ORV\x1b]0;\x07\n\u202e\"#+/$"}]},
        "changing": {"devices": [{**DEVICE, "interval": 0, "signalSpread": 5}],
                     "events": [{"at": at, "device": FIRST, "advertise": "Advertisement", "name": name, "times": times, "every": 50}
                                for at, name, times in ((100, "ORV-OLD", 40), (2100, "ORV-NEW", 1000))]},
    }
    URL, tls = "mqtt://127.0.0.1", None

    def setUp(self):
        super().setUp()
        self.broker = self.make_broker()
        self.addCleanup(self.broker.close)
        self.site = self.consumer("consumer")

    def consumer(self, name):
        consumer = Consumer("localhost" if self.tls else "127.0.0.1", self.broker.port, self.tls, name=name)
        self.addCleanup(consumer.close)
        return consumer

    def make_broker(self):
        return Mosquitto(self.folder)

    def gateway(self, name, world, options=""):
        bridge = Bridge(self, f"bridge mqtt --broker {self.URL}:{self.broker.port} --site works --gateway {name} "
                              f"--simulated {world}.json {options}")
        self.site.await_that(lambda: self.site.fact(f"gateway/{name}/heard/{FIRST}"), "advertisement")
        return bridge

    def link(self, name):
        return self.site.fact(f"gateway/{name}/device/{FIRST}/link")

    def connect(self, name, retain=False):
        self.site.publish(f"device/{FIRST}/connect", b"on", retain)
        self.await_link(name)

    def await_outcome(self, number):
        self.site.await_that(lambda: self.site.fact(f"gateway/desk/device/{FIRST}/sent").get("id") == str(number), "outcome")

    def await_link(self, name, state="open"):
        self.site.await_that(lambda: self.link(name).get("state") == state, f"{state} link of {name}")

    def holders(self):
        """Returns the gateways that had an open link, in order. Fails if two were open at the same time."""
        opened, order = set(), []
        for _, topic, payload in self.site.history:
            found = re.fullmatch(r"gateway/(\w+)/(?:device/\S+/link|status)", topic)
            if found and payload:
                fact, name = json.loads(payload), found.group(1)
                if fact["state"] == "open" and name not in opened:
                    opened.add(name)
                    order.append(name)
                elif fact["state"] in ("closed", "offline", "waiting"):
                    opened.discard(name)
            self.assertLessEqual(len(opened), 1, "two links at a time")
        return order

    def tearDown(self):
        for _, topic, payload in getattr(self, "site").history:
            kind = next((kind for pattern, kind in KINDS if re.fullmatch(pattern, topic)), None)
            if kind and payload and not getattr(self, "forges", False):
                jsonschema.validate(json.loads(payload), {**SCHEMA, "$ref": f"#/definitions/{kind}"})


class MqttTest(SiteTest):
    def test_bytes_are_exact_in_both_directions_and_numbered(self):
        bridge = self.gateway("desk", "strong", "--block 244")
        self.connect("desk")
        for i in range(16):
            self.site.publish(f"device/{FIRST}/send/{i}", DATA[i * 4096:(i + 1) * 4096])
            self.site.publish(f"device/{FIRST}/send/{i}", b"sent twice under one id")
            self.await_outcome(i)
        self.site.await_that(lambda: len(self.site.bytes_of(FIRST)) >= len(DATA), "echo")
        self.assertEqual(self.site.bytes_of(FIRST), DATA)
        [numbers] = self.site.blocks.values()
        self.assertEqual(sorted(numbers), list(range(1, len(numbers) + 1)))
        self.site.publish(f"device/{FIRST}/disconnect", b"")
        self.await_link("desk", "closed")
        self.site.await_that(lambda: self.site.facts.get(f"device/{FIRST}/claim") == b"", "removed claim")
        bridge.end()
        self.site.await_that(lambda: self.site.fact("gateway/desk/status")["state"] == "offline", "offline")
        self.assertNotIn(DATA[:8], (self.folder / "mosquitto.log").read_bytes() + bridge.shown.encode())

    def test_bytes_are_exact_for_a_slow_consumer_and_a_publisher_that_goes_half_way(self):
        self.gateway("desk", "strong", "--block 244")
        self.connect("desk")
        slow = self.consumer("slow")
        slow.await_that(lambda: slow.facts, "subscription")
        slow.client.loop_stop()
        with socket.create_connection(("127.0.0.1", self.broker.port)) as publisher:  # writes MQTT 3.1.1 itself
            topic = f"orv/works/device/{FIRST}/send/".encode()
            packet = lambda name, data: (b"\x30" + bytes([len(data) + len(topic) + 3 & 127 | 128, len(data) + len(topic) + 3 >> 7])
                                         + bytes([0, len(topic) + 1]) + topic + name + data)
            publisher.sendall(b"\x10\x0c\x00\x04MQTT\x04\x02\x00\x3c\x00\x00" + packet(b"0", DATA[:8192])
                              + packet(b"1", DATA[8192:16000])[:4000])
        for i, start in enumerate(range(8192, len(DATA), 8192), 1):
            self.await_outcome(i - 1)
            self.site.publish(f"device/{FIRST}/send/{i}", DATA[start:start + 8192])
        self.site.await_that(lambda: len(self.site.bytes_of(FIRST)) >= len(DATA), "echo")
        slow.client.loop_start()
        slow.await_that(lambda: len(slow.bytes_of(FIRST)) >= len(DATA), "echo for the slow consumer")
        self.assertEqual((self.site.bytes_of(FIRST), slow.bytes_of(FIRST)), (DATA, DATA))

    def test_sends_that_find_no_room_are_refused_as_a_whole(self):
        self.gateway("desk", "strong", "--block 244")
        self.connect("desk")
        pieces = [DATA[i * 4096 % 61440:][:4096] for i in range(40)]
        for i, piece in enumerate(pieces):
            self.site.client.publish(f"orv/works/device/{FIRST}/send/{i}", piece, 1)
        sent = lambda: [json.loads(payload) for _, topic, payload in self.site.history if topic.endswith("/sent")]
        refused = lambda: self.site.fact("gateway/desk/status").get("refused", 0)
        self.site.await_that(lambda: len(sent()) + refused() == 40, "outcome of each send")
        expected = b"".join(pieces[int(fact["id"])] for fact in sent())
        self.site.await_that(lambda: len(self.site.bytes_of(FIRST)) >= len(expected), "echo")
        self.assertEqual((self.site.bytes_of(FIRST), sum(fact["lost"] for fact in sent())), (expected, 0))

    def test_a_gateway_outlives_a_broker_that_breaks_the_protocol(self):
        with socket.create_server(("127.0.0.1", 0)) as broker:
            broker.settimeout(SECONDS)
            bridge = Bridge(self, f"bridge mqtt --broker mqtt://127.0.0.1:{broker.getsockname()[1]} --site works "
                                  "--simulated strong.json")
            for answer in (b"\x20\x03\x00\x00\x00\x00\x00", b"\xff" * 9, b""):
                peer = broker.accept()[0]
                with peer:
                    peer.recv(1000)
                    peer.sendall(answer)
            bridge.shows("waiting; .+")

    def test_changes_are_published_at_once_and_signals_rarely(self):
        self.gateway("desk", "changing")
        self.site.await_that(lambda: self.site.fact(f"gateway/desk/heard/{FIRST}").get("name") == "ORV-NEW", "new name")
        self.assertLess(sum("/heard/" in topic for _, topic, _ in self.site.history), 6)

    def test_a_stronger_signal_takes_a_device_that_has_no_link(self):
        self.gateway("weak", "connecting")
        self.site.publish(f"device/{FIRST}/connect", b"on", retain=True)
        self.site.await_that(lambda: self.site.fact(f"device/{FIRST}/claim").get("gateway") == "weak", "claim of weak")
        self.gateway("strong", "strong")
        self.await_link("strong")
        self.assertEqual(self.holders(), ["strong"])

    def test_another_gateway_follows_one_that_is_killed_and_keeps_its_link(self):
        strong = self.gateway("strong", "strong")
        self.connect("strong", retain=True)
        self.gateway("weak", "weak")
        strong.process.send_signal(signal.SIGKILL)
        self.await_link("weak")
        self.gateway("strong", "strong")
        self.site.await_that(lambda: self.site.fact("gateway/strong/status")["state"] == "online", "return")
        self.site.publish(f"device/{FIRST}/send/1", b"to the holder")
        self.site.await_that(lambda: self.site.bytes_of(FIRST) == b"to the holder", "echo")
        self.assertEqual(self.holders(), ["strong", "weak"])

    def test_a_gateway_that_cannot_connect_leaves_the_device_to_others(self):
        self.gateway("near", "rejecting")
        self.gateway("far", "weak")
        self.connect("far")
        self.assertEqual(self.holders(), ["far"])

    def test_devices_that_find_no_room_are_left_to_other_gateways(self):
        self.gateway("desk", "crowd")
        # A gateway subscribes to the commands of a device before it publishes the device.
        self.site.await_that(lambda: all(self.site.fact(f"gateway/desk/heard/{device}") for device in CROWD), "crowd")
        for device in CROWD:
            self.site.publish(f"device/{device}/connect", b"on")
        count = lambda kind, wanted: sum(topic.endswith(kind) and wanted in payload for topic, payload in self.site.facts.items())
        self.site.await_that(lambda: count("/link", b'"open"') == 64, "links")
        self.site.await_that(lambda: count("/claim", b"desk") == 64, "claims")

    def test_nothing_is_lost_while_the_broker_is_away(self):
        self.gateway("desk", "busy")
        self.connect("desk")
        self.site.await_that(lambda: len(self.site.bytes_of(FIRST)) > 100, "lines")
        self.broker.stop()
        before = len(self.site.bytes_of(FIRST))
        self.broker.start()
        self.site.await_that(lambda: len(self.site.bytes_of(FIRST)) > before + 500, "lines after the restart")
        self.site.publish(f"device/{FIRST}/send/1", bytes(70000))  # too long: the broker does not forward it
        [blocks] = self.site.blocks.values()
        numbers = sorted(blocks)  # read once, because blocks still arrive
        self.assertEqual(numbers, list(range(1, len(numbers) + 1)))

    def test_what_finds_no_room_is_dropped_by_number(self):
        bridge = self.gateway("desk", "flood", "--queue 1")
        self.connect("desk")
        self.site.await_that(lambda: self.site.blocks, "blocks")
        self.broker.stop()
        bridge.shows("blocks dropped")
        self.broker.start()
        self.site.await_that(lambda: self.link("desk").get("dropped", {}).get("blocks", 0) > 0, "dropped blocks")
        [numbers] = self.site.blocks.values()
        dropped = self.link("desk")["dropped"]
        self.site.await_that(lambda: max(numbers) > dropped["last"], "blocks after the gap")
        dropped = self.link("desk")["dropped"]
        missing = sorted(set(range(1, dropped["last"] + 1)) - set(numbers))
        self.assertEqual((missing[-1], len(missing)), (dropped["last"], dropped["blocks"]))

    def test_hostile_messages_change_nothing(self):
        self.forges = True
        for command in ("send/old", "disconnect"):
            self.site.publish(f"device/{FIRST}/{command}", b"never again", retain=True)
        bridge = self.gateway("desk", "hostile")
        self.assertEqual(self.site.fact(f"gateway/desk/heard/{FIRST}")["name"][:3], "ORV")
        self.connect("desk")
        rng = random.Random(14)
        for topic in (f"device/{FIRST}/claim", f"device/{SECOND}/claim", f"device/{FIRST}/send/", f"device/{FIRST}/send/a b",
                      "device/nobody/connect", "device/0/claim", "gateway/x/status", "gateway/desk/status"):
            for payload in (b"{", b"[" * 60000, b'{"gateway":1e999}', b'{"gateway":"../x","signal":0,"open":true}',
                            b'{"gateway":"x","signal":1e30,"open":true}', b'{"state":[]}', rng.randbytes(70000)):
                self.site.publish(topic, payload)
        self.site.publish(f"device/{FIRST}/send/end", b"still here")
        self.site.await_that(lambda: self.site.bytes_of(FIRST) == b"still here", "echo")
        # Searches all status messages, because a forged one may come last.
        self.site.await_that(lambda: any(isinstance(status, dict) and status.get("refused") == 20
                                         for status in self.site.all_facts("gateway/desk/status")), "refusals")
        bridge.shows("refused")
        self.assertNotRegex(bridge.shown, r"[\x00-\x09\x0b-\x1f\x7f-\x9f\u202e]")

    def test_a_flood_of_messages_is_bounded(self):
        self.forges = True
        bridge = self.gateway("desk", "strong")
        most = lambda: int(re.search(r"VmHWM:\s+(\d+)", pathlib.Path(f"/proc/{bridge.process.pid}/status").read_text())[1])
        before = most()
        bridge.process.send_signal(signal.SIGSTOP)
        for i in range(400):  # 24 MB in total
            self.site.client.publish(f"orv/works/device/{FIRST}/claim", b"x" * 60000, 1)
        bridge.process.send_signal(signal.SIGCONT)
        self.connect("desk")
        self.site.await_that(lambda: self.site.fact("gateway/desk/status").get("refused", 0) == 400, "refusals")
        if "ORV_SANITIZED" not in os.environ:  # sanitizers keep freed memory
            self.assertLess(most() - before, 12000, "kB")

    def test_wrong_options_are_named(self):
        (self.folder / "empty").write_text("")
        for options, status, text in [
                ("--broker mqtts://h", 2, "--site is missing"),
                ("--broker mqtts://h --site a/b", 2, "is not a name of a site"),
                ("--broker http://h --site s", 2, "not the address of a broker"),
                ("--broker mqtts://u:p@h --site s", 2, "--password-file"),
                ("--broker mqtts://h:0 --site s", 2, "port"),
                ("--broker mqtts:// --site s", 2, "not the address of a broker"),
                ("--broker mqtt://192.0.2.1 --site s", 2, "unencrypted"),
                ("--broker mqtt://127.0.0.1.example.org --site s", 2, "unencrypted"),
                ("--broker mqtt://localhost --site s --queue 0", 2, "--queue"),
                ("--broker mqtts://h --site s --cert empty", 2, "--key"),
                ("--broker mqtts://h --site s --ca nothing", 2, "nothing"),
                ("--broker mqtts://h --site s --user u --password-file empty", 6, "cannot read a password")]:
            with self.subTest(options):
                run = subprocess.run(ORV + ["bridge", "mqtt", *options.split()], cwd=self.folder, capture_output=True,
                                     text=True, timeout=60)
                self.assertEqual((run.returncode, text in run.stderr), (status, True), run.stderr)
                self.assertNotIn("u:p", run.stderr)


class AccessTest(SiteTest):
    def make_broker(self):
        (self.folder / "access").write_text(
            "topic read #\ntopic orv/works/device/#\ntopic write orv/works/gateway/+/status\n"
            "topic write orv/works/gateway/+/heard/#\ntopic write orv/works/gateway/+/device/+/link\n")
        return Mosquitto(self.folder, f"allow_anonymous true\nacl_file {self.folder}/access")

    def test_blocks_that_the_broker_refuses_are_counted(self):
        bridge = self.gateway("desk", "busy")
        self.connect("desk")
        bridge.shows("messages were dropped: Not authorized")
        bridge.shows("[2-9] blocks dropped")  # mosquitto also closes the connection for each block
        self.site.await_that(lambda: self.link("desk").get("dropped", {}).get("blocks"), "dropped blocks")
        dropped = self.link("desk")["dropped"]
        self.assertEqual((dropped["first"], dropped["last"], self.site.blocks), (1, dropped["blocks"], {}))


class TlsTest(SiteTest):
    URL = "mqtts://localhost"

    def make_broker(self):
        def openssl(line):
            subprocess.run(["openssl", *line.split()], cwd=self.folder, check=True, capture_output=True)
        new = "-newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -days 2"
        openssl(f"req -x509 {new} -keyout ca.key -out ca.crt -subj /CN=ca")
        for name in ("localhost", "client"):
            openssl(f"req {new} -keyout {name}.key -out {name}.csr -subj /CN={name}")
            openssl(f"x509 -req -in {name}.csr -CA ca.crt -CAkey ca.key -CAcreateserial -out {name}.crt -days 2")
        self.tls = {"ca_certs": self.folder / "ca.crt", "certfile": self.folder / "client.crt",
                    "keyfile": self.folder / "client.key"}
        return Mosquitto(self.folder, f"cafile {self.folder}/ca.crt\ncertfile {self.folder}/localhost.crt\n"
                                      f"keyfile {self.folder}/localhost.key\nrequire_certificate true\n"
                                      "use_identity_as_username true")

    def test_only_who_has_a_certificate_is_let_in(self):
        self.gateway("desk", "strong", "--ca ca.crt --cert client.crt --key client.key")
        self.connect("desk")
        log = self.folder / "mosquitto.log"
        for options, why in (("--ca ca.crt", "peer did not return a certificate"),
                             ("--cert client.crt --key client.key", "alert unknown ca")):
            with self.subTest(options):
                refused = Bridge(self, f"bridge mqtt --broker {self.URL}:{self.broker.port} --site works --gateway no "
                                       f"{options} --simulated strong.json")
                end = time.monotonic() + SECONDS
                while why not in log.read_text():
                    self.assertLess(time.monotonic(), end, log.read_text())
                    time.sleep(0.02)  # the broker writes the log
                refused.shows("waiting; .+")
        self.assertNotIn("gateway/no/status", self.site.facts)


if __name__ == "__main__":
    unittest.main(testRunner=AtOnce)
