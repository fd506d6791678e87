// SPDX-License-Identifier: Apache-2.0
// What the name of a conversion says: vexo_csc_[STANDARD_]FROM_to_TO[_new].
#pragma once

#include <orumlox/img.h>

#include <cstdint>
#include <string_view>

namespace lox_test {

struct ConversionName {
  int32_t from, to, standard;
};

// The format of a layout token, or -1.
inline int32_t format_of_token(std::string_view text) {
  static constexpr struct {
    std::string_view text;
    int32_t format;
  } kTokens[] = {{"yuv400", VEXO_FMT_YUV400},
                 {"yuv420", VEXO_FMT_YUV420},
                 {"yuv420Planar", VEXO_FMT_YUV420},
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
                 {"yuv420Planar16", VEXO_FMT_YUV420PLANAR16},
                 {"p010le", VEXO_FMT_P010LE},
                 {"rgba1010102", VEXO_FMT_RGBA1010102},
                 {"rgbaf16", VEXO_FMT_RGBAF16}};
  for (const auto &token : kTokens) {
    if (token.text == text) return token.format;
  }
  return -1;
}

// Formats of -1 where a name is none of a conversion.
inline ConversionName parse_conversion(std::string_view name) {
  if (name.find("_to_") == name.npos) return {-1, -1, VEXO_STD_DEFAULT};
  // The longest first.
  static constexpr struct {
    std::string_view text;
    int32_t standard;
  } kStandards[] = {{"bt601_fr_", VEXO_STD_BT601_FULL},
                    {"bt709_fr_", VEXO_STD_BT709_FULL},
                    {"bt709_", VEXO_STD_BT709},
                    {"bt2020_", VEXO_STD_BT2020}};
  name.remove_prefix(std::string_view("vexo_csc_").size());
  int32_t standard = VEXO_STD_DEFAULT;
  for (const auto &prefix : kStandards) {
    if (!name.starts_with(prefix.text)) continue;
    standard = prefix.standard;
    name.remove_prefix(prefix.text.size());
    break;
  }
  if (name.ends_with("_new")) name.remove_suffix(4);
  const size_t middle = name.find("_to_");
  return {format_of_token(name.substr(0, middle)),
          format_of_token(name.substr(middle + 4)), standard};
}

}  // namespace lox_test
