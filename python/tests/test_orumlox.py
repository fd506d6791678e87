# SPDX-License-Identifier: Apache-2.0
"""The module against the C calls, and what only Python can get wrong."""
import copy
import gc
import os
import random
import subprocess
import sys
import threading
import tracemalloc

import numpy as np
import pytest

import library
import orumlox
from library import noise, noisy
from orumlox import Picture

TILED = ("t64x32", "t16x16", "t8x8", "t256x16")


# --- against C ---------------------------------------------------------------

def cases(count):
    """A call's name, formats, standards, sizes and options."""
    pick = random.Random(2)
    sizes = [1, 2, 3, 7, 8, 16, 31, 32, 48, 65]
    for _ in range(count):
        name = pick.choice(["convert", "scale", "turn", "tonemap", "thumbnail"])
        options = {}
        src = pick.choice(["yuv420Planar16", "p010le"] if name == "tonemap"
                          else orumlox.formats)
        size = to = (pick.choice(sizes), pick.choice(sizes))
        if name == "scale":
            to = (pick.choice(sizes), pick.choice(sizes))
            options["mode"] = pick.choice(["plain", "mod1"])
        if name == "thumbnail":
            size = (size[0] + 30, size[1] + 30)
            to = tuple(pick.randint(1, n) for n in size)
            options["prescale"] = pick.choice([0, 0, 2, 4])
        if name in ("scale", "turn", "thumbnail"):
            turn = options["rotation"] = pick.choice(library.CODES["rotation"])
            if turn in ("left", "right") and name != "scale":
                to = to[::-1]
        if name == "tonemap":
            options = {"kind": pick.choice(["hdr10", "hdr10-mild", "hlg"]),
                       "source_nit": pick.choice([0, 1000, 4000]),
                       "measure": pick.randint(0, 1),
                       "full_range": pick.randint(0, 1)}
        options["dither"] = pick.randint(0, 1)
        options["chroma"] = pick.choice(["as-it-is", "left", "centre"])
        if name == "scale":
            options["filter"] = pick.choice(["plain", "lanczos"])
        standards = [pick.choice(list(library.STANDARDS)) for _ in range(2)]
        if name == "tonemap":
            standards[1] = "bt709"
        yield (name, src, pick.choice(orumlox.formats), standards, size, to,
               options, pick.choice([1, 16]))


def test_calls_are_the_librarys():
    done = dict.fromkeys(["unsupported", "bad argument", "convert", "scale",
                          "turn", "tonemap", "thumbnail"], 0)
    for name, src, dst, standards, size, to, options, alignment in cases(2500):
        data = noise.integers(0, 256, library.size_of(src, *size, alignment),
                              np.uint8)
        expected = noise.integers(0, 256, library.size_of(dst, *to, alignment),
                                  np.uint8)
        got = expected.copy()
        source = Picture.from_bytes(data, src, *size, alignment=alignment,
                                    standard=standards[0])
        out = Picture.from_bytes(got, dst, *to, alignment=alignment,
                                 standard=standards[1])
        status = library.call(
            name, library.image(src, *size, data, standards[0], alignment),
            library.image(dst, *to, expected, standards[1], alignment),
            **options)
        what = (name, src, dst, standards, size, to, options)
        arguments = dict(options)
        first = [arguments.pop("rotation")] if name == "turn" else []
        call = getattr(orumlox, name)
        if status == "ok":
            assert call(source, *first, out=out, **arguments) is out, what
            # A picture that is made: the same bytes, without gaps.
            if name != "tonemap":
                arguments["standard"] = standards[
                    1 if library.has_standard(dst) else 0]
            if name in ("scale", "thumbnail"):
                first = [to]
            made = call(source, *first, dst, **arguments)
            assert made.size == to and made.format == dst
            if dst not in TILED:
                assert made.tobytes() == out.tobytes(), what
        else:
            error = (orumlox.Unsupported if status == "unsupported"
                     else ValueError)
            with pytest.raises(error, match=status) as caught:
                call(source, *first, out=out, **arguments)
            assert caught.type is error, what
        assert np.array_equal(got, expected), what
        done[name if status == "ok" else status] += 1
    assert min(done.values()) > 5, done


def test_enhancement_is_the_librarys():
    for name in ("yuv400", "yuv420", "yuv422n", "yv12", "nv12"):
        for width, height, alignment in ((40, 24, 1), (37, 19, 1), (37, 19, 64)):
            data = noise.integers(
                0, 256, library.size_of(name, width, height, alignment),
                np.uint8)
            source = Picture.from_bytes(data, name, width, height,
                                        alignment=alignment)
            luma = np.ascontiguousarray(source.planes[0])
            sharp = np.empty_like(luma)
            library.C.detail_enh(luma.ctypes.data_as(library.ctypes.c_void_p),
                                 width, height,
                                 sharp.ctypes.data_as(library.ctypes.c_void_p),
                                 0)
            got = orumlox.sharpen(source)
            assert np.array_equal(got.planes[0], sharp)
            for ours, theirs in zip(got.planes[1:], source.planes[1:]):
                assert np.array_equal(ours, theirs)
            if name == "nv12":
                with pytest.raises(orumlox.Unsupported):
                    orumlox.deblock(source, 6)
                continue
            dense = np.frombuffer(source.tobytes(), np.uint8).copy()
            img = library.image(name, width, height, dense)
            assert library.C.vexo_dbf8x8_yuv(library.ctypes.byref(img), 6) == 0
            assert orumlox.deblock(source, 6).tobytes() == dense.tobytes()
            assert orumlox.deblock(source, 6, out=source) is source
            assert source.tobytes() == dense.tobytes()


def test_enhancement_of_rows_upwards():
    for call in (orumlox.sharpen, lambda p, **out: orumlox.deblock(p, 9, **out)):
        canvas = noise.integers(0, 256, (90, 70), np.uint8)
        luma, chroma = canvas[60:20:-1, 3:51], canvas[84:64:-1, 5:29]
        kept = [luma, chroma, canvas[20:0:-1, 40:64]]
        dense = [np.ascontiguousarray(plane) for plane in kept]
        expected = call(Picture.wrap(dense, "yuv420")).planes
        before = canvas.copy()
        got = call(Picture.wrap(kept, "yuv420"))
        assert np.array_equal(canvas, before)
        for ours, theirs in zip(got.planes, expected):
            assert np.array_equal(ours, theirs)
        out = np.zeros_like(canvas)
        views = [out[50:10:-1, 9:57], out[60:80, 30:54], out[70:50:-1, :24]]
        call(Picture.wrap(dense, "yuv420"), out=Picture.wrap(views, "yuv420"))
        for ours, theirs in zip(views, expected):
            assert np.array_equal(ours, theirs)
            ours[:] = 0
        assert not out.any()


def test_arrays_of_any_stride():
    """Windows, upside down and beside each other; nothing else is written."""
    for name in ("bgr888", "rgba8888", "rgb565", "yuv400"):
        channels = {"bgr888": (3,), "rgba8888": (4,)}.get(name, ())
        dtype = np.uint16 if name == "rgb565" else np.uint8
        canvas = noise.integers(0, 256, (50, 90) + channels, dtype)
        before = canvas.copy()
        left, right = canvas[40:5:-1, 3:40], canvas[40:5:-1, 45:82]
        source = Picture.wrap(left, name)
        assert source.size == (37, 35) and np.shares_memory(source, canvas)
        assert orumlox.turn(source, "mirror", name, out=right) is right
        before[40:5:-1, 45:82] = before[40:5:-1, 39:2:-1]
        assert np.array_equal(canvas, before)
        for x in (0, 38):
            with pytest.raises(ValueError, match="overlaps"):
                orumlox.turn(source, "mirror", name,
                             out=canvas[41:6:-1, x:x + 37])
    frame = np.zeros((60, 64), np.uint8)  # nv12 as a decoder pads it
    picture = Picture.wrap([frame[:36, :50], frame[40:58, :50]], "nv12")
    assert picture.planes[1].shape == (18, 25, 2)
    orumlox.convert(noisy("rgb888", 50, 36), out=picture)
    assert frame[:36, :50].any() and frame[40:58, :50].any()
    assert not (frame[:, 50:].any() or frame[36:40].any() or frame[58:].any())


def test_shapes_of_planes():
    shapes = {"yuv420": [(5, 7), (3, 4), (3, 4)], "p010": [(5, 7), (3, 4, 2)],
              "yuyv": [(5, 8, 2)], "bgr565": [(5, 7)], "argb": [(5, 7, 4)],
              "t8x8": [(64,), (32,)]}
    for name, expected in shapes.items():
        planes = Picture(name, 7, 5).planes
        assert [p.shape for p in planes] == expected
        wide = name in ("p010", "bgr565")
        assert planes[0].dtype == (np.uint16 if wide else np.uint8)
        assert not any(p.any() for p in planes)


# --- errors ------------------------------------------------------------------

GREY, RGB = np.zeros((4, 6), np.uint8), np.zeros((4, 6, 3), np.uint8)
READ_ONLY = Picture.from_bytes(bytes(24), "yuv400", 6, 4)
REFUSED = [
    (ValueError, "unknown format 'x'", lambda p: orumlox.convert(p, "x")),
    (ValueError, "unknown standard", lambda p: Picture("nv12", 2, 2,
                                                       standard="bt2100")),
    (TypeError, "Picture.wrap", lambda p: orumlox.convert(RGB, "nv12")),
    (TypeError, "unexpected keyword argument 'kind'",
     lambda p: orumlox.scale(p, (2, 2), kind="hlg")),
    (ValueError, "0, left, right", lambda p: orumlox.turn(p, "up")),
    (ValueError, "out is rgb888 6x4",
     lambda p: orumlox.convert(p, "nv12", out=Picture.wrap(RGB, "rgb888"))),
    (ValueError, "overlaps", lambda p: orumlox.convert(p, out=p)),
    (ValueError, "bad argument", lambda p: orumlox.scale(p, (0, 4))),
    (ValueError, "bad argument", lambda p: orumlox.convert(p, "nv12",
                                                           out=GREY[:3])),
    (ValueError, "bad argument", lambda p: orumlox.thumbnail(p, 8, prescale=3)),
    (orumlox.Unsupported, "convert of rgb888 6x4 to p010le",
     lambda p: orumlox.convert(Picture.wrap(RGB, "rgb888"), "p010")),
    (orumlox.Unsupported, "no plane of luma",
     lambda p: orumlox.sharpen(Picture.wrap(RGB, "rgb888"))),
    (ValueError, "read-only",
     lambda p: orumlox.convert(p, out=Picture.from_bytes(bytes(24), "yuv400",
                                                         6, 4))),
    (ValueError, "35 bytes", lambda p: Picture.from_bytes(bytes(35), "nv12",
                                                          6, 4)),
    (ValueError, "side by side", lambda p: Picture.wrap(GREY[:, ::2],
                                                        "yuv400")),
    (ValueError, "side by side", lambda p: Picture.wrap(RGB[:, :, ::-1],
                                                        "bgr888")),
    (ValueError, "uint8", lambda p: Picture.wrap(GREY.astype(float),
                                                 "yuv400")),
    (ValueError, "low byte first",
     lambda p: Picture.wrap(GREY.astype(">u2"), "rgb565")),
    (TypeError, "not objects",
     lambda p: Picture.from_bytes(np.array([None] * 9), "yuv400", 4, 4)),
    (ValueError, "4x0", lambda p: Picture.wrap(np.zeros((0, 4, 3), np.uint8),
                                               "rgb888")),
    (ValueError, "0x4", lambda p: Picture.wrap(np.zeros((4, 0, 3), np.uint8),
                                               "rgb888")),
    (ValueError, "bad argument",
     lambda p: Picture.wrap(np.zeros((0, 4), np.uint8), "i420")),
    (ValueError, "bad argument", lambda p: Picture.from_bytes(b"", "nv12", 0,
                                                              0)),
    (ValueError, "bad argument", lambda p: Picture.from_bytes(
        bytes(24), "yuv400", 6, 4, alignment=0)),
    # Rows that share their bytes.
    (ValueError, "bad argument", lambda p: Picture.wrap(
        np.broadcast_to(GREY[:1], (4, 6)), "yuv400")),
    (ValueError, "read-only", lambda p: orumlox.deblock(
        Picture("yuv420", 6, 4), 3,
        out=Picture.from_bytes(bytes(36), "yuv420", 6, 4))),
    (ValueError, "read-only", lambda p: orumlox.deblock(READ_ONLY, 3,
                                                        out=READ_ONLY)),
    # Without __init__ there is nothing in it.
    (ValueError, "bad argument", lambda p: orumlox.convert(
        Picture.__new__(Picture), out=p)),
    (ValueError, "bad argument", lambda p: Picture.__new__(Picture).tobytes()),
    (TypeError, "pickle", lambda p: copy.copy(p)),
    (ValueError, "samples of 3 bytes", lambda p: Picture.wrap(GREY, "rgb888")),
    (ValueError, "2 planes", lambda p: Picture.wrap([GREY], "nv12")),
    (ValueError, "plane 1", lambda p: Picture.wrap([GREY, GREY], "nv12")),
    (ValueError, "even addresses",
     lambda p: Picture.from_bytes(memoryview(bytearray(25))[1:], "rgb565",
                                  4, 3)),
    (TypeError, "bytes or an array", lambda p: Picture.wrap(7, "rgb888")),
    (TypeError, "several planes", lambda p: np.asarray(p)),
    (TypeError, "format is wanted", lambda p: Picture(None, 4, 4)),
    (MemoryError, "out of memory",
     lambda p: Picture("rgba8888", 500_000_000, 2_000_000_000)),
    (TypeError, "size is not to be", lambda p: orumlox.scale(p, 3)),
    (TypeError, "prescale is not", lambda p: orumlox.thumbnail(p, 4,
                                                               prescale="2")),
    (TypeError, "code is not to be 1.5", lambda p: orumlox.fourcc(1.5)),
    (ValueError, "unknown codec", lambda p: orumlox.keyframes([], "mjpeg")),
    (ValueError, "one to four", lambda p: orumlox.fourcc("H.264")),
]


@pytest.mark.parametrize("error, text, call", REFUSED)
def test_refusals(error, text, call):
    with pytest.raises(error, match=text) as caught:
        call(Picture("nv12", 6, 4))
    assert caught.type is error


# --- memory and threads ------------------------------------------------------

def test_memory_is_held():
    data = bytearray(24)
    picture = Picture.from_bytes(data, "yuv400", 6, 4)
    luma = picture.planes[0]
    del picture
    with pytest.raises(BufferError):
        data.append(0)
    luma[3, 5] = 7
    assert data[23] == 7
    del luma
    data.append(0)
    plane = Picture("rgb888", 9, 9).planes[0]
    gc.collect()
    plane[:] = 3
    assert not Picture.from_bytes(bytes(24), "yuv400", 6,
                                  4).planes[0].flags.writeable


def test_nothing_leaks():
    source, array = noisy("nv12", 16, 16), np.zeros((16, 16, 3), np.uint8)
    memory = bytes(384)
    out = Picture.wrap(array, "rgb888")
    kept = [source, array, out, memory]

    def work(rounds):
        for _ in range(rounds):
            orumlox.convert(source, out=out)
            orumlox.scale(source, (8, 8), "bgr888", out=array[:8, :8])
            orumlox.thumbnail(source, 4).planes
            orumlox.convert(Picture.from_bytes(memory, "nv12", 16, 16), "bgra")
            for bad in ("p010", "x"):
                try:
                    orumlox.convert(out, bad)
                except ValueError:
                    pass

    def resident():
        with open("/proc/self/statm") as file:
            return int(file.read().split()[1]) * os.sysconf("SC_PAGESIZE")

    work(1000)
    counts = [sys.getrefcount(item) for item in kept]
    before = resident()
    work(17000)  # 102000 calls
    assert resident() - before < 1 << 20
    assert [sys.getrefcount(item) for item in kept] == counts
    tracemalloc.start()
    work(10)
    start = tracemalloc.get_traced_memory()[0]
    work(200)
    grown = tracemalloc.get_traced_memory()[0] - start
    tracemalloc.stop()
    assert grown < 1000


def test_others_run_during_a_call():
    """Nobody is asked to let go of the GIL but by the calls themselves."""
    source, out = noisy("nv12", 1920, 1080), Picture("rgb888", 1920, 1080)
    interval = sys.getswitchinterval()
    gate, ran = threading.Lock(), []
    gate.acquire()
    other = threading.Thread(target=lambda: (gate.acquire(), ran.append(1)))
    other.start()
    try:
        sys.setswitchinterval(1000)
        gate.release()
        for _ in range(3000):
            orumlox.convert(source, out=out)
            if ran:
                break
        assert ran
    finally:
        sys.setswitchinterval(interval)
        other.join()


def test_threads_do_not_mix():
    sources = [noisy("yuv420", 64 + 16 * i, 50, "bt709") for i in range(6)]

    def work(source):
        small = orumlox.thumbnail(source, 24, "rgb888", rotation="left")
        large = orumlox.scale(source, (97, 75), "bgr888")
        return small.tobytes() + large.tobytes()

    expected = [work(source) for source in sources]
    results = [[] for _ in sources]
    threads = [threading.Thread(target=lambda i=i: [
        results[i].append(work(sources[i])) for _ in range(100)])
        for i in range(len(sources))]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert all(got == [right] * 100 for got, right in zip(results, expected))


# --- documents ---------------------------------------------------------------

@pytest.mark.parametrize("command", [
    ["-m", "mypy.stubtest", "orumlox", "--allowlist",
     "python/tests/stubs_allowed"],
    ["python/guide.py"], ["python/guide.py", "--types"]])
def test_page_and_stubs(command):
    done = subprocess.run([sys.executable, *command], capture_output=True,
                          text=True)
    assert done.returncode == 0, done.stdout + done.stderr
