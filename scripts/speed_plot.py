#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Makes docs/speed.svg, the README's plot, of a result of the benchmark:

    scripts/speed_plot.py bench/results/MACHINE-LEVEL-COMMIT.json

Bars are this library's time over that of the best peer, at 1920x1080 in the same
buffers.
"""
import json
import pathlib
import sys

JOBS = {
    "NV12 to RGBA": "nv12_rgba8888/1080p_hot",
    "RGBA to NV12": "rgba8888_nv12/1080p_hot",
    "YUV420 to RGB565": "yuv420_rgb565/1080p_hot",
    "NV12 3:2 smaller": "nv12_3to2/1080p_hot",
    "NV12 2:3 larger": "nv12_2to3/1080p_hot",
    "RGBA turned": "rgba8888_90r/1080p_hot",
    "thumbnail of NV12": "dct_nv12_160x90/1080p_hot",
    "sharpening": "vqe_sharpen/1080p_hot",
    "HDR to SDR": "hdr_p010_nv12/2160p",
}
LEFT, FULL, STEP = 130, 400, 22

result = json.loads(pathlib.Path(sys.argv[1]).read_text(encoding="utf-8"))
body = []
for y, (job, row) in zip(range(8, 999, STEP), JOBS.items()):
    times = {name: lowest for name, (lowest, _) in result["rows"][row].items()}
    peers = {n: t for n, t in times.items() if not n.startswith(("orumlox", "bound"))}
    best = min(peers, key=peers.get)
    share = times["orumlox"] / peers[best]
    body.append(f'<text x="{LEFT - 8}" y="{y + 12}" text-anchor="end">{job}</text>'
                f'<rect x="{LEFT}" y="{y}" width="{share * FULL:.0f}" height="16" fill="#3b7dba"/>'
                f'<text x="{LEFT + share * FULL + 6:.0f}" y="{y + 12}">{share:.2f} of {best}</text>')
height = 8 + STEP * len(JOBS)
body.append(f'<path d="M{LEFT + FULL} 2V{height}" stroke="#c8643c"/>')
svg = (f'<svg xmlns="http://www.w3.org/2000/svg" width="{LEFT + FULL + 150}" height="{height}" '
       'font-family="sans-serif" font-size="12"><rect width="100%" height="100%" fill="white"/>\n'
       + "\n".join(body) + "\n</svg>\n")
(pathlib.Path(__file__).parents[1] / "docs/speed.svg").write_text(svg, encoding="utf-8")
