// SPDX-License-Identifier: Apache-2.0
//
// Rows whose samples are looked up, of any type: the vectors of a strip, and
// what is made of them. Included by units of rows only, into each set's
// namespace.
#pragma once

#include "rsz/scale_columns.h"

#if LOX_VECTORS
namespace lox::LOX_SET {

namespace {

// Samples that are words, as the gathering rows see them, by a type's
// arithmetic.
template <class V, class Maths>
struct InWords : Maths {
  using Ops = V;
  using Pair = typename V::WordNeighbours;
  template <int kSpan, class Places>
  LOX_OP auto gather(typename V::Low p, typename V::High q,
                     const Places &places) {
    return V::template gather_words<kSpan>(p, q, places);
  }
  LOX_OP Pair neighbours(const uint8_t *p, const uint8_t *q) {
    return {V::load_words(p), V::load_words(q)};
  }
  LOX_OP void put_average(uint8_t *dst, const uint8_t *p, const uint8_t *q) {
    put_average(dst, neighbours(p, q));
  }
  LOX_OP void put_average(uint8_t *dst, Pair v) {
    V::store_words(dst, Maths::average(v));
  }
  LOX_OP void put_mean(uint8_t *dst, Pair v, Pair w) {
    V::store_words(dst, Maths::mean(v, w));
  }
  template <class Weights>
  LOX_OP void put_lerp(uint8_t *dst, Pair v, const Weights &w) {
    V::store_words(dst, Maths::lerp(v, w));
  }
};

// Where a vector of outputs is made: a row from what the offsets count from on,
// and how far from it the row below is. Offsets and table move as they are
// taken.
struct Place {
  const uint8_t *src;
  ptrdiff_t below;
  const int16_t *offsets;
  const uint8_t *table;
};
template <class V, class Make>
LOX_INLINE void for_groups(const Columns *c, const uint8_t *row,
                           ptrdiff_t below, uint8_t *dst, Make make) {
  Place at = {row + c->origin, below, c->offsets, c->table};
  const auto step = [&]() LOX_INLINE_LAMBDA {
    make(dst, at);
    keep_pointer(at.offsets);
    keep_pointer(at.table);
  };
  for (auto i = static_cast<uint32_t>(c->repeats); i != 0; --i) {
    at.offsets = c->offsets;
    at.table = c->table;
    auto left = static_cast<uint32_t>(c->period);  // not 0 here
    do {
      step();
      dst += V::n;
      keep_pointer(dst);
    } while (--left != 0);
    at.src += c->advance;
  }
  const ptrdiff_t rest =
      ptrdiff_t{c->count} * c->unit - ptrdiff_t{c->repeats} * c->period * V::n;
  if (rest > 0) for_vectors<V, 2>(rest, step, moving<1>(dst));
}

// Calls kernel.operator()<method>() for one of the gathering forms.
template <class Kernel>
LOX_INLINE void with_span(int32_t method, Kernel kernel) {
  switch (method) {
    case kGather16:
      return kernel.template operator()<kGather16>();
    case kGather32:
      return kernel.template operator()<kGather32>();
    default:
      return kernel.template operator()<kGather64>();
  }
}

// Calls kernel(As<V>()) for a strip of columns that are looked up.
template <template <class> class As, class Kernel>
LOX_INLINE void with_type(ptrdiff_t bytes, Kernel kernel) {
  with_scale(bytes, [&]<class V>(V) LOX_INLINE_LAMBDA { kernel(As<V>()); });
}

template <template <class> class As>
LOX_INLINE void gathered_columns(const uint8_t *row, uint8_t *dst,
                                 const Columns *c) {
  with_type<As>(
      ptrdiff_t{c->count} * c->unit, [&]<class T>(T) LOX_INLINE_LAMBDA {
        using V = typename T::Ops;
        if (c->method == kLerp) {
          return for_groups<V>(
              c, row, 0, dst, [](uint8_t *to, Place &at) LOX_INLINE_LAMBDA {
                typename V::Low p;
                typename V::High q;
                V::take_windows(at.src, at.offsets, p, q);
                const auto places = V::template take_places<16>(at.table);
                T::put_lerp(to, T::template gather<16>(p, q, places),
                            T::weights(at.table));
              });
        }
        with_span(c->method, [&]<Method kMethod>() LOX_INLINE_LAMBDA {
          for_groups<V>(
              c, row, 0, dst, [](uint8_t *to, Place &at) LOX_INLINE_LAMBDA {
                constexpr int kSpan = span_of(kMethod);
                typename V::Low p;
                typename V::High q;
                V::take_windows(at.src, at.offsets, p, q);
                const auto places = V::template take_places<kSpan>(at.table);
                T::put_average(to, T::template gather<kSpan>(p, q, places));
              });
        });
      });
}

template <template <class> class As>
LOX_INLINE void gathered_box(const uint8_t *row, const uint8_t *below,
                             uint8_t *dst, const Columns *c) {
  with_type<As>(
      ptrdiff_t{c->count} * c->unit, [&]<class T>(T) LOX_INLINE_LAMBDA {
        using V = typename T::Ops;
        with_span(c->method, [&]<Method kMethod>() LOX_INLINE_LAMBDA {
          for_groups<V>(
              c, row, below - row, dst,
              [](uint8_t *to, Place &at) LOX_INLINE_LAMBDA {
                constexpr int kSpan = span_of(kMethod);
                typename V::Low p;
                typename V::High q;
                V::take_windows(at.src, at.offsets, p, q);
                const auto places = V::template take_places<kSpan>(at.table);
                const auto here = T::template gather<kSpan>(p, q, places);
                V::move_windows(p, q, at.below);
                T::put_mean(to, here, T::template gather<kSpan>(p, q, places));
              });
        });
      });
}

// Does a lerp by vectors; whether it did.
template <template <class> class As>
LOX_INLINE bool lerp_vectors(const uint8_t *a, const uint8_t *b, uint8_t *dst,
                             ptrdiff_t n, Step step, bool mod1) {
  if (n < NarrowScale::n || !has_products(step.length, mod1)) return false;
  with_type<As>(n, [&]<class T>(T) LOX_INLINE_LAMBDA {
    const auto rows = [&](auto make) LOX_INLINE_LAMBDA {
      for_vectors<typename T::Ops, 2>(
          n, [&]() LOX_INLINE_LAMBDA { make(dst, a, b); }, moving<1>(a),
          moving<1>(b), moving<1>(dst));
    };
    if (step.length == 2) {
      return rows([](uint8_t *to, const uint8_t *p, const uint8_t *q)
                      LOX_INLINE_LAMBDA { T::put_average(to, p, q); });
    }
    const auto weights = T::weights(products(step, mod1));
    rows([&](uint8_t *to, const uint8_t *p, const uint8_t *q)
             LOX_INLINE_LAMBDA {
               T::put_lerp(to, T::neighbours(p, q), weights);
             });
  });
  return true;
}

}  // namespace

}  // namespace lox::LOX_SET
#endif
