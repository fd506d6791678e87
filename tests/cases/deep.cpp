// SPDX-License-Identifier: Apache-2.0
// Samples of 10 bits, and fewer bits by dithering.
#include <orumlox/orumlox.h>

#include "cases/by_rows.h"
#include "cases/cases.h"

namespace lox_test {
namespace {

constexpr int32_t kDeep[] = {VEXO_FMT_YUV420PLANAR16, VEXO_FMT_P010LE};
constexpr int32_t k420[] = {VEXO_FMT_YUV420, VEXO_FMT_YV12, VEXO_FMT_NV12,
                            VEXO_FMT_NV21};

Size usual_chroma(Size luma) {
  return {half_up(luma.width), half_up(luma.height)};
}
// Planes of 4:2:0, of bytes or of words, chroma of any size.
ExactImage planes_of_420(int32_t format, Size luma, Size chroma) {
  const bool pairs = has_pairs(format) || format == VEXO_FMT_P010LE;
  const int bytes = format >= 600 ? 2 : 1;
  const ExactPlane c =
      exact_plane(chroma.width, chroma.height, pairs ? 2 * bytes : bytes);
  return {exact_plane(luma.width, luma.height, bytes), c,
          pairs ? ExactPlane() : c};
}
void set_420(Source &source, Size luma, Picture *src, Picture *dst) {
  const Size chroma = source.one_in(4) ? source.size() : usual_chroma(luma);
  src->set(planes_of_420(src->img.format, luma, chroma), Rows::kEitherWay);
  dst->set(planes_of_420(dst->img.format, luma, chroma), Rows::kEitherWay);
  dst->img.width[0] = luma.width;
  dst->img.height[0] = luma.height;
}

// A destination that is for no source, or the source's own format.
int32_t refused(Source &source, int32_t format) {
  const int32_t formats[] = {-1, VEXO_FMT_YUV444, VEXO_FMT_RGBA8888, format};
  return source.one_of(formats);
}

void conversion(const Function &function, Source &source, Sink &sink) {
  Picture src(source);
  Picture dst(source);
  src.img.format = source.one_of(kDeep);
  dst.img.format =
      source.one_in(2) ? source.one_of(k420) : source.one_of(kDeep);
  set_420(source, source.size(), &src, &dst);
  if (source.one_in(8)) dst.img.format = refused(source, src.img.format);
  sink.add(static_cast<uint32_t>(
      function.as<decltype(vexo_csc_deep)>()(&src.img, &dst.img)));
  dst.add_to(sink);
}

constexpr int32_t kSources[] = {
    VEXO_FMT_YUV400,  VEXO_FMT_YUV420,   VEXO_FMT_YUV422N,  VEXO_FMT_YUV444,
    VEXO_FMT_YV12,    VEXO_FMT_NV12,     VEXO_FMT_NV21,     VEXO_FMT_YUV422W,
    VEXO_FMT_T64X32,  VEXO_FMT_T16X16,   VEXO_FMT_T8X8,     VEXO_FMT_T256X16,
    VEXO_FMT_UYVY,    VEXO_FMT_YUYV,     VEXO_FMT_P010LE,   VEXO_FMT_RGB888,
    VEXO_FMT_BGR888,  VEXO_FMT_RGBA8888, VEXO_FMT_BGRA8888, VEXO_FMT_ARGB8888,
    VEXO_FMT_ABGR8888};
void dither(const Function &function, Source &source, Sink &sink) {
  Picture src(source);
  Picture dst(source);
  Size size = source.size();
  if (source.one_in(4)) {
    src.img.format = source.one_of(kDeep);
    dst.img.format = source.one_of(k420);
    set_420(source, size, &src, &dst);
  } else {
    const int32_t from = source.one_of(kSources);
    if (from == VEXO_FMT_T256X16 && size.width > 0) {
      size.width = source.between(1279, 1300);
    }
    const ExactCall call = exact_csc(from, VEXO_FMT_RGB565, VEXO_STD_DEFAULT,
                                     exact_image(from, size.width, size.height),
                                     size.width, size.height);
    src.set(call.src);
    dst.set(call.dst);
    src.img.format = from;
    dst.img.format = VEXO_FMT_RGB565 + source.between(0, 1);
  }
  if (source.one_in(8)) dst.img.format = refused(source, src.img.format);
  const int32_t to = dst.img.format;
  src.img.color_std = source.between(0, 1);
  dst.img.color_std = source.between(0, 1);
  const auto some = [&](int32_t y0, int32_t y1) {
    return function.as<decltype(vexo_csc_dither_rows)>()(&src.img, &dst.img, y0,
                                                         y1);
  };
  sink.add(static_cast<uint32_t>(
      takes_rows(function)
          ? by_rows(&dst, src.img.height[0], to, some)
          : function.as<decltype(vexo_csc_dither)>()(&src.img, &dst.img)));
  dst.add_to(sink);
}

template <int kUnit>
void dither_plane(const Function &function, Source &source, Sink &sink) {
  const auto [width, height] = source.size();
  const int32_t bits = source.between(7, 17);
  const int32_t to = source.between(0, 9);
  Picture src(source);
  Picture dst(source);
  src.set({exact_plane(width, height, bits > 8 ? 2 * kUnit : kUnit)},
          Rows::kEitherWay);
  dst.set({exact_plane(width, height, kUnit)}, Rows::kEitherWay);
  sink.add(static_cast<uint32_t>(function.as<vexo_dit_kernel>()(
      src.img.plane[0], width, height, src.img.stride[0], dst.img.stride[0],
      dst.img.plane[0], bits, to, source.any(), source.any())));
  dst.add_to(sink);
}

const Function kFunctions[] = {
    LOX_FUNCTION(conversion, vexo_csc_deep),
    LOX_FUNCTION(dither, vexo_csc_dither),
    LOX_FUNCTION(dither, vexo_csc_dither_rows),
    LOX_FUNCTION(dither_plane<1>, vexo_dit_8b),
    LOX_FUNCTION(dither_plane<2>, vexo_dit_8b8b),
};

}  // namespace

const Family deep_family = make_family("deep", 100, kFunctions);

}  // namespace lox_test
