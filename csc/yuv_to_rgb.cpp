// SPDX-License-Identifier: Apache-2.0
//
// Walks the planes of a YUV source and keeps the rules of odd sizes; the
// exported kernels stand at the end.
#include "csc/yuv_to_rgb.h"

#include <stddef.h>

#include "common/caches.h"
#include "csc/csc_tables.h"

namespace lox::csc {

namespace {

constexpr int kPixelBytes[kRgbLayouts] = {2, 2, 3, 3, 4, 4, 4, 4};

// A picture that no cache would keep is written past them, if its rows lie so
// that whole vectors can be.
bool can_stream(const CscRows &kernels, RgbLayout layout, ptrdiff_t width,
                int32_t height, int32_t stride, const uint8_t *rgb) {
  const uintptr_t alignment = static_cast<uintptr_t>(kernels.stream_alignment);
  if (alignment == 0) return false;
  const uint64_t row_bytes =
      static_cast<uint64_t>(width) * static_cast<uint64_t>(kPixelBytes[layout]);
  return row_bytes * static_cast<uint64_t>(height) >= kBeyondCaches &&
         reinterpret_cast<uintptr_t>(rgb) % alignment == 0 &&
         static_cast<uintptr_t>(stride) % alignment == 0;
}

}  // namespace

void yuv_to_rgb(const YuvSource &source, RgbLayout layout,
                uint8_t *const src_plane[4], const int32_t src_width[4],
                const int32_t src_height[4], const int32_t src_stride[4],
                const int32_t dst_stride[4], uint8_t *const dst_plane[4]) {
  const ptrdiff_t width = src_width[0];
  const int32_t height = src_height[0];
  if (width < 1 || height < 1) return;
  // The pair that an odd width ends with is converted whole: one luma byte is
  // read and one pixel written beyond the row, intentionally. A row with such a
  // pixel must be finished before the next begins, which may start there.
  const bool beyond = source.whole_pairs && width % 2 != 0;
  const ptrdiff_t row_pixels = beyond ? width + 1 : width;
  // Rows whose width is no multiple of 4 share chroma from the bottom up, so of
  // an odd number of rows it is the first that has a chroma row to itself; this
  // phase is intended. Otherwise it is the last.
  const bool first_alone =
      source.whole_pairs && width % 4 != 0 && height % 2 != 0;

  const CscRows &kernels = row_kernels();
  const YuvToRgbFn one_row = kernels.yuv_to_rgb[source.kind][layout];
  const YuvToRgbFn two_rows = source.kind < kSharedRowKinds && !beyond
                                  ? kernels.two_yuv_to_rgb[source.kind][layout]
                                  : nullptr;
  const auto luma = [&](int32_t row) {
    return src_plane[0] + ptrdiff_t{row} * src_stride[0];
  };
  const auto chroma = [&](int plane, int32_t row) {
    return src_plane[plane] + ptrdiff_t{row} * src_stride[plane];
  };
  const auto rgb = [&](int32_t row) {
    return dst_plane[0] + ptrdiff_t{row} * dst_stride[0];
  };

  const bool stream =
      can_stream(kernels, layout, width, height, dst_stride[0], dst_plane[0]);
  int32_t chroma_row = 0;
  for (int32_t row = 0; row < height; ++chroma_row) {
    const uint8_t *const u = chroma(source.u_plane, chroma_row);
    const uint8_t *const v = chroma(source.v_plane, chroma_row);
    const bool alone = source.rows_per_chroma == 1 || row == height - 1 ||
                       (row == 0 && first_alone);
    if (!alone && two_rows != nullptr) {
      two_rows({{luma(row), luma(row + 1)},
                {u, v},
                {rgb(row), rgb(row + 1)},
                stream},
               row_pixels);
      row += 2;
      continue;
    }
    const int32_t end = alone ? row + 1 : row + 2;
    for (; row < end; ++row) {
      one_row({{luma(row), nullptr}, {u, v}, {rgb(row), nullptr}, stream},
              row_pixels);
    }
  }
  if (stream) kernels.end_stream();
}

namespace {

void grey_to_rgb(GreyToRgbFn convert_row, uint8_t *const src_plane[4],
                 const int32_t src_width[4], const int32_t src_height[4],
                 const int32_t src_stride[4], const int32_t dst_stride[4],
                 uint8_t *const dst_plane[4]) {
  for (int32_t row = 0; row < src_height[0]; ++row) {
    convert_row(src_plane[0] + ptrdiff_t{row} * src_stride[0],
                dst_plane[0] + ptrdiff_t{row} * dst_stride[0], src_width[0]);
  }
}

}  // namespace

}  // namespace lox::csc

#define LOX_PARAMETERS                                          \
  uint8_t *const src_plane[4], const int32_t src_width[4],      \
      const int32_t src_height[4], const int32_t src_stride[4], \
      const int32_t dst_stride[4], uint8_t *const dst_plane[4]
#define LOX_ARGUMENTS \
  src_plane, src_width, src_height, src_stride, dst_stride, dst_plane

#define LOX_KERNEL(token, source, rgb_token, layout)                    \
  void vexo_csc_##token##_to_##rgb_token(LOX_PARAMETERS) {              \
    lox::csc::yuv_to_rgb(lox::csc::source, lox::layout, LOX_ARGUMENTS); \
  }
#define LOX_KERNELS_565(token, source)       \
  LOX_KERNEL(token, source, rgb565, kRgb565) \
  LOX_KERNEL(token, source, bgr565, kBgr565)
#define LOX_KERNELS(token, source)               \
  LOX_KERNELS_565(token, source)                 \
  LOX_KERNEL(token, source, rgb888, kRgb888)     \
  LOX_KERNEL(token, source, bgr888, kBgr888)     \
  LOX_KERNEL(token, source, rgba8888, kRgba8888) \
  LOX_KERNEL(token, source, bgra8888, kBgra8888) \
  LOX_KERNEL(token, source, argb8888, kArgb8888) \
  LOX_KERNEL(token, source, abgr8888, kAbgr8888)

extern "C" {

LOX_KERNELS(yuv420, kYuv420)
LOX_KERNELS(yv12, kYv12)
LOX_KERNELS(nv12, kNv12)
LOX_KERNELS(nv21, kNv21)
LOX_KERNELS(yuv422n, kYuv422n)
LOX_KERNELS(yuv444, kYuv444)
LOX_KERNELS(uyvy, kUyvy)
LOX_KERNELS(yuyv, kYuyv)
LOX_KERNELS_565(yuv422w, kYuv422w)

void vexo_csc_yuv400_to_rgb565(LOX_PARAMETERS) {
  lox::csc::grey_to_rgb(lox::csc::row_kernels().grey_to_rgb565, LOX_ARGUMENTS);
}
void vexo_csc_yuv400_to_rgb888(LOX_PARAMETERS) {
  lox::csc::grey_to_rgb(lox::csc::row_kernels().grey_to_rgb888, LOX_ARGUMENTS);
}

}  // extern "C"
