"""A mosquitto broker on a loopback port, and a client that collects messages."""
import json
import pathlib
import re
import socket
import subprocess
import threading
import time

import paho.mqtt.client as mqtt

SECONDS = 60  # timeout of each wait


class Mosquitto:
    """A broker that keeps retained and queued messages across a restart. `more` holds further configuration lines."""

    def __init__(self, folder, more="allow_anonymous true"):
        # Bound without listening: the broker can listen on the port, and the system gives it to no other program.
        self.reservation = socket.socket()
        self.reservation.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
        self.reservation.bind(("127.0.0.1", 0))
        self.port = self.reservation.getsockname()[1]
        self.folder = pathlib.Path(folder)
        self.configuration = self.folder / "mosquitto.conf"
        self.configuration.write_text(f"listener {self.port} 127.0.0.1\npersistence true\nuser root\nautosave_interval 1\n"
                                      f"persistence_location {folder}/\nmax_queued_messages 0\n{more}\n")
        self.log = open(self.folder / "mosquitto.log", "ab")
        self.start()

    def start(self):
        self.process = subprocess.Popen(["mosquitto", "-c", self.configuration], stdout=self.log, stderr=self.log)
        end = time.monotonic() + SECONDS
        while True:
            try:
                return socket.create_connection(("127.0.0.1", self.port)).close()
            except OSError:
                assert time.monotonic() < end and self.process.poll() is None, "mosquitto does not start"
                time.sleep(0.02)

    def stop(self, kill=False):
        (self.process.kill if kill else self.process.terminate)()
        self.process.wait()

    def close(self):
        self.stop(kill=True)
        self.log.close()
        self.reservation.close()


def parse(payload):
    try:
        return json.loads(payload or "{}")
    except (ValueError, RecursionError):  # a test published an invalid message
        return {}


class Consumer:
    """Collects all messages under orv/SITE/ in order. The client's session survives a restart of the broker."""

    def __init__(self, host, port, tls=None, site="works", name="consumer"):
        self.site, self.changed = f"orv/{site}/", threading.Condition()
        self.facts, self.blocks, self.history, self.duplicates = {}, {}, [], 0
        self.client = mqtt.Client(name, clean_session=False)
        self.client.max_inflight_messages_set(1000)
        self.client.reconnect_delay_set(1, 1)
        if tls:
            self.client.tls_set(**tls)
        self.client.on_message = self.take
        self.client.on_connect = lambda client, *_: client.subscribe(self.site + "#", 1)
        self.client.connect(host, port)
        self.client.loop_start()

    def take(self, _client, _data, message):
        topic = message.topic[len(self.site):]
        found = re.fullmatch(r"gateway/([^/]+)/device/([^/]+)/received/(\d+)/(\d+)", topic)
        with self.changed:
            self.history.append((time.time(), topic, message.payload))
            if found:
                gateway, device, run, number = found.groups()
                blocks = self.blocks.setdefault((gateway, device, int(run)), {})
                self.duplicates += int(number) in blocks
                blocks[int(number)] = message.payload
            else:
                self.facts[topic] = message.payload
            self.changed.notify_all()

    def fact(self, topic):
        return parse(self.facts.get(topic))

    def all_facts(self, topic):
        return [parse(payload) for _, other, payload in self.history if other == topic]

    def await_that(self, claim, what):
        with self.changed:
            assert self.changed.wait_for(claim, SECONDS), f"{what} does not come: {self.facts}"

    def bytes_of(self, device):
        """Returns all bytes from a device, sorted by gateway run and then by block number."""
        return b"".join(blocks[number] for key, blocks in sorted(self.blocks.items(), key=lambda item: item[0][2])
                        if key[1] == device for number in sorted(blocks))

    def publish(self, topic, payload, retain=False):
        self.client.publish(self.site + topic, payload, 1, retain).wait_for_publish(SECONDS)

    def close(self):
        self.client.loop_stop()
        self.client.disconnect()
