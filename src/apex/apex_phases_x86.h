// SPDX-License-Identifier: Apache-2.0
//
// Scaling across by ratios of which one output or two have weights of their
// own: a register holds sums of the same weights, and what their samples are
// picked from serves both outputs.
#pragma once

#include "apex/apex_sums_x86.h"
#include "simd/simd.h"

namespace lox::LOX_SET {

template <class V, class R = typename V::R>
struct ApexPhases : ApexSums<V> {
  using Sums = ApexSums<V>;
  using Reg = typename Sums::Reg;
  using Sums::add_to;
  using Sums::halves;
  using Sums::kSums;
  using Sums::load;
  using Sums::n;

  template <ApexSample S>
  LOX_OP void phases(const ApexColumns &c, const ApexPiece *pieces,
                     int32_t count, int16_t *dst) {
    if constexpr (S != ApexSample::kByte) {
#if defined(LOX_SET_avx512)
      if constexpr (S == ApexSample::k14) {
        two_phases_of_words<S, 4>(c, pieces, count, dst);
      } else if (c.phases == 1) {
        if (c.parts == 1) return quarters<S, 1>(c, pieces, count, dst);
        quarters<S, 2>(c, pieces, count, dst);
      } else {
        if (c.parts == 1)
          return two_phases_of_words<S, 1>(c, pieces, count, dst);
        two_phases_of_words<S, 2>(c, pieces, count, dst);
      }
#endif
    } else if (c.phases == 1) {
      if (c.lane == 16) return one_phase<true>(c, pieces, count, dst);
      one_phase<false>(c, pieces, count, dst);
    } else {
      if (c.parts == 1) return two_phases<1>(c, pieces, count, dst);
      if (c.parts == 2) return two_phases<2>(c, pieces, count, dst);
      two_phases<4>(c, pieces, count, dst);
    }
  }
  // Lanes with what two pairs of samples take, one behind the other or apart.
  template <bool kAdjacent>
  LOX_OP Reg load_phase(const uint8_t *p, ptrdiff_t apart,
                        [[maybe_unused]] Reg lanes) {
    if constexpr (kAdjacent) {
      return R::load(p);
    } else if constexpr (n == 64) {
      return R::permute_words_by(R::load(p), lanes);
    } else {
      return R::load_lanes(p, apart);
    }
  }
  // Two registers of each row, of the same weights.
  template <bool kAdjacent>
  LOX_OP void one_phase(const ApexColumns &c, const ApexPiece *pieces,
                        int32_t count, int16_t *dst) {
    const auto *const places = reinterpret_cast<const uint8_t *>(c.places);
    const Reg place0 = R::load(places);
    const Reg place1 = R::load(places + n);
    const Reg lanes = R::load(places + 2 * n);
    const Reg half = R::fill32(1 << 7);
    const ptrdiff_t step = ptrdiff_t{4} * c.parts;
    const ptrdiff_t apart = c.lane;
    const ptrdiff_t next = n / 16 * apart;
    for_blocks<2 * kSums>(
        c, pieces, count, dst,
        [&](const uint8_t *row, const uint8_t *below, ptrdiff_t base, ptrdiff_t,
            int16_t *to) LOX_INLINE_LAMBDA {
          Reg a0 = half;
          Reg a1 = half;
          Reg b0 = half;
          Reg b1 = half;
          const uint8_t *p = row + (base + c.first[0]);
          const uint8_t *q = below + (base + c.first[0]);
          const int16_t *w = c.weights;
          const auto add = [&](Reg &sum, const uint8_t *from, Reg w0,
                               Reg w1) LOX_INLINE_LAMBDA {
            const Reg v = load_phase<kAdjacent>(from, apart, lanes);
            add_to(sum, R::shuffle8(v, place0), w0);
            add_to(sum, R::shuffle8(v, place1), w1);
          };
          for (int32_t k = c.steps; k != 0; --k, w += n) {
            const Reg w0 = load(w);
            const Reg w1 = load(w + n / 2);
            add(a0, p, w0, w1);
            add(b0, q, w0, w1);
            add(a1, p + next, w0, w1);
            add(b1, q + next, w0, w1);
            p += step;
            q += step;
          }
          Sums::template put_pairs<ApexSample::kByte>(a0, b0, to);
          Sums::template put_pairs<ApexSample::kByte>(a1, b1, to + n / 2);
        });
  }
  // Window i of a row. AVX-512 has all three of single parts in one load.
  template <bool kSingle>
  LOX_OP Reg load_window(const uint8_t *p, int i, ptrdiff_t step,
                         ptrdiff_t apart, const Reg (&lanes)[3]) {
    if constexpr (n == 64 && kSingle) {
      return R::permute_words_by(R::load(p), lanes[i]);
    } else {
      return load_phase<false>(p + i * step, apart, lanes[0]);
    }
  }
  // What two phases weigh: the second begins a pair behind the first.
  struct PhaseWeights {
    Reg first[5], second[5];

    LOX_INLINE explicit PhaseWeights(const ApexColumns &c) {
      LOX_UNROLL
      for (int i = 0; i < 5; ++i) {
        first[i] = load(c.weights + i * n);
        second[i] = load(c.weights + i * n + 3 * (n / 2));
      }
    }
  };
  // Blocks of which sums(p, a, b) makes the two phases of a row.
  template <ApexSample S, int kUnit, class MakeSums>
  LOX_OP void phase_blocks(const ApexColumns &c, const ApexPiece *pieces,
                           int32_t count, int16_t *dst, MakeSums sums) {
    for_blocks<2 * kSums>(
        c, pieces, count, dst,
        [&](const uint8_t *row, const uint8_t *below, ptrdiff_t base, ptrdiff_t,
            int16_t *to) LOX_INLINE_LAMBDA {
          Reg a[2];
          Reg b[2];
          const ptrdiff_t from = (base + c.first[0]) * apex_bytes(S);
          sums(row + from, a[0], a[1]);
          sums(below + from, b[0], b[1]);
          put_phases<kUnit>(Sums::template words_of<S>(a[0], b[0]),
                            Sums::template words_of<S>(a[1], b[1]), to);
        });
  }
  // A register of each phase and row: of six pairs of samples the first is the
  // first phase's alone, the last one the second's.
  template <int kUnit>
  LOX_OP void two_phases(const ApexColumns &c, const ApexPiece *pieces,
                         int32_t count, int16_t *dst) {
    const auto *const places = reinterpret_cast<const uint8_t *>(c.places);
    const Reg place[2] = {R::load(places), R::load(places + n)};
    const Reg half = R::fill32(1 << 7);
    const ptrdiff_t step = ptrdiff_t{4} * c.parts;
    const ptrdiff_t apart = c.lane;
    const Reg lanes[3] = {R::load(places + 2 * n),
                          R::add16(R::load(places + 2 * n), R::fill16(2)),
                          R::add16(R::load(places + 2 * n), R::fill16(4))};
    const PhaseWeights w(c);
    const auto sums = [&](const uint8_t *p, Reg &a, Reg &b) LOX_INLINE_LAMBDA {
      a = half;
      b = half;
      LOX_UNROLL
      for (int i = 0; i < 6; i += 2) {
        const Reg v = load_window<kUnit == 1>(p, i / 2, step, apart, lanes);
        const Reg even = R::shuffle8(v, place[0]);
        const Reg odd = R::shuffle8(v, place[1]);
        add_to(a, even, w.first[i]);
        if (i > 0) add_to(b, even, w.second[i - 1]);
        if (i < 4) add_to(a, odd, w.first[i + 1]);
        add_to(b, odd, w.second[i]);
      }
    };
    phase_blocks<ApexSample::kByte, kUnit>(c, pieces, count, dst, sums);
  }
#if defined(LOX_SET_avx512)
  // The same of words: three pairs come from the same two registers.
  template <ApexSample S, int kUnit>
  LOX_OP void two_phases_of_words(const ApexColumns &c, const ApexPiece *pieces,
                                  int32_t count, int16_t *dst) {
    const auto *const places = reinterpret_cast<const uint8_t *>(c.places);
    const Reg place[3] = {R::load(places), R::load(places + n),
                          R::load(places + 2 * n)};
    const Reg half = R::fill32(1 << (apex_bits(S) - 1));
    const ptrdiff_t step = ptrdiff_t{12} * c.parts;
    const PhaseWeights w(c);
    const auto sums = [&](const uint8_t *p, Reg &a, Reg &b) LOX_INLINE_LAMBDA {
      a = half;
      b = half;
      LOX_UNROLL
      for (int h = 0; h < 2; ++h, p += step) {
        const Reg low = Sums::template samples<S>(R::load(p));
        const Reg high = Sums::template samples<S>(R::load(p + n));
        LOX_UNROLL
        for (int j = 0; j < 3; ++j) {
          const int i = 3 * h + j;
          const Reg v = _mm512_permutex2var_epi16(low, place[j], high);
          if (i < 5) add_to(a, v, w.first[i]);
          if (i > 0) add_to(b, v, w.second[i - 1]);
        }
      }
    };
    phase_blocks<S, kUnit>(c, pieces, count, dst, sums);
  }
  // Words at a quarter: an output's four samples are side by side, and those of
  // the next one behind them. Their products are summed by twos, and the sums
  // of two at the end.
  template <ApexSample S, int kParts>
  LOX_OP void quarters(const ApexColumns &c, const ApexPiece *pieces,
                       int32_t count, int16_t *dst) {
    constexpr int kLoads = 2 + kParts;
    const Reg half = R::fill32(1 << (apex_bits(S) - 1));
    const Reg pairs = R::broadcast128(
        _mm_setr_epi8(0, 1, 4, 5, 2, 3, 6, 7, 8, 9, 12, 13, 10, 11, 14, 15));
    Reg w[6];
    LOX_UNROLL
    for (int i = 0; i < 6; ++i) w[i] = load(c.weights + i * (n / 2));
    for_blocks<kSums>(
        c, pieces, count, dst,
        [&](const uint8_t *row, const uint8_t *below, ptrdiff_t base, ptrdiff_t,
            int16_t *to) LOX_INLINE_LAMBDA {
          const auto sums = [&](const uint8_t *p) LOX_INLINE_LAMBDA {
            Reg v[kLoads];
            LOX_UNROLL
            for (int i = 0; i < kLoads; ++i) {
              v[i] = Sums::template samples<S>(R::load(p + i * n));
              if constexpr (kParts == 2) v[i] = R::shuffle8(v[i], pairs);
            }
            Reg a = R::multiply_add16(v[0], w[0]);
            Reg b = R::multiply_add16(v[1], w[0]);
            const auto step = [&]<int kStep>() LOX_INLINE_LAMBDA {
              constexpr int kFrom = kStep * kParts / 8;
              constexpr int kQuads = kStep * kParts % 8;
              add_to(a, quads_from<kQuads>(v[kFrom], v[kFrom + 1]), w[kStep]);
              add_to(b,
                     quads_from<kQuads>(v[kFrom + 1],
                                        v[kFrom + 2 < kLoads ? kFrom + 2 : 0]),
                     w[kStep]);
            };
            step.template operator()<1>();
            step.template operator()<2>();
            step.template operator()<3>();
            step.template operator()<4>();
            step.template operator()<5>();
            const Reg sum = kParts == 1
                                ? R::add32(R::even32(a, b), R::odd32(a, b))
                                : halves(a, b);
            return R::add32(half, sum);
          };
          const ptrdiff_t from = 2 * (base + c.first[0]);
          const Reg sum = sums(row + from);
          R::template store<false>(reinterpret_cast<uint8_t *>(to),
                                   R::permute_quads(Sums::template words_of<S>(
                                       sum, sums(below + from))));
        });
  }
  // 64 bytes of a and then b, from quad K on.
  template <int K>
  LOX_OP Reg quads_from(Reg a, Reg b) {
    return _mm512_alignr_epi64(b, a, K);
  }
#endif
  // Outputs of two phases in turn, of so many sums each.
  template <int kUnit>
  LOX_OP void put_phases(Reg a, Reg b, int16_t *dst) {
    Reg low = a;
    Reg high = b;
    if constexpr (kUnit == 1) {
      low = R::unpack_low32(a, b);
      high = R::unpack_high32(a, b);
    } else if constexpr (kUnit == 2) {
      low = R::unpack_low64(a, b);
      high = R::unpack_high64(a, b);
    }
    auto *const to = reinterpret_cast<uint8_t *>(dst);
    R::template store<false>(to, R::interleave_low_lanes(low, high));
    R::template store<false>(to + n, R::interleave_high_lanes(low, high));
  }
};

}  // namespace lox::LOX_SET
