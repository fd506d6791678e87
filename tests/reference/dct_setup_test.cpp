// SPDX-License-Identifier: Apache-2.0
// The plan of a scaling, worked out by hand, and the transforms of one block.
#include <gtest/gtest.h>
#include <orumlox/unprefixed.h>

#include <chrono>
#include <cstdint>
#include <cstring>
#include <sstream>
#include <vector>

#include "rules/dct_rule.h"
#include "support/generator.h"

namespace lox_test {
namespace {

using Ints = std::vector<int32_t>;

// Planes of 4:2:0; what no call reads is 7777. The source's selector is another
// than the destination's, which counts.
struct Pair {
  Pair(const int32_t (&sizes)[4], int32_t format, int32_t selector) {
    for (int i = 0; i < 2; ++i) {
      vexo_img &img = pair[i];
      img.format = i == 0 ? VEXO_FMT_NV21 : format;
      img.color_std = selector + 1 - i;
      for (int p = 0; p < 4; ++p) {
        img.width[p] = p == 0 ? sizes[2 * i] : (sizes[2 * i] + 1) / 2;
        img.height[p] = p == 0 ? sizes[2 * i + 1] : (sizes[2 * i + 1] + 1) / 2;
        img.stride[p] = img.buf_height[p] = 7777;
      }
    }
    vexo_rsz_new_set_img(pair);
  }
  ~Pair() { vexo_rsz_new_deinit(pair, &c, a, b); }
  int32_t init(int32_t factor) {
    return vexo_rsz_new_init(pair, &c, &a, &b, factor);
  }

  vexo_img pair[2] = {};
  vexo_rsz_new_context c = {};
  vexo_shift_set a = nullptr, b = nullptr;
};

// Rows of so many numbers.
std::vector<Ints> table(const char *text, size_t columns) {
  std::istringstream numbers(text);
  std::vector<Ints> rows;
  for (int32_t number; numbers >> number; rows.back().push_back(number)) {
    if (rows.empty() || rows.back().size() == columns) rows.emplace_back();
  }
  return rows;
}

// Selector, format, size; then strides, then rows, of planes 0 to 2 of the
// destination; width and height of its plane 1.
TEST(DctSetup, GeometryByHand) {
  constexpr char kCases[] =
      "0 6 129 33  256 256 7777 64 16 7777 64 16 "
      "0 7 128 34  128 128 7777 64 32 7777 64 17 "
      "1 6 101 35  112 112 7777 48 32 7777 50 17 "
      "1 7 112 32  112 112 7777 32 16 7777 56 16 "
      "2 6 101 35  7777 7777 7777 7777 7777 7777 51 18 "
      "-1 7 101 35  7777 7777 7777 7777 7777 7777 51 18 "
      "0 0 101 35  7777 7777 7777 7777 7777 7777 51 18 "
      "1 500 101 35  7777 7777 7777 7777 7777 7777 51 18 "
      "5 1 101 35  112 64 64 48 32 32 51 18";
  for (const Ints &k : table(kCases, 12)) {
    Pair p({k[2], k[3], k[2], k[3]}, k[1], k[0]);
    const auto is = [](const vexo_img &m) {
      EXPECT_EQ(m.stride[3], 7777);
      return Ints{m.stride[0],     m.stride[1],     m.stride[2],
                  m.buf_height[0], m.buf_height[1], m.buf_height[2],
                  m.width[1],      m.height[1]};
    };
    EXPECT_EQ(is(p.pair[1]), Ints(k.begin() + 4, k.end())) << k[0] << k[1];
    // A source has its own with the selector 1.
    if (k[0] == 1 && k[2] == 101) {
      EXPECT_EQ(is(p.pair[0]), (Ints{101, 102, 7777, 35, 17, 7777, 50, 17}));
    }
  }
}

// Source, destination, factor and plane; then padded sizes of source and
// destination, spans, smallest block, shifts of the largest, types, columns
// narrow and wide, rows short and tall, three weights.
Ints sizes(const vexo_rsz_new_context &c, int p) {
  for (int t = 0; t < 4; ++t) {
    EXPECT_EQ(c.block_width[p][t], c.block_width[p][0] + t % 2);
    EXPECT_EQ(c.block_height[p][t], c.block_height[p][0] + t / 2);
    for (int i = 0; i < 16; ++i) {
      const int same = i / 4 % 2 == i % 2 ? i % 2 * 5 : 1;
      EXPECT_EQ(c.weights[p][t][i], c.weights[p][t][same]);
    }
  }
  EXPECT_EQ(c.horizontal_ratio[p], static_cast<float>(c.src_width[p]) /
                                       static_cast<float>(c.dst_width[p]));
  EXPECT_EQ(c.vertical_ratio[p], static_cast<float>(c.src_height[p]) /
                                     static_cast<float>(c.dst_height[p]));
  return {
      c.src_width[p],         c.src_height[p],      c.dst_width[p],
      c.dst_height[p],        c.horizontal_span[p], c.vertical_span[p],
      c.block_width[p][0],    c.block_height[p][0], c.horizontal_shift[p][3],
      c.vertical_shift[p][3], c.types[p],           c.narrow_columns[p],
      c.wide_columns[p],      c.short_rows[p],      c.tall_rows[p],
      c.weights[p][0][0],     c.weights[p][0][1],   c.weights[p][0][5]};
}

TEST(DctSetup, SizesByHand) {
  constexpr char kCases[] =
      // Ratio 4: s = 1.004 / 16.
      "640 480 160 120 0 0 640 480 160 120 4 4 16 16 -1 -1 1 40 0 30 0 2056 "
      "2600 3289 "
      "640 480 160 120 0 1 320 240 80 60 4 4 16 16 -1 -1 1 20 0 15 0 2056 2600 "
      "3289 "
      // 1326 / 102 = 13: two columns take 26; 754 / 58 = 13.
      "1326 754 102 58 0 0 1352 780 104 60 13 13 52 52 -1 -1 1 26 0 15 0 632 "
      "800 1012 "
      // 1021 / 102 x 2 = 20.0196: one more; 755 / 75 = 10.067.
      "1021 755 102 75 0 0 1042 766 104 76 11 11 40 40 3 3 4 24 2 13 6 822 "
      "1040 1315 "
      // 2981 / 298 x 2 = 20.0067: what is below 0.01 does not count.
      "2981 2981 298 298 0 0 3001 3001 300 300 11 11 40 40 3 3 4 74 1 74 1 822 "
      "1040 1315 "
      // 51 columns are an even 50, 51 rows stay.
      "102 102 40 40 2 0 50 51 40 40 2 2 5 5 2 2 3 10 0 9 1 6579 8322 10527 "
      "102 102 40 40 2 1 25 25 20 20 2 2 5 5 2 2 1 5 0 5 0 6579 8322 10527 "
      // 25 columns are an even 26.
      "102 102 20 20 4 0 26 25 20 20 2 2 5 5 2 2 2 4 1 5 0 6579 8322 10527 "
      "102 102 20 20 4 1 16 15 12 12 2 2 5 5 2 2 2 2 1 3 0 6579 8322 10527 "
      // 4 x 16004 / 16000 = 4.001: a block more than the destination has.
      "16004 16 16000 16 0 0 16004 16 16000 16 1 1 4 4 -1 -1 1 4001 0 4 0 8224 "
      "10402 13159 ";
  for (const Ints &k : table(kCases, 24)) {
    const Ints expected(k.begin() + 6, k.end());
    Pair p({k[0], k[1], k[2], k[3]}, 6, 0);
    p.c.prescale = k[4];
    ASSERT_EQ(algorithm_settings(p.pair, &p.c), VEXO_OK);
    EXPECT_EQ(sizes(p.c, k[5]), expected) << k[0];
    EXPECT_EQ(p.init(k[4]), VEXO_OK);
    EXPECT_EQ(sizes(p.c, k[5]), expected) << k[0];
  }
}

// Source, destination, factor, format and selector; then
// of both planes strides and rows of the source, then of the destination;
// padding needed, exact ratio, aligned stride and whether it is not.
TEST(DctSetup, LayoutByHand) {
  constexpr char kCases[] =
      "1001 779 101 59 0 6 1 1001 501 779 389 112 56 64 32 0 0 0 0 "
      "1001 779 101 59 2 7 1 500 250 389 194 112 56 64 32 0 0 992 1 "
      "1008 779 101 59 4 1 1 252 126 194 97 112 64 64 32 0 0 992 1 "
      "1024 779 101 59 4 6 1 256 128 194 97 112 56 64 32 0 0 1024 0 "
      "1001 779 101 59 4 0 0 256 128 194 97 0 0 0 0 1 0 0 0 "
      "1024 768 101 59 2 500 0 512 256 384 192 0 0 0 0 0 0 0 0 "
      "1024 779 101 59 2 6 0 512 256 389 194 128 64 64 32 1 0 0 0 "
      "640 480 320 240 4 6 0 0 0 0 0 0 0 0 0 0 1 0 0 "
      "640 480 160 120 2 1 1 0 0 0 0 0 0 0 0 0 1 640 0 "
      "640 480 320 120 2 6 1 320 160 240 120 320 160 128 64 0 0 640 0 ";
  for (const Ints &k : table(kCases, 19)) {
    Pair p({k[0], k[1], k[2], k[3]}, k[5], k[6]);
    EXPECT_EQ(p.init(k[4]), VEXO_OK);
    const vexo_rsz_new_context &c = p.c;
    EXPECT_EQ(c.prescale, k[4]);
    EXPECT_EQ(p.a == nullptr || p.b == nullptr, c.exact_ratio != 0);
    const Ints actual = {
        c.src_stride[0], c.src_stride[1],  c.src_rows[0],
        c.src_rows[1],   c.dst_stride[0],  c.dst_stride[1],
        c.dst_rows[0],   c.dst_rows[1],    c.padding_needed,
        c.exact_ratio,   c.aligned_stride, c.stride_not_aligned};
    EXPECT_EQ(actual, Ints(k.begin() + 7, k.end())) << k[0] << ", " << k[5];
  }
}

// Source, destination and blocks of plane 0. What is beyond the limits has
// none. Planning takes milliseconds; were it by the square of a block's side,
// it would be many seconds.
TEST(DctSetup, ServedSizes) {
  constexpr char kCases[] =
      "65536 16 8 8 4 "
      "262140 16 16 16 16 "
      "262144 16 16 16 0 "
      "16 262140 16 16 16 "
      "16 262144 16 16 0 "
      "131592 131592 16 16 16 "
      "131596 131596 16 16 0 "
      "8192 4096 8192 4096 2097152 "
      "8192 4096 8192 4100 0 "
      "131072 131072 131072 131072 0 "
      "2147483647 2147483647 5 4 0 "
      "2147483647 2147483647 2147483647 2147483647 0 "
      "16 16 2147483647 2147483647 0 "
      "1 1 2000 2000 0 "
      "1 1 4 4 1 "
      "1 1 8 8 0 "
      "2147483640 1 2147483640 1 0 ";
  const auto start = std::chrono::steady_clock::now();
  for (const Ints &k : table(kCases, 5)) {
    vexo_img quartet[4] = {};
    for (int i = 2; i < 4; ++i) {
      quartet[i].width[0] = quartet[i].stride[0] = k[2 * i - 4];
      quartet[i].height[0] = quartet[i].buf_height[0] = k[2 * i - 3];
    }
    vexo_rsz_new_context c;
    vexo_shift_set a, b;
    // Of the largest blocks the work area may be more than there is.
    if (vexo_rsz_new_rgba8888_init(quartet, &c, &a, &b) == VEXO_OK) {
      EXPECT_EQ((int64_t{c.narrow_columns[0]} + c.wide_columns[0]) *
                    (int64_t{c.short_rows[0]} + c.tall_rows[0]),
                k[4])
          << k[0] << "x" << k[1];
    } else {
      EXPECT_EQ(k[0], 131592);
    }
    vexo_rsz_new_rgba8888_deinit(quartet, &c, a, b);
  }
  // A plane that is much larger than the picture it belongs to.
  Pair p({309, 805306368, 536870912, -64}, 6, 2);
  p.pair[1].width[1] = 137;
  p.pair[1].height[1] = 302;
  for (vexo_img &img : p.pair) img.stride[1] = img.buf_height[1] = 4;
  EXPECT_EQ(p.init(2), VEXO_OK);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(8));
}

TEST(DctSetup, BuffersOfTwoGigabytesAreRefused) {
  Pair p({64, 64, 8, 8}, 6, 2);
  p.pair[0].stride[1] = p.pair[0].buf_height[1] = 65536;
  EXPECT_EQ(p.init(0), VEXO_ERR_ARG);
  EXPECT_EQ(p.a, nullptr);
  EXPECT_EQ(p.b, nullptr);
  const vexo_rsz_new_context clear{};
  EXPECT_EQ(std::memcmp(&p.c, &clear, sizeof clear), 0);
}

// What an entry of either set for blocks of this many points counts in.
double unit(bool of_a, int32_t points) {
  int32_t e = 0;
  while ((int64_t{1} << 2 * e) < points) ++e;
  return std::ldexp(1.0, std::min(13 + e, (of_a ? 23 : 16) - e));
}

void check_entry(int16_t *const *entry, bool of_a, int32_t points) {
  for (int32_t u = 0; u < 4; ++u) {
    int32_t sum = 0;
    for (int32_t i = 0; i < points; ++i) {
      const int32_t word = entry[i / 4][4 * u + i % 4];
      sum += word;
      // What is rounded off the others, and of a quarter turn, ends up there.
      const bool middle = std::abs(2 * i + 1 - points) < 2;
      ASSERT_NEAR(word, unit(of_a, points) * basis(u, i, points),
                  middle ? 4 : 1.5)
          << u << ", " << i << " of " << points;
    }
    if (u > 0) {
      ASSERT_EQ(sum, 0) << u << " of " << points;
    } else if (!of_a) {
      ASSERT_NEAR(sum, unit(of_a, points) * std::sqrt(points), 1);
    }
  }
}

// Entries have 16 bits, and fewer count in large blocks: what is rounded off is
// hundredths of a step of the scaled samples, and of a coefficient what half a
// unit is of the entries of row 0.
TEST(DctBlocks, FullTransform) {
  Random random(1);
  std::vector<std::pair<int32_t, int32_t>> all = {
      {128, 128}, {129, 128}, {255, 64}, {256, 66},
      {160, 160}, {300, 200}, {12, 400}, {1100, 6}};
  for (int32_t n = 4; n <= 70; ++n) {
    all.emplace_back(n, random.between(4, 70));
    all.emplace_back(random.between(4, 70), n);
  }
  for (const auto &[width, height] : all) {
    Pair p({width, height, 4, 4}, 6, 2);
    for (vexo_img &img : p.pair) img.stride[1] = img.buf_height[1] = 4;
    ASSERT_EQ(p.init(0), VEXO_OK);
    ASSERT_EQ(p.c.block_width[0][0], width);
    ASSERT_NO_FATAL_FAILURE(check_entry(p.a[0], true, height));
    ASSERT_NO_FATAL_FAILURE(check_entry(p.b[0], false, width));
    const double rounding = std::sqrt(width) / unit(false, width) / 2 +
                            std::sqrt(height) / unit(true, height) / 2;
    const double coarse = 65536 * (width > 256 ? 0.1 : 0.05) *
                          std::sqrt(double{1} * width * height);
    const bool large = int64_t{width} * height >= 16512;
    const int64_t limit = 8388607 / weights(width, height)[0];
    for (const Fill fill : kFills) {
      std::vector<uint8_t> block(size_t{1} * width * height);
      random.fill(block.data(), block.size(), fill);
      const bool flat = fill == Fill::kLow || fill == Fill::kHigh;
      const Plane plane(block.data(), width, width, height);
      const Coefficients model = transform(plane, 0, 0, width, height);
      int32_t c[16];
      vexo_fdct_blocknxn_full_compute(block.data(), width, height, p.a[0],
                                      p.b[0], c);
      ASSERT_LE(c[0] >> 16, limit);
      for (int i = 0; i < 16; ++i) {
        double expected = flat && i > 0 ? 0 : 65536 * model[i];
        if (large) expected = std::clamp(expected, -2147483648.0, 2147483647.0);
        if (i == 0) {
          expected =
              std::min(expected, 65536.0 * static_cast<double>(limit + 1));
        }
        const double off =
            flat && i > 0 ? 0 : coarse + rounding * std::abs(expected);
        ASSERT_NEAR(c[i], expected, off) << width << "x" << height << ", " << i;
      }
    }
  }
}

}  // namespace
}  // namespace lox_test
