// SPDX-License-Identifier: Apache-2.0
//
// Scaling across on the x86 backends: of a row the neighbours that an output
// takes come beside each other.
#pragma once

#include "apex/apex_sums_x86.h"
#include "simd/simd.h"

namespace lox::LOX_SET {

template <class V, class R = typename V::R>
struct ApexOps : ApexSums<V> {
  using Sums = ApexSums<V>;
  using Reg = typename Sums::Reg;
  using Sums::add_to;
  using Sums::adjacent;
  using Sums::halves;
  using Sums::kSums;
  using Sums::load;
  using Sums::load_16;
  using Sums::n;

  static constexpr int kRegisterBytes = n;
  static constexpr int kPhaseBytes = n;
  static constexpr int kStreamSums = n == 64 ? 16 : 4;
#if defined(LOX_SET_avx512)
  static constexpr bool kPicks = true;
#else
  static constexpr bool kPicks = false;
#endif

  // n pixels of three bytes to planes.
  LOX_OP void split(const uint8_t *p, ptrdiff_t apart, uint8_t *dst) {
    const Reg v[3] = {R::load_lanes(p, 48), R::load_lanes(p + 16, 48),
                      R::load_lanes(p + 32, 48)};
    LOX_UNROLL
    for (int part = 0; part < 3; ++part) {
      Reg plane = R::shuffle8(v[0], third(part));
      plane = R::bit_or(plane, R::shuffle8(v[1], third(part - 16)));
      plane = R::bit_or(plane, R::shuffle8(v[2], third(part - 32)));
      R::template store<false>(dst + part * apart, plane);
    }
  }
  // Every third place from `first` on; what is outside of 16 bytes is 0.
  LOX_OP Reg third(int first) {
    const auto at = [=](int i) LOX_INLINE_LAMBDA {
      const int place = first + 3 * i;
      return static_cast<char>(place < 0 || place > 15 ? -1 : place);
    };
    return R::broadcast128(_mm_setr_epi8(
        at(0), at(1), at(2), at(3), at(4), at(5), at(6), at(7), at(8), at(9),
        at(10), at(11), at(12), at(13), at(14), at(15)));
  }

  template <ApexSample S>
  LOX_OP void across(const ApexColumns &c, const ApexPiece *pieces,
                     int32_t count, int16_t *dst) {
    switch (c.way) {
#if defined(LOX_SET_avx512)
      case ApexWay::kRegister:
        return picked_blocks<S, false>(c, pieces, count, dst);
      case ApexWay::kTwoRegisters:
        return picked_blocks<S, true>(c, pieces, count, dst);
#endif
      case ApexWay::kTwoLanes:
        return lane_blocks<S, true>(c, pieces, count, dst);
      case ApexWay::kDirect:
        if (c.parts == 1) return direct_blocks<S, 1>(c, pieces, count, dst);
        return direct_blocks<S, 2>(c, pieces, count, dst);
      default:
        return lane_blocks<S, false>(c, pieces, count, dst);
    }
  }

  // What a register of sums picks from, for kTwo lanes the same 16 bytes.
  template <bool kTwo>
  LOX_OP Reg load_lanes(const uint8_t *p, const ptrdiff_t *first) {
    if constexpr (n == 16) {
      return R::load(p + first[0]);
    } else if constexpr (kTwo) {
      return R::broadcast128(load_16(p + first[0]));
    } else {
      return _mm256_inserti128_si256(
          _mm256_castsi128_si256(load_16(p + first[0])), load_16(p + first[1]),
          1);
    }
  }
  template <ApexSample S, bool kTwo>
  LOX_OP void lane_blocks(const ApexColumns &c, const ApexPiece *pieces,
                          int32_t count, int16_t *dst) {
    constexpr int kFirsts = n == 16 || kTwo ? 1 : 2;  // of a register
    const ptrdiff_t step = ptrdiff_t{2} * c.parts * apex_bytes(S);
    for_blocks<2 * kSums>(
        c, pieces, count, dst,
        [&](const uint8_t *row, const uint8_t *below, ptrdiff_t base,
            ptrdiff_t entry, int16_t *to) LOX_INLINE_LAMBDA {
          const auto *const places =
              reinterpret_cast<const uint8_t *>(c.places) + entry * 2 * n;
          const int16_t *weights = c.weights + entry * c.steps * n;
          ptrdiff_t from[2 * kFirsts];
          LOX_UNROLL
          for (int i = 0; i < 2 * kFirsts; ++i) {
            from[i] = (base + c.first[entry * 2 * kFirsts + i]) * apex_bytes(S);
          }
          const Reg place0 = R::load(places);
          const Reg place1 = R::load(places + n);
          const Reg half = R::fill32(1 << (apex_bits(S) - 1));
          Reg a0 = half;
          Reg a1 = half;
          Reg b0 = half;
          Reg b1 = half;
          // Places of bytes bring a zero beside each.
          const auto add = [&](Reg &sum, const uint8_t *p, const ptrdiff_t *at,
                               Reg place, Reg w) LOX_INLINE_LAMBDA {
            add_to(
                sum,
                R::shuffle8(Sums::template samples<S>(load_lanes<kTwo>(p, at)),
                            place),
                w);
          };
          for (int32_t k = c.steps; k != 0; --k, weights += n) {
            const Reg w0 = load(weights);
            const Reg w1 = load(weights + n / 2);
            add(a0, row, from, place0, w0);
            add(b0, below, from, place0, w0);
            add(a1, row, from + kFirsts, place1, w1);
            add(b1, below, from + kFirsts, place1, w1);
            LOX_UNROLL
            for (ptrdiff_t &f : from) f += step;
          }
          Sums::template put_pairs<S>(a0, b0, to);
          Sums::template put_pairs<S>(a1, b1, to + n / 2);
        });
  }

  // The sums of an output, in parts that are still to be added.
  template <ApexSample S, int kParts>
  LOX_OP Reg direct_sum(const uint8_t *from, const int16_t *weights,
                        int32_t steps) {
    Reg sum = R::zero();
    for (int32_t k = 0; k < steps; ++k) {
      Reg v =
          Sums::template load_samples<S>(from + k * (n / 2) * apex_bytes(S));
      if constexpr (kParts == 2) {
        v = R::shuffle8(
            v, R::broadcast128(_mm_setr_epi8(0, 1, 4, 5, 2, 3, 6, 7, 8, 9, 12,
                                             13, 10, 11, 14, 15)));
      }
      add_to(sum, v, load(weights + k * (n / 2)));
    }
    return sum;
  }
  template <ApexSample S, int kParts>
  LOX_OP void direct_blocks(const ApexColumns &c, const ApexPiece *pieces,
                            int32_t count, int16_t *dst) {
    constexpr int kOutputs = 4 / kParts;  // of a lane
    const ptrdiff_t pitch = ptrdiff_t{c.steps} * (n / 2);
    const Reg half = R::fill32(1 << (apex_bits(S) - 1));
    const auto sums = [&](const uint8_t *p, const int32_t *first,
                          const int16_t *weights) LOX_INLINE_LAMBDA {
      const auto output = [&](int i) LOX_INLINE_LAMBDA {
        return direct_sum<S, kParts>(p + ptrdiff_t{first[i]} * apex_bytes(S),
                                     weights + i * pitch, c.steps);
      };
      Reg a[kOutputs];
      LOX_UNROLL
      for (int i = 0; i < kOutputs; ++i) {
        a[i] = output(i);
        if constexpr (n == 32) {
          const Reg b = output(kOutputs + i);
          a[i] = R::add32(R::interleave_low_lanes(a[i], b),
                          R::interleave_high_lanes(a[i], b));
        }
      }
      if constexpr (kParts == 1) {
        return R::add32(half,
                        halves(adjacent(a[0], a[1]), adjacent(a[2], a[3])));
      } else {
        return R::add32(half, halves(a[0], a[1]));
      }
    };
    for_blocks<kSums>(
        c, pieces, count, dst,
        [&](const uint8_t *row, const uint8_t *below, ptrdiff_t base,
            ptrdiff_t entry, int16_t *to) LOX_INLINE_LAMBDA {
          const ptrdiff_t output = entry * (kSums / kParts);
          const int32_t *const first = c.first + output;
          const int16_t *const weights = c.weights + output * pitch;
          base *= apex_bytes(S);
          const Reg sum = sums(row + base, first, weights);
          Sums::template put_pairs<S>(sum, sums(below + base, first, weights),
                                      to);
        });
  }

#if defined(LOX_SET_avx512)
  template <ApexSample S, bool kTwo>
  LOX_OP void picked_blocks(const ApexColumns &c, const ApexPiece *pieces,
                            int32_t count, int16_t *dst) {
    using Of512 = ApexOps<Avx512>;
    const ptrdiff_t step = ptrdiff_t{2} * c.parts * apex_bytes(S);
    for_blocks<32>(
        c, pieces, count, dst,
        [&](const uint8_t *row, const uint8_t *below, ptrdiff_t base,
            ptrdiff_t entry, int16_t *to) LOX_INLINE_LAMBDA {
          const auto *const places =
              reinterpret_cast<const uint8_t *>(c.places) + entry * 128;
          const int16_t *weights = c.weights + entry * c.steps * 64;
          ptrdiff_t from0 = (base + c.first[2 * entry]) * apex_bytes(S);
          ptrdiff_t from1 = (base + c.first[2 * entry + 1]) * apex_bytes(S);
          const __m512i place0 = _mm512_loadu_si512(places);
          const __m512i place1 = _mm512_loadu_si512(places + 64);
          __m512i a0 = _mm512_set1_epi32(1 << (apex_bits(S) - 1));
          __m512i a1 = a0;
          __m512i b0 = a0;
          __m512i b1 = a0;
          for (int32_t k = c.steps; k != 0; --k, weights += 64) {
            const __m512i w0 = _mm512_loadu_si512(weights);
            const __m512i w1 = _mm512_loadu_si512(weights + 32);
            Of512::dot_to(a0, picked<S, kTwo>(row + from0, place0), w0);
            Of512::dot_to(b0, picked<S, kTwo>(below + from0, place0), w0);
            Of512::dot_to(a1, picked<S, kTwo>(row + from1, place1), w1);
            Of512::dot_to(b1, picked<S, kTwo>(below + from1, place1), w1);
            from0 += step;
            from1 += step;
          }
          Of512::template put_pairs<S>(a0, b0, to);
          Of512::template put_pairs<S>(a1, b1, to + 32);
        });
  }
  template <ApexSample S, bool kTwo>
  LOX_OP __m512i picked(const uint8_t *from, __m512i place) {
    const __m512i low = words<S>(from);
    if constexpr (!kTwo) return _mm512_permutexvar_epi16(place, low);
    return _mm512_permutex2var_epi16(low, place,
                                     words<S>(from + 32 * apex_bytes(S)));
  }
  template <ApexSample S>
  LOX_OP __m512i words(const uint8_t *p) {
    if constexpr (S == ApexSample::kByte) {
      return _mm512_cvtepu8_epi16(
          _mm256_loadu_si256(reinterpret_cast<const __m256i *>(p)));
    } else {
      return ApexOps<Avx512>::template samples<S>(_mm512_loadu_si512(p));
    }
  }
#endif
};

}  // namespace lox::LOX_SET
