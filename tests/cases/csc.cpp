// SPDX-License-Identifier: Apache-2.0
// Colour conversion: every kernel vexo_csc_[STANDARD_]FROM_to_TO and the entry
// points.
#include <orumlox/orumlox.h>

#include <algorithm>
#include <string_view>
#include <vector>

#include "cases/by_rows.h"
#include "cases/cases.h"
#include "cases/conversion.h"

namespace lox_test {
namespace {

// The routes of vexo_csc and of its siblings.
const std::vector<Conversion> &routes() {
  static const std::vector<Conversion> all = [] {
    std::vector<Conversion> found = {{VEXO_FMT_YUV420, VEXO_FMT_YV12, 0},
                                     {VEXO_FMT_NV12, VEXO_FMT_NV21, 0}};
    for (int32_t i = 0; i < csc_family.count; ++i) {
      const Conversion named = parse_conversion(csc_family.functions[i].name);
      if (named.from >= 0) found.push_back(named);
    }
    return found;
  }();
  return all;
}
// Whether vexo_csc has a route, whatever the standard.
bool has_route(int32_t from, int32_t to) {
  return std::any_of(
      routes().begin(), routes().end(),
      [&](const Conversion &c) { return c.from == from && c.to == to; });
}

// Planes of exactly the size that the conversion needs; chroma that is moved
// has any size.
void set_pictures(Source &source, const Conversion &conversion, Size size,
                  Picture *src, Picture *dst) {
  const auto [from, to, standard] = conversion;
  const auto [width, height] = size;
  ExactImage image = exact_image(from, width, height);
  const bool tiles = to == VEXO_FMT_T64X32;
  if ((tiles || moves_planes(from, to)) && source.one_in(2)) {
    const int unit = has_pairs(from)                   ? 2
                     : from == VEXO_FMT_YUV420PLANAR16 ? 2
                                                       : 1;
    for (int p = 1; p < 3 && image[p].row_bytes != 0; ++p) {
      const Size chroma = {source.width(), source.height()};
      image[p] = exact_plane(chroma.width, chroma.height, unit);
    }
    if (tiles || has_pairs(to)) image[2] = image[1];
    if (has_pairs(from)) image[2] = {};
  }
  const ExactCall call = exact_csc(from, to, standard, image, width, height);
  // What is exchanged in place is a run of bytes; of planes that change places
  // each is read with the other's stride.
  const bool on = exchanges_pairs(from, to) || exchanges_planes(from, to);
  const Rows rows = on ? Rows::kOn : Rows::kEitherWay;
  src->draw_strides(call.src, rows);
  dst->draw_strides(call.dst, rows);
  for (int p = 0; p < 4; ++p) {
    src->set_plane(p, call.src[p],
                   csc_source_bytes(call, from, to, p, src->img.stride));
    dst->set_plane(p, call.dst[p],
                   csc_destination_bytes(call, from, to, p, dst->img.stride));
  }
  // Sizes that are not looked at.
  const int known = is_tiled_code(from) ? 1 : tiles || has_pairs(to) ? 2 : 4;
  for (int p = known; p < 4; ++p) src->img.width[p] = src->img.height[p] = 7777;
}

// Of tiles often around multiples of their sides.
Size any_size(Source &source, int32_t from, int32_t to) {
  const bool tiled = is_tiled_code(from) || is_tiled_code(to);
  if (!tiled || !source.one_in(4)) return source.size();
  return {around(source, 64, 6), around(source, 32, 5)};
}

void conversion(const Function &function, Source &source, Sink &sink) {
  Picture src(source);
  Picture dst(source);
  const Conversion named = parse_conversion(function.name);
  set_pictures(source, named, any_size(source, named.from, named.to), &src,
               &dst);
  function.as<vexo_csc_kernel>()(src.img.plane, src.img.width, src.img.height,
                                 src.img.stride, dst.img.stride, dst.img.plane);
  dst.add_to(sink);
}

void entry(const Function &function, Source &source, Sink &sink) {
  constexpr int32_t kStandards[] = {
      0, 0, 0, VEXO_STD_BT601_FULL, VEXO_STD_BT709, VEXO_STD_BT709_FULL, 2, -1};
  const auto last = static_cast<int32_t>(routes().size()) - 1;
  const Conversion *known =
      source.one_in(8) ? nullptr : &routes()[source.between(0, last)];
  const int32_t from = known != nullptr ? known->from : source.format();
  const int32_t to = known != nullptr ? known->to : source.format();
  Picture src(source);
  Picture dst(source);
  Size size = source.size();
  if (from == VEXO_FMT_T256X16 && source.one_in(2) && size.width > 0) {
    size.width = source.between(1279, 1300);
  }
  // Where there is no route nothing is touched: all planes are null. Of the
  // others those are set that the kernel of the default standard needs, which
  // are never the smaller ones.
  if (has_route(from, to)) {
    set_pictures(source, {from, to, VEXO_STD_DEFAULT}, size, &src, &dst);
    dst.img.width[0] = size.width;
    dst.img.height[0] = size.height;
    if (source.one_in(8)) dst.img.width[0] = source.between(-1, 20);
    if (source.one_in(8)) dst.img.height[0] = source.between(-1, 20);
  }
  src.img.format = from;
  dst.img.format = to;
  src.img.color_std = known != nullptr && source.one_in(2) && !source.one_in(8)
                          ? known->standard
                          : source.one_of(kStandards);
  dst.img.color_std =
      source.one_in(4) ? source.one_of(kStandards) : src.img.color_std;
  // Rows that lie upwards, too near for the pixel beyond an odd width, are not
  // apart, which ranges want.
  const int32_t pixel = to >= 500 ? 4 : to >= 400 ? 3 : to >= 200 ? 2 : 1;
  const int64_t least = int64_t{size.width + size.width % 2} * pixel;
  if (std::string_view(function.name).ends_with("_rows") &&
      dst.img.stride[0] < 0 && -int64_t{dst.img.stride[0]} < least) {
    return;
  }
  const auto some = [&](int32_t y0, int32_t y1) {
    return function.as<decltype(vexo_csc_rows)>()(&src.img, &dst.img, y0, y1);
  };
  const int32_t status =
      takes_rows(function)
          ? by_rows(&dst, src.img.height[0], to, some)
          : function.as<decltype(vexo_csc)>()(&src.img, &dst.img);
  sink.add(static_cast<uint32_t>(status));
  dst.add_to(sink);
}

#define KERNEL(name) LOX_FUNCTION(conversion, name),
const Function kFunctions[] = {
    LOX_FUNCTION(entry, vexo_csc),          LOX_FUNCTION(entry, vexo_csc_rows),
    LOX_FUNCTION(entry, vexo_csc_bt601_fr), LOX_FUNCTION(entry, vexo_csc_bt709),
    LOX_FUNCTION(entry, vexo_csc_bt709_fr),
#include "vexo_csc_kernel.inc"
};

}  // namespace

const Family csc_family = make_family("csc", 100, kFunctions);

}  // namespace lox_test
