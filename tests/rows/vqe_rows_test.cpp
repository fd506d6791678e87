// SPDX-License-Identifier: Apache-2.0
// Sharpening and deblocking of each set against the portable one: beside
// inaccessible memory, rows in either order.
#include "vqe/vqe_rows.h"

#include <gtest/gtest.h>

#include <vector>

#include "support/guarded_buffer.h"
#include "support/random.h"
#include "vqe/deblock_rule.h"

namespace {

// Noise of a range that is often narrow, and some of all values.
void paint(lox_test::Random &random, lox_test::GuardedBuffer &buffer,
           ptrdiff_t size) {
  buffer.reset(size, lox_test::Edge{random.between(0, 1)});
  const uint32_t bits = random.between(1, 8), wide = random.between(0, 15);
  for (size_t i = 0; i < buffer.size(); ++i) {
    const auto noise = static_cast<uint32_t>(random.next());
    const int shift = (noise & 15) < wide ? 24 : 32 - bits;
    buffer.data()[i] = static_cast<uint8_t>(noise >> shift);
  }
}

using VqeRowsTest = lox_test::SeededTest;

TEST_F(VqeRowsTest, AreThoseOfThePortableSet) {
  lox_test::GuardedBuffer src, dst;
  const lox::VqeRows &rule = *lox::vqe_rows_sets[0];
  for (int level = 1; level <= lox::isa_best(); ++level) {
    const lox::VqeRows &set = *lox::vqe_rows_sets[level];
    ASSERT_NE(set.sharpen, rule.sharpen);
    ASSERT_NE(set.deblock_horizontal, rule.deblock_horizontal);
    ASSERT_NE(set.deblock_vertical, rule.deblock_vertical);
    for (int i = 0; i < 4500; ++i) {
      const ptrdiff_t n = i % 300 ? i % 300 : 1913 + i / 300;
      const int rows = random.between(1, 8);
      const ptrdiff_t pitch = n + 4 + random.between(0, 40);
      paint(random, src, (rows + 3) * pitch + n + 4);
      paint(random, dst, (rows - 1) * pitch + n);
      std::vector<uint8_t> expected = dst.copy();
      const uint8_t *first = src.data() + 2 * pitch + 2;
      rule.sharpen(first, pitch, expected.data(), n, rows);
      set.sharpen(first, pitch, dst.data(), n, rows);
      ASSERT_TRUE(lox_test::holds(dst, expected))
          << lox::isa_name(level) << ", sharpen " << n << "x" << rows;

      // In place; the first row comes first in memory or last.
      const int strength = random.between(1, lox::kMaxByteStrength);
      const ptrdiff_t stride = i % 2 ? pitch : -pitch, edges = n / 8;
      for (const bool columns : {false, edges > 0}) {
        const int lines = columns ? rows : 4;
        const ptrdiff_t origin = i % 2 ? 0 : (lines - 1) * pitch;
        paint(random, dst, (lines - 1) * pitch + (columns ? edges * 8 : n));
        expected = dst.copy();
        uint8_t *const from[] = {expected.data() + origin, dst.data() + origin};
        for (const int by : {0, 1}) {
          const lox::VqeRows &s = *lox::vqe_rows_sets[by * level];
          if (columns) {
            s.deblock_vertical(from[by], stride, edges, rows, strength);
          } else {
            s.deblock_horizontal(from[by], stride, n, strength);
          }
        }
        ASSERT_TRUE(lox_test::holds(dst, expected))
            << lox::isa_name(level) << ", " << n << " columns, stride "
            << stride << ", " << lines << " rows, strength " << strength;
      }
    }
  }
}

}  // namespace
