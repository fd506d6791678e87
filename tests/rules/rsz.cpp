// SPDX-License-Identifier: Apache-2.0
// Scaling sample by sample: types of samples as runs of bits, where each output
// comes from along one direction, and the roles that are made of that.
#include <orumlox/orumlox.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>

#include "rules/rules.h"

namespace lox_test {
namespace {

bool has(std::string_view text, const char *word) {
  return text.find(word) != std::string_view::npos;
}

// A sample's bytes make a little-endian word, of which each component has some
// bits, the first the lowest: 8b8b or 5b6b5b.
struct Type {
  std::vector<int> bits;
  bool exact = false;  // strides, whatever the type

  // The first one that a name has.
  explicit Type(std::string_view name) {
    size_t at = name.find_first_of("0123456789");
    while (at < name.size() && name[at] >= '0' && name[at] <= '9') {
      int count = 0;
      const auto [end, error] =
          std::from_chars(name.data() + at, name.data() + name.size(), count);
      bits.push_back(count);
      at = static_cast<size_t>(end - name.data()) + 1;
    }
  }
  int bytes() const {
    int sum = 0;
    for (const int b : bits) sum += b;
    return sum / 8;
  }
  bool is_16_bit() const { return bits[0] == 16; }
  // Strides of 16-bit words are rounded down to even.
  int64_t stride(int32_t given) const {
    return !exact && (bits[0] == 16 || bits[0] == 5) ? given & ~1 : given;
  }
};

// A plane taken apart into components.
struct Plane {
  const Type &type;
  Size size;
  std::vector<std::array<int32_t, 4>> samples;

  Plane(const Type &t, Size s)
      : type(t), size(s), samples(size_t{1} * s.width * s.height) {}
  Plane(const Type &t, Size s, const uint8_t *src, int32_t stride)
      : Plane(t, s) {
    for_samples([&](int32_t x, int32_t y) {
      const uint8_t *from = src + y * type.stride(stride) + x * type.bytes();
      uint32_t word = 0;
      for (int i = 0; i < type.bytes(); ++i) word |= uint32_t{from[i]} << 8 * i;
      for (size_t c = 0; c < type.bits.size(); ++c) {
        set(x, y, c, static_cast<int32_t>(word));
        word >>= type.bits[c];
      }
    });
  }

  template <class Each>
  void for_samples(Each each) const {
    for (int32_t y = 0; y < size.height; ++y) {
      for (int32_t x = 0; x < size.width; ++x) each(x, y);
    }
  }
  const std::array<int32_t, 4> &at(int32_t x, int32_t y) const {
    return samples[size_t{1} * y * size.width + x];
  }
  // A component keeps its own low bits.
  void set(int32_t x, int32_t y, size_t c, int32_t value) {
    samples[size_t{1} * y * size.width + x][c] =
        value & ((1 << type.bits[c]) - 1);
  }
  void write(uint32_t rotation, int32_t stride, uint8_t *dst) const {
    for_samples([&](int32_t x, int32_t y) {
      const Point to = rotated(rotation, size, x, y);
      uint32_t word = 0;
      int shift = 0;
      for (size_t c = 0; c < type.bits.size(); ++c) {
        word |= static_cast<uint32_t>(at(x, y)[c]) << shift;
        shift += type.bits[c];
      }
      uint8_t *sample = dst + to.y * type.stride(stride) + to.x * type.bytes();
      for (int i = 0; i < type.bytes(); ++i) {
        sample[i] = static_cast<uint8_t>(word >> 8 * i);
      }
    });
  }
};

// Along one direction an output is the k-th of n values on the way from source
// sample a to b: a itself for k = 0, the mean of both for k = n = 1.
struct Tap {
  int32_t a, b;
  int32_t k, n;
};

// `whole_blends`: what a direction without a remainder does.
std::vector<Tap> reduction(int32_t from, int32_t to, bool whole_blends) {
  const int32_t q = from / to;
  const int32_t e = from % to;
  std::vector<Tap> taps;
  int32_t source = 0;
  int32_t accumulator = 0;
  for (int32_t i = 0; i < to; ++i) {
    accumulator += e;
    const bool skips = accumulator >= to;
    const int blends = skips || (e == 0 && whole_blends) ? 1 : 0;
    taps.push_back({source, source + blends, blends, blends});
    source += q;
    if (skips) {
      ++source;
      accumulator -= to;
    }
  }
  return taps;
}

std::vector<Tap> enlargement(int32_t from, int32_t to) {
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

int32_t on_the_way(int32_t a, int32_t b, const Tap &t, bool mode1) {
  if (!mode1) return (a * (t.n + 1 - t.k) + b * t.k) / (t.n + 1);
  constexpr int32_t kWeights[34] = {0, 0, 32, 21, 16, 13, 11, 9, 8, 7, 6, 6,
                                    5, 5, 4,  4,  4,  3,  3,  3, 3, 3, 3, 2,
                                    2, 2, 2,  2,  2,  2,  2,  2, 2, 1};
  const int32_t w = kWeights[std::min(t.n + 1, 33)];
  return (b * t.k * w + a * (64 - t.k * w)) >> 6;
}

// One direction, across or down.
Plane along(bool across, const Plane &p, int32_t to, bool mode1) {
  const int32_t from = across ? p.size.width : p.size.height;
  const std::vector<Tap> taps =
      to < from ? reduction(from, to, true) : enlargement(from, to);
  Plane out(p.type, across ? Size{to, p.size.height} : Size{p.size.width, to});
  out.for_samples([&](int32_t x, int32_t y) {
    const Tap &t = taps[across ? x : y];
    const auto &a = across ? p.at(t.a, y) : p.at(x, t.a);
    const auto &b = across ? p.at(t.b, y) : p.at(x, t.b);
    for (size_t c = 0; c < p.type.bits.size(); ++c) {
      out.set(x, y, c, on_the_way(a[c], b[c], t, mode1 && to >= from));
    }
  });
  return out;
}

// A sample that a direction does not blend counts twice: the mean of four is
// that of two then, or the sample.
Plane both_ways(const Plane &p, Size to, bool whole_blends) {
  const auto columns = reduction(p.size.width, to.width, whole_blends);
  const auto rows = reduction(p.size.height, to.height, whole_blends);
  Plane out(p.type, to);
  out.for_samples([&](int32_t x, int32_t y) {
    const Tap &h = columns[x];
    const Tap &v = rows[y];
    for (size_t c = 0; c < p.type.bits.size(); ++c) {
      const int32_t sum = p.at(h.a, v.a)[c] + p.at(h.b, v.a)[c] +
                          p.at(h.a, v.b)[c] + p.at(h.b, v.b)[c];
      out.set(x, y, c, sum >> 2);
    }
  });
  return out;
}

bool is_whole(Size from, Size to) {
  return from.width % to.width == 0 && from.height % to.height == 0;
}
bool is_smaller(Size from, Size to) {
  return to.width < from.width && to.height < from.height;
}
Plane scaled(const Plane &p, Size to, bool mode1) {
  if (is_smaller(p.size, to)) return both_ways(p, to, is_whole(p.size, to));
  return along(false, along(true, p, to.width, mode1), to.height, mode1);
}

uint32_t rotation_of(std::string_view name) {
  return has(name, "_90l")   ? VEXO_ROT_90L
         : has(name, "_90r") ? VEXO_ROT_90R
         : has(name, "_180") ? VEXO_ROT_180
                             : VEXO_ROT_COPY;
}

// A kernel of its role: both ways at once, across or down. What is across is
// not turned.
void kernel(const Function &function, const uint8_t *src, int32_t width,
            int32_t height, int32_t new_width, int32_t new_height, uint8_t *dst,
            int32_t src_stride, int32_t dst_stride) {
  const std::string_view name = function.name + 5;  // after vexo_
  const Type type(name);
  const uint32_t rotation = rotation_of(name);
  if (is_quarter(rotation)) std::swap(new_width, new_height);
  const bool whole = has(name, "_down_mult");
  const bool both = whole || has(name, "_non_mult");
  const bool down = has(name, "_down_h") || has(name, "_up_h");
  const bool mode1 = has(name, "_mode1");
  // The sizes of a direction that is left alone are not read.
  if (std::min({down ? new_width : width, height, new_width,
                both || down ? new_height : height}) < 1) {
    return;
  }
  const Plane plane(type, {down ? new_width : width, height}, src, src_stride);
  if (both) {
    both_ways(plane, {new_width, new_height}, whole)
        .write(rotation, dst_stride, dst);
  } else {
    along(!down, plane, down ? new_height : new_width, mode1)
        .write(down ? rotation : 0, dst_stride, dst);
  }
}

int32_t scale(const Type &type, uint32_t rotation, const uint8_t *src,
              Size from, Size to, uint8_t *dst, int32_t src_stride,
              int32_t dst_stride, int32_t mode) {
  if (std::min({from.width, from.height, to.width, to.height}) < 1) {
    return VEXO_ERR_ARG;
  }
  if (is_quarter(rotation)) std::swap(to.width, to.height);
  if (type.is_16_bit() && !(is_smaller(from, to) && is_whole(from, to))) {
    return VEXO_ERR_UNSUPPORTED;
  }
  scaled({type, from, src, src_stride}, to, mode == VEXO_MODE_MOD1)
      .write(rotation, dst_stride, dst);
  return VEXO_OK;
}
int32_t scaler(const Function &function, const uint8_t *src, int32_t width,
               int32_t height, int32_t new_width, int32_t new_height,
               uint8_t *dst, uint8_t *, int32_t src_stride, int32_t dst_stride,
               int32_t mode) {
  return scale(Type(function.name), rotation_of(function.name), src,
               {width, height}, {new_width, new_height}, dst, src_stride,
               dst_stride, mode);
}

// The types of the planes of a format code that is scaled.
std::vector<const char *> types_of(int32_t format, bool yuv_alone) {
  if (format >= 0 && format < 100 && format != VEXO_FMT_T64X32) {
    if (format == VEXO_FMT_YUV400) return {"8b"};
    if (has_pairs(format)) return {"8b", "8b8b"};
    return {"8b", "8b", "8b"};
  }
  if (yuv_alone) return {};
  if (format == 200 || format == 201) return {"5b6b5b"};
  if (format == 400 || format == 401) return {"8b8b8b"};
  if (format >= 500 && format <= 503) return {"8b8b8b8b"};
  if (format == VEXO_FMT_P010LE) return {"16b", "16b16b"};
  return {};
}

// Plane by plane, until one is refused. Those of pictures that keep their size
// are copied.
int32_t scale_planes(bool yuv_alone, uint32_t rotation, bool copies,
                     const vexo_img *src, const vexo_img *dst) {
  const auto types = types_of(src->format, yuv_alone);
  if (types.empty()) return VEXO_ERR_UNSUPPORTED;
  for (size_t p = 0; p < types.size(); ++p) {
    const Type type(types[p]);
    const Size from = {src->width[p], src->height[p]};
    if (copies) {
      move_rows(src->plane[p], type.stride(src->stride[p]),
                int64_t{from.width} * type.bytes(), from.height,
                type.stride(dst->stride[p]), dst->plane[p]);
      continue;
    }
    const int32_t status = scale(type, rotation, src->plane[p], from,
                                 {dst->width[p], dst->height[p]}, dst->plane[p],
                                 src->stride[p], dst->stride[p], dst->mode);
    if (status != VEXO_OK) return status;
  }
  return VEXO_OK;
}
bool same(Size a, Size b) { return a.width == b.width && a.height == b.height; }
}  // namespace

int32_t scale_picture(const Function &, const vexo_img *src,
                      const vexo_img *dst) {
  if (src->format != dst->format) return VEXO_ERR_ARG;
  const bool copies =
      same({src->width[0], src->height[0]}, {dst->width[0], dst->height[0]});
  return scale_planes(false, 0, copies, src, dst);
}

namespace {

// What keeps its size is turned, and of more formats. Mirrored it is not
// scaled.
int32_t turned_picture(const Function &function, const vexo_img *src,
                       uint32_t rotation, const vexo_img *dst) {
  if (src->format != dst->format) return VEXO_ERR_ARG;
  Size to = {dst->width[0], dst->height[0]};
  if (is_quarter(rotation)) std::swap(to.width, to.height);
  if (same({src->width[0], src->height[0]}, to)) {
    return turn_picture(function, src, rotation, dst);
  }
  return scale_planes(true, rotation <= VEXO_ROT_180 ? rotation : 0, false, src,
                      dst);
}

}  // namespace

void scale_words(int unit, const uint8_t *src, Size from, Size to, uint8_t *dst,
                 int32_t src_stride, int32_t dst_stride, int32_t mode) {
  Type type(unit == 2 ? "16b" : "16b16b");
  type.exact = true;
  scaled({type, from, src, src_stride}, to, mode == VEXO_MODE_MOD1)
      .write(0, dst_stride, dst);
}

namespace {

// The scaler by steps: weights in eighths of the neighbours that have one.
void bilinear(const Function &, const uint8_t *src, int32_t src_stride,
              int32_t width, int32_t height, int32_t dst_stride, uint8_t *dst,
              uint32_t across, uint32_t down) {
  for (int32_t y = 0; y < height && width > 0; ++y) {
    for (int32_t x = 0; x < width; ++x) {
      const uint32_t p[2] = {x * (across >> 3), y * (down >> 3)};
      const uint32_t phase[2] = {p[0] >> 15 & 7, p[1] >> 15 & 7};
      uint32_t sum = 0;
      for (const uint32_t right : {0, 1}) {
        for (const uint32_t below : {0, 1}) {
          const uint32_t weight = (right ? phase[0] : 8 - phase[0]) *
                                  (below ? phase[1] : 8 - phase[1]);
          if (weight == 0) continue;
          const int64_t column = int64_t{(p[0] >> 18) + right} << (across & 7);
          const int64_t row = int64_t{(p[1] >> 18) + below} << (down & 7);
          sum += weight * src[row * src_stride + column];
        }
      }
      dst[int64_t{y} * dst_stride + x] = static_cast<uint8_t>(sum >> 6);
    }
  }
}

}  // namespace

std::vector<Rule> rsz_rules() {
  return {
#define KERNEL(name) rule_for(name, scaler),
#include "vexo_rsz_scaler.inc"
#undef KERNEL
      rule_for(vexo_rsz, scale_picture),
      rule_for_rows(vexo_rsz_rows, scale_picture),
      rule_for(vexo_rsz_rot, turned_picture),
      rule_for(vexo_rsz_8b_org, bilinear),
#define KERNEL(name) rule_for(name, kernel),
#include "vexo_rsz_kernel.inc"
  };
}

}  // namespace lox_test
