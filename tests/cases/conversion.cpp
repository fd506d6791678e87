// SPDX-License-Identifier: Apache-2.0
#include "cases/conversion.h"

#include <orumlox/csc.h>

#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <vector>

namespace lox_test {
namespace {

struct Token {
  std::string_view text;
  int32_t code;
};
constexpr Token kFormats[] = {
    {"yuv400", VEXO_FMT_YUV400},
    {"yuv420", VEXO_FMT_YUV420},
    {"yuv422n", VEXO_FMT_YUV422N},
    {"yuv444", VEXO_FMT_YUV444},
    {"yv12", VEXO_FMT_YV12},
    {"yv16", VEXO_FMT_YV16},
    {"nv12", VEXO_FMT_NV12},
    {"nv21", VEXO_FMT_NV21},
    {"yuv422w", VEXO_FMT_YUV422W},
    {"t64x32", VEXO_FMT_T64X32},
    {"t16x16", VEXO_FMT_T16X16},
    {"t8x8", VEXO_FMT_T8X8},
    {"t256x16", VEXO_FMT_T256X16},
    {"uyvy", VEXO_FMT_UYVY},
    {"yuyv", VEXO_FMT_YUYV},
    {"rgb565", VEXO_FMT_RGB565},
    {"bgr565", VEXO_FMT_BGR565},
    {"rgb888", VEXO_FMT_RGB888},
    {"bgr888", VEXO_FMT_BGR888},
    {"rgba8888", VEXO_FMT_RGBA8888},
    {"bgra8888", VEXO_FMT_BGRA8888},
    {"argb8888", VEXO_FMT_ARGB8888},
    {"abgr8888", VEXO_FMT_ABGR8888},
    {"p010le", VEXO_FMT_P010LE},
    {"yuv420Planar", 1},
    {"yuv420Planar16", 600},
};
// The longest first.
constexpr Token kStandards[] = {{"bt601_fr_", VEXO_STD_BT601_FULL},
                                {"bt709_fr_", VEXO_STD_BT709_FULL},
                                {"bt709_", VEXO_STD_BT709}};

int32_t format_of(std::string_view text) {
  for (const Token& token : kFormats) {
    if (token.text == text) return token.code;
  }
  std::abort();
}

Conversion parse(std::string_view name) {
  name.remove_prefix(std::string_view("vexo_csc_").size());
  int32_t standard = VEXO_STD_DEFAULT;
  for (const Token& token : kStandards) {
    if (name.substr(0, token.text.size()) != token.text) continue;
    standard = token.code;
    name.remove_prefix(token.text.size());
    break;
  }
  const size_t middle = name.find("_to_");
  return {format_of(name.substr(0, middle)), format_of(name.substr(middle + 4)),
          standard};
}

// Two routes have no kernel of their own.
const std::vector<Conversion>& routes() {
  static const std::vector<Conversion> all = [] {
    std::vector<Conversion> found = {{VEXO_FMT_YUV420, VEXO_FMT_YV12, 0},
                                     {VEXO_FMT_NV12, VEXO_FMT_NV21, 0}};
    for (const Family* family : {&csc_family, &layout_family}) {
      for (int32_t i = 0; i < family->count; ++i) {
        const Function& function = family->functions[i];
        if (function.run == conversion) found.push_back(parse(function.name));
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
      [&](const Conversion& c) { return c.from == from && c.to == to; });
}

const Conversion& any_route(Source& source) {
  return routes()[source.between(0, static_cast<int32_t>(routes().size()) - 1)];
}

void set_pictures(const Conversion& conversion, int32_t width, int32_t height,
                  Picture* src, Picture* dst) {
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

void conversion(const Function& function, Source& source, Sink& sink) {
  Picture src(source);
  Picture dst(source);
  const int32_t width = source.width();
  set_pictures(parse(function.name), width, source.height(width), &src, &dst);
  function.as<vexo_csc_kernel>()(src.img.plane, src.img.width, src.img.height,
                                 src.img.stride, dst.img.stride, dst.img.plane);
  dst.add_to(sink);
}

}  // namespace lox_test
