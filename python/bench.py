#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""What a call costs on a small picture, and conversions beside OpenCV's.

Needs the module and python3-opencv.
"""
import time

import cv2
import numpy as np

import orumlox
from orumlox import Picture


def lowest(calls, seconds=0.5):
    """The lowest time of each in microseconds, in turns."""
    best = [float("inf")] * len(calls)
    until = time.perf_counter() + seconds * len(calls)
    count = 1
    while time.perf_counter() < until:
        for i, call in enumerate(calls):
            start = time.perf_counter()
            for _ in range(count):
                call()
            best[i] = min(best[i], (time.perf_counter() - start) / count * 1e6)
        count = max(1, min(1000, int(1000 / max(best))))
    return best


def small_pictures():
    source, out = Picture("nv12", 16, 16), Picture("rgb888", 16, 16)
    array = np.zeros((16, 16, 3), np.uint8)
    names = ("out=picture", "out=array", "a new picture", "Picture.wrap")
    for name, micro in zip(names, lowest([
            lambda: orumlox.convert(source, out=out),
            lambda: orumlox.convert(source, "rgb888", out=array),
            lambda: orumlox.convert(source, "rgb888"),
            lambda: Picture.wrap(array, "rgb888")])):
        print(f"nv12 to rgb888, 16 x 16, {name:14} {micro:6.2f} us")


def beside_opencv(width, height):
    noise = np.random.default_rng(1)
    column = noise.integers(0, 256, (height * 3 // 2, width), np.uint8)
    rgb = np.empty((height, width, 3), np.uint8)
    nv12, out = Picture.wrap(column, "nv12"), Picture.wrap(rgb, "rgb888")
    small = Picture("rgb888", 1280, 720)
    turned = Picture("rgb888", height, width)
    jobs = [("nv12 to rgb888", lambda: orumlox.convert(nv12, out=out),
             lambda: cv2.cvtColor(column, cv2.COLOR_YUV2RGB_NV12, rgb)),
            ("rgb888 to 720p", lambda: orumlox.scale(out, out=small),
             lambda: cv2.resize(rgb, (1280, 720), small.planes[0])),
            ("rgb888 turned", lambda: orumlox.turn(out, "right", out=turned),
             lambda: cv2.rotate(rgb, cv2.ROTATE_90_CLOCKWISE,
                                turned.planes[0]))]
    for threads in (1, -1):
        cv2.setNumThreads(threads)
        said = "1 thread" if threads == 1 else f"{cv2.getNumThreads()} threads"
        for name, ours, theirs in jobs:
            a, b = lowest([ours, theirs])
            print(f"{name}, {width} x {height}: {a:7.0f} us, OpenCV with "
                  f"{said} {b:7.0f} us, {a / b:.2f} of it")


if __name__ == "__main__":
    small_pictures()
    beside_opencv(1920, 1080)
