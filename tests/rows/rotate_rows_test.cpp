// SPDX-License-Identifier: Apache-2.0
// The kernels that turn, of each set, against the rule, and those that average
// blocks against the portable ones: beside inaccessible memory, in steps of any
// size and sign.
#include "rot/rotate_rows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "rsz/block_rows.h"
#include "support/guarded_buffer.h"
#include "support/random.h"

namespace {

using lox_test::Edge;
using lox_test::GuardedBuffer;

// Rows in a buffer, the first or the last of which comes first in memory.
struct Rows {
  Rows(GuardedBuffer &buffer, ptrdiff_t bytes, ptrdiff_t rows,
       ptrdiff_t padding, bool upwards, Edge edge)
      : step(upwards ? -(bytes + padding) : bytes + padding),
        origin(upwards ? (rows - 1) * (bytes + padding) : 0) {
    buffer.reset((rows - 1) * (bytes + padding) + bytes, edge);
  }
  ptrdiff_t step, origin;
};

class RotateRowsTest : public lox_test::SeededTest {
 protected:
  // `variant`: directions and the edge.
  void transpose(int level, int unit, ptrdiff_t width, ptrdiff_t height,
                 int variant) {
    const Edge edge = variant & 1 ? Edge::kStart : Edge::kEnd;
    const Rows from(src_, width * unit, height, variant % 4, variant & 2, edge);
    const Rows to(dst_, height * unit, width, variant % 3, variant & 4, edge);
    random.fill(src_.data(), src_.size());
    std::vector<uint8_t> expected = dst_.copy();
    for (ptrdiff_t y = 0; y < height; ++y) {
      for (ptrdiff_t x = 0; x < width; ++x) {
        std::copy_n(src_.data() + from.origin + y * from.step + x * unit, unit,
                    expected.data() + to.origin + x * to.step + y * unit);
      }
    }
    lox::rotate_rows_sets[level]->transpose[unit - 1](
        src_.data() + from.origin, from.step, dst_.data() + to.origin, to.step,
        width, height);
    ASSERT_TRUE(lox_test::holds(dst_, expected))
        << lox::isa_name(level) << ", unit " << unit << ", " << width << "x"
        << height << ", variant " << variant;
  }

  GuardedBuffer src_;
  GuardedBuffer dst_;
};

TEST_F(RotateRowsTest, TransposeMovesUnitsAndNothingElse) {
  constexpr int kHeights[] = {1,  2,  3,  4,  5,  7,  8,  9,  12, 15, 16,
                              17, 23, 24, 31, 32, 33, 47, 63, 64, 65, 70};
  for (int level = 0; level <= lox::isa_best(); ++level) {
    for (int unit = 1; unit <= 4; ++unit) {
      if (level > 0) {
        // A form that was not compiled for its set proves nothing.
        ASSERT_NE(lox::rotate_rows_sets[level]->transpose[unit - 1],
                  lox::rotate_rows_sets[0]->transpose[unit - 1]);
      }
      int variant = 0;
      for (int width = 1; width <= 70; ++width) {
        for (const int height : kHeights) {
          transpose(level, unit, width, height, variant++ % 8);
          if (HasFatalFailure()) return;
        }
      }
      for (variant = 0; variant < 8; ++variant) {
        transpose(level, unit, 257, 130, variant);
        transpose(level, unit, 128, 333, variant);
        if (HasFatalFailure()) return;
      }
    }
  }
}

TEST_F(RotateRowsTest, ReverseWritesUnitsBackwards) {
  std::vector<size_t> counts = {1917, 1920, 5003};
  for (size_t n = 1; n <= 300; ++n) counts.push_back(n);
  for (int level = 0; level <= lox::isa_best(); ++level) {
    for (size_t unit = 1; unit <= 4; ++unit) {
      const auto reverse = lox::rotate_rows_sets[level]->reverse[unit - 1];
      if (level > 0) {
        ASSERT_NE(reverse, lox::rotate_rows_sets[0]->reverse[unit - 1]);
      }
      for (const Edge edge : {Edge::kEnd, Edge::kStart}) {
        for (const size_t n : counts) {
          src_.reset(n * unit, edge);
          dst_.reset(n * unit, edge);
          random.fill(src_.data(), src_.size());
          std::vector<uint8_t> expected(n * unit);
          for (size_t i = 0; i < n; ++i) {
            std::copy_n(src_.data() + i * unit, unit,
                        expected.data() + (n - 1 - i) * unit);
          }
          reverse(src_.data(), dst_.data(), static_cast<ptrdiff_t>(n));
          ASSERT_TRUE(lox_test::holds(dst_, expected))
              << lox::isa_name(level) << ", unit " << unit << ", " << n;
        }
      }
    }
  }
}

struct BlockForm {
  lox::BlockFn lox::BlockRows::*row;
  size_t unit, side, rows;  // to the last one that is read
};
constexpr BlockForm kBlockForms[] = {
    {&lox::BlockRows::halve_bytes, 1, 2, 2},
    {&lox::BlockRows::halve_pairs, 2, 2, 2},
    {&lox::BlockRows::quarter_bytes, 1, 4, 4},
    {&lox::BlockRows::quarter_pairs, 2, 4, 4},
    {&lox::BlockRows::quarter_bytes_of_2_rows, 1, 4, 3},
    {&lox::BlockRows::quarter_grouped_of_2_rows, 2, 4, 3},
    {&lox::BlockRows::quarter_grouped, 2, 4, 4},
};

TEST_F(RotateRowsTest, BlocksAreThoseOfThePortableSet) {
  std::vector<size_t> counts = {479, 480, 1917};
  for (size_t n = 1; n <= 140; ++n) counts.push_back(n);
  GuardedBuffer portable;
  for (int level = 1; level <= lox::isa_best(); ++level) {
    for (const BlockForm &form : kBlockForms) {
      const lox::BlockFn row = lox::block_rows_sets[level]->*form.row;
      const lox::BlockFn rule = lox::block_rows_sets[0]->*form.row;
      ASSERT_NE(row, rule);
      for (const Edge edge : {Edge::kEnd, Edge::kStart}) {
        for (const size_t n : counts) {
          const size_t bytes = n * form.unit * form.side;
          const size_t step = bytes + n % 3;
          src_.reset((form.rows - 1) * step + bytes, edge);
          random.fill(src_.data(), src_.size(), lox_test::kFills[n % 4]);
          dst_.reset(n * form.unit, edge);
          portable.reset(n * form.unit, edge);
          row(src_.data(), static_cast<ptrdiff_t>(step), dst_.data(),
              static_cast<ptrdiff_t>(n));
          rule(src_.data(), static_cast<ptrdiff_t>(step), portable.data(),
               static_cast<ptrdiff_t>(n));
          ASSERT_TRUE(lox_test::holds(dst_, portable.copy()))
              << lox::isa_name(level) << ", form " << &form - &kBlockForms[0]
              << ", " << n << " outputs";
        }
      }
    }
  }
}

}  // namespace
