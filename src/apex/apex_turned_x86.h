// SPDX-License-Identifier: Apache-2.0
//
// Scaling across many rows at a time, side by side.
#pragma once

#include "apex/apex_sums_x86.h"
#include "simd/simd.h"

namespace lox::LOX_SET {

template <class V, class R = typename V::R>
struct ApexTurning : ApexSums<V> {
  using Sums = ApexSums<V>;
  using Reg = typename Sums::Reg;
  using Sums::add_to;
  using Sums::load;
  using Sums::load_16;
  using Sums::n;
  using Sums::two_weights;

  // Two registers of words by twos.
  static constexpr int kTurnedRows = n / 2;

  // Where a unit's two samples are in 16 bytes.
  template <ApexSample S>
  LOX_OP __m128i order(int32_t parts) {
    alignas(16) uint8_t places[16];
    const int bytes = apex_bytes(S);
    for (int i = 0; i < 16; ++i) {
      const int unit = i / (2 * bytes);
      const int word =
          unit / parts * 2 * parts + unit % parts + i / bytes % 2 * parts;
      places[i] = static_cast<uint8_t>(word * bytes + i % bytes);
    }
    return _mm_load_si128(reinterpret_cast<const __m128i *>(places));
  }
  template <ApexSample S>
  LOX_OP void turn(const uint8_t *const *rows, int32_t parts, int32_t chunks,
                   int16_t *dst) {
    constexpr int kBytes = apex_bytes(S);
    const __m128i places = order<S>(parts);
    const ptrdiff_t step = parts == 3 ? 12 : 16;
    const ptrdiff_t units = parts == 3 ? 6 : 8 / kBytes;
    for (int group = 0; group < kTurnedRows; group += 4 * (3 - kBytes)) {
      int16_t *to = dst + 2 * group;
      ptrdiff_t at = 0;
      for (int32_t left = chunks; left != 0; --left, at += step) {
        const auto row = [&](int i) LOX_INLINE_LAMBDA {
          return _mm_shuffle_epi8(load_16(rows[group + i] + at), places);
        };
        if constexpr (S == ApexSample::kByte) {
          turn_bytes(row, to);
        } else {
          turn_words<S>(row, to);
        }
        to += units * 2 * kTurnedRows;
      }
    }
  }
  template <class Row>
  LOX_OP void turn_bytes(Row row, int16_t *dst) {
    __m128i a[4];
    __m128i b[4];
    LOX_UNROLL
    for (int i = 0; i < 4; ++i) {
      const __m128i first = row(2 * i);
      const __m128i second = row(2 * i + 1);
      a[i] = _mm_unpacklo_epi16(first, second);
      b[i] = _mm_unpackhi_epi16(first, second);
    }
    turn_dwords(a);
    turn_dwords(b);
    LOX_UNROLL
    for (int i = 0; i < 4; ++i) {
      put_unit(a[i], dst + i * 2 * kTurnedRows);
      put_unit(b[i], dst + (4 + i) * 2 * kTurnedRows);
    }
  }
  LOX_OP void turn_dwords(__m128i (&v)[4]) {
    const __m128i low01 = _mm_unpacklo_epi32(v[0], v[1]);
    const __m128i high01 = _mm_unpackhi_epi32(v[0], v[1]);
    const __m128i low23 = _mm_unpacklo_epi32(v[2], v[3]);
    const __m128i high23 = _mm_unpackhi_epi32(v[2], v[3]);
    v[0] = _mm_unpacklo_epi64(low01, low23);
    v[1] = _mm_unpackhi_epi64(low01, low23);
    v[2] = _mm_unpacklo_epi64(high01, high23);
    v[3] = _mm_unpackhi_epi64(high01, high23);
  }
  LOX_OP void put_unit(__m128i bytes, int16_t *dst) {
    auto *const to = reinterpret_cast<__m128i *>(dst);
    if constexpr (n == 16) {
      _mm_storeu_si128(to, _mm_cvtepu8_epi16(bytes));
      _mm_storeu_si128(to + 1, _mm_unpackhi_epi8(bytes, _mm_setzero_si128()));
    } else {
      _mm256_storeu_si256(reinterpret_cast<__m256i *>(dst),
                          _mm256_cvtepu8_epi16(bytes));
    }
  }
  template <ApexSample S, class Row>
  LOX_OP void turn_words(Row row, int16_t *dst) {
    __m128i v[4] = {row(0), row(1), row(2), row(3)};
    turn_dwords(v);
    LOX_UNROLL
    for (int i = 0; i < 4; ++i) {
      _mm_storeu_si128(reinterpret_cast<__m128i *>(dst + i * 2 * kTurnedRows),
                       ApexSums<Sse41>::template samples<S>(v[i]));
    }
  }

  template <ApexSample S>
  LOX_OP void across_turned(const int16_t *turned, int32_t parts, int32_t count,
                            int32_t begin, const int32_t *first,
                            const ApexWeights &weights, ptrdiff_t at,
                            int16_t *const *pairs) {
    switch (parts) {
      case 1:
        return sum_turned<S, 1>(turned, count, begin, first, weights, at,
                                pairs);
      case 2:
        return sum_turned<S, 2>(turned, count, begin, first, weights, at,
                                pairs);
      case 3:
        return sum_turned<S, 3>(turned, count, begin, first, weights, at,
                                pairs);
      default:
        return sum_turned<S, 4>(turned, count, begin, first, weights, at,
                                pairs);
    }
  }
  // Four sums of each row at a time.
  template <ApexSample S, int kParts>
  LOX_OP void sum_turned(const int16_t *turned, int32_t count, int32_t begin,
                         const int32_t *first, const ApexWeights &weights,
                         ptrdiff_t at, int16_t *const *pairs) {
    constexpr int kOutputs = 4 / apex_sums(kParts);
    constexpr ptrdiff_t kUnit = 2 * kTurnedRows;
    const Reg half = R::fill32(1 << (apex_bits(S) - 1));
    for (int32_t i = 0; i < count; i += kOutputs) {
      const int16_t *from[kOutputs];
      const int16_t *w[kOutputs];
      LOX_UNROLL
      for (int o = 0; o < kOutputs; ++o) {
        from[o] = turned + (first[i + o] - begin) * kParts * kUnit;
        w[o] = weights.words + ptrdiff_t{i + o} * weights.pitch;
      }
      Reg a[4] = {half, half, half, half};
      Reg b[4] = {half, half, half, half};
      for (int32_t k = 0; k < weights.steps; ++k) {
        LOX_UNROLL
        for (int o = 0; o < kOutputs; ++o) {
          const Reg both = two_weights(w[o] + 2 * k);
          const int16_t *const p = from[o] + ptrdiff_t{k} * kParts * kUnit;
          LOX_UNROLL
          for (int part = 0; part < kParts; ++part) {
            const int s = o * kParts + part;
            add_to(a[s], load(p + part * kUnit), both);
            add_to(b[s], load(p + part * kUnit + n / 2), both);
          }
        }
      }
      LOX_UNROLL
      for (int s = 0; s < 4; ++s) {
        a[s] = R::template shift_right_signed32<apex_bits(S)>(a[s]);
        b[s] = R::template shift_right_signed32<apex_bits(S)>(b[s]);
      }
      put_turned_sums(a, pairs, at);
      put_turned_sums(b, pairs + n / 8, at);
      at += 4;
    }
  }
  // Of each four rows two pairs with the words of four columns.
  LOX_OP void put_turned_sums(const Reg (&v)[4], int16_t *const *pairs,
                              ptrdiff_t at) {
    const Reg v01 = R::pack_signed32(v[0], v[1]);
    const Reg v23 = R::pack_signed32(v[2], v[3]);
    alignas(64) uint8_t lanes[2][n];
    R::template store<false>(lanes[0], R::even32(v01, v23));
    R::template store<false>(lanes[1], R::odd32(v01, v23));
    LOX_UNROLL
    for (int i = 0; i < n / 8; ++i) {
      _mm_storeu_si128(reinterpret_cast<__m128i *>(pairs[i] + 2 * at),
                       load_16(lanes[i % 2] + i / 2 * 16));
    }
  }
};

}  // namespace lox::LOX_SET
