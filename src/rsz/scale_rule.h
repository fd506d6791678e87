// SPDX-License-Identifier: Apache-2.0
//
// The rule of scaling rows, sample by sample: what the portable form runs, and
// the vector forms where they do not reach. Included by rsz/scale_rows.cpp
// only, into each set's namespace.
#pragma once

#include "rsz/scale_rows.h"
#include "simd/simd.h"
#include "simd/words.h"

namespace lox::LOX_SET {

namespace {

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

// Words, each for itself, kUnit bytes to a sample.
template <int kUnit>
struct WordSamples {
  static constexpr int kBytes = kUnit;
  template <class Value>
  LOX_OP void put(uint8_t *dst, Value value) {
    for (int i = 0; i < kUnit; i += 2) {
      const uint32_t word =
          value([i](const uint8_t *p) LOX_INLINE_LAMBDA -> uint32_t {
            return static_cast<uint32_t>(p[i] | p[i + 1] << 8);
          });
      dst[i] = static_cast<uint8_t>(word);
      dst[i + 1] = static_cast<uint8_t>(word >> 8);
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
            return static_cast<uint32_t>(word_at(p)) >> shift & mask;
          });
      word |= (component & mask) << shift;
    }
    put_word(dst, static_cast<int>(word));
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
LOX_INLINE void box_rule(const uint8_t *row, const uint8_t *below, uint8_t *dst,
                         const Columns *c) {
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
LOX_INLINE void lerp_rule(const uint8_t *a, const uint8_t *b, uint8_t *dst,
                          ptrdiff_t n, Step step, bool mod1) {
  for (ptrdiff_t i = 0; i < n; i += Samples::kBytes) {
    Samples::put(dst + i, [&](auto component) LOX_INLINE_LAMBDA {
      return between(component(a + i), component(b + i), step, mod1);
    });
  }
}

}  // namespace

}  // namespace lox::LOX_SET
