// SPDX-License-Identifier: Apache-2.0
//
// Walks the planes of a YUV source and keeps the rules of odd sizes. The
// exported kernels, at the end, are one-line calls.
#include "csc/yuv_to_rgb.h"

#include <stddef.h>

#include "common/caches.h"
#include "csc/yuv_to_rgb_rows.h"
#include "orumlox/csc.h"

namespace lox {

Writing writing_of(RgbLayout layout, const KernelArgs &args) {
  const uint64_t pixels = static_cast<uint64_t>(args.src_width[0]) *
                          static_cast<uint64_t>(args.src_height[0]);
  const uint64_t bytes =
      pixels * static_cast<uint64_t>(kPixelFormats[layout].bytes);
  const uintptr_t alignment =
      static_cast<uintptr_t>(yuv_to_rgb_rows().stream_alignment);
  const bool stream =
      bytes >= kBeyondCaches && streaming() && alignment != 0 &&
      reinterpret_cast<uintptr_t>(args.dst_plane[0]) % alignment == 0 &&
      static_cast<uintptr_t>(args.dst_stride[0]) % alignment == 0;
  // A YUV pixel is taken for two bytes; it has one and a half to three.
  return {stream, bytes + 2 * pixels >= kFetchAheadFrom};
}

void yuv_to_rgb(const YuvSource &source, const YuvToRgbKernels &forms,
                RgbLayout layout, const KernelArgs &args) {
  const ptrdiff_t width = args.src_width[0];
  const int32_t height = args.src_height[0];
  if (args.empty()) return;
  // Quirk: the pair that an odd width ends with is converted whole, because
  // rows go in pairs to the end: one luma byte is read and one pixel written
  // beyond the row. The next row may begin at that pixel, so rows are done one
  // by one.
  const bool beyond = source.whole_pairs && width % 2 != 0;
  const ptrdiff_t row_pixels = beyond ? width + 1 : width;
  // Quirk: rows share chroma from the bottom up where the width is no multiple
  // of 4, because callers know these pictures. Of an odd number of rows the
  // first then has a chroma row to itself, otherwise the last.
  const bool first_alone =
      source.whole_pairs && width % 4 != 0 && height % 2 != 0;

  const YuvToRgbFn two_rows = beyond ? nullptr : forms.two_rows;
  const Writing writing = writing_of(layout, args);
  int32_t chroma_row = 0;
  for (int32_t row = 0; row < height; ++chroma_row) {
    const uint8_t *const u = args.src(source.u_plane, chroma_row);
    const uint8_t *const v = args.src(source.v_plane, chroma_row);
    const bool alone = source.rows_per_chroma == 1 || row == height - 1 ||
                       (row == 0 && first_alone);
    if (!alone && two_rows != nullptr) {
      two_rows({{args.src(0, row), args.src(0, row + 1)},
                {u, v},
                {args.dst(0, row), args.dst(0, row + 1)},
                writing.stream,
                writing.fetch},
               row_pixels);
      row += 2;
      continue;
    }
    const int32_t end = alone ? row + 1 : row + 2;
    for (; row < end; ++row) {
      forms.one_row({{args.src(0, row), nullptr},
                     {u, v},
                     {args.dst(0, row), nullptr},
                     writing.stream,
                     writing.fetch},
                    row_pixels);
    }
  }
  if (writing.stream) yuv_to_rgb_rows().end_stream();
}

namespace {

void ordinary(const YuvSource &source, RgbLayout layout,
              const KernelArgs &args) {
  yuv_to_rgb(source, yuv_to_rgb_rows().yuv_to_rgb[source.kind][layout], layout,
             args);
}

}  // namespace

}  // namespace lox

#define LOX_KERNEL(token, source, rgb_token, layout)        \
  void vexo_csc_##token##_to_##rgb_token(LOX_PARAMETERS) {  \
    lox::ordinary(lox::source, lox::layout, LOX_ARGUMENTS); \
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
  lox::convert_rows(lox::yuv_to_rgb_rows().grey_to_rgb565, LOX_ARGUMENTS);
}
void vexo_csc_yuv400_to_rgb888(LOX_PARAMETERS) {
  lox::convert_rows(lox::yuv_to_rgb_rows().grey_to_rgb888, LOX_ARGUMENTS);
}

#define LOX_KERNEL_OF(name, source, forms)                                     \
  void vexo_csc_##name##_to_rgba8888(LOX_PARAMETERS) {                         \
    lox::yuv_to_rgb(lox::source, lox::yuv_to_rgb_rows().forms, lox::kRgba8888, \
                    LOX_ARGUMENTS);                                            \
  }

LOX_KERNEL_OF(p010le, kNv12, words_to_rgba)
LOX_KERNEL_OF(bt601_fr_yuv420, kExactYuv420, bt601_full[lox::kRowPlanar])
LOX_KERNEL_OF(bt601_fr_nv12, kExactNv12, bt601_full[lox::kRowUv])
LOX_KERNEL_OF(bt601_fr_nv21, kExactNv21, bt601_full[lox::kRowVu])
LOX_KERNEL_OF(bt709_yuv420, kExactYuv420, bt709_planar)
LOX_KERNEL_OF(bt709_fr_yuv420, kExactYuv420, bt709_full_planar)

}  // extern "C"
