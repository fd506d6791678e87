// SPDX-License-Identifier: Apache-2.0
// Every exported kernel by name, and what the names of conversions say.
#ifndef ORUMLOX_TESTS_SUPPORT_KERNELS_H
#define ORUMLOX_TESTS_SUPPORT_KERNELS_H

#include <orumlox/orumlox.h>

#include <cstdint>
#include <string>
#include <vector>

namespace lox_test {

// Calls each(name, function) for the kernels of all types.
template <typename Each>
void for_each_kernel(Each each) {
#define KERNEL(type, name) each(#name, name);
#include "kernels.inc"
#undef KERNEL
}

struct Conversion {
  int32_t src, dst;
  const char* name;
  vexo_csc_kernel* kernel;
  int32_t standard = VEXO_STD_DEFAULT;
};

inline int32_t format_of_token(const std::string& token) {
  static constexpr struct {
    const char* token;
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
                 {"p010le", VEXO_FMT_P010LE}};
  for (const auto& t : kTokens) {
    if (token == t.token) return t.format;
  }
  return -1;
}

// The conversions, an unknown name with formats of -1.
inline const std::vector<Conversion>& all_conversions() {
  static const auto conversions = [] {
    std::vector<Conversion> all;
    for_each_kernel([&](const char* name, auto* kernel) {
      if constexpr (requires(Conversion c) { c.kernel = kernel; }) {
        std::string text = std::string(name).substr(sizeof "vexo_csc_" - 1);
        int32_t standard = VEXO_STD_DEFAULT;
        const auto take = [&](const std::string& prefix, int32_t value) {
          if (text.rfind(prefix, 0) != 0) return;
          text.erase(0, prefix.size());
          standard = value;
        };
        take("bt601_fr_", VEXO_STD_BT601_FULL);
        take("bt709_fr_", VEXO_STD_BT709_FULL);
        take("bt709_", VEXO_STD_BT709);
        const size_t to = text.find("_to_");
        all.push_back({format_of_token(text.substr(0, to)),
                       format_of_token(text.substr(to + 4)), name, kernel,
                       standard});
      }
    });
    return all;
  }();
  return conversions;
}

// The kernel from one format to another, null where there is none.
inline vexo_csc_kernel* conversion(int32_t standard, int32_t src, int32_t dst) {
  for (const Conversion& c : all_conversions()) {
    if (c.standard == standard && c.src == src && c.dst == dst) return c.kernel;
  }
  return nullptr;
}

template <typename Wanted>
std::vector<Conversion> conversions_that(Wanted wanted) {
  std::vector<Conversion> some;
  for (const Conversion& c : all_conversions()) {
    if (wanted(c.src, c.dst)) some.push_back(c);
  }
  return some;
}

}  // namespace lox_test

#endif  // ORUMLOX_TESTS_SUPPORT_KERNELS_H
