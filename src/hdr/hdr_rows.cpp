// SPDX-License-Identifier: Apache-2.0
//
// The stages of tone mapping. Look-ups in tables come one at a time and take
// most of the time; everything between them is done in vectors, so that a stage
// is either the one or the other. tone_rule.h has the numbers.
#include "hdr/hdr_rows.h"

#include <string.h>

#include "hdr/tone_rule.h"
#include "simd/simd.h"
#include "simd/words.h"

#if defined(LOX_SET_neon)
#include "hdr/tone_neon.h"
#elif LOX_VECTORS
#include "hdr/tone_x86.h"
#endif
#if defined(LOX_SET_avx512)
#include "hdr/tone_avx512.h"
#endif

namespace lox::LOX_SET {

namespace {

#if LOX_VECTORS

using V = ToneOps<Wide>;
constexpr int kGroup = V::n;
constexpr int kWords = kGroup / 2;

// --- measuring --------------------------------------------------------------

int largest_sample(const uint16_t *luma, int32_t columns, int32_t rows,
                   int32_t step) {
  if (columns < 1) return 0;
  const int32_t whole = columns - columns % kWords;
  const V::Words mask = V::every(step);
  V::Words most = V::fill(0);
  int largest = 0;
  for (int64_t y = 0; y < rows; y += step) {
    const uint16_t *const row = luma + static_cast<ptrdiff_t>(y * columns);
    for (int32_t x = 0; x < whole; x += kWords) {
      most = V::max_kept(most, row + x, mask);
    }
    for (int64_t x = whole; x < columns; x += step) {
      largest = row[x] > largest ? row[x] : largest;
    }
  }
  uint16_t lanes[kWords];
  V::store(lanes, most);
  for (const uint16_t lane : lanes) largest = lane > largest ? lane : largest;
  return largest;
}

// --- samples to codes -------------------------------------------------------

struct Planar16 {
  LOX_INLINE static V::Words luma(const uint8_t *p) { return V::low_10(p); }
  LOX_INLINE static V::Chroma chroma(const uint8_t *u, const uint8_t *v,
                                     int x) {
    return V::chroma_of_planes(u + x, v + x);
  }
};

struct P010 {
  LOX_INLINE static V::Words luma(const uint8_t *p) { return V::high_10(p); }
  LOX_INLINE static V::Chroma chroma(const uint8_t *u, const uint8_t *, int x) {
    return V::chroma_of_pairs(u + 2 * ptrdiff_t{x});
  }
};

template <class Source, int kHalf>
LOX_INLINE void half_group(HdrRun *run, const uint8_t *luma, int x, V::Words r,
                           V::Words g, V::Words b) {
  const auto y = V::luma(Source::luma(luma + 2 * ptrdiff_t{x}));
  V::store(run->r + x, V::to_code(y, V::template twice<kHalf>(r)));
  V::store(run->g + x, V::to_code(y, V::template twice<kHalf>(g)));
  V::store(run->b + x, V::to_code(y, V::template twice<kHalf>(b)));
}

template <class Source>
void to_codes(HdrRun *run, const uint8_t *luma, const uint8_t *u,
              const uint8_t *v, int n) {
  for (int x = 0; x < n; x += kGroup) {
    const V::Chroma c = Source::chroma(u, v, x);
    const V::Words cb = V::centre(c.u);
    const V::Words cr = V::centre(c.v);
    const V::Words r = V::bias_chroma(V::template product<kCrToR>(cr));
    const V::Words g = V::bias_chroma(V::add(V::template product<kCbToG>(cb),
                                             V::template product<kCrToG>(cr)));
    const V::Words b = V::bias_chroma(V::template product<kCbToB>(cb));
    half_group<Source, 0>(run, luma, x, r, g, b);
    half_group<Source, 1>(run, luma, x + kWords, r, g, b);
  }
}

// --- codes to 8-bit RGB -----------------------------------------------------

// Look-ups one by one. A step does several, all loaded before any is stored, as
// compilers do not know that tables are not written.
struct ByLoads {
  static constexpr int kStep = V::kLookUps;
  template <class T>
  LOX_INLINE static void look_up(const T *table, const uint16_t *index, T *out,
                                 int n) {
    for (int i = 0; i < n; i += kStep) {
      T v[kStep];
      for (int k = 0; k < kStep; ++k) v[k] = table[index[i + k]];
      for (int k = 0; k < kStep; ++k) out[i + k] = v[k];
    }
  }
  // An entry and the next one.
  LOX_INLINE static void look_up_pairs(const uint16_t *table,
                                       const uint16_t *index, uint16_t *out,
                                       int n) {
    for (int i = 0; i < n; i += kStep) {
      uint32_t v[kStep];
      for (int k = 0; k < kStep; ++k) {
        memcpy(&v[k], table + index[i + k], sizeof v[k]);
      }
      for (int k = 0; k < kStep; ++k) {
        memcpy(out + 2 * ptrdiff_t{i + k}, &v[k], sizeof v[k]);
      }
    }
  }
};

#if defined(LOX_SET_avx512)
// 16 at a time. Up to three bytes behind an entry are read, too, which are the
// context's: behind each of its tables there is another member.
struct ByGathers {
  template <class T>
  LOX_INLINE static void look_up(const T *table, const uint16_t *index, T *out,
                                 int n) {
    for (int i = 0; i < n; i += 16) {
      const __m512i v = gather<sizeof(T)>(table, index + i);
      if constexpr (sizeof(T) == 1) {
        _mm_storeu_si128(reinterpret_cast<__m128i *>(out + i),
                         _mm512_cvtepi32_epi8(v));
      } else {
        _mm256_storeu_si256(reinterpret_cast<__m256i *>(out + i),
                            _mm512_cvtepi32_epi16(v));
      }
    }
  }
  LOX_INLINE static void look_up_pairs(const uint16_t *table,
                                       const uint16_t *index, uint16_t *out,
                                       int n) {
    for (int i = 0; i < n; i += 16) {
      _mm512_storeu_si512(out + 2 * ptrdiff_t{i},
                          gather<sizeof *table>(table, index + i));
    }
  }

  template <int kSize>
  LOX_INLINE static __m512i gather(const void *table, const uint16_t *index) {
    const __m512i i = _mm512_cvtepu16_epi32(
        _mm256_loadu_si256(reinterpret_cast<const __m256i *>(index)));
    return _mm512_i32gather_epi32(i, table, kSize);
  }
};
#else
using ByGathers = ByLoads;
#endif

LOX_INLINE void brighten(HdrRun *run, int x, V::Words gain) {
  V::store(run->r + x, V::brighten(V::load(run->r + x), gain));
  V::store(run->g + x, V::brighten(V::load(run->g + x), gain));
  V::store(run->b + x, V::brighten(V::load(run->b + x), gain));
}

template <class Look, bool kHlg, class Matrix>
void to_sdr(HdrRun *run, const vexo_hdr_context *context,
            [[maybe_unused]] int toe, int n) {
  alignas(64) uint16_t r[kHdrRun];
  alignas(64) uint16_t g[kHdrRun];
  alignas(64) uint16_t b[kHdrRun];
  const uint16_t *const linear = kHlg ? context->hlg_linear : context->pq;
  Look::look_up(linear, run->r, r, n);
  Look::look_up(linear, run->g, g, n);
  Look::look_up(linear, run->b, b, n);

  alignas(64) uint16_t largest[kHdrRun];
  alignas(64) uint16_t index[kHdrRun];
  [[maybe_unused]] V::Words most = V::fill(0);
  for (int x = 0; x < n; x += kWords) {
    const auto c = V::combine(V::load(r + x), V::load(g + x), V::load(b + x));
    const auto red = V::template mix<Matrix::kR>(c);
    const auto green = V::template mix<Matrix::kG>(c);
    const auto blue = V::template mix<Matrix::kB>(c);
    if constexpr (kHlg) {
      // What is beyond 32767 has become 4095 so.
      V::store(run->r + x, V::template shift_right<3>(red));
      V::store(run->g + x, V::template shift_right<3>(green));
      V::store(run->b + x, V::template shift_right<3>(blue));
    } else {
      const auto m = V::max(V::max(red, green), blue);
      most = V::max(most, m);
      V::store(largest + x, m);
      V::store_gain_index(index + x, m);
      V::store(run->r + x, red);
      V::store(run->g + x, green);
      V::store(run->b + x, blue);
    }
  }

  if constexpr (!kHlg) {
    // Where all of it is in the toe the entries are known.
    if (toe > 0 && !V::any_above(most, toe - 1)) {
      const int entry = context->gain[1];
      for (int x = 0; x < n; x += kWords) {
        brighten(run, x, V::toe_gain(entry, V::load(largest + x)));
      }
    } else {
      alignas(64) uint16_t gains[2 * kHdrRun];
      Look::look_up_pairs(context->gain, index, gains, n);
      for (int x = 0; x < n; x += kWords) {
        brighten(run, x,
                 V::gain(gains + 2 * ptrdiff_t{x}, V::load(largest + x)));
      }
    }
  }

  Look::look_up(context->gamma, run->r, run->red, n);
  Look::look_up(context->gamma, run->g, run->green, n);
  Look::look_up(context->gamma, run->b, run->blue, n);
}

// --- 8-bit RGB to the destination -------------------------------------------

LOX_INLINE V::Bytes bytes_at(const HdrRun *run, int x) {
  return V::load_bytes(run->red + x, run->green + x, run->blue + x);
}

template <RgbLayout kLayout>
void put_rgb(uint8_t *dst, const HdrRun *run, int n) {
  constexpr PixelFormat kFormat = kPixelFormats[kLayout];
  for (int x = 0; x < n; x += kGroup) {
    uint8_t *const to = dst + kFormat.bytes * ptrdiff_t{x};
    if constexpr (kFormat.bytes == 3) {
      Wide::store3<false>(to, Wide::load_bytes(run->red + x),
                          Wide::load_bytes(run->green + x),
                          Wide::load_bytes(run->blue + x));
    } else if constexpr (alpha_first(kFormat)) {
      V::put_argb(to, bytes_at(run, x));
    } else {
      V::put_rgba(to, bytes_at(run, x));
    }
  }
}

template <class Matrix>
void put_luma(uint8_t *dst, const HdrRun *run, int n) {
  for (int x = 0; x < n; x += kGroup) {
    V::template put_luma<Matrix::kY>(dst + x, bytes_at(run, x));
  }
}

template <Row3 kFirst, Row3 kSecond>
void put_pairs(uint8_t *dst, const HdrRun *run, int n) {
  for (int x = 0; x < n; x += kGroup) {
    V::template put_chroma_pairs<kFirst, kSecond>(dst + x, bytes_at(run, x));
  }
}

template <class Matrix>
void put_u_v(uint8_t *u, uint8_t *v, const HdrRun *run, int n) {
  for (int x = 0; x < n; x += kGroup) {
    V::template put_chroma_rows<Matrix::kU, Matrix::kV>(u + x / 2, v + x / 2,
                                                        bytes_at(run, x));
  }
}

#else  // The rule, a pixel at a time.

constexpr int kGroup = 2;

int clamp(int v, int low, int high) {
  return v < low ? low : v > high ? high : v;
}

int largest_sample(const uint16_t *luma, int32_t columns, int32_t rows,
                   int32_t step) {
  if (columns < 1) return 0;
  int largest = 0;
  for (int64_t y = 0; y < rows; y += step) {
    const uint16_t *const row = luma + static_cast<ptrdiff_t>(y * columns);
    for (int64_t x = 0; x < columns; x += step) {
      largest = row[x] > largest ? row[x] : largest;
    }
  }
  return largest;
}

struct Planar16 {
  static int sample(const uint8_t *p) { return word_at(p) & kMostCode; }
  static int u(const uint8_t *u, const uint8_t *, int x) {
    return sample(u + 2 * ptrdiff_t{x / 2});
  }
  static int v(const uint8_t *, const uint8_t *v, int x) {
    return sample(v + 2 * ptrdiff_t{x / 2});
  }
};

struct P010 {
  static int sample(const uint8_t *p) { return word_at(p) >> 6; }
  static int u(const uint8_t *u, const uint8_t *, int x) {
    return sample(u + 4 * ptrdiff_t{x / 2});
  }
  static int v(const uint8_t *u, const uint8_t *, int x) {
    return sample(u + 4 * ptrdiff_t{x / 2} + 2);
  }
};

int centre(int chroma) {
  return clamp(chroma, kLeastChroma, kMostChroma) - kNoChroma;
}
uint16_t to_code(int v) {
  return static_cast<uint16_t>(clamp(v, 0, kMostCode));
}

template <class Source>
void to_codes(HdrRun *run, const uint8_t *luma, const uint8_t *u,
              const uint8_t *v, int n) {
  for (int x = 0; x < n; ++x) {
    const int y = kLuma.of(
        clamp(Source::sample(luma + 2 * ptrdiff_t{x}), kBlack, kWhite) -
        kBlack);
    const int cb = centre(Source::u(u, v, x));
    const int cr = centre(Source::v(u, v, x));
    run->r[x] = to_code(y + kCrToR.of(cr));
    run->g[x] = to_code(y + kCbToG.of(cb) + kCrToG.of(cr));
    run->b[x] = to_code(y + kCbToB.of(cb));
  }
}

int weighted_sum(Row3 k, int r, int g, int b) {
  return k.r * r + k.g * g + k.b * b;
}

int gain_of(const uint16_t *table, int m) {
  const int i = m >> 7;
  const int f = m >> 3 & 15;
  return ((16 - f) * table[i] + f * table[i + 1]) >> 4;
}

struct ByLoads {};
using ByGathers = ByLoads;

template <class, bool kHlg, class Matrix>
void to_sdr(HdrRun *run, const vexo_hdr_context *context, int, int n) {
  const uint16_t *const linear = kHlg ? context->hlg_linear : context->pq;
  for (int x = 0; x < n; ++x) {
    const int r = linear[run->r[x]];
    const int g = linear[run->g[x]];
    const int b = linear[run->b[x]];
    const int red =
        clamp(weighted_sum(Matrix::kR, r, g, b) >> 8, 0, kMostLinear);
    const int green =
        clamp(weighted_sum(Matrix::kG, r, g, b) >> 8, 0, kMostLinear);
    const int blue =
        clamp(weighted_sum(Matrix::kB, r, g, b) >> 8, 0, kMostLinear);
    // A gain in 1 / 256 for light of 12 bits; HLG has none, which is 256.
    int gain = 256;
    if constexpr (!kHlg) {
      const int m = red > green ? red : green;
      gain = gain_of(context->gain, m > blue ? m : blue);
    }
    run->red[x] = context->gamma[clamp(gain * red >> 11, 0, kMostLight)];
    run->green[x] = context->gamma[clamp(gain * green >> 11, 0, kMostLight)];
    run->blue[x] = context->gamma[clamp(gain * blue >> 11, 0, kMostLight)];
  }
}

template <RgbLayout kLayout>
void put_rgb(uint8_t *dst, const HdrRun *run, int n) {
  constexpr PixelFormat kFormat = kPixelFormats[kLayout];
  for (int x = 0; x < n; ++x) {
    put_pixel<kFormat>(dst + kFormat.bytes * ptrdiff_t{x},
                       {run->red[x], run->green[x], run->blue[x]});
  }
}

template <Row3 K>
int sum_at(const HdrRun *run, int x) {
  return weighted_sum(K, run->red[x], run->green[x], run->blue[x]) >> 12;
}

template <class Matrix>
void put_luma(uint8_t *dst, const HdrRun *run, int n) {
  for (int x = 0; x < n; ++x) {
    dst[x] = static_cast<uint8_t>(clamp(sum_at<Matrix::kY>(run, x), 0, 255));
  }
}

// Of even pixels alone.
template <Row3 K>
uint8_t chroma_at(const HdrRun *run, int x) {
  return static_cast<uint8_t>(clamp(128 + sum_at<K>(run, x), 0, 255));
}

template <Row3 kFirst, Row3 kSecond>
void put_pairs(uint8_t *dst, const HdrRun *run, int n) {
  for (int x = 0; x < n; x += 2) {
    dst[x] = chroma_at<kFirst>(run, x);
    dst[x + 1] = chroma_at<kSecond>(run, x);
  }
}

template <class Matrix>
void put_u_v(uint8_t *u, uint8_t *v, const HdrRun *run, int n) {
  for (int x = 0; x < n; x += 2) {
    u[x / 2] = chroma_at<Matrix::kU>(run, x);
    v[x / 2] = chroma_at<Matrix::kV>(run, x);
  }
}

#endif

}  // namespace

static_assert(kHdrRun % kGroup == 0);

#define LOX_TO_SDR(Look)                                          \
  {                                                               \
    {to_sdr<Look, false, Standard>, to_sdr<Look, false, Mild>}, { \
      to_sdr<Look, true, Standard>, to_sdr<Look, true, Mild>      \
    }                                                             \
  }

constinit const HdrRows hdr_rows = {
    .largest_sample = largest_sample,
    .group = kGroup,
    .codes_of_planar16 = to_codes<Planar16>,
    .codes_of_p010 = to_codes<P010>,
    .to_sdr = LOX_TO_SDR(ByLoads),
    .to_sdr_gathering = LOX_TO_SDR(ByGathers),
#if defined(LOX_SET_avx512)
    .in_registers = &hdr_register_rows,
#else
    .in_registers = nullptr,
#endif
    .put_rgb888 = put_rgb<kRgb888>,
    .put_rgba8888 = put_rgb<kRgba8888>,
    .put_argb8888 = put_rgb<kArgb8888>,
    .put_luma = {put_luma<Standard>, put_luma<Mild>},
    .put_uv = {put_pairs<Standard::kU, Standard::kV>,
               put_pairs<Mild::kU, Mild::kV>},
    .put_vu = {put_pairs<Standard::kV, Standard::kU>,
               put_pairs<Mild::kV, Mild::kU>},
    .put_u_v = {put_u_v<Standard>, put_u_v<Mild>},
};

}  // namespace lox::LOX_SET
