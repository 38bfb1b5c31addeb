#!/usr/bin/env python3
"""Prints the latencies of a contention run as a table and draws a diagram.

Usage: contention_plot.py CONTENTION_JSON SVG
"""
import json
import math
import sys

PARTS = ("p50", "p99", "p99.9", "worst")
COLOURS = {"p50": "#2b8a3e", "p99": "#1864ab", "p99.9": "#e67700", "worst": "#c92a2a"}
LOWEST, HIGHEST = 1, 8  # powers of ten, in nanoseconds
WIDTH, HEIGHT, LEFT, TOP = 420, 260, 60, 40


def text_of(ns):
    return "%.0f ns" % ns if ns < 1e3 else "%.1f us" % (ns / 1e3) if ns < 1e6 else \
        "%.1f ms" % (ns / 1e6)


def print_table(rows):
    print("| call | send | notifying | receiving | calls | p50 | p99 | p99.9 | worst |")
    print("| --- | --- | --- | --- | --- | --- | --- | --- | --- |")
    for row in rows:
        print("| %s | %s | %d | %d | %d | %s |" % (
            row["call"], "yes" if row["sending"] else "no", row["notifying"], row["receiving"],
            row["count"], " | ".join(text_of(row[part]) for part in PARTS)))


def height_of(ns):
    decade = math.log10(max(ns, 10 ** LOWEST))
    return TOP + HEIGHT * (1 - (decade - LOWEST) / (HIGHEST - LOWEST))


def panel(rows, title, x, y):
    """Draws one diagram: one column per pair of notifying and receiving thread counts, one mark
    per percentile."""
    out = ['<g transform="translate(%d %d)">' % (x, y),
           '<text x="%d" y="20" class="title">%s</text>' % (LEFT, title)]
    for decade in range(LOWEST, HIGHEST + 1):
        level = height_of(10 ** decade)
        out.append('<path d="M%d %.1fH%d" class="grid"/>' % (LEFT, level, LEFT + WIDTH))
        out.append('<text x="%d" y="%.1f" class="left">%s</text>' % (
            LEFT - 6, level + 4, text_of(10 ** decade).replace(".0", "")))
    step = WIDTH / len(rows)
    for part in PARTS:
        points = [(LEFT + step * (i + 0.5), height_of(row[part])) for i, row in enumerate(rows)]
        out.append('<polyline points="%s" fill="none" stroke="%s" stroke-opacity="0.4"/>' % (
            " ".join("%.1f,%.1f" % point for point in points), COLOURS[part]))
        out += ['<circle cx="%.1f" cy="%.1f" r="3" fill="%s"/>' % (*point, COLOURS[part])
                for point in points]
    out += ['<text x="%.1f" y="%d" class="low">%d/%d</text>' % (
        LEFT + step * (i + 0.5), TOP + HEIGHT + 16, row["notifying"], row["receiving"])
        for i, row in enumerate(rows)]
    return out + ["</g>"]


def draw(rows, path):
    across, down = LEFT + WIDTH + 20, TOP + HEIGHT + 40
    out = ['<svg xmlns="http://www.w3.org/2000/svg" width="%d" height="%d" '
           'font-family="sans-serif" font-size="11">' % (2 * across, 2 * down + 30),
           "<style>.title{font-size:13px;font-weight:bold}.grid{stroke:#ddd}"
           ".left{text-anchor:end}.low{text-anchor:middle;font-size:9px}</style>",
           '<rect width="100%" height="100%" fill="#fff"/>']
    for i, sending in enumerate((False, True)):
        for j, call in enumerate(("notification", "receive")):
            shown = [r for r in rows if r["sending"] == sending and r["call"] == call]
            out += panel(shown, call + (", beside a sending thread" if sending else ""),
                         j * across, i * down)
    for i, part in enumerate(PARTS):
        x, y = LEFT + 90 * i, 2 * down + 10
        out.append('<circle cx="%d" cy="%d" r="4" fill="%s"/>' % (x, y, COLOURS[part]))
        out.append('<text x="%d" y="%d">%s</text>' % (x + 8, y + 4, part))
    out.append('<text x="%d" y="%d">below: notifying/receiving threads</text></svg>' % (
        LEFT + 400, 2 * down + 14))
    with open(path, "w", encoding="utf-8") as file:
        file.write("\n".join(out) + "\n")


def main():
    with open(sys.argv[1], encoding="utf-8") as file:
        rows = json.load(file)
    print_table(rows)
    draw(rows, sys.argv[2])


if __name__ == "__main__":
    main()
