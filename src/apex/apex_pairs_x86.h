// SPDX-License-Identifier: Apache-2.0
//
// Pairs of samples put apart by their place in a period, on the x86 backends:
// register i has pair i of many periods.
#pragma once

#include "apex/apex_x86.h"
#include "simd/simd.h"

namespace lox::LOX_SET {

template <class V, class R = typename V::R>
struct ApexPairs : ApexSums<V> {
  using Sums = ApexSums<V>;
  using Reg = typename Sums::Reg;
  using Sums::n;

  // At 3:2, sums of a row in a register. AVX2, which moves elements within
  // lanes only, has the row in one lane and the one below in the other.
  static constexpr bool kBoth = n == 32;
  static constexpr int kRowSums = ApexOps<V>::kStreamSums;

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
};

}  // namespace lox::LOX_SET
