# SPDX-License-Identifier: Apache-2.0
"""Pictures, and what PyAV, OpenCV and NumPy bring and ask of them."""
import av
import cv2
import numpy as np
import pytest

import orumlox
from library import sample
from orumlox import Picture


def test_frames_of_pyav():
    frame = sample()
    for name in ("yuv420p", "nv12", "rgb24", "bgra", "gray", "yuyv422"):
        other = frame.reformat(format=name, width=318, height=206)
        dense = other.to_ndarray()
        picture = Picture.from_av(other)
        assert picture.size == (318, 206)
        assert picture.tobytes() == dense.tobytes()
    full = frame.reformat(format="yuvj420p")
    assert Picture.from_av(full).standard == "bt601-full"
    assert Picture.from_av(frame, standard="bt709").standard == "bt709"
    # A frame is taken as it is, and written to.
    rgb = orumlox.convert(frame, "rgb24")
    out = av.VideoFrame(320, 208, "rgb24")
    orumlox.convert(frame, out=Picture.from_av(out))
    assert np.array_equal(out.to_ndarray(), rgb)
    reference = frame.to_ndarray(format="rgb24").astype(int)
    assert np.abs(reference - np.asarray(rgb)).mean() < 2


class FakeFrame:
    """As those of a PyAV that tells the codes of colours."""
    width, height = 6, 4

    class Plane(bytearray):
        line_size = 8

    def __init__(self, matrix, colour_range, last=11):
        self.format = type("Format", (), {"name": "yuv420p"})
        self.colorspace, self.color_range = matrix, colour_range
        self.planes = [self.Plane(range(size)) for size in (30, 11, last)]


def test_what_frames_tell():
    for matrix, colour_range, standard in [
            (None, None, "bt601"), (5, 2, "bt601-full"), (1, 1, "bt709"),
            (1, 2, "bt709-full"), (9, 0, "bt2020"), (9, 2, "bt2020-full")]:
        frame = FakeFrame(matrix, colour_range)
        picture = Picture.from_av(frame)
        assert picture.standard == standard
        assert picture.planes[0][3].tolist() == [24, 25, 26, 27, 28, 29]
        with pytest.raises(BufferError):
            frame.planes[2].append(0)
        del picture
        frame.planes[2].append(0)
    with pytest.raises(ValueError, match="too small"):
        Picture.from_av(FakeFrame(None, None, 10))
    frame = FakeFrame(None, None)
    frame.planes[0].line_size = -8
    with pytest.raises(ValueError, match="too small"):
        Picture.from_av(frame)


def test_arrays_of_opencv():
    bgr = sample().to_ndarray(format="bgr24")
    rgb = cv2.cvtColor(bgr, cv2.COLOR_BGR2RGB)
    assert np.array_equal(orumlox.convert(Picture.wrap(bgr, "bgr888"),
                                          "rgb888"), rgb)
    assert np.array_equal(
        orumlox.turn(Picture.wrap(bgr, "bgr888"), "right"),
        cv2.rotate(bgr, cv2.ROTATE_90_CLOCKWISE))
    column = cv2.cvtColor(bgr, cv2.COLOR_BGR2YUV_I420)
    picture = Picture.wrap(column, "i420")
    assert picture.size == (320, 208)
    assert picture.tobytes() == column.tobytes()
    theirs = cv2.cvtColor(column, cv2.COLOR_YUV2RGB_I420).astype(int)
    assert np.abs(theirs - orumlox.convert(picture, "rgb888")).max() <= 4


def test_attributes():
    picture = Picture("yuv420p10le", 6, 4, standard="bt709")
    assert repr(picture) == "<orumlox.Picture yuv420Planar16 6x4 bt709>"
    assert repr(Picture("rgba", 6, 4)) == "<orumlox.Picture rgba8888 6x4>"
    assert Picture("rgba", 6, 4, standard="bt709").standard is None
    nv12 = Picture("nv12", 8, 8, standard="bt709-full")
    assert orumlox.convert(nv12, "nv21").standard == "bt709-full"
    assert orumlox.tonemap(picture, "nv12").standard == "bt709"
    assert orumlox.tonemap(picture).format == "rgb888"
    assert orumlox.thumbnail(Picture("rgb888", 640, 37), 80).size == (80, 4)
    assert orumlox.thumbnail(Picture("rgb888", 640, 36), 80,
                             rotation="left").size == (4, 80)
    assert orumlox.turn(nv12, "left").size == (8, 8)
    assert orumlox.scale(nv12, (4, 2), "bgr888").size == (4, 2)
    rgb = Picture("rgb888", 3, 2)
    assert np.asarray(rgb, float).dtype == float
    assert np.shares_memory(np.asarray(rgb), rgb.planes[0])
    assert np.shares_memory(np.asarray(rgb, np.uint8), rgb.planes[0])
    assert not np.shares_memory(np.array(rgb), rgb.planes[0])
    # As NumPy 2 asks.
    assert np.shares_memory(rgb.__array__(copy=False), rgb.planes[0])
    assert not np.shares_memory(rgb.__array__(copy=True), rgb.planes[0])
    with pytest.raises(ValueError, match="are a copy"):
        rgb.__array__(float, copy=False)


def test_media():
    names = {"avc1": "video/h264", "hev1": "video/hevc", "aac": "audio/aac",
             "TX3G": "subtitle/timed_text", "samr": "audio/amr_nb", 1:
             "audio/pcm", 0x31637661: "video/h264", "none": None, 0: None}
    assert {code: orumlox.fourcc(code) for code in names} == names
    codec = av.CodecContext.create("mpeg4", "w")
    codec.width, codec.height, codec.pix_fmt = 320, 208, "yuv420p"
    codec.time_base, codec.gop_size = "1/25", 4
    frame, packets = sample(), []
    frame.pict_type = "NONE"
    for frame.pts in range(10):
        packets += codec.encode(frame)
    packets += codec.encode(None)
    assert orumlox.keyframes(packets, "mpeg4") == [
        packet.is_keyframe for packet in packets]
    assert sum(packet.is_keyframe for packet in packets) == 3
