#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Turns the JSON of frame_bench into Markdown tables and an SVG bar plot.

    report.py RESULT.json OUT_DIR

writes OUT_DIR/benchmarks.md and OUT_DIR/ratio.svg and prints the Markdown.
Every figure is the lowest of its repetitions. README.md explains the columns.
"""

import json
import pathlib
import statistics
import sys
from html import escape

# The tables of a setting and the workloads in each.
TABLES = {
    "YUV → RGB": {
        "nv12_rgba8888": "NV12 → RGBA8888",
        "yuv420_rgba8888": "I420 → RGBA8888",
        "yuv420_rgb565": "I420 → RGB565",
        "nv21_rgb888": "NV21 → RGB888",
        "yuyv_rgba8888": "YUYV → RGBA8888",
        "yuv420_rgba8888_bt709": "I420 → RGBA8888, BT.709",
        "yuv420_rgba8888_bt601fr": "I420 → RGBA8888, full range",
    },
    "RGB → YUV": {
        "rgba8888_nv12": "RGBA8888 → NV12",
        "rgba8888_yuv420": "RGBA8888 → I420",
        "rgb565_nv12": "RGB565 → NV12",
    },
    "Layouts and copies": {
        "yuv420_nv12": "I420 → NV12",
        "nv12_yuv420": "NV12 → I420",
        "nv12_nv21": "NV12 → NV21",
        "t64x32_nv12": "64x32 tiles → NV12",
        "copy_8b": "plane copy",
    },
    "Scaling a plane": {
        "grey_2to1": "2:1",
        "grey_3to2": "3:2",
        "grey_4to1": "4:1",
        "grey_720p_404": "16:9 (720x404)",
        "grey_1to2": "1:2",
        "grey_2to3": "2:3",
        "grey_1to3": "1:3",
        "grey_1to2_mode1": "1:2, mode 1",
        "grey_2to3_mode1": "2:3, mode 1",
        "grey_1to3_mode1": "1:3, mode 1",
    },
    "Scaling pictures": {
        "nv12_3to2": "NV12 3:2",
        "nv12_2to3": "NV12 2:3",
        "rgba8888_3to2": "RGBA8888 3:2",
        "rgba8888_2to3": "RGBA8888 2:3",
        "rgb888_3to2": "RGB888 3:2",
        "rgb888_2to3": "RGB888 2:3",
        "rgb565_3to2": "RGB565 3:2",
    },
    "Turning": {
        "rgba8888_90l": "RGBA8888 to the left",
        "rgba8888_90r": "RGBA8888 to the right",
        "rgba8888_180": "RGBA8888 half turn",
        "rgba8888_hori": "RGBA8888 mirror",
        "rgba8888_vert": "RGBA8888 flip",
        "nv12_90r": "NV12 to the right",
    },
    "Scaling and turning": {
        "grey_2to1_90l": "plane 2:1, to the left",
        "grey_3to2_90l": "plane 3:2, to the left",
        "nv12_2to1_90l": "NV12 2:1, to the left",
        "nv12_3to2_90l": "NV12 3:2, to the left",
    },
}
TITLES = {w: title for rows in TABLES.values() for w, title in rows.items()}
# The plot has no tables.
PLOT_TITLES = TITLES | {w: f"plane {title}" for w, title in
                        TABLES["Scaling a plane"].items()}
SETTINGS = {
    "640x360": "640x360",
    "1080p_hot": "1920x1080, same buffers every call",
    "1080p_ring": "1920x1080, ring of buffers larger than the caches",
}
DCT = {
    "dct_nv12_480x270": "NV12 → 480x270",
    "dct_nv12_480x270_by_2": "NV12 → 480x270, factor 2",
    "dct_nv12_480x270_by_4": "NV12 → 480x270, factor 4",
    "dct_nv12_400x224_by_2": "NV12 → 400x224, factor 2",
    "dct_nv12_400x224_by_4": "NV12 → 400x224, factor 4",
    "dct_nv12_800x450": "NV12 → 800x450",
    "dct_nv12_160x90": "NV12 → 160x90",
    "dct_rgba8888_480x270": "RGBA8888 → 480x270",
}
TONE_MAPPING = {
    "hdr_p010_nv12": "P010 → NV12",
    "hdr_p010_rgba8888": "P010 → RGBA8888",
    "hdr_p010_yuv420": "P010 → I420",
    "hdr_p010_rgb888": "P010 → RGB888",
    "hdr_planar16_nv12": "10-bit I420 → NV12",
    "hdr_hlg_nv12": "P010 HLG → NV12",
}
BITS = {
    "media_bits_msb": "most significant bit first",
    "media_bits_lsb": "least significant bit first",
}
FIELDS = {
    "random": "1 to 32 bits, random",
    "1": "1 bit",
    "8": "8 bits",
    "13": "13 bits",
    "32": "32 bits",
    "read1": "1 bit, by its own call",
}
CODECS = {"h264": "H.264", "hevc": "HEVC", "mpeg4": "MPEG-4", "h263": "H.263"}
SCANNED = {"clean": "no pairs of zeros", "random": "random bytes"}
SCANNED_SETTINGS = {"1MiB": "1 MiB", "64MiB": "64 MiB"}
TONE_MAPPING_SETTINGS = {"2160p": "3840x2160", "1080p": "1920x1080"}
OWN = "orumlox"
# Columns from left to right; others follow by name.
ORDER = [
    OWN, f"{OWN} avx2", f"{OWN} sse41", f"{OWN} portable", f"{OWN} two calls",
    "(libyuv None)", "(libyuv Linear)", "libyuv", "libyuv dither",
    "libyuv Bilinear", "libyuv Box", "OpenCV", "OpenCV LINEAR", "OpenCV AREA",
    "swscale POINT", "swscale BILINEAR", "swscale FAST_BILINEAR",
    "swscale AREA", "memcpy",
]
DCT_ORDER = [
    OWN, f"{OWN} avx2", f"{OWN} sse41", f"{OWN} portable", f"{OWN} by parts",
    f"{OWN} as designed", "zimg LANCZOS", "zimg LANCZOS 64B",
    "swscale LANCZOS", "(OpenCV LANCZOS4)", "swscale AREA", "OpenCV AREA",
    "libyuv Box",
]
FORMS = [OWN, f"{OWN} avx2", f"{OWN} sse41", f"{OWN} portable"]
SHARPENING_ORDER = FORMS + [
    "OpenCV filter2D", "FFmpeg convolution", "OpenCV sepFilter2D mask",
    "OpenCV GaussianBlur mask", "OpenCV blur mask", "FFmpeg unsharp",
]
DEBLOCKING_ORDER = FORMS + [
    "FFmpeg deblock weak", "FFmpeg deblock strong", "FFmpeg pp hb+vb",
    "FFmpeg pp h1+v1",
]
BITS_ORDER = [OWN, "inlined", "called"]
SCANNED_ORDER = FORMS + ["plain loop"]
TONE_MAPPING_ORDER = [
    f"{OWN} portable", f"{OWN} sse41", f"{OWN} avx2", f"{OWN} avx512",
    f"{OWN} as shipped", "FFmpeg p010, 1 thread", "FFmpeg planes, 1 thread",
    "FFmpeg p010, 4 threads", "FFmpeg planes, 4 threads", "(zimg)",
    "(zimg 64B)",
]


def read(path):
    """{setting: {workload: {contender: [ns per pixel of each repetition]}}}"""
    document = json.loads(pathlib.Path(path).read_text(encoding="utf-8"))
    to_ns = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}
    times = {}
    for row in document["benchmarks"]:
        if row["run_type"] != "iteration":
            continue
        if row.get("error_occurred"):
            sys.exit(f"{row['name']}: {row.get('error_message')}")
        workload, setting, contender = row["run_name"].split("/")[:3]
        by_the_clock = row["run_name"].endswith("/real_time")
        time = row["real_time" if by_the_clock else "cpu_time"]
        ns = time * to_ns[row["time_unit"]] / row["pixels"]
        rows = times.setdefault(setting, {}).setdefault(workload, {})
        rows.setdefault(contender, []).append(ns)
    return document["context"], times


class Line:
    """One workload at one setting."""

    def __init__(self, contenders):
        self.best = {name: min(t) for name, t in contenders.items()}
        # In parentheses: what does less than is asked for.
        peers = {
            name: t
            for name, t in self.best.items()
            if not name.startswith((OWN, "bound", "("))
        }
        self.own = self.best.get(OWN)
        self.portable = self.best.get(f"{OWN} portable", self.own)
        self.peer = min(peers, key=peers.get) if peers else None
        bounds = [t for n, t in self.best.items() if n.startswith("bound")]
        self.bound = min(bounds) if bounds else None
        # How unquiet the machine was for the two that are compared: near 1
        # when nothing disturbed them.
        spreads = [
            statistics.median(contenders[name]) / min(contenders[name])
            for name in (OWN, self.peer) if name in contenders
        ]
        self.spread = max(spreads) if spreads else None

    def gain(self):
        """How many times faster than the best peer."""
        if self.peer is None or not self.own:
            return None
        return self.best[self.peer] / self.own

    def share(self, peer):
        """This library's time over a peer's."""
        return ratio(self.own, self.best.get(peer))

    def times_faster(self, peer):
        """A peer's time over this library's."""
        return ratio(self.best.get(peer), self.own)


class DctLine(Line):
    """One reduction in the DCT domain at one setting: it is set beside the
    best Lanczos filter and the fastest of all, not beside the best peer."""

    def __init__(self, contenders):
        super().__init__(contenders)
        self.lanczos = min(
            (n for n in self.best if "LANCZOS" in n and n[0] != "("),
            key=self.best.get, default=None)
        self.spread = max(
            (statistics.median(contenders[n]) / min(contenders[n])
             for n in (OWN, self.lanczos) if n in contenders), default=None)


class ToneMappingLine:
    """One tone mapping at one size: what is compared with what."""

    def __init__(self, contenders, form):
        self.best = {name: min(t) for name, t in contenders.items()}
        self.own = f"{OWN} {form}"
        self.shipped = f"{OWN} as shipped"
        self.peer = self.fastest("FFmpeg", "1 thread")
        self.threaded_peer = self.fastest("FFmpeg", "4 threads")
        self.converter = self.fastest("(zimg", ")")
        # As of the other lines.
        self.spread = max(
            (statistics.median(contenders[name]) / min(contenders[name])
             for name in (self.own, self.shipped, self.peer,
                          self.threaded_peer) if name in contenders),
            default=None)

    def fastest(self, start, end):
        names = [n for n in self.best if n.startswith(start) and n.endswith(end)]
        return min(names, key=self.best.get, default=None)

    def gain(self, own, peer):
        if own not in self.best or peer not in self.best:
            return None
        return self.best[peer] / self.best[own]

    def gains(self):
        """Over the peer's chain on one thread and on four, and over the
        conversion without a tone curve."""
        return [self.gain(self.own, self.peer),
                self.gain(self.shipped, self.threaded_peer),
                self.gain(self.own, self.converter)]


def number(value, places=None):
    if value is None:
        return "–"
    if places is None:
        places = 4 if value < 0.1 else 3 if value < 10 else 1
    return f"{value:.{places}f}"


def ratio(a, b):
    return number(a / b, 2) if a and b else "–"


def table(title, lines):
    found = {name for line in lines.values() for name in line.best
             if not name.startswith("bound")}
    names = ([n for n in ORDER if n in found] +
             sorted(found.difference(ORDER)))
    head = ([title] + names +
            ["bound", "best peer", "× best peer", "× portable", "of bound",
             "median / lowest"])
    out = ["| " + " | ".join(head) + " |",
           "|---|" + "---:|" * (len(head) - 1)]
    for workload, line in lines.items():
        cells = [TITLES[workload]]
        cells += [number(line.best.get(name)) for name in names]
        cells += [
            number(line.bound),
            line.peer or "–",
            number(line.gain(), 2),
            ratio(line.portable, line.own),
            ratio(line.own, line.bound),
            number(line.spread, 2),
        ]
        out.append("| " + " | ".join(cells) + " |")
    return out


def dct_table(title, lines):
    found = {name for line in lines.values() for name in line.best}
    names = [n for n in DCT_ORDER if n in found]
    head = ([title] + names +
            ["bound", "best Lanczos", "of best Lanczos", "of libyuv Box",
             "× portable", "of bound", "median / lowest"])
    out = ["| " + " | ".join(head) + " |",
           "|---|" + "---:|" * (len(head) - 1)]
    for workload, line in lines.items():
        cells = [DCT[workload]]
        cells += [number(line.best.get(name)) for name in names]
        cells += [
            number(line.bound),
            line.lanczos or "–",
            line.share(line.lanczos),
            line.share("libyuv Box"),
            ratio(line.portable, line.own),
            ratio(line.own, line.bound),
            number(line.spread, 2),
        ]
        out.append("| " + " | ".join(cells) + " |")
    return out


def dct_quality(context):
    """The table of signal-to-noise ratios, which the run's context has: of Y,
    U and V."""
    cells = {}
    for key, decibels in context.items():
        if key.startswith("dct_psnr/"):
            _, picture, other = key.split("/")
            cells.setdefault(picture, {})[other] = decibels
    if not cells:
        return []
    found = {other for row in cells.values() for other in row}
    # With other registers zimg makes the same picture.
    names = ["model"] + [n for n in DCT_ORDER if n in found and "64B" not in n]
    out = [
        "", "How near the pictures are, Y, U and V, in dB (peak signal-to-noise "
        "ratio): to a model of the same blocks in double precision, whose "
        "samples are not rounded, and, for information, to what other filters "
        "make of the picture.", "",
        "| picture | " + " | ".join(names) + " |",
        "|---|" + "---:|" * len(names),
    ]
    for picture, row in cells.items():
        out.append(f"| {picture} | " +
                   " | ".join(row.get(n, "–") for n in names) + " |")
    return out


def dct(context, settings, setup_ns):
    """The section, as lines; `setup_ns` is what a plan takes, or None."""
    tables = []
    for setting, title in SETTINGS.items():
        lines = {w: DctLine(settings[setting][w]) for w in DCT
                 if w in settings.get(setting, {})}
        if lines:
            tables += [""] + dct_table(title, lines)
    if not tables and setup_ns is None:
        return []
    out = [
        "", "### DCT-domain scaling", "",
        "Nanoseconds per output pixel, 1920x1080 to the sizes that are said, "
        "from a plan that stands, with pre-scaling where a factor is said. "
        "Forms of orumlox with all their threads are on one processor; “by "
        "parts” has none, “as designed” has one thread more (of RGBA8888 two) "
        "on as many processors as there are, by the clock. zimg moves planes "
        "only, in its favour; OpenCV's Lanczos takes 8 by 8 samples whatever "
        "the ratio and is not among the best. “of best Lanczos” and “of libyuv "
        "Box” are orumlox's time over theirs: below 1 orumlox is faster.",
    ] + tables
    if setup_ns is not None:
        text = ("Making a plan, 1920x1080 to 480x270, and releasing it takes "
                f"{number(setup_ns / 1e3, 1)} microseconds")
        frames = settings.get("1080p_hot", {}).get("dct_nv12_480x270", {})
        if OWN in frames:
            share = setup_ns / (min(frames[OWN]) * 480 * 270)
            text += f": {share:.0%} of a frame of NV12 from the same buffers"
        out += ["", text + "."]
    return out + dct_quality(context)


def line_table(title, order, lines, columns, cell=number):
    """Of {row: Line}: the contenders' times as cells, and what `columns`, a
    mapping of their titles, make of a line."""
    names = [n for n in order if any(n in line.best for line in lines.values())]
    head = [title] + names + list(columns) + ["median / lowest"]
    out = ["", "| " + " | ".join(head) + " |",
           "|---|" + "---:|" * (len(head) - 1)]
    for row, line in lines.items():
        cells = [row] + [cell(line.best.get(name)) for name in names]
        cells += [column(line) for column in columns.values()]
        cells.append(number(line.spread, 2))
        out.append("| " + " | ".join(cells) + " |")
    return out


def enhancing(times):
    """The section of sharpening and deblocking, as lines."""
    sharpening, deblocking = (
        {title: Line(times[setting][workload])
         for setting, title in SETTINGS.items()
         if workload in times.get(setting, {})}
        for workload in ("vqe_sharpen", "vqe_deblock"))
    if not sharpening and not deblocking:
        return []
    out = [
        "", "### Sharpening and deblocking", "",
        "Nanoseconds per luma pixel. OpenCV's filter2D and FFmpeg's "
        "convolution have the very kernel but round to the nearest, the former "
        "in floating point; masks, and unsharp, are twice the picture less a "
        "blur of 5 x 5 that weighs otherwise. Deblocking is that of I420, "
        "chroma included; FFmpeg's filters are other ones, write a frame of "
        "their own where orumlox works in place, and are there for "
        "information. “of” is orumlox's time over theirs: below 1 orumlox is "
        "faster.",
    ]
    of_best = {
        "best peer": lambda line: line.peer or "–",
        "of best peer": lambda line: line.share(line.peer),
    }
    by_portable = {
        "× portable": lambda line: line.times_faster(f"{OWN} portable"),
    }
    if sharpening:
        out += line_table(
            "sharpening", SHARPENING_ORDER, sharpening,
            {"bound": lambda line: number(line.bound),
             "of filter2D": lambda line: line.share("OpenCV filter2D")} |
            of_best | by_portable |
            {"of bound": lambda line: ratio(line.own, line.bound)})
    if deblocking:
        out += line_table("deblocking", DEBLOCKING_ORDER, deblocking,
                          by_portable | of_best)
    return out


def media(times):
    """The sections of bit fields and key frames, as lines."""
    fields = {
        f"{field}, {order}": Line(times[setting][workload])
        for workload, order in BITS.items()
        for setting, field in FIELDS.items()
        if workload in times.get(setting, {})
    }
    scans = {}
    for codec, name in CODECS.items():
        for content, what in SCANNED.items():
            workload = f"media_keyframe_{codec}_{content}"
            for setting, size in SCANNED_SETTINGS.items():
                if workload in times.get(setting, {}):
                    scans[f"{name}, {what}, {size}"] = Line(
                        times[setting][workload])
    out = []
    if fields:
        out += [
            "", "### Bit fields", "",
            "Nanoseconds per field, of 1 MiB of random bits, beside a plain "
            "reader with 64 bits of cache: inlined into the loop, and called, "
            "as the library is. “×” is its time over orumlox's: above 1 "
            "orumlox is faster.",
        ] + line_table(
            "field", BITS_ORDER, fields,
            {"× inlined": lambda line: line.times_faster("inlined"),
             "× called": lambda line: line.times_faster("called")})
    if scans:
        out += [
            "", "### Scanning for key frames", "",
            "GB/s, of frames of 1 MiB that have no key frame, the same one or "
            "64 in turn, beside a plain loop over the bytes. “×” is how many "
            "times faster orumlox is.",
        ] + line_table(
            "frame", SCANNED_ORDER, scans,
            {"× plain loop": lambda line: line.times_faster("plain loop"),
             "× portable":
                 lambda line: line.times_faster(f"{OWN} portable")},
            lambda ns: number(1 / ns if ns else None, 2))
    return out


def tone_mapping_table(title, lines):
    found = {name for line in lines.values() for name in line.best}
    names = [n for n in TONE_MAPPING_ORDER if n in found]
    head = ([title] + names +
            ["× FFmpeg, 1 thread", "× FFmpeg, 4 threads", "× (zimg)",
             "× portable", "median / lowest"])
    out = ["| " + " | ".join(head) + " |",
           "|---|" + "---:|" * (len(head) - 1)]
    for workload, line in lines.items():
        cells = [TONE_MAPPING[workload]]
        cells += [number(line.best.get(name)) for name in names]
        cells += [number(gain, 2) for gain in line.gains()]
        cells += [number(line.gain(line.own, f"{OWN} portable"), 2),
                  number(line.spread, 2)]
        out.append("| " + " | ".join(cells) + " |")
    return out


def tone_mapping(tone, build_ns):
    """The section, as lines; `build_ns` is what a context takes, or None."""
    if not tone and build_ns is None:
        return []
    out = [
        "", "### Tone mapping", "",
        "Nanoseconds per pixel, PQ unless HLG is said, from a ring of two "
        "frames. A form by its name is on one thread and includes building the "
        "context. Where four threads run (as shipped, FFmpeg's 4) it is the "
        "time by the clock, else that of the processor. “× FFmpeg” is "
        "the time of the faster of FFmpeg's two inputs over that of the best "
        "form, or with 4 threads over that as shipped; zimg, which applies no "
        "tone curve and moves planes only, does less than is asked for.",
    ]
    for setting, title in TONE_MAPPING_SETTINGS.items():
        if setting in tone:
            out += [""] + tone_mapping_table(title, tone[setting])
    if build_ns is not None:
        text = (f"Building the context, once in every call, takes "
                f"{number(build_ns / 1e3, 1)} microseconds")
        line = tone.get("1080p", {}).get("hdr_p010_nv12")
        if line and line.own in line.best:
            share = build_ns / (line.best[line.own] * 1920 * 1080)
            text += (f": {share:.2%} of the 1920x1080 frame from P010 to NV12 "
                     "on one thread, in whose time it is")
        out += ["", text + "."]
    return out


def markdown(context, settings, other_sections):
    caches = ", ".join(
        f"L{c['level']} {c['type'].lower()} {c['size'] >> 10} KiB"
        for c in context.get("caches", []) if c["type"] != "Instruction")
    peers = ", ".join(
        f"{name} {context[name]}"
        for name in ("libyuv", "OpenCV", "swscale", "zimg", "avfilter")
        if name in context)
    out = [
        f"Processor: {context.get('processor')}, {context['num_cpus']} of them, "
        f"{caches}. Compiler: {context.get('compiler')}. Peers: "
        f"{peers or 'none'}. Form chosen: {context.get('orumlox_form')}. Ring: "
        f"{int(context.get('ring_bytes', 0)) >> 20} MiB. Date: "
        f"{context['date']}." +
        (f" Commit: {context['commit']}." if "commit" in context else ""),
        "",
        "Nanoseconds per output pixel (per byte for the plane copy), one "
        "thread, the lowest of the repetitions. “× best peer” is the best "
        "peer's time over orumlox's, “× portable” the portable form's: above 1 "
        "orumlox is faster. The tiles have no peer but a memcpy of as many "
        "bytes; peers in parentheses do less than is asked for and do not count. "
        "“of bound” is orumlox's time over the stream bound's: 1 is "
        "about as fast as the memory goes. “median / lowest” is that of orumlox or of "
        "the best peer, whichever is the larger: it tells how quiet the "
        "machine was.",
        "",
        "![Times faster than the best peer](ratio.svg)",
    ]
    for setting, title in SETTINGS.items():
        if setting in settings:
            out += ["", f"### {title}"]
            for name, rows in TABLES.items():
                lines = {w: settings[setting][w] for w in rows
                         if w in settings[setting]}
                if lines:
                    out += [""] + table(name, lines)
    out += other_sections
    return "\n".join(out) + "\n"


def sections(settings, tone):
    """What is plotted: [(title, [(label, gain, peer)])]"""
    out = []
    for setting, title in SETTINGS.items():
        lines = settings.get(setting, {})
        out.append((title, [
            (PLOT_TITLES[w], lines[w].gain(), lines[w].peer)
            for w in TITLES if w in lines and lines[w].gain()]))
    for setting, title in TONE_MAPPING_SETTINGS.items():
        bars = []
        for workload, line in tone.get(setting, {}).items():
            for threads, gain in zip(("", ", 4 threads"), line.gains()):
                bars.append((TONE_MAPPING[workload] + threads, gain, "FFmpeg"))
        out.append((f"Tone mapping, {title}", [b for b in bars if b[1]]))
    return [(title, bars) for title, bars in out if bars]


def plot(shown):
    """Horizontal bars of how many times faster than the best peer."""
    left, right, bar, gap, head = 200, 150, 16, 6, 30
    longest = max([gain for _, bars in shown for _, gain, _ in bars] +
                  [1]) * 1.05
    scale = 460 / longest
    width = left + 460 + right
    body, y = [], 40
    for title, bars in shown:
        body.append(f'<text x="8" y="{y + 14}" class="h">{escape(title)}'
                    "</text>")
        y += head
        for label, gain, peer in bars:
            # Labels stay clear of the line at 1.
            end = left + max(gain, 1) * scale
            kind = "up" if gain >= 1 else "down"
            body.append(
                f'<text x="{left - 8}" y="{y + 12}" class="e">'
                f"{escape(label)}</text>"
                f'<rect x="{left}" y="{y}" width="{gain * scale:.1f}" '
                f'height="{bar}" class="{kind}"/>'
                f'<text x="{end + 6:.1f}" y="{y + 12}">{gain:.2f} '
                f'<tspan class="p">vs {escape(peer)}</tspan></text>')
            y += bar + gap
        y += 10
    one = left + scale
    return "\n".join([
        f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" '
        f'height="{y + 8}" viewBox="0 0 {width} {y + 8}" '
        'font-family="sans-serif" font-size="12">',
        "<style>.h{font-weight:bold}.e{text-anchor:end}.p{fill:#666}"
        ".up{fill:#3b7dba}.down{fill:#c8643c}</style>",
        '<rect width="100%" height="100%" fill="white"/>',
        '<text x="8" y="20" class="h" font-size="14">Times faster than the '
        "best peer (1.0: level)</text>",
    ] + body + [
        f'<line x1="{one:.1f}" y1="32" x2="{one:.1f}" y2="{y}" stroke="black" '
        'stroke-dasharray="4 3"/>',
        f'<text x="{one + 4:.1f}" y="{y + 2}">1.0</text>',
        "</svg>",
    ]) + "\n"


def main(arguments):
    if len(arguments) != 2:
        sys.exit(__doc__)
    context, times = read(arguments[0])
    settings = {}
    for setting in SETTINGS:
        lines = {w: Line(times[setting][w]) for w in TITLES
                 if w in times.get(setting, {})}
        if lines:
            settings[setting] = lines
    form = context.get("orumlox_form")
    tone = {
        setting: {w: ToneMappingLine(times[setting][w], form)
                  for w in TONE_MAPPING if w in times[setting]}
        for setting in TONE_MAPPING_SETTINGS if setting in times
    }

    def lowest_of(workload):
        return min(times.get("any", {}).get(workload, {}).get(OWN, []),
                   default=None)

    out = pathlib.Path(arguments[1])
    text = markdown(context, settings,
                    dct(context, times, lowest_of("dct_setup")) +
                    enhancing(times) + media(times) +
                    tone_mapping(tone, lowest_of("hdr_context")))
    (out / "benchmarks.md").write_text(text, encoding="utf-8")
    (out / "ratio.svg").write_text(plot(sections(settings, tone)),
                                   encoding="utf-8")
    sys.stdout.write(text)


if __name__ == "__main__":
    main(sys.argv[1:])
