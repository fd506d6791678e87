// SPDX-License-Identifier: Apache-2.0
//
// Sums of Lanczos filters on the x86 backends: products of words, two by two.
// Of a row the neighbours that an output takes come beside each other, of two
// rows the words of a column.
#pragma once

#include "apex/apex_rows.h"
#include "simd/simd.h"

namespace lox::LOX_SET {

template <class V, class R = typename V::R>
struct ApexOps {
  using Reg = typename R::Reg;
  static constexpr int n = static_cast<int>(sizeof(Reg));
  static constexpr int kRegisterBytes = n;
  // Times n columns that are summed down at once.
  static constexpr int kDownTimes = 2;
  static constexpr int kPhaseBytes = n;
#if defined(LOX_SET_avx512)
  static constexpr bool kPicks = true;
#else
  static constexpr bool kPicks = false;
#endif

  LOX_OP Reg load(const int16_t *p) {
    return R::load(reinterpret_cast<const uint8_t *>(p));
  }
  LOX_OP void add_to(Reg &sum, Reg samples, Reg weights) {
    sum = R::add32(sum, R::multiply_add16(samples, weights));
  }
  // Words as loaded to samples.
  template <ApexSample S>
  LOX_OP Reg samples(Reg v) {
    if constexpr (S == ApexSample::kLow10) {
      return R::bit_and(v, R::fill16(1023));
    } else if constexpr (S == ApexSample::kHigh10) {
      return R::template shift_right16<6>(v);
    } else {
      return v;
    }
  }
  // A register of words, from bytes or words.
  template <ApexSample S>
  LOX_OP Reg load_samples(const uint8_t *p) {
    if constexpr (S == ApexSample::kByte) {
      return widened(p);
    } else {
      return samples<S>(R::load(p));
    }
  }
  LOX_OP Reg widened(const uint8_t *p) {
    if constexpr (n == 16) {
      return _mm_cvtepu8_epi16(
          _mm_loadl_epi64(reinterpret_cast<const __m128i *>(p)));
    } else {
      return _mm256_cvtepu8_epi16(
          _mm_loadu_si128(reinterpret_cast<const __m128i *>(p)));
    }
  }

  // --- across ----------------------------------------------------------------

  // A block is two registers of sums.
  static constexpr int kSums = n / 4;

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
  // Sums of a row and of the one below.
  template <ApexSample S>
  LOX_OP Reg words_of(Reg sum, Reg below) {
    constexpr int kShift = apex_bits(S);
    return R::select_odd16(R::template shift_right32<kShift>(sum),
                           R::template shift_left32<16 - kShift>(below));
  }
  template <ApexSample S>
  LOX_OP void put_pairs(Reg sum, Reg below, int16_t *dst) {
    R::template store<false>(reinterpret_cast<uint8_t *>(dst),
                             words_of<S>(sum, below));
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
  LOX_OP __m128i load_16(const uint8_t *p) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i *>(p));
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
            add_to(sum, R::shuffle8(samples<S>(load_lanes<kTwo>(p, at)), place),
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
          put_pairs<S>(a0, b0, to);
          put_pairs<S>(a1, b1, to + n / 2);
        });
  }

  // The sums of an output, in parts that are still to be added.
  template <ApexSample S, int kParts>
  LOX_OP Reg direct_sum(const uint8_t *from, const int16_t *weights,
                        int32_t steps) {
    Reg sum = R::zero();
    for (int32_t k = 0; k < steps; ++k) {
      Reg v = load_samples<S>(from + k * (n / 2) * apex_bytes(S));
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
          put_pairs<S>(sum, sums(below + base, first, weights), to);
        });
  }
  // Of each lane's elements 0 and 2, and 1 and 3: of a and b in turn.
  LOX_OP Reg adjacent(Reg a, Reg b) {
    return R::add32(R::unpack_low32(a, b), R::unpack_high32(a, b));
  }
  LOX_OP Reg halves(Reg a, Reg b) {
    return R::add32(R::unpack_low64(a, b), R::unpack_high64(a, b));
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
            Of512::add_to(a0, picked<S, kTwo>(row + from0, place0), w0);
            Of512::add_to(b0, picked<S, kTwo>(below + from0, place0), w0);
            Of512::add_to(a1, picked<S, kTwo>(row + from1, place1), w1);
            Of512::add_to(b1, picked<S, kTwo>(below + from1, place1), w1);
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

  // --- across, by phases -----------------------------------------------------

  template <ApexSample S>
  LOX_OP void phases(const ApexColumns &c, const ApexPiece *pieces,
                     int32_t count, int16_t *dst) {
    const int32_t sums = apex_sums(c.parts);
    if constexpr (S != ApexSample::kByte) {
#if defined(LOX_SET_avx512)
      if constexpr (S == ApexSample::k14) {
        two_phases_of_words<S, 4>(c, pieces, count, dst);
      } else if (c.phases == 1) {
        if (sums == 1) return quarters<S, 1>(c, pieces, count, dst);
        quarters<S, 2>(c, pieces, count, dst);
      } else {
        if (sums == 1) return two_phases_of_words<S, 1>(c, pieces, count, dst);
        two_phases_of_words<S, 2>(c, pieces, count, dst);
      }
#endif
    } else if (c.phases == 1) {
      if (c.lane == 16) return one_phase<true>(c, pieces, count, dst);
      one_phase<false>(c, pieces, count, dst);
    } else {
      if (sums == 1) return two_phases<1>(c, pieces, count, dst);
      if (sums == 2) return two_phases<2>(c, pieces, count, dst);
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
          put_pairs<ApexSample::kByte>(a0, b0, to);
          put_pairs<ApexSample::kByte>(a1, b1, to + n / 2);
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
    Reg first[5];
    Reg second[5];
    LOX_UNROLL
    for (int i = 0; i < 5; ++i) {
      first[i] = load(c.weights + i * n);
      second[i] = load(c.weights + i * n + 3 * (n / 2));
    }
    for_blocks<2 * kSums>(
        c, pieces, count, dst,
        [&](const uint8_t *row, const uint8_t *below, ptrdiff_t base, ptrdiff_t,
            int16_t *to) LOX_INLINE_LAMBDA {
          const auto sums = [&](const uint8_t *p, Reg &a,
                                Reg &b) LOX_INLINE_LAMBDA {
            a = half;
            b = half;
            LOX_UNROLL
            for (int i = 0; i < 6; i += 2) {
              const Reg v =
                  load_window<kUnit == 1>(p, i / 2, step, apart, lanes);
              const Reg even = R::shuffle8(v, place[0]);
              const Reg odd = R::shuffle8(v, place[1]);
              add_to(a, even, first[i]);
              if (i > 0) add_to(b, even, second[i - 1]);
              if (i < 4) add_to(a, odd, first[i + 1]);
              add_to(b, odd, second[i]);
            }
          };
          Reg a[2];
          Reg b[2];
          sums(row + (base + c.first[0]), a[0], a[1]);
          sums(below + (base + c.first[0]), b[0], b[1]);
          put_phases<kUnit>(words_of<ApexSample::kByte>(a[0], b[0]),
                            words_of<ApexSample::kByte>(a[1], b[1]), to);
        });
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
    Reg first[5];
    Reg second[5];
    LOX_UNROLL
    for (int i = 0; i < 5; ++i) {
      first[i] = load(c.weights + i * n);
      second[i] = load(c.weights + i * n + 3 * (n / 2));
    }
    for_blocks<2 * kSums>(
        c, pieces, count, dst,
        [&](const uint8_t *row, const uint8_t *below, ptrdiff_t base, ptrdiff_t,
            int16_t *to) LOX_INLINE_LAMBDA {
          const auto sums = [&](const uint8_t *p, Reg &a,
                                Reg &b) LOX_INLINE_LAMBDA {
            a = half;
            b = half;
            LOX_UNROLL
            for (int h = 0; h < 2; ++h, p += step) {
              const Reg low = samples<S>(R::load(p));
              const Reg high = samples<S>(R::load(p + n));
              LOX_UNROLL
              for (int j = 0; j < 3; ++j) {
                const int i = 3 * h + j;
                const Reg v = _mm512_permutex2var_epi16(low, place[j], high);
                if (i < 5) add_to(a, v, first[i]);
                if (i > 0) add_to(b, v, second[i - 1]);
              }
            }
          };
          Reg a[2];
          Reg b[2];
          const ptrdiff_t from = 2 * (base + c.first[0]);
          sums(row + from, a[0], a[1]);
          sums(below + from, b[0], b[1]);
          put_phases<kUnit>(words_of<S>(a[0], b[0]), words_of<S>(a[1], b[1]),
                            to);
        });
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
              v[i] = samples<S>(R::load(p + i * n));
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
          R::template store<false>(
              reinterpret_cast<uint8_t *>(to),
              R::permute_quads(words_of<S>(sum, sums(below + from))));
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

  // --- across, many rows -----------------------------------------------------

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
                       ApexOps<Sse41>::template samples<S>(v[i]));
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

  // --- down ------------------------------------------------------------------

  LOX_OP Reg two_weights(const int16_t *w) {
    int both;
    memcpy(&both, w, sizeof both);
    return R::fill32(both);
  }
  // kTimes n columns from x on.
  template <ApexSample S, int kTimes>
  LOX_OP void down(const int16_t *const *pairs, const int16_t *weights,
                   int32_t steps, ptrdiff_t x, uint8_t *dst) {
    const Reg half = R::fill32(1 << (27 - apex_bits(S)));
    Reg sum[kTimes][4];
    LOX_UNROLL
    for (auto &four : sum) {
      LOX_UNROLL
      for (Reg &s : four) s = half;
    }
    for (int32_t k = steps; k != 0; --k, ++pairs, weights += 2) {
      const Reg w = two_weights(weights);
      LOX_UNROLL
      for (int r = 0; r < 4 * kTimes; ++r) {
        add_to(sum[r / 4][r % 4], load(*pairs + 2 * x + r * (n / 2)), w);
      }
    }
    LOX_UNROLL
    for (int t = 0; t < kTimes; ++t) put_down<S>(sum[t], x + t * n, dst);
  }
  template <ApexSample S>
  LOX_OP void put_down(Reg (&sum)[4], ptrdiff_t x, uint8_t *dst) {
    constexpr int kShift = 28 - apex_bits(S);
    for (Reg &s : sum) s = R::template shift_right_signed32<kShift>(s);
    if constexpr (S == ApexSample::kByte) {
      R::template store<false>(dst + x, R::permute_dwords(R::pack_unsigned16(
                                            R::pack_signed32(sum[0], sum[1]),
                                            R::pack_signed32(sum[2], sum[3]))));
    } else {
      constexpr int kMost = S == ApexSample::k14 ? 255 * 64 : 1023;
      LOX_UNROLL
      for (int r = 0; r < 2; ++r) {
        Reg v = R::permute_quads(R::min_unsigned16(
            R::pack_unsigned32(sum[2 * r], sum[2 * r + 1]), R::fill16(kMost)));
        if constexpr (S == ApexSample::kHigh10) {
          v = R::template shift_left16<6>(v);
        }
        R::template store<false>(dst + 2 * x + r * n, v);
      }
    }
  }
};

}  // namespace lox::LOX_SET
