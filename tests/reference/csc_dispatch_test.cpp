// SPDX-License-Identifier: Apache-2.0
// The answers of vexo_csc and of its siblings for the other colour standards:
// every pair of formats, the order of the checks, and that a call that has no
// work writes nothing.
#include <orumlox/csc.h>

#include <cstdint>
#include <set>

#include "support/image.h"

namespace lox_test {
namespace {

// The pairs that the ordinary table converts.
bool has_route(int32_t src, int32_t dst) {
  const bool to_565 = dst == 200 || dst == 201;
  const bool to_rgb =
      to_565 || dst == 400 || dst == 401 || (dst >= 500 && dst <= 503);
  static const std::set<int32_t> kToAnyRgb = {1, 2, 3, 4, 6, 7, 100, 101};
  return (to_rgb && kToAnyRgb.count(src) != 0) || (src == 8 && to_565) ||
         (src == 0 && (dst == 200 || dst == 400)) || (src == 1 && dst == 4) ||
         (src == 101 && dst == 1);
}

// All that the dispatcher decides by: formats, standards, plane 0's sizes.
struct Call {
  int32_t src, dst;
  int32_t src_std = 0, dst_std = 0;
  int32_t src_width = 16, src_height = 16;
  int32_t dst_width = 16, dst_height = 16;

  bool too_small() const {
    return src_width < 8 || src_height < 8 || dst_width < 8 || dst_height < 8;
  }
};

struct Answer {
  int32_t status;
  bool writes = false;
};
constexpr Answer kIdle{VEXO_OK};
constexpr Answer kArg{VEXO_ERR_ARG};
constexpr Answer kUnsupported{VEXO_ERR_UNSUPPORTED};
// The siblings' kernels are not built: a pair that has one is answered so.
constexpr Answer kNotBuilt = kUnsupported;

Answer bt601_full(const Call& c) {
  return c.src == c.dst ? kArg : kUnsupported;
}

Answer bt709(const Call& c) {
  if (c.src == c.dst) return kArg;
  if (c.src_width != c.dst_width || c.src_height != c.dst_height) return kArg;
  if (c.too_small()) return kUnsupported;
  if (c.src == 1) return c.dst == 500 ? kNotBuilt : kIdle;
  if (c.src == 500) return c.dst == 6 || c.dst == 7 ? kNotBuilt : kIdle;
  return kUnsupported;
}

Answer bt709_full(const Call& c) {
  if (c.src == c.dst) return kArg;
  if (c.too_small() || c.src != 1) return kUnsupported;
  return c.dst == 500 ? kNotBuilt : kIdle;
}

Answer csc(const Call& c) {
  if (c.src == c.dst) return kArg;
  if (c.too_small()) return kUnsupported;
  const auto yuv = [](int32_t f) { return f < 200; };
  const auto rgb = [](int32_t f) { return f >= 200 && f <= 599; };
  const bool crosses = (yuv(c.src) && rgb(c.dst)) || (rgb(c.src) && yuv(c.dst));
  if (c.src_std == 0 || c.dst_std == 0 || !crosses) {
    return has_route(c.src, c.dst) ? Answer{VEXO_OK, true} : kUnsupported;
  }
  if (c.src_std != c.dst_std) return kUnsupported;
  return c.src_std == 1    ? bt601_full(c)
         : c.src_std == 10 ? bt709(c)
         : c.src_std == 11 ? bt709_full(c)
                           : kUnsupported;
}

struct Entry {
  int32_t (*call)(const vexo_img*, const vexo_img*);
  Answer (*model)(const Call&);
};
constexpr Entry kEntries[] = {{vexo_csc, csc},
                              {vexo_csc_bt601_fr, bt601_full},
                              {vexo_csc_bt709, bt709},
                              {vexo_csc_bt709_fr, bt709_full}};
constexpr Entry kCsc = kEntries[0];

class CscDispatch : public SeededTest {
 protected:
  static constexpr int32_t kStride = 128;

  // Planes with room for every format at every size used here.
  CscDispatch() {
    for (int p = 0; p < 4; ++p) {
      src_.set_plane(p, 16, 16, kStride, kStride * 17);
      dst_.set_plane(p, 16, 16, kStride, kStride * 17);
    }
    src_.fill(random);
    blank_ = dst_.contents();
  }

  void check(const Entry& entry, const Call& c) {
    vexo_img& src = src_.img;
    src.format = c.src;
    src.width[0] = c.src_width;
    src.height[0] = c.src_height;
    src.color_std = c.src_std;
    vexo_img& dst = dst_.img;
    dst.format = c.dst;
    dst.width[0] = c.dst_width;
    dst.height[0] = c.dst_height;
    dst.color_std = c.dst_std;
    const Answer answer = entry.model(c);
    const int32_t status = entry.call(&src, &dst);
    const bool wrote = !holds(dst_, blank_);
    ASSERT_TRUE(status == answer.status && wrote == answer.writes)
        << c.src << " to " << c.dst << ", standards " << c.src_std << " "
        << c.dst_std << ": " << status << (wrote ? ", written" : ", idle");
    for (GuardedBuffer& b : dst_.buffer) {
      if (wrote) b.reset(b.size());
    }
  }

  TestImage src_{0};
  TestImage dst_{0};
  TestImage::Contents blank_;
};

// Formats of every kind, and codes at the borders of the kinds.
constexpr int32_t kFormats[] = {0,   1,   2,   4,   6,   7,   8,   9,   11, 100,
                                101, 199, 200, 400, 500, 501, 599, 600, 601};

TEST_F(CscDispatch, EveryPairOfFormats) {
  for (int32_t src = -3; src <= 610; ++src) {
    for (int32_t dst = -3; dst <= 610; ++dst) {
      ASSERT_NO_FATAL_FAILURE(check(kCsc, {src, dst}));
    }
    for (const int32_t dst : kFormats) {
      for (const Entry& e : kEntries) {
        ASSERT_NO_FATAL_FAILURE(check(e, {src, dst}));
        ASSERT_NO_FATAL_FAILURE(check(e, {dst, src}));
      }
    }
  }
  for (const int32_t code : {INT32_MIN, INT32_MAX, 257, 65536, 65537}) {
    for (const int32_t other : kFormats) {
      ASSERT_NO_FATAL_FAILURE(check(kCsc, {code, other}));
      ASSERT_NO_FATAL_FAILURE(check(kCsc, {other, code}));
    }
  }
}

TEST_F(CscDispatch, StandardsOfEveryPair) {
  constexpr int32_t kStandards[] = {-1, 0, 1, 2, 9, 10, 11, 12, 257, 266};
  for (const int32_t src : kFormats) {
    for (const int32_t dst : kFormats) {
      for (int n = 0; n < 100; ++n) {
        ASSERT_NO_FATAL_FAILURE(
            check(kCsc, {src, dst, kStandards[n % 10], kStandards[n / 10]}));
      }
    }
  }
}

TEST_F(CscDispatch, SizesComeAfterFormatsAndBeforeStandards) {
  constexpr int32_t kPairs[][2] = {{1, 1},   {500, 500}, {9, 9},   {1, 500},
                                   {1, 200}, {6, 500},   {500, 6}, {500, 1},
                                   {1, 4},   {101, 1},   {4, 1},   {200, 500}};
  constexpr int32_t kSides[] = {INT32_MIN, 0, 7, 8, 16};
  constexpr int32_t kStandards[] = {0, 1, 10, 11};
  for (const auto& pair : kPairs) {
    // Every combination of four sides and a standard, one digit for each. A
    // sibling called directly does not look at the standards.
    for (int n = 0; n < 5 * 5 * 5 * 5 * 4; ++n) {
      const int32_t standard = kStandards[n / 625];
      const Call call{pair[0],
                      pair[1],
                      standard,
                      standard,
                      kSides[n % 5],
                      kSides[n / 5 % 5],
                      kSides[n / 25 % 5],
                      kSides[n / 125 % 5]};
      for (const Entry& e : kEntries) ASSERT_NO_FATAL_FAILURE(check(e, call));
    }
  }
}

}  // namespace
}  // namespace lox_test
