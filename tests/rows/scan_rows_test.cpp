// SPDX-License-Identifier: Apache-2.0
// The search for start codes, of each set, against the plain one: codes at
// every place, near misses before them, inaccessible memory behind.
#include "media/scan_rows.h"

#include <gtest/gtest.h>

#include "support/guarded_buffer.h"
#include "support/random.h"

namespace {

constexpr lox::StartCode kCodes[] = {{255, 1, 255, 1},     {252, 128, 255, 1},
                                     {252, 128, 252, 132}, {255, 0, 255, 0},
                                     {0, 1, 255, 255},     {192, 64, 255, 9}};

ptrdiff_t plain_find(const uint8_t *data, ptrdiff_t n, lox::StartCode code) {
  for (ptrdiff_t p = 0; p < n; ++p) {
    const uint8_t c = data[p + 2];
    if (data[p] == 0 && data[p + 1] == 0 &&
        ((c & code.mask) == code.value ||
         (c & code.other_mask) == code.other_value)) {
      return p;
    }
  }
  return n;
}

using ScanRowsTest = lox_test::SeededTest;

TEST_F(ScanRowsTest, FindsTheFirstCode) {
  lox_test::GuardedBuffer data;
  for (int level = 0; level <= lox::isa_best(); ++level) {
    const auto find = lox::scan_rows_sets[level]->find;
    ASSERT_TRUE(level == 0 || find != lox::scan_rows_sets[0]->find);
    for (ptrdiff_t n = 1; n < 2048; n += n < 150 ? 1 : 211) {
      // Those of the last two places lie beyond what is searched.
      for (ptrdiff_t place = -1; place < n + 2; place += n < 150 ? 1 : 37) {
        const ptrdiff_t size = n + 2;
        const int kind = random.between(0, 7);
        data.reset(size, lox_test::Edge{kind % 2});
        for (ptrdiff_t i = 0; i < size; ++i) {
          const auto x = static_cast<uint32_t>(random.next());
          const uint32_t samples[] = {0, x % 3, x % 255 + 1, x % 2 * x};
          data.data()[i] = static_cast<uint8_t>(samples[kind / 2]);
        }
        const auto &code = kCodes[random.between(0, 5)];
        const uint8_t last = kind % 3 ? code.value : code.other_value;
        for (ptrdiff_t i = 0; i < 3 && place >= 0 && place + i < size; ++i) {
          data.data()[place + i] = i < 2 ? 0 : last;
        }
        ASSERT_EQ(find(data.data(), n, code), plain_find(data.data(), n, code))
            << lox::isa_name(level) << ", " << n << " places, code at " << place
            << ", bytes of kind " << kind;
      }
    }
  }
}

}  // namespace
