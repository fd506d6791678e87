// SPDX-License-Identifier: Apache-2.0
// Tone mapping by several threads, by fewer than it wants, and without memory.
// Built with ThreadSanitizer too.
#include <gtest/gtest.h>
#include <orumlox/unprefixed.h>

#include <array>
#include <cstdint>
#include <memory>
#include <thread>
#include <vector>

#include "faults.h"
#include "hdr_log.h"
#include "rules/hdr_rule.h"
#include "rules/rules.h"

namespace lox_test {
namespace {

// A picture that is large enough for threads, of which all have a part.
constexpr int32_t kWidth = 509, kHeight = 262;
constexpr int32_t kStride = 2 * kWidth + 2;

struct Pictures {
  Pictures() {
    src.format = VEXO_FMT_P010LE;
    dst.format = VEXO_FMT_RGBA8888;
    src.width[0] = kWidth;
    src.height[0] = kHeight;
    src.stride[0] = src.stride[1] = kStride;
    for (int p = 0; p < 2; ++p) src.plane[p] = words.data();
    Random(1).fill(words.data(), words.size());
    dst.plane[0] = pixels.data();
  }
  vexo_img src = {}, dst = {};
  std::vector<uint8_t> words = std::vector<uint8_t>(kStride * kHeight);
  std::vector<uint8_t> pixels = std::vector<uint8_t>(4 * kWidth * kHeight);
};

// Bands are handed out once each.
TEST(HdrThreads, OfTheCaller) {
  for (const int32_t limit : {-1, 0, 1, 4, 5, 9, kHeight}) {
    vexo_hdr_scheduler scheduler = {0, limit, PTHREAD_MUTEX_INITIALIZER};
    for (int32_t row = 0; row < limit; row += 4) {
      EXPECT_EQ(getStart(&scheduler), row);
    }
    for (int i = 0; i < 2; ++i) EXPECT_EQ(getStart(&scheduler), -1);
  }
  Pictures expected, actual;
  const auto c = std::make_unique<vexo_hdr_context>(
      model_context(&actual.src, &actual.dst, 2000, 1, false));
  auto plain = *c;
  plain.src = &expected.src;
  plain.dst = &expected.dst;
  for (int32_t row = 0; row < kHeight; row += 4) {
    tone_map_band({}, &plain, row, row + 4);
  }
  for (const size_t count : {1, 2, 5}) {
    std::fill(actual.pixels.begin(), actual.pixels.end(), uint8_t{0xA5});
    vexo_hdr_scheduler scheduler = {static_cast<int32_t>(4 * count), kHeight,
                                    PTHREAD_MUTEX_INITIALIZER};
    std::vector<vexo_hdr_worker> workers;
    std::vector<pthread_t> threads(count);
    for (size_t i = 0; i < count; ++i) {
      workers.push_back({c.get(), &scheduler, static_cast<int32_t>(4 * i)});
    }
    for (size_t i = 0; i < count; ++i) {
      pthread_create(&threads[i], nullptr, thread_vexo_hdr10_to_sdr8,
                     &workers[i]);
    }
    for (const pthread_t thread : threads) {
      void *result = &scheduler;
      pthread_join(thread, &result);
      EXPECT_EQ(result, nullptr);
    }
    EXPECT_EQ(getStart(&scheduler), -1);
    EXPECT_EQ(actual.pixels, expected.pixels) << count;
  }
}

// Calls at the same time, any of whose threads may be missing.
TEST(HdrThreads, OfSeveralCallsAndMissing) {
  Pictures expected, actual;
  by_rule(find(hdr_family, "vexo_hlg_to_sdr8"))
      .as<decltype(vexo_hlg_to_sdr8)>()(&expected.src, &expected.dst);
  std::vector<std::thread> threads;
  for (int i = 0; i < 3; ++i) {
    threads.emplace_back([&] {
      for (int call = 0; call < 20; ++call) {
        Pictures p;
        EXPECT_EQ(vexo_hlg_to_sdr8(&p.src, &p.dst), VEXO_OK);
        EXPECT_EQ(p.pixels, expected.pixels);
      }
    });
  }
  for (std::thread &t : threads) t.join();
  for (unsigned mask = 0; mask < 8; ++mask) {
    std::fill(actual.pixels.begin(), actual.pixels.end(), uint8_t{0xA5});
    starts = joins = 0;
    failing_starts = mask;
    EXPECT_EQ(vexo_hlg_to_sdr8(&actual.src, &actual.dst), VEXO_OK);
    EXPECT_EQ(starts, 3 - __builtin_popcount(mask)) << "without " << mask;
    EXPECT_EQ(joins, starts) << "without " << mask;
    EXPECT_EQ(actual.pixels, expected.pixels) << "without " << mask;
  }
  starts = 0;
  actual.src.height[0] = 64;
  actual.src.width[0] = 64;
  EXPECT_EQ(vexo_hlg_to_sdr8(&actual.src, &actual.dst), VEXO_OK);
  EXPECT_EQ(starts, 0) << "a small picture";
}

TEST(HdrThreads, WithoutMemoryNothingIsDone) {
  for (const int32_t kind : {1, 2, 4}) {
    bool done = false;
    for (int n = 1; !done; ++n) {
      Pictures p;
      p.src.source_nit = 7;
      const Pictures blank = p;
      take_log();
      const int held_before = held;
      failing_allocation = n;
      const int32_t status = kind == 1 ? vexo_hdr10_to_sdr8(&p.src, &p.dst, 0)
                             : kind == 2
                                 ? vexo_hlg_to_sdr8(&p.src, &p.dst)
                                 : vexo_hdr_to_sdr(&p.src, &p.dst, kind);
      done = failing_allocation != 0;
      failing_allocation = 0;
      EXPECT_EQ(held, held_before);
      EXPECT_EQ(status, done || kind == 4 ? VEXO_OK : VEXO_ERR_ARG);
      EXPECT_EQ(p.pixels != blank.pixels, done) << n;
      EXPECT_EQ(p.src.source_nit, done ? 1000 : 7);
      EXPECT_EQ(take_log().empty(), !done);
      ASSERT_FALSE(done && n == 1) << "the context needs memory";
    }
  }
}

}  // namespace
}  // namespace lox_test
