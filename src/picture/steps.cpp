// SPDX-License-Identifier: Apache-2.0
//
// The conversions of the picture layer, row by row.
#include "picture/steps.h"

#include "csc/layout_rows.h"
#include "csc/rgb_rows.h"
#include "dither/depth.h"
#include "orumlox/common.h"
#include "orumlox/csc_layout.h"
#include "orumlox/dither.h"
#include "picture/formats.h"
#include "simd/words.h"

namespace lox {

namespace {

// Samples that go through a buffer on the stack at a time.
constexpr int32_t kRun = 2048;

uint8_t *row_of(const vexo_img &img, int32_t p, int32_t y) {
  return img.plane[p] + ptrdiff_t{y} * img.stride[p];
}

void copy_plane_bytes(const vexo_img &src, int32_t from, const vexo_img &dst,
                      int32_t to, int64_t bytes, int64_t rows) {
  vexo_cpy_8b(src.plane[from], static_cast<int32_t>(bytes),
              static_cast<int32_t>(rows), src.stride[from], dst.stride[to],
              dst.plane[to]);
}

void copy_luma(const vexo_img &src, const vexo_img &dst) {
  copy_plane_bytes(src, 0, dst, 0, src.width[0], src.height[0]);
}

// Calls run(first, count) for pieces of a row.
template <class Run>
void in_runs(int32_t count, Run run) {
  for (int32_t x = 0; x < count; x += kRun) {
    run(x, count - x < kRun ? count - x : kRun);
  }
}

// A layout of RGB in bytes, counted from RGB888.
int layout_of(int32_t format) {
  return format < VEXO_FMT_RGBA8888 ? format - VEXO_FMT_RGB888
                                    : format - VEXO_FMT_RGBA8888 + 2;
}

// The half-float nearest to n / 255.
constexpr uint16_t half_float(int n) {
  if (n == 0) return 0;
  int exponent = 15;
  for (; n < 255; n *= 2) --exponent;
  const int fraction = ((n - 255) * 2048 / 255 + 1) / 2;
  return static_cast<uint16_t>((exponent << 10) + fraction);
}
struct HalfFloats {
  uint16_t of[256];
};
constexpr HalfFloats kHalfFloats = [] {
  HalfFloats table = {};
  for (int n = 0; n < 256; ++n) table.of[n] = half_float(n);
  return table;
}();

}  // namespace

void copy_step(const vexo_img &src, const vexo_img &dst) {
  const Format &format = *find_format(src.format);
  for (int32_t p = 0; p < format.planes; ++p) {
    copy_plane_bytes(src, p, dst, p,
                     least_stride(format.plane[p], src.width[0]),
                     least_rows(format.plane[p], src.height[0]));
  }
}

void swap_chroma_planes(const vexo_img &src, const vexo_img &dst) {
  copy_luma(src, dst);
  copy_plane_bytes(src, 1, dst, 2, src.width[1], src.height[1]);
  copy_plane_bytes(src, 2, dst, 1, src.width[2], src.height[2]);
}

void swap_chroma_bytes(const vexo_img &src, const vexo_img &dst) {
  copy_luma(src, dst);
  for (int32_t y = 0; y < src.height[1]; ++y) {
    layout_rows().swap(row_of(src, 1, y), row_of(dst, 1, y), src.width[1]);
  }
}

void unpack_422(const vexo_img &src, const vexo_img &dst) {
  for (int32_t y = 0; y < src.height[0]; ++y) {
    in_runs(src.width[0], [&](int32_t x, int32_t count) {
      uint8_t pairs[2 * kRun];
      const uint8_t *row = row_of(src, 0, y) + ptrdiff_t{2} * x;
      if (src.format == VEXO_FMT_UYVY) {
        layout_rows().swap(row, pairs,
                           static_cast<ptrdiff_t>(2 * shifted_up(count, 1)));
        row = pairs;
      }
      layout_rows().yuyv(row, row_of(dst, 0, y) + x, row_of(dst, 1, y) + x / 2,
                         row_of(dst, 2, y) + x / 2, count);
    });
  }
}

void pack_422(const vexo_img &src, const vexo_img &dst) {
  for (int32_t y = 0; y < src.height[0]; ++y) {
    in_runs(src.width[0], [&](int32_t x, int32_t count) {
      uint8_t chroma[kRun];
      const auto pairs = static_cast<ptrdiff_t>(shifted_up(count, 1));
      layout_rows().interleave(row_of(src, 1, y) + x / 2,
                               row_of(src, 2, y) + x / 2, chroma, pairs);
      const uint8_t *const luma = row_of(src, 0, y) + x;
      uint8_t *const to = row_of(dst, 0, y) + ptrdiff_t{2} * x;
      const bool luma_first = dst.format == VEXO_FMT_YUYV;
      layout_rows().interleave(luma_first ? luma : chroma,
                               luma_first ? chroma : luma, to, count);
      if (count % 2 == 0) return;
      uint8_t *const last = to + ptrdiff_t{2} * (count - 1);
      const uint8_t v = chroma[count];
      last[2] = luma_first ? luma[count - 1] : v;
      last[3] = luma_first ? v : luma[count - 1];
    });
  }
}

void repeat_columns(const vexo_img &src, const vexo_img &dst) {
  copy_luma(src, dst);
  const int32_t width = src.width[0];
  for (int32_t p = 1; p < 3; ++p) {
    vexo_csc_8b8b_pck(src.plane[p], src.plane[p], width / 2, src.height[p],
                      src.stride[p], src.stride[p], dst.stride[p],
                      dst.plane[p]);
    if (width % 2 == 0) continue;
    vexo_cpy_8b(src.plane[p] + width / 2, 1, src.height[p], src.stride[p],
                dst.stride[p], dst.plane[p] + (width - 1));
  }
}

void drop_columns(const vexo_img &src, const vexo_img &dst) {
  copy_luma(src, dst);
  for (int32_t p = 1; p < 3; ++p) {
    for (int32_t y = 0; y < src.height[p]; ++y) {
      layout_rows().even(row_of(src, p, y), row_of(dst, p, y), src.width[p]);
    }
  }
}

void repeat_rows(const vexo_img &src, const vexo_img &dst) {
  copy_luma(src, dst);
  for (int32_t p = 1; p < 3; ++p) {
    const int32_t width = src.width[p];
    const int32_t half = src.height[0] / 2;
    vexo_csc_1x1_to_1x2(src.plane[p], width, half, src.stride[p], dst.stride[p],
                        dst.plane[p]);
    if (src.height[0] % 2 == 0) continue;
    vexo_cpy_8b(row_of(src, p, half), width, 1, src.stride[p], dst.stride[p],
                row_of(dst, p, 2 * half));
  }
}

void move_words(const vexo_img &src, const vexo_img &dst) {
  vexo_csc_deep(&src, &dst);
}

void round_words(const vexo_img &src, const vexo_img &dst) {
  to_8_bits(src, dst, Loss::kRounded, kAllRows);
}

void dither_words(const vexo_img &src, const vexo_img &dst) {
  to_8_bits(src, dst, Loss::kDithered, kAllRows);
}

void reorder_pixels(const vexo_img &src, const vexo_img &dst) {
  const RgbToRgbFn reorder =
      rgb_rows().reorder[layout_of(src.format)][layout_of(dst.format)];
  for (int32_t y = 0; y < src.height[0]; ++y) {
    reorder(row_of(src, 0, y), row_of(dst, 0, y), src.width[0]);
  }
}

void widen_pixels(const vexo_img &src, const vexo_img &dst) {
  const bool halves = dst.format == VEXO_FMT_RGBAF16;
  for (int32_t y = 0; y < src.height[0]; ++y) {
    const uint8_t *in = row_of(src, 0, y);
    uint8_t *out = row_of(dst, 0, y);
    for (int32_t x = 0; x < src.width[0]; ++x, in += 4, out += halves ? 8 : 4) {
      if (halves) {
        for (int i = 0; i < 4; ++i) {
          put_word(out + ptrdiff_t{2} * i, kHalfFloats.of[in[i]]);
        }
        continue;
      }
      const auto ten = [](int n) { return (n * 1023 * 2 + 255) / 510; };
      const int green = ten(in[1]);
      put_word(out, ten(in[0]) | green << 10);
      put_word(out + 2, green >> 6 | ten(in[2]) << 4 |
                            (in[3] * 3 * 2 + 255) / 510 << 14);
    }
  }
}

void exchange_fields(const vexo_img &src, const vexo_img &dst) {
  for (int32_t y = 0; y < src.height[0]; ++y) {
    const uint8_t *const in = row_of(src, 0, y);
    uint8_t *const out = row_of(dst, 0, y);
    for (ptrdiff_t i = 0; i < ptrdiff_t{2} * src.width[0]; i += 2) {
      const int word = word_at(in + i);
      put_word(out + i, word >> 11 | (word & 0x7E0) | (word & 31) << 11);
    }
  }
}

}  // namespace lox
