// SPDX-License-Identifier: Apache-2.0
//
// Rows of 16-bit samples, scaled as those of bytes are.
#include "rsz/scale_words_rows.h"

#include "rsz/scale_columns.h"
#include "rsz/scale_gather.h"
#include "rsz/scale_rule.h"
#include "simd/simd.h"

namespace lox::LOX_SET {

namespace {

#if LOX_VECTORS
template <class V>
struct WordMaths {
  using Pair = typename V::WordNeighbours;
  LOX_OP auto weights(const uint8_t *&p) { return V::take_fine_weights(p); }
  LOX_OP auto weights(Products w) {
    const FineProducts f(w);
    return V::fill_fine_weights(f.here, f.next, f.part_here, f.part_next,
                                f.sum);
  }
  LOX_OP auto average(Pair v) { return V::average_words(v.first, v.second); }
  LOX_OP auto mean(Pair v, Pair w) { return V::mean_of_four_words(v, w); }
  template <class Weights>
  LOX_OP auto lerp(Pair v, const Weights &w) {
    return V::lerp_words(v, w);
  }
};
template <class V>
using AsWords = InWords<V, WordMaths<V>>;

template <bool kWeighed, class V = WideScale>
LOX_INLINE void whole_columns(const uint8_t *row, uint8_t *dst,
                              const Columns *c) {
  using T = AsWords<V>;
  if constexpr (V::kPermutesWords) {
    for_groups<V>(c, row, 0, dst, [](uint8_t *to, Place &at) LOX_INLINE_LAMBDA {
      const auto v = V::load_words(at.src + *at.offsets++);
      const typename T::Pair two = {V::pick_words(v, at.table),
                                    V::pick_words(v, at.table + V::n)};
      at.table += ptrdiff_t{2} * V::n;
      if constexpr (kWeighed) {
        T::put_lerp(to, two, T::weights(at.table));
      } else {
        T::put_average(to, two);
      }
    });
  }
}
#endif

// Calls kernel(samples) with the type of sample of a width in bytes.
template <class Kernel>
LOX_INLINE void for_words(int unit, Kernel kernel) {
  if (unit == 2) return kernel(WordSamples<2>());
  kernel(WordSamples<4>());
}

void prepare(Columns *c) {
  c->method = kRule;
#if LOX_VECTORS
  prepare_vectors<Samples::kWords>(*c);
#endif
}

void columns(const uint8_t *row, uint8_t *dst, const Columns *c) {
#if LOX_VECTORS
  if (c->method == kWhole) return whole_columns<false>(row, dst, c);
  if (c->method == kWholeLerp) return whole_columns<true>(row, dst, c);
  if (c->method != kRule) return gathered_columns<AsWords>(row, dst, c);
#endif
  for_words(c->unit, [&]<class S>(S)
                         LOX_INLINE_LAMBDA { columns_rule<S>(row, dst, c); });
}

void box(const uint8_t *row, const uint8_t *below, uint8_t *dst,
         const Columns *c) {
#if LOX_VECTORS
  if (c->method != kRule) return gathered_box<AsWords>(row, below, dst, c);
#endif
  for_words(c->unit, [&]<class S>(S) LOX_INLINE_LAMBDA {
    box_rule<S>(row, below, dst, c);
  });
}

void lerp(const uint8_t *a, const uint8_t *b, uint8_t *dst, ptrdiff_t n,
          Step step, bool mod1) {
#if LOX_VECTORS
  if (lerp_vectors<AsWords>(a, b, dst, n, step, mod1)) return;
#endif
  lerp_rule<WordSamples<2>>(a, b, dst, n, step, mod1);
}

}  // namespace

constinit const ScaleRows scale_words_rows = {
    .prepare = prepare, .columns = columns, .box = box, .lerp = lerp};

}  // namespace lox::LOX_SET
