# SPDX-License-Identifier: Apache-2.0
"""Pictures converted, scaled, turned, tone mapped, enhanced.

    import orumlox
    frame = orumlox.Picture.from_bytes(data, "nv12", 1920, 1080)
    rgb = numpy.asarray(orumlox.convert(frame, "rgb888", standard="bt709"))
"""
from ._orumlox import (Picture, Unsupported, __version__, convert, deblock,
                       formats, fourcc, keyframes, scale, sharpen, thumbnail,
                       tonemap, turn)

__all__ = ["Picture", "Unsupported", "__version__", "convert", "deblock",
           "formats", "fourcc", "keyframes", "scale", "sharpen", "thumbnail",
           "tonemap", "turn"]
