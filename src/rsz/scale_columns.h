// SPDX-License-Identifier: Apache-2.0
//
// What vector forms work out about the columns of a strip before its rows:
// which form serves, and the tables of those that look samples up. Included by
// rsz/scale_rows.cpp only, into each set's namespace.
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
//
// Of words what lies between is the smaller one and a part of the difference d,
// d w / sum with the larger one's weight w. The high half of d (65536 w / sum)
// is that or one less, and the rest tells which.
#pragma once

#include "rsz/scale_rule.h"

#if LOX_VECTORS
#if defined(LOX_SET_neon)
#include "rsz/scale_neon.h"
#else
#include "rsz/scale_x86.h"
#endif
#endif

namespace lox::LOX_SET {

namespace {

// What samples are: bytes, words of three components, words.
enum class Samples { kBytes, k565, kWords };

// What prepare() has chosen for a strip.
enum Method : int32_t {
  kRule,
  kGather16,  // looked up in windows of so many bytes
  kGather32,
  kGather64,
  kSpread,     // in windows that the words of 64 bytes are spread to
  kLerp,       // looked up in 16 bytes, weighed
  kWhole,      // words of a register looked up in one of source words
  kWholeLerp,  // and weighed
  kHalve,      // 2:1
  kFirstOf4,   // 4:1 of bytes
  kDouble      // 1:2
};

#if LOX_VECTORS
using WideScale = ScaleOps<Wide>;
using NarrowScale = ScaleOps<Narrow>;

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
// The same of words.
struct FineProducts {
  int here, next, part_here, part_next, sum;

  LOX_INLINE explicit FineProducts(Products p)
      : here(p.here),
        next(p.next),
        part_here(part(p.here, p.here + p.next)),
        part_next(part(p.next, p.here + p.next)),
        sum(p.here + p.next) {}
  // One that does not fit is of a whole, which one less and the rest make too.
  LOX_INLINE static int part(int weight, int sum) {
    return weight == sum ? 65535 : 65536 * weight / sum;
  }
};
LOX_INLINE bool has_products(int32_t length, bool mod1) {
  return length <= (mod1 ? kMaxLength64ths : kMaxLength);
}

LOX_INLINE bool enlarges(const Axis &axis) {
  return axis.scaling >= Scaling::kEnlarge;
}

// The method of a strip. Its 8 bytes of output are of samples `steps` apart at
// most, those of the source steps * src / dst, rounded up; with the last one's
// neighbour they have to be in one window.
// `whole`: the bytes of a register whose words can be looked up all at once.
LOX_INLINE Method choose_method(const Columns &c, Samples type, int whole) {
  const bool words = type != Samples::kBytes;
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
  const auto weighable = [&]() LOX_INLINE_LAMBDA {
    const int32_t longest =
        axis.dst / axis.src + (axis.dst % axis.src != 0 ? 1 : 0);
    return has_products(longest, axis.scaling == Scaling::kEnlargeMod1);
  };
  if (type == Samples::kWords && enlarge && whole > 0 &&
      src * c.unit >= whole && (axis.dst <= 2 * src || weighable())) {
    const int64_t outputs = whole / c.unit;
    const int64_t wanted = ((outputs - 1) * src + axis.dst - 1) / axis.dst + 2;
    if (wanted <= outputs) return axis.dst <= 2 * src ? kWhole : kWholeLerp;
  }
  const auto span_of_outputs = [&](int bytes) LOX_INLINE_LAMBDA {
    const int steps = c.unit == 3 ? bytes * 3 / 8 : bytes / c.unit - 1;
    return ((steps * src + axis.dst - 1) / axis.dst + 2) * c.unit;
  };
  const int64_t span = span_of_outputs(8);
  const int64_t row = src * c.unit;
  if (enlarge && axis.dst > 2 * src) {
    return span <= 16 && row >= 16 && weighable() ? kLerp : kRule;
  }
  // Windows begin with words, which samples of one or three bytes may not.
  if (!words && whole > 0 && row >= whole && span + c.unit % 2 <= 16 &&
      span_of_outputs(whole / 2) <= whole) {
    return kSpread;
  }
  for (int i = 0; i < 3; ++i) {
    const int64_t window = int64_t{16} << i;
    if (span <= window && row >= window)
      return static_cast<Method>(kGather16 + i);
  }
  return kRule;
}
constexpr bool is_whole(Method method) {
  return method == kWhole || method == kWholeLerp;
}
constexpr bool is_weighed(Method method) {
  return method == kLerp || method == kWholeLerp;
}
constexpr int span_of(Method method) {
  return method == kGather64 || method == kSpread || is_whole(method) ? 64
         : method == kGather32                                        ? 32
                                                                      : 16;
}

// Bytes of table for a vector of outputs.
template <class V, Samples kSamples>
constexpr bool kMayBeWhole = kSamples == Samples::kWords &&V::kPermutesWords;
template <class V, Samples kSamples>
constexpr int places_size(Method method) {
  if (method == kSpread) return 4 * V::n;
  const bool whole = kMayBeWhole<V, kSamples> && is_whole(method);
  return (whole ? 1 : V::windows(span_of(method))) * 2 * V::n;
}
template <class V, Samples kSamples>
constexpr int table_step(Method method) {
  return places_size<V, kSamples>(method) +
         (!is_weighed(method)           ? 0
          : kSamples == Samples::kBytes ? 4 * V::n
          : kSamples == Samples::k565   ? 3 * V::n
                                        : 5 * V::n);
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
  // `weighed`: weights are asked for.
  LOX_INLINE ByteWalk(const Columns &c, ptrdiff_t byte, bool weighed)
      : walk_(c.axis, c.first + static_cast<int32_t>(byte / kUnit)),
        mod1_(is_mod1(&c)),
        weighed_(weighed),
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
    if (weighed_) weights_ = products(step_, mod1_);
  }
  Walk walk_;
  bool mod1_;
  bool weighed_;
  int component_;
  Step step_;
  Products weights_ = {};
};

// Vectors of output after which the places repeat, and how far on in the
// source; some times as many if they are few, so that they make a loop.
template <class V, int kUnit>
LOX_INLINE void set_period(Columns &c) {
  constexpr int kAtLeast = 512 / V::n;
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

// Fills the tables, one vector of output after the other.
template <class V, Samples kSamples, int kUnit>
class TableFiller {
 public:
  LOX_INLINE TableFiller(Columns &c, Method method)
      : c_(c),
        method_(method),
        span_(span_of(method)),
        end_(ptrdiff_t{c.axis.src} * kUnit - span_of(method)),
        bytes_(ptrdiff_t{c.count} * kUnit),
        offset_(c.offsets),
        table_(c.table) {}

  // Of the outputs from byte `start` to byte `stop`, the last vector ending
  // with the strip; offsets count from source byte `origin`.
  LOX_INLINE void fill(ptrdiff_t start, ptrdiff_t stop, ptrdiff_t origin) {
    if (start >= stop) return;
    const ptrdiff_t first = start + V::n <= bytes_ ? start : bytes_ - V::n;
    ByteWalk<kUnit> walk(c_, first, is_weighed(method_));
    for (ptrdiff_t at = start; at < stop; at += V::n) {
      if (at + V::n > bytes_ && at > start) {
        walk = ByteWalk<kUnit>(c_, bytes_ - V::n, is_weighed(method_));
      }
      vector(walk, origin);
    }
  }

 private:
  LOX_INLINE void vector(ByteWalk<kUnit> &walk, ptrdiff_t origin) {
    if constexpr (kSamples == Samples::kBytes && V::kPermutesWords) {
      if (method_ == kSpread) return spread_vector(walk, origin);
    }
    if constexpr (kMayBeWhole<V, kSamples>) {
      if (is_whole(method_)) return whole_vector(walk, origin);
    }
    uint8_t *const weights = table_ + places_size<V, kSamples>(method_);
    for (int group = 0; group < V::n / 8; ++group) {
      const ptrdiff_t base = walk.sample() < end_ ? walk.sample() : end_;
      *offset_++ = static_cast<int16_t>(base - origin);
      for (int i = 0; i < 8; ++i, walk.next()) {
        const int first = static_cast<int>(walk.byte() - base);
        put_places<V, kSamples != Samples::kBytes>(
            table_, group, i, span_, first, first + walk.to_neighbour());
        if (method_ == kLerp) put_weights(weights, group, i, walk.weights());
      }
    }
    table_ += table_step<V, kSamples>(method_);
  }
  // Of each half of the outputs the words to be spread, then which bytes of
  // their windows the groups are.
  LOX_INLINE void spread_vector(ByteWalk<kUnit> &walk, ptrdiff_t origin) {
    for (int half = 0; half < 2; ++half) {
      uint8_t *words = table_ + half * V::n;
      uint8_t *bytes = words + 2 * V::n;
      const ptrdiff_t base = walk.sample() < end_ ? walk.sample() : end_;
      *offset_++ = static_cast<int16_t>(base - origin);
      for (int group = 0; group < V::n / 16; ++group) {
        const ptrdiff_t wanted = walk.sample() - base;
        const ptrdiff_t window = (wanted < V::n - 16 ? wanted : V::n - 16) & ~1;
        for (int i = 0; i < 8; ++i, words += 2, bytes += 2, walk.next()) {
          words[0] = static_cast<uint8_t>(window / 2 + i);
          words[1] = 0;
          const ptrdiff_t first = walk.byte() - base - window;
          bytes[0] = static_cast<uint8_t>(first);
          bytes[1] = static_cast<uint8_t>(first + walk.to_neighbour());
        }
      }
    }
    table_ += table_step<V, kSamples>(method_);
  }
  // All words have one window.
  LOX_INLINE void whole_vector(ByteWalk<kUnit> &walk, ptrdiff_t origin) {
    const ptrdiff_t base = walk.sample() < end_ ? walk.sample() : end_;
    *offset_++ = static_cast<int16_t>(base - origin);
    for (int at = 0; at < V::n; ++at, walk.next()) {
      const int first = static_cast<int>(walk.byte() - base);
      const int second = first + walk.to_neighbour();
      table_[at] = static_cast<uint8_t>(at % 2 == 0 ? first / 2 : 0);
      table_[V::n + at] = static_cast<uint8_t>(at % 2 == 0 ? second / 2 : 0);
      if (method_ == kWholeLerp) {
        put_weights(table_ + 2 * V::n, at / 8, at % 8, walk.weights());
      }
    }
    table_ += table_step<V, kSamples>(method_);
  }
  LOX_INLINE void put_weights(uint8_t *weights, int group, int i, Products p) {
    if constexpr (kSamples == Samples::kWords) {
      const FineProducts f(p);
      const int all[] = {f.here, f.next, f.part_here, f.part_next, f.sum};
      for (int k = 0; k < 5; ++k) {
        weights[k * V::n + group * 8 + i] =
            static_cast<uint8_t>(all[k] >> i % 2 * 8);
      }
    } else if constexpr (kSamples == Samples::k565) {
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
  Method method_;
  int span_;
  ptrdiff_t end_;  // where a row's last window begins
  ptrdiff_t bytes_;
  int16_t *offset_;
  uint8_t *table_;
};

template <class V, Samples kSamples, int kUnit>
LOX_INLINE void fill_tables(Columns &c, Method method) {
  constexpr int kMost = Columns::kBytes / V::n;  // vectors
  const ptrdiff_t end = ptrdiff_t{c.axis.src} * kUnit - span_of(method);
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
      constexpr int kInStrip = Columns::kBytes / kUnit;
      const int32_t strips = (c.count - 1) / kInStrip + 1;
      const int32_t even = ((c.count - 1) / strips + 64) / 64 * 64;
      c.count = even < kInStrip ? even : kInStrip;
    }
  }
  TableFiller<V, kSamples, kUnit> filler(c, method);
  const ptrdiff_t period = ptrdiff_t{c.period} * V::n;
  // A loop, or there would be two of a function of 2 KiB.
#pragma GCC unroll 1
  for (int part = 0; part < 2; ++part) {
    const ptrdiff_t times = part == 0 ? 0 : c.repeats;
    filler.fill(times * period, part == 0 ? period : ptrdiff_t{c.count} * kUnit,
                c.origin + times * c.advance);
  }
}

template <Samples kSamples>
LOX_INLINE void prepare_vectors(Columns &c) {
  const ptrdiff_t bytes = ptrdiff_t{c.count} * c.unit;
  if (bytes < NarrowScale::n) return;
  const bool whole = kSamples != Samples::k565 && WideScale::kPermutesWords &&
                     bytes >= WideScale::n;
  const Method method = choose_method(c, kSamples, whole ? WideScale::n : 0);
  c.method = method;
  if (method == kRule || method >= kHalve) return;
  with_scale(bytes, [&]<class V>(V) LOX_INLINE_LAMBDA {
    if constexpr (kSamples == Samples::k565) {
      fill_tables<V, kSamples, 2>(c, method);
    } else if constexpr (kSamples == Samples::kWords) {
      if (c.unit == 2) return fill_tables<V, kSamples, 2>(c, method);
      fill_tables<V, kSamples, 4>(c, method);
    } else {
      for_unit(c.unit, [&]<class S>(S) LOX_INLINE_LAMBDA {
        fill_tables<V, kSamples, S::kBytes>(c, method);
      });
    }
  });
}
#endif

}  // namespace

}  // namespace lox::LOX_SET
