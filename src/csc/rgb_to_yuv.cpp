// SPDX-License-Identifier: Apache-2.0
//
// Walks the rows of an RGB source. Each gives a row of luma, and each even row
// with a partner a row of chroma.
#include <stddef.h>
#include <stdint.h>

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
constexpr ChromaPlanes kYuv420 = {kChromaPlanes, 1, 2};
constexpr ChromaPlanes kYv12 = {kChromaPlanes, 2, 1};
constexpr ChromaPlanes kNv12 = {kChromaUv, 1, 1};
constexpr ChromaPlanes kNv21 = {kChromaVu, 1, 1};

void rgb_to_yuv(const RgbToYuvKernels &forms, const ChromaPlanes &chroma,
                const KernelArgs &args) {
  const ptrdiff_t width = args.src_width[0];
  const int32_t height = args.src_height[0];
  if (args.empty()) return;
  const RgbToYuvFn luma_and_chroma = forms.luma_and_chroma[chroma.kind];
  for (int32_t row = 0; row < height; ++row) {
    const bool has_chroma = row % 2 == 0 && row + 1 < height;
    if (!has_chroma) {
      forms.luma({args.src(0, row), args.dst(0, row), {}}, width);
      continue;
    }
    luma_and_chroma(
        {args.src(0, row),
         args.dst(0, row),
         {args.dst(chroma.u, row / 2), args.dst(chroma.v, row / 2)}},
        width);
  }
}

void rgb_to_yuv444(RgbToYuvFn convert_row, const KernelArgs &args) {
  if (args.empty()) return;
  for (int32_t row = 0; row < args.src_height[0]; ++row) {
    convert_row({args.src(0, row),
                 args.dst(0, row),
                 {args.dst(1, row), args.dst(2, row)}},
                args.src_width[0]);
  }
}

}  // namespace

}  // namespace lox

#define LOX_KERNEL(name, forms, chroma)                                 \
  void vexo_csc_##name(LOX_PARAMETERS) {                                \
    lox::rgb_to_yuv(lox::rgb_rows().forms, lox::chroma, LOX_ARGUMENTS); \
  }
#define LOX_KERNELS(name, forms)               \
  LOX_KERNEL(name##_to_yuv420, forms, kYuv420) \
  LOX_KERNEL(name##_to_yv12, forms, kYv12)     \
  LOX_KERNEL(name##_to_nv12, forms, kNv12)     \
  LOX_KERNEL(name##_to_nv21, forms, kNv21)
#define LOX_ROW_KERNEL(driver, name)                  \
  void vexo_csc_##name(LOX_PARAMETERS) {              \
    lox::driver(lox::rgb_rows().name, LOX_ARGUMENTS); \
  }

extern "C" {

LOX_KERNELS(rgb565, to_yuv[lox::kRgb565])
LOX_KERNELS(bgr565, to_yuv[lox::kBgr565])
LOX_KERNELS(rgb888, to_yuv[lox::kRgb888])
LOX_KERNELS(bgr888, to_yuv[lox::kBgr888])
LOX_KERNELS(rgba8888, to_yuv[lox::kRgba8888])
LOX_KERNELS(bgra8888, to_yuv[lox::kBgra8888])
LOX_KERNELS(argb8888, to_yuv[lox::kArgb8888])
LOX_KERNELS(abgr8888, to_yuv[lox::kAbgr8888])

LOX_KERNELS(bt601_fr_rgba8888, bt601_full)
LOX_KERNEL(bt709_rgba8888_to_nv12, bt709, kNv12)
LOX_KERNEL(bt709_rgba8888_to_nv21, bt709, kNv21)

LOX_ROW_KERNEL(rgb_to_yuv444, rgba8888_to_yuv444)
LOX_ROW_KERNEL(rgb_to_yuv444, argb8888_to_yuv444)
LOX_ROW_KERNEL(convert_rows, rgba8888_to_rgb565)
LOX_ROW_KERNEL(convert_rows, rgb888_to_rgb565)
LOX_ROW_KERNEL(convert_rows, rgb565_to_rgba8888)

}  // extern "C"
