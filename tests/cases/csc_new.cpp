// SPDX-License-Identifier: Apache-2.0
// Conversion with interpolated chroma.
#include <orumlox/csc_new.h>

#include "cases/by_rows.h"
#include "cases/cases.h"
#include "support/conversion_name.h"

namespace lox_test {
namespace {

constexpr int32_t kFrom[] = {
    VEXO_FMT_YUV420, VEXO_FMT_YUV422N, VEXO_FMT_YUV444,        VEXO_FMT_YV12,
    VEXO_FMT_YV16,   VEXO_FMT_NV12,    VEXO_FMT_NV21,          VEXO_FMT_UYVY,
    VEXO_FMT_YUYV,   VEXO_FMT_P010LE,  VEXO_FMT_YUV420PLANAR16};
constexpr int32_t kTo[] = {VEXO_FMT_RGB565,   VEXO_FMT_BGR565,
                           VEXO_FMT_RGB888,   VEXO_FMT_BGR888,
                           VEXO_FMT_RGBA8888, VEXO_FMT_BGRA8888,
                           VEXO_FMT_ARGB8888, VEXO_FMT_ABGR8888,
                           VEXO_FMT_RGBAF16,  VEXO_FMT_RGBA1010102};
constexpr int32_t kStandards[] = {VEXO_STD_DEFAULT, VEXO_STD_BT601_FULL,
                                  VEXO_STD_BT709,   VEXO_STD_BT709_FULL,
                                  VEXO_STD_BT2020,  VEXO_STD_BT2020_FULL};

// Mostly one of a list.
template <size_t kCount>
int32_t most_of(const int32_t (&list)[kCount], Source &source) {
  return source.one_in(16) ? source.between(-1, 702) : source.one_of(list);
}

// Sizes of chroma are not looked at.
void set_source(Picture *src, int32_t format, Size size) {
  src->set(exact_image(format, size.width, size.height), Rows::kEitherWay);
  for (int p = 1; p < 4; ++p) src->img.width[p] = src->img.height[p] = 7777;
}

void entry(const Function &function, Source &source, Sink &sink) {
  const int32_t from = most_of(kFrom, source);
  const int32_t to = most_of(kTo, source);
  Size size = source.size();
  // Columns are done 2048 at a time.
  if (!source.large() && source.one_in(32)) {
    size = {source.between(2040, 2060), source.between(1, 3)};
  }
  Picture src(source);
  Picture dst(source);
  set_source(&src, from, size);
  dst.set(exact_image(to, size.width, size.height), Rows::kEitherWay);
  src.img.format = from;
  dst.img.format = to;
  src.img.color_std = most_of(kStandards, source);
  dst.img.color_std = source.one_in(16)  ? source.between(-1, 21)
                      : source.one_in(2) ? 0
                                         : src.img.color_std;
  src.img.reserved1 = source.one_in(32) ? source.any() : source.between(0, 1);
  if (source.one_in(32)) dst.img.width[0] ^= 1;
  if (source.one_in(32)) dst.img.height[0] ^= 1;
  const auto some = [&](int32_t y0, int32_t y1) {
    return function.as<decltype(vexo_csc_new_rows)>()(&src.img, &dst.img, y0,
                                                      y1);
  };
  const int32_t status =
      takes_rows(function)
          ? by_rows(&dst, src.img.height[0], VEXO_FMT_RGBA8888, some)
          : function.as<decltype(vexo_csc_new)>()(&src.img, &dst.img);
  sink.add(static_cast<uint32_t>(status));
  dst.add_to(sink);
}

void kernel(const Function &function, Source &source, Sink &sink) {
  const ConversionName named = parse_conversion(function.name);
  const Size size = source.size();
  Picture src(source);
  Picture dst(source);
  set_source(&src, named.from, size);
  dst.set(exact_image(named.to, size.width, size.height), Rows::kEitherWay);
  function.as<vexo_csc_new_kernel>()(src.img.plane, src.img.width,
                                     src.img.height, src.img.stride,
                                     dst.img.stride, dst.img.plane);
  dst.add_to(sink);
}

void supports(const Function &function, Source &source, Sink &sink) {
  const int32_t from = most_of(kFrom, source);
  const int32_t to = most_of(kTo, source);
  sink.add(static_cast<uint32_t>(function.as<decltype(vexo_csc_new_supports)>()(
      from, to, most_of(kStandards, source))));
}

#define KERNEL(name) LOX_FUNCTION(kernel, name),
const Function kFunctions[] = {
    LOX_FUNCTION(entry, vexo_csc_new),
    LOX_FUNCTION(entry, vexo_csc_new_rows),
    LOX_FUNCTION(supports, vexo_csc_new_supports),
#include "vexo_csc_new_kernel.inc"
};

}  // namespace

const Family csc_new_family = make_family("csc_new", 100, kFunctions);

}  // namespace lox_test
