// SPDX-License-Identifier: Apache-2.0
//
// The drivers of all conversions. Each walks the planes and the rows that are
// asked for, and takes what it is to convert from and to: a route of csc.cpp
// names a driver and these two, an exported kernel is a call of one.
#pragma once

#include "csc/kernel_args.h"
#include "simd/pixel_format.h"

namespace lox {

// YUV sources without tiles: where their chroma is, in which rows.
enum YuvSourceId {
  kYuv420,
  kYv12,
  kNv12,
  kNv21,
  kP010,
  kYuv422n,
  kYuv422w,
  kYuv444,
  kUyvy,
  kYuyv,
  // 4:2:0 of the other standards.
  kExactYuv420,
  kExactNv12,
  kExactNv21
};

enum TileShapeId { kT64x32, kT16x16, kT8x8, kT256x16 };

// Where 4:2:0 chroma goes.
enum ChromaId { kToYuv420, kToYv12, kToNv12, kToNv21 };

// Chroma planes that keep their places, or change them; of pairs, U first.
enum PlaneOrder { kInOrder, kCrossed };

// For a parameter that a driver has no use for.
enum Unused { kNothing };

using Driver = void(const KernelArgs &args, int from, int to);

// From a YuvSourceId or a TileShapeId to an RgbLayout, dithered ones too but
// from grey; those of one destination write RGBA8888, and of words dithered
// ones.
Driver yuv_to_rgb, words_to_rgb, bt601_full_to_rgb, bt709_to_rgb,
    bt709_full_to_rgb, grey_to_rgb, tiled_to_rgb;

// From an RgbLayout to a ChromaId, to U and V of every pixel, and to RGB.
Driver rgb_to_yuv, bt601_full_to_yuv, bt709_to_yuv, rgb_to_yuv444, rgb_to_rgb;

// From a TileShapeId to a ChromaId, and to tiles.
Driver tiles_to_yuv, yuv420_to_tiles;

// Between layouts, by a PlaneOrder: to pairs and from them, to every second row
// of chroma.
Driver planes_to_pairs, pairs_to_planes, halve_chroma_rows, double_chroma_rows,
    halve_chroma, exchange_planes, exchange_pairs, yuyv_to_yuv420,
    narrow_planes;

}  // namespace lox
