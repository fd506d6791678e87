// SPDX-License-Identifier: Apache-2.0
// Rows of blocks of the DCT-domain scaler, of each set, against the portable
// rule: every size of block, whatever the plane lacks, and the samples that
// drive the inverse furthest.
#include "dct/dct_rows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "orumlox/dct.h"
#include "support/guarded_buffer.h"
#include "support/random.h"

namespace {

using lox::DctJob;
using lox::DctKind;
using lox::DctRows;
using lox::DctTables;
using lox_test::Edge;
using lox_test::GuardedBuffer;

constexpr double kPi = 3.14159265358979323846;

double basis(int u, int i, int points) {
  return std::cos((2 * i + 1) * kPi * u / (2 * points)) *
         (u == 0 ? std::sqrt(0.5) : 1);
}

// Black or white so that the j-th result of row u of the inverse's first
// direction becomes as large as it can.
void fill_extreme(uint8_t *data, int width, int height, int u, int j) {
  constexpr double kInverse[4][4] = {{128, 128, 128, 53},
                                     {128, 53, -128, -128},
                                     {128, -53, -128, 128},
                                     {128, -128, 128, -53}};
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      double across = 0;
      for (int v = 0; v < 4; ++v) {
        across += kInverse[j % 4][v] * basis(v, x, width) *
                  (v % 2 == 0 ? 0.25 : 0.3162);
      }
      const bool white = (basis(u, y, height) * across > 0) == (j < 4);
      data[y * width + x] = white ? 255 : 0;
    }
  }
}

// The blocks of a row of a plan, by the plan's own bases.
class Plan {
 public:
  Plan(int width, int height, int columns, int rows) {
    vexo_img quartet[4] = {};
    for (int i = 2; i < 4; ++i) {
      quartet[i].width[0] = quartet[i].stride[0] = i == 2 ? width : 4 * columns;
      quartet[i].height[0] = i == 2 ? height : 4 * rows;
    }
    EXPECT_EQ(vexo_rsz_new_rgba8888_init(quartet, &context, &a, &b), VEXO_OK);
    for (int type = 0; type < context.types[0]; ++type) {
      if (context.types[0] == 3 && type == 1) continue;
      kinds[type] = {context.block_width[0][type],
                     context.block_height[0][type], a[type], b[type],
                     context.weights[0][type]};
    }
  }
  ~Plan() { vexo_rsz_new_rgba8888_deinit(nullptr, &context, a, b); }
  Plan(const Plan &) = delete;
  Plan &operator=(const Plan &) = delete;

  vexo_rsz_new_context context;
  vexo_shift_set a, b;
  DctKind kinds[4] = {};
};

class DctRowsTest : public lox_test::SeededTest {
 protected:
  // Every level's blocks of row `row` of a plane that has `lacking` columns and
  // rows less than the plan.
  void compare(const Plan &plan, int row, int lacking, Edge edge) {
    const vexo_rsz_new_context &c = plan.context;
    const int columns = c.narrow_columns[0] + c.wide_columns[0];
    const ptrdiff_t at = ptrdiff_t{row} * columns;
    const auto stride = static_cast<ptrdiff_t>(4 * columns + row % 3);
    std::vector<uint8_t> work(size_t{1} * c.block_width[0][3] *
                              c.block_height[0][3]);
    DctJob job = {plan.kinds,
                  plane.data(),
                  plane_stride,
                  std::max(c.src_width[0] - lacking, 1),
                  std::max(c.src_height[0] - lacking, 1),
                  c.block_rows[at],
                  c.block_columns + at,
                  c.block_types + at,
                  columns,
                  work.data(),
                  nullptr,
                  stride};
    std::vector<uint8_t> expected;
    for (int level = 0; level <= lox::isa_best(); ++level) {
      DctTables tables;
      lox::dct_rows_sets[level]->prepare(&tables, plan.kinds);
      out.reset(static_cast<size_t>(3 * stride + 4 * columns), edge);
      job.dst = out.data();
      lox::dct_rows_sets[level]->blocks(&tables, &job);
      if (level == 0) expected = out.copy();
      ASSERT_TRUE(holds(out, expected))
          << lox::isa_name(level) << ", blocks of " << c.block_width[0][0]
          << " x " << c.block_height[0][0] << ", row " << row << ", lacking "
          << lacking;
    }
  }
  // The rows of a plan, of a plane that ends where its samples do.
  void compare_all(const Plan &plan, int lacking, Edge edge) {
    const int rows = plan.context.short_rows[0] + plan.context.tall_rows[0];
    for (int row = 0; row < rows; ++row) compare(plan, row, lacking, edge);
  }

  GuardedBuffer plane, out;
  ptrdiff_t plane_stride = 0;
};

TEST_F(DctRowsTest, SetsDiffer) {
  for (int level = 1; level <= lox::isa_best(); ++level) {
    ASSERT_NE(lox::dct_rows_sets[level]->blocks, lox::dct_rows_sets[0]->blocks);
  }
}

TEST_F(DctRowsTest, EverySizeOfBlocks) {
  for (int round = 0; round < 500; ++round) {
    // Now and then larger ones than have a vector form, and smaller.
    const int most = round % 20 == 0 ? 150 : round % 3 == 0 ? 128 : 20;
    const int columns = random.between(1, round % 10 == 0 ? 80 : 9);
    const int rows = random.between(1, 3);
    const int width =
        columns * random.between(2, most) + random.between(0, columns - 1);
    const int height =
        rows * random.between(2, most) + random.between(0, rows - 1);
    const Plan plan(width, height, columns, rows);
    const int lacking = round % 4 == 1 ? random.between(1, 12) : 0;
    const int w = std::max(width - lacking, 1);
    const int h = std::max(height - lacking, 1);
    const Edge edge = round % 2 == 0 ? Edge::kEnd : Edge::kStart;
    plane_stride = w + round % 5;
    plane.reset(static_cast<size_t>((h - 1) * plane_stride + w), edge);
    random.fill(plane.data(), plane.size(), lox_test::kFills[round / 4 % 4]);
    compare_all(plan, lacking, edge);
  }
}

TEST_F(DctRowsTest, TheInverseHoldsItsLargestNumbers) {
  for (const int width : {4, 5, 6, 7, 8, 9, 11, 16, 33, 64, 127, 128}) {
    for (const int height : {4, 5, 6, 8, 12, 16, 63, 128}) {
      const Plan plan(width, height, 1, 1);
      plane_stride = width;
      plane.reset(static_cast<size_t>(width * height));
      for (int i = 0; i < 32; ++i) {
        fill_extreme(plane.data(), width, height, i / 8, i % 8);
        compare_all(plan, 0, Edge::kEnd);
      }
    }
  }
}

}  // namespace
