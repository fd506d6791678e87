// SPDX-License-Identifier: Apache-2.0
//
// Walks the rows of an RGB source. Each gives a row of luma, and each even row
// with a partner a row of chroma.
#include <stddef.h>
#include <stdint.h>

#include "common/caches.h"
#include "csc/drivers.h"
#include "csc/kernel_args.h"
#include "csc/rgb_rows.h"
#include "orumlox/csc.h"

namespace lox {

namespace {

struct ChromaPlanes {
  ChromaKind kind;
  // The planes of U and V; the same one for pairs.
  int u, v;
};
// By ChromaId.
constexpr ChromaPlanes kChroma[] = {
    {kChromaPlanes, 1, 2},  // kToYuv420
    {kChromaPlanes, 2, 1},  // kToYv12
    {kChromaUv, 1, 1},      // kToNv12
    {kChromaVu, 1, 1},      // kToNv21
};

// Whether the source is fetched ahead. A pixel takes so many bytes of source
// and destination.
bool fetches(const KernelArgs &args, int bytes) {
  const MemoryRule &rule = memory_now();
  return rule.fetches_rgb &&
         args.pixels() * static_cast<uint64_t>(bytes) >= rule.far_from;
}

void convert(const RgbToYuvKernels &forms, RgbLayout layout,
             const ChromaPlanes &chroma, const KernelArgs &args) {
  const ptrdiff_t width = args.src_width[0];
  const int32_t height = args.src_height[0];
  if (args.empty()) return;
  const RgbToYuvFn luma_and_chroma = forms.luma_and_chroma[chroma.kind];
  // Of the destination luma alone is counted.
  const bool fetch = fetches(args, kPixelFormats[layout].bytes + 1);
  // Looked up once: what rows write could be what they are looked up from.
  const auto plane = [](auto *first, ptrdiff_t step) {
    return [=](ptrdiff_t row) { return first + row * step; };
  };
  const auto rgb = plane(args.src_plane[0], args.src_stride[0]);
  const auto y = plane(args.dst_plane[0], args.dst_stride[0]);
  const auto u = plane(args.dst_plane[chroma.u], args.dst_stride[chroma.u]);
  const auto v = plane(args.dst_plane[chroma.v], args.dst_stride[chroma.v]);
  const RowRange rows = args.rows();
  for (int32_t row = rows.begin; row < rows.end; ++row) {
    if (row % 2 == 0 && row + 1 < height) {
      luma_and_chroma({rgb(row), y(row), {u(row / 2), v(row / 2)}, fetch},
                      width);
    } else {
      forms.luma({rgb(row), y(row), {}, fetch}, width);
    }
  }
}

}  // namespace

void rgb_to_yuv(const KernelArgs &args, int from, int to) {
  convert(rgb_rows().to_yuv[from], static_cast<RgbLayout>(from), kChroma[to],
          args);
}
void bt601_full_to_yuv(const KernelArgs &args, int, int to) {
  convert(rgb_rows().bt601_full, kRgba8888, kChroma[to], args);
}
void bt709_to_yuv(const KernelArgs &args, int, int to) {
  convert(rgb_rows().bt709, kRgba8888, kChroma[to], args);
}

void rgb_to_yuv444(const KernelArgs &args, int from, int) {
  if (args.empty()) return;
  const RgbToYuvFn convert_row = from == kArgb8888
                                     ? rgb_rows().argb8888_to_yuv444
                                     : rgb_rows().rgba8888_to_yuv444;
  const bool fetch = fetches(args, kPixelFormats[kRgba8888].bytes + 3);
  const RowRange rows = args.rows();
  for (int32_t row = rows.begin; row < rows.end; ++row) {
    convert_row({args.src(0, row),
                 args.dst(0, row),
                 {args.dst(1, row), args.dst(2, row)},
                 fetch},
                args.src_width[0]);
  }
}

void rgb_to_rgb(const KernelArgs &args, int from, int) {
  const RgbRows &kernels = rgb_rows();
  convert_rows(from == kRgb565   ? kernels.rgb565_to_rgba8888
               : from == kRgb888 ? kernels.rgb888_to_rgb565
                                 : kernels.rgba8888_to_rgb565,
               args);
}

}  // namespace lox

extern "C" {

LOX_KERNELS_420(rgb565, rgb_to_yuv, kRgb565)
LOX_KERNELS_420(bgr565, rgb_to_yuv, kBgr565)
LOX_KERNELS_420(rgb888, rgb_to_yuv, kRgb888)
LOX_KERNELS_420(bgr888, rgb_to_yuv, kBgr888)
LOX_KERNELS_420(rgba8888, rgb_to_yuv, kRgba8888)
LOX_KERNELS_420(bgra8888, rgb_to_yuv, kBgra8888)
LOX_KERNELS_420(argb8888, rgb_to_yuv, kArgb8888)
LOX_KERNELS_420(abgr8888, rgb_to_yuv, kAbgr8888)

LOX_KERNELS_420(bt601_fr_rgba8888, bt601_full_to_yuv, kRgba8888)
LOX_KERNEL(bt709_rgba8888_to_nv12, bt709_to_yuv, kRgba8888, kToNv12)
LOX_KERNEL(bt709_rgba8888_to_nv21, bt709_to_yuv, kRgba8888, kToNv21)

LOX_KERNEL(rgba8888_to_yuv444, rgb_to_yuv444, kRgba8888, kNothing)
LOX_KERNEL(argb8888_to_yuv444, rgb_to_yuv444, kArgb8888, kNothing)
LOX_KERNEL(rgba8888_to_rgb565, rgb_to_rgb, kRgba8888, kRgb565)
LOX_KERNEL(rgb888_to_rgb565, rgb_to_rgb, kRgb888, kRgb565)
LOX_KERNEL(rgb565_to_rgba8888, rgb_to_rgb, kRgb565, kRgba8888)

}  // extern "C"
