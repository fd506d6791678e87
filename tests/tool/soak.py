#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""soak.py VEXO FOLDER: a video of 5000 frames takes no more memory than one of
500, however it goes through the tool. ffmpeg makes both."""
import os
import subprocess
import sys

VEXO, FOLDER = sys.argv[1:]
WAYS = {
    "scaled": ["scale", "IN", "/dev/null", "--out-kind", "raw", "--size",
               "160x120"],
    "coded": ["convert", "IN", "out.mp4"],
    "turned, four threads": ["rotate", "IN", "/dev/null", "--out-kind", "y4m",
                             "--turn", "left", "-j", "4"],
}


def peak(frames, way):
    """KiB of a run's largest resident set."""
    command = [VEXO] + [f"{frames}.mp4" if word == "IN" else word
                        for word in way]
    child = subprocess.Popen(command, cwd=FOLDER)
    _, status, usage = os.wait4(child.pid, 0)
    if status != 0:
        sys.exit(f"soak: {' '.join(command)} failed")
    return usage.ru_maxrss


os.makedirs(FOLDER, exist_ok=True)
for count in (500, 5000):
    subprocess.run(
        ["ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i",
         "testsrc2=s=320x240:r=25", "-frames:v", str(count), "-c:v", "mpeg4",
         f"{count}.mp4"], cwd=FOLDER, check=True)
for name, way in WAYS.items():
    few, many = peak(500, way), peak(5000, way)
    print(f"{name}: {few} KiB for 500 frames, {many} KiB for 5000")
    # What the index of the longer file takes, and chance.
    if many > few + 6 * 1024:
        sys.exit("soak: memory grows with the length")
