#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Keeps results under bench/results/ and makes the page and the plot of them.

    report.py keep RUN.json        what frame_bench wrote
    report.py keep-arm COUNTS.md   what arm_count.sh printed
    report.py

The last one writes docs/benchmarks.md, docs/ratio.svg and docs/growth.svg of the
newest results and prints where a peer is ahead. README.md explains the columns.
"""

import datetime
import json
import math
import pathlib
import re
import statistics
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
RESULTS = ROOT / "bench" / "results"
OWN = "orumlox"
LEVELS = {"avx512": "AVX-512", "avx2": "AVX2", "sse41": "SSE4.1",
          "neon": "NEON", "portable": "portable"}
# What of a time over a peer's is noise.
NOISE = 1.03

# Of the plot of growth: the bytes that a pixel of the smaller picture takes in
# both frames, and the line's colour.
GROWING = {"nv12_rgba8888": (5.5, "#3b7dba"), "rgba8888_nv12": (5.5, "#c8643c"),
           "nv12_yuv420": (3, "#5a9a4a"), "nv12_3to2": (4.875, "#8a5aa8"),
           "rgba8888_90r": (8, "#b03a5b"), "hdr_p010_nv12": (4.5, "#555")}

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


def commit():
    """The commit that is measured; other results change nothing of it."""
    def git(*args):
        return subprocess.run(["git", *args], cwd=ROOT, check=True,
                              capture_output=True, text=True).stdout.strip()
    changed = git("status", "--porcelain", "--untracked-files=no", "--",
                  ":!bench/results")
    return git("describe", "--always") + ("-dirty" if changed else "")


def write(name, context, rows):
    """One row a line, so that two results can be compared."""
    RESULTS.mkdir(exist_ok=True)
    context["commit"] = commit()
    lines = [f"{json.dumps(name)}: {json.dumps(row)}"
             for name, row in rows.items()]
    for old in RESULTS.glob(f"{name}-*.json"):
        old.unlink()
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
    machine = re.sub(r"[^a-z0-9]+", "-", context["processor"].lower())
    write(f"{machine}-{context['level']}", context,
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
    """One line of the page, its figures by setting: this library's time over
    that of the best peer for each level, the other figures of the first.
    `times` is {level: {setting: {contender: ns}}}, `others` that of the peers."""

    def __init__(self, title, times, others, own=OWN, peers="", arm=None):
        self.title, self.arm = title, arm or {}
        self.own, self.bound, self.names = [], [], {}
        self.share = {level: [] for level in times}
        for level, setting in ((k, s) for k in times for s in times[k]):
            rows = times[level][setting]
            theirs = {n: t for n, t in others[level][setting].items()
                      if n.startswith(peers) and
                      (peers or not n.startswith((OWN, "bound")))}
            if own not in rows or (peers and not theirs):
                continue
            best = min(theirs, key=theirs.get, default=None)
            self.share[level].append(best and rows[own] / theirs[best])
            if level == next(iter(times)):
                bounds = [t for n, t in rows.items() if n.startswith("bound")]
                self.own.append(rows[own])
                self.names[best] = True
                self.bound.append(bounds and not peers and
                                  rows[own] / min(bounds))

    def row(self):
        def cell(values, digits, mark=math.inf):
            return " ".join(f"**{number(v, digits)}**" if v > mark else
                            number(v, digits) for v in values if v) or "–"
        cells = [self.title, cell(self.own, 3),
                 *(cell(share, 2, NOISE) for share in self.share.values()),
                 ", ".join(filter(None, self.names)) or "–", cell(self.bound, 2)]
        cells += [number(self.arm.get(key), 3)
                  for key in ("clang", "gcc", "libyuv")]
        return "| " + " | ".join(cells) + " |"


def lines_of(times, counts):
    lines = []
    for name, levels in times.items():
        # Peers have no mode 1: they do what they do without.
        others = times.get(name.removesuffix("_mode1"), levels)
        lines.append(Line(f"`{name}`", levels, others, arm=counts.get(name)))
        for words, own, peers in BESIDE:
            line = Line(f"`{name}` {words}", levels, levels, own, peers)
            lines += [line] if line.own else []
    nothing = dict.fromkeys(next(iter(times.values())), {})
    return lines + [Line(f"`{name}`", nothing, nothing, arm=counts[name])
                    for name in counts if name not in times]


class Growth:
    """Of one workload: nanoseconds a pixel at all sizes."""

    def __init__(self, name, settings, caches):
        self.name, (per_pixel, self.colour) = name, GROWING[name]
        self.at = sorted((math.prod(map(int, size.split("x"))),
                          rows.get(f"{OWN} as shipped") or rows[OWN], size)
                         for size, rows in settings.items())
        self.callers = [rows[f"{OWN} 1 caller"] / rows[f"{OWN} 2 callers"]
                        for rows in settings.values() if f"{OWN} 2 callers" in rows]
        # Those before which both frames were in a cache that they have left.
        self.left = {after for (before, *_), (after, *_) in zip(self.at, self.at[1:])
                     if any(before <= cache / per_pixel < after for cache in caches)}

    def row(self):
        calls = [f"{pixels * time:.0f}" for pixels, time, _ in self.at[:3]]
        step, to = max((after[1] / before[1], after[2])
                       for before, after in zip(self.at, self.at[1:])
                       if after[0] not in self.left)
        callers = [f"{ratio:.2f}" for ratio in self.callers]
        return f"| {' | '.join([f'`{self.name}`', *calls, f'{step:.2f} to {to}', *callers])} |"


def page(runs, counts, lines, growth, sources):
    context, arm = next(iter(runs.values()))["context"], counts["context"]
    peers = ", ".join(f"{name} {context[name]}" for name in
                      ("libyuv", "OpenCV", "swscale", "zimg", "avfilter")
                      if name in context)
    spread = statistics.median(
        median / lowest for run in runs.values()
        for contenders in run["rows"].values()
        for lowest, median in contenders.values()) - 1
    levels = [LEVELS[level] for level in runs]
    return f"""# Benchmarks

{context['processor']}, {context['num_cpus']} processors, {context['caches']};
{context['compiler']}; commit {context['commit']}, {context['date'][:10]}.
Peers: {peers}.
ARM: {'; '.join(arm['about'][1:])}; commit {arm['commit']}.

**ns**: nanoseconds per output pixel (per byte of copies and scans, per field, per
set-up) at {levels[0]}, the lowest of the repetitions, on one thread. **{'**, **'.join(levels)}**:
this time over that of the best peer, both held to these instructions; below 1 orumlox
is faster, above {NOISE} it is bold. **Best peer** and **of bound**, the time over that of
the stream bound, are those at {levels[0]}. Three figures are 640x360, 1920x1080 in the
same buffers, and 1920x1080 in a ring beyond the caches; of `dct_` the last two, of
`hdr_` 1920x1080 and 3840x2160, of `media_keyframe_` 1 and 64 MiB.
**clang**, **GCC**, **libyuv**: executed ARM instructions for the same. Half of the
rows had a median more than {spread:.0%} above the lowest: ratios nearer to 1 are no
difference. [bench/README.md](../bench/README.md) says what each row is.

![Time over that of the best peer](ratio.svg)

| workload | ns | {' | '.join(levels)} | best peer | of bound | clang | GCC | libyuv |
|---|---|{'---|' * len(levels)}---|---|---:|---:|---:|
""" + "\n".join(line.row() for line in lines) + f"""

## How cost grows

At {levels[0]}, in the same buffers. **ns of a call**: where pixels are few, as good as
all of it is what every call costs. **Step**: the greatest growth of the cost of a pixel
from one size to the next, but where both frames leave a cache. **2 callers**: frames in
the same time on two threads of the caller over those on one. Tone mapping is the call
with its own threads, by the clock; its callers have one thread each.

![Nanoseconds a pixel](growth.svg)

| | ns of a call: 16x16 | 32x32 | 64x64 | step | 2 callers: 640x360 | 1920x1080 |
|---|---:|---:|---:|---|---:|---:|
""" + "\n".join(g.row() for g in growth) + f"""

Made by `bench/report.py` from {', '.join(
    f"[{s.name}](../bench/results/{s.name})" for s in sources)}.
"""


def text(x, y, kind, words):
    return f'<text x="{x}" y="{y}" class="{kind}">{words}</text>'


def svg(width, height, style, title, body):
    return f"""\
<svg xmlns="http://www.w3.org/2000/svg" width="{width}" \
height="{height}" font-family="sans-serif" font-size="11">
<style>.e{{text-anchor:end}}.m{{text-anchor:middle}}.grid{{stroke:#ddd}}{style}</style>
<rect width="100%" height="100%" fill="white"/>
{text(8, 16, "t", title)}
""" + "\n".join(body) + "\n</svg>\n"


def power_of_two(power):
    return f"1/{2 ** -power}" if power < 0 else str(2 ** power)


def plot_ratios(lines, levels):
    """For each level a dot for each setting on a scale of powers of two."""
    left, width, step, top, low, high = 300, 280, 15, 56, -5, 1
    shown = [line for line in lines if any(map(any, line.share.values()))]
    bottom = top + step * len(shown)
    body = [text(450, 16, "s", "● 640x360"), text(690, 16, "c", "● ring, 4K or 64 MiB"),
            text(530, 16, "h", "● same buffers, or 1080p")]
    body += [text(left - 8, top + step * i + 12, "e", line.title.replace("`", ""))
             for i, line in enumerate(shown)]
    for column, level in enumerate(levels):
        def x(power, start=left + column * width):
            share = (min(max(power, low), high) - low) / (high - low)
            return f"{start + share * (width - 30):.1f}"

        body.append(text(x(-2), top - 24, "m", LEVELS[level]))
        for power in range(low, high + 1):
            kind = "one" if power == 0 else "grid"
            body.append(f'<path d="M{x(power)} {top - 8}V{bottom}" class="{kind}"/>'
                        + text(x(power), top - 12, "m", power_of_two(power)))
        for i, line in enumerate(shown):
            shares = line.share.get(level, [])
            body += [f'<circle cx="{x(math.log2(share))}" r="3.5" '
                     f'cy="{top + step * i + 8}" class="{kind}"/>'
                     for kind, share in zip("shc"[-len(shares):], shares) if share]
    return svg(left + len(levels) * width, bottom + 8,
               ".one{stroke:#000}.s{fill:#3b7dba}.h{fill:#c8643c}.c{fill:#5a9a4a}",
               "Time over that of the best peer: left of 1 orumlox is faster", body)


def plot_growth(growth):
    """Both scales are logarithmic."""
    left, top, width, height, colours = 60, 36, 640, 420, []
    times = [math.log2(time) for g in growth for _, time, _ in g.at]
    pixels = [math.log2(size) for g in growth for size, *_ in g.at]
    low, high = math.floor(min(times)), math.ceil(max(times))

    def place(size, time):
        across = (math.log2(size) - min(pixels)) / (max(pixels) - min(pixels))
        up = (math.log2(time) - low) / (high - low)
        return round(left + across * width, 1), round(top + (1 - up) * height, 1)

    body = []
    for power in range(low, high + 1):
        y = place(256, 2 ** power)[1]
        body.append(f'<path d="M{left} {y}h{width}" class="grid"/>' +
                    text(left - 6, y, "e", power_of_two(power)))
    for size, _, name in growth[0].at[::2]:
        x = place(size, 1)[0]
        body.append(f'<path d="M{x} {top}v{height}" class="grid"/>' +
                    text(x, top + height + 16, "m", name))
    for i, g in enumerate(growth):
        points = [(*place(size, time), size) for size, time, _ in g.at]
        colours.append(f".l{i}{{stroke:{g.colour};fill:none}}.n{i}{{fill:{g.colour}}}")
        body.append(text(left + width + 10, top + 18 * i + 12, f"n{i}", g.name) +
                    f'<path d="M{"L".join(f"{x} {y}" for x, y, _ in points)}" class="l{i}"/>')
        body += [f'<circle cx="{x}" cy="{y}" r="4" class="l{i}"/>'
                 for x, y, size in points if size in g.left]
    return svg(left + width + 180, top + height + 28, "".join(colours),
               "Nanoseconds a pixel by size; rings: both frames have left a cache", body)


def report():
    newest = {}
    for path in sorted(RESULTS.glob("*.json"),
                       key=lambda p: load(p)["context"]["date"]):
        is_arm = path.name.startswith("arm-")
        newest["arm" if is_arm else load(path)["context"].get("level")] = path
    counts = load(newest["arm"])
    runs = {level: load(newest[level]) for level in LEVELS if level in newest}
    # Of one machine, the one that ran last.
    last = max((run["context"] for run in runs.values()), key=lambda c: c["date"])
    runs = {level: run for level, run in runs.items()
            if run["context"]["processor"] == last["processor"]}
    # {workload: {level: {setting: {contender: ns}}}}
    times, growing = {}, {}
    for level, row in ((level, row) for level in runs for row in runs[level]["rows"]):
        workload, setting = row.split("/")
        kept = growing if setting.startswith("growth_") else times
        kept.setdefault(workload, {}).setdefault(level, {})[
            setting.removeprefix("growth_")] = {
                name: lowest for name, (lowest, _) in runs[level]["rows"][row].items()}
    lines = lines_of(times, counts["rows"])
    caches = [int(size) << 10 for size in re.findall(r"(\d+) KiB", last["caches"])]
    growth = [Growth(name, *growing[name].values(), caches)
              for name in GROWING if name in growing]
    sources = [newest[name] for name in (*runs, "arm")]
    for name, text in (("benchmarks.md", page(runs, counts, lines, growth, sources)),
                       ("ratio.svg", plot_ratios(lines, runs)),
                       ("growth.svg", plot_growth(growth))):
        (ROOT / "docs" / name).write_text(text, encoding="utf-8")
    for line in lines:
        for level, share in line.share.items():
            if any(value and value > NOISE for value in share):
                print(LEVELS[level], line.title, *(number(v, 3) for v in share))


if __name__ == "__main__":
    if sys.argv[1:]:
        {"keep": keep, "keep-arm": keep_arm}[sys.argv[1]](sys.argv[2])
    else:
        report()
