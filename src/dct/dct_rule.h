// SPDX-License-Identifier: Apache-2.0
//
// The rule of one block: source samples to coefficients, these to 4 x 4
// samples. Static functions, as units of every instruction set include them.
//
// Sizes. Of n points let e be the least with 4^e >= n, so that sqrt(n) <= 2^e.
// Bases for columns are in 1 / 2^sM, sM = min(13 + e, 23 - e), those for rows
// in 1 / 2^sN, sN = min(13 + e, 16 - e), which keeps both below 2^15. The sums
// of a column of bytes are at most 255 2^(eM + sM); as t, in 1 / 2^(7 - eM), at
// most 255 2^7; the sums of a row of t at most 255 2^7 2^(eN + sN). All are
// below 2^31, and t below 2^15.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "dct/dct_rows.h"

#define LOX_RULE [[gnu::always_inline]] static inline

namespace lox {

LOX_RULE int dct_exponent(int32_t points) {
  int e = 0;
  while (e < 16 && (int64_t{1} << (2 * e)) < points) ++e;
  return e;
}
LOX_RULE int dct_down_scale(int32_t points) {
  const int e = dct_exponent(points);
  return e < 5 ? 13 + e : 23 - e;
}
LOX_RULE int dct_across_scale(int32_t points) {
  const int e = dct_exponent(points);
  return e < 2 ? 13 + e : 16 - e;
}
// What the sums of a column of `height` samples are shifted right by, and those
// of a row of `width` columns to be whole coefficients.
LOX_RULE int dct_column_shift(int32_t height) {
  return dct_down_scale(height) + dct_exponent(height) - 7;
}
LOX_RULE int dct_row_shift(int32_t width, int32_t height) {
  return dct_across_scale(width) + 7 - dct_exponent(height);
}

// Entry (u, i) of a basis.
LOX_RULE int32_t dct_entry(const int16_t *const *basis, int u, int32_t i) {
  return basis[i / 4][4 * u + i % 4];
}

// sums[4 u + v] of a dense block, in 1 / 2^dct_row_shift.
LOX_RULE void dct_sums(const uint8_t *block, int32_t width, int32_t height,
                       const int16_t *const *down, const int16_t *const *across,
                       int32_t *sums) {
  const int shift = dct_column_shift(height);
  const int32_t half = 1 << (shift - 1);
  for (int i = 0; i < 16; ++i) sums[i] = 0;
  for (int32_t x = 0; x < width; ++x) {
    int32_t t[4] = {half, half, half, half};
    const uint8_t *sample = block + x;
    for (int32_t y = 0; y < height; ++y, sample += width) {
      for (int u = 0; u < 4; ++u) t[u] += dct_entry(down, u, y) * *sample;
    }
    for (int u = 0; u < 4; ++u) {
      for (int v = 0; v < 4; ++v) {
        sums[4 * u + v] += dct_entry(across, v, x) * (t[u] >> shift);
      }
    }
  }
}

// A sum as a multiple of 1 / 2^bits; `shift` is that of whole coefficients,
// negative for blocks beyond any memory.
LOX_RULE int64_t dct_scaled(int32_t sum, int shift, int bits) {
  return shift >= bits ? sum >> (shift - bits)
                       : int64_t{sum} * (int64_t{1} << (bits - shift));
}

// The largest first coefficient that leaves its weighted form below 2^15: white
// would become black.
LOX_RULE int32_t dct_most_dc(int32_t weight) {
  return weight > 0 ? 8388607 / weight : INT32_MAX;
}

// Bits 8 to 23 of the product, as a signed number.
LOX_RULE int16_t dct_weigh(int32_t coefficient, int32_t weight) {
  const uint32_t product =
      static_cast<uint32_t>(coefficient) * static_cast<uint32_t>(weight);
  return static_cast<int16_t>(product >> 8);
}

// One direction of the inverse, of four numbers `step` apart.
LOX_RULE void dct_butterfly(int32_t *c, int step, int shift) {
  const int32_t e0 = (c[0] + c[2 * step]) * 128;
  const int32_t e1 = (c[0] - c[2 * step]) * 128;
  const int32_t oa = 53 * c[step] - 128 * c[3 * step];
  const int32_t ob = 128 * c[step] + 53 * c[3 * step];
  c[0] = (e0 + ob) >> shift;
  c[step] = (e1 + oa) >> shift;
  c[2 * step] = (e1 - oa) >> shift;
  c[3 * step] = (e0 - ob) >> shift;
}

// 4 x 4 samples of weighted coefficients.
LOX_RULE void dct_inverse(const int16_t *w, uint8_t *samples) {
  int32_t c[16];
  for (int i = 0; i < 16; ++i) c[i] = w[i];
  for (int u = 0; u < 4; ++u) dct_butterfly(c + 4 * u, 1, 7);
  for (int v = 0; v < 4; ++v) dct_butterfly(c + v, 4, 14);
  for (int i = 0; i < 16; ++i) {
    const int32_t s = static_cast<int16_t>(c[i]);
    samples[i] = static_cast<uint8_t>(s < 0 ? 0 : s > 255 ? 255 : s);
  }
}

// The block at place i of a job.
LOX_RULE void dct_block(const DctJob &job, ptrdiff_t i) {
  const DctKind &kind = job.kinds[job.types[i]];
  const int64_t first = job.columns[i];
  uint8_t *sample = job.work;
  for (int32_t y = 0; y < kind.height; ++y) {
    const uint8_t *const row = job.row(y);
    for (int32_t x = 0; x < kind.width; ++x)
      *sample++ = row[job.column(first + x)];
  }
  int32_t sums[16];
  dct_sums(job.work, kind.width, kind.height, kind.down, kind.across, sums);
  const int shift = dct_row_shift(kind.width, kind.height);
  const int32_t most = dct_most_dc(kind.weights[0]);
  int16_t w[16];
  for (int j = 0; j < 16; ++j) {
    auto k = static_cast<int32_t>(dct_scaled(sums[j], shift, 0));
    if (j == 0 && k > most) k = most;
    w[j] = dct_weigh(k, kind.weights[j]);
  }
  uint8_t samples[16];
  dct_inverse(w, samples);
  for (int y = 0; y < 4; ++y) {
    for (int x = 0; x < 4; ++x) {
      job.dst[y * job.dst_stride + 4 * i + x] = samples[4 * y + x];
    }
  }
}

}  // namespace lox
