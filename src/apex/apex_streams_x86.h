// SPDX-License-Identifier: Apache-2.0
//
// Scaling across by 4:1 and 3:2, where every sample is loaded once: what
// outputs share moves from one to the next in registers. A period is four
// samples and an output, or six and four, and its pairs of samples are put
// apart: register i has pair i of many periods. AVX2, which moves elements
// within lanes only, has at 3:2 the row in one lane and the one below in the
// other.
#pragma once

#include "apex/apex_sums_x86.h"
#include "apex/apex_x86.h"
#include "simd/simd.h"

namespace lox::LOX_SET {

template <class V, class R = typename V::R>
struct ApexStreams : ApexSums<V> {
  using Sums = ApexSums<V>;
  using Reg = typename Sums::Reg;
  using Sums::n;

  static constexpr bool kBoth = n == 32;
  // At 3:2, registers of two rows, and sums of a row in one.
  static constexpr int kRows = kBoth ? 1 : 2;
  static constexpr int kRowSums = ApexOps<V>::kStreamSums;

  template <ApexSample S>
  LOX_OP void across(const ApexColumns &c, const ApexPiece *pieces,
                     int32_t count, int16_t *dst) {
    if (c.parts == 1) return across<S, 1>(c, pieces, count, dst);
    if (c.parts == 2) return across<S, 2>(c, pieces, count, dst);
    across<S, 4>(c, pieces, count, dst);
  }
  template <ApexSample S, int kParts>
  LOX_OP void across(const ApexColumns &c, const ApexPiece *pieces,
                     int32_t count, int16_t *dst) {
    if constexpr (S != ApexSample::k14 || kParts == 4) {
      if (c.phases == 1) {
        quarters<S, kParts>(c, pieces, count, dst);
      } else {
        two_thirds<S, kParts>(c, pieces, count, dst);
      }
    }
  }

 private:
  // --- pairs apart -----------------------------------------------------------

  // Where the bytes, or the elements, of a register come from.
  template <class T>
  struct Table {
    static constexpr int kCount = n / static_cast<int>(sizeof(T));
    alignas(64) T at[kCount];

    LOX_INLINE Reg load() const {
      return R::load(reinterpret_cast<const uint8_t *>(at));
    }
  };
  // Pairs of bytes as words, of which first(i) is the first byte for element i
  // of a lane, or else -1.
  template <class First>
  static constexpr Table<uint8_t> bytes_at(int parts, First first) {
    Table<uint8_t> t{};
    for (int i = 0; i < n; ++i) {
      const int at = first(i / 4 % 4);
      t.at[i] = static_cast<uint8_t>(
          i % 2 != 0 || at < 0 ? 0x80 : at + i % 4 / 2 * parts);
    }
    return t;
  }
  // The words of two samples of some parts in turn.
  static constexpr Table<uint8_t> words_in_turn(int parts) {
    Table<uint8_t> t{};
    for (int i = 0; i < n; ++i) {
      const int sum = i / 4 % 4;
      const int word =
          sum / parts * 2 * parts + sum % parts + i % 4 / 2 * parts;
      t.at[i] = static_cast<uint8_t>(2 * word + i % 2);
    }
    return t;
  }
#if defined(LOX_SET_avx512)
  template <class Place>
  static constexpr Table<uint32_t> elements_at(Place place) {
    Table<uint32_t> t{};
    for (int i = 0; i < n / 4; ++i) t.at[i] = static_cast<uint32_t>(place(i));
    return t;
  }
  LOX_OP Reg permute(Reg a, Reg places, Reg b) {
    return _mm512_permutex2var_epi32(a, places, b);
  }
#endif

  // A row, or two of them.
  template <bool kTwo>
  struct Row {
    const uint8_t *p;
    ptrdiff_t below;

    LOX_INLINE Reg load(ptrdiff_t at) const {
      if constexpr (kTwo) {
        return R::load_lanes(p + at, below);
      } else {
        return R::load(p + at);
      }
    }
  };
  // The kPairs pairs of as many periods as registers hold.
  template <ApexSample S, int kPairs, int kParts>
  struct Pairs {
    static constexpr bool kBytes = S == ApexSample::kByte;
    // Of a row that are loaded.
    static constexpr int kSumsOf = kPairs == 2 ? n / 4 : kRowSums;
    static constexpr int kLoaded = 2 * kPairs * kSumsOf * apex_bytes(S);
    Reg places[6];

    LOX_INLINE Pairs() {
      if constexpr (!kBytes) {
        if constexpr (kParts > 1) {
          constexpr auto kTurn = words_in_turn(kParts);
          places[5] = kTurn.load();
        }
        if constexpr (n == 64) separate_all();
      } else if constexpr (kPairs == 2 || kParts == 4) {
        constexpr auto kFirst = bytes_at(kParts, place_of<0>);
        constexpr auto kSecond = bytes_at(kParts, place_of<1>);
        places[0] = kFirst.load();
        places[1] = kSecond.load();
      } else {
        // The first two pairs of periods in the first half of 24 bytes and of
        // those in the second, and the third pair.
        constexpr auto kFirst =
            bytes_at(kParts, [](int i) { return half_place(i % 2, i / 2); });
        constexpr auto kSecond = bytes_at(
            kParts, [](int i) { return half_place(i % 2, i / 2) + 4; });
        constexpr auto kThird = bytes_at(
            kParts, [](int i) { return i < 2 ? half_place(i, 2) : -1; });
        constexpr auto kLast = bytes_at(kParts, [](int i) {
          return i < 2 ? -1 : half_place(i - 2, 2) + 4;
        });
        places[0] = kFirst.load();
        places[1] = kSecond.load();
        places[2] = kThird.load();
        places[3] = kLast.load();
      }
#if defined(LOX_SET_avx512)
      if constexpr (kBytes && kPairs == 3) {
        // Of 24 bytes for each lane the first 16 and the last.
        constexpr auto kLow =
            elements_at([](int i) { return lane_place(i / 4 * 6 + i % 4); });
        constexpr auto kHigh = elements_at(
            [](int i) { return lane_place(i / 4 * 6 + i % 4 + 2); });
        places[4] = kLow.load();
        places[5] = kHigh.load();
      }
#endif
    }
    template <int kPair>
    static constexpr int place_of(int i) {
      return i / kParts * 2 * kPairs * kParts + 2 * kPair * kParts + i % kParts;
    }
    static constexpr int half_place(int i, int pair) {
      return i / kParts * 6 * kParts + 2 * pair * kParts + i % kParts;
    }
    // In two registers that are 32 bytes apart.
    static constexpr int lane_place(int element) {
      return element < 16 ? element : element + 8;
    }

    template <class AnyRow>
    LOX_INLINE void load(AnyRow row, Reg (&pairs)[kPairs]) const {
      if constexpr (!kBytes) {
        LOX_UNROLL
        for (int i = 0; i < kPairs; ++i) {
          pairs[i] = Sums::template samples<S>(row.load(4 * i * kSumsOf));
          if constexpr (kParts > 1) {
            pairs[i] = R::shuffle8(pairs[i], places[5]);
          }
        }
        separate(pairs);
      } else if constexpr (kPairs == 2) {
        const Reg v = row.load(0);
        pairs[0] = R::shuffle8(v, places[0]);
        pairs[1] = R::shuffle8(v, places[1]);
      } else {
        Reg low;
        Reg high;
        load_24(row, low, high);
        if constexpr (kParts == 4) {
          pairs[0] = R::shuffle8(low, places[0]);
          pairs[1] = R::shuffle8(low, places[1]);
          pairs[2] = R::shuffle8(high, places[1]);
        } else {
          const Reg first = R::shuffle8(low, places[0]);
          const Reg second = R::shuffle8(high, places[1]);
          pairs[0] = R::unpack_low64(first, second);
          pairs[1] = R::unpack_high64(first, second);
          pairs[2] = R::bit_or(R::shuffle8(low, places[2]),
                               R::shuffle8(high, places[3]));
        }
      }
    }

   private:
    // The first and the last 16 of 24 bytes for each lane.
    template <class AnyRow>
    LOX_INLINE void load_24(AnyRow row, Reg &low, Reg &high) const {
#if defined(LOX_SET_avx512)
      const Reg a = row.load(0);
      const Reg b = row.load(32);
      low = permute(a, places[4], b);
      high = permute(a, places[5], b);
#else
      low = row.load(0);
      high = row.load(8);
#endif
    }
#if defined(LOX_SET_avx512)
    static constexpr int source(int pair, int i) {
      return (i / kParts * kPairs + pair) * kParts + i % kParts;
    }
    // Of two registers, then of these and a third.
    template <int kPair>
    LOX_INLINE void separate_one() {
      constexpr auto kFirst =
          elements_at([](int i) { return source(kPair, i) % 32; });
      places[kPair] = kFirst.load();
      if constexpr (kPairs == 3) {
        constexpr auto kThen = elements_at([](int i) {
          const int from = source(kPair, i);
          return from < 32 ? i : from - 16;
        });
        third[kPair] = kThen.load();
      }
    }
    LOX_INLINE void separate_all() {
      separate_one<0>();
      separate_one<1>();
      if constexpr (kPairs == 3) separate_one<2>();
    }
    LOX_INLINE void separate(Reg (&v)[kPairs]) const {
      Reg by[kPairs];
      LOX_UNROLL
      for (int i = 0; i < kPairs; ++i) {
        by[i] = permute(v[0], places[i], v[1]);
        if constexpr (kPairs == 3) by[i] = permute(by[i], third[i], v[2]);
      }
      LOX_UNROLL
      for (int i = 0; i < kPairs; ++i) v[i] = by[i];
    }
    Reg third[3];
#else
    LOX_INLINE void separate_all() {}
    LOX_INLINE void separate(Reg (&v)[2]) const {
      const Reg a = v[0];
      const Reg b = v[1];
      if constexpr (kParts == 4) {
        v[0] = R::interleave_low_lanes(a, b);
        v[1] = R::interleave_high_lanes(a, b);
      } else {
        v[0] = R::permute_quads(kParts == 1 ? R::even32(a, b)
                                            : R::unpack_low64(a, b));
        v[1] = R::permute_quads(kParts == 1 ? R::odd32(a, b)
                                            : R::unpack_high64(a, b));
      }
    }
    LOX_INLINE void separate(Reg (&v)[3]) const {
      if constexpr (kParts == 4) return;
      const Reg a = v[0];
      const Reg b = v[1];
      const Reg c = v[2];
      if constexpr (kParts == 1) {
        // Elements 1, 2, 4, 5 of all twelve, and 6, 7, 9, 10.
        const Reg early = pick32<1, 2, 0, 1>(a, b);
        const Reg late = pick32<2, 3, 1, 2>(b, c);
        v[0] = pick32<0, 3, 0, 2>(a, late);
        v[1] = pick32<0, 2, 1, 3>(early, late);
        v[2] = pick32<1, 3, 0, 3>(early, c);
      } else {
        // Of each two elements: 0 and 3 of six, 1 and 4, 2 and 5.
        v[0] = pick32<0, 1, 2, 3>(a, b);
        v[1] = pick32<2, 3, 0, 1>(a, c);
        v[2] = pick32<0, 1, 2, 3>(b, c);
      }
    }
    // Of each lane two elements of a and two of b.
    template <int kA, int kB, int kC, int kD>
    LOX_OP Reg pick32(Reg a, Reg b) {
      constexpr int kPlaces = kA | kB << 2 | kC << 4 | kD << 6;
      if constexpr (n == 32) {
        return _mm256_castps_si256(_mm256_shuffle_ps(
            _mm256_castsi256_ps(a), _mm256_castsi256_ps(b), kPlaces));
      } else {
        return _mm_castps_si128(
            _mm_shuffle_ps(_mm_castsi128_ps(a), _mm_castsi128_ps(b), kPlaces));
      }
    }
#endif
  };

  // Of each row's elements in a and then b those from element K on.
  template <int K>
  LOX_OP Reg elements_from(Reg a, Reg b) {
    if constexpr (K == 0) {
      return a;
    } else if constexpr (K == kRowSums) {
      return b;
    } else {
#if defined(LOX_SET_avx512)
      return _mm512_alignr_epi32(b, a, K);
#else
      return R::template bytes_from<4 * K>(a, b);
#endif
    }
  }
  // Where two registers have both rows: their sums of one and of the other.
  template <ApexSample S>
  LOX_OP Reg words_of_both(Reg a, Reg b) {
    return Sums::template words_of<S>(R::interleave_low_lanes(a, b),
                                      R::interleave_high_lanes(a, b));
  }
  LOX_OP void put(int16_t *dst, int i, Reg v) {
    R::template store<false>(reinterpret_cast<uint8_t *>(dst + i * (n / 2)), v);
  }
  // The rows of some pieces, of which loads take kBytes one behind the other.
  template <int kBytes, bool kTwo>
  class Rows {
   public:
    static constexpr int kCount = kTwo ? 1 : 2;
    Row<kTwo> row[kCount];

    LOX_INLINE Rows(const ApexColumns &c, const ApexPiece *pieces,
                    int32_t count, int bytes)
        : piece_(pieces), count_(count), first_(c.first[0]), bytes_(bytes) {
      begin();
    }
    // To the next load.
    LOX_INLINE void advance() {
      if (ahead_ != 0) {
        prefetch(row[0].p, ahead_, kBytes);
        prefetch(row[kCount - 1].p + row[kCount - 1].below, ahead_, kBytes);
      }
      LOX_UNROLL
      for (auto &r : row) r.p += kBytes;
      if (--left_ == 0 && --count_ != 0) {
        ++piece_;
        begin();
      }
    }

   private:
    LOX_INLINE void begin() {
      const ptrdiff_t from = (piece_->base + first_) * bytes_;
      row[0] = {piece_->row + from, piece_->below - piece_->row};
      if constexpr (!kTwo) row[1] = {piece_->below + from, 0};
      left_ = piece_->blocks;
      ahead_ = piece_->ahead;
    }
    const ApexPiece *piece_;
    int32_t count_;
    ptrdiff_t first_, ahead_;
    int bytes_;
    int32_t left_;
  };
  LOX_OP int32_t loads_of(const ApexPiece *pieces, int32_t count) {
    int32_t loads = 0;
    for (; count != 0; --count) loads += pieces++->blocks;
    return loads;
  }

  // --- 4:1 -------------------------------------------------------------------

  // An output takes twelve pairs, two of each of six periods.
  template <ApexSample S, int kParts>
  LOX_OP void quarters(const ApexColumns &c, const ApexPiece *pieces,
                       int32_t count, int16_t *dst) {
    constexpr int kBefore = apex_quarters_before(n / 4, kParts);
    using Own = Pairs<S, 2, kParts>;
    const Own own;
    Reg w[12];
    LOX_UNROLL
    for (int i = 0; i < 12; ++i) w[i] = Sums::load(c.weights + i * (n / 2));
    Rows<Own::kLoaded, false> rows(c, pieces, count, apex_bytes(S));
    int32_t left = loads_of(pieces, count) - kBefore;
    dst += pieces->at;
    if constexpr (n == 64) {
      QuarterSums<S, kParts> sums[2];
      const auto step = [&](Reg(&both)[2]) LOX_INLINE_LAMBDA {
        LOX_UNROLL
        for (int r = 0; r < 2; ++r) {
          Reg pairs[2];
          own.load(rows.row[r], pairs);
          both[r] = sums[r].add(pairs, w);
        }
        rows.advance();
      };
      Reg both[2];
      for (int i = 0; i < kBefore; ++i) step(both);
      for (; left != 0; --left, dst += n / 2) {
        step(both);
        put(dst, 0, Sums::template words_of<S>(both[0], both[1]));
      }
    } else {
      // Pairs are stored and loaded again from where they are wanted, some
      // blocks at a time. Those of the last periods come first next time.
      constexpr int kBlocks = 16;
      constexpr ptrdiff_t kRoom = (kBefore + kBlocks) * n;
      alignas(64) uint8_t apart[2][2][kRoom];
      const auto load = [&](int slot) LOX_INLINE_LAMBDA {
        LOX_UNROLL
        for (int r = 0; r < 2; ++r) {
          Reg pairs[2];
          own.load(rows.row[r], pairs);
          R::template store<false>(apart[r][0] + slot * n, pairs[0]);
          R::template store<false>(apart[r][1] + slot * n, pairs[1]);
        }
        rows.advance();
      };
      const Reg half = R::fill32(1 << (apex_bits(S) - 1));
      for (int i = 0; i < kBefore; ++i) load(i);
      while (left != 0) {
        const int blocks = left < kBlocks ? static_cast<int>(left) : kBlocks;
        left -= blocks;
        for (int i = 0; i < blocks; ++i) load(kBefore + i);
        for (int i = 0; i < blocks; ++i, dst += n / 2) {
          const uint8_t *p = apart[0][0] + i * n;
          // Or else GCC keeps what the next block loads, too, and has no
          // registers left for weights.
          asm("" : "+r"(p));
          Reg both[2];
          LOX_UNROLL
          for (int r = 0; r < 2; ++r) {
            Reg sum = half;
            LOX_UNROLL
            for (int k = 0; k < 12; ++k) {
              Sums::add_to(
                  sum,
                  R::load(p + (2 * r + k % 2) * kRoom + k / 2 * 4 * kParts),
                  w[k]);
            }
            both[r] = sum;
          }
          put(dst, 0, Sums::template words_of<S>(both[0], both[1]));
        }
        LOX_UNROLL
        for (int r = 0; r < 4; ++r) {
          uint8_t *const p = apart[r / 2][r % 2];
          for (int i = 0; i < kBefore; ++i) {
            R::template store<false>(p + i * n, R::load(p + (blocks + i) * n));
          }
        }
      }
    }
  }
  // Sums of the first periods are moved to where the next ones are added, and
  // so on, so that a register of them is complete with the last.
  template <ApexSample S, int kParts>
  struct QuarterSums {
    Reg until[kQuartersAhead] = {};

    LOX_INLINE Reg add(const Reg (&pairs)[2], const Reg (&w)[12]) {
      Reg sum = R::fill32(1 << (apex_bits(S) - 1));
      LOX_UNROLL
      for (int i = 0; i < 6; ++i) {
        const Reg more = R::add32(R::multiply_add16(pairs[0], w[2 * i]),
                                  R::multiply_add16(pairs[1], w[2 * i + 1]));
        if (i > 0) {
          const Reg last = sum;
          sum = elements_from<kRowSums - kParts>(until[i - 1], sum);
          until[i - 1] = last;
        }
        sum = R::add32(sum, more);
      }
      return sum;
    }
  };

  // --- 3:2 -------------------------------------------------------------------

  // Four outputs take five pairs each: from pairs 0, 1, 1 and 2 of a period on.
  template <ApexSample S, int kParts>
  LOX_OP void two_thirds(const ApexColumns &c, const ApexPiece *pieces,
                         int32_t count, int16_t *dst) {
    constexpr int kSets = apex_thirds_before(kRowSums, kParts) + 1;
    using Own = Pairs<S, 3, kParts>;
    const Own own;
    const Reg half = R::fill32(1 << (apex_bits(S) - 1));
    Reg w[20];
    LOX_UNROLL
    for (int i = 0; i < 20; ++i) w[i] = Sums::load(c.weights + i * (n / 2));
    Rows<Own::kLoaded, kBoth> rows(c, pieces, count, apex_bytes(S));
    Reg sets[kRows][kSets][3];
    const auto load = [&](int set) LOX_INLINE_LAMBDA {
      LOX_UNROLL
      for (int r = 0; r < kRows; ++r) own.load(rows.row[r], sets[r][set]);
      rows.advance();
    };
    LOX_UNROLL
    for (int i = 0; i < kSets - 1; ++i) load(i);
    int32_t left = loads_of(pieces, count) - (kSets - 1);
    for (int16_t *to = dst + pieces->at; left != 0;
         --left, to += kBoth ? n : 2 * n) {
      load(kSets - 1);
      Reg sums[kRows][4];
      LOX_UNROLL
      for (int r = 0; r < kRows; ++r) {
        auto &set = sets[r];
        const Reg last = kSets == 3
                             ? set[kSets - 1][0]
                             : elements_from<2 * kParts % (kRowSums + 1)>(
                                   set[0][0], set[1][0]);
        const Reg x[7] = {set[0][0],
                          set[0][1],
                          set[0][2],
                          elements_from<kParts>(set[0][0], set[1][0]),
                          elements_from<kParts>(set[0][1], set[1][1]),
                          elements_from<kParts>(set[0][2], set[1][2]),
                          last};
        LOX_UNROLL
        for (int i = 0; i < 4; ++i) {
          Reg sum = half;
          LOX_UNROLL
          for (int k = 0; k < 5; ++k) {
            Sums::add_to(sum, x[(i + 1) / 2 + k], w[5 * i + k]);
          }
          sums[r][i] = sum;
        }
        LOX_UNROLL
        for (int s = 0; s < kSets - 1; ++s) {
          LOX_UNROLL
          for (int i = 0; i < 3; ++i) set[s][i] = set[s + 1][i];
        }
      }
      put_in_turn<S, kParts>(sums, to);
    }
  }
  // Four outputs of each period in turn.
  template <ApexSample S, int kParts>
  LOX_OP void put_in_turn(const Reg (&sums)[kRows][4], int16_t *dst) {
    if constexpr (kBoth) {
      constexpr int kOther = kParts == 4 ? 1 : 2;
      const auto &s = sums[0];
      const Reg a = words_of_both<S>(s[0], s[kOther]);
      const Reg b = words_of_both<S>(s[3 - kOther], s[3]);
      if constexpr (kParts == 1) {
        put(dst, 0, R::permute_quads(R::unpack_low32(a, b)));
        put(dst, 1, R::permute_quads(R::unpack_high32(a, b)));
      } else {
        put(dst, 0, kParts == 4 ? a : R::unpack_low64(a, b));
        put(dst, 1, kParts == 4 ? b : R::unpack_high64(a, b));
      }
    } else {
      Reg v[4];
      LOX_UNROLL
      for (int i = 0; i < 4; ++i) {
        v[i] = Sums::template words_of<S>(sums[0][i], sums[kRows - 1][i]);
      }
      if constexpr (n == 64 || kParts < 4) {
        const Reg low01 = in_turn<kParts, false>(v[0], v[1]);
        const Reg high01 = in_turn<kParts, true>(v[0], v[1]);
        const Reg low23 = in_turn<kParts, false>(v[2], v[3]);
        const Reg high23 = in_turn<kParts, true>(v[2], v[3]);
        v[0] = in_turn<2 * kParts, false>(low01, low23);
        v[1] = in_turn<2 * kParts, true>(low01, low23);
        v[2] = in_turn<2 * kParts, false>(high01, high23);
        v[3] = in_turn<2 * kParts, true>(high01, high23);
      }
      LOX_UNROLL
      for (int i = 0; i < 4; ++i) put(dst, i, v[i]);
    }
  }
  // So many elements of a and of b in turn: of their first halves or second.
  template <int kUnit, bool kSecond>
  LOX_OP Reg in_turn(Reg a, Reg b) {
#if defined(LOX_SET_avx512)
    constexpr auto kPlaces = elements_at([](int i) {
      return i / (2 * kUnit) * kUnit + i % kUnit + i / kUnit % 2 * 16 +
             (kSecond ? 8 : 0);
    });
    return permute(a, kPlaces.load(), b);
#else
    if constexpr (kUnit == 1) {
      return kSecond ? R::unpack_high32(a, b) : R::unpack_low32(a, b);
    } else if constexpr (kUnit == 2) {
      return kSecond ? R::unpack_high64(a, b) : R::unpack_low64(a, b);
    } else {
      return kSecond ? b : a;
    }
#endif
  }
};

}  // namespace lox::LOX_SET
