#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Keeps results under bench/results/ and makes the page and the plot of them.

    report.py keep RUN.json        what frame_bench wrote
    report.py keep-arm COUNTS.md   what arm_count.sh printed
    report.py [RESULT.json [ARM.json]]

The last one writes docs/benchmarks.md and docs/ratio.svg, of the results named
or of the newest. README.md explains the columns.
"""

import datetime
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


def load(path):
    return json.loads(pathlib.Path(path).read_text(encoding="utf-8"))


def write(name, context, rows):
    """One row a line, so that two results can be compared."""
    RESULTS.mkdir(exist_ok=True)
    context["commit"] = subprocess.run(
        ["git", "describe", "--always", "--dirty"], cwd=ROOT, check=True,
        capture_output=True, text=True).stdout.strip()
    lines = [f"{json.dumps(name)}: {json.dumps(row)}"
             for name, row in rows.items()]
    path = RESULTS / f"{name}-{context['commit']}.json"
    path.write_text(
        '{"context": ' + json.dumps(context, indent=1) + ',\n"rows": {\n' +
        ",\n".join(lines) + "\n}}\n", encoding="utf-8")
    print(path)


def keep(path):
    """The lowest and the median of the repetitions, in ns a unit, by workload
    and setting and by contender."""
    run = load(path)
    times = {}
    # Repetitions of all rows are interleaved.
    for row in sorted(run["benchmarks"], key=lambda r: r["family_index"]):
        if row["run_type"] != "iteration":
            continue
        workload, setting, contender, *clock = row["run_name"].split("/")
        time = row["real_time" if "real_time" in clock else "cpu_time"]
        times.setdefault(f"{workload}/{setting}", {}).setdefault(
            contender, []).append(time * 1e3 / row["units"])
    context = {key: value for key, value in run["context"].items()
               if key not in ("executable", "host_name", "load_avg",
                              "library_build_type", "caches")}
    cpu = dict(re.findall(r"^(.+?)\s*: (.*)$", pathlib.Path(
        "/proc/cpuinfo").read_text(encoding="utf-8").split("\n\n")[0], re.M))
    context["processor"] = (f"{cpu['model name']}, family {cpu['cpu family']}, "
                            f"model {cpu['model']}")
    context["caches"] = ", ".join(
        f"L{c['level']} {c['size'] >> 10} KiB" for c in run["context"]["caches"]
        if c["type"] != "Instruction")
    write(re.sub(r"[^a-z0-9]+", "-", context["processor"].lower()), context,
          {row: {name: [float(f"{value:.4g}")
                        for value in (min(t), statistics.median(t))]
                 for name, t in contenders.items()}
           for row, contenders in times.items()})


def keep_arm(path):
    about, table = pathlib.Path(path).read_text(encoding="utf-8").split("\n\n")
    titles, _, *lines = [[cell.strip() for cell in line.strip("| ").split("|")]
                         for line in table.splitlines()]
    write("arm", {"date": str(datetime.date.today()),
                  "about": about.split("\n")},
          {name: {key: float(cell) for key, cell in zip(titles[1:], cells)
                  if cell != "–"} for name, *cells in lines})


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
    times, arm = {}, counts["rows"]
    for row, contenders in run["rows"].items():
        workload, setting = row.split("/")
        times.setdefault(workload, {})[setting] = {
            name: figures[0] for name, figures in contenders.items()}
    lines = []
    for name, settings in times.items():
        # Peers have no mode 1: they do what they do without.
        others = times.get(name.removesuffix("_mode1"), settings)
        lines.append(Line(f"`{name}`", settings, others, arm=arm.get(name)))
        for words, own, peers in BESIDE:
            line = Line(f"`{name}` {words}", settings, settings, own, peers)
            lines += [line] if line.own else []
    return lines + [Line(f"`{name}`", {}, {}, arm=arm[name])
                    for name in arm if name not in times]


def page(context, arm_context, lines, spread, sources):
    peers = ", ".join(f"{name} {context[name]}" for name in
                      ("libyuv", "OpenCV", "swscale", "zimg", "avfilter")
                      if name in context)
    return f"""# Benchmarks

{context['processor']}, {context['num_cpus']} processors, {context['caches']}; form
{context['form']}; {context['compiler']}; commit {context['commit']}, {context['date'][:10]}.
Peers: {peers}.
ARM: {'; '.join(arm_context['about'][1:])}; commit {arm_context['commit']}.

**ns**: nanoseconds per output pixel (per byte of copies and scans, per field, per
set-up), the lowest of the repetitions, on one thread. **of peer**, **of portable**
and **of bound**: this time over that of the best peer, of the portable form and of
the stream bound; below 1 orumlox is faster. Three figures are 640x360, 1920x1080 in
the same buffers, and 1920x1080 in a ring beyond the caches; of `dct_` the last two,
of `hdr_` 1920x1080 and 3840x2160, of `media_keyframe_` 1 and 64 MiB.
**clang**, **GCC**, **libyuv**: executed ARM instructions for the same. Half of the
rows had a median more than {spread:.0%} above the lowest: ratios nearer to 1 are no
difference. [bench/README.md](../bench/README.md) says what each row is.

![Time over that of the best peer](ratio.svg)

| workload | ns | of peer | best peer | of portable | of bound | clang | GCC | libyuv |
|---|---|---|---|---|---|---:|---:|---:|
""" + "\n".join(line.row() for line in lines) + f"""

Made by `bench/report.py` from {' and '.join(
    f"[{s.name}](../bench/results/{s.name})" for s in sources)}.
"""


def plot(lines):
    """A dot for each setting on a scale of powers of two."""
    left, width, step, top = 300, 560, 15, 46
    low, high = -5, 1

    def x(power):
        share = (min(max(power, low), high) - low) / (high - low)
        return f"{left + share * width:.1f}"

    shown = [line for line in lines if any(line.share)]
    bottom = top + step * len(shown)
    body = []
    for power in range(low, high + 1):
        text = f"1/{2 ** -power}" if power < 0 else 2 ** power
        kind = "one" if power == 0 else "grid"
        body.append(f'<path d="M{x(power)} {top - 8}V{bottom}" class="{kind}"/>'
                    f'<text x="{x(power)}" y="{top - 12}" class="m">{text}</text>')
    for i, line in enumerate(shown):
        y = top + step * i + 8
        body.append(f'<text x="{left - 8}" y="{y + 4}" class="e">'
                    f'{escape(line.title.replace("`", ""))}</text>')
        body += [f'<circle cx="{x(math.log2(share))}" cy="{y}" r="4" '
                 f'class="{kind}"/>'
                 for kind, share in zip("shc"[-len(line.share):], line.share)
                 if share]
    return f"""\
<svg xmlns="http://www.w3.org/2000/svg" width="{left + width + 20}" \
height="{bottom + 8}" font-family="sans-serif" font-size="11">
<style>.e{{text-anchor:end}}.m{{text-anchor:middle}}.grid{{stroke:#ddd}}\
.one{{stroke:#000}}.s{{fill:#3b7dba}}.h{{fill:#c8643c}}.c{{fill:#5a9a4a}}</style>
<rect width="100%" height="100%" fill="white"/>
<text x="8" y="16" font-size="13">Time over that of the best peer: left of 1 \
orumlox is faster</text>
<text x="450" y="16" class="s">● 640x360</text>
<text x="530" y="16" class="h">● same buffers, or 1080p</text>
<text x="690" y="16" class="c">● ring, 4K or 64 MiB</text>
""" + "\n".join(body) + "\n</svg>\n"


def report(names):
    """Of the results named or of the newest."""
    newest = {}
    for path in sorted(RESULTS.glob("*.json"),
                       key=lambda p: load(p)["context"]["date"]):
        newest[path.name.startswith("arm-")] = path
    sources = [pathlib.Path(n) for n in names] + [newest[False], newest[True]]
    sources = [sources[0], sources[1] if names[1:] else newest[True]]
    run, counts = (load(path) for path in sources)
    lines = lines_of(run, counts)
    spread = statistics.median(
        median / lowest for contenders in run["rows"].values()
        for lowest, median in contenders.values()) - 1
    docs = ROOT / "docs"
    (docs / "benchmarks.md").write_text(
        page(run["context"], counts["context"], lines, spread, sources),
        encoding="utf-8")
    (docs / "ratio.svg").write_text(plot(lines), encoding="utf-8")


if __name__ == "__main__":
    COMMANDS = {"keep": keep, "keep-arm": keep_arm}
    if sys.argv[1:2] and sys.argv[1] in COMMANDS:
        COMMANDS[sys.argv[1]](sys.argv[2])
    else:
        report(sys.argv[1:])
