// SPDX-License-Identifier: Apache-2.0
// Scaling without memory or without threads: nothing is done then, or all of it
// by fewer threads; nothing is held in the end. Built with ThreadSanitizer too.
#include <orumlox/unprefixed.h>

#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include "dct_pictures.h"
#include "faults.h"

namespace lox_test {
namespace {

// A kind of scaling, all of whose calls take the same arguments here.
struct Call {
  const char *name;
  int32_t prescale;
  int32_t rotation;
  bool rgba;
  Size src;
  int32_t threads;
  bool exact = false;
};
constexpr Call kCalls[] = {
    {"no factor", 0, 0, false, {113, 95}, 0},
    {"factor 2", 2, 0, false, {113, 95}, 1},
    {"factor 4", 4, 0, false, {253, 199}, 1},
    {"exact", 4, 0, false, {88, 80}, 0, true},
    {"four bytes", 0, 0, true, {113, 95}, 2},
    {"thumbnail", 0, 3, false, {113, 95}, 0},
    {"thumbnail, factor 2", 2, 1, false, {113, 95}, 1},
    {"exact thumbnail", 2, 2, false, {88, 80}, 0, true},
};
constexpr Size kDst = {22, 20};

class DctFaults : public DctPictures {
 protected:
  void prepare(const Call &call, int32_t format) {
    ASSERT_NO_FATAL_FAILURE(
        make({call.src, kDst, call.prescale, 6, format, 0, false}));
    result_ = pair_[1];
    if (call.rotation == 1 || call.rotation == 2) {
      // Square enough for the turned one's geometry.
      for (int p = 0; p < 3; ++p) {
        images_[1].buffer[p].reset(128 * 128);
        result_.plane[p] = images_[1].buffer[p].data();
      }
    }
    if (call.rgba) quartet_.emplace(call.src, kDst, random);
    blank_ = destination(call).contents();
  }
  TestImage &destination(const Call &call) {
    return call.rgba ? quartet_->images[1] : images_[1];
  }

  int32_t init(const Call &call) {
    std::memset(static_cast<void *>(&context_), 0xA5, sizeof context_);
    a_ = b_ = &not_null_;
    if (call.rgba) {
      return vexo_rsz_new_rgba8888_init(quartet_->img, &context_, &a_, &b_);
    }
    if (call.rotation == 0) {
      return vexo_rsz_new_init(pair_, &context_, &a_, &b_, call.prescale);
    }
    return vexo_txc_new_init(pair_, &intermediate_, &context_, &a_, &b_,
                             call.prescale, call.rotation);
  }
  int32_t run(const Call &call) {
    if (call.rgba)
      return vexo_rsz_new_rgba8888(quartet_->img, &context_, a_, b_);
    if (call.rotation == 0) {
      return vexo_rsz_new(&pair_[0], &pair_[1], &context_, a_, b_);
    }
    return vexo_txc_new(pair_, &result_, &intermediate_, &context_, a_, b_,
                        call.rotation);
  }
  int32_t deinit(const Call &call) {
    if (call.rgba) {
      return vexo_rsz_new_rgba8888_deinit(quartet_->img, &context_, a_, b_);
    }
    if (call.rotation == 0) {
      return vexo_rsz_new_deinit(pair_, &context_, a_, b_);
    }
    return vexo_txc_new_deinit(pair_, &intermediate_, &context_, a_, b_,
                               call.rotation);
  }

  // What the call leaves when nothing fails.
  void undisturbed(const Call &call, TestImage::Contents &expected) {
    ASSERT_EQ(init(call), VEXO_OK);
    ASSERT_EQ(run(call), VEXO_OK);
    ASSERT_EQ(deinit(call), VEXO_OK);
    expected = destination(call).contents();
  }
  void blank(const Call &call) {
    for (int p = 0; p < 4; ++p) {
      std::copy(blank_[p].begin(), blank_[p].end(),
                destination(call).buffer[p].data());
    }
  }
  bool is_clear() const {
    const vexo_rsz_new_context clear{};
    return std::memcmp(&context_, &clear, sizeof clear) == 0;
  }

  TestImage::Contents blank_;
  vexo_img result_;
  vexo_img intermediate_;
  vexo_rsz_new_context context_;
  int16_t **not_null_ = nullptr;
  vexo_shift_set a_, b_;
  std::optional<Quartet> quartet_;
};

TEST_F(DctFaults, SetUpWithoutMemoryIsAsIfItWereNot) {
  for (const Call &call : kCalls) {
    for (const int32_t format : {6, 1}) {
      SCOPED_TRACE(call.name);
      ASSERT_NO_FATAL_FAILURE(prepare(call, format));
      const int held_before = held;
      bool done = false;
      int n = 0;
      while (!done) {
        ASSERT_LT(++n, 500);
        blank(call);
        failing_allocation = n;
        const int32_t status = init(call);
        done = failing_allocation != 0;
        failing_allocation = 0;
        ASSERT_EQ(status, done || call.rotation != 0 ? VEXO_OK : VEXO_ERR_ARG);
        if (!done && call.rotation == 0) {
          EXPECT_EQ(held, held_before) << "allocation " << n;
          EXPECT_TRUE(is_clear());
          EXPECT_EQ(a_, nullptr);
          EXPECT_EQ(b_, nullptr);
        }
        EXPECT_EQ(run(call), VEXO_OK);
        EXPECT_EQ(destination(call).contents() == blank_, !done)
            << "allocation " << n;
        for (int round = 0; round < (done ? 1 : 2); ++round) {
          EXPECT_EQ(deinit(call), VEXO_OK);
          EXPECT_TRUE(is_clear());
          ASSERT_EQ(held, held_before) << "allocation " << n;
          if (!done) a_ = b_ = nullptr;
        }
      }
      EXPECT_GT(n, call.exact ? 0 : 3);
    }
  }
}

TEST_F(DctFaults, SetWithoutMemoryIsNone) {
  const int held_before = held;
  for (int n = 1;; ++n) {
    ASSERT_LT(n, 50);
    int16_t **not_null = nullptr;
    vexo_shift_set set = &not_null;
    failing_allocation = n;
    const int32_t status = get_mem3Dint16(&set, 5, 7);
    const bool done = failing_allocation != 0;
    failing_allocation = 0;
    ASSERT_EQ(status, done ? VEXO_OK : VEXO_ERR_ARG);
    if (!done) {
      EXPECT_EQ(set, nullptr);
      EXPECT_EQ(held, held_before);
      continue;
    }
    EXPECT_GT(n, 2);
    for (int i = 0; i < 5; ++i) {
      for (int k = 0; k < 7 * 16; ++k) {
        EXPECT_EQ(set[i][k / 16][k % 16], 0);
        EXPECT_EQ(set[i][0] + k, &set[i][k / 16][k % 16]);
      }
      std::free(set[i][0]);
      std::free(set[i]);
    }
    std::free(set);
    EXPECT_EQ(held, held_before);
    break;
  }
}

// The thread's record is all that runs may need.
TEST_F(DctFaults, RunsWithoutMemoryAreWhole) {
  for (const Call &call : kCalls) {
    SCOPED_TRACE(call.name);
    ASSERT_NO_FATAL_FAILURE(prepare(call, VEXO_FMT_NV12));
    TestImage::Contents expected;
    ASSERT_NO_FATAL_FAILURE(undisturbed(call, expected));
    ASSERT_EQ(init(call), VEXO_OK);
    bool done = false;
    for (int n = 1; !done; ++n) {
      ASSERT_LT(n, 20);
      blank(call);
      const int held_before = held;
      testing::internal::CaptureStdout();
      failing_allocation = n;
      const int32_t status = run(call);
      done = failing_allocation != 0;
      failing_allocation = 0;
      EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
      EXPECT_EQ(status, VEXO_OK);
      EXPECT_EQ(held, held_before);
      ASSERT_TRUE(holds(destination(call), expected)) << "allocation " << n;
    }
    ASSERT_EQ(deinit(call), VEXO_OK);
  }
}

TEST_F(DctFaults, RunsWithoutThreadsAreWholeAndTell) {
  for (const Call &call : kCalls) {
    for (const int32_t format : {6, 1}) {
      SCOPED_TRACE(call.name);
      ASSERT_NO_FATAL_FAILURE(prepare(call, format));
      TestImage::Contents expected;
      ASSERT_NO_FATAL_FAILURE(undisturbed(call, expected));
      ASSERT_EQ(init(call), VEXO_OK);
      for (unsigned mask = 0; mask < 4; ++mask) {
        blank(call);
        starts = joins = 0;
        failing_starts = mask;
        testing::internal::CaptureStdout();
        EXPECT_EQ(run(call), VEXO_OK);
        const std::string told = testing::internal::GetCapturedStdout();
        failing_starts = 0;
        std::string errors;
        int32_t missing = 0;
        for (int32_t i = 0; i < call.threads; ++i) {
          if ((mask >> i & 1) == 0) continue;
          errors += " err \n ";
          ++missing;
        }
        EXPECT_EQ(told, errors) << "without " << mask;
        EXPECT_EQ(starts, call.threads - missing) << "without " << mask;
        EXPECT_EQ(joins, starts) << "without " << mask;
        ASSERT_TRUE(holds(destination(call), expected)) << "without " << mask;
      }
      ASSERT_EQ(deinit(call), VEXO_OK);
    }
  }
}

// Pictures that the threads share are as the model's.
TEST_F(DctFaults, ThreadsShareThePicture) {
  for (const int32_t prescale : {2, 4}) {
    for (const int32_t format : {6, 1}) {
      ASSERT_NO_FATAL_FAILURE(
          make({{301, 243}, {42, 23}, prescale, 6, format, 1, false}));
      Canvas canvas(images_[1].contents());
      draw(Plan(pair_, prescale), pair_[0], pair_[1], false, canvas);
      Scaler s(pair_, prescale);
      ASSERT_EQ(s.run(), VEXO_OK);
      ASSERT_TRUE(near(images_[1], canvas));
    }
  }
}

}  // namespace
}  // namespace lox_test
