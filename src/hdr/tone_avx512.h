// SPDX-License-Identifier: Apache-2.0
//
// Look-ups without loads of single entries on AVX-512: a table of 64 words is
// two registers, of which one instruction takes 32 entries at once. Larger ones
// are several such, of whose answers the upper bits of the index choose. Red,
// green and blue are looked up together, as every part of a table is then
// loaded once.
#pragma once

#include "hdr/curves.h"
#include "hdr/hdr_rows.h"
#include "hdr/tone_x86.h"

namespace lox::LOX_SET {

template <int kCount>
struct RegisterTables {
  using V = ToneOps<Wide>;
  using Words = V::Words;
  struct Several {
    Words v[kCount];
  };

  template <class Each>
  LOX_OP Several each(Each make) {
    Several s;
    for (int c = 0; c < kCount; ++c) s.v[c] = make(c);
    return s;
  }
  // Where bit `kBit` of the index is set `b`, else `a`.
  template <int kBit>
  LOX_OP Several choose(const Several &index, const Several &a,
                        const Several &b) {
    return each([&](int c) LOX_INLINE_LAMBDA {
      return _mm512_mask_blend_epi16(
          _mm512_test_epi16_mask(
              index.v[c], _mm512_set1_epi16(static_cast<short>(1 << kBit))),
          a.v[c], b.v[c]);
    });
  }
  LOX_OP Several entries_of_64(const uint16_t *table, const Several &index) {
    const Words low = _mm512_load_si512(table);
    const Words high = _mm512_load_si512(table + 32);
    return each([&](int c) LOX_INLINE_LAMBDA {
      return _mm512_permutex2var_epi16(low, index.v[c], high);
    });
  }
  // Entries of 64 << kLevel.
  template <int kLevel>
  LOX_OP Several entries(const uint16_t *table, const Several &index) {
    if constexpr (kLevel == 0) {
      return entries_of_64(table, index);
    } else {
      const Several a = entries<kLevel - 1>(table, index);
      const Several b = entries<kLevel - 1>(table + (32 << kLevel), index);
      return choose<kLevel + 5>(index, a, b);
    }
  }
};

template <bool kHlg, class Matrix>
static void to_sdr_in_registers(HdrRun *run, const HdrTables &tables, int n) {
  using V = ToneOps<Wide>;
  using T = RegisterTables<3>;
  using T1 = RegisterTables<1>;
  const __m512i low_4 = _mm512_set1_epi16(15);
  const __m512i one = _mm512_set1_epi16(1);
  for (int x = 0; x < n; x += V::n / 2) {
    const T::Several codes = {
        {V::load(run->r + x), V::load(run->g + x), V::load(run->b + x)}};
    T::Several light = T::entries<4>(tables.linear, codes);
    const auto rgb = V::combine(light.v[0], light.v[1], light.v[2]);
    light = {{V::mix<Matrix::kR>(rgb), V::mix<Matrix::kG>(rgb),
              V::mix<Matrix::kB>(rgb)}};
    if constexpr (kHlg) {
      light = T::each([&](int c) LOX_INLINE_LAMBDA {
        return V::shift_right<3>(light.v[c]);
      });
    } else {
      const V::Words m = V::max(V::max(light.v[0], light.v[1]), light.v[2]);
      const T1::Several entry = {{V::shift_right<7>(m)}};
      const V::Words part = _mm512_and_si512(V::shift_right<3>(m), low_4);
      const V::Words gain = _mm512_and_si512(
          V::add(T1::entries<2>(tables.gain, entry).v[0],
                 _mm512_mullo_epi16(part,
                                    T1::entries<2>(tables.rise, entry).v[0])),
          _mm512_set1_epi16(-16));
      light = T::each([&](int c) LOX_INLINE_LAMBDA {
        return V::brighten(light.v[c], gain);
      });
    }
    const T::Several sixteenths = T::each(
        [&](int c) LOX_INLINE_LAMBDA { return V::shift_right<4>(light.v[c]); });
    const T::Several parts = T::entries<2>(kGammaSteps, sixteenths);
    const T::Several small = T::entries<2>(tables.gamma, light);
    uint8_t *const to[] = {run->red, run->green, run->blue};
    for (int c = 0; c < 3; ++c) {
      const V::Words part = parts.v[c];
      const V::Words within = _mm512_and_si512(light.v[c], low_4);
      V::Words v = V::shift_right<8>(part);
      v = _mm512_mask_add_epi16(
          v, _mm512_cmpge_epu16_mask(within, _mm512_and_si512(part, low_4)), v,
          one);
      v = _mm512_mask_add_epi16(
          v,
          _mm512_cmpge_epu16_mask(
              within, _mm512_and_si512(V::shift_right<4>(part), low_4)),
          v, one);
      v = _mm512_mask_blend_epi16(
          _mm512_cmplt_epu16_mask(light.v[c], _mm512_set1_epi16(256)), v,
          small.v[c]);
      _mm256_store_si256(reinterpret_cast<__m256i *>(to[c] + x),
                         _mm512_cvtepi16_epi8(v));
    }
  }
}

}  // namespace lox::LOX_SET
