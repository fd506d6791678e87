// SPDX-License-Identifier: Apache-2.0
// Scaling by Lanczos filters.
#include <orumlox/apex.h>

#include <algorithm>

#include "cases/cases.h"

namespace lox_test {
namespace {

// Near, far, as far as may be and just beyond.
int32_t other_side(Source &source, int32_t side) {
  if (side < 1 || side > 4100) return source.width();
  switch (source.between(0, 7)) {
    case 0:
      return side;
    case 1:
      return side < 65 ? side * source.between(1, side < 9 ? 66 : 3) : side;
    case 2:
      return std::max(side / source.between(2, 70), 1);
    case 3:
      return std::max(side + source.between(-3, 3), 1);
    case 4:
      return source.width();
    default:
      return source.between(1, side);
  }
}

// Sides of a ratio that has kernels of its own, or of one near it.
void set_ratio(Source &source, int32_t &from, int32_t &to) {
  constexpr int32_t kRatios[][2] = {{1, 1}, {2, 1}, {3, 1}, {4, 1}, {3, 2},
                                    {3, 2}, {4, 1}, {5, 1}, {1, 2}, {2, 3},
                                    {1, 3}, {4, 3}, {5, 2}};
  const auto &ratio = source.one_of(kRatios);
  const int32_t times = source.between(1, source.one_in(4) ? 300 : 50);
  from = ratio[0] * times;
  to = ratio[1] * times;
}

void picture(const Function &function, Source &source, Sink &sink) {
  constexpr int32_t kFormats[] = {0, 1, 2, 6, 8, 400, 500, 503, 600, 601};
  const int32_t format =
      source.one_in(3) ? source.format() : source.one_of(kFormats);
  auto [width, height] = source.size();
  const auto scaled = [&](int32_t w, int32_t h) {
    // Chroma of a 16-bit format is what it is; others' may be of any size.
    return format >= 600 ? exact_image(format, w, h)
                         : planes_by_code(source, format, w, h);
  };
  int32_t to_width = other_side(source, width);
  if (!source.large() && source.one_in(3)) {
    set_ratio(source, width, to_width);
    height = source.between(1, 60);
  }
  const int32_t to_height = other_side(source, height);
  const ExactImage in = scaled(width, height);
  const ExactImage out = scaled(to_width, to_height);
  Picture src(source);
  Picture dst(source);
  const Rows rows = format >= 600 ? Rows::kEven : Rows::kEitherWay;
  src.set(in, rows);
  dst.set(out, rows);
  src.img.format = dst.img.format = format;
  if (source.one_in(32)) dst.img.format = source.format();
  dst.img.mode = source.one_in(2) ? VEXO_MODE_ALPHA : VEXO_MODE_MOD1;
  sink.add(static_cast<uint32_t>(
      function.as<decltype(vexo_rsz_apex_c)>()(&src.img, &dst.img)));
  dst.add_to(sink);
}

void support(const Function &function, Source &source, Sink &sink) {
  sink.add(static_cast<uint32_t>(
      function.as<decltype(vexo_rsz_apex_supports)>()(source.format())));
}

const Function kFunctions[] = {
    LOX_FUNCTION(picture, vexo_rsz_apex_c),
    LOX_FUNCTION(support, vexo_rsz_apex_supports),
};

}  // namespace

const Family apex_family = make_family("apex", 150, kFunctions);

}  // namespace lox_test
