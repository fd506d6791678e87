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
  using Sums::dot_to;
  using Sums::kSums;
  using Sums::load;
  using Sums::n;

  LOX_OP void across(const ApexColumns &c, const ApexPiece *pieces,
                     int32_t count, int16_t *dst) {
    if (c.phases == 1) {
      if (c.lane == 16) return one_phase<true>(c, pieces, count, dst);
      one_phase<false>(c, pieces, count, dst);
    } else {
      if (c.parts == 1) return two_phases<1>(c, pieces, count, dst);
      if (c.parts == 2) return two_phases<2>(c, pieces, count, dst);
      if constexpr (n == 16) two_phases<4>(c, pieces, count, dst);
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
  // Calls put(row, below, dst) for blocks, of which some are fetched of the
  // next rows at a time.
  template <class Put>
  LOX_OP void for_groups(const ApexColumns &c, const ApexPiece *piece,
                         int32_t count, int16_t *dst, Put put) {
    constexpr int32_t kGroup = 16;
    for (; count != 0; --count, ++piece) {
      const uint8_t *row = piece->row + piece->base + c.first[0];
      const uint8_t *below = piece->below + piece->base + c.first[0];
      int16_t *to = dst + piece->at;
      int32_t group = 0;
      for (int32_t left = piece->blocks; left != 0; left -= group) {
        group = left < kGroup ? left : kGroup;
        if (piece->ahead != 0) {
          const int bytes = static_cast<int>(group * c.advance);
          prefetch(row, piece->ahead, bytes);
          prefetch(below, piece->ahead, bytes);
        }
        for (int32_t i = group; i != 0; --i, to += 4 * kSums) {
          put(row, below, to);
          row += c.advance;
          below += c.advance;
        }
      }
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
    for_groups(
        c, pieces, count, dst,
        [&](const uint8_t *p, const uint8_t *q, int16_t *to) LOX_INLINE_LAMBDA {
          Reg a0 = half;
          Reg a1 = half;
          Reg b0 = half;
          Reg b1 = half;
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
  template <int kUnit, class MakeSums>
  LOX_OP void phase_blocks(const ApexColumns &c, const ApexPiece *pieces,
                           int32_t count, int16_t *dst, MakeSums sums) {
    for_groups(
        c, pieces, count, dst,
        [&](const uint8_t *p, const uint8_t *q, int16_t *to) LOX_INLINE_LAMBDA {
          Reg a[2];
          Reg b[2];
          sums(p, a[0], a[1]);
          sums(q, b[0], b[1]);
          put_phases<kUnit>(
              Sums::template words_of<ApexSample::kByte>(a[0], b[0]),
              Sums::template words_of<ApexSample::kByte>(a[1], b[1]), to);
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
        dot_to(a, even, w.first[i]);
        if (i > 0) dot_to(b, even, w.second[i - 1]);
        if (i < 4) dot_to(a, odd, w.first[i + 1]);
        dot_to(b, odd, w.second[i]);
      }
    };
    phase_blocks<kUnit>(c, pieces, count, dst, sums);
  }
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
