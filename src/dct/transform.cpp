// SPDX-License-Identifier: Apache-2.0
//
// The transforms of single blocks, as they are exported.
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "dct/dct_rule.h"
#include "dct/sets.h"
#include "dct/weights.h"
#include "orumlox/unprefixed.h"

namespace lox {

namespace {

// A quarter turn. Quirk: of seven digits, as the exported transform is defined.
constexpr double kQuarterTurn = 1.570796;

void cosines(double *c, int32_t place, int32_t points) {
  c[0] = 1;
  for (int i = 1; i < 4; ++i) {
    c[i] = std::cos((2.0 * place + 1) * kQuarterTurn * i / points);
  }
}

}  // namespace

ColumnCosines::ColumnCosines(int32_t width_) : width(width_) {
  for (int32_t x = 0; x < width && x < kKnown; ++x) {
    cosines(known[x], x, width);
  }
}

void transform_rows(const uint8_t *samples, int32_t first, int32_t count,
                    int32_t height, const ColumnCosines &columns, float *out) {
  constexpr int32_t kKnown = ColumnCosines::kKnown;
  const int32_t width = columns.width;
  float sums[16] = {};
  for (int32_t y = first; y < first + count; ++y) {
    double down[4];
    cosines(down, y, height);
    for (int32_t x = 0; x < width; ++x) {
      const int sample = *samples++;
      if (sample == 0) continue;  // adds nothing
      double beyond[4];
      if (x >= kKnown) cosines(beyond, x, width);
      const double *const across = x < kKnown ? columns.known[x] : beyond;
      for (int i = 0; i < 16; ++i) {
        sums[i] =
            static_cast<float>(sums[i] + sample * down[i / 4] * across[i % 4]);
      }
    }
  }
  const double scale = std::sqrt(1.0 / (double{1} * height * width));
  for (int i = 0; i < 16; ++i) {
    const double u = i / 4 == 0 ? 0.70710677 : 1;
    const double v = i % 4 == 0 ? 0.70710677 : 1;
    out[i] = static_cast<float>(scale * u * v * 2048 * sums[i]);
  }
}

}  // namespace lox

void FDCT_BlockXYFn(const uint8_t *block, float *out, int32_t height,
                    int32_t width) {
  lox::transform_rows(block, 0, height, height, lox::ColumnCosines(width), out);
}

void MatNxN_float_compute(const float *a, const float *b, float *out,
                          int32_t n) {
  const ptrdiff_t size = n;
  for (ptrdiff_t y = 0; y < size; ++y) {
    for (ptrdiff_t x = 0; x < size; ++x) {
      float sum = 0;
      for (ptrdiff_t i = 0; i < size; ++i) {
        sum += a[y * size + i] * b[i * size + x];
      }
      out[y * size + x] = sum;
    }
  }
}

void vexo_fdct_blocknxn_full_compute(const uint8_t *block, int32_t width,
                                     int32_t height, int16_t *const *a,
                                     int16_t *const *b, int32_t *c) {
  int32_t sums[16];
  lox::dct_sums(block, width, height, a, b, sums);
  const int shift = lox::dct_row_shift(width, height);
  const int64_t most_dc =
      int64_t{lox::dct_most_dc(lox::dct_weight(width, height, 0.25F))} * 65536 +
      65535;
  for (int i = 0; i < 16; ++i) {
    int64_t sum = lox::dct_scaled(sums[i], shift, 16);
    if (i == 0 && sum > most_dc) sum = most_dc;
    c[i] = static_cast<int32_t>(sum < INT32_MIN   ? INT32_MIN
                                : sum > INT32_MAX ? INT32_MAX
                                                  : sum);
  }
}

void vexo_idct_block4x4(uint8_t *dst, int32_t row, int32_t column,
                        int32_t stride, const int32_t *c,
                        const int32_t *weights) {
  int16_t w[16];
  for (int i = 0; i < 16; ++i) w[i] = lox::dct_weigh(c[i] >> 16, weights[i]);
  uint8_t samples[16];
  lox::dct_inverse(w, samples);
  uint8_t *const at = dst + ptrdiff_t{row} * stride + column;
  for (ptrdiff_t i = 0; i < 16; ++i) at[i / 4 * stride + i % 4] = samples[i];
}

void vexo_idct_blocknxn_float(uint8_t *dst, int32_t row, int32_t column,
                              const int16_t *w, int32_t stride, int32_t rows) {
  uint8_t samples[16];
  lox::dct_inverse(w, samples);
  for (int i = 0; i < 16; ++i) {
    const int64_t y = int64_t{row} + i / 4;
    const int64_t x = int64_t{column} + i % 4;
    if (y >= rows || x >= stride) continue;
    dst[static_cast<ptrdiff_t>(y) * stride + static_cast<ptrdiff_t>(x)] =
        samples[i];
  }
}
