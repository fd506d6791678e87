// SPDX-License-Identifier: Apache-2.0
//
// The drivers of the YUV to RGB conversions: they walk planes and rows.
#pragma once

#include <stdint.h>

#include "csc/kernel_args.h"
#include "csc/yuv_to_rgb_rows.h"

namespace lox {

// What distinguishes one YUV source from another, but for the size of a sample.
struct YuvSource {
  YuvRowKind kind;
  // The planes that hold U and V; for pairs and packed rows the first is the
  // plane that holds both.
  int u_plane, v_plane;
  // Luma rows that share a chroma row: 1 or 2.
  int rows_per_chroma;
  // Rows are converted in pairs of pixels to the end, and of widths that are no
  // multiple of four the chroma is in a phase of its own.
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

// With the forms of the matrix and the destination for the source's kind.
void yuv_to_rgb(const YuvSource &source, const YuvToRgbKernels &forms,
                RgbLayout layout, const KernelArgs &args);

// How a picture is written, as YuvToRgbRows has it: of one that no cache would
// keep, past them, if its rows lie so that whole vectors can be and the
// processor gains by it, else with its lines fetched ahead.
struct Writing {
  bool stream, fetch;
};
Writing writing_of(RgbLayout layout, const KernelArgs &args);

}  // namespace lox
