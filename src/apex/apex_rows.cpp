// SPDX-License-Identifier: Apache-2.0
//
// Rows of scaling by Lanczos filters: sums across rows, then down columns.
#include "apex/apex_rows.h"

#include <string.h>

#include "simd/simd.h"

namespace lox::LOX_SET {

namespace {

// --- the rule ----------------------------------------------------------------

// 1 in samples of 14 bits that were multiplied by alpha.
constexpr int kWhole = 255 * 64;

template <ApexSample S>
LOX_INLINE int32_t sample(const uint8_t *row, ptrdiff_t x) {
  if constexpr (S == ApexSample::kByte) return row[x];
  uint16_t v;
  memcpy(&v, row + 2 * x, sizeof v);
  if constexpr (S == ApexSample::kLow10) v &= 1023;
  if constexpr (S == ApexSample::kHigh10) v >>= 6;
  return v;
}
// A sum of products, with 28 - b bits behind those of the sample.
template <ApexSample S>
LOX_INLINE void put_sample(int32_t sum, uint8_t *dst) {
  constexpr int kShift = 28 - apex_bits(S);
  constexpr int32_t kMost =
      S == ApexSample::k14 ? kWhole : (1 << apex_bits(S)) - 1;
  const int32_t rounded = (sum + (1 << (kShift - 1))) >> kShift;
  int32_t v = rounded < 0 ? 0 : rounded > kMost ? kMost : rounded;
  if constexpr (S == ApexSample::kHigh10) v <<= 6;
  dst[0] = static_cast<uint8_t>(v);
  if constexpr (S != ApexSample::kByte) dst[1] = static_cast<uint8_t>(v >> 8);
}

// Calls put(row, below, base, entry, dst) for blocks of so many sums.
template <int kSums, class Put>
LOX_INLINE void for_blocks(const ApexColumns &c, const ApexPiece *piece,
                           int32_t count, int16_t *dst, Put put) {
  for (; count != 0; --count, ++piece) {
    ptrdiff_t base = piece->base;
    ptrdiff_t entry = piece->entry;
    int16_t *to = dst + piece->at;
    for (int32_t left = piece->blocks; left != 0;
         --left, to += ptrdiff_t{2} * kSums) {
      put(piece->row, piece->below, base, entry, to);
      if (++entry == c.entries) {
        entry = 0;
        base += c.advance;
      }
    }
  }
}

template <ApexSample S>
LOX_INLINE void across_rule(const ApexColumns &c, const ApexPiece *pieces,
                            int32_t count, int16_t *dst) {
  const int32_t sums = apex_sums(c.parts);
  const ptrdiff_t outputs = kPlainSums / sums;
  for_blocks<kPlainSums>(
      c, pieces, count, dst,
      [&](const uint8_t *row, const uint8_t *below, ptrdiff_t base,
          ptrdiff_t entry, int16_t *to) {
        const int32_t *const first = c.first + entry * outputs;
        const int16_t *w = c.weights + entry * outputs * c.steps;
        for (ptrdiff_t i = 0; i < outputs; ++i, w += c.steps) {
          const ptrdiff_t from = (base + first[i]) * apex_bytes(S);
          const uint8_t *const both[] = {row + from, below + from};
          for (int32_t part = 0; part < sums; ++part) {
            for (const uint8_t *const p : both) {
              int32_t sum = 1 << (apex_bits(S) - 1);
              for (int32_t k = 0; k < c.steps && part < c.parts; ++k) {
                sum += w[k] * sample<S>(p, ptrdiff_t{k} * c.parts + part);
              }
              *to++ = static_cast<int16_t>(sum >> apex_bits(S));
            }
          }
        }
      });
}

template <ApexSample S>
LOX_INLINE void down_rule(const int16_t *const *pairs, const int16_t *weights,
                          int32_t steps, ptrdiff_t n, uint8_t *dst) {
  for (ptrdiff_t x = 0; x < n; ++x, dst += apex_bytes(S)) {
    int32_t sum = 0;
    for (int32_t k = 0; k < 2 * steps; ++k) {
      sum += weights[k] * pairs[k / 2][2 * x + k % 2];
    }
    put_sample<S>(sum, dst);
  }
}

}  // namespace

}  // namespace lox::LOX_SET

#if defined(LOX_SET_neon)
#include "apex/apex_neon.h"
#elif LOX_VECTORS
#include "apex/apex_phases_x86.h"
#include "apex/apex_streams_x86.h"
#include "apex/apex_turned_x86.h"
#include "apex/apex_x86.h"
#endif

namespace lox::LOX_SET {

namespace {

template <class Kernel>
LOX_INLINE void for_sample(ApexSample s, Kernel kernel) {
  switch (s) {
    case ApexSample::kByte:
      return kernel.template operator()<ApexSample::kByte>();
    case ApexSample::kLow10:
      return kernel.template operator()<ApexSample::kLow10>();
    case ApexSample::kHigh10:
      return kernel.template operator()<ApexSample::kHigh10>();
    case ApexSample::k14:
      return kernel.template operator()<ApexSample::k14>();
  }
}

void across(ApexSample s, const ApexColumns &c, const ApexPiece *pieces,
            int32_t count, int16_t *dst) {
  for_sample(s, [&]<ApexSample S>() LOX_INLINE_LAMBDA {
#if LOX_VECTORS
#if !defined(LOX_SET_neon)
    if (c.way == ApexWay::kStreams) {
      return ApexStreams<Wide>::template across<S>(c, pieces, count, dst);
    }
    if constexpr (S == ApexSample::kByte) {
      if (c.way == ApexWay::kPhases) {
        return ApexPhases<Wide>::across(c, pieces, count, dst);
      }
    }
#endif
    ApexOps<Bulk>::template across<S>(c, pieces, count, dst);
#else
    across_rule<S>(c, pieces, count, dst);
#endif
  });
}

void down(ApexSample s, const int16_t *const *pairs, const int16_t *weights,
          int32_t steps, ptrdiff_t n, uint8_t *dst) {
  for_sample(s, [&]<ApexSample S>() LOX_INLINE_LAMBDA {
#if LOX_VECTORS
    const auto with = [&]<class V>(V) LOX_INLINE_LAMBDA {
      using Ops = ApexOps<V>;
      if (n < Ops::n) return false;
      ptrdiff_t x = 0;
      if constexpr (Ops::kDownTimes > 1) {
        constexpr ptrdiff_t kMany = Ops::kDownTimes * Ops::n;
        for (; n - x >= kMany; x += kMany) {
          Ops::template down<S, Ops::kDownTimes>(pairs, weights, steps, x, dst);
        }
      }
      for (; x < n; x += Ops::n) {
        const ptrdiff_t last = n - Ops::n;
        Ops::template down<S, 1>(pairs, weights, steps, x < last ? x : last,
                                 dst);
      }
      return true;
    };
    if (with(Wide())) return;
    if constexpr (kNarrower) {
      if (with(Narrow())) return;
    }
#endif
    down_rule<S>(pairs, weights, steps, n, dst);
  });
}

#if LOX_VECTORS && !defined(LOX_SET_neon)
void turn(ApexSample s, const uint8_t *const *rows, int32_t parts,
          int32_t chunks, int16_t *dst) {
  for_sample(s, [&]<ApexSample S>() LOX_INLINE_LAMBDA {
    ApexTurning<Wide>::template turn<S>(rows, parts, chunks, dst);
  });
}
void across_turned(ApexSample s, const int16_t *turned, int32_t parts,
                   int32_t count, int32_t begin, const int32_t *first,
                   const ApexWeights &weights, ptrdiff_t at,
                   int16_t *const *pairs) {
  for_sample(s, [&]<ApexSample S>() LOX_INLINE_LAMBDA {
    ApexTurning<Wide>::template across_turned<S>(turned, parts, count, begin,
                                                 first, weights, at, pairs);
  });
}
constexpr int32_t kTurnedRows = ApexTurning<Wide>::kTurnedRows;

// Calls vector(x) for each n of `count` pixels, the last ones at the end, or
// else pixel(x).
template <class Vector, class Pixel>
LOX_INLINE void for_pixels(ptrdiff_t count, Vector vector, Pixel pixel) {
  constexpr ptrdiff_t n = ApexOps<Wide>::n;
  if (count < n) {
    for (ptrdiff_t x = 0; x < count; ++x) pixel(x);
    return;
  }
  const ptrdiff_t last = count - n;
  for (ptrdiff_t x = 0; x < count; x += n) vector(x < last ? x : last);
}
void split(const uint8_t *row, ptrdiff_t ahead, ptrdiff_t n, ptrdiff_t apart,
           uint8_t *dst) {
  for_pixels(
      n,
      [&](ptrdiff_t x) LOX_INLINE_LAMBDA {
        if (ahead != 0) prefetch(row + 3 * x, ahead, 3 * Wide::n);
        ApexOps<Wide>::split(row + 3 * x, apart, dst + x);
      },
      [&](ptrdiff_t x) LOX_INLINE_LAMBDA {
        for (int i = 0; i < 3; ++i) dst[i * apart + x] = row[3 * x + i];
      });
}
void join(const uint8_t *planes, ptrdiff_t n, ptrdiff_t apart, uint8_t *dst) {
  for_pixels(
      n,
      [&](ptrdiff_t x) LOX_INLINE_LAMBDA {
        const uint8_t *const p = planes + x;
        Wide::store3<false>(dst + 3 * x, {Wide::R::load(p)},
                            {Wide::R::load(p + apart)},
                            {Wide::R::load(p + 2 * apart)});
      },
      [&](ptrdiff_t x) LOX_INLINE_LAMBDA {
        for (int i = 0; i < 3; ++i) dst[3 * x + i] = planes[i * apart + x];
      });
}
#else
constexpr decltype(ApexRows::split) split = nullptr;
constexpr decltype(ApexRows::join) join = nullptr;
constexpr decltype(ApexRows::turn) turn = nullptr;
constexpr decltype(ApexRows::across_turned) across_turned = nullptr;
constexpr int32_t kTurnedRows = 0;
#endif

void close(const uint8_t *row, ptrdiff_t n, uint8_t *dst) {
  for (ptrdiff_t x = 0; x < n; ++x) {
    for (int i = 0; i < 3; ++i) dst[3 * x + i] = row[4 * x + i];
  }
}

void premultiply(const uint8_t *row, int alpha, ptrdiff_t n, uint16_t *dst) {
  for (ptrdiff_t x = 0; x < n; ++x) {
    const uint32_t a = row[4 * x + alpha];
    for (int i = 0; i < 4; ++i) {
      // The alpha is one of the four, and of itself.
      const uint32_t by = i == alpha ? 255 : a;
      dst[4 * x + i] =
          static_cast<uint16_t>((row[4 * x + i] * by * 64 + 127) / 255);
    }
  }
}
void divide(const uint16_t *row, int alpha, ptrdiff_t n, uint8_t *dst) {
  for (ptrdiff_t x = 0; x < n; ++x) {
    const uint32_t a = row[4 * x + alpha];
    for (int i = 0; i < 4; ++i) {
      const uint32_t v = row[4 * x + i];
      const uint32_t colour = a < 32 ? 0 : (v * 255 + a / 2) / a;
      dst[4 * x + i] = static_cast<uint8_t>(i == alpha     ? (a + 32) / 64
                                            : colour > 255 ? 255
                                                           : colour);
    }
  }
}

}  // namespace

constinit const ApexRows apex_rows = {
#if LOX_VECTORS
    ApexOps<Bulk>::kRegisterBytes,
    ApexOps<Wide>::kPhaseBytes,
    ApexOps<Wide>::kStreamSums,
    ApexOps<Bulk>::kPicks,
    4,
#else
    0,      0,           0,     false,         2,
#endif
    across,
    kTurnedRows,
    turn,
    across_turned,
    down,
    split,
    join,
    close,
    premultiply,
    divide};

}  // namespace lox::LOX_SET
