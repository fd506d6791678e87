// SPDX-License-Identifier: Apache-2.0
#include "bench/dct_model.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace bench {

namespace {

using Block4x4 = std::array<std::array<double, 4>, 4>;

// The first four vectors of the orthonormal DCT-II of so many points, by point.
std::vector<std::array<double, 4>> basis(int32_t points) {
  constexpr double kPi = 3.141592653589793;
  std::vector<std::array<double, 4>> out(static_cast<size_t>(points));
  for (int32_t at = 0; at < points; ++at) {
    for (int f = 0; f < 4; ++f) {
      out[static_cast<size_t>(at)][static_cast<size_t>(f)] =
          std::sqrt((f > 0 ? 2. : 1.) / points) *
          std::cos((2. * at + 1) * f * kPi / (2. * points));
    }
  }
  return out;
}

// The lowest coefficients, vertical frequencies downwards, in steps of
// 1 / 65536. The picture's last column and row are repeated.
Block4x4 transform(const Component &src, int32_t left, int32_t top,
                   int32_t width, int32_t height) {
  const auto across = basis(width), down = basis(height);
  Block4x4 sums = {};
  for (int32_t y = 0; y < height; ++y) {
    std::array<double, 4> row = {};
    for (int32_t x = 0; x < width; ++x) {
      const double sample = src.at(std::min(left + x, src.width - 1),
                                   std::min(top + y, src.height - 1));
      const auto &weights = across[static_cast<size_t>(x)];
      for (size_t v = 0; v < 4; ++v) row[v] += sample * weights[v];
    }
    const auto &weights = down[static_cast<size_t>(y)];
    for (size_t u = 0; u < 4; ++u) {
      for (size_t v = 0; v < 4; ++v) sums[u][v] += weights[u] * row[v];
    }
  }
  for (auto &row : sums) {
    for (double &c : row) c = std::round(c * 65536) / 65536;
  }
  return sums;
}

// The 4-point inverse.
std::array<double, 4> invert(const std::array<double, 4> &c) {
  const double e0 = c[0] + c[2], e1 = c[0] - c[2];
  const double oa = (53 * c[1] - 128 * c[3]) / 128;
  const double ob = (128 * c[1] + 53 * c[3]) / 128;
  return {e0 + ob, e1 + oa, e1 - oa, e0 - ob};
}

Block4x4 weigh_and_invert(const Block4x4 &coefficients, double samples) {
  // With the slight boost that is intended. Rows and columns 0 and 2 weigh
  // otherwise than 1 and 3.
  const double scale = 4 * 1.004 / std::sqrt(samples);
  constexpr double kWeights[] = {0.25, 0.3162, 0.4};
  Block4x4 rows, out;
  for (size_t u = 0; u < 4; ++u) {
    std::array<double, 4> weighted;
    for (size_t v = 0; v < 4; ++v) {
      weighted[v] = coefficients[u][v] * scale * kWeights[u % 2 + v % 2];
    }
    rows[u] = invert(weighted);
  }
  for (size_t x = 0; x < 4; ++x) {
    const auto column =
        invert({rows[0][x], rows[1][x], rows[2][x], rows[3][x]});
    for (size_t y = 0; y < 4; ++y) out[y][x] = std::clamp(column[y], 0., 255.);
  }
  return out;
}

}  // namespace

std::vector<double> reduce_by_model(const Component &src, Size dst,
                                    const vexo_rsz_new_context &context,
                                    int plane) {
  std::vector<double> out(static_cast<size_t>(dst.width) *
                          static_cast<size_t>(dst.height));
  const int32_t columns = context.dst_width[plane] / 4;
  const int32_t rows = context.dst_height[plane] / 4;
  // Plane 1 comes behind plane 0 in the tables.
  ptrdiff_t block = 0;
  if (plane > 0) {
    block = ptrdiff_t{context.dst_width[0] / 4} * (context.dst_height[0] / 4);
  }
  for (int32_t row = 0; row < rows; ++row) {
    for (int32_t column = 0; column < columns; ++column, ++block) {
      const int type = context.block_types[block];
      const int32_t width = context.block_width[plane][type];
      const int32_t height = context.block_height[plane][type];
      const Block4x4 samples =
          weigh_and_invert(transform(src, context.block_columns[block],
                                     context.block_rows[block], width, height),
                           1. * width * height);
      for (int32_t y = 4 * row; y < std::min(4 * row + 4, dst.height); ++y) {
        for (int32_t x = 4 * column; x < std::min(4 * column + 4, dst.width);
             ++x) {
          out[static_cast<size_t>(y) * static_cast<size_t>(dst.width) +
              static_cast<size_t>(x)] =
              samples[static_cast<size_t>(y % 4)][static_cast<size_t>(x % 4)];
        }
      }
    }
  }
  return out;
}

}  // namespace bench
