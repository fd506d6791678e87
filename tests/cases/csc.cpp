// SPDX-License-Identifier: Apache-2.0
// Colour conversion: the kernels between YUV and RGB, and the entry points.
#include <orumlox/csc.h>

#include "cases/conversion.h"

namespace lox_test {
namespace {

void entry(const Function &function, Source &source, Sink &sink) {
  constexpr int32_t kStandards[] = {
      0, 0, 0, VEXO_STD_BT601_FULL, VEXO_STD_BT709, VEXO_STD_BT709_FULL, 2, -1};
  const Conversion *known = source.one_in(8) ? nullptr : &any_route(source);
  const int32_t from = known != nullptr ? known->from : source.format();
  const int32_t to = known != nullptr ? known->to : source.format();
  Picture src(source);
  Picture dst(source);
  const int32_t width = from == VEXO_FMT_T256X16 && source.one_in(2)
                            ? source.between(1281, 1300)
                            : source.width();
  // Where there is no route nothing is touched: all planes are null. Of the
  // others those are set that the kernel of the default standard needs, which
  // are never the smaller ones.
  if (has_route(from, to)) {
    set_pictures({from, to, VEXO_STD_DEFAULT}, width, source.height(width),
                 &src, &dst);
    if (source.one_in(8)) dst.img.width[0] = source.between(-1, 9);
    if (source.one_in(8)) dst.img.height[0] = source.between(-1, 9);
  }
  src.img.format = from;
  dst.img.format = to;
  src.img.color_std = source.one_of(kStandards);
  dst.img.color_std =
      source.one_in(4) ? source.one_of(kStandards) : src.img.color_std;
  auto *const call = function.as<decltype(vexo_csc)>();
  sink.add(static_cast<uint32_t>(call(&src.img, &dst.img)));
  dst.add_to(sink);
}

#define LOX_K(name) LOX_FUNCTION(conversion, vexo_csc_##name)
#define LOX_TO_565(from) LOX_K(from##_to_rgb565), LOX_K(from##_to_bgr565)
#define LOX_TO_RGB(from)                                              \
  LOX_TO_565(from), LOX_K(from##_to_rgb888), LOX_K(from##_to_bgr888), \
      LOX_K(from##_to_rgba8888), LOX_K(from##_to_bgra8888),           \
      LOX_K(from##_to_argb8888), LOX_K(from##_to_abgr8888)
#define LOX_TO_420(from)                                                 \
  LOX_K(from##_to_yuv420), LOX_K(from##_to_yv12), LOX_K(from##_to_nv12), \
      LOX_K(from##_to_nv21)

const Function kFunctions[] = {
    LOX_FUNCTION(entry, vexo_csc),
    LOX_FUNCTION(entry, vexo_csc_bt601_fr),
    LOX_FUNCTION(entry, vexo_csc_bt709),
    LOX_FUNCTION(entry, vexo_csc_bt709_fr),
    LOX_TO_RGB(yuv420),
    LOX_TO_RGB(yv12),
    LOX_TO_RGB(nv12),
    LOX_TO_RGB(nv21),
    LOX_TO_RGB(yuv422n),
    LOX_TO_RGB(yuv444),
    LOX_TO_RGB(uyvy),
    LOX_TO_RGB(yuyv),
    LOX_TO_RGB(t64x32),
    LOX_TO_565(yuv422w),
    LOX_K(yuv400_to_rgb565),
    LOX_K(yuv400_to_rgb888),
    LOX_K(t16x16_to_rgba8888),
    LOX_K(t8x8_to_rgba8888),
    LOX_K(t256x16_to_rgba8888),
    LOX_K(p010le_to_rgba8888),
    LOX_K(bt601_fr_yuv420_to_rgba8888),
    LOX_K(bt601_fr_nv12_to_rgba8888),
    LOX_K(bt601_fr_nv21_to_rgba8888),
    LOX_K(bt709_yuv420_to_rgba8888),
    LOX_K(bt709_fr_yuv420_to_rgba8888),
    LOX_TO_420(rgb565),
    LOX_TO_420(bgr565),
    LOX_TO_420(rgb888),
    LOX_TO_420(bgr888),
    LOX_TO_420(rgba8888),
    LOX_TO_420(bgra8888),
    LOX_TO_420(argb8888),
    LOX_TO_420(abgr8888),
    LOX_K(rgba8888_to_yuv444),
    LOX_K(argb8888_to_yuv444),
    LOX_TO_420(bt601_fr_rgba8888),
    LOX_K(bt709_rgba8888_to_nv12),
    LOX_K(bt709_rgba8888_to_nv21),
    LOX_K(rgba8888_to_rgb565),
    LOX_K(rgb888_to_rgb565),
    LOX_K(rgb565_to_rgba8888),
};

}  // namespace

const Family csc_family = make_family("csc", 100, kFunctions);

}  // namespace lox_test
