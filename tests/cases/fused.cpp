// SPDX-License-Identifier: Apache-2.0
// Two steps in one: scaling or turning with a conversion.
#include <orumlox/orumlox.h>

#include <algorithm>
#include <string_view>

#include "cases/conversion.h"
#include "cases/picture.h"

namespace lox_test {
namespace {

constexpr int32_t kSomeStandards[] = {0, 0, 1, 1, 10, 11, 2};

// Formats that some call converts, in most cases, and standards.
void draw_formats(Source &source, vexo_img *src, vexo_img *dst) {
  const int32_t standard = source.one_of(kSomeStandards);
  const bool any = source.one_in(16);
  for (int i = 0; i == 0 || (i < 200 && !any); ++i) {
    src->format = any ? source.format() : known_format(source);
    dst->format = any ? source.format() : known_format(source);
    if (vexo_csc_supports(src->format, dst->format, standard) != 0) break;
  }
  // What goes by runs of bytes and by other strides.
  if (source.one_in(8)) {
    const bool pairs = source.one_in(2);
    src->format = pairs ? VEXO_FMT_NV12 : VEXO_FMT_YUV420;
    dst->format = pairs ? VEXO_FMT_NV21 : VEXO_FMT_YV12;
  }
  src->color_std = standard;
  dst->color_std = source.one_in(8) ? source.one_of(kSomeStandards) : standard;
}

// Tiles stay at the width that some of them want.
Size draw_size(Source &source, int32_t format) {
  const int32_t width = source.one_in(48) ? source.between(1500, 9000)
                                          : std::max(source.width(), 1);
  const int32_t least = source.one_in(16) ? 1 : 8;
  return {format == VEXO_FMT_T256X16 ? 1279 + width % 4 : width,
          std::max(source.height(), least)};
}

// Copies of 16-bit units round strides down, which goes beyond planes upwards.
void set(Picture *picture, const ExactImage &image,
         Rows rows = Rows::kEitherWay) {
  picture->draw_strides(image, rows);
  for (int p = 0; p < 4; ++p) {
    int32_t &stride = picture->img.stride[p];
    if (stride < 0) stride &= ~1;
    picture->set_plane(p, image[p], image[p].bytes(stride));
  }
}

int32_t near(Source &source, int32_t side, bool whole) {
  const int32_t factor = source.between(2, 4);
  if (whole) return side * factor;
  switch (source.between(0, 3)) {
    case 0:
      return std::max(side * factor / source.between(2, 5), 1);
    case 1:
      return std::max(side / factor, 1);
    default:
      return source.between(1, 2 * side + 40);
  }
}

// Pictures of 4:2:0 such as are scaled and converted at once, through
// registers, where a set has kernels for it: even sizes, a register of pixels
// and of source samples at least, ratios from 1:2 to 2:1 in both directions,
// both of chroma's planes alike. The faults named fused-pairs show that they go
// this way.
void scaled_at_once(const Function &function, Source &source, Sink &sink) {
  constexpr int32_t kFrom[] = {VEXO_FMT_NV12, VEXO_FMT_NV21, VEXO_FMT_YUV420,
                               VEXO_FMT_YV12};
  constexpr int32_t kTo[] = {VEXO_FMT_RGBA8888, VEXO_FMT_BGRA8888,
                             VEXO_FMT_ARGB8888, VEXO_FMT_ABGR8888,
                             VEXO_FMT_RGB565,   VEXO_FMT_BGR565};
  Picture src(source);
  Picture dst(source);
  vexo_img &from = src.img;
  vexo_img &to = dst.img;
  from.format = source.one_of(kFrom);
  to.format = source.one_of(kTo);
  const Size size = {2 * source.between(64, source.one_in(8) ? 1300 : 160),
                     2 * source.between(1, 12)};
  const auto before = [&](int32_t side) {
    constexpr int32_t kRatios[][2] = {{3, 2}, {2, 3}, {5, 4}, {3, 4}};
    const auto &ratio = source.one_of(kRatios);
    const int32_t near = source.one_in(2) ? source.between(side / 2, 2 * side)
                                          : side * ratio[0] / ratio[1];
    return std::max(near & ~1, ((side / 2) + 1) & ~1);
  };
  const Size whole = {before(size.width), before(size.height)};
  set(&src, exact_image(from.format, whole.width, whole.height));
  const ExactImage out = exact_image(to.format, size.width, size.height);
  if (source.one_in(2)) {
    // Whole vectors may be written past the caches.
    dst.draw_strides(out, Rows::kOn);
    to.stride[0] = static_cast<int32_t>((out[0].row_bytes + 63) / 64 * 64);
  } else {
    dst.draw_strides(out, Rows::kEitherWay);
  }
  dst.set_plane(0, out[0], out[0].bytes(to.stride[0]));
  to.mode = source.one_in(2) ? VEXO_MODE_MOD1 : 0;
  sink.add(
      static_cast<uint32_t>(function.as<decltype(vexo_rsz_csc)>()(&from, &to)));
  dst.add_to(sink);
}

void scaled(const Function &function, Source &source, Sink &sink) {
  if (source.one_in(4)) return scaled_at_once(function, source, sink);
  Picture src(source);
  Picture dst(source);
  vexo_img &from = src.img;
  vexo_img &to = dst.img;
  draw_formats(source, &from, &to);
  const Size size = draw_size(source, from.format);
  const bool words = from.format == VEXO_FMT_P010LE;
  const bool same = source.one_in(6) || is_tiled_code(from.format);
  const Size before =
      same ? size
           : Size{near(source, size.width, words && !source.one_in(8)),
                  near(source, size.height, words && !source.one_in(8))};
  const bool equal = before.width == size.width && before.height == size.height;
  ExactImage image = exact_image(from.format, before.width, before.height);
  if (!equal && image[1].width > 0 && !words && source.one_in(4)) {
    const int unit = has_pairs(from.format) ? 2 : 1;
    const Size chroma = {source.between(1, 40), source.between(1, 20)};
    image[1] = exact_plane(chroma.width, chroma.height, unit);
    if (image[2].width > 0) image[2] = image[1];
  }
  set(&src, image);
  const ExactImage middle = exact_image(from.format, size.width, size.height);
  ExactCall call = exact_csc(from.format, to.format, VEXO_STD_DEFAULT, middle,
                             size.width, size.height);
  // Nothing beyond an odd width.
  call.dst[0].beyond = 0;
  const bool on = exchanges_pairs(from.format, to.format);
  dst.draw_strides(call.dst, on ? Rows::kOn : Rows::kEitherWay);
  for (int p = 0; p < 4; ++p) {
    dst.set_plane(
        p, call.dst[p],
        csc_destination_bytes(call, from.format, to.format, p, to.stride));
  }
  to.width[0] = source.one_in(64) ? source.between(-1, 7) : size.width;
  to.height[0] = source.one_in(64) ? source.between(-1, 7) : size.height;
  // Sizes that are not read.
  if (to.width[0] == before.width && to.height[0] == before.height) {
    from.width[1] = from.height[2] = 7777;
  }
  to.mode = source.one_in(2) ? VEXO_MODE_MOD1 : 0;
  sink.add(
      static_cast<uint32_t>(function.as<decltype(vexo_rsz_csc)>()(&from, &to)));
  dst.add_to(sink);
}

void turned(const Function &function, Source &source, Sink &sink) {
  Picture src(source);
  Picture dst(source);
  vexo_img &from = src.img;
  vexo_img &to = dst.img;
  draw_formats(source, &from, &to);
  Size size = draw_size(source, from.format);
  auto rotation = static_cast<uint32_t>(source.between(0, 6));
  // What has no pixel by a rule of its own, quarter turned in several parts.
  if (source.one_in(5)) {
    constexpr int32_t kFrom[] = {VEXO_FMT_YUV420, VEXO_FMT_NV12, VEXO_FMT_NV21};
    constexpr int32_t kTo[] = {VEXO_FMT_RGBA8888, VEXO_FMT_RGBA8888,
                               VEXO_FMT_BGR888, VEXO_FMT_RGB565};
    from.format = source.one_of(kFrom);
    to.format = source.one_of(kTo);
    const int32_t whole = source.one_in(4) ? 2 : 8;
    size = {whole * source.between(80 / whole, 160 / whole),
            whole * source.between(600 / whole, 1000 / whole)};
    rotation = source.one_in(2) ? VEXO_ROT_90L : VEXO_ROT_90R;
  }
  Size whole = size;
  if (source.one_in(2)) {
    const int32_t step = source.between(1, 2);
    from.offset_x = source.between(0, 4) * step;
    from.offset_y = source.between(0, 4) * step;
    whole.width += from.offset_x + source.between(0, 3);
    whole.height += from.offset_y + source.between(0, 3);
    if (source.one_in(8)) {
      int32_t &offset = source.one_in(2) ? from.offset_x : from.offset_y;
      offset = source.one_in(2) ? source.any() : offset + source.between(1, 4);
    }
  }
  ExactImage in = exact_image(from.format, whole.width, whole.height);
  in = exact_csc(from.format, to.format, VEXO_STD_DEFAULT, in, whole.width,
                 whole.height)
           .src;
  // Each plane is read with the other's stride, at most twice its own.
  const bool crossed = exchanges_planes(from.format, to.format);
  if (crossed) {
    in[1].row_bytes += 40;
    in[1].height *= 2;
    in[2] = in[1];
  }
  set(&src, in, crossed ? Rows::kOn : Rows::kEitherWay);
  const bool quarter = rotation == VEXO_ROT_90L || rotation == VEXO_ROT_90R;
  ExactImage out = is_tiled_code(to.format)
                       ? ExactImage{}
                       : exact_image(to.format, size.width, size.height);
  set(&dst, quarter ? turned(out) : out);
  // Sizes that are not read, and a window larger than the source.
  for (int p = 0; p < 4; ++p) {
    if (p > 0) from.width[p] = to.height[p] = 7777;
  }
  to.width[0] = quarter ? size.height : size.width;
  to.height[0] = quarter ? size.width : size.height;
  if (source.one_in(16)) to.width[0] += source.between(20, 40);
  sink.add(static_cast<uint32_t>(
      function.as<decltype(vexo_csc_rot)>()(&from, rotation, &to)));
  dst.add_to(sink);
}

const Function kFunctions[] = {
    LOX_FUNCTION(scaled, vexo_rsz_csc),
    LOX_FUNCTION(turned, vexo_csc_rot),
};

}  // namespace

const Family fused_family = make_family("fused", 300, kFunctions);

}  // namespace lox_test
