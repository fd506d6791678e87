// SPDX-License-Identifier: Apache-2.0
// Samples of 10 bits, and fewer bits by dithering.
#include <orumlox/orumlox.h>

#include <algorithm>
#include <string_view>

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
  const int32_t x = source.any();
  const int32_t y = source.any();
  Picture src(source);
  Picture dst(source);
  src.set({exact_plane(width, height, bits > 8 ? 2 * kUnit : kUnit)},
          Rows::kEitherWay);
  dst.set({exact_plane(width, height, kUnit)}, Rows::kEitherWay);
  sink.add(static_cast<uint32_t>(function.as<vexo_dit_kernel>()(
      src.img.plane[0], width, height, src.img.stride[0], dst.img.stride[0],
      dst.img.plane[0], bits, to, x, y)));
  dst.add_to(sink);
}

int32_t other_side(Source &source, int32_t side) {
  const int32_t kind = source.between(0, 4);
  if (side < 1 || side > 600 || kind == 0) return source.width();
  return kind == 1   ? std::max(side / source.between(2, 5), 1)
         : kind == 2 ? side * source.between(1, side < 8 ? 70 : 4)
                     : source.between(1, 3 * side);
}
void scale(const Function &function, Source &source, Sink &sink) {
  const int32_t format = source.one_of(kDeep);
  const Size size = source.size();
  Size to = size;
  if (!source.one_in(8)) {
    to = {other_side(source, size.width), other_side(source, size.height)};
  }
  Picture src(source);
  Picture dst(source);
  src.set(planes_of_420(format, size, usual_chroma(size)), Rows::kEitherWay);
  dst.set(planes_of_420(format, to, usual_chroma(to)), Rows::kEitherWay);
  src.img.format = dst.img.format = format;
  if (source.one_in(16)) dst.img.format = source.format();
  if (source.one_in(16)) src.img.format = dst.img.format = VEXO_FMT_NV12;
  dst.img.mode = source.one_in(2) ? VEXO_MODE_MOD1 : 0;
  const auto some = [&](int32_t y0, int32_t y1) {
    return function.as<decltype(vexo_rsz_deep_rows)>()(&src.img, &dst.img, y0,
                                                       y1);
  };
  sink.add(static_cast<uint32_t>(
      takes_rows(function)
          ? by_rows(&dst, dst.img.height[0], VEXO_FMT_P010LE, some)
          : function.as<decltype(vexo_rsz_deep)>()(&src.img, &dst.img)));
  dst.add_to(sink);
}

void turn(const Function &function, Source &source, Sink &sink) {
  const bool copies = std::string_view(function.name) == "vexo_cpy_deep";
  const auto code = static_cast<uint32_t>(copies ? 0 : source.between(0, 6));
  const Size size = source.size();
  Picture src(source);
  Picture dst(source);
  src.img.format = dst.img.format = source.one_of(kDeep);
  const ExactImage image =
      planes_of_420(src.img.format, size,
                    source.one_in(4) ? source.size() : usual_chroma(size));
  src.set(image, Rows::kEitherWay);
  dst.set(code == 1 || code == 2 ? turned(image) : image, Rows::kEitherWay);
  if (source.one_in(16)) dst.img.format = source.format();
  sink.add(static_cast<uint32_t>(
      copies
          ? function.as<decltype(vexo_cpy_deep)>()(&src.img, &dst.img)
          : function.as<decltype(vexo_rot_deep)>()(&src.img, code, &dst.img)));
  dst.add_to(sink);
}

// `small` is the window or the picture in the frame, `large` has it at the
// offset.
void window(const Function &function, Source &source, Sink &sink) {
  const bool cuts = std::string_view(function.name) == "vexo_crop_deep";
  const int32_t format = source.one_of(kDeep);
  const int32_t x = source.between(0, 20);
  const int32_t y = source.between(0, 20);
  const int32_t width = source.width();
  const Size size = {width, source.height()};
  const Size chroma = usual_chroma(size);
  const ExactImage around = planes_of_420(
      format, {std::max(size.width, 0) + x, std::max(size.height, 0) + y},
      {std::max(chroma.width, 0) + half_up(x),
       std::max(chroma.height, 0) + half_up(y)});
  Picture small(source);
  Picture large(source);
  small.set(planes_of_420(format, size, chroma),
            cuts ? Rows::kEitherWay : Rows::kOn);
  large.set(around);
  vexo_img &src = cuts ? large.img : small.img;
  src.offset_x = x;
  src.offset_y = y;
  small.img.format = large.img.format = format;
  if (!cuts) {
    for (int p = 0; p < 3; ++p) {  // whole buffers
      const int64_t rows = around[p].height + source.between(0, 2);
      large.set_plane(p, around[p], rows * large.img.stride[p]);
      large.img.buf_height[p] = static_cast<int32_t>(rows);
    }
    if (source.one_in(8)) src.offset_y += source.between(1, INT32_MAX - 20);
  }
  sink.add(static_cast<uint32_t>(function.as<decltype(vexo_crop_deep)>()(
      &src, cuts ? &small.img : &large.img)));
  small.add_to(sink);
  large.add_to(sink);
}

const Function kFunctions[] = {
    LOX_FUNCTION(scale, vexo_rsz_deep),
    LOX_FUNCTION(scale, vexo_rsz_deep_rows),
    LOX_FUNCTION(turn, vexo_rot_deep),
    LOX_FUNCTION(turn, vexo_cpy_deep),
    LOX_FUNCTION(window, vexo_crop_deep),
    LOX_FUNCTION(window, vexo_padding_deep),
    LOX_FUNCTION(conversion, vexo_csc_deep),
    LOX_FUNCTION(dither, vexo_csc_dither),
    LOX_FUNCTION(dither, vexo_csc_dither_rows),
    LOX_FUNCTION(dither_plane<1>, vexo_dit_8b),
    LOX_FUNCTION(dither_plane<2>, vexo_dit_8b8b),
};

}  // namespace

const Family deep_family = make_family("deep", 100, kFunctions);

}  // namespace lox_test
