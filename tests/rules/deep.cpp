// SPDX-License-Identifier: Apache-2.0
// Samples of 10 bits, and fewer bits by dithering, sample by sample.
#include <orumlox/orumlox.h>

#include <algorithm>
#include <vector>

#include "rules/rules.h"

namespace lox_test {
namespace {

// The matrix of 2 x 2 in which each place is such a matrix again, twice.
int threshold(int64_t x, int64_t y) {
  constexpr int kTwo[4] = {0, 2, 3, 1};
  int sum = 0;
  for (int side = 1, weight = 16; side < 8; side *= 2, weight /= 4) {
    sum += weight * kTwo[(y & side ? 2 : 0) + (x & side ? 1 : 0)];
  }
  return sum;
}
int dithered(int sample, int bits, int to, int64_t x, int64_t y) {
  const int lost = bits - to;
  const int sum = sample + ((threshold(x, y) << lost) >> 6);
  return std::min(sum, (1 << bits) - 1) >> lost;
}

int word_at(const uint8_t *p) { return p[0] | p[1] << 8; }

int32_t dither_plane(const Function &function, const uint8_t *src,
                     int32_t width, int32_t height, int32_t src_stride,
                     int32_t dst_stride, uint8_t *dst, int32_t bits, int32_t to,
                     int32_t x0, int32_t y0) {
  if (bits < 8 || bits > 16 || to < 1 || to > 8) return VEXO_ERR_ARG;
  const int unit = function.address == AnyFunction(vexo_dit_8b8b) ? 2 : 1;
  for (int64_t y = 0; y < height && width > 0; ++y) {
    for (int64_t x = 0; x < int64_t{width} * unit; ++x) {
      const uint8_t *row = src + y * src_stride;
      dst[y * dst_stride + x] = static_cast<uint8_t>(
          dithered(bits == 8 ? row[x] : word_at(row + 2 * x), bits, to,
                   x0 + x / unit, y0 + y));
    }
  }
  return VEXO_OK;
}

// Where samples of 4:2:0 lie, in words or bytes: Y, U and V.
struct Samples {
  const vexo_img &img;
  bool words, pairs, v_first;

  explicit Samples(const vexo_img &i)
      : img(i),
        words(i.format >= 600),
        pairs(has_pairs(i.format) || i.format == VEXO_FMT_P010LE),
        v_first(i.format == VEXO_FMT_YV12 || i.format == VEXO_FMT_NV21) {}
  int plane(int kind) const {
    return kind == 0 || !v_first ? (pairs ? std::min(kind, 1) : kind)
           : pairs               ? 1
                                 : 3 - kind;
  }
  uint8_t *at(int kind, int64_t x, int64_t y) const {
    const int p = plane(kind);
    const int64_t place =
        pairs && kind > 0 ? 2 * x + ((kind == 2) != v_first ? 1 : 0) : x;
    return img.plane[p] + y * img.stride[p] + place * (words ? 2 : 1);
  }
};
bool is_deep(int32_t format) { return format == 600 || format == 601; }
bool is_420(int32_t format) {
  return format == VEXO_FMT_YUV420 || format == VEXO_FMT_YV12 ||
         has_pairs(format);
}

void convert_samples(const vexo_img *src, const vexo_img *dst, bool dithers) {
  const Samples from(*src);
  const Samples to(*dst);
  for (int kind = 0; kind < 3; ++kind) {
    const int p = kind == 0 ? 0 : from.pairs || to.pairs ? 1 : kind;
    for (int32_t y = 0; y < src->height[p] && src->width[p] > 0; ++y) {
      for (int32_t x = 0; x < src->width[p]; ++x) {
        const int sample = word_at(from.at(kind, x, y));
        uint8_t *target = to.at(kind, x, y);
        const int bits = from.pairs ? 16 : 10;
        if (to.words) {
          const int value = to.pairs ? sample << 6 : sample >> 6;
          target[0] = static_cast<uint8_t>(value);
          target[1] = static_cast<uint8_t>(value >> 8);
        } else if (dithers) {
          *target = static_cast<uint8_t>(dithered(sample, bits, 8, x, y));
        } else {
          const int step = 1 << (bits - 8);
          *target =
              static_cast<uint8_t>(std::min((sample + step / 2) / step, 255));
        }
      }
    }
  }
}

int32_t convert(const Function &, const vexo_img *src, const vexo_img *dst) {
  if (src->format == dst->format) return VEXO_ERR_ARG;
  if (!is_deep(src->format) || (!is_deep(dst->format) && !is_420(dst->format)))
    return VEXO_ERR_UNSUPPORTED;
  convert_samples(src, dst, false);
  return VEXO_OK;
}

// The pixels that are converted to RGBA8888, whose alpha tells them.
int32_t dither(const Function &, const vexo_img *src, const vexo_img *dst) {
  const int32_t from = src->format;
  const int32_t to = dst->format;
  if (from == to) return VEXO_ERR_ARG;
  if (std::min({src->width[0], src->height[0], dst->width[0], dst->height[0]}) <
      8) {
    return VEXO_ERR_UNSUPPORTED;
  }
  if (is_deep(from) && is_420(to)) {
    convert_samples(src, dst, true);
    return VEXO_OK;
  }
  if ((to != VEXO_FMT_RGB565 && to != VEXO_FMT_BGR565) ||
      from == VEXO_FMT_YUV420PLANAR16 ||
      (from < 200 && src->color_std != 0 && dst->color_std != 0) ||
      (from == VEXO_FMT_T256X16 && src->width[0] <= 1280)) {
    return VEXO_ERR_UNSUPPORTED;
  }
  const int32_t columns = src->width[0] + 1;
  std::vector<uint8_t> rgba(size_t(columns) * src->height[0] * 4);
  picture_to_rgba(src, rgba.data(), columns * 4);
  for (int32_t y = 0; y < src->height[0]; ++y) {
    for (int32_t x = 0; x < columns; ++x) {
      const uint8_t *p = &rgba[(size_t(y) * columns + x) * 4];
      if (p[3] == 0) continue;
      const int red = to == VEXO_FMT_RGB565 ? 0 : 2;
      const int word = dithered(p[red], 8, 5, x, y) << 11 |
                       dithered(p[1], 8, 6, x, y) << 5 |
                       dithered(p[2 - red], 8, 5, x, y);
      uint8_t *pixel =
          dst->plane[0] + int64_t{y} * dst->stride[0] + int64_t{x} * 2;
      pixel[0] = static_cast<uint8_t>(word);
      pixel[1] = static_cast<uint8_t>(word >> 8);
    }
  }
  return VEXO_OK;
}

// --- places -----------------------------------------------------------------

int unit_of(int32_t format, int p) {
  return format == VEXO_FMT_P010LE && p == 1 ? 4 : 2;
}
int32_t refusal(const vexo_img *src, const vexo_img *dst) {
  if (src->format != dst->format) return VEXO_ERR_ARG;
  return is_deep(src->format) ? VEXO_OK : VEXO_ERR_UNSUPPORTED;
}
int planes_of(int32_t format) { return format == VEXO_FMT_P010LE ? 2 : 3; }

int32_t turn(const Function &, const vexo_img *src, uint32_t code,
             const vexo_img *dst) {
  if (const int32_t status = refusal(src, dst)) return status;
  if (code > VEXO_ROT_VERT) return VEXO_ERR_UNSUPPORTED;
  for (int p = 0; p < planes_of(src->format); ++p) {
    const int unit = unit_of(src->format, p);
    const Size size = {src->width[p], src->height[p]};
    for (int32_t y = 0; y < size.height && size.width > 0; ++y) {
      for (int32_t x = 0; x < size.width; ++x) {
        const Point to = rotated(code, size, x, y);
        std::copy_n(
            src->plane[p] + int64_t{y} * src->stride[p] + int64_t{x} * unit,
            unit,
            dst->plane[p] + int64_t{to.y} * dst->stride[p] +
                int64_t{to.x} * unit);
      }
    }
  }
  return VEXO_OK;
}
int32_t copy(const Function &function, const vexo_img *src,
             const vexo_img *dst) {
  return turn(function, src, VEXO_ROT_COPY, dst);
}

int32_t window(const Function &function, const vexo_img *src,
               const vexo_img *dst) {
  const bool cuts = function.address == AnyFunction(vexo_crop_deep);
  if (const int32_t status = refusal(src, dst)) return status;
  const int64_t x = src->offset_x;
  const int64_t y = src->offset_y;
  if (!cuts && (x + src->width[0] > dst->width[0] ||
                y + src->height[0] > dst->height[0])) {
    return VEXO_ERR_ARG;
  }
  for (int p = 0; p < planes_of(src->format); ++p) {
    const int unit = unit_of(src->format, p);
    const int black =
        (p == 0 ? 64 : 512) * (src->format == VEXO_FMT_P010LE ? 64 : 1);
    for (int64_t i = 0;
         !cuts && i < int64_t{dst->stride[p]} * dst->buf_height[p]; ++i) {
      dst->plane[p][i] = static_cast<uint8_t>(
          i % dst->stride[p] % 2 == 0 ? black : black >> 8);
    }
    const vexo_img &small = cuts ? *dst : *src;
    const auto place = [&](const vexo_img &img) -> uint8_t * {
      if (img.plane[p] == nullptr) return nullptr;
      return img.plane[p] + (p == 0 ? y : (y + 1) / 2) * img.stride[p] +
             (p == 0 ? x : (x + 1) / 2) * unit;
    };
    move_rows(cuts ? place(*src) : src->plane[p], src->stride[p],
              int64_t{small.width[p]} * unit, small.height[p], dst->stride[p],
              cuts ? dst->plane[p] : place(*dst));
  }
  return VEXO_OK;
}

int32_t scale(const Function &function, const vexo_img *src,
              const vexo_img *dst) {
  if (const int32_t status = refusal(src, dst)) return status;
  if (src->width[0] == dst->width[0] && src->height[0] == dst->height[0]) {
    return copy(function, src, dst);
  }
  const int planes = planes_of(src->format);
  for (int p = 0; p < planes; ++p) {
    if (std::min({src->width[p], src->height[p], dst->width[p],
                  dst->height[p]}) < 1) {
      return VEXO_ERR_ARG;
    }
  }
  for (int p = 0; p < planes; ++p) {
    scale_words(unit_of(src->format, p), src->plane[p],
                {src->width[p], src->height[p]},
                {dst->width[p], dst->height[p]}, dst->plane[p], src->stride[p],
                dst->stride[p], dst->mode);
  }
  return VEXO_OK;
}

}  // namespace

std::vector<Rule> deep_rules() {
  return {
      rule_for(vexo_rsz_deep, scale),
      rule_for_rows(vexo_rsz_deep_rows, scale),
      rule_for(vexo_rot_deep, turn),
      rule_for(vexo_cpy_deep, copy),
      rule_for(vexo_crop_deep, window),
      rule_for(vexo_padding_deep, window),
      rule_for(vexo_csc_deep, convert),
      rule_for(vexo_csc_dither, dither),
      rule_for_rows(vexo_csc_dither_rows, dither),
      rule_for(vexo_dit_8b, dither_plane),
      rule_for(vexo_dit_8b8b, dither_plane),
  };
}

}  // namespace lox_test
