// SPDX-License-Identifier: Apache-2.0
//
// Look-ups without loads of single entries: a table of 128 bytes is two
// registers, of which one instruction takes 64 entries at once. Larger ones are
// several such, of whose answers the upper bits of the index choose, and tables
// of words are one of their low and one of their high bytes. Red, green and
// blue are looked up together, as every part of a table is then loaded once.
#if defined(LOX_SET_avx512)
#include "hdr/tone_avx512.h"

#include "hdr/curves.h"
#include "hdr/tone_x86.h"

namespace lox::LOX_SET {

namespace {

using V = ToneOps<Wide>;
using Bytes = __m512i;

// 64 pixels of words. Packing and unpacking both work within lanes, so that
// bytes between the two may lie in the order of packing.
struct Pixels {
  V::Words half[2];
};

LOX_INLINE Pixels load(const uint16_t *p) {
  return {{V::load(p), V::load(p + V::n / 2)}};
}

LOX_INLINE Bytes fill(int v) { return _mm512_set1_epi8(static_cast<char>(v)); }

LOX_INLINE Bytes low_bytes(Pixels v) {
  const V::Words low = _mm512_set1_epi16(0xFF);
  return _mm512_packus_epi16(_mm512_and_si512(v.half[0], low),
                             _mm512_and_si512(v.half[1], low));
}

// Of words that are below 256 when shifted so.
template <int kShift>
LOX_INLINE Bytes shifted_bytes(Pixels v) {
  return _mm512_packus_epi16(V::shift_right<kShift>(v.half[0]),
                             V::shift_right<kShift>(v.half[1]));
}

LOX_INLINE Pixels words(Bytes low, Bytes high) {
  return {{_mm512_unpacklo_epi8(low, high), _mm512_unpackhi_epi8(low, high)}};
}

template <int kCount>
struct Several {
  Bytes v[kCount];
};

// Entries of a table of 128 << kLevel bytes: the low 7 bits of `index` are
// those of the entry's number, set[i] is where bit 7 + i is set.
template <int kLevel, int kCount>
LOX_INLINE Several<kCount> entries(const uint8_t *table,
                                   const Several<kCount> &index,
                                   const __mmask64 (&set)[kCount][3]) {
  Several<kCount> found;
  if constexpr (kLevel == 0) {
    const Bytes low = _mm512_load_si512(table);
    const Bytes high = _mm512_load_si512(table + 64);
    for (int c = 0; c < kCount; ++c) {
      found.v[c] = _mm512_permutex2var_epi8(low, index.v[c], high);
    }
  } else {
    const auto a = entries<kLevel - 1>(table, index, set);
    const auto b = entries<kLevel - 1>(table + (64 << kLevel), index, set);
    for (int c = 0; c < kCount; ++c) {
      found.v[c] = _mm512_mask_blend_epi8(set[c][kLevel - 1], a.v[c], b.v[c]);
    }
  }
  return found;
}

// Of a table of 256 bytes.
LOX_INLINE Bytes entry(const uint8_t *table, Bytes index) {
  const __mmask64 set[1][3] = {{_mm512_movepi8_mask(index)}};
  return entries<1, 1>(table, {{index}}, set).v[0];
}

// Codes to light.
LOX_INLINE void linear(Pixels (&c)[3], const HdrTables &tables) {
  Several<3> index;
  __mmask64 set[3][3];
  for (int i = 0; i < 3; ++i) {
    index.v[i] = low_bytes(c[i]);
    const Bytes upper = shifted_bytes<7>(c[i]);
    for (int bit = 0; bit < 3; ++bit) {
      set[i][bit] = _mm512_test_epi8_mask(upper, fill(1 << bit));
    }
  }
  const auto low = entries<3>(tables.linear[0], index, set);
  const auto high = entries<3>(tables.linear[1], index, set);
  for (int i = 0; i < 3; ++i) c[i] = words(low.v[i], high.v[i]);
}

template <class Matrix>
LOX_INLINE void mix(Pixels (&c)[3]) {
  for (int h = 0; h < 2; ++h) {
    const auto rgb = V::combine(c[0].half[h], c[1].half[h], c[2].half[h]);
    c[0].half[h] = V::mix<Matrix::kR>(rgb);
    c[1].half[h] = V::mix<Matrix::kG>(rgb);
    c[2].half[h] = V::mix<Matrix::kB>(rgb);
  }
}

LOX_INLINE void brighten(Pixels (&c)[3], const HdrTables &tables) {
  Pixels m;
  for (int h = 0; h < 2; ++h) {
    m.half[h] = V::max(V::max(c[0].half[h], c[1].half[h]), c[2].half[h]);
  }
  const Bytes index = shifted_bytes<7>(m);
  const Pixels first =
      words(entry(tables.gain[0], index), entry(tables.gain[1], index));
  const Pixels rise =
      words(entry(tables.rise[0], index), entry(tables.rise[1], index));
  for (int h = 0; h < 2; ++h) {
    const V::Words part =
        _mm512_and_si512(V::shift_right<3>(m.half[h]), _mm512_set1_epi16(15));
    const V::Words gain = _mm512_and_si512(
        V::add(first.half[h], _mm512_mullo_epi16(part, rise.half[h])),
        _mm512_set1_epi16(-16));
    for (Pixels &one : c) one.half[h] = V::brighten(one.half[h], gain);
  }
}

// Light of 12 bits to the codes of gamma.
LOX_INLINE Bytes gamma(Pixels light, const HdrTables &tables) {
  const Bytes sixteenth = shifted_bytes<4>(light);
  const Bytes low = low_bytes(light);
  const Bytes within = _mm512_and_si512(low, fill(15));
  const Bytes steps = entry(tables.steps, sixteenth);
  const Bytes one = fill(1);
  Bytes v = entry(tables.sixteenths, sixteenth);
  v = _mm512_mask_add_epi8(
      v, _mm512_cmpgt_epu8_mask(within, _mm512_and_si512(steps, fill(15))), v,
      one);
  v = _mm512_mask_add_epi8(
      v,
      _mm512_cmpgt_epu8_mask(
          within, _mm512_and_si512(V::shift_right<4>(steps), fill(15))),
      v, one);
  return _mm512_mask_blend_epi8(_mm512_cmplt_epu8_mask(sixteenth, fill(16)), v,
                                entry(tables.gamma, low));
}

void split(uint8_t *low, uint8_t *high, int i, int word) {
  low[i] = static_cast<uint8_t>(word);
  high[i] = static_cast<uint8_t>(word >> 8);
}

void fill_tables(HdrTables *tables, const vexo_hdr_context &context) {
  const uint16_t *const linear =
      context.hlg != 0 ? context.hlg_linear : context.pq;
  for (int i = 0; i < 1024; ++i) {
    split(tables->linear[0], tables->linear[1], i, linear[i]);
  }
  for (int i = 0; i < 256; ++i) {
    const int first = context.gain[i];
    split(tables->gain[0], tables->gain[1], i, first * 16);
    split(tables->rise[0], tables->rise[1], i, context.gain[i + 1] - first);
    tables->gamma[i] = kGamma[i];
    tables->sixteenths[i] = kGamma[16 * i];
    tables->steps[i] = kGammaSteps[i];
  }
}

template <bool kHlg, class Matrix>
void to_sdr(HdrRun *run, const HdrTables &tables, int n) {
  // Of packing, undone.
  const __m512i order = _mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7);
  uint8_t *const to[] = {run->red, run->green, run->blue};
  for (int x = 0; x < n; x += V::n) {
    Pixels c[3] = {load(run->r + x), load(run->g + x), load(run->b + x)};
    linear(c, tables);
    mix<Matrix>(c);
    if constexpr (kHlg) {
      for (Pixels &one : c) {
        for (V::Words &v : one.half) v = V::shift_right<3>(v);
      }
    } else {
      brighten(c, tables);
    }
    for (int i = 0; i < 3; ++i) {
      _mm512_store_si512(to[i] + x,
                         _mm512_permutexvar_epi64(order, gamma(c[i], tables)));
    }
  }
}

}  // namespace

constinit const HdrRegisterRows hdr_register_rows = {
    .fill = fill_tables,
    .to_sdr = {{to_sdr<false, Standard>, to_sdr<false, Mild>},
               {to_sdr<true, Standard>, to_sdr<true, Mild>}},
};

}  // namespace lox::LOX_SET

#endif
