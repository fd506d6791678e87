# SPDX-License-Identifier: Apache-2.0
"""The library's plain C functions, which the module must agree with; what there
is to try it with."""
import ctypes
import os

import av
import numpy as np
from orumlox import Picture

C = ctypes.CDLL(os.environ["ORUMLOX_LIBRARY"])
C.vexo_format_name.restype = ctypes.c_char_p
C.vexo_status_name.restype = ctypes.c_char_p
CODES = {"rotation": ("0", "left", "right", "half", "mirror", "flip"),
         "kind": {"hdr10": 1, "hdr10-mild": 2, "hlg": 4},
         "mode": {"plain": 0, "mod1": 0x6D6F6431},
         "filter": ("plain", "lanczos"),
         "chroma": ("as-it-is", "left", "centre")}
STANDARDS = {"bt601": 0, "bt601-full": 1, "bt709": 10, "bt709-full": 11,
             "bt2020": 20, "bt2020-full": 21}
FIELDS = ("rotation", "mode", "prescale", "kind", "source_nit", "measure",
          "full_range", "filter", "dither", "chroma")


class Img(ctypes.Structure):
    _fields_ = [(name, ctypes.c_int32 * 4)
                for name in ("width", "height", "stride", "buf_height")] + [
        ("plane", ctypes.c_void_p * 4), ("reserved0", ctypes.c_int32 * 4)] + [
        (name, ctypes.c_int32) for name in
        ("format", "offset_x", "offset_y", "reserved1", "color_std", "mode",
         "source_nit")]


class Options(ctypes.Structure):
    _fields_ = [(name, ctypes.c_int32) for name in FIELDS] + [
        ("reserved", ctypes.c_int32 * 6)]


def has_standard(name):
    code = C.vexo_format_of_name(name.encode())
    return 0 < code < 200 or 600 <= code < 700


def size_of(name, width, height, alignment=1):
    size = ctypes.c_size_t()
    assert C.vexo_picture_bytes(C.vexo_format_of_name(name.encode()), width,
                                height, alignment, ctypes.byref(size)) == 0
    return size.value


def image(name, width, height, memory, standard="bt601", alignment=1):
    img = Img()
    assert C.vexo_picture_layout(
        ctypes.byref(img), C.vexo_format_of_name(name.encode()), width, height,
        alignment, ctypes.c_void_p(memory.ctypes.data),
        ctypes.c_size_t(memory.size)) == 0
    img.color_std = STANDARDS[standard] if has_standard(name) else 0
    return img


def options_of(**given):
    options = Options()
    for name, value in given.items():
        known = CODES.get(name)
        if isinstance(known, tuple):
            value = known.index(value)
        elif known:
            value = known[value]
        setattr(options, name, value)
    return options


def call(name, src, dst, **options):
    """The status's name."""
    status = getattr(C, "vexo_picture_" + name)(
        None, ctypes.byref(src), ctypes.byref(dst),
        ctypes.byref(options_of(**options)))
    return C.vexo_status_name(status).decode()


SAMPLE = "samples/coffee_320x208.y4m"
noise = np.random.default_rng(1)


def sample():
    with av.open(SAMPLE) as clip:
        return next(clip.decode(video=0))


def noisy(name, width, height, standard=None):
    data = noise.integers(0, 256, size_of(name, width, height), np.uint8)
    return Picture.from_bytes(data, name, width, height, standard=standard)
