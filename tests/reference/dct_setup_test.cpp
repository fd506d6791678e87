// SPDX-License-Identifier: Apache-2.0
// The plan of a scaling: geometry, sizes and blocks, weights and sets, and the
// transforms of one block.
#include <orumlox/unprefixed.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <vector>

#include "dct_pictures.h"

namespace lox_test {
namespace {

using DctSetup = DctPictures;

int32_t up(int32_t n, int32_t multiple) {
  return (n + multiple - 1) / multiple * multiple;
}

TEST_F(DctSetup, GeometryBySelectorAndFormat) {
  for (const int32_t selector : {0, 1, 2, -1, 10}) {
    for (const int32_t format : {6, 7, 1, 0, 2, 4, 500}) {
      for (const int32_t other : {6, 7, 1, 0}) {
        vexo_img pair[2] = {TestImage(format).img, TestImage(other).img};
        pair[0].color_std = selector == 0 ? 1 : 0;
        pair[1].color_std = selector;
        for (vexo_img& img : pair) {
          for (int p = 0; p < 3; ++p) {
            img.width[p] = random.between(1, 2000);
            img.height[p] = random.between(1, 2000);
          }
        }
        vexo_img expected[2] = {pair[0], pair[1]};
        for (int i = 0; i < 2; ++i) {
          vexo_img& e = expected[i];
          const int32_t w = e.width[0], h = e.height[0];
          if (e.format == VEXO_FMT_YUV420) {
            for (int p = 0; p < 3; ++p) {
              e.stride[p] = up(e.width[p], 16);
              e.buf_height[p] = up(e.height[p], 16);
            }
          } else if (is_pairs(e) && (selector == 0 || selector == 1)) {
            e.width[1] = w / 2;
            e.height[1] = h / 2;
            const int32_t unit = selector == 0 ? 128 : i == 0 ? 1 : 16;
            e.stride[0] = up(w, unit);
            e.stride[1] = up(w, unit == 1 ? 2 : unit);
            e.buf_height[0] = up(h, selector == 0 ? 32 : unit);
            e.buf_height[1] = up(h / 2, unit == 1 ? 1 : 16);
          }
        }
        ASSERT_EQ(vexo_rsz_new_set_img(pair), VEXO_OK);
        for (int i = 0; i < 2; ++i) {
          EXPECT_EQ(std::memcmp(&pair[i], &expected[i], sizeof(vexo_img)), 0)
              << "descriptor " << i << ", formats " << format << " and "
              << other << ", selector " << selector << ", " << pair[i].width[0]
              << "x" << pair[i].height[0];
        }
      }
    }
  }
}

// Rounding by 128, 32 and 16, and by nothing.
TEST_F(DctSetup, GeometryByHand) {
  const struct {
    int32_t selector, width, height;
    int32_t src[4], dst[4];  // strides and rows of planes 0 and 1
  } kCases[] = {{0, 129, 33, {256, 256, 64, 16}, {256, 256, 64, 16}},
                {0, 128, 34, {128, 128, 64, 32}, {128, 128, 64, 32}},
                {1, 101, 35, {101, 102, 35, 17}, {112, 112, 48, 32}}};
  for (const auto& k : kCases) {
    ASSERT_NO_FATAL_FAILURE(describe({{k.width, k.height},
                                      {k.width, k.height},
                                      0,
                                      VEXO_FMT_NV12,
                                      VEXO_FMT_NV21,
                                      k.selector,
                                      false}));
    for (int i = 0; i < 2; ++i) {
      const int32_t(&e)[4] = i == 0 ? k.src : k.dst;
      const vexo_img& img = pair_[i];
      for (int p = 0; p < 2; ++p) {
        EXPECT_EQ(img.stride[p], e[p]) << k.width << ", " << i;
        EXPECT_EQ(img.buf_height[p], e[2 + p]) << k.width << ", " << i;
        EXPECT_EQ(img.width[p], k.width >> p);
        EXPECT_EQ(img.height[p], k.height >> p);
      }
    }
  }
}

// What both algorithm_settings and a whole plan fill in.
void check_sizes(const Plan& plan, const vexo_rsz_new_context& c) {
  for (int p = 0; p < 2; ++p) {
    SCOPED_TRACE(p);
    const Axis& across = plan.across[p];
    const Axis& down = plan.down[p];
    const int64_t columns = int64_t{c.narrow_columns[p]} + c.wide_columns[p];
    const int64_t rows = int64_t{c.short_rows[p]} + c.tall_rows[p];
    ASSERT_EQ(columns * rows, int64_t{across.count} * down.count);
    if (columns * rows == 0) continue;
    EXPECT_EQ(c.src_width[p], across.src);
    EXPECT_EQ(c.src_height[p], down.src);
    EXPECT_EQ(c.dst_width[p], across.dst);
    EXPECT_EQ(c.dst_height[p], down.dst);
    EXPECT_EQ(c.horizontal_ratio[p], across.ratio);
    EXPECT_EQ(c.vertical_ratio[p], down.ratio);
    EXPECT_EQ(c.horizontal_span[p], across.span);
    EXPECT_EQ(c.vertical_span[p], down.span);
    EXPECT_EQ(c.types[p], block_types(across, down));
    EXPECT_EQ(c.wide_columns[p], across.larger);
    EXPECT_EQ(c.tall_rows[p], down.larger);
    EXPECT_EQ(columns, across.count);
    for (int32_t t = 0; t < c.types[p]; ++t) {
      const int32_t width = across.block + t % 2;
      const int32_t height = down.block + t / 2;
      EXPECT_EQ(c.block_width[p][t], width);
      EXPECT_EQ(c.block_height[p][t], height);
      EXPECT_EQ(c.horizontal_shift[p][t], 4 * across.span - width);
      EXPECT_EQ(c.vertical_shift[p][t], 4 * down.span - height);
      const auto expected = weights(width, height);
      for (int i = 0; i < 16; ++i) {
        EXPECT_EQ(c.weights[p][t][i], expected[i]) << t << ", " << i;
      }
    }
  }
}

void check_blocks(const Plan& plan, const vexo_rsz_new_context& c) {
  size_t i = 0;
  for (int p = 0; p < 2; ++p) {
    const Axis& across = plan.across[p];
    const Axis& down = plan.down[p];
    for (int32_t row = 0; row < down.count; ++row) {
      for (int32_t column = 0; column < across.count; ++column, ++i) {
        ASSERT_EQ(c.block_types[i], (across.is_larger(column) ? 1 : 0) +
                                        (down.is_larger(row) ? 2 : 0));
        ASSERT_EQ(c.block_columns[i], across.starts[column]);
        ASSERT_EQ(c.block_rows[i], down.starts[row]);
      }
    }
  }
}

// What an entry of either set for blocks of this many points counts in.
double unit(bool of_a, int32_t points) {
  int32_t e = 0;
  while ((int64_t{1} << 2 * e) < points) ++e;
  return std::ldexp(1.0, std::min(13 + e, (of_a ? 23 : 16) - e));
}

// Its rows of 16 words.
void check_entry(int16_t* const* entry, bool of_a, int32_t points,
                 int32_t rows) {
  for (int32_t u = 0; u < 4; ++u) {
    int64_t sum = 0;
    for (int32_t i = 0; i < 4 * rows; ++i) {
      const int32_t word = entry[i / 4][4 * u + i % 4];
      sum += word;
      const bool beyond = i >= points;
      ASSERT_NEAR(word, beyond ? 0 : unit(of_a, points) * basis(u, i, points),
                  beyond ? 0 : 1.5)
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

void check_sets(const vexo_rsz_new_context& c, vexo_shift_set a,
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

struct Geometry {
  Size src, dst;
  int32_t prescale;
  Size src_chroma{}, dst_chroma{};  // if not half of that
};
constexpr Geometry kGeometries[] = {
    {{640, 480}, {160, 120}, 0},
    {{1920, 1080}, {480, 270}, 0},
    {{1920, 1080}, {800, 450}, 0},
    {{1920, 1080}, {160, 90}, 0},
    {{1920, 1080}, {160, 90}, 2},
    {{1920, 1080}, {160, 90}, 4},
    {{1920, 1080}, {102, 58}, 0},  // fractions beyond 0.01
    {{1326, 754}, {102, 58}, 0},   // and none
    {{1021, 755}, {102, 75}, 0},   // and below it
    {{1001, 779}, {101, 59}, 0},
    {{643, 487}, {161, 121}, 0},
    {{102, 102}, {40, 40}, 2},
    {{102, 102}, {20, 20}, 4},
    {{640, 486}, {160, 120}, 0},  // 2, 3 and 4 types
    {{648, 480}, {160, 120}, 0},
    {{648, 486}, {160, 120}, 0},
    {{640, 480}, {160, 120}, 0, {351, 245}, {}},        // more types than luma
    {{640, 480}, {160, 120}, 0, {400, 400}, {40, 40}},  // larger spans
    {{648, 486}, {160, 120}, 0, {20, 12}, {40, 40}},    // enlarged
    {{400, 400}, {16, 16}, 0, {61, 41}, {7, 9}},
    {{75, 60}, {100, 80}, 0},
    {{1601, 1604}, {40, 40}, 0},
    {{640, 480}, {16, 12}, 0},
    {{640, 480}, {320, 240}, 2},
    {{640, 480}, {320, 240}, 4},
    {{640, 480}, {160, 120}, 2},
    {{640, 480}, {160, 120}, 4},
    {{102, 58}, {51, 29}, 2},
    {{640, 480}, {320, 120}, 2},
    {{640, 484}, {160, 120}, 4},
    {{0, 480}, {160, 120}, 0},
    {{640, 480}, {160, 0}, 2},
    {{640, -1}, {-5, 120}, 0},
    {{3, 3}, {8, 8}, 4},
    {{10, 640}, {64, 160}, 0}};

TEST_F(DctSetup, EveryField) {
  for (const Geometry& g : kGeometries) {
    for (const int32_t format : {6, 7, 1, 0, 3, 500}) {
      for (const int32_t selector : {0, 1, 2}) {
        const Job job = {g.src,
                         g.dst,
                         g.prescale,
                         6,
                         format,
                         selector,
                         selector == 2 || random.between(0, 1) == 0};
        SCOPED_TRACE(testing::PrintToString(job));
        ASSERT_NO_FATAL_FAILURE(describe(job));
        const Size chroma[2] = {g.src_chroma, g.dst_chroma};
        for (int i = 0; i < 2; ++i) {
          if (chroma[i].width == 0) continue;
          pair_[i].width[1] = chroma[i].width;
          pair_[i].height[1] = chroma[i].height;
          pair_[i].stride[1] = 2 * chroma[i].width;
          pair_[i].buf_height[1] = chroma[i].height;
        }
        const Plan plan(pair_, g.prescale);
        vexo_rsz_new_context steps{};
        steps.prescale = g.prescale;
        ASSERT_EQ(algorithm_settings(pair_, &steps), VEXO_OK);
        ASSERT_NO_FATAL_FAILURE(check_sizes(plan, steps));

        Scaler s(pair_, g.prescale);
        const vexo_rsz_new_context& c = s.context;
        ASSERT_EQ(s.status, VEXO_OK);
        EXPECT_EQ(c.prescale, g.prescale);
        EXPECT_EQ(c.exact_ratio, plan.exact != 0 ? 1 : 0);
        EXPECT_EQ(c.padding_needed, plan.padding_needed ? 1 : 0);
        EXPECT_EQ(c.aligned_stride, plan.aligned_stride);
        EXPECT_EQ(c.stride_not_aligned, plan.not_aligned ? 1 : 0);
        if (plan.exact != 0) {
          EXPECT_EQ(s.a, nullptr);
          EXPECT_EQ(s.b, nullptr);
          continue;
        }
        const bool known = format == 6 || format == 7 || format == 1;
        for (int p = 0; p < 2; ++p) {
          const vexo_img& dst = pair_[1];
          const int32_t step = p == 1 && is_pairs(dst) ? 2 : 1;
          EXPECT_EQ(c.dst_stride[p], known ? dst.stride[p] / step : 0);
          EXPECT_EQ(c.dst_rows[p], known ? dst.buf_height[p] : 0);
          const int32_t factor = std::max(g.prescale, 1);
          EXPECT_EQ(c.src_stride[p], pair_[0].stride[p] / ((p + 1) * factor));
          EXPECT_EQ(c.src_rows[p], pair_[0].height[p] / factor);
        }
        ASSERT_NO_FATAL_FAILURE(check_sizes(plan, c));
        ASSERT_NO_FATAL_FAILURE(check_blocks(plan, c));
        ASSERT_NO_FATAL_FAILURE(check_sets(c, s.a, s.b));
      }
    }
  }
}

TEST_F(DctSetup, SizesByHand) {
  struct Expected {
    Size src, dst;
    int32_t prescale;
    int32_t src_width, src_height, dst_width, dst_height, narrow, wide, shorts,
        talls, width, height, types, a;
  };
  for (const Expected& e : {
           // Ratio 4: s = 1.004 / 16.
           Expected{{640, 480},
                    {160, 120},
                    0,
                    640,
                    480,
                    160,
                    120,
                    40,
                    0,
                    30,
                    0,
                    16,
                    16,
                    1,
                    2056},
           // 1326 / 102 = 13: two columns take 26; 754 / 58 = 13.
           Expected{{1326, 754},
                    {102, 58},
                    0,
                    1352,
                    780,
                    104,
                    60,
                    26,
                    0,
                    15,
                    0,
                    52,
                    52,
                    1,
                    632},
           // 1021 / 102 x 2 = 20.0196: one more; 755 / 75 = 10.067.
           Expected{{1021, 755},
                    {102, 75},
                    0,
                    1042,
                    766,
                    104,
                    76,
                    24,
                    2,
                    13,
                    6,
                    40,
                    40,
                    4,
                    822},
           // 51 columns are an even 50, 51 rows stay.
           Expected{{102, 102},
                    {40, 40},
                    2,
                    50,
                    51,
                    40,
                    40,
                    10,
                    0,
                    9,
                    1,
                    5,
                    5,
                    3,
                    6579},
           Expected{{102, 102},
                    {20, 20},
                    4,
                    26,
                    25,
                    20,
                    20,
                    4,
                    1,
                    5,
                    0,
                    5,
                    5,
                    2,
                    6579},
       }) {
    ASSERT_NO_FATAL_FAILURE(
        describe({e.src, e.dst, e.prescale, 6, 6, 0, false}));
    Scaler s(pair_, e.prescale);
    const vexo_rsz_new_context& c = s.context;
    EXPECT_EQ(c.src_width[0], e.src_width);
    EXPECT_EQ(c.src_height[0], e.src_height);
    EXPECT_EQ(c.dst_width[0], e.dst_width);
    EXPECT_EQ(c.dst_height[0], e.dst_height);
    EXPECT_EQ(c.narrow_columns[0], e.narrow);
    EXPECT_EQ(c.wide_columns[0], e.wide);
    EXPECT_EQ(c.short_rows[0], e.shorts);
    EXPECT_EQ(c.tall_rows[0], e.talls);
    EXPECT_EQ(c.block_width[0][0], e.width);
    EXPECT_EQ(c.block_height[0][0], e.height);
    EXPECT_EQ(c.types[0], e.types);
    EXPECT_EQ(c.weights[0][0][0], e.a);
  }
}

TEST_F(DctSetup, TooLargeIsRefused) {
  for (const Size& dst : {Size{5, 4}, Size{4, 5}, Size{131072, 131072}}) {
    ASSERT_NO_FATAL_FAILURE(describe({{64, 64}, dst, 0, 6, 6, 2, true}));
    if (dst.width < 131072) {
      // Padding takes it beyond 32 bits.
      pair_[0].width[0] = pair_[0].height[0] =
          std::numeric_limits<int32_t>::max();
      vexo_rsz_new_context c{};
      EXPECT_EQ(algorithm_settings(pair_, &c), VEXO_ERR_ARG);
    } else {
      // More than 2^31 bytes of tables.
      pair_[0].width[0] = pair_[0].height[0] = 131072;
    }
    Scaler s(pair_, 0);
    EXPECT_EQ(s.status, VEXO_ERR_ARG);
    EXPECT_EQ(s.a, nullptr);
    EXPECT_EQ(s.b, nullptr);
    const vexo_rsz_new_context clear{};
    EXPECT_EQ(std::memcmp(&s.context, &clear, sizeof clear), 0);
  }
}

// By steps, into sets of the caller's that then take the places of the plan's.
TEST_F(DctSetup, BySteps) {
  const Job job = {{257, 135}, {50, 41}, 0, 6, 6, 1, false};
  ASSERT_NO_FATAL_FAILURE(describe(job));
  const Plan plan(pair_, 0);
  Scaler s(pair_, 0);
  ASSERT_EQ(s.status, VEXO_OK);
  vexo_rsz_new_context& c = s.context;
  ASSERT_EQ(c.types[0], 4);
  size_t blocks = 0;
  for (int p = 0; p < 2; ++p) {
    blocks += size_t{1} * plan.across[p].count * plan.down[p].count;
  }
  std::memset(c.block_types, 0xA5, blocks);
  std::memset(c.block_columns, 0xA5, blocks * sizeof(int32_t));
  std::memset(c.block_rows, 0xA5, blocks * sizeof(int32_t));
  split_settings(&c);
  ASSERT_NO_FATAL_FAILURE(check_blocks(plan, c));

  const int32_t count = c.types[0] + c.types[1];
  for (int i = 0; i < count; ++i) {
    const int p = i < c.types[0] ? 0 : 1;
    for (int32_t row = 0; row < c.vertical_span[p]; ++row) {
      std::memset(s.a[i][row], 0, 32);
    }
    for (int32_t row = 0; row < c.horizontal_span[p]; ++row) {
      std::memset(s.b[i][row], 0, 32);
    }
  }
  make_shiftmatrix(&c, s.a, s.b);
  ASSERT_NO_FATAL_FAILURE(check_sets(c, s.a, s.b));
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
                   static_cast<float*>(static_cast<void*>(out.data())), height,
                   width);
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
  for (const Size& size : sizes) {
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
          static_cast<int32_t*>(static_cast<void*>(out.data())));
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
