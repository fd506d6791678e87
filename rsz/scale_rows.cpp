// SPDX-License-Identifier: Apache-2.0
//
// Rows scaled across, blended with each other, or both at once.
//
// With a sample a and its neighbour b a value on the way between them is
// (a (length - part) + b part) / length. Where no length is above 2, and always
// in reductions, that is a or (a + b) >> 1, so that a neighbour looked up in
// the place of a itself gives a: the sum of the two, halved, serves both. In
// reductions of both directions the sum of four serves all four cases so.
//
// Longer segments want products of bytes, and the division is the high half of
// a product with 65536 / length + 1: exact while 255 length^2 < 65536, that is
// to a length of 16. Weights in 64ths, of which none is above 64 to a length of
// 65, are divided by a share of 1024.
#include "rsz/scale_rows.h"

#include "simd/simd.h"

#if defined(LOX_SET_neon)
#include "simd/simd_neon_scale.h"
#elif LOX_VECTORS
#include "simd/simd_x86_scale.h"
#endif

namespace lox::LOX_SET {

namespace {

// What prepare() has chosen for a strip.
enum Form : int32_t {
  kRule,
  kGather16,  // looked up in windows of so many bytes
  kGather32,
  kGather64,
  kWeigh,     // looked up in 16 bytes, weighed
  kHalve,     // 2:1
  kFirstOf4,  // 4:1 of bytes
  kDouble     // 1:2
};

// --- the rule ---------------------------------------------------------------

LOX_INLINE uint32_t between(uint32_t a, uint32_t b, Step s, bool mod1) {
  if (s.part == 0) return a;
  const Shares w = shares(s, mod1);
  if (mod1) return (a * w.here + b * w.next) >> 6;
  const uint64_t sum = uint64_t{a} * w.here + uint64_t{b} * w.next;
  return static_cast<uint32_t>(sum / static_cast<uint32_t>(s.length));
}

LOX_INLINE bool is_mod1(const Columns *c) {
  return c->axis.scaling == Scaling::kEnlargeMod1;
}

// Samples of kUnit bytes, each byte for itself.
template <int kUnit>
struct ByteSamples {
  static constexpr int kBytes = kUnit;
  template <class Value>
  LOX_OP void put(uint8_t *dst, Value value) {
    for (int i = 0; i < kUnit; ++i) {
      dst[i] = static_cast<uint8_t>(
          value([i](const uint8_t *p)
                    LOX_INLINE_LAMBDA -> uint32_t { return p[i]; }));
    }
  }
};

// Words of components of 5, 6 and 5 bits, each component for itself.
struct Rgb565Samples {
  static constexpr int kBytes = 2;
  template <class Value>
  LOX_OP void put(uint8_t *dst, Value value) {
    uint32_t word = 0;
    for (int i = 0; i < 3; ++i) {
      const int shift = i == 0 ? 11 : i == 1 ? 5 : 0;
      const uint32_t mask = i == 1 ? 63 : 31;
      const uint32_t component =
          value([=](const uint8_t *p) LOX_INLINE_LAMBDA -> uint32_t {
            return static_cast<uint32_t>(p[0] | p[1] << 8) >> shift & mask;
          });
      word |= (component & mask) << shift;
    }
    dst[0] = static_cast<uint8_t>(word);
    dst[1] = static_cast<uint8_t>(word >> 8);
  }
};

// Calls kernel(samples) with the type of sample of a width in bytes.
template <class Kernel>
LOX_INLINE void for_unit(int unit, Kernel kernel) {
  switch (unit) {
    case 1:
      return kernel(ByteSamples<1>());
    case 2:
      return kernel(ByteSamples<2>());
    case 3:
      return kernel(ByteSamples<3>());
    default:
      return kernel(ByteSamples<4>());
  }
}

template <class Samples>
LOX_INLINE void columns_rule(const uint8_t *row, uint8_t *dst,
                             const Columns *c) {
  Walk walk(c->axis, c->first);
  for (int i = 0; i < c->count; ++i, dst += Samples::kBytes) {
    const Step s = walk.next();
    const uint8_t *const a = row + ptrdiff_t{s.at} * Samples::kBytes;
    const uint8_t *const b = s.part == 0 ? a : a + Samples::kBytes;
    Samples::put(dst, [&](auto component) LOX_INLINE_LAMBDA {
      return between(component(a), component(b), s, is_mod1(c));
    });
  }
}

template <class Samples>
LOX_INLINE void cells_rule(const uint8_t *row, const uint8_t *below,
                           uint8_t *dst, const Columns *c) {
  Walk walk(c->axis, c->first);
  for (int i = 0; i < c->count; ++i, dst += Samples::kBytes) {
    const Step s = walk.next();
    const ptrdiff_t at = ptrdiff_t{s.at} * Samples::kBytes;
    const ptrdiff_t right = s.part == 0 ? at : at + Samples::kBytes;
    Samples::put(dst, [&](auto component) LOX_INLINE_LAMBDA {
      const uint32_t sum = component(row + at) + component(below + at);
      if (s.part == 0) return sum >> 1;
      return (sum + component(row + right) + component(below + right)) >> 2;
    });
  }
}

template <class Samples>
LOX_INLINE void blend_rule(const uint8_t *a, const uint8_t *b, uint8_t *dst,
                           ptrdiff_t n, Step step, bool mod1) {
  for (ptrdiff_t i = 0; i < n; i += Samples::kBytes) {
    Samples::put(dst + i, [&](auto component) LOX_INLINE_LAMBDA {
      return between(component(a + i), component(b + i), step, mod1);
    });
  }
}

#if LOX_VECTORS
// --- what is worked out about the columns -----------------------------------

#if defined(LOX_SET_neon)
using WideScale = NeonScale;
using NarrowScale = NeonScale;
#else
using WideScale = X86Scale<Wide>;
using NarrowScale = X86Scale<Narrow>;
#endif

// As with_vectors.
template <class Kernel>
LOX_INLINE void with_scale(ptrdiff_t bytes, Kernel kernel) {
  if (!kNarrower || bytes >= WideScale::n) {
    kernel(WideScale());
  } else {
    kernel(NarrowScale());
  }
}

// Which weights serve as the products' factors and shares.
constexpr int kMaxLength = 16;
constexpr int kMaxLength64ths = 65;
struct Products {
  int here, next, share;
};
LOX_INLINE Products products(Step s, bool mod1) {
  if (s.part == 0) return {64, 0, 1024};
  const Shares w = shares(s, mod1);
  static constexpr uint16_t kShares[kMaxLength + 1] = {
      0,    0,    32769, 21846, 16385, 13108, 10923, 9363, 8193,
      7282, 6554, 5958,  5462,  5042,  4682,  4370,  4097};
  return {static_cast<int>(w.here), static_cast<int>(w.next),
          mod1 ? 1024 : kShares[s.length <= kMaxLength ? s.length : 0]};
}
LOX_INLINE bool has_products(int32_t length, bool mod1) {
  return length <= (mod1 ? kMaxLength64ths : kMaxLength);
}

LOX_INLINE bool enlarges(const Axis &axis) {
  return axis.scaling >= Scaling::kEnlarge;
}

// The form of a strip, and the bytes that 8 bytes of output are looked up in.
// A run of outputs `steps` apart has sources steps * src / dst apart at most,
// rounded up.
LOX_INLINE Form choose_form(const Columns &c, bool words) {
  const Axis &axis = c.axis;
  const bool enlarge = enlarges(axis);
  const int64_t src = axis.src;
  if (!words && c.unit != 3) {
    if (enlarge && axis.dst == 2 * src) return kDouble;
    if (axis.scaling == Scaling::kReduceWhole) {
      if (src == 2 * int64_t{axis.dst}) return kHalve;
      if (src == 4 * int64_t{axis.dst} && c.unit == 1) return kFirstOf4;
    }
  }
  const int steps = (6 + c.unit) / c.unit + (c.unit == 3 ? 1 : 0);
  const int64_t samples = (steps * src + axis.dst - 1) / axis.dst + 2;
  const int64_t span = samples * c.unit;
  const int64_t row = src * c.unit;
  if (enlarge && axis.dst > 2 * src) {
    const int32_t longest =
        axis.dst / axis.src + (axis.dst % axis.src != 0 ? 1 : 0);
    return span <= 16 && row >= 16 &&
                   has_products(longest, axis.scaling == Scaling::kEnlargeMod1)
               ? kWeigh
               : kRule;
  }
  for (int i = 0; i < 3; ++i) {
    const int64_t window = int64_t{16} << i;
    if (span <= window && row >= window)
      return static_cast<Form>(kGather16 + i);
  }
  return kRule;
}
constexpr int span_of(Form form) {
  return form == kGather64 ? 64 : form == kGather32 ? 32 : 16;
}

// Bytes of table for a vector of outputs.
template <class V>
constexpr int places_size(int span) {
  return V::windows(span) * 2 * V::n;
}
template <class V, bool kWords>
constexpr int table_step(Form form) {
  return places_size<V>(span_of(form)) + (form != kWeigh ? 0
                                          : kWords       ? 3 * V::n
                                                         : 4 * V::n);
}

template <class V, bool kWords>
LOX_INLINE void put_places(uint8_t *places, int group, int byte, int span,
                           int first, int second) {
  uint8_t *const at = places + V::place(group);
  const int i = kWords ? V::first_word_place(byte) : V::first_place(byte);
  const int j = kWords ? V::second_word_place(byte) : V::second_place(byte);
  for (int w = 0; w < V::windows(span); ++w) {
    // What is in another window counts as nothing.
    const auto in_window = [w](int k) LOX_INLINE_LAMBDA {
      const int k_in = k - w * V::kWindow;
      return static_cast<uint8_t>(k_in >= 0 && k_in < V::kWindow ? k_in : 128);
    };
    at[w * 2 * V::n + i] = in_window(first);
    at[w * 2 * V::n + j] = in_window(second);
  }
}

// Goes through the bytes of a strip's outputs.
template <int kUnit>
class ByteWalk {
 public:
  LOX_INLINE ByteWalk(const Columns &c, ptrdiff_t byte)
      : walk_(c.axis, c.first + static_cast<int32_t>(byte / kUnit)),
        mod1_(is_mod1(&c)),
        component_(static_cast<int>(byte % kUnit)) {
    next_sample();
  }
  LOX_INLINE void next() {
    if (++component_ == kUnit) {
      component_ = 0;
      next_sample();
    }
  }
  // Byte of the source row, of the sample and of its first component.
  LOX_INLINE ptrdiff_t sample() const { return ptrdiff_t{step_.at} * kUnit; }
  LOX_INLINE ptrdiff_t byte() const { return sample() + component_; }
  // How far away its neighbour is.
  LOX_INLINE int to_neighbour() const { return step_.part == 0 ? 0 : kUnit; }
  LOX_INLINE Products weights() const { return weights_; }

 private:
  LOX_INLINE void next_sample() {
    step_ = walk_.next();
    weights_ = products(step_, mod1_);
  }
  Walk walk_;
  bool mod1_;
  int component_;
  Step step_;
  Products weights_;
};

// Vectors of output after which the places repeat, and how far on in the
// source; some times as many if they are few, so that they make a loop.
template <class V, int kUnit>
LOX_INLINE void set_period(Columns &c) {
  constexpr int kAtLeast = 8;
  uint32_t a = static_cast<uint32_t>(c.axis.src);
  uint32_t b = static_cast<uint32_t>(c.axis.dst);
  while (b != 0) {
    const uint32_t rest = a % b;
    a = b;
    b = rest;
  }
  const int64_t outputs = c.axis.dst / static_cast<int32_t>(a);
  const int64_t inputs = c.axis.src / static_cast<int32_t>(a);
  int64_t vectors = outputs * kUnit;
  int64_t periods = V::n;
  while (vectors % 2 == 0 && periods > 1) {
    vectors /= 2;
    periods /= 2;
  }
  while (vectors < kAtLeast) {
    vectors *= 2;
    periods *= 2;
  }
  c.period =
      static_cast<int32_t>(vectors <= Columns::kBytes / V::n ? vectors : 0);
  c.advance = static_cast<ptrdiff_t>(periods * inputs * kUnit);
}

// Fills the tables of `vectors` vectors of output from byte `start` on, their
// offsets counted from source byte `origin`.
template <class V, bool kWords, int kUnit>
class TableFiller {
 public:
  LOX_INLINE TableFiller(Columns &c, Form form)
      : c_(c),
        form_(form),
        span_(span_of(form)),
        end_(ptrdiff_t{c.axis.src} * kUnit - span_of(form)),
        bytes_(ptrdiff_t{c.count} * kUnit),
        offset_(c.offsets),
        table_(c.table) {}

  LOX_INLINE void fill(ptrdiff_t start, ptrdiff_t stop, ptrdiff_t origin) {
    if (start >= stop) return;
    const ptrdiff_t first = start + V::n <= bytes_ ? start : bytes_ - V::n;
    ByteWalk<kUnit> walk(c_, first);
    for (ptrdiff_t at = start; at < stop; at += V::n) {
      if (at + V::n > bytes_ && at > start) {
        walk = ByteWalk<kUnit>(c_, bytes_ - V::n);
      }
      vector(walk, origin);
    }
  }

 private:
  LOX_INLINE void vector(ByteWalk<kUnit> &walk, ptrdiff_t origin) {
    uint8_t *const weights = table_ + places_size<V>(span_);
    for (int group = 0; group < V::n / 8; ++group) {
      const ptrdiff_t base = walk.sample() < end_ ? walk.sample() : end_;
      *offset_++ = static_cast<int16_t>(base - origin);
      for (int i = 0; i < 8; ++i, walk.next()) {
        const int first = static_cast<int>(walk.byte() - base);
        put_places<V, kWords>(table_, group, i, span_, first,
                              first + walk.to_neighbour());
        if (form_ == kWeigh) put_weights(weights, group, i, walk.weights());
      }
    }
    table_ += table_step<V, kWords>(form_);
  }
  LOX_INLINE void put_weights(uint8_t *weights, int group, int i, Products p) {
    if constexpr (kWords) {
      const int at = group * 8 + i;
      const int shift = at % 2 * 8;
      weights[at] = static_cast<uint8_t>(p.here >> shift);
      weights[V::n + at] = static_cast<uint8_t>(p.next >> shift);
      weights[2 * V::n + at] = static_cast<uint8_t>(p.share >> shift);
    } else {
      uint8_t *const w = weights + V::place(group);
      w[V::first_place(i)] = static_cast<uint8_t>(p.here);
      w[V::second_place(i)] = static_cast<uint8_t>(p.next);
      w[2 * V::n + 2 * i] = static_cast<uint8_t>(p.share);
      w[2 * V::n + 2 * i + 1] = static_cast<uint8_t>(p.share >> 8);
    }
  }

  Columns &c_;
  Form form_;
  int span_;
  ptrdiff_t end_;  // where a row's last window begins
  ptrdiff_t bytes_;
  int16_t *offset_;
  uint8_t *table_;
};

template <class V, bool kWords, int kUnit>
LOX_INLINE void fill_tables(Columns &c, Form form) {
  constexpr int kMost = Columns::kBytes / V::n;  // vectors
  const ptrdiff_t end = ptrdiff_t{c.axis.src} * kUnit - span_of(form);
  c.origin = ptrdiff_t{Walk(c.axis, c.first).next().at} * kUnit;
  c.repeats = 0;
  set_period<V, kUnit>(c);
  if (c.period > 0) {
    // All but the vectors whose windows reach the last sample: it may lack a
    // neighbour, and the windows beyond it are moved.
    const ptrdiff_t room = end - kUnit - c.origin;
    const int64_t by_source = room < 0 ? 0 : room / c.advance;
    const int64_t by_output =
        int64_t{c.count} * kUnit / (ptrdiff_t{c.period} * V::n);
    c.repeats =
        static_cast<int32_t>(by_source < by_output ? by_source : by_output);
    const int64_t rest =
        int64_t{c.count} * kUnit - int64_t{c.repeats} * c.period * V::n;
    if (c.repeats < 2 || c.period + rest / V::n + 1 > kMost) c.repeats = 0;
  }
  if (c.repeats == 0) {
    c.period = 0;
    if (int64_t{c.count} * kUnit > Columns::kBytes) {
      // Strips as even as whole vectors allow.
      constexpr int kSamples = Columns::kBytes / kUnit;
      const int32_t strips = (c.count - 1) / kSamples + 1;
      const int32_t even = ((c.count - 1) / strips + 64) / 64 * 64;
      c.count = even < kSamples ? even : kSamples;
    }
  }
  TableFiller<V, kWords, kUnit> filler(c, form);
  const ptrdiff_t period = ptrdiff_t{c.period} * V::n;
  filler.fill(0, period, c.origin);
  filler.fill(c.repeats * period, ptrdiff_t{c.count} * kUnit,
              c.origin + c.repeats * c.advance);
}

template <bool kWords>
LOX_INLINE void prepare_vectors(Columns &c) {
  const ptrdiff_t bytes = ptrdiff_t{c.count} * c.unit;
  if (bytes < NarrowScale::n) return;
  const Form form = choose_form(c, kWords);
  c.form = form;
  if (form == kRule || form >= kHalve) return;
  with_scale(bytes, [&]<class V>(V) LOX_INLINE_LAMBDA {
    if constexpr (kWords) {
      fill_tables<V, true, 2>(c, form);
    } else {
      for_unit(c.unit, [&]<class Samples>(Samples) LOX_INLINE_LAMBDA {
        fill_tables<V, false, Samples::kBytes>(c, form);
      });
    }
  });
}

// --- rows of vectors --------------------------------------------------------

// Where a vector of outputs is made: a row from what the offsets count from on,
// and another one. Offsets and table move as they are taken.
struct Place {
  const uint8_t *src, *below;
  const int16_t *offsets;
  const uint8_t *table;
};
template <class V, class Make>
LOX_INLINE void for_groups(const Columns *c, const uint8_t *row,
                           const uint8_t *below, uint8_t *dst, Make make) {
  Place at = {row + c->origin, below + c->origin, c->offsets, c->table};
  const auto step = [&]() LOX_INLINE_LAMBDA {
    make(dst, at);
    settle(at.offsets);
    settle(at.table);
  };
  const auto move = [&](ptrdiff_t by) LOX_INLINE_LAMBDA {
    dst += by;
    settle(dst);
  };
  for (int32_t i = c->repeats; i > 0; --i) {
    at.offsets = c->offsets;
    at.table = c->table;
    for (int32_t left = c->period; left > 0; --left) {
      step();
      move(V::n);
    }
    at.src += c->advance;
    at.below += c->advance;
  }
  const ptrdiff_t rest =
      ptrdiff_t{c->count} * c->unit - ptrdiff_t{c->repeats} * c->period * V::n;
  if (rest > 0) for_vectors<V, 2>(rest, step, move);
}

// Calls kernel.operator()<form>() for one of the gathering forms.
template <class Kernel>
LOX_INLINE void with_span(int32_t form, Kernel kernel) {
  switch (form) {
    case kGather16:
      return kernel.template operator()<kGather16>();
    case kGather32:
      return kernel.template operator()<kGather32>();
    default:
      return kernel.template operator()<kGather64>();
  }
}

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
LOX_INLINE void for_cells(const uint8_t *row, const uint8_t *below,
                          uint8_t *dst, const Columns *c, Make make) {
  const ptrdiff_t start = ptrdiff_t{c->first} * c->unit * kFactor;
  row += start;
  below += start;
  for_moving_vectors<V, 4>(
      ptrdiff_t{c->count} * c->unit,
      [&]() LOX_INLINE_LAMBDA {
        V::store_bytes(dst, make(row, below));
        dst += V::n;
        settle(row);
        settle(below);
        settle(dst);
      },
      [&](ptrdiff_t by) LOX_INLINE_LAMBDA {
        row -= kFactor * by;
        below -= kFactor * by;
        dst -= by;
      });
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
          V::template store_in_turn<kUnit>(
              to, here, V::average_down(here, V::load_bytes(from + kUnit)));
        },
        [&](ptrdiff_t step) LOX_INLINE_LAMBDA {
          from += step;
          to += 2 * step;
          settle(from);
          settle(to);
        });
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
  using Lanes = V;
  static constexpr bool kWords = false;
  template <int kSpan, class Places>
  LOX_OP auto gather(const uint8_t *src, typename V::Offsets offsets,
                     const Places &places) {
    return V::template gather<kSpan>(src, offsets, places);
  }
  LOX_OP auto weights(const uint8_t *&p) { return V::take_weights(p); }
  LOX_OP auto weights(Products w) {
    return V::fill_weights(w.here, w.next, w.share);
  }
  LOX_OP auto neighbours(const uint8_t *p, const uint8_t *q) {
    return V::zip(V::load_bytes(p), V::load_bytes(q));
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
  LOX_OP void put_weighed(uint8_t *dst, Values v, Weights w) {
    V::store_bytes(dst, V::weigh(v, w));
  }
};
template <class V>
struct As565 {
  using Lanes = V;
  static constexpr bool kWords = true;
  template <int kSpan, class Places>
  LOX_OP auto gather(const uint8_t *src, typename V::Offsets offsets,
                     const Places &places) {
    return V::template gather_words<kSpan>(src, offsets, places);
  }
  LOX_OP auto weights(const uint8_t *&p) { return V::take_word_weights(p); }
  LOX_OP auto weights(Products w) {
    return V::fill_word_weights(w.here, w.next, w.share);
  }
  LOX_OP typename V::WordNeighbours neighbours(const uint8_t *p,
                                               const uint8_t *q) {
    return {V::load_words(p), V::load_words(q)};
  }
  LOX_OP void put_average(uint8_t *dst, const uint8_t *p, const uint8_t *q) {
    put_average(dst, neighbours(p, q));
  }
  LOX_OP void put_average(uint8_t *dst, typename V::WordNeighbours v) {
    V::store_words(dst, V::average565(v.first, v.second));
  }
  template <class Values>
  LOX_OP void put_mean(uint8_t *dst, Values v, Values w) {
    V::store_words(dst, V::mean_of_4_565(v, w));
  }
  template <class Values, class Weights>
  LOX_OP void put_weighed(uint8_t *dst, Values v, Weights w) {
    V::store_words(dst, V::weigh565(v, w));
  }
};

// Calls kernel(As<V>()) for a strip of columns that are looked up.
template <template <class> class As, class Kernel>
LOX_INLINE void with_type(ptrdiff_t bytes, Kernel kernel) {
  with_scale(bytes, [&]<class V>(V) LOX_INLINE_LAMBDA { kernel(As<V>()); });
}

template <template <class> class As>
LOX_INLINE void gathered_columns(const uint8_t *row, uint8_t *dst,
                                 const Columns *c) {
  with_type<As>(ptrdiff_t{c->count} * c->unit, [&]<class T>(
                                                   T) LOX_INLINE_LAMBDA {
    using V = typename T::Lanes;
    if (c->form == kWeigh) {
      return for_groups<V>(
          c, row, row, dst, [](uint8_t *to, Place &at) LOX_INLINE_LAMBDA {
            const auto offsets = V::take_offsets(at.offsets);
            const auto places = V::template take_places<16>(at.table);
            T::put_weighed(to, T::template gather<16>(at.src, offsets, places),
                           T::weights(at.table));
          });
    }
    with_span(c->form, [&]<Form kForm>() LOX_INLINE_LAMBDA {
      for_groups<V>(
          c, row, row, dst, [](uint8_t *to, Place &at) LOX_INLINE_LAMBDA {
            constexpr int kSpan = span_of(kForm);
            const auto offsets = V::take_offsets(at.offsets);
            const auto places = V::template take_places<kSpan>(at.table);
            T::put_average(to,
                           T::template gather<kSpan>(at.src, offsets, places));
          });
    });
  });
}

template <template <class> class As>
LOX_INLINE void gathered_cells(const uint8_t *row, const uint8_t *below,
                               uint8_t *dst, const Columns *c) {
  with_type<As>(ptrdiff_t{c->count} * c->unit, [&]<class T>(
                                                   T) LOX_INLINE_LAMBDA {
    using V = typename T::Lanes;
    with_span(c->form, [&]<Form kForm>() LOX_INLINE_LAMBDA {
      for_groups<V>(
          c, row, below, dst, [](uint8_t *to, Place &at) LOX_INLINE_LAMBDA {
            constexpr int kSpan = span_of(kForm);
            const auto offsets = V::take_offsets(at.offsets);
            const auto places = V::template take_places<kSpan>(at.table);
            T::put_mean(to, T::template gather<kSpan>(at.src, offsets, places),
                        T::template gather<kSpan>(at.below, offsets, places));
          });
    });
  });
}

// Whether a blend is done by vectors, and does it.
template <template <class> class As>
LOX_INLINE bool blended(const uint8_t *a, const uint8_t *b, uint8_t *dst,
                        ptrdiff_t n, Step step, bool mod1) {
  if (n < NarrowScale::n || !has_products(step.length, mod1)) return false;
  with_type<As>(n, [&]<class T>(T) LOX_INLINE_LAMBDA {
    const auto rows = [&](auto make) LOX_INLINE_LAMBDA {
      for_vectors<typename T::Lanes, 2>(
          n, [&]() LOX_INLINE_LAMBDA { make(dst, a, b); },
          [&](ptrdiff_t by) LOX_INLINE_LAMBDA {
            a += by;
            b += by;
            dst += by;
            settle(a);
            settle(b);
            settle(dst);
          });
    };
    if (step.length == 2) {
      return rows([](uint8_t *to, const uint8_t *p, const uint8_t *q)
                      LOX_INLINE_LAMBDA { T::put_average(to, p, q); });
    }
    const auto weights = T::weights(products(step, mod1));
    rows([&](uint8_t *to, const uint8_t *p, const uint8_t *q)
             LOX_INLINE_LAMBDA {
               T::put_weighed(to, T::neighbours(p, q), weights);
             });
  });
  return true;
}

LOX_INLINE void columns_vectors(const uint8_t *row, uint8_t *dst,
                                const Columns *c) {
  switch (c->form) {
    case kHalve:
      return with_pow2_unit(c, [&]<class V, int kUnit>() LOX_INLINE_LAMBDA {
        for_cells<V, 2>(
            row, row, dst, c,
            [](const uint8_t *&p, const uint8_t *&) LOX_INLINE_LAMBDA {
              return V::average(V::template take_adjacent<kUnit>(p));
            });
      });
    case kFirstOf4:
      return with_scale(c->count, [&]<class V>(V) LOX_INLINE_LAMBDA {
        for_cells<V, 4>(row, row, dst, c,
                        [](const uint8_t *&p, const uint8_t *&)
                            LOX_INLINE_LAMBDA {
                              return V::average(V::take_first_two_of_4(p));
                            });
      });
    case kDouble:
      return with_pow2_unit(c, [&]<class V, int kUnit>() LOX_INLINE_LAMBDA {
        double_columns<V, kUnit>(row, dst, c);
      });
    default:
      return gathered_columns<AsBytes>(row, dst, c);
  }
}

LOX_INLINE void cells_vectors(const uint8_t *row, const uint8_t *below,
                              uint8_t *dst, const Columns *c) {
  switch (c->form) {
    case kHalve:
      return with_pow2_unit(c, [&]<class V, int kUnit>() LOX_INLINE_LAMBDA {
        for_cells<V, 2>(
            row, below, dst, c,
            [](const uint8_t *&p, const uint8_t *&q) LOX_INLINE_LAMBDA {
              return V::mean_of_4(V::template take_adjacent<kUnit>(p),
                                  V::template take_adjacent<kUnit>(q));
            });
      });
    case kFirstOf4:
      return with_scale(c->count, [&]<class V>(V) LOX_INLINE_LAMBDA {
        for_cells<V, 4>(row, below, dst, c,
                        [](const uint8_t *&p, const uint8_t *&q)
                            LOX_INLINE_LAMBDA {
                              return V::mean_of_4(V::take_first_two_of_4(p),
                                                  V::take_first_two_of_4(q));
                            });
      });
    default:
      return gathered_cells<AsBytes>(row, below, dst, c);
  }
}
#endif

// --- the table's kernels ----------------------------------------------------

template <bool kWords>
void prepare(Columns *c) {
  c->form = kRule;
#if LOX_VECTORS
  prepare_vectors<kWords>(*c);
#endif
}

void columns(const uint8_t *row, uint8_t *dst, const Columns *c) {
#if LOX_VECTORS
  if (c->form != kRule) return columns_vectors(row, dst, c);
#endif
  for_unit(c->unit, [&]<class Samples>(Samples) LOX_INLINE_LAMBDA {
    columns_rule<Samples>(row, dst, c);
  });
}

void cells(const uint8_t *row, const uint8_t *below, uint8_t *dst,
           const Columns *c) {
#if LOX_VECTORS
  if (c->form != kRule) return cells_vectors(row, below, dst, c);
#endif
  for_unit(c->unit, [&]<class Samples>(Samples) LOX_INLINE_LAMBDA {
    cells_rule<Samples>(row, below, dst, c);
  });
}

void blend(const uint8_t *a, const uint8_t *b, uint8_t *dst, ptrdiff_t n,
           Step step, bool mod1) {
#if LOX_VECTORS
  if (blended<AsBytes>(a, b, dst, n, step, mod1)) return;
#endif
  blend_rule<ByteSamples<1>>(a, b, dst, n, step, mod1);
}

void columns565(const uint8_t *row, uint8_t *dst, const Columns *c) {
#if LOX_VECTORS
  if (c->form != kRule) return gathered_columns<As565>(row, dst, c);
#endif
  columns_rule<Rgb565Samples>(row, dst, c);
}

void cells565(const uint8_t *row, const uint8_t *below, uint8_t *dst,
              const Columns *c) {
#if LOX_VECTORS
  if (c->form != kRule) return gathered_cells<As565>(row, below, dst, c);
#endif
  cells_rule<Rgb565Samples>(row, below, dst, c);
}

void blend565(const uint8_t *a, const uint8_t *b, uint8_t *dst, ptrdiff_t n,
              Step step, bool mod1) {
#if LOX_VECTORS
  if (blended<As565>(a, b, dst, n, step, mod1)) return;
#endif
  blend_rule<Rgb565Samples>(a, b, dst, n, step, mod1);
}

template <int kUnit>
LOX_INLINE void reduce_words(const uint8_t *row, const uint8_t *below,
                             uint8_t *dst, int32_t factor, ptrdiff_t count) {
  ptrdiff_t i = 0;
#if LOX_VECTORS
  if (factor == 2 && count * kUnit >= NarrowScale::n) {
    return with_scale(count * kUnit, [&]<class V>(V) LOX_INLINE_LAMBDA {
      for_vectors<V, 2>(
          count * kUnit,
          [&]() LOX_INLINE_LAMBDA {
            V::template halve_words<kUnit>(row, below, dst);
          },
          [&](ptrdiff_t step) LOX_INLINE_LAMBDA {
            row += 2 * step;
            below += 2 * step;
            dst += step;
            settle(row);
            settle(below);
            settle(dst);
          });
    });
  }
#endif
  const auto word = [](const uint8_t *p) LOX_INLINE_LAMBDA {
    return static_cast<uint32_t>(p[0] | p[1] << 8);
  };
  for (; i < count; ++i) {
    const ptrdiff_t cell = i * factor * kUnit;
    for (int k = 0; k < kUnit; k += 2) {
      const ptrdiff_t at = cell + k;
      const uint32_t mean = (word(row + at) + word(row + at + kUnit) +
                             word(below + at) + word(below + at + kUnit)) >>
                            2;
      dst[i * kUnit + k] = static_cast<uint8_t>(mean);
      dst[i * kUnit + k + 1] = static_cast<uint8_t>(mean >> 8);
    }
  }
}

void words(const uint8_t *row, const uint8_t *below, uint8_t *dst, int32_t unit,
           int32_t factor, ptrdiff_t count) {
  if (unit == 2) {
    reduce_words<2>(row, below, dst, factor, count);
  } else {
    reduce_words<4>(row, below, dst, factor, count);
  }
}

}  // namespace

constinit const ScaleTables scale_rows = {
    .bytes = {.prepare = prepare<false>,
              .columns = columns,
              .cells = cells,
              .blend = blend},
    .rgb565 = {.prepare = prepare<true>,
               .columns = columns565,
               .cells = cells565,
               .blend = blend565},
    .words = words,
};

}  // namespace lox::LOX_SET
