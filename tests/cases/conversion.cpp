// SPDX-License-Identifier: Apache-2.0
#include "cases/conversion.h"

#include <orumlox/csc.h>

#include <algorithm>
#include <vector>

namespace lox_test {
namespace {

// Two routes have no kernel of their own.
const std::vector<Conversion> &routes() {
  static const std::vector<Conversion> all = [] {
    std::vector<Conversion> found = {{VEXO_FMT_YUV420, VEXO_FMT_YV12, 0},
                                     {VEXO_FMT_NV12, VEXO_FMT_NV21, 0}};
    for (const Family *family : {&csc_family, &layout_family}) {
      for (int32_t i = 0; i < family->count; ++i) {
        const Function &function = family->functions[i];
        if (function.run == conversion)
          found.push_back(parse_conversion(function.name));
      }
    }
    return found;
  }();
  return all;
}

}  // namespace

bool has_route(int32_t from, int32_t to) {
  return std::any_of(
      routes().begin(), routes().end(),
      [&](const Conversion &c) { return c.from == from && c.to == to; });
}

const Conversion &any_route(Source &source) {
  return routes()[source.between(0, static_cast<int32_t>(routes().size()) - 1)];
}

void set_pictures(const Conversion &conversion, int32_t width, int32_t height,
                  Picture *src, Picture *dst) {
  const auto [from, to, standard] = conversion;
  const ExactCall call = exact_csc(from, to, standard, width, height);
  // What is exchanged in place is a run of bytes; of planes that change places
  // each is read with the other's stride.
  const bool on = (from == VEXO_FMT_NV12 && to == VEXO_FMT_NV21) ||
                  (from == VEXO_FMT_NV21 && to == VEXO_FMT_NV12) ||
                  (from == VEXO_FMT_YUV420 && to == VEXO_FMT_YV12);
  const Rows rows = on ? Rows::kOn : Rows::kEitherWay;
  src->draw_strides(call.src, rows);
  dst->draw_strides(call.dst, rows);
  for (int p = 0; p < 4; ++p) {
    src->set_plane(p, call.src[p],
                   csc_source_bytes(call, from, to, p, src->img.stride));
    dst->set_plane(p, call.dst[p],
                   csc_destination_bytes(call, from, to, p, dst->img.stride));
  }
}

void conversion(const Function &function, Source &source, Sink &sink) {
  Picture src(source);
  Picture dst(source);
  const int32_t width = source.width();
  set_pictures(parse_conversion(function.name), width, source.height(width),
               &src, &dst);
  function.as<vexo_csc_kernel>()(src.img.plane, src.img.width, src.img.height,
                                 src.img.stride, dst.img.stride, dst.img.plane);
  dst.add_to(sink);
}

}  // namespace lox_test
