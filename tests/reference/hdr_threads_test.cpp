// SPDX-License-Identifier: Apache-2.0
// Threads: pictures of enough rows for all of them to every destination, the
// parts that callers with threads of their own use, several calls at once.
// Built with ThreadSanitizer too.
#include <orumlox/unprefixed.h>

#include <array>
#include <cstdint>
#include <memory>
#include <thread>
#include <vector>

#include "hdr_pictures.h"

namespace lox_test {
namespace {

using HdrThreads = HdrPictures;

struct Scheduler : vexo_hdr_scheduler {
  Scheduler(int32_t first, int32_t end) : vexo_hdr_scheduler{} {
    next = first;
    limit = end;
    pthread_mutex_init(&mutex, nullptr);
  }
  ~Scheduler() { pthread_mutex_destroy(&mutex); }
  Scheduler(const Scheduler &) = delete;
  Scheduler &operator=(const Scheduler &) = delete;
};

TEST_F(HdrThreads, DoEveryDestination) {
  for (const int32_t source : {600, 601}) {
    for (const int32_t format : kDestinations) {
      for (const int call : {0, 3}) {
        make_source(source, 2 * random.between(16, 40) - 1,
                    random.between(64, 75), Content::kRandom);
        ASSERT_NO_FATAL_FAILURE(check(kCalls[call], format));
      }
    }
  }
}

TEST_F(HdrThreads, AreHandedEveryBandOnce) {
  for (const int32_t limit : {-1, 0, 1, 4, 5, 8, 10, 400}) {
    for (const int32_t first : {0, 4}) {
      Scheduler alone(first, limit);
      for (int32_t row = first; row < limit; row += 4) {
        ASSERT_EQ(getStart(&alone), row) << limit;
      }
      EXPECT_EQ(getStart(&alone), -1) << limit;
      EXPECT_EQ(getStart(&alone), -1) << limit;

      Scheduler shared(first, limit);
      std::array<std::vector<int32_t>, 4> got;
      std::vector<std::thread> threads;
      for (auto &rows : got) {
        threads.emplace_back([&] {
          for (int32_t row; (row = getStart(&shared)) >= 0;) {
            rows.push_back(row);
          }
        });
      }
      for (std::thread &t : threads) t.join();
      std::vector<int32_t> all;
      for (const auto &rows : got) {
        EXPECT_TRUE(std::is_sorted(rows.begin(), rows.end()));
        all.insert(all.end(), rows.begin(), rows.end());
      }
      std::sort(all.begin(), all.end());
      std::vector<int32_t> expected;
      for (int32_t row = first; row < limit; row += 4) expected.push_back(row);
      EXPECT_EQ(all, expected) << limit;
    }
  }
}

// One thread does the band it begins with and the rest of the picture, several
// share it. The rows that nobody was given stay.
TEST_F(HdrThreads, OfTheCaller) {
  for (int n = 0; n < 60; ++n) {
    const int32_t count = random.between(1, 5);
    const int32_t height = random.between(1, 80);
    const int32_t width = random.between(1, 70);
    const int32_t skipped = n % 3 == 0 ? 4 : 0;
    make_source(600 + n % 2, width, height, Content::kRandom);
    dst_.img.format = std::array{400, 500, 502, 1, 6, 7}[n % 6];
    const auto context = std::make_unique<vexo_hdr_context>(
        model_context(src_.img, dst_.img, 2000, n % 3, n % 4 == 0));
    std::vector<Write> writes;
    for (int32_t first = skipped; first < height; first += 4) {
      const auto more = band(*context, first, first + 4);
      writes.insert(writes.end(), more.begin(), more.end());
    }
    const auto expected = make_room(writes);
    Scheduler scheduler(skipped + 4 * count, height);
    std::vector<vexo_hdr_worker> workers;
    for (int32_t i = 0; i < count; ++i) {
      workers.push_back({context.get(), &scheduler, skipped + 4 * i});
    }
    std::vector<pthread_t> threads(workers.size());
    for (size_t i = 0; i < workers.size(); ++i) {
      ASSERT_EQ(pthread_create(&threads[i], nullptr, thread_vexo_hdr10_to_sdr8,
                               &workers[i]),
                0);
    }
    for (const pthread_t thread : threads) {
      void *result = &scheduler;
      ASSERT_EQ(pthread_join(thread, &result), 0);
      EXPECT_EQ(result, nullptr);
    }
    EXPECT_EQ(getStart(&scheduler), -1);
    ASSERT_TRUE(holds(dst_, expected))
        << dst_.img.format << ", " << width << "x" << height << ", " << count;
  }
}

// Calls at the same time leave what they leave one after the other.
TEST_F(HdrThreads, OfSeveralCalls) {
  make_source(VEXO_FMT_P010LE, 45, 66, Content::kRandom);
  dst_.img.format = VEXO_FMT_RGBA8888;
  const auto run = [&](const Call &call, std::vector<uint8_t> &bytes) {
    bytes.resize(size_t{4} * 45 * 66);
    vexo_img src = src_.img;
    vexo_img dst = dst_.img;
    dst.plane[0] = bytes.data();
    call.run(&src, &dst);
  };
  std::array<std::vector<uint8_t>, kCallCount> expected, actual;
  for (int i = 0; i < kCallCount; ++i) run(kCalls[i], expected[i]);
  std::vector<std::thread> threads;
  for (int i = 0; i < kCallCount; ++i) {
    threads.emplace_back([&, i] { run(kCalls[i], actual[i]); });
  }
  for (std::thread &t : threads) t.join();
  EXPECT_EQ(actual, expected);
}

}  // namespace
}  // namespace lox_test
