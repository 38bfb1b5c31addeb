#!/usr/bin/env python3
"""Prints a benchmark run as a table. The floor is the cost of minimal code with the same effect.

Usage: bench_table.py BENCH_JSON MISSES_JSON FLOOD_JSON

Each figure is the fastest of its repetitions. Exits with 1 when a figure is over its budget.
MISSES_JSON is the output of tools/instructions --misses, FLOOD_JSON that of bench/flood.cpp.
"""
import json
import re
import sys

# Events per second on a fully used radio.
RATES = [
    (r"^notification of 244 bytes$", 718),
    (r"^notification of 20 bytes", 2016),
    (r"^advertisement,", 1630),
    (r"^send of 244 bytes$", 718),
    (r"^send of 20 bytes$", 2016),
]
# The largest allowed ratio of the library's cost to that of minimal code, for each benchmark.
BUDGETS = [
    (r"^empty poll, \d+ links$", 3),
    (r"^notification of 244 bytes$", 1.2),
    (r"^receive of 1 MiB$", 4),
    (r"^log line, log on$", 1.25),
]
LENGTHS = (10, 1000, 100000, 1000000)  # numbers of listed devices
LARGEST_GROWTH = 1.5  # allowed ratio to the cost with 10 devices, without cache misses
LARGEST_PAUSE_NS = 1e6  # longest allowed advertisement, also when the list grows
LARGEST_DEVICE = 96  # allowed bytes of memory per device


def load(path):
    with open(path, encoding="utf-8") as file:
        return json.load(file)


def read(path):
    """Returns {row: {side: (ns, allocations)}}; a side is "ours", "floor" (minimal code) or "runtime"."""
    rows = {}
    for run in load(path)["benchmarks"]:
        if run.get("run_type") != "iteration":
            continue
        row, side = run["name"].split("/")[:2]
        sides = rows.setdefault(row, {})
        if side not in sides or run["real_time"] < sides[side][0]:
            sides[side] = (run["real_time"], run["allocations"])
    return dict(sorted(rows.items(), key=lambda row: [
        int(part) if part.isdigit() else part for part in re.split(r"(\d+)", row[0])]))


def matching(table, row):
    return next((value for pattern, value in table if re.match(pattern, row)), None)


def time_text(ns):
    if ns is None:
        return "-"
    return "%.1f ns" % ns if ns < 1000 else "%.2f us" % (ns / 1e3) if ns < 1e6 else \
        "%.2f ms" % (ns / 1e6)


def line(cells):
    print("| %-44s | %10s | %10s | %5s | %10s | %8s | %11s | %-13s |" % tuple(cells))


def print_rows(rows):
    print()
    line(("row", "ours", "floor", "ratio", "runtime", "allocs", "full rate", "budget"))
    line(("---",) * 8)
    missed = []
    for row, sides in rows.items():
        if row.startswith("memory access"):
            continue
        ours, allocations = sides["ours"]
        floor = sides.get("floor", (None,))[0]
        ratio = ours / floor if floor else None
        rate = matching(RATES, row)
        budget = matching(BUDGETS, row)
        verdict = ""
        if budget and ratio:
            verdict = "%.2f: %s" % (budget, "met" if ratio <= budget else "missed")
            if ratio > budget:
                missed.append("%s: %.2f instead of %.2f" % (row, ratio, budget))
        line((row, time_text(ours), time_text(floor), "%.2f" % ratio if ratio else "-",
              time_text(sides.get("runtime", (None,))[0]), "%.3g" % allocations,
              "%.3f %%" % (ours * rate / 1e7) if rate else "", verdict))
    return missed


def number(value):
    return "{:,}".format(value)


def lengths(rows, misses):
    """Prints the cost of operations on device lists, by list length. The cost
    may be at most LARGEST_GROWTH times the cost of the shortest list, plus a memory access per added
    cache miss."""
    missed = []
    access = {n: rows["memory access, %d listed" % n]["ours"][0] for n in LENGTHS}
    print("\n| by listed devices | %s | memory accesses | allowed |" % " | ".join(
        map(number, LENGTHS)))
    print("| --- |" + " --- |" * (len(LENGTHS) + 2))
    print("| one memory access | %s | 1 |  |" % " | ".join(time_text(access[n]) for n in LENGTHS))
    for path in ("advertisement, listed", "advertisement, new", "advertisement, other family",
                 "device count", "device record"):
        cost = {n: rows["%s, %d listed" % (path, n)]["ours"][0] for n in LENGTHS}
        accesses = max(0, misses["%s, %d listed" % (path, LENGTHS[-1])]
                       - misses["%s, %d listed" % (path, LENGTHS[0])])
        allowed = {n: LARGEST_GROWTH * cost[LENGTHS[0]] + accesses * access[n] for n in LENGTHS}
        print("| %s | %s | %.1f | %s |" % (path, " | ".join(time_text(cost[n]) for n in LENGTHS),
                                           accesses, time_text(allowed[LENGTHS[-1]])))
        missed += ["%s, %d listed: %s instead of %s" % (
            path, n, time_text(cost[n]), time_text(allowed[n]))
                   for n in LENGTHS if cost[n] > allowed[n]]
    return missed


def flooded(found):
    """Prints the results of an hour in which a sender fills the device list."""
    missed = []
    print("\n| in an hour's flood | calls | own | worst | over 1 ms |")
    print("| --- | --- | --- | --- | --- |")
    for name in ("advertisement", "count", "record", "restart", "count during restart"):
        part = found[name]
        print("| %s | %s | %s | %s | %s |" % (
            name, number(part["calls"]), time_text(part["own"]), time_text(part["worst"]),
            number(part["late"])))
    growing = found["worst growing advertisement"]
    device = found["heap bytes"] / found["devices"]
    print("\nThe list grows in %d advertisements, the worst of which takes %s." % (
        found["growing advertisements"], time_text(growing)))
    print("%s devices take %.0f MB of the heap, %.1f bytes a device; %.0f MB are resident." % (
        number(found["devices"]), found["heap bytes"] / 1e6, device,
        found["resident bytes"] / 1e6))
    if found["advertisement"]["own"] > LARGEST_PAUSE_NS:
        missed.append("an advertisement: %s" % time_text(found["advertisement"]["own"]))
    if device > LARGEST_DEVICE:
        missed.append("a device: %.1f bytes instead of %d" % (device, LARGEST_DEVICE))
    return missed


def rates(rows):
    missed = []
    print()
    for n in LENGTHS:
        print("Reading all of %d records: %.1f ns a record" % (
            n, rows["reading all of %d records" % n]["ours"][0] / n))
    speed = 2 ** 20 / rows["receive of 1 MiB"]["ours"][0] * 1e9 / 2 ** 30
    print("Receive of 1 MiB: %.1f GiB/s" % speed)
    if speed < 4:
        missed.append("receive of 1 MiB: %.1f GiB/s instead of 4" % speed)
    return missed


def main():
    rows = read(sys.argv[1])
    missed = (lengths(rows, load(sys.argv[2])) + print_rows(rows) + rates(rows)
              + flooded(load(sys.argv[3])))
    for text in missed:
        print("Over budget: " + text)
    sys.exit(1 if missed else 0)


if __name__ == "__main__":
    main()
