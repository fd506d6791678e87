// SPDX-License-Identifier: Apache-2.0
//
// Rows scaled across, interpolated between, or both at once: with what
// rsz/scale_columns.h has worked out, or by the rule of rsz/scale_rule.h.
#include "rsz/scale_rows.h"

#include "rsz/scale_columns.h"
#include "rsz/scale_gather.h"
#include "rsz/scale_rule.h"
#include "simd/simd.h"
#include "simd/words.h"

namespace lox::LOX_SET {

namespace {

#if LOX_VECTORS
// --- rows of vectors --------------------------------------------------------

// Calls kernel.operator()<V, unit>() for units of 1, 2 and 4 bytes.
template <class Kernel>
LOX_INLINE void with_pow2_unit(const Columns *c, Kernel kernel) {
  with_scale(ptrdiff_t{c->count} * c->unit, [&]<class V>(V) LOX_INLINE_LAMBDA {
    switch (c->unit) {
      case 1:
        return kernel.template operator()<V, 1>();
      case 2:
        return kernel.template operator()<V, 2>();
      default:
        return kernel.template operator()<V, 4>();
    }
  });
}

// Each vector of outputs made from kFactor vectors of a row, or of two, which
// making it moves over.
template <class V, int kFactor, class Make>
LOX_INLINE void for_boxes(const uint8_t *row, const uint8_t *below,
                          uint8_t *dst, const Columns *c, Make make) {
  const ptrdiff_t start = ptrdiff_t{c->first} * c->unit * kFactor;
  row += start;
  below += start;
  const ptrdiff_t apart = below - row;
  for_vectors<V, 4>(
      ptrdiff_t{c->count} * c->unit,
      [&]() LOX_INLINE_LAMBDA {
        // The next two rows, if the factor down is the same: they come from
        // further away than the arithmetic takes time.
        if (apart != 0) {
          prefetch(row, kFactor * apart, kFactor * V::n);
          prefetch(below, kFactor * apart, kFactor * V::n);
        }
        V::store_bytes(dst, make(row, below));
        dst += V::n;
        keep_pointer(row);
        keep_pointer(below);
        keep_pointer(dst);
      },
      taken<kFactor>(row), taken<kFactor>(below), taken<1>(dst));
}

// Each sample and the value half way to the next.
template <class V, int kUnit>
LOX_INLINE void double_columns(const uint8_t *row, uint8_t *dst,
                               const Columns *c) {
  const uint8_t *src = row + ptrdiff_t{c->first / 2} * kUnit;
  const ptrdiff_t last = ptrdiff_t{c->axis.src - 1 - c->first / 2} * kUnit;
  const ptrdiff_t half = ptrdiff_t{c->count / 2} * kUnit;
  // The last sample's next is itself.
  const ptrdiff_t inner = half > last ? last : half;
  if (inner >= V::n) {
    const uint8_t *from = src;
    uint8_t *to = dst;
    for_vectors<V, 2>(
        inner,
        [&]() LOX_INLINE_LAMBDA {
          const auto here = V::load_bytes(from);
          V::template store_interleave_units<kUnit>(
              to, here, V::average_down(here, V::load_bytes(from + kUnit)));
        },
        moving<1>(from), moving<2>(to));
  }
  for (ptrdiff_t i = inner >= V::n ? inner : 0; i < half; i += kUnit) {
    for (int k = 0; k < kUnit; ++k) {
      const int a = src[i + k];
      const int b = i < inner ? src[i + kUnit + k] : a;
      dst[2 * i + k] = static_cast<uint8_t>(a);
      dst[2 * i + kUnit + k] = static_cast<uint8_t>((a + b) >> 1);
    }
  }
}

// The two types of sample as the gathering rows see them.
template <class V>
struct AsBytes {
  using Ops = V;
  template <int kSpan, class Places>
  LOX_OP auto gather(typename V::Low p, typename V::High q,
                     const Places &places) {
    return V::template gather<kSpan>(p, q, places);
  }
  LOX_OP auto weights(const uint8_t *&p) { return V::take_weights(p); }
  LOX_OP auto weights(Products w) {
    return V::fill_weights(w.here, w.next, w.share);
  }
  LOX_OP auto neighbours(const uint8_t *p, const uint8_t *q) {
    return V::as_neighbours(V::load_bytes(p), V::load_bytes(q));
  }
  LOX_OP void put_average(uint8_t *dst, const uint8_t *p, const uint8_t *q) {
    V::store_bytes(dst, V::average_down(V::load_bytes(p), V::load_bytes(q)));
  }
  template <class Values>
  LOX_OP void put_average(uint8_t *dst, Values v) {
    V::store_bytes(dst, V::average(v));
  }
  template <class Values>
  LOX_OP void put_mean(uint8_t *dst, Values v, Values w) {
    V::store_bytes(dst, V::mean_of_4(v, w));
  }
  template <class Values, class Weights>
  LOX_OP void put_lerp(uint8_t *dst, Values v, Weights w) {
    V::store_bytes(dst, V::lerp(v, w));
  }
};
template <class V>
struct Maths565 {
  using Pair = typename V::WordNeighbours;
  LOX_OP auto weights(const uint8_t *&p) { return V::take_word_weights(p); }
  LOX_OP auto weights(Products w) {
    return V::fill_word_weights(w.here, w.next, w.share);
  }
  LOX_OP auto average(Pair v) { return V::average565(v.first, v.second); }
  LOX_OP auto mean(Pair v, Pair w) { return V::mean_of_4_565(v, w); }
  template <class Weights>
  LOX_OP auto lerp(Pair v, const Weights &w) {
    return V::lerp565(v, w);
  }
};
template <class V>
using As565 = InWords<V, Maths565<V>>;

// Rows of what is looked up in spread words.
template <class V, class Make>
LOX_INLINE void for_spread(const uint8_t *row, ptrdiff_t below, uint8_t *dst,
                           const Columns *c, Make make) {
  if constexpr (V::kPermutesWords) {
    for_groups<V>(c, row, below, dst,
                  [&](uint8_t *to, Place &at) LOX_INLINE_LAMBDA {
                    V::store_bytes(
                        to, make([&](ptrdiff_t away) LOX_INLINE_LAMBDA {
                          return V::spread(at.src + away, at.offsets, at.table);
                        }));
                    at.offsets += 2;
                    at.table += ptrdiff_t{4} * V::n;
                  });
  }
}

LOX_INLINE void columns_vectors(const uint8_t *row, uint8_t *dst,
                                const Columns *c) {
  switch (c->method) {
    case kHalve:
      return with_pow2_unit(c, [&]<class V, int kUnit>() LOX_INLINE_LAMBDA {
        for_boxes<V, 2>(
            row, row, dst, c,
            [](const uint8_t *&p, const uint8_t *&) LOX_INLINE_LAMBDA {
              return V::average(V::template take_adjacent<kUnit>(p));
            });
      });
    case kFirstOf4:
      return with_scale(c->count, [&]<class V>(V) LOX_INLINE_LAMBDA {
        for_boxes<V, 4>(
            row, row, dst, c,
            [](const uint8_t *&p, const uint8_t *&) LOX_INLINE_LAMBDA {
              return V::average(V::template take_first_two_of_4<>(p));
            });
      });
    case kDouble:
      return with_pow2_unit(c, [&]<class V, int kUnit>() LOX_INLINE_LAMBDA {
        double_columns<V, kUnit>(row, dst, c);
      });
    case kSpread:
      return for_spread<WideScale>(
          row, 0, dst, c,
          [](auto at) LOX_INLINE_LAMBDA { return WideScale::average(at(0)); });
    default:
      return gathered_columns<AsBytes>(row, dst, c);
  }
}

LOX_INLINE void box_vectors(const uint8_t *row, const uint8_t *below,
                            uint8_t *dst, const Columns *c) {
  switch (c->method) {
    case kHalve:
      return with_pow2_unit(c, [&]<class V, int kUnit>() LOX_INLINE_LAMBDA {
        for_boxes<V, 2>(
            row, below, dst, c,
            [](const uint8_t *&p, const uint8_t *&q) LOX_INLINE_LAMBDA {
              return V::mean_of_4(V::template take_adjacent<kUnit>(p),
                                  V::template take_adjacent<kUnit, 1>(q));
            });
      });
    case kFirstOf4:
      return with_scale(c->count, [&]<class V>(V) LOX_INLINE_LAMBDA {
        for_boxes<V, 4>(
            row, below, dst, c,
            [](const uint8_t *&p, const uint8_t *&q) LOX_INLINE_LAMBDA {
              return V::mean_of_4(V::template take_first_two_of_4<0>(p),
                                  V::template take_first_two_of_4<1>(q));
            });
      });
    case kSpread:
      return for_spread<WideScale>(
          row, below - row, dst, c, [=](auto at) LOX_INLINE_LAMBDA {
            return WideScale::mean_of_4(at(0), at(below - row));
          });
    default:
      return gathered_box<AsBytes>(row, below, dst, c);
  }
}
#endif

// --- the table's kernels ----------------------------------------------------

template <Samples kSamples>
void prepare(Columns *c) {
  c->method = kRule;
#if LOX_VECTORS
  prepare_vectors<kSamples>(*c);
#endif
}

void columns(const uint8_t *row, uint8_t *dst, const Columns *c) {
#if LOX_VECTORS
  if (c->method != kRule) return columns_vectors(row, dst, c);
#endif
  for_unit(c->unit,
           [&]<class S>(S) LOX_INLINE_LAMBDA { columns_rule<S>(row, dst, c); });
}

void box(const uint8_t *row, const uint8_t *below, uint8_t *dst,
         const Columns *c) {
#if LOX_VECTORS
  if (c->method != kRule) return box_vectors(row, below, dst, c);
#endif
  for_unit(c->unit, [&]<class S>(S)
                        LOX_INLINE_LAMBDA { box_rule<S>(row, below, dst, c); });
}

void lerp(const uint8_t *a, const uint8_t *b, uint8_t *dst, ptrdiff_t n,
          Step step, bool mod1) {
#if LOX_VECTORS
  if (lerp_vectors<AsBytes>(a, b, dst, n, step, mod1)) return;
#endif
  lerp_rule<ByteSamples<1>>(a, b, dst, n, step, mod1);
}

void columns565(const uint8_t *row, uint8_t *dst, const Columns *c) {
#if LOX_VECTORS
  if (c->method != kRule) return gathered_columns<As565>(row, dst, c);
#endif
  columns_rule<Rgb565Samples>(row, dst, c);
}

void box565(const uint8_t *row, const uint8_t *below, uint8_t *dst,
            const Columns *c) {
#if LOX_VECTORS
  if (c->method != kRule) return gathered_box<As565>(row, below, dst, c);
#endif
  box_rule<Rgb565Samples>(row, below, dst, c);
}

void lerp565(const uint8_t *a, const uint8_t *b, uint8_t *dst, ptrdiff_t n,
             Step step, bool mod1) {
#if LOX_VECTORS
  if (lerp_vectors<As565>(a, b, dst, n, step, mod1)) return;
#endif
  lerp_rule<Rgb565Samples>(a, b, dst, n, step, mod1);
}

template <int kUnit>
LOX_INLINE void reduce_words(const uint8_t *row, const uint8_t *below,
                             uint8_t *dst, int32_t factor, ptrdiff_t count) {
#if LOX_VECTORS
  if (factor == 2 && count * kUnit >= NarrowScale::n) {
    return with_scale(count * kUnit, [&]<class V>(V) LOX_INLINE_LAMBDA {
      for_vectors<V, 2>(
          count * kUnit,
          [&]() LOX_INLINE_LAMBDA {
            V::template halve_words<kUnit>(row, below, dst);
          },
          moving<2>(row), moving<2>(below), moving<1>(dst));
    });
  }
#endif
  for (ptrdiff_t i = 0; i < count; ++i) {
    const ptrdiff_t cell = i * factor * kUnit;
    for (int k = 0; k < kUnit; k += 2) {
      const ptrdiff_t at = cell + k;
      const int sum = word_at(row + at) + word_at(row + at + kUnit) +
                      word_at(below + at) + word_at(below + at + kUnit);
      put_word(dst + i * kUnit + k, sum >> 2);
    }
  }
}

void box16(const uint8_t *row, const uint8_t *below, uint8_t *dst, int32_t unit,
           int32_t factor, ptrdiff_t count) {
  if (unit == 2) {
    reduce_words<2>(row, below, dst, factor, count);
  } else {
    reduce_words<4>(row, below, dst, factor, count);
  }
}

}  // namespace

constinit const ScaleTables scale_rows = {
    .bytes = {.prepare = prepare<Samples::kBytes>,
              .columns = columns,
              .box = box,
              .lerp = lerp},
    .rgb565 = {.prepare = prepare<Samples::k565>,
               .columns = columns565,
               .box = box565,
               .lerp = lerp565},
    .box16 = box16,
};

}  // namespace lox::LOX_SET
