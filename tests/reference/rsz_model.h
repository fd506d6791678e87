// SPDX-License-Identifier: Apache-2.0
// Scaling and turning sample by sample, written for plainness: types of samples
// as runs of bits, where each output comes from along one direction, and the
// roles that are made of that.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

namespace lox_test {

// A sample's bytes make a little-endian word, of which each component has some
// bits.
struct Type {
  const char *name;
  int32_t bytes;
  int32_t components;
  int32_t shift[4];
  int32_t bits[4];
  bool even_strides = false;

  int32_t stride(int32_t given) const {
    return even_strides ? given / 2 * 2 : given;
  }
};
constexpr Type k8b{"8b", 1, 1, {0}, {8}};
constexpr Type k8b8b{"8b8b", 2, 2, {0, 8}, {8, 8}};
constexpr Type k8b8b8b{"8b8b8b", 3, 3, {0, 8, 16}, {8, 8, 8}};
constexpr Type k8b8b8b8b{"8b8b8b8b", 4, 4, {0, 8, 16, 24}, {8, 8, 8, 8}};
constexpr Type k5b6b5b{"5b6b5b", 2, 3, {0, 5, 11}, {5, 6, 5}, true};
constexpr Type k16b{"16b", 2, 1, {0}, {16}, true};
constexpr Type k16b16b{"16b16b", 4, 2, {0, 16}, {16, 16}, true};

struct Size {
  int32_t width, height;
  bool operator==(const Size &) const = default;
  bool empty() const { return width < 1 || height < 1; }
};

// A plane taken apart into components.
struct Picture {
  Picture(const Type &t, Size s)
      : type(&t),
        size(s),
        samples(size_t{1} * s.width * s.height * t.components) {}
  Picture(const Type &t, Size s, const uint8_t *data, int32_t stride)
      : Picture(t, s) {
    for (int32_t y = 0; y < s.height; ++y) {
      for (int32_t x = 0; x < s.width; ++x) {
        const uint8_t *sample = &data[place(x, y, stride)];
        uint32_t word = 0;
        for (int32_t i = 0; i < t.bytes; ++i) {
          word |= uint32_t{sample[i]} << 8 * i;
        }
        for (int32_t c = 0; c < t.components; ++c) {
          set(x, y, c, static_cast<int32_t>(word >> t.shift[c]));
        }
      }
    }
  }

  size_t place(int32_t x, int32_t y, int32_t stride) const {
    return size_t{1} * y * stride + size_t{1} * x * type->bytes;
  }
  size_t index(int32_t x, int32_t y, int32_t c) const {
    return (size_t{1} * y * size.width + x) * type->components + c;
  }
  int32_t at(int32_t x, int32_t y, int32_t c) const {
    return samples[index(x, y, c)];
  }
  // A component keeps its own low bits.
  void set(int32_t x, int32_t y, int32_t c, int32_t value) {
    samples[index(x, y, c)] = value & ((1 << type->bits[c]) - 1);
  }

  void write(uint8_t *data, int32_t stride) const {
    for (int32_t y = 0; y < size.height; ++y) {
      for (int32_t x = 0; x < size.width; ++x) {
        uint32_t word = 0;
        for (int32_t c = 0; c < type->components; ++c) {
          word |= static_cast<uint32_t>(at(x, y, c)) << type->shift[c];
        }
        for (int32_t i = 0; i < type->bytes; ++i) {
          data[place(x, y, stride) + i] = static_cast<uint8_t>(word >> 8 * i);
        }
      }
    }
  }

  const Type *type;
  Size size;
  std::vector<int32_t> samples;
};

// Along one direction an output is the k-th of n values on the way from source
// sample a to b: a itself for k = 0, the mean of both for k = n = 1.
struct Tap {
  int32_t a, b;
  int32_t k, n;
};

// `whole_blends`: what a direction without a remainder does.
inline std::vector<Tap> reduction(int32_t from, int32_t to, bool whole_blends) {
  const int32_t q = from / to;
  const int32_t e = from % to;
  std::vector<Tap> taps;
  int32_t source = 0;
  int32_t accumulator = 0;
  for (int32_t i = 0; i < to; ++i) {
    accumulator += e;
    const bool skips = accumulator >= to;
    if (skips || (e == 0 && whole_blends)) {
      taps.push_back({source, source + 1, 1, 1});
    } else {
      taps.push_back({source, source, 0, 0});
    }
    source += q;
    if (skips) {
      ++source;
      accumulator -= to;
    }
  }
  return taps;
}

inline std::vector<Tap> enlargement(int32_t from, int32_t to) {
  const int32_t r = to / from;
  const int32_t m = to % from;
  std::vector<Tap> taps;
  int32_t accumulator = 0;
  for (int32_t a = 0; a < from; ++a) {
    int32_t n = r - 1;
    accumulator += m;
    if (accumulator >= from) {
      n = r;
      accumulator -= from;
    }
    for (int32_t k = 0; k <= n; ++k) {
      taps.push_back({a, std::min(a + 1, from - 1), k, n});
    }
  }
  return taps;
}

inline int32_t on_the_way(int32_t a, int32_t b, const Tap &t, bool mode1) {
  if (!mode1) return (a * (t.n + 1 - t.k) + b * t.k) / (t.n + 1);
  constexpr int32_t kWeights[34] = {0, 0, 32, 21, 16, 13, 11, 9, 8, 7, 6, 6,
                                    5, 5, 4,  4,  4,  3,  3,  3, 3, 3, 3, 2,
                                    2, 2, 2,  2,  2,  2,  2,  2, 2, 1};
  const int32_t w = kWeights[std::min(t.n + 1, 33)];
  return (b * t.k * w + a * (64 - t.k * w)) >> 6;
}

// One direction, across or down.
inline Picture along(bool across, const Picture &p,
                     const std::vector<Tap> &taps, bool mode1) {
  const int32_t count = static_cast<int32_t>(taps.size());
  Picture out(*p.type,
              across ? Size{count, p.size.height} : Size{p.size.width, count});
  for (int32_t y = 0; y < out.size.height; ++y) {
    for (int32_t x = 0; x < out.size.width; ++x) {
      const Tap &t = taps[across ? x : y];
      for (int32_t c = 0; c < p.type->components; ++c) {
        const int32_t a = across ? p.at(t.a, y, c) : p.at(x, t.a, c);
        const int32_t b = across ? p.at(t.b, y, c) : p.at(x, t.b, c);
        out.set(x, y, c, on_the_way(a, b, t, mode1));
      }
    }
  }
  return out;
}

// A sample that a direction does not blend counts twice: the mean of four is
// that of two then, or the sample.
inline Picture both_ways(const Picture &p, Size to, bool whole_blends) {
  const auto columns = reduction(p.size.width, to.width, whole_blends);
  const auto rows = reduction(p.size.height, to.height, whole_blends);
  Picture out(*p.type, to);
  for (int32_t y = 0; y < to.height; ++y) {
    for (int32_t x = 0; x < to.width; ++x) {
      const Tap &h = columns[x];
      const Tap &v = rows[y];
      for (int32_t c = 0; c < p.type->components; ++c) {
        const int32_t sum = p.at(h.a, v.a, c) + p.at(h.b, v.a, c) +
                            p.at(h.a, v.b, c) + p.at(h.b, v.b, c);
        out.set(x, y, c, sum >> 2);
      }
    }
  }
  return out;
}

enum class Role {
  down_mult,
  down_non_mult,
  down_w,
  up,
  up_mode1,
  down_h,
  up_h,
  up_h_mode1
};
constexpr bool is_across(Role r) {
  return r == Role::down_w || r == Role::up || r == Role::up_mode1;
}
constexpr bool is_down(Role r) { return r >= Role::down_h; }

// The roles of a job; the second is not looked at when the first does both
// directions.
struct Roles {
  Role first, second;
  bool single() const { return first <= Role::down_non_mult; }
};
inline Roles roles(Size from, Size to, bool mode1) {
  const bool narrower = to.width < from.width;
  const bool lower = to.height < from.height;
  if (narrower && lower) {
    const bool whole =
        from.width % to.width == 0 && from.height % to.height == 0;
    const Role role = whole ? Role::down_mult : Role::down_non_mult;
    return {role, role};
  }
  return {narrower ? Role::down_w
          : mode1  ? Role::up_mode1
                   : Role::up,
          lower   ? Role::down_h
          : mode1 ? Role::up_h_mode1
                  : Role::up_h};
}

// What the kernel of a role makes of a picture, before any turn.
inline Picture apply(Role role, const Picture &p, Size to) {
  const auto [width, height] = p.size;
  switch (role) {
    case Role::down_mult:
    case Role::down_non_mult:
      return both_ways(p, to, role == Role::down_mult);
    case Role::down_w:
      return along(true, p, reduction(width, to.width, true), false);
    case Role::down_h:
      return along(false, p, reduction(height, to.height, true), false);
    case Role::up:
    case Role::up_mode1:
      return along(true, p, enlargement(width, to.width),
                   role == Role::up_mode1);
    default:
      return along(false, p, enlargement(height, to.height),
                   role == Role::up_h_mode1);
  }
}

inline Picture scaled(const Picture &p, Size to, bool mode1) {
  const Roles r = roles(p.size, to, mode1);
  const Picture first = apply(r.first, p, to);
  return r.single() ? first : apply(r.second, first, to);
}

// By rotation code.
constexpr bool is_quarter(uint32_t rotation) {
  return rotation == 1 || rotation == 2;
}
constexpr Size turned(Size s, uint32_t rotation) {
  return is_quarter(rotation) ? Size{s.height, s.width} : s;
}
inline Picture turned(const Picture &p, uint32_t rotation) {
  const auto [w, h] = p.size;
  Picture out(*p.type, turned(p.size, rotation));
  for (int32_t j = 0; j < h; ++j) {
    for (int32_t i = 0; i < w; ++i) {
      const Size to[] = {{i, j},         {j, w - 1 - i},
                         {h - 1 - j, i}, {w - 1 - i, h - 1 - j},
                         {w - 1 - i, j}, {i, h - 1 - j}};
      for (int32_t c = 0; c < p.type->components; ++c) {
        out.set(to[rotation].width, to[rotation].height, c, p.at(i, j, c));
      }
    }
  }
  return out;
}

}  // namespace lox_test
