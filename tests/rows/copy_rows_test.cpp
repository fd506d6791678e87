// SPDX-License-Identifier: Apache-2.0
// The copy kernel of each set, beside inaccessible memory.
#include "common/copy_rows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "support/guarded_buffer.h"
#include "support/random.h"

namespace {

using lox_test::Edge;
using lox_test::GuardedBuffer;

using CopyRowsTest = lox_test::SeededTest;

TEST_F(CopyRowsTest, CopiesTheRunAndNothingElse) {
  // Short runs, and one of each way to copy a long one.
  std::vector<size_t> sizes = {20011, 800021, (size_t{4} << 20) + 37};
  for (size_t n = 0; n <= 530; ++n) sizes.push_back(n);
  for (int level = 0; level <= lox::isa_best(); ++level) {
    for (const Edge edge : {Edge::kEnd, Edge::kStart}) {
      GuardedBuffer src;
      GuardedBuffer dst;
      for (const size_t n : sizes) {
        src.reset(n + n % 7, edge);
        random.fill(src.data(), src.size());
        for (const auto copy : {lox::copy_rows_sets[level]->copy,
                                lox::copy_rows_sets[level]->copy_far}) {
          dst.reset(n + n % 5, edge);
          // Away from the edge only when the padding is, so both touch it.
          std::vector<uint8_t> expected = dst.copy();
          const size_t from = edge == Edge::kEnd ? n % 7 : 0;
          const size_t to = edge == Edge::kEnd ? n % 5 : 0;
          std::copy_n(src.data() + from, n, expected.begin() + to);
          copy(dst.data() + to, src.data() + from, n);
          ASSERT_TRUE(lox_test::holds(dst, expected))
              << lox::isa_name(level) << ", " << n << " bytes";
        }
      }
    }
  }
}

TEST_F(CopyRowsTest, CopiesTheBlockAndNothingElse) {
  constexpr int kRows = 5;
  GuardedBuffer src;
  GuardedBuffer dst;
  for (int level = 0; level <= lox::isa_best(); ++level) {
    for (const size_t n : {1, 7, 8, 9, 15, 16, 63, 64, 65, 256}) {
      const size_t src_step = n + n % 3;
      const size_t dst_step = n + 5;
      src.reset((kRows - 1) * src_step + n);
      dst.reset((kRows - 1) * dst_step + n);
      random.fill(src.data(), src.size());
      std::vector<uint8_t> expected = dst.copy();
      for (size_t i = 0; i < kRows * n; ++i) {
        expected[i / n * dst_step + i % n] =
            src.data()[i / n * src_step + i % n];
      }
      lox::copy_rows_sets[level]->copy_block(
          dst.data(), static_cast<ptrdiff_t>(dst_step), src.data(),
          static_cast<ptrdiff_t>(src_step), n, kRows);
      ASSERT_TRUE(lox_test::holds(dst, expected))
          << lox::isa_name(level) << ", " << n << " bytes";
    }
  }
}

}  // namespace
