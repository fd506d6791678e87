// SPDX-License-Identifier: Apache-2.0
//
// The drivers of the YUV to RGB conversions: they walk planes and rows.
#pragma once

#include <stdint.h>

#include "csc/csc_rows.h"
#include "orumlox/csc.h"

namespace lox::csc {

// What distinguishes one YUV source from another.
struct YuvSource {
  YuvRowKind kind;
  // The planes that hold U and V; for pairs and packed rows the first is the
  // plane that holds both.
  int u_plane, v_plane;
  // Luma rows that share a chroma row: 1 or 2.
  int rows_per_chroma;
  // 4:2:0 rows are converted in pairs of pixels to the end.
  bool whole_pairs;
};

inline constexpr YuvSource kYuv420 = {kRowPlanar, 1, 2, 2, true};
inline constexpr YuvSource kYv12 = {kRowPlanar, 2, 1, 2, true};
inline constexpr YuvSource kNv12 = {kRowUv, 1, 1, 2, true};
inline constexpr YuvSource kNv21 = {kRowVu, 1, 1, 2, true};
inline constexpr YuvSource kYuv422n = {kRowPlanar, 1, 2, 1, false};
inline constexpr YuvSource kYuv422w = {kRowFull, 1, 2, 2, false};
inline constexpr YuvSource kYuv444 = {kRowFull, 1, 2, 1, false};
inline constexpr YuvSource kUyvy = {kRowUyvy, 0, 0, 1, false};
inline constexpr YuvSource kYuyv = {kRowYuyv, 0, 0, 1, false};

void yuv_to_rgb(const YuvSource &source, RgbLayout layout,
                uint8_t *const src_plane[4], const int32_t src_width[4],
                const int32_t src_height[4], const int32_t src_stride[4],
                const int32_t dst_stride[4], uint8_t *const dst_plane[4]);

}  // namespace lox::csc
