#!/usr/bin/env python3
"""Measures losses, latency and cost of `orv bridge mqtt` with a mosquitto broker on loopback.

Usage: site.py ORV GATEWAYS DEVICES EVERY_MS BYTES SECONDS [kill-broker] [kill-gateway]

Each gateway is an orv process with its own simulated world. A device sends a numbered notification
every EVERY_MS. The latency is the time from the notification's due time, by the gateway's clock,
until the MQTT consumer receives it.
"""
import contextlib
import json
import os
import pathlib
import subprocess
import sys
import tempfile
import time

sys.path.insert(0, str(pathlib.Path(__file__).parents[1] / "tests/orv"))
from broker import Consumer, Mosquitto  # noqa: E402  needs the path above

TICKS = os.sysconf("SC_CLK_TCK")
SETTLE_MS = 10000  # time for the links to open before the first notification


def address(gateway, device):
    return f"A0:00:00:00:{gateway:02X}:{device:02X}"


def world(gateway, devices, every, size, seconds):
    count = seconds * 1000 // every
    addresses = [address(gateway, device) for device in range(devices)]
    events = [{"at": SETTLE_MS + number * every + index * every // devices, "device": name,
               "notify": number.to_bytes(4, "big").hex() + "00" * (size - 4)}
              for number in range(count) for index, name in enumerate(addresses)]
    return {"title": "site", "events": events,
            "devices": [{"address": name, "name": "ORV", "interval": 200} for name in addresses]}


def usage(pid):
    """Returns a process's processor time in seconds and its memory in kB."""
    fields = pathlib.Path(f"/proc/{pid}/stat").read_text().rsplit(")", 1)[1].split()
    memory = pathlib.Path(f"/proc/{pid}/status").read_text().split("VmRSS:")[1].split()[0]
    return (int(fields[11]) + int(fields[12])) / TICKS, int(memory)


def percentile(values, share):
    return sorted(values)[min(len(values) - 1, int(len(values) * share))] if values else float("nan")


def measure(orv, gateways, devices, every, size, seconds, kills, folder, cleanup):
    broker = Mosquitto(folder, "allow_anonymous true\nmax_inflight_messages 0")
    cleanup.callback(broker.close)
    site = Consumer("127.0.0.1", broker.port)
    cleanup.callback(site.close)
    processes = []
    for gateway in range(gateways):
        path = pathlib.Path(folder) / f"{gateway}.json"
        path.write_text(json.dumps(world(gateway, devices, every, size, seconds)))
        processes.append(subprocess.Popen(
            [orv, "bridge", "mqtt", "--broker", f"mqtt://127.0.0.1:{broker.port}", "--site", "works", "--gateway",
             f"g{gateway}", "--simulated", path], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL))
        cleanup.callback(processes[-1].kill)
        for device in range(devices):
            site.client.publish(f"orv/works/device/{address(gateway, device)}/connect", b"on", 1, True)
        time.sleep(0.05)  # so that they do not all start at once
    began = time.time()
    time.sleep(SETTLE_MS / 1000 + seconds / 3)
    before, at = [usage(process.pid) for process in processes], time.time()
    if "kill-broker" in kills:
        broker.stop(kill=True)
        time.sleep(3)
        broker.start()
    if "kill-gateway" in kills:
        processes[0].kill()
    time.sleep(max(0, began + SETTLE_MS / 1000 + seconds + 5 - time.time()))
    alive = [(process, then) for process, then in zip(processes, before) if process.poll() is None]
    elapsed = time.time() - at
    costs = [(usage(process.pid)[0] - then[0], usage(process.pid)[1]) for process, then in alive]
    facts = {topic: json.loads(payload) for topic, payload in list(site.facts.items()) if topic.endswith("/link") and payload}
    for process, _ in alive:
        process.terminate()
    for process, _ in alive:
        process.wait()
    time.sleep(1)
    return site, facts, [cost / elapsed * 100 for cost, _ in costs], [memory for _, memory in costs]


def main():
    orv, (gateways, devices, every, size, seconds) = sys.argv[1], map(int, sys.argv[2:7])
    kills = sys.argv[7:]
    with tempfile.TemporaryDirectory() as folder, contextlib.ExitStack() as cleanup:
        site, facts, processor, memory = measure(orv, gateways, devices, every, size, seconds, kills, folder, cleanup)
    when = {(topic, len(payload)): at for at, topic, payload in reversed(site.history)}  # first arrival
    received, lost, latencies, unlinked = 0, 0, [], gateways * devices - len(site.blocks)
    for (gateway, device, run), blocks in site.blocks.items():
        lost += max(blocks) - len(blocks)
        numbers, rest = set(), b""  # a notification may begin in one block and end in the next
        for number in sorted(blocks):
            at = when[f"gateway/{gateway}/device/{device}/received/{run}/{number}", len(blocks[number])]
            rest += blocks[number]
            while len(rest) >= size:
                index, rest = int.from_bytes(rest[:4], "big"), rest[size:]
                numbers.add(index)
                due = SETTLE_MS + index * every + int(device[-2:], 16) * every // devices
                latencies.append(at * 1000 - run - due)
        received += len(numbers)
    dropped = sum(fact["dropped"]["blocks"] for fact in facts.values())
    # Assumes that all links were open, which is wrong only if a gateway was killed.
    sent = gateways * devices * (seconds * 1000 // every)
    print(f"| {gateways} x {devices} | {size} bytes every {every} ms | {', '.join(kills) or '-'} | {sent} | {received} | "
          f"{lost} | {dropped} | {site.duplicates} | {percentile(latencies, .5):.0f} ms | {percentile(latencies, .99):.0f} ms | "
          f"{percentile(processor, .5):.1f} % | {percentile(memory, .5) / 1024:.1f} MiB |")
    if unlinked > 0:
        print(f"{unlinked} devices never sent a block")


if __name__ == "__main__":
    main()
