// SPDX-License-Identifier: Apache-2.0
// Scaling in the domain of the cosine transform, written for plainness: how a
// direction is cut into blocks, what becomes of a block in doubles, block means
// sample by sample, and the bytes of a destination.
#pragma once

#include <orumlox/dct.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

namespace lox_test {

constexpr int32_t kAny = 255;

// Samples of one kind; beyond the size are those of the last column or row.
struct Plane {
  Plane() = default;
  Plane(int32_t w, int32_t h)
      : width(std::max(w, 0)),
        height(std::max(h, 0)),
        samples(size_t{1} * width * height) {}
  // Bytes `first`, `first` + `step`, ... of each row.
  Plane(const uint8_t *data, int32_t stride, int32_t w, int32_t h,
        int32_t step = 1, int32_t first = 0)
      : Plane(w, h) {
    for (int32_t y = 0; y < height; ++y) {
      for (int32_t x = 0; x < width; ++x) {
        at(x, y) = data[ptrdiff_t{y} * stride + ptrdiff_t{x} * step + first];
      }
    }
  }
  uint8_t &at(int32_t x, int32_t y) { return samples[index(x, y)]; }
  int32_t sample(int32_t x, int32_t y) const {
    return samples[index(std::min(x, width - 1), std::min(y, height - 1))];
  }
  size_t index(int32_t x, int32_t y) const { return size_t{1} * y * width + x; }

  int32_t width = 0;
  int32_t height = 0;
  std::vector<uint8_t> samples;
  int32_t tolerance = 0;  // how far off the library's may be
};

// One direction of a plane.
struct Axis {
  Axis() = default;
  Axis(int32_t from, int32_t to) {
    if (from < 1 || to < 1) return;
    const float given = static_cast<float>(from) / static_cast<float>(to);
    const auto pad = static_cast<float>((4 - to % 4) % 4);
    src = from + static_cast<int32_t>(given * pad);
    if (static_cast<int32_t>(100 * given * pad) % 100 != 0) ++src;
    dst = (to + 3) / 4 * 4;
    ratio = static_cast<float>(src) / static_cast<float>(dst);
    block = static_cast<int32_t>(4 * ratio);
    if (block < 1) return;
    two_sizes = static_cast<int32_t>(400 * ratio) % 100 != 0;
    count = dst / 4;
    larger = two_sizes ? src - count * block : 0;
    starts = {0};
    for (int32_t i = 0; i < count; ++i) {
      starts.push_back(starts.back() + block + (is_larger(i) ? 1 : 0));
    }
  }
  bool is_larger(int32_t i) const {
    const auto before = [this](int64_t n) {
      return (n * larger + count / 2) / count;
    };
    return before(i) != before(i + 1);
  }

  int32_t src = 0, dst = 0, block = 0;
  float ratio = 0;
  bool two_sizes = false;
  int32_t count = 0, larger = 0;
  std::vector<int32_t> starts;
};

// Entry (u, i) of the orthonormal DCT-II of n points. Rows but the first add up
// to 0, that of a single point too.
inline double basis(int32_t u, int32_t i, int32_t n) {
  if (n == 1 && u > 0) return 0;
  return std::sqrt((u == 0 ? 1.0 : 2.0) / n) *
         std::cos((2.0 * i + 1) * u * 3.14159265358979323846 / (2.0 * n));
}
inline const std::vector<double> &basis_rows(int32_t n) {
  static std::map<int32_t, std::vector<double>> known;
  std::vector<double> &rows = known[n];
  for (int32_t j = static_cast<int32_t>(rows.size()); j < 4 * n; ++j) {
    rows.push_back(basis(j / n, j % n, n));
  }
  return rows;
}

using Coefficients = std::array<double, 16>;
inline Coefficients transform(const Plane &plane, int32_t x0, int32_t y0,
                              int32_t width, int32_t height) {
  const std::vector<double> &across = basis_rows(width);
  const std::vector<double> &down = basis_rows(height);
  Coefficients c{};
  for (int32_t y = 0; y < height; ++y) {
    double row[4] = {};
    for (int32_t x = 0; x < width; ++x) {
      const double s = plane.sample(x0 + x, y0 + y);
      for (int v = 0; v < 4; ++v)
        row[v] += s * across[size_t{1} * v * width + x];
    }
    for (int i = 0; i < 16; ++i) {
      c[i] += down[size_t{1} * (i / 4) * height + y] * row[i % 4];
    }
  }
  return c;
}

inline std::array<int32_t, 16> weights(int32_t width, int32_t height) {
  constexpr float kScales[] = {0.25f, 0.3162f, 0.4f};
  const float s = 1.004f / std::sqrt(static_cast<float>(width) *
                                     static_cast<float>(height));
  std::array<int32_t, 16> all;
  for (int i = 0; i < 16; ++i) {
    const float scale = kScales[i / 4 % 2 + i % 2];
    all[i] = static_cast<int32_t>(s * scale * 2048 * 64);
  }
  return all;
}

// `high` is c >> 16.
inline int16_t weighted(int64_t high, int32_t weight) {
  return static_cast<int16_t>(high * weight >> 8);
}

using Block = std::array<uint8_t, 16>;
inline Block inverse(const std::array<int16_t, 16> &w) {
  const auto four = [](const int64_t(&c)[4], int shift, int64_t(&out)[4]) {
    const int64_t e0 = 128 * (c[0] + c[2]), e1 = 128 * (c[0] - c[2]);
    const int64_t oa = 53 * c[1] - 128 * c[3], ob = 128 * c[1] + 53 * c[3];
    out[0] = (e0 + ob) >> shift;
    out[1] = (e1 + oa) >> shift;
    out[2] = (e1 - oa) >> shift;
    out[3] = (e0 - ob) >> shift;
  };
  int64_t rows[4][4];
  for (int u = 0; u < 4; ++u) {
    four({w[4 * u], w[4 * u + 1], w[4 * u + 2], w[4 * u + 3]}, 7, rows[u]);
  }
  Block block;
  for (int x = 0; x < 4; ++x) {
    int64_t column[4];
    four({rows[0][x], rows[1][x], rows[2][x], rows[3][x]}, 14, column);
    for (int y = 0; y < 4; ++y) {
      const auto cut = static_cast<int16_t>(column[y]);
      block[4 * y + x] = static_cast<uint8_t>(std::clamp<int>(cut, 0, 255));
    }
  }
  return block;
}

// All blocks of a plane.
inline Plane scaled(const Plane &from, const Axis &across, const Axis &down) {
  if (across.count * down.count == 0) return {};
  Plane to(4 * across.count, 4 * down.count);
  // A coefficient just beside a whole number moves samples by up to a quarter
  // at ratio 1, which several together make 2; enlarged ones by any amount.
  const int32_t area = across.block * down.block;
  to.tolerance = area < 16 ? kAny : area < 36 ? 2 : 1;
  for (int32_t row = 0; row < down.count; ++row) {
    for (int32_t column = 0; column < across.count; ++column) {
      const int32_t x0 = across.starts[column], y0 = down.starts[row];
      const int32_t width = across.starts[column + 1] - x0;
      const int32_t height = down.starts[row + 1] - y0;
      const Coefficients c = transform(from, x0, y0, width, height);
      const auto weight = weights(width, height);
      std::array<int16_t, 16> w;
      for (int i = 0; i < 16; ++i) {
        int64_t high = std::llround(65536 * c[i]) >> 16;
        if (i == 0) high = std::min<int64_t>(high, 8388607 / weight[0]);
        w[i] = weighted(high, weight[i]);
      }
      const Block block = inverse(w);
      for (int i = 0; i < 16; ++i) {
        to.at(4 * column + i % 4, 4 * row + i / 4) = block[i];
      }
    }
  }
  return to;
}

// Which samples of a block of `factor` columns and rows count, and how much.
struct Means {
  int32_t factor;
  bool all_rows = true;
  // Of a plane of pairs whose runs of 16 are grouped: how many there are. The
  // groups' samples count unalike if all rows do.
  int32_t pairs = 0;
};
inline Plane means(const Plane &from, const Means &m, int32_t width,
                   int32_t height) {
  constexpr int32_t kGroups[4][4] = {
      {0, 2, 4, 6}, {1, 3, 5, 7}, {8, 10, 12, 14}, {9, 11, 13, 15}};
  constexpr int32_t kUnalike[2][4] = {{1, 2, 1, 2}, {1, 0, 1, 0}};
  Plane to(width, height);
  for (int32_t y = 0; y < to.height; ++y) {
    for (int32_t x = 0; x < to.width; ++x) {
      const bool grouped = 16 * (x / 4 + 1) <= m.pairs;
      int32_t sum = 0, total = 0;
      for (int32_t j = 0; j < m.factor; ++j) {
        for (int32_t i = 0; i < m.factor; ++i) {
          const int32_t weight = !m.all_rows ? 1 - j % 2
                                 : grouped   ? kUnalike[j % 2][i]
                                             : 1;
          const int32_t column =
              grouped ? x / 4 * 16 + kGroups[x % 4][i] : m.factor * x + i;
          sum += weight * from.sample(column, m.factor * y + j);
          total += weight;
        }
      }
      to.at(x, y) = static_cast<uint8_t>(sum / total);
    }
  }
  return to;
}

// The plan of NV12 and NV21 sources.
struct Plan {
  Plan(const vexo_img *pair, int32_t factor) : prescale(factor) {
    const vexo_img &src = pair[0];
    const vexo_img &dst = pair[1];
    const int32_t w = src.width[0], h = src.height[0];
    if (factor == 0) {
      for (int p = 0; p < 2; ++p) {
        width[p] = src.width[p];
        height[p] = src.height[p];
      }
    } else {
      width[0] = factor == 2 ? w / 2 / 2 * 2 : (w / 4 + 1) / 2 * 2;
      height[0] = h / factor;
      width[1] = width[0] / 2;
      height[1] = h / (2 * factor);
      for (const int32_t whole : {2, 4}) {
        if (w == whole * dst.width[0] && h == whole * dst.height[0]) {
          exact = whole;
        }
      }
    }
    for (int p = 0; p < 2; ++p) {
      across[p] = Axis(width[p], dst.width[p]);
      down[p] = Axis(height[p], dst.height[p]);
      // What there is to repeat: no columns beyond those counted or that the
      // stride has no room for, but all rows.
      if (factor != 0) {
        width[p] = std::min(width[p], src.stride[p] / (factor * (p + 1)));
        height[p] = src.height[p] / factor;
      }
      if (src.width[p] < 1 || width[p] < 1 || height[p] < 1) {
        across[p] = down[p] = Axis();
      }
    }
    not_aligned = dst.color_std == 1 && factor != 0 && src.stride[0] % 32 != 0;
  }

  int32_t prescale;
  int32_t exact = 0;  // or the ratio
  int32_t width[2], height[2];
  Axis across[2], down[2];
  bool planned = true;  // of a destination of a kind that is served
  bool not_aligned;
};

// The bytes of planes before a call, and what it is to leave there.
struct Canvas {
  Canvas(const vexo_img &img, const std::array<int64_t, 3> &sizes) {
    for (int p = 0; p < 3; ++p) {
      const auto size = static_cast<size_t>(img.plane[p] ? sizes[p] : 0);
      bytes[p].assign(img.plane[p], img.plane[p] + size);
      written[p].resize(size);
    }
  }
  // Planes of all their rows.
  explicit Canvas(const vexo_img &img)
      : Canvas(img, [&img] {
          std::array<int64_t, 3> sizes;
          for (int p = 0; p < 3; ++p) {
            sizes[p] = int64_t{std::max(img.stride[p], 0)} *
                       std::max(img.buf_height[p], 0);
          }
          return sizes;
        }()) {}

  // As far as it reaches.
  void put(const Plane &plane, int p, int32_t stride, int32_t rows,
           int32_t step = 1, int32_t first = 0) {
    tolerance[p] = plane.tolerance;
    for (int32_t y = 0; y < std::min(plane.height, rows); ++y) {
      for (int32_t x = 0; x < std::min(plane.width, stride / step); ++x) {
        const size_t i = size_t{1} * y * stride + size_t{1} * x * step + first;
        bytes[p][i] = static_cast<uint8_t>(plane.sample(x, y));
        written[p][i] = true;
      }
    }
  }

  std::vector<uint8_t> bytes[3];
  std::vector<bool> written[3];
  std::array<int32_t, 3> tolerance{};  // of what is written
};

// The planes of a picture, scaled: luma and the components of the pairs.
inline std::array<Plane, 3> scaled(const Plan &plan, const vexo_img &src,
                                   const vexo_img &dst) {
  std::array<Plane, 3> planes;
  for (int i = 0; i < 3; ++i) {
    const int p = i == 0 ? 0 : 1;
    const int32_t columns = std::min(src.width[p], src.stride[p] / (p + 1));
    const Plane all(src.plane[p], src.stride[p], columns, src.height[p], p + 1,
                    i == 2 ? 1 : 0);
    if (all.samples.empty()) continue;
    if (plan.exact != 0) {
      planes[i] = means(all, {plan.exact}, dst.width[p], dst.height[p]);
    } else if (plan.prescale == 0) {
      planes[i] = scaled(all, plan.across[p], plan.down[p]);
    } else {
      const Means rule{plan.prescale, plan.prescale == 2 || plan.not_aligned,
                       plan.prescale == 4 && i > 0 ? src.stride[1] / 2 : 0};
      planes[i] = scaled(means(all, rule, plan.width[p], plan.height[p]),
                         plan.across[p], plan.down[p]);
    }
  }
  return planes;
}

// What a call leaves in the destination; `chroma` alone, for its thread.
inline void draw(const Plan &plan, const vexo_img &src, const vexo_img &dst,
                 bool chroma_alone, Canvas &canvas) {
  const int32_t format = dst.format;
  const bool served = format == VEXO_FMT_NV12 || format == VEXO_FMT_YUV420;
  const bool nv21 = format == VEXO_FMT_NV21;
  const bool chroma = served || (nv21 && plan.prescale == 0);
  const bool luma =
      chroma || (plan.prescale != 0 && plan.exact == 0 && plan.planned);
  const auto planes = scaled(plan, src, dst);
  if (luma && !chroma_alone) {
    canvas.put(planes[0], 0, dst.stride[0], dst.buf_height[0]);
  }
  for (int c = 0; c < 2 && chroma; ++c) {
    const bool pairs = format != VEXO_FMT_YUV420;
    canvas.put(planes[1 + c], pairs ? 1 : 1 + c, dst.stride[1],
               dst.buf_height[1], pairs ? 2 : 1, pairs ? c : 0);
  }
}

}  // namespace lox_test
