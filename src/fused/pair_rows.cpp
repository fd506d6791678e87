// SPDX-License-Identifier: Apache-2.0
//
// Rows that are scaled and converted at once, by BT.601. The arithmetic is that
// of rsz/scale_rows.cpp, less what packs bytes, and that of
// csc/yuv_to_rgb_rows.cpp, less what unpacks them.
#include "fused/pair_rows.h"

#include "simd/simd.h"
#include "simd/store_pixels.h"

namespace lox::LOX_SET {

namespace {

#if defined(LOX_SET_avx512)

#include "csc/yuv_to_rgb_matrices.h"

using V = Wide;
using R = V::R;
using Reg = V::Reg;

// Samples and their neighbours of 64 source bytes, as sums in 16-bit elements.
LOX_INLINE Reg sums(Reg source, const PairColumns::Spread &at) {
  return R::multiply_add8(
      R::shuffle8(R::permute_words_by(source, R::load(at.words)),
                  R::load(at.bytes)),
      R::fill16(0x0101));
}

// Both registers of a row, of the sums that sums_of(row, half) gives.
template <class Sums>
LOX_INLINE V::U8 scaled(bool blended, Reg kept, Sums sums_of) {
  Reg a = sums_of(0, 0);
  Reg b = sums_of(0, 1);
  if (blended) {
    const Reg c = sums_of(1, 0);
    const Reg d = sums_of(1, 1);
    a = R::add16(R::bit_and(a, kept), R::bit_and(c, kept));
    b = R::add16(R::bit_and(b, kept), R::bit_and(d, kept));
  } else {
    a = R::add16(a, a);
    b = R::add16(b, b);
  }
  return {R::shift_right16<2>(a), R::shift_right16<2>(b)};
}

LOX_INLINE Reg load_pairs(const uint8_t *const *p, bool planes,
                          ptrdiff_t from) {
  if (!planes) return R::load(p[0] + 2 * from);
  return R::unpack_low8(V::spread_half<Order::kBytes>(p[0] + from),
                        V::spread_half<Order::kBytes>(p[1] + from));
}

LOX_INLINE void fetch(const PairRows &rows, const PairColumns::Vector &at) {
#pragma GCC unroll 1
  for (int row = 0; row < rows.ahead_luma; ++row) {
    prefetch(rows.ahead[row], at.luma[0]);
    prefetch(rows.ahead[row], at.luma[1]);
  }
  const int unit = rows.planes ? 1 : 2;
#pragma GCC unroll 1
  for (int row = rows.ahead_luma; row < rows.ahead_count; ++row) {
    prefetch(rows.ahead[row], ptrdiff_t{unit} * at.chroma[0]);
    prefetch(rows.ahead[row], ptrdiff_t{unit} * at.chroma[1]);
  }
}

template <PixelFormat F, bool kStream>
LOX_INLINE void convert_vector(const PairRows &rows, const PairColumns &columns,
                               int32_t i) {
  // Without the bit that means of two lose, sums of two means are sums of four.
  const Reg kept = R::fill16(rows.mean == Mean::kOfTwo ? 0xFFFE : 0xFFFF);
  const Bt601::Constants<V, 0> k;
  const PairColumns::Vector &at = columns.vectors[i];
  const PairColumns::Table &table = columns.tables[at.table];
  fetch(rows, at);
  const V::U8 uv = scaled(
      rows.chroma.blended, kept, [&](int row, int half) LOX_INLINE_LAMBDA {
        return sums(
            load_pairs(rows.chroma.row[row], rows.planes, at.chroma[half]),
            table.chroma[half]);
      });
  const V::SharedPairs pairs = {R::pack_unsigned16(uv.a, uv.b)};
  const auto chroma = Bt601::chroma<V>(pairs, k);
  for (int y = 0; y < 2; ++y) {
    const TwoRows &from = rows.luma[y];
    const V::U8 luma =
        scaled(from.blended, kept, [&](int row, int half) LOX_INLINE_LAMBDA {
          return sums(R::load(from.row[row][0] + at.luma[half]),
                      table.luma[half]);
        });
    const auto c = Bt601::channels<V>(luma, chroma, k);
    store_pixels<F, V, Bt601::kRed, Bt601::kGreen, Bt601::kBlue, kStream>(
        rows.rgb[y] + ptrdiff_t{at.x} * F.bytes, c.red, c.green, c.blue);
  }
}

template <PixelFormat F>
void convert(const PairRows &rows, const PairColumns &columns) {
  int32_t i = 0;
  if (rows.stream) {
    // The last vector may begin anywhere.
    const int32_t whole = columns.count - (columns.overlaps ? 1 : 0);
    for (; i < whole; ++i) convert_vector<F, true>(rows, columns, i);
  }
  for (; i < columns.count; ++i) convert_vector<F, false>(rows, columns, i);
}

#define LOX_CONVERT(layout) convert<kPixelFormats[layout]>
#else
#define LOX_CONVERT(layout) nullptr
#endif

}  // namespace

constinit const PairKernels pair_rows = {
    {LOX_CONVERT(kRgb565), LOX_CONVERT(kBgr565), nullptr, nullptr,
     LOX_CONVERT(kRgba8888), LOX_CONVERT(kBgra8888), LOX_CONVERT(kArgb8888),
     LOX_CONVERT(kAbgr8888)}};

}  // namespace lox::LOX_SET
