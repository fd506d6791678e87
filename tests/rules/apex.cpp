// SPDX-License-Identifier: Apache-2.0
// Lanczos filters in doubles and in two directions, which the library is near:
// its calls are made and what they leave is compared.
#include <orumlox/apex.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "rules/rules.h"

namespace lox_test {
namespace {

constexpr double kPi = 3.14159265358979323846;

// The planes of a format: parts of a sample, whether it has half the columns or
// rows of plane 0, and how the samples lie in bytes.
struct Layout {
  std::vector<int> parts;
  bool half_width = false, half_height = false;
  int bits = 8, shift = 0, alpha = -1;
};
Layout layout_of(int32_t format) {
  const bool wide = format == VEXO_FMT_YUV422W;
  if (format == VEXO_FMT_YUV400) return {{1}};
  if (format == VEXO_FMT_YUV444) return {{1, 1, 1}};
  if (format == VEXO_FMT_YUV422N || format == VEXO_FMT_YV16) {
    return {{1, 1, 1}, true};
  }
  if (format == VEXO_FMT_YUV420 || format == VEXO_FMT_YV12 || wide) {
    return {{1, 1, 1}, !wide, true};
  }
  if (has_pairs(format)) return {{1, 2}, true, true};
  if (format == VEXO_FMT_RGB888 || format == VEXO_FMT_BGR888) return {{3}};
  if (format >= 500 && format <= 503) {
    return {{4}, false, false, 8, 0, format < 502 ? 3 : 0};
  }
  if (format == VEXO_FMT_YUV420PLANAR16) return {{1, 1, 1}, true, true, 10};
  if (format == VEXO_FMT_P010LE) return {{1, 2}, true, true, 10, 6};
  return {};
}

double filter(double x) {
  if (x == 0) return 1;
  if (std::abs(x) >= 3) return 0;
  return 3 * std::sin(kPi * x) * std::sin(kPi * x / 3) / (kPi * x * kPi * x);
}

// What each output takes of a line of samples.
struct Tap {
  int32_t at;
  double weight;
};
std::vector<std::vector<Tap>> weigh(int32_t from, int32_t to, double ratio,
                                    bool left) {
  std::vector<std::vector<Tap>> all;
  for (int32_t i = 0; i < to; ++i) {
    // A left sample is where the first of two of luma's is.
    const double centre =
        left ? ((2 * i + 0.5) * ratio - 0.5) / 2 : (i + 0.5) * ratio - 0.5;
    const double wide = std::max(ratio, 1.0);
    std::vector<Tap> taps;
    double sum = 0;
    for (auto x = static_cast<int32_t>(std::ceil(centre - 3 * wide));
         x <= centre + 3 * wide; ++x) {
      const double weight = filter((x - centre) / wide);
      taps.push_back({std::clamp(x, 0, from - 1), weight});
      sum += weight;
    }
    for (Tap &tap : taps) tap.weight /= sum;
    all.push_back(taps);
  }
  return all;
}

struct Plane {
  int32_t width, height;
  std::vector<double> values;
};
Plane scaled(const Plane &from, const std::vector<std::vector<Tap>> &across,
             const std::vector<std::vector<Tap>> &down) {
  const auto width = static_cast<int32_t>(across.size());
  std::vector<double> rows(size_t{1} * width * from.height);
  for (int32_t y = 0; y < from.height; ++y) {
    for (int32_t x = 0; x < width; ++x) {
      for (const Tap &tap : across[x]) {
        rows[size_t{1} * y * width + x] +=
            tap.weight * from.values[size_t{1} * y * from.width + tap.at];
      }
    }
  }
  Plane to = {width, static_cast<int32_t>(down.size()), {}};
  to.values.resize(size_t{1} * width * to.height);
  for (int32_t y = 0; y < to.height; ++y) {
    for (const Tap &tap : down[y]) {
      for (int32_t x = 0; x < width; ++x) {
        to.values[size_t{1} * y * width + x] +=
            tap.weight * rows[size_t{1} * tap.at * width + x];
      }
    }
  }
  return to;
}

// A part of every sample of a plane.
uint8_t *sample_at(const vexo_img &img, int p, const Layout &layout, int32_t x,
                   int32_t y, int part) {
  const int bytes = layout.bits > 8 ? 2 : 1;
  const int32_t stride = img.stride[p] & (bytes == 2 ? ~1 : ~0);
  return img.plane[p] + ptrdiff_t{stride} * y +
         ptrdiff_t{bytes} * (ptrdiff_t{layout.parts[p]} * x + part);
}
int32_t word_at(const vexo_img &img, int p, const Layout &layout, int32_t x,
                int32_t y, int part) {
  const uint8_t *at = sample_at(img, p, layout, x, y, part);
  return layout.bits > 8 ? at[0] | at[1] << 8 : at[0];
}
Plane part_of(const vexo_img &img, int p, const Layout &layout, int part,
              bool by_alpha) {
  Plane plane = {img.width[p], img.height[p], {}};
  for (int32_t y = 0; y < plane.height; ++y) {
    for (int32_t x = 0; x < plane.width; ++x) {
      const int32_t word = word_at(img, p, layout, x, y, part);
      const double alpha =
          by_alpha && part != layout.alpha
              ? word_at(img, p, layout, x, y, layout.alpha) / 255.0
              : 1;
      plane.values.push_back(alpha *
                             (word >> layout.shift & ((1 << layout.bits) - 1)));
    }
  }
  return plane;
}

[[noreturn]] void fail(int p, int32_t x, int32_t y, int32_t is, double should) {
  std::fprintf(stderr, "plane %d, column %d, row %d is %d, expected %f\n", p, x,
               y, is, should);
  std::abort();
}

void check_plane(const vexo_img &src, const vexo_img &dst, int p,
                 const Layout &layout) {
  const Size from = {src.width[p], src.height[p]};
  const Size to = {dst.width[p], dst.height[p]};
  const bool moves = from.width != to.width || from.height != to.height;
  const bool by_alpha =
      layout.alpha >= 0 && dst.mode == VEXO_MODE_ALPHA && moves;
  const auto taps = [&](const int32_t *in, const int32_t *out, bool half,
                        bool left) {
    const auto is_half = [&](const int32_t *sides) {
      return sides[p] == half_down(sides[0]) || sides[p] == half_up(sides[0]);
    };
    const bool beside = p > 0 && half && is_half(in) && is_half(out);
    const int of = beside ? 0 : p;
    return weigh(in[p], out[p], 1.0 * in[of] / out[of], beside && left);
  };
  const auto across = taps(src.width, dst.width, layout.half_width, true);
  const auto down = taps(src.height, dst.height, layout.half_height, false);
  const auto model = [&](int part) {
    return scaled(part_of(src, p, layout, part, by_alpha), across, down);
  };
  const Plane alpha = by_alpha ? model(layout.alpha) : Plane{};
  for (int part = 0; part < layout.parts[p]; ++part) {
    const Plane plane = model(part);
    for (int32_t y = 0; y < to.height; ++y) {
      for (int32_t x = 0; x < to.width; ++x) {
        const size_t i = size_t{1} * y * to.width + x;
        const int32_t is = word_at(dst, p, layout, x, y, part);
        const double most = (1 << layout.bits) - 1;
        double should = std::clamp(plane.values[i], 0.0, most);
        double tolerance = 0.999;
        if (by_alpha && part != layout.alpha) {
          // What is divided by little is as uncertain as that, near 0 anything.
          const double by = std::clamp(alpha.values[i], 0.0, most);
          if (by < 1) continue;
          should = std::min(should * 255 / by, most);
          tolerance += 60 / by;
        }
        if (is % (1 << layout.shift) != 0 ||
            std::abs((is >> layout.shift) - should) > tolerance) {
          fail(p, x, y, is >> layout.shift, should);
        }
      }
    }
  }
}

// The bytes between rows.
std::vector<uint8_t> gaps(const vexo_img &img, const Layout &layout) {
  std::vector<uint8_t> bytes;
  for (size_t p = 0; p < layout.parts.size(); ++p) {
    const auto plane = static_cast<int>(p);
    const int32_t upper = img.stride[p] < 0 ? 1 : 0;
    for (int32_t y = 0; y + 1 < img.height[p]; ++y) {
      const uint8_t *at =
          sample_at(img, plane, layout, img.width[p], y + upper, 0);
      const uint8_t *end = sample_at(img, plane, layout, 0, y + 1 - upper, 0);
      bytes.insert(bytes.end(), at, end);
    }
  }
  return bytes;
}

int32_t picture(const Function &, const vexo_img *src, const vexo_img *dst) {
  const Layout layout = layout_of(src->format);
  int32_t expected = VEXO_OK;
  const auto refuse = [&](int32_t status, bool when) {
    if (when && expected == VEXO_OK) expected = status;
  };
  refuse(VEXO_ERR_ARG, src->format != dst->format);
  refuse(VEXO_ERR_UNSUPPORTED, layout.parts.empty());
  for (const bool sizes : {true, false}) {
    for (size_t p = 0; p < layout.parts.size(); ++p) {
      const int64_t sides[] = {src->width[p], dst->width[p], src->height[p],
                               dst->height[p]};
      for (int i = 0; i < 4; ++i) {
        if (sizes) refuse(VEXO_ERR_ARG, sides[i] < 1);
        if (!sizes) {
          refuse(VEXO_ERR_UNSUPPORTED, sides[i] > 64 * sides[i ^ 1]);
        }
      }
    }
  }
  if (expected != VEXO_OK) return expected;
  const std::vector<uint8_t> between = gaps(*dst, layout);
  const int32_t status = vexo_rsz_apex_c(src, dst);
  if (status != VEXO_OK || gaps(*dst, layout) != between) std::abort();
  for (size_t p = 0; p < layout.parts.size(); ++p) {
    check_plane(*src, *dst, static_cast<int>(p), layout);
  }
  return status;
}

int32_t support(const Function &, int32_t format) {
  return layout_of(format).parts.empty() ? 0 : 1;
}

}  // namespace

std::vector<Rule> apex_rules() {
  return rules_for(vexo_rsz_apex_c, picture, vexo_rsz_apex_supports, support);
}

}  // namespace lox_test
