// SPDX-License-Identifier: Apache-2.0
//
// Rotating on x86. A tile is transposed inside
// 128-bit lanes, each of which has rows of its own: what is stored is rows of
// all lanes beside each other.
#pragma once

#include "simd/simd.h"

namespace lox::LOX_SET {

// Four units of three bytes, the first or the last of 16, to four bytes each.
alignas(16) constexpr uint8_t kSpread3[2][16] = {
    {0, 1, 2, 128, 3, 4, 5, 128, 6, 7, 8, 128, 9, 10, 11, 128},
    {4, 5, 6, 128, 7, 8, 9, 128, 10, 11, 12, 128, 13, 14, 15, 128}};

template <class V>
struct RotateOps {
  using R = typename V::R;
  using Reg = typename R::Reg;
  static constexpr int kLanes = static_cast<int>(sizeof(Reg)) / 16;

  // Units of three bytes are transposed as four; their lanes have columns of
  // their own.
  template <int kUnit>
  static constexpr int kCols = kUnit == 3 ? 8 : 16 / kUnit;
  template <int kUnit>
  static constexpr int kRows = kUnit == 3 ? 16 : kLanes * 16 / kUnit;

  template <int kUnit>
  LOX_OP Reg unpack_low(Reg a, Reg b) {
    return kUnit == 1   ? R::unpack_low8(a, b)
           : kUnit == 2 ? R::unpack_low16(a, b)
                        : R::unpack_low32(a, b);
  }
  template <int kUnit>
  LOX_OP Reg unpack_high(Reg a, Reg b) {
    return kUnit == 1   ? R::unpack_high8(a, b)
           : kUnit == 2 ? R::unpack_high16(a, b)
                        : R::unpack_high32(a, b);
  }
  // Transposes a square in each lane. Each round of unpacking rotates the bits
  // of row and column by one; after log2(side) rounds rows and columns have
  // changed places.
  template <int kUnit>
  LOX_OP void transpose(Reg (&v)[16 / kUnit]) {
    constexpr int kSide = 16 / kUnit;
    for (int bit = 1; bit < kSide; bit *= 2) {
      Reg zipped[kSide];
      for (int i = 0; i < kSide / 2; ++i) {
        zipped[2 * i] = unpack_low<kUnit>(v[i], v[i + kSide / 2]);
        zipped[2 * i + 1] = unpack_high<kUnit>(v[i], v[i + kSide / 2]);
      }
      for (int i = 0; i < kSide; ++i) v[i] = zipped[i];
    }
  }

  // Past the caches if `kStream`: not of units of three bytes.
  template <int kUnit, bool kStream = false>
  LOX_OP void transpose_tile(const uint8_t *src, ptrdiff_t src_step,
                             uint8_t *dst, ptrdiff_t dst_step) {
    if constexpr (kUnit == 3) {
      transpose_tile_of_3(src, src_step, dst, dst_step);
    } else {
      constexpr int kSide = 16 / kUnit;
      Reg v[kSide];
      for (int i = 0; i < kSide; ++i) {
        v[i] = R::load_lanes(src, kSide * src_step);
        src += src_step;
      }
      transpose<kUnit>(v);
      for (int i = 0; i < kSide; ++i) {
        R::template store<kStream>(dst, v[i]);
        dst += dst_step;
      }
    }
  }
  LOX_OP void end_stream() { V::end_stream(); }

  // 16 rows of eight units, 24 bytes: the first 16 of them and the last. Four
  // columns lie in each lane; a register of one lane has first the left ones,
  // then the right.
  LOX_OP void transpose_tile_of_3(const uint8_t *src, ptrdiff_t src_step,
                                  uint8_t *dst, ptrdiff_t dst_step) {
    constexpr int kPasses = 2 / kLanes;
    for (int pass = 0; pass < kPasses; ++pass) {
      const Reg spread = R::load_lanes(kSpread3[pass], 16);
      const uint8_t *from = src + 8 * pass;
      Reg v[4][4];
      for (auto &rows : v) {
        for (Reg &row : rows) {
          row = R::shuffle8(R::load_lanes(from, 8), spread);
          from += src_step;
        }
        transpose<4>(rows);
      }
      for (int i = 0; i < 4; ++i) {
        store_48(dst, dst + 4 * dst_step, v[0][i], v[1][i], v[2][i], v[3][i]);
        dst += dst_step;
      }
    }
  }
  // Each lane's 16 units, of which the fourth bytes are dropped: the first
  // lane's to `first`, the second's to `second`. The shuffles leave the holes
  // where the stores drop them.
  LOX_OP void store_48(uint8_t *first, uint8_t *second, Reg a, Reg b, Reg c,
                       Reg d) {
    a = R::shuffle8(
        a, R::broadcast128(_mm_setr_epi8(-1, -1, -1, -1, 0, 1, 2, 4, 5, 6, 8, 9,
                                         10, 12, 13, 14)));
    b = R::shuffle8(
        b, R::broadcast128(_mm_setr_epi8(0, 1, 2, 4, -1, -1, -1, -1, 5, 6, 8, 9,
                                         10, 12, 13, 14)));
    c = R::shuffle8(
        c, R::broadcast128(_mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, -1, -1, -1, -1,
                                         10, 12, 13, 14)));
    d = R::shuffle8(
        d, R::broadcast128(_mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14,
                                         -1, -1, -1, -1)));
    store_lane(first, second, R::template bytes_from<4>(a, b));
    store_lane(first + 16, second + 16, R::template bytes_from<8>(b, c));
    store_lane(first + 32, second + 32, R::template bytes_from<12>(c, d));
  }
  LOX_OP void store_lane(uint8_t *first, uint8_t *second, Reg v) {
    if constexpr (kLanes == 2) {
      R::store_halves(first, second, v);
    } else {
      R::template store<false>(first, v);
    }
  }

  static constexpr int kLines = 1;
  template <int kUnit>
  static constexpr int kRun = kUnit == 3
                                  ? 16
                                  : static_cast<int>(sizeof(Reg)) / kUnit;
  // What is read goes forwards: processors fetch that further ahead.
  static constexpr bool kReadsForward = true;
  template <int kUnit>
  LOX_OP void reverse_run(const uint8_t *&src, uint8_t *&dst) {
    if constexpr (kUnit == 3) {
      // Five units at a time, and the last one.
      const __m128i backwards =
          _mm_setr_epi8(13, 14, 15, 10, 11, 12, 7, 8, 9, 4, 5, 6, 1, 2, 3, 0);
      dst -= 48;
      reverse_16(src + 32, dst, backwards);
      reverse_16(src + 17, dst + 15, backwards);
      reverse_16(src + 2, dst + 30, backwards);
      copy_last_unit(src, dst + 45);
      src += 48;
    } else {
      dst -= sizeof(Reg);
      if constexpr (kUnit == 4) {
        R::template store<false>(dst, reverse_units_of_4(R::load(src)));
      } else {
        R::template store<false>(
            dst, R::shuffle8(R::load_lanes(src + 16 * (kLanes - 1), -16),
                             R::broadcast128(backwards<kUnit>())));
      }
      src += sizeof(Reg);
    }
  }
  LOX_OP __m128i reverse_units_of_4(__m128i v) {
    return _mm_shuffle_epi32(v, _MM_SHUFFLE(0, 1, 2, 3));
  }
#if defined(__AVX2__)
  LOX_OP __m256i reverse_units_of_4(__m256i v) {
    return _mm256_permutevar8x32_epi32(
        v, _mm256_setr_epi32(7, 6, 5, 4, 3, 2, 1, 0));
  }
#endif
  template <int kUnit>
  LOX_OP __m128i backwards() {
    return kUnit == 1 ? _mm_setr_epi8(15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4,
                                      3, 2, 1, 0)
                      : _mm_setr_epi8(14, 15, 12, 13, 10, 11, 8, 9, 6, 7, 4, 5,
                                      2, 3, 0, 1);
  }
  LOX_OP void reverse_16(const uint8_t *src, uint8_t *dst, __m128i places) {
    Sse41Register::store<false>(
        dst, Sse41Register::shuffle8(Sse41Register::load(src), places));
  }
  // The byte that the store before has spoilt is the unit's first.
  LOX_OP void copy_last_unit(const uint8_t *src, uint8_t *dst) {
    dst[0] = src[0];
    dst[1] = src[1];
    dst[2] = src[2];
  }
};

using WideRotate = RotateOps<Bulk>;
using NarrowRotate = RotateOps<Narrow>;
// Of which units tiles write whole lines, or parts of few enough that they are
// put together before they leave.
using StreamRotate = RotateOps<Wide>;
template <int kUnit>
constexpr bool kStreams = kUnit == 2 || kUnit == 4 ||
                          (kUnit == 1 && sizeof(Wide::R::Reg) == 64);

}  // namespace lox::LOX_SET
