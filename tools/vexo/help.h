// SPDX-License-Identifier: Apache-2.0
//
// What the commands say of themselves.
#pragma once

namespace vexo {

inline constexpr const char *kConvertHelp =
    R"(Converts pictures and clips between pixel layouts.

IN is PNG, PGM (P5), PPM (P6), Y4M or raw frames; OUT is PNG, PGM, PPM, Y4M or
raw frames by the ending of its name (.png .pgm .ppm .y4m; .raw .yuv .rgb) or
--out-kind. - is standard input or output; standard output is Y4M by default.
Several frames become numbered pictures with a name such as frame%03d.png; %% is
a percent sign.

Each step from a layout to the next is one conversion of the library. Without
--to the layout is one that OUT can hold and the library converts to. The
standard counts in every step between YUV and RGB, but p010le is always bt601;
the library takes bt709-full for bt601-full.

Raw frames are planes without gaps, their chroma sizes rounded up: the last
column and row of an odd picture have chroma of their own. Tiled ones are whole
tiles of luma, then of U, V pairs; those of an odd picture have the next even
size, those of t64x32 an even number of tiles across. t256x16 is converted only
when wider than 1280.)";

inline constexpr const char *kScaleHelp =
    R"(Scales pictures and clips, and turns them on the way if asked to.

IN and OUT are those of vexo convert. Frames are scaled in the layout that IN
holds, each plane for itself, and then converted to what OUT holds or --to says.
With --rotate only YUV is scaled. p010le is only reduced, by whole factors.)";

inline constexpr const char *kRotateHelp =
    R"(Turns or mirrors pictures and clips.

IN and OUT are those of vexo convert. Frames are turned in the layout that IN
holds, each plane for itself, and then converted to what OUT holds or --to says.
4:2:2 has half its chroma rows, not columns, after a quarter turn: yuv422n
becomes yuv422w.)";

inline constexpr const char *kThumbnailHelp =
    R"(Makes thumbnails of pictures and clips, and turns them if asked to.

IN and OUT are those of vexo convert. IN holds yuv420 or nv12, scaled as nv12,
or yuv400, rgb888 or rgba8888, scaled as rgba8888, whose alpha becomes 255.
--size is that before the turn, no larger than the picture. The thumbnail has
the layout of IN and is then converted to what OUT holds or --to says.

--prescale halves or quarters 4:2:0 by block means first: faster and coarser.)";

inline constexpr const char *kTonemapHelp =
    R"(Tone maps HDR pictures and clips (BT.2020, PQ or HLG) to SDR (BT.709).

IN is a Y4M of 10-bit 4:2:0 (C420p10) or raw frames of yuv420Planar16 or p010le,
of video range; OUT is as for vexo convert. The library writes rgb888, rgba8888,
argb8888, yuv420, nv12 and nv21; what it converts those to without a change of
colours is written too.

YUV is BT.709 of video range, 16 to 235, and so is raw RGB, as the library gives
it. In PNG and PPM, which have no such range, RGB is expanded to 0 to 255.

The tone curve is that of a source of 1000 nits for a peak up to 1500, else that
of 4000. With --measure each frame's brightest luma chooses the curve of 1000,
of 2000 or of more than 4000. hlg has none: neither option changes anything.)";

inline constexpr const char *kSharpenHelp =
    R"(Sharpens the luma of pictures and clips.

IN and OUT are those of vexo convert. Frames are sharpened in their own layout
if luma is a plane of 8 bits in it, else as yuv420, and go back to their own
where the library converts to it and OUT holds it. Chroma is copied, and so are
the two outermost rows and columns and a picture less than 5 wide or high. There
is one strength.)";

inline constexpr const char *kDeblockHelp =
    R"(Smooths the edges of the 8x8 blocks of decoded pictures and clips.

IN and OUT are those of vexo convert. All planes are filtered, each by itself,
in the frames' own layout if its planes are of 8 bits without pairs, else as
yuv420; frames go back to their own layout where the library converts to it and
OUT holds it.

N is how large an edge may be to pass for one that compression has made: flat
blocks that differ by up to 8/3 N are joined by a slope, those that differ by
more less and less, from 16/3 N on not at all. 0 changes nothing.)";

inline constexpr const char *kSaturateHelp =
    R"(Maps the chroma of pictures and clips through the library's saturation table.

This is not what a saturation would give. The table is made of 32-bit words read
as 16-bit ones: an even sample 2k of chroma becomes what N makes of k, that is
((k - 128) N >> 10) + 128, limited to 0..255, and an odd one what N makes of 0.
Pictures turn green. One line on standard error says so, unless --quiet.

IN and OUT are those of vexo convert. Frames are worked on in their own layout
if it has planes of U and V of 8 bits, else as yuv420, and go back to their own
where the library converts to it and OUT holds it.)";

inline constexpr const char *kAnaglyphHelp =
    R"(Makes red-cyan anaglyphs of pictures and clips of two views side by side.

IN and OUT are those of vexo convert. What is not RGB is converted to rgb888
first, and goes back to what it was where the library converts to it and OUT
holds it. Alpha is dropped. The anaglyph is half as wide as IN.)";

inline constexpr const char *kKeyframesHelp =
    R"(Lists the frames of a compressed video stream and which are key frames.

FILE is IVF (vp8, vp9, or another of the codecs below), or a raw stream: Annex B
of h264 (.h264 .264 .avc) or hevc (.hevc .265 .h265), mpeg4 (.m4v .mpeg4 .mp4v)
or h263 (.h263 .263); - is standard input. Nothing is decoded. Lines come as
frames do; none may be longer than 64 MiB.

One line a frame: its number from 0, the offset of its first byte, its size and
key or -; then the codec and how many there are. Headers belong to the frame
that they precede; in IVF, those of the frames do not count. Fields of h264 that
are coded apart are listed apart.)";

inline constexpr const char *kFourccHelp =
    R"(Prints the media types that a FourCC or a WAVE format tag stands for.

CODE is a number, decimal or with 0x, or else one to four characters, filled up
with spaces: aac is "aac ". 8192 is a number; --text makes characters of it.
One line a class: its name, the code of the type and the code's name; then the
same of all classes combined.)";

}  // namespace vexo
