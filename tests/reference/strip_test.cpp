// SPDX-License-Identifier: Apache-2.0
// Rows between two steps of a call, and from which size on memory is written
// otherwise.
#include "common/strip.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace lox_test {
namespace {

constexpr int32_t kBytes = 4096;

// Each row is taken once, in order, with those before it that were not.
TEST(Strip, TakesEachRowOnce) {
  for (const bool rest_first : {false, true}) {
    for (int32_t most = 2; most <= 64; most *= 2) {
      for (int32_t last = 0; last < 3 * most; ++last) {
        const int32_t unit = kBytes / 64 / 64;
        lox::Strip<kBytes> strip({64, most}, unit, last, rest_first);
        int32_t taken = 0;
        bool full = false;
        for (int32_t y = 0; y <= last; ++y) {
          *strip.row() = static_cast<uint8_t>(y);
          strip.made(y, [&](int32_t first, int32_t rows, const uint8_t *bytes,
                            ptrdiff_t pitch) {
            ASSERT_EQ(first, taken);
            ASSERT_EQ(first + rows - 1, y);
            ASSERT_LE(rows, most);
            ASSERT_EQ(pitch, 64 * unit);
            for (int32_t i = 0; i < rows; ++i) {
              ASSERT_EQ(bytes[i * pitch], static_cast<uint8_t>(first + i));
            }
            // Few rows do not fill a vector.
            EXPECT_GE(rows, last < most ? 1 : most / 4);
            // Behind full numbers there are no others.
            EXPECT_TRUE(!rest_first || !full || rows == most);
            full = rows == most;
            taken += rows;
          });
        }
        ASSERT_EQ(taken, last + 1) << most;
      }
    }
  }
}

// Strips fit, and all but the last are of whole vectors and of nearly the same
// width.
TEST(Strip, DividesColumns) {
  for (const int32_t unit : {1, 2, 3, 4}) {
    for (const int32_t rows : {1, 8, 16}) {
      for (int32_t width = 1; width < 3000; width += 7) {
        int32_t widest = 0;
        for (int32_t left = width; left > 0;) {
          const auto size = lox::Strip<kBytes>::next(left, unit, rows);
          ASSERT_EQ(size.rows, rows);
          ASSERT_GT(size.columns, 0);
          ASSERT_LE(size.columns, left);
          ASSERT_LE(size.columns * unit * rows, kBytes);
          widest = widest > size.columns ? widest : size.columns;
          left -= size.columns;
          EXPECT_TRUE(left == 0 || size.columns + 64 >= widest);
        }
      }
    }
  }
}

constexpr size_t kMiB = size_t{1} << 20;

TEST(MemoryRule, GoesByTheShareOfTheLastCache) {
  struct {
    lox::CacheSizes caches;
    size_t rows, columns, far_from;
  } const rules[] = {{{kMiB, 32 * kMiB}, 4 * kMiB, 2 * kMiB, 3 * kMiB / 2},
                     {{kMiB / 2, 32 * kMiB}, 4 * kMiB, 2 * kMiB, 3 * kMiB / 4},
                     {{kMiB / 2, 4 * kMiB}, kMiB, kMiB, 3 * kMiB / 4},
                     {{kMiB, 96 * kMiB}, 12 * kMiB, 6 * kMiB, 3 * kMiB / 2},
                     {{kMiB, kMiB}, 2 * kMiB, 2 * kMiB, 3 * kMiB / 2}};
  for (const auto &[caches, rows, columns, far_from] : rules) {
    const auto rule = lox::memory_rule(lox::Core::kStreams, caches, true);
    EXPECT_EQ(rule.stream_rows, rows);
    EXPECT_EQ(rule.stream_columns, columns);
    EXPECT_EQ(rule.far_from, far_from);
    EXPECT_TRUE(rule.strings && rule.fetches_rgb && !rule.fetches);
    const auto other = lox::memory_rule(lox::Core::kFetches, caches, true);
    EXPECT_EQ(other.stream_rows, SIZE_MAX);
    EXPECT_EQ(other.stream_columns, SIZE_MAX);
    EXPECT_EQ(other.far_from, far_from);
    EXPECT_TRUE(!other.strings && !other.fetches_rgb && other.fetches);
  }
}

}  // namespace
}  // namespace lox_test
