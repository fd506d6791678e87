// SPDX-License-Identifier: Apache-2.0
//
// The driver of the YUV to RGB conversions, which walks planes and rows.
#pragma once

#include <stdint.h>

#include "csc/kernel_args.h"
#include "csc/yuv_to_rgb_rows.h"

namespace lox {

// What the driver needs to know of a YUV source.
struct YuvSource {
  YuvRowKind kind;
  // The planes that hold U and V; for pairs and packed rows the first is the
  // plane that holds both.
  int u_plane, v_plane;
  // Luma rows that share a chroma row: 1 or 2.
  int rows_per_chroma;
  // Rows are converted in pairs of pixels to the end, and widths that are no
  // multiple of 4 share their chroma rows differently: see yuv_to_rgb().
  bool whole_pairs;
};

inline constexpr YuvSource kYuv420 = {kRowPlanar, 1, 2, 2, true};
inline constexpr YuvSource kYv12 = {kRowPlanar, 2, 1, 2, true};
inline constexpr YuvSource kNv12 = {kRowUv, 1, 1, 2, true};
inline constexpr YuvSource kNv21 = {kRowVu, 1, 1, 2, true};
// 4:2:0 of the other standards.
inline constexpr YuvSource kExactYuv420 = {kRowPlanar, 1, 2, 2, false};
inline constexpr YuvSource kExactNv12 = {kRowUv, 1, 1, 2, false};
inline constexpr YuvSource kExactNv21 = {kRowVu, 1, 1, 2, false};
inline constexpr YuvSource kYuv422n = {kRowPlanar, 1, 2, 1, false};
inline constexpr YuvSource kYuv422w = {kRowFull, 1, 2, 2, false};
inline constexpr YuvSource kYuv444 = {kRowFull, 1, 2, 1, false};
inline constexpr YuvSource kUyvy = {kRowUyvy, 0, 0, 1, false};
inline constexpr YuvSource kYuyv = {kRowYuyv, 0, 0, 1, false};

// Converts a picture by the forms for the source's kind, the matrix and the
// destination.
void yuv_to_rgb(const YuvSource &source, const YuvToRgbKernels &forms,
                RgbLayout layout, const KernelArgs &args);

// How a picture is written. One that no cache would keep is streamed past them
// where the processor gains by that and rows are aligned for it; else its lines
// are fetched ahead. Both are members of YuvToRgbRows.
struct Writing {
  bool stream, fetch;
};
Writing writing_of(RgbLayout layout, const KernelArgs &args);

}  // namespace lox
