#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The folders of the library and which includes which, from the includes.

scripts/structure.py          writes docs/structure.svg (needs graphviz)
scripts/structure.py --check  fails when an include runs upward or when the
                              drawing shows other arrows than there are
"""
import html
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
DRAWING = ROOT / "docs/structure.svg"
# Floors from the ground up. A folder includes those of lower floors only.
FLOORS = [["simd"], ["common"], ["csc", "rot", "hdr", "vqe", "media"], ["rsz", "camera"],
          ["dct"], ["picture"]]
TITLES = {
    "simd": "the vector layer", "common": "processor, copies, memory",
    "csc": "colour conversion", "rot": "rotation", "hdr": "tone mapping",
    "vqe": "enhancement", "media": "bitstreams", "rsz": "scaling",
    "camera": "camera frames",
    "dct": "scaling by cosines", "picture": "any layout to any",
}


def arrows():
    found = set()
    for file in sorted((ROOT / "src").glob("*/*.[ch]*")):
        for target in re.findall(r'#include "(\w+)/', file.read_text()):
            if target in TITLES and target != file.parent.name:
                found.add((file.parent.name, target))
    return sorted(found)


def dot(edges):
    lines = ['digraph structure { rankdir=BT; newrank=true;',
             'node [shape=box, style="rounded,filled", fillcolor="#eef3f8",'
             ' color="#5b7c99", fontname="sans-serif", fontsize=11];',
             'edge [color="#5b7c99", arrowsize=0.7, dir=back];']
    for floor in FLOORS:
        lines.append("{ rank=same; " + " ".join(floor) + " }")
    for name, title in TITLES.items():
        lines.append(f'{name} [label=<<b>src/{name}</b><br/>{title}>];')
    # Drawn from the ground up, so the arrow's head is at its beginning.
    lines += [f"{target} -> {source};" for source, target in edges]
    return "\n".join(lines) + "\n}\n"


def main():
    edges = arrows()
    if "--check" not in sys.argv:
        svg = subprocess.run(["dot", "-Tsvg"], input=dot(edges), text=True,
                             check=True, capture_output=True).stdout
        DRAWING.write_text(svg)
        return
    floor = {name: i for i, names in enumerate(FLOORS) for name in names}
    upward = [edge for edge in edges if floor[edge[1]] >= floor[edge[0]]]
    drawn = re.findall(r"<title>(\w+)->(\w+)</title>",
                       html.unescape(DRAWING.read_text()))
    if upward:
        sys.exit(f"structure: these includes run upward: {upward}")
    if sorted((source, target) for target, source in drawn) != edges:
        sys.exit("structure: docs/structure.svg shows other arrows; run "
                 "scripts/structure.py")


main()
