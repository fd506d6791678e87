#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Keeps results under bench/results/ and makes the page and the plot of them.

    report.py keep RUN.json        what frame_bench wrote
    report.py keep-arm COUNTS.md   what arm_count.sh printed
    report.py [RESULT.json [ARM.json]]

The last one writes docs/benchmarks.md and docs/ratio.svg, of the results named
or of the newest. README.md explains the columns.
"""

import json
import math
import pathlib
import re
import statistics
import subprocess
import sys
from html import escape

ROOT = pathlib.Path(__file__).resolve().parent.parent
RESULTS = ROOT / "bench" / "results"
OWN = "orumlox"

# Lines of the page beside those of a workload and its peers: what is said, the
# contender, and what the names of its peers begin with.
BESIDE = (
    ("beside its two calls", OWN, "orumlox two"),
    ("beside a reader called", OWN, "called"),
    ("beside FFmpeg's chain", OWN, "FFmpeg, 1"),
    ("the same, 4 threads each", "orumlox as shipped", "FFmpeg, 4"),
)

def number(value, digits=3):
    """With so many digits, in plain figures."""
    if not value:
        return "–"
    places = max(0, digits - 1 - math.floor(math.log10(value)))
    return f"{value:.{places}f}"


def commit():
    return subprocess.run(["git", "describe", "--always", "--dirty"], cwd=ROOT,
                          check=True, capture_output=True,
                          text=True).stdout.strip()


def write(name, context, rows):
    """One row a line, so that two results can be compared."""
    RESULTS.mkdir(exist_ok=True)
    lines = [json.dumps(row, ensure_ascii=False) for row in rows]
    (RESULTS / name).write_text(
        '{"context": ' + json.dumps(context) + ',\n"rows": [\n' +
        ",\n".join(lines) + "\n]}\n", encoding="utf-8")
    print(RESULTS / name)


def keep(path):
    """The lowest and the median of the repetitions, in ns a unit."""
    run = json.loads(pathlib.Path(path).read_text(encoding="utf-8"))
    times = {}
    for row in run["benchmarks"]:
        if row["run_type"] != "iteration":
            continue
        if row.get("error_occurred"):
            sys.exit(f"{row['name']}: {row.get('error_message')}")
        by_the_clock = row["run_name"].endswith("/real_time")
        time = row["real_time" if by_the_clock else "cpu_time"]
        name = "/".join(row["run_name"].split("/")[:3])
        times.setdefault(name, []).append(time * 1e3 / row["units"])
    given = run["context"]
    context = {key: given[key] for key in given
               if key not in ("executable", "host_name", "load_avg",
                              "library_build_type", "caches")}
    context["caches"] = ", ".join(
        f"L{c['level']} {c['size'] >> 10} KiB" for c in given["caches"]
        if c["type"] != "Instruction")
    context["commit"] = commit()
    machine = re.sub(r"[^a-z0-9]+", "-", context["processor"].lower())
    write(f"{machine}-{context['commit']}.json", context,
          [{"row": name, "ns": float(f"{min(t):.4g}"),
            "median": float(f"{statistics.median(t):.4g}")}
           for name, t in times.items()])


def keep_arm(path):
    text = pathlib.Path(path).read_text(encoding="utf-8")
    about, table = text.split("\n\n", 1)
    cells = [[cell.strip() for cell in line.strip("| \n").split("|")]
             for line in table.splitlines()]
    write(f"arm-{commit()}.json", {"about": about.split("\n")},
          [{"row": line[0]} | {key: float(cell) for key, cell in
                               zip(cells[0][1:], line[1:]) if cell != "–"}
           for line in cells[2:]])


class Line:
    """One line of the page, each of its figures by setting. `settings` is
    {setting: {contender: ns}}, `others` that of the peers."""

    def __init__(self, title, settings, others, own=OWN, peers="", arm=None):
        self.title, self.arm = title, arm or {}
        self.own, self.peer, self.share = [], [], []
        self.portable, self.bound = [], []
        for setting, rows in settings.items():
            theirs = {n: t for n, t in others[setting].items()
                      if n.startswith(peers) and
                      (peers or not n.startswith((OWN, "bound", "(")))}
            if own not in rows or (peers and not theirs):
                continue
            best = min(theirs, key=theirs.get, default=None)
            bounds = [t for n, t in rows.items() if n.startswith("bound")]
            portable = rows.get(f"{OWN} portable")
            self.own.append(rows[own])
            self.peer.append(best)
            self.share.append(best and rows[own] / theirs[best])
            self.portable.append(portable and not peers and
                                 rows[own] / portable)
            self.bound.append(bounds and not peers and rows[own] / min(bounds))

    def row(self):
        def cell(values, digits):
            return " ".join(number(v, digits) for v in values if v) or "–"
        names = dict.fromkeys(peer for peer in self.peer if peer)
        cells = [self.title, cell(self.own, 3), cell(self.share, 2),
                 ", ".join(names) or "–", cell(self.portable, 2),
                 cell(self.bound, 2)]
        cells += [number(self.arm.get(key), 3)
                  for key in ("clang", "gcc", "libyuv")]
        return "| " + " | ".join(cells) + " |"


def lines_of(run, counts):
    lines = lines_of(run, counts)
    spread = statistics.median(
        row["median"] / row["ns"] for row in run["rows"]) - 1
    docs = ROOT / "docs"
    (docs / "benchmarks.md").write_text(
        page(run["context"], counts["context"], lines, spread, sources),
        encoding="utf-8")
    (docs / "ratio.svg").write_text(plot(lines), encoding="utf-8")


if __name__ == "__main__":
    if sys.argv[1:2] == ["keep"]:
        keep(sys.argv[2])
    elif sys.argv[1:2] == ["keep-arm"]:
        keep_arm(sys.argv[2])
    else:
        report(sys.argv[1:])
