// SPDX-License-Identifier: Apache-2.0
// Interpolated chroma in doubles, which the library is near: its calls are made
// for a picture without padding, which is compared and then copied.
#include <orumlox/csc_new.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "rules/colours.h"
#include "rules/rules.h"
#include "support/conversion_name.h"

namespace lox_test {
namespace {

bool has_words(int32_t format) { return format >= 600; }

int64_t pixel_bytes(int32_t format) {
  return exact_image(format, 1, 1)[0].row_bytes;
}

// --- what a pixel should be --------------------------------------------------

double sample(const vexo_img &img, const Place &place, int32_t column,
              int32_t row) {
  const uint8_t *const p = img.plane[place.plane] +
                           int64_t{row} * img.stride[place.plane] +
                           int64_t{column} * place.step + place.first;
  if (img.format == VEXO_FMT_P010LE) return (p[-1] | p[0] << 8) >> 6;
  if (has_words(img.format)) return (p[0] | p[1] << 8) & 1023;
  return *p;
}

// The two samples of a side that a pixel lies between.
struct Neighbours {
  int32_t first, second;
  double part;  // of the second
};
Neighbours neighbours(int32_t at, int32_t size, int shift, bool left) {
  if (shift == 0) return {at, at, 0};
  const double place = left ? at / 2.0 : (at - 0.5) / 2.0;
  const auto first = static_cast<int32_t>(std::floor(place));
  const int32_t last = half_up(size) - 1;
  return {std::max(first, 0), std::min(first + 1, last), place - first};
}

double interpolated(const vexo_img &img, const Place &place, int32_t x,
                    int32_t y) {
  const Neighbours h = neighbours(x, img.width[0], place.x_shift,
                                  img.reserved1 == VEXO_SITING_LEFT);
  const Neighbours v = neighbours(y, img.height[0], place.y_shift, false);
  const auto in_row = [&](int32_t row) {
    return (1 - h.part) * sample(img, place, h.first, row) +
           h.part * sample(img, place, h.second, row);
  };
  return (1 - v.part) * in_row(v.first) + v.part * in_row(v.second);
}

struct Pixel {
  double c[3];
};
Pixel pixel(const vexo_img &img, int32_t x, int32_t y) {
  const YuvLayout &layout = yuv_layout(img.format);
  const bool ten = has_words(img.format), full = img.color_std % 10 == 1;
  const double code = ten ? 4 : 1, top = ten ? 1023 : 255;
  const double chroma = full ? top : 224 * code;
  const double l = (sample(img, layout.y, x, y) - (full ? 0 : 16 * code)) /
                   (full ? top : 219 * code);
  const double cb = (interpolated(img, layout.u, x, y) - 128 * code) / chroma;
  const double cr = (interpolated(img, layout.v, x, y) - 128 * code) / chroma;
  constexpr double kRed[] = {0.299, 0.2126, 0.2627};
  constexpr double kBlue[] = {0.114, 0.0722, 0.0593};
  const double kr = kRed[img.color_std / 10], kb = kBlue[img.color_std / 10];
  const double r = l + 2 * (1 - kr) * cr, b = l + 2 * (1 - kb) * cb;
  return {r, (l - kr * r - kb * b) / (1 - kr - kb), b};
}

// --- what it is
// ----------------------------------------------------------------

double half_float(const uint8_t *p) {
  const int word = p[0] | p[1] << 8;
  const int exponent = word >> 10 & 31, fraction = word & 1023;
  const double v = exponent == 0 ? std::ldexp(fraction, -24)
                                 : std::ldexp(1024 + fraction, exponent - 25);
  return word >> 15 != 0 ? -v : v;
}

// Whether a channel is near enough; of `largest` as 1.
bool near(int is, double should, int largest) {
  return std::abs(is - std::clamp(should, 0.0, 1.0) * largest) <
         (largest > 255 ? 0.75 : 0.6);
}
bool near(double is, double should) {
  const bool inside = should >= 0 && should <= 1;
  return std::abs(is - std::clamp(should, -2.0, 2.0)) <
         std::ldexp(1, inside ? -11 : -10);
}

bool near(int32_t format, const uint8_t *p, const double (&c)[3]) {
  if (format == VEXO_FMT_RGBAF16) {
    return near(half_float(p), c[0]) && near(half_float(p + 2), c[1]) &&
           near(half_float(p + 4), c[2]) && half_float(p + 6) == 1;
  }
  if (format == VEXO_FMT_RGBA1010102) {
    const int64_t word = p[0] | p[1] << 8 | p[2] << 16 | int64_t{p[3]} << 24;
    return near(word & 1023, c[0], 1023) &&
           near(word >> 10 & 1023, c[1], 1023) &&
           near(word >> 20 & 1023, c[2], 1023) && word >> 30 == 3;
  }
  const Rgb &rgb = rgb_layout(format);
  if (rgb.bytes == 2) {
    const int word = p[0] | p[1] << 8;
    return near(word >> rgb.r & 31, c[0], 31) &&
           near(word >> rgb.g & 63, c[1], 63) &&
           near(word >> rgb.b & 31, c[2], 31);
  }
  return near(p[rgb.r], c[0], 255) && near(p[rgb.g], c[1], 255) &&
         near(p[rgb.b], c[2], 255) && (rgb.alpha < 0 || p[rgb.alpha] == 255);
}

template <class Convert>
void convert(const Function &f, const vexo_img &src, const vexo_img &dst,
             Convert convert_to) {
  const int32_t width = src.width[0], height = src.height[0];
  if (width < 1 || height < 1) return convert_to(dst);
  const int64_t bytes = pixel_bytes(dst.format), row = width * bytes;
  std::vector<uint8_t> pixels(static_cast<size_t>(row * height));
  vexo_img own = dst;
  own.stride[0] = static_cast<int32_t>(row);
  own.plane[0] = pixels.data();
  convert_to(own);
  for (int32_t y = 0; y < height; ++y) {
    for (int32_t x = 0; x < width; ++x) {
      const Pixel should = pixel(src, x, y);
      if (near(dst.format, &pixels[static_cast<size_t>(y * row + x * bytes)],
               should.c))
        continue;
      std::printf("%s: %d to %d, standard %d, siting %d: (%d, %d) of %d x %d\n",
                  f.name, src.format, dst.format, src.color_std, src.reserved1,
                  x, y, width, height);
      std::abort();
    }
  }
  move_rows(pixels.data(), row, row, height, dst.stride[0], dst.plane[0]);
}

bool is_standard(int32_t standard) {
  return standard == standard / 10 * 10 + standard % 2 && standard >= 0 &&
         standard < 30;
}
int32_t supports(const Function &, int32_t from, int32_t to, int32_t standard) {
  const bool yuv = (from >= VEXO_FMT_YUV420 && from <= VEXO_FMT_NV21) ||
                   from == VEXO_FMT_UYVY || from == VEXO_FMT_YUYV ||
                   from == VEXO_FMT_YUV420PLANAR16 || from == VEXO_FMT_P010LE;
  const bool rgb = std::any_of(std::begin(kRgb), std::end(kRgb),
                               [&](const Rgb &l) { return l.format == to; });
  return yuv && (rgb || to == VEXO_FMT_RGBA1010102 || to == VEXO_FMT_RGBAF16) &&
                 is_standard(standard)
             ? 1
             : 0;
}

int32_t entry(const Function &f, const vexo_img *src, const vexo_img *dst) {
  if (src->format == dst->format || src->width[0] != dst->width[0] ||
      src->height[0] != dst->height[0]) {
    return VEXO_ERR_ARG;
  }
  if (supports(f, src->format, dst->format, src->color_std) == 0 ||
      src->width[0] < 1 || src->height[0] < 1 ||
      (dst->color_std != 0 && dst->color_std != src->color_std) ||
      (src->reserved1 != 0 && src->reserved1 != 1)) {
    return VEXO_ERR_UNSUPPORTED;
  }
  convert(f, *src, *dst, [&](const vexo_img &to) {
    if (vexo_csc_new(src, &to) != VEXO_OK) std::abort();
  });
  return VEXO_OK;
}

void kernel(const Function &f, uint8_t *const planes[4], const int32_t width[4],
            const int32_t height[4], const int32_t stride[4],
            const int32_t dst_stride[4], uint8_t *const dst_planes[4]) {
  const ConversionName named = parse_conversion(f.name);
  vexo_img src{}, dst{};
  src.format = named.from;
  dst.format = named.to;
  src.color_std = named.standard;
  src.width[0] = width[0];
  src.height[0] = height[0];
  std::copy_n(planes, 4, src.plane);
  std::copy_n(stride, 4, src.stride);
  dst.stride[0] = dst_stride[0];
  dst.plane[0] = dst_planes[0];
  convert(f, src, dst, [&](const vexo_img &to) {
    f.as<vexo_csc_new_kernel>().pointer()(planes, width, height, stride,
                                          to.stride, to.plane);
  });
}

}  // namespace

std::vector<Rule> csc_new_rules() {
  std::vector<Rule> rules =
      rules_for(vexo_csc_new, entry, vexo_csc_new_supports, supports);
  rules.push_back(rule_for_rows(vexo_csc_new_rows, entry));
#define KERNEL(name) rules.push_back(rule_for(name, kernel));
#include "vexo_csc_new_kernel.inc"
  return rules;
}

}  // namespace lox_test
