// SPDX-License-Identifier: Apache-2.0
//
// Rotating on NEON. A tile has as many rows as a half register has units: its
// columns are stored from halves.
#pragma once

#include "simd/simd.h"

namespace lox::LOX_SET {

// For rows too short for WideRotate.
struct NarrowRotate {
  template <int kUnit>
  static constexpr int kCols = kUnit == 3 ? 8 : 16 / kUnit;
  template <int kUnit>
  static constexpr int kRows = kUnit == 1 || kUnit == 3 ? 8 : 4;

  // Exchanges the odd units of a with the even ones of b.
  template <int kUnit>
  LOX_OP void exchange(uint8x16_t &a, uint8x16_t &b) {
#if LOX_ARM
    // The compiler would copy both.
    if constexpr (kUnit == 8) {
      __asm__("vswp %f0, %e1" : "+w"(a), "+w"(b));
    } else {
      __asm__("vtrn.%c2 %q0, %q1" : "+w"(a), "+w"(b) : "i"(8 * kUnit));
    }
#else
    if constexpr (kUnit == 1) {
      const uint8x16x2_t v = vtrnq_u8(a, b);
      a = v.val[0];
      b = v.val[1];
    } else if constexpr (kUnit == 2) {
      const uint16x8x2_t v =
          vtrnq_u16(vreinterpretq_u16_u8(a), vreinterpretq_u16_u8(b));
      a = vreinterpretq_u8_u16(v.val[0]);
      b = vreinterpretq_u8_u16(v.val[1]);
    } else if constexpr (kUnit == 4) {
      const uint32x4x2_t v =
          vtrnq_u32(vreinterpretq_u32_u8(a), vreinterpretq_u32_u8(b));
      a = vreinterpretq_u8_u32(v.val[0]);
      b = vreinterpretq_u8_u32(v.val[1]);
    } else {
      const uint8x16_t even = vcombine_u8(vget_low_u8(a), vget_low_u8(b));
      b = vcombine_u8(vget_high_u8(a), vget_high_u8(b));
      a = even;
    }
#endif
  }
  // Transposes squares of kSide rows and columns: one of units of four bytes,
  // one in each half of smaller ones.
  template <int kUnit, int kSide>
  LOX_OP void transpose(uint8x16_t (&v)[kSide]) {
    LOX_UNROLL
    for (int i = 0; i < kSide; i += 2) exchange<kUnit>(v[i], v[i + 1]);
    LOX_UNROLL
    for (int i = 0; i < kSide / 2; ++i) {
      const int row = i / 2 * 4 + i % 2;
      exchange<2 * kUnit>(v[row], v[row + 2]);
    }
    if constexpr (kSide == 8) {
      LOX_UNROLL
      for (int i = 0; i < 4; ++i) exchange<4 * kUnit>(v[i], v[i + 4]);
    }
  }

  template <int kUnit>
  LOX_OP void transpose_tile(const uint8_t *src, ptrdiff_t src_step,
                             uint8_t *dst, ptrdiff_t dst_step) {
    if constexpr (kUnit == 3) {
      transpose_tile_of_3(src, src_step, dst, dst_step);
    } else {
      uint8x16_t v[kRows<kUnit>];
      LOX_UNROLL
      for (uint8x16_t &row : v) {
        row = vld1q_u8(src);
        src += src_step;
        keep_pointer(src);
      }
      transpose<kUnit>(v);
      constexpr int kHalves = kUnit == 4 ? 1 : 2;
      LOX_UNROLL
      for (int half = 0; half < kHalves; ++half) {
        LOX_UNROLL
        for (const uint8x16_t column : v) {
          if constexpr (kHalves == 1) {
            vst1q_u8(dst, column);
          } else {
            vst1_u8(dst,
                    half == 0 ? vget_low_u8(column) : vget_high_u8(column));
          }
          dst += dst_step;
          keep_pointer(dst);
        }
      }
    }
  }
  // Each byte of the units for itself: the first two share registers, the rows
  // of the third two by two.
  LOX_OP void transpose_tile_of_3(const uint8_t *src, ptrdiff_t src_step,
                                  uint8_t *dst, ptrdiff_t dst_step) {
    uint8x8x3_t row[8];
    LOX_UNROLL
    for (uint8x8x3_t &r : row) {
      r = vld3_u8(src);
      src += src_step;
    }
    uint8x16_t v[8];
    uint8x16_t w[4];
    LOX_UNROLL
    for (int i = 0; i < 8; ++i)
      v[i] = vcombine_u8(row[i].val[0], row[i].val[1]);
    LOX_UNROLL
    for (int i = 0; i < 4; ++i) {
      w[i] = vcombine_u8(row[i].val[2], row[i + 4].val[2]);
    }
    transpose<1>(v);
    transpose<1>(w);
    uint8x8_t third[8];
    LOX_UNROLL
    for (int i = 0; i < 4; ++i) {
      const uint32x2x2_t both =
          vtrn_u32(vreinterpret_u32_u8(vget_low_u8(w[i])),
                   vreinterpret_u32_u8(vget_high_u8(w[i])));
      third[i] = vreinterpret_u8_u32(both.val[0]);
      third[i + 4] = vreinterpret_u8_u32(both.val[1]);
    }
    LOX_UNROLL
    for (int i = 0; i < 8; ++i) {
      const uint8x8x3_t column = {
          {vget_low_u8(v[i]), vget_high_u8(v[i]), third[i]}};
      vst3_u8(dst, column);
      dst += dst_step;
    }
  }
  static constexpr int kLines = 2;
  static constexpr bool kReadsForward = false;

  template <int kUnit>
  LOX_OP uint8x16_t backwards(uint8x16_t v) {
    if constexpr (kUnit == 1) {
      v = vrev64q_u8(v);
    } else if constexpr (kUnit == 2) {
      v = vreinterpretq_u8_u16(vrev64q_u16(vreinterpretq_u16_u8(v)));
    } else {
      v = vreinterpretq_u8_u32(vrev64q_u32(vreinterpretq_u32_u8(v)));
    }
    return vextq_u8(v, v, 8);
  }
  template <int kUnit>
  static constexpr int kRun = kUnit == 3 ? 16 : 16 / kUnit;
  template <int kUnit>
  LOX_OP void reverse_run(const uint8_t *&src, uint8_t *&dst) {
    constexpr int kBytes = kRun<kUnit> * kUnit;
    src -= kBytes;
    if constexpr (kUnit == 3) {
      uint8x16x3_t v = vld3q_u8(src);
      LOX_UNROLL
      for (uint8x16_t &channel : v.val) channel = backwards<1>(channel);
      vst3q_u8(dst, v);
    } else {
      vst1q_u8(dst, backwards<kUnit>(vld1q_u8(src)));
    }
    dst += kBytes;
  }
};

struct WideRotate : NarrowRotate {
  template <int kUnit>
  static constexpr int kRun = kUnit == 3 ? 16 : 64 / kUnit;
  template <int kUnit>
  LOX_OP void reverse_run(const uint8_t *&src, uint8_t *&dst) {
    if constexpr (kUnit == 3) {
      NarrowRotate::reverse_run<kUnit>(src, dst);
    } else {
#if defined(__arm__)
      // Loads and stores of four registers want those side by side, which
      // compilers achieve by copying.
      __asm__ volatile(
          "sub %0, %0, #32\n\t"
          "vld1.8 {d16-d19}, [%0], %2\n\t"
          "vld1.8 {d20-d23}, [%0]\n\t"
          "vrev64.%c3 q8, q8\n\t"
          "vrev64.%c3 q9, q9\n\t"
          "vrev64.%c3 q10, q10\n\t"
          "vrev64.%c3 q11, q11\n\t"
          "vswp d16, d19\n\t"
          "vswp d17, d18\n\t"
          "vswp d20, d23\n\t"
          "vswp d21, d22\n\t"
          "vst1.8 {d16-d19}, [%1]!\n\t"
          "vst1.8 {d20-d23}, [%1]!"
          : "+&r"(src), "+&r"(dst)
          : "r"(-32), "i"(8 * kUnit)
          : "q8", "q9", "q10", "q11", "memory");
#else
      LOX_UNROLL
      for (int i = 0; i < 4; ++i) {
        NarrowRotate::reverse_run<kUnit>(src, dst);
      }
#endif
    }
  }
};

using StreamRotate = WideRotate;
template <int kUnit>
constexpr bool kStreams = false;

}  // namespace lox::LOX_SET
