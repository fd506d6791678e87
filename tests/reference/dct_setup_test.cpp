// SPDX-License-Identifier: Apache-2.0
// The plan of a scaling: geometry, sizes and blocks, weights and sets, and the
// transforms of one block.
#include <orumlox/unprefixed.h>

#include <chrono>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <vector>

#include "dct_pictures.h"

namespace lox_test {
namespace {

using DctSetup = DctPictures;

// What it is of both planes, of the descriptors or of the context.
using Ints = std::vector<int32_t>;

// Strides, then rows, of planes 0 and 1 of the source, then of the destination.
TEST_F(DctSetup, GeometryByHand) {
  const struct {
    int32_t selector, format, width, height;
    Ints expected;
  } kCases[] = {
      {0, 6, 129, 33, {256, 256, 64, 16, 256, 256, 64, 16}},
      {0, 7, 128, 34, {128, 128, 64, 32, 128, 128, 64, 32}},
      {1, 6, 101, 35, {101, 102, 35, 17, 112, 112, 48, 32}},
      {1, 7, 112, 32, {112, 112, 32, 16, 112, 112, 32, 16}},
      {2, 6, 101, 35, {1, 1, 1, 1, 1, 1, 1, 1}},
      {-1, 7, 101, 35, {1, 1, 1, 1, 1, 1, 1, 1}},
      {0, 0, 101, 35, {1, 1, 1, 1, 1, 1, 1, 1}},
      {1, 500, 101, 35, {1, 1, 1, 1, 1, 1, 1, 1}},
      {5, 1, 101, 35, {112, 64, 48, 32, 112, 64, 48, 32}},
  };
  for (const auto &k : kCases) {
    vexo_img pair[2] = {TestImage(k.format).img, TestImage(k.format).img};
    for (vexo_img &img : pair) {
      for (int p = 0; p < 3; ++p) {
        img.width[p] = p == 0 ? k.width : 53;
        img.height[p] = p == 0 ? k.height : 27;
        img.stride[p] = img.buf_height[p] = 1;
      }
    }
    // The destination's selector is that of both.
    pair[0].color_std = k.selector == 0 ? 1 : 0;
    pair[1].color_std = k.selector;
    ASSERT_EQ(vexo_rsz_new_set_img(pair), VEXO_OK);
    Ints actual;
    for (const vexo_img &img : pair) {
      actual.insert(actual.end(), {img.stride[0], img.stride[1],
                                   img.buf_height[0], img.buf_height[1]});
      const bool derived = is_pairs(img) && (k.selector | 1) == 1;
      EXPECT_EQ(img.width[1], derived ? k.width / 2 : 53);
      EXPECT_EQ(img.height[1], derived ? k.height / 2 : 27);
      EXPECT_EQ(img.stride[2], k.format == 1 ? 64 : 1);
      EXPECT_EQ(img.buf_height[2], k.format == 1 ? 32 : 1);
      EXPECT_EQ(img.width[0], k.width);
      EXPECT_EQ(img.stride[3], 7777);
    }
    EXPECT_EQ(actual, k.expected) << k.format << ", selector " << k.selector;
  }
}

// Padded sizes of source and destination, spans, smallest block, shifts of the
// largest, types, columns narrow and wide, rows short and tall, three weights.
Ints sizes(const vexo_rsz_new_context &c, int p) {
  for (int t = 0; t < 4; ++t) {
    EXPECT_EQ(c.block_width[p][t], c.block_width[p][0] + t % 2);
    EXPECT_EQ(c.block_height[p][t], c.block_height[p][0] + t / 2);
    for (int i = 0; i < 16; ++i) {
      const int same = i / 4 % 2 == i % 2 ? i % 2 * 5 : 1;
      EXPECT_EQ(c.weights[p][t][i], c.weights[p][t][same]);
    }
  }
  EXPECT_EQ(c.horizontal_ratio[p],
            static_cast<float>(c.src_width[p]) /
                static_cast<float>(std::max(c.dst_width[p], 1)));
  EXPECT_EQ(c.vertical_ratio[p],
            static_cast<float>(c.src_height[p]) /
                static_cast<float>(std::max(c.dst_height[p], 1)));
  return {
      c.src_width[p],         c.src_height[p],      c.dst_width[p],
      c.dst_height[p],        c.horizontal_span[p], c.vertical_span[p],
      c.block_width[p][0],    c.block_height[p][0], c.horizontal_shift[p][3],
      c.vertical_shift[p][3], c.types[p],           c.narrow_columns[p],
      c.wide_columns[p],      c.short_rows[p],      c.tall_rows[p],
      c.weights[p][0][0],     c.weights[p][0][1],   c.weights[p][0][5]};
}

TEST_F(DctSetup, SizesByHand) {
  // Source, destination, factor and plane before them.
  constexpr int32_t kCases[][24] = {
      // Ratio 4: s = 1.004 / 16.
      {640, 480, 160, 120, 0, 0,  640, 480, 160, 120,  4,    4,
       16,  16,  -1,  -1,  1, 40, 0,   30,  0,   2056, 2600, 3289},
      {640, 480, 160, 120, 0, 1,  320, 240, 80, 60,   4,    4,
       16,  16,  -1,  -1,  1, 20, 0,   15,  0,  2056, 2600, 3289},
      // 1326 / 102 = 13: two columns take 26; 754 / 58 = 13.
      {1326, 754, 102, 58, 0, 0,  1352, 780, 104, 60,  13,  13,
       52,   52,  -1,  -1, 1, 26, 0,    15,  0,   632, 800, 1012},
      // 1021 / 102 x 2 = 20.0196: one more; 755 / 75 = 10.067.
      {1021, 755, 102, 75, 0, 0,  1042, 766, 104, 76,  11,   11,
       40,   40,  3,   3,  4, 24, 2,    13,  6,   822, 1040, 1315},
      // 2981 / 298 x 2 = 20.0067: what is below 0.01 does not count.
      {2981, 2981, 298, 298, 0, 0,  3001, 3001, 300, 300, 11,   11,
       40,   40,   3,   3,   4, 74, 1,    74,   1,   822, 1040, 1315},
      // 51 columns are an even 50, 51 rows stay.
      {102, 102, 40, 40, 2, 0,  50, 51, 40, 40,   2,    2,
       5,   5,   2,  2,  3, 10, 0,  9,  1,  6579, 8322, 10527},
      {102, 102, 40, 40, 2, 1, 25, 25, 20, 20,   2,    2,
       5,   5,   2,  2,  1, 5, 0,  5,  0,  6579, 8322, 10527},
      // 25 columns are an even 26.
      {102, 102, 20, 20, 4, 0, 26, 25, 20, 20,   2,    2,
       5,   5,   2,  2,  2, 4, 1,  5,  0,  6579, 8322, 10527},
      {102, 102, 20, 20, 4, 1, 16, 15, 12, 12,   2,    2,
       5,   5,   2,  2,  2, 2, 1,  3,  0,  6579, 8322, 10527},
      // 4 x 16004 / 16000 = 4.001: a block more than the destination has.
      {16004, 16, 16000, 16, 0, 0,    16004, 16, 16000, 16,   1,     1,
       4,     4,  -1,    -1, 1, 4001, 0,     4,  0,     8224, 10402, 13159},
  };
  for (const auto &k : kCases) {
    for (const int32_t format : {6, 1}) {
      const Job job = {{k[0], k[1]}, {k[2], k[3]}, k[4], 7, format, 0, false};
      const Ints expected(k + 6, std::end(k));
      ASSERT_NO_FATAL_FAILURE(describe(job));
      vexo_rsz_new_context steps{};
      steps.prescale = k[4];
      ASSERT_EQ(algorithm_settings(pair_, &steps), VEXO_OK);
      EXPECT_EQ(sizes(steps, k[5]), expected) << job;
      Scaler s(pair_, k[4]);
      EXPECT_EQ(s.status, VEXO_OK);
      EXPECT_EQ(sizes(s.context, k[5]), expected) << job;
    }
  }
}

// Of both planes strides and rows of the source, then of the destination;
// padding needed, exact ratio, aligned stride and whether it is not.
TEST_F(DctSetup, LayoutByHand) {
  // Source, destination, factor, format and selector before them.
  constexpr int32_t kCases[][19] = {
      {1001, 779, 101, 59, 0, 6, 1, 1001, 501, 779, 389, 112, 56, 64, 32, 0, 0,
       0, 0},
      {1001, 779, 101, 59, 2, 7, 1, 500, 250, 389, 194, 112, 56, 64, 32, 0, 0,
       992, 1},
      {1008, 779, 101, 59, 4, 1, 1, 252, 126, 194, 97, 112, 64, 64, 32, 0, 0,
       992, 1},
      {1024, 779, 101, 59, 4, 6, 1, 256, 128, 194, 97, 112, 56, 64, 32, 0, 0,
       1024, 0},
      {1001, 779, 101, 59, 4, 0, 0, 256, 128, 194, 97, 0, 0, 0, 0, 1, 0, 0, 0},
      {1024, 768, 101, 59, 2, 500, 0, 512, 256, 384, 192, 0, 0, 0, 0, 0, 0, 0,
       0},
      {1024, 779, 101, 59, 2, 6, 0, 512, 256, 389, 194, 128, 64, 64, 32, 1, 0,
       0, 0},
      {640, 480, 320, 240, 4, 6, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0},
      {640, 480, 160, 120, 2, 1, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 640, 0},
      {640, 480, 320, 120, 2, 6, 1, 320, 160, 240, 120, 320, 160, 128, 64, 0, 0,
       640, 0},
  };
  for (const auto &k : kCases) {
    const Job job = {{k[0], k[1]}, {k[2], k[3]}, k[4], 6, k[5], k[6], false};
    ASSERT_NO_FATAL_FAILURE(describe(job));
    Scaler s(pair_, k[4]);
    const vexo_rsz_new_context &c = s.context;
    EXPECT_EQ(c.prescale, k[4]);
    EXPECT_EQ(s.a == nullptr || s.b == nullptr, c.exact_ratio != 0);
    const Ints actual = {
        c.src_stride[0], c.src_stride[1],  c.src_rows[0],
        c.src_rows[1],   c.dst_stride[0],  c.dst_stride[1],
        c.dst_rows[0],   c.dst_rows[1],    c.padding_needed,
        c.exact_ratio,   c.aligned_stride, c.stride_not_aligned};
    EXPECT_EQ(actual, Ints(k + 7, std::end(k))) << job;
  }
}

// What an entry of either set for blocks of this many points counts in.
double unit(bool of_a, int32_t points) {
  int32_t e = 0;
  while ((int64_t{1} << 2 * e) < points) ++e;
  return std::ldexp(1.0, std::min(13 + e, (of_a ? 23 : 16) - e));
}

// Its rows of 16 words.
void check_entry(int16_t *const *entry, bool of_a, int32_t points,
                 int32_t rows) {
  for (int32_t u = 0; u < 4; ++u) {
    int64_t sum = 0;
    for (int32_t i = 0; i < 4 * rows; ++i) {
      const int32_t word = entry[i / 4][4 * u + i % 4];
      sum += word;
      const bool beyond = i >= points;
      // What is rounded off the others, and of a quarter turn, ends up there.
      const bool middle = std::abs(2 * i + 1 - points) < 2;
      ASSERT_NEAR(word, beyond ? 0 : unit(of_a, points) * basis(u, i, points),
                  beyond   ? 0
                  : middle ? 4
                           : 1.5)
          << u << ", " << i << " of " << points;
    }
    if (u > 0) {
      ASSERT_EQ(sum, 0) << u << " of " << points;
    } else if (!of_a) {
      ASSERT_NEAR(static_cast<double>(sum),
                  unit(of_a, points) * std::sqrt(points), 1);
    }
  }
}

void check_sets(const vexo_rsz_new_context &c, vexo_shift_set a,
                vexo_shift_set b) {
  for (int32_t i = 0; i < c.types[0] + c.types[1]; ++i) {
    const int p = i < c.types[0] ? 0 : 1;
    const int32_t t = p == 0 ? i : i - c.types[0];
    // Of three types this one has no blocks.
    if (c.types[p] == 3 && t == 1) continue;
    SCOPED_TRACE(i);
    ASSERT_NO_FATAL_FAILURE(
        check_entry(a[i], true, c.block_height[p][t], c.vertical_span[p]));
    ASSERT_NO_FATAL_FAILURE(
        check_entry(b[i], false, c.block_width[p][t], c.horizontal_span[p]));
  }
}

// Blocks follow each other and begin within half a sample of where the ratio
// puts them; entries hold bases. By steps the same comes out.
TEST_F(DctSetup, BlocksAndSets) {
  for (const auto &[src, dst] : {std::pair<Size, Size>{{640, 480}, {160, 120}},
                                 {{640, 486}, {160, 120}},
                                 {{648, 480}, {160, 120}},
                                 {{648, 486}, {160, 120}},
                                 {{257, 135}, {50, 41}},
                                 {{1021, 755}, {102, 75}},
                                 {{75, 60}, {100, 80}},
                                 {{400, 400}, {7, 9}},
                                 {{4099, 301}, {5, 4}}}) {
    const Job job = {src, dst, 0, 6, 6, 1, false};
    ASSERT_NO_FATAL_FAILURE(describe(job));
    Scaler s(pair_, 0);
    ASSERT_EQ(s.status, VEXO_OK);
    vexo_rsz_new_context &c = s.context;
    size_t blocks = 0;
    for (int p = 0; p < 2; ++p) {
      const int32_t columns = c.narrow_columns[p] + c.wide_columns[p];
      const int32_t rows = c.short_rows[p] + c.tall_rows[p];
      ASSERT_EQ(columns, c.dst_width[p] / 4) << job;
      ASSERT_EQ(rows, c.dst_height[p] / 4) << job;
      for (int32_t row = 0, y = 0; row < rows; ++row) {
        int32_t x = 0;
        for (int32_t column = 0; column < columns; ++column, ++blocks) {
          const int type = c.block_types[blocks];
          ASSERT_LT(type, c.types[p]) << job;
          ASSERT_EQ(c.block_columns[blocks], x) << job;
          ASSERT_EQ(c.block_rows[blocks], y) << job;
          ASSERT_NEAR(x, 1.0 * column * c.src_width[p] / columns, 0.5) << job;
          ASSERT_NEAR(y, 1.0 * row * c.src_height[p] / rows, 0.5) << job;
          x += c.block_width[p][type];
        }
        ASSERT_EQ(x, c.src_width[p]) << job;
        y += c.block_height[p][c.block_types[blocks - 1]];
        ASSERT_TRUE(row < rows - 1 || y == c.src_height[p]) << job;
      }
    }
    ASSERT_NO_FATAL_FAILURE(check_sets(c, s.a, s.b)) << job;

    const std::vector<uint8_t> types(c.block_types, c.block_types + blocks);
    const Ints columns(c.block_columns, c.block_columns + blocks);
    const Ints rows(c.block_rows, c.block_rows + blocks);
    std::memset(c.block_types, 0xA5, blocks);
    std::memset(c.block_columns, 0xA5, blocks * sizeof(int32_t));
    std::memset(c.block_rows, 0xA5, blocks * sizeof(int32_t));
    split_settings(&c);
    EXPECT_EQ(std::memcmp(c.block_types, types.data(), blocks), 0);
    EXPECT_EQ(Ints(c.block_columns, c.block_columns + blocks), columns);
    EXPECT_EQ(Ints(c.block_rows, c.block_rows + blocks), rows);
    for (int i = 0; i < c.types[0] + c.types[1]; ++i) {
      const int p = i < c.types[0] ? 0 : 1;
      std::memset(s.a[i][0], 0, size_t{32} * c.vertical_span[p]);
      std::memset(s.b[i][0], 0, size_t{32} * c.horizontal_span[p]);
    }
    make_shiftmatrix(&c, s.a, s.b);
    ASSERT_NO_FATAL_FAILURE(check_sets(c, s.a, s.b)) << job;
  }
}

// What is beyond the limits has no blocks. Planning takes milliseconds; were it
// by the square of a block's side, it would be many seconds.
TEST_F(DctSetup, ServedSizes) {
  constexpr int32_t kMost = std::numeric_limits<int32_t>::max();
  const struct {
    Size src, dst;
    int64_t blocks;  // of plane 0
  } kCases[] = {
      {{65536, 16}, {8, 8}, 4},
      {{262140, 16}, {16, 16}, 16},
      {{262144, 16}, {16, 16}, 0},
      {{16, 262140}, {16, 16}, 16},
      {{16, 262144}, {16, 16}, 0},
      {{131592, 131592}, {16, 16}, 16},
      {{131596, 131596}, {16, 16}, 0},
      {{8192, 4096}, {8192, 4096}, 1 << 21},
      {{8192, 4096}, {8192, 4100}, 0},
      {{131072, 131072}, {131072, 131072}, 0},
      {{kMost, kMost}, {5, 4}, 0},
      {{kMost, kMost}, {kMost, kMost}, 0},
      {{16, 16}, {kMost, kMost}, 0},
      {{1, 1}, {2000, 2000}, 0},
      {{1, 1}, {4, 4}, 1},
      {{1, 1}, {8, 8}, 0},
      {{kMost - 7, 1}, {kMost - 7, 1}, 0},
  };
  const auto start = std::chrono::steady_clock::now();
  for (const auto &k : kCases) {
    vexo_img quartet[4] = {};
    for (int i = 2; i < 4; ++i) {
      const Size &size = i == 2 ? k.src : k.dst;
      quartet[i].width[0] = quartet[i].stride[0] = size.width;
      quartet[i].height[0] = quartet[i].buf_height[0] = size.height;
    }
    vexo_rsz_new_context c;
    vexo_shift_set a, b;
    // Of the largest blocks the work area may be more than there is.
    if (vexo_rsz_new_rgba8888_init(quartet, &c, &a, &b) == VEXO_OK) {
      EXPECT_EQ((int64_t{c.narrow_columns[0]} + c.wide_columns[0]) *
                    (int64_t{c.short_rows[0]} + c.tall_rows[0]),
                k.blocks)
          << k.src.width << "x" << k.src.height;
    } else {
      EXPECT_EQ(k.src.width, 131592);
    }
    vexo_rsz_new_rgba8888_deinit(quartet, &c, a, b);
  }
  // A plane that is much larger than the picture it belongs to.
  ASSERT_NO_FATAL_FAILURE(describe({{8, 8}, {8, 8}, 0, 6, 6, 2, true}));
  pair_[0].width[0] = 309;
  pair_[0].height[0] = 805306368;
  pair_[1].width[0] = 536870912;
  pair_[1].height[0] = -64;
  pair_[1].width[1] = 137;
  pair_[1].height[1] = 302;
  EXPECT_EQ(Scaler(pair_, 2).status, VEXO_OK);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(8));
}

TEST_F(DctSetup, BuffersOfTwoGigabytesAreRefused) {
  ASSERT_NO_FATAL_FAILURE(describe({{64, 64}, {8, 8}, 0, 6, 6, 2, true}));
  pair_[0].stride[1] = pair_[0].buf_height[1] = 65536;
  Scaler s(pair_, 0);
  EXPECT_EQ(s.status, VEXO_ERR_ARG);
  EXPECT_EQ(s.a, nullptr);
  EXPECT_EQ(s.b, nullptr);
  const vexo_rsz_new_context clear{};
  EXPECT_EQ(std::memcmp(&s.context, &clear, sizeof clear), 0);
}

TEST_F(DctSetup, FloatTransforms) {
  for (int n = 0; n < 400; ++n) {
    const int32_t width = n < 64 ? 1 + n % 8 : random.between(1, 90);
    const int32_t height = n < 64 ? 1 + n / 8 : random.between(1, 90);
    GuardedBuffer block, out;
    block.reset(size_t{1} * width * height);
    out.reset(16 * sizeof(float));
    random.fill(block.data(), block.size());
    double energy = 0;
    for (size_t i = 0; i < block.size(); ++i) {
      energy += double{1} * block.data()[i] * block.data()[i];
    }
    FDCT_BlockXYFn(block.data(),
                   static_cast<float *>(static_cast<void *>(out.data())),
                   height, width);
    for (int i = 0; i < 16; ++i) {
      double sum = 0;
      for (int32_t y = 0; y < height; ++y) {
        for (int32_t x = 0; x < width; ++x) {
          sum += block.data()[ptrdiff_t{y} * width + x] *
                 std::cos((2 * y + 1) * 1.570796 * (i / 4) / height) *
                 std::cos((2 * x + 1) * 1.570796 * (i % 4) / width);
        }
      }
      const double scale = 2048 / std::sqrt(double{1} * width * height) *
                           (i / 4 == 0 ? 0.70710677 : 1) *
                           (i % 4 == 0 ? 0.70710677 : 1);
      float actual;
      std::memcpy(&actual, out.data() + 4 * i, sizeof actual);
      ASSERT_NEAR(actual, scale * sum, 1e-4 * 1024 * std::sqrt(energy))
          << width << "x" << height << ", " << i;
    }
    ASSERT_TRUE(block.margin_intact() && out.margin_intact());
  }
  for (int32_t n = 1; n <= 9; ++n) {
    std::vector<float> a(size_t{1} * n * n), b(a), out(a), expected(a);
    for (size_t i = 0; i < a.size(); ++i) {
      a[i] = static_cast<float>(random.between(-99, 99)) / 4;
      b[i] = static_cast<float>(random.between(-99, 99)) / 4;
    }
    for (int32_t i = 0; i < n * n; ++i) {
      for (int32_t k = 0; k < n; ++k) {
        expected[i] += a[i / n * n + k] * b[k * n + i % n];
      }
    }
    MatNxN_float_compute(a.data(), b.data(), out.data(), n);
    EXPECT_EQ(out, expected) << n;
  }
}

// Entries have 16 bits, and fewer count in large blocks: what is rounded off is
// hundredths of a step of the scaled samples, and of a coefficient what half a
// unit is of the entries of row 0.
TEST_F(DctSetup, FullTransform) {
  std::vector<Size> sizes = {{128, 128}, {129, 128}, {255, 64}, {256, 66},
                             {160, 160}, {300, 200}, {12, 400}, {1100, 6}};
  for (int32_t n = 4; n <= 70; ++n) {
    sizes.push_back({n, random.between(4, 70)});
    sizes.push_back({random.between(4, 70), n});
  }
  for (const Size &size : sizes) {
    ASSERT_NO_FATAL_FAILURE(describe({size, {4, 4}, 0, 6, 6, 2, true}));
    Scaler s(pair_, 0);
    ASSERT_EQ(s.status, VEXO_OK);
    ASSERT_EQ(s.context.block_width[0][0], size.width);
    const double step = std::sqrt(double{1} * size.width * size.height);
    const double rounding =
        std::sqrt(size.width) / unit(false, size.width) / 2 +
        std::sqrt(size.height) / unit(true, size.height) / 2;
    const double coarse = 65536 * (size.width > 256 ? 0.1 : 0.05);
    const bool large = int64_t{size.width} * size.height >= 16512;
    const int64_t limit = 8388607 / weights(size.width, size.height)[0];
    for (const Fill fill : kFills) {
      Plane plane(size.width, size.height);
      random.fill(plane.samples.data(), plane.samples.size(), fill);
      if (fill == Fill::kRandom && size.width % 2 == 0) {
        std::fill(plane.samples.begin(), plane.samples.end(), 200);
      }
      GuardedBuffer block, out;
      block.reset(plane.samples.size());
      std::memcpy(block.data(), plane.samples.data(), block.size());
      out.reset(16 * sizeof(int32_t));
      vexo_fdct_blocknxn_full_compute(
          block.data(), size.width, size.height, s.a[0], s.b[0],
          static_cast<int32_t *>(static_cast<void *>(out.data())));
      ASSERT_TRUE(block.margin_intact() && out.margin_intact());
      const bool flat =
          std::adjacent_find(plane.samples.begin(), plane.samples.end(),
                             std::not_equal_to<>()) == plane.samples.end();
      const Coefficients model =
          transform(plane, 0, 0, size.width, size.height);
      for (int i = 0; i < 16; ++i) {
        int32_t c;
        std::memcpy(&c, out.data() + 4 * i, sizeof c);
        double expected = 65536 * model[i];
        if (flat && i > 0) expected = 0;
        if (large) expected = std::clamp(expected, -2147483648.0, 2147483647.0);
        if (i == 0) {
          ASSERT_LE(c >> 16, limit);
          expected =
              std::min(expected, 65536.0 * static_cast<double>(limit + 1));
        }
        const double off =
            flat && i > 0 ? 0 : coarse * step + rounding * std::abs(expected);
        ASSERT_NEAR(c, expected, off)
            << size.width << "x" << size.height << ", " << i;
      }
    }
  }
}

TEST_F(DctSetup, InverseTransforms) {
  for (int n = 0; n < 20000; ++n) {
    int32_t c[16], weight[16];
    int16_t cut[16];
    std::array<int16_t, 16> w;
    const bool wild = n % 2 == 0;
    const auto real = weights(random.between(4, 64), random.between(4, 64));
    for (int i = 0; i < 16; ++i) {
      const auto word = static_cast<uint32_t>(random.next());
      c[i] = static_cast<int32_t>(word) >> (wild ? 0 : i == 0 ? 5 : 9);
      weight[i] = wild ? random.between(0, 65535) : real[i];
      w[i] = cut[i] = weighted(c[i] >> 16, weight[i]);
    }
    const Block block = inverse(w);
    const int32_t row = random.between(0, 9), column = random.between(0, 9);
    GuardedBuffer dst;
    for (const bool whole : {true, false}) {
      const int32_t stride =
          whole ? column + random.between(4, 9) : random.between(1, column + 6);
      const int32_t rows = whole ? row + 4 : random.between(1, row + 6);
      dst.reset(plane_size(whole ? column + 4 : stride, rows, stride));
      std::vector<uint8_t> expected = dst.copy();
      for (int32_t i = 0; i < 16; ++i) {
        const int32_t x = column + i % 4, y = row + i / 4;
        if (x < stride && y < rows) expected[y * stride + x] = block[i];
      }
      if (whole) {
        vexo_idct_block4x4(dst.data(), row, column, stride, c, weight);
      } else {
        vexo_idct_blocknxn_float(dst.data(), row, column, cut, stride, rows);
      }
      ASSERT_TRUE(holds(dst, expected))
          << row << ", " << column << " of " << rows << ", " << stride;
    }
  }
}

}  // namespace
}  // namespace lox_test
