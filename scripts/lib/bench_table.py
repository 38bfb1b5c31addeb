#!/usr/bin/env python3
"""Prints the table of a benchmark run: ours, floor, ratio, runtime, allocations, share of a core.

Usage: bench_table.py BENCH_JSON

Each figure is the fastest of its repetitions. Exits with 1 when a budget is missed.
"""
import json
import re
import sys

# How often a second a full radio brings each event.
RATES = [
    (r"^notification of 244 bytes$", 718),
    (r"^notification of 20 bytes", 2016),
    (r"^advertisement,", 1630),
    (r"^send of 244 bytes$", 718),
    (r"^send of 20 bytes$", 2016),
]
# The largest ratio that is allowed.
BUDGETS = [
    (r"^empty poll, \d+ links$", 3),
    (r"^notification of 244 bytes$", 1.2),
    (r"^receive of 1 MiB$", 4),
    (r"^log line, log on$", 1.25),
]
LARGEST_GROWTH_NS = 1  # per listed device


def read(path):
    """Rows in natural order: {row: {side: (ns, allocations)}}."""
    with open(path, encoding="utf-8") as file:
        runs = json.load(file)["benchmarks"]
    rows = {}
    for run in runs:
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
    line(("row", "ours", "floor", "ratio", "runtime", "allocs", "full rate", "budget"))
    line(("---",) * 8)
    missed = []
    for row, sides in rows.items():
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


def growth(rows):
    """How much an advertisement costs more per listed device, between two lengths of the list."""
    missed = []
    print()
    for kind in ("listed", "new", "foreign"):
        cost = {n: rows["advertisement, %s, %d listed" % (kind, n)]["ours"][0]
                for n in (10, 1000, 10000, 100000)}
        steps = [(a, b, (cost[b] - cost[a]) / (b - a))
                 for a, b in ((10, 1000), (1000, 10000), (10000, 100000))]
        print("An advertisement of a %s device costs more per listed device: %s" % (
            kind, ", ".join("%.2f ns (%d to %d)" % (ns, a, b) for a, b, ns in steps)))
        missed += ["growth per listed device: %.2f ns" % ns for _, _, ns in steps
                   if ns > LARGEST_GROWTH_NS]
    for n in (10, 1000, 10000, 100000):
        print("Reading all of %d records: %.1f ns a record" % (
            n, rows["reading all of %d records" % n]["ours"][0] / n))
    speed = 2 ** 20 / rows["receive of 1 MiB"]["ours"][0] * 1e9 / 2 ** 30
    print("Receive of 1 MiB: %.1f GiB/s" % speed)
    if speed < 4:
        missed.append("receive of 1 MiB: %.1f GiB/s instead of 4" % speed)
    return missed


def main():
    rows = read(sys.argv[1])
    missed = print_rows(rows)
    missed += growth(rows)
    for text in missed:
        print("Missed: " + text)
    sys.exit(1 if missed else 0)


if __name__ == "__main__":
    main()
