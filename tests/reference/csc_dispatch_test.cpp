// SPDX-License-Identifier: Apache-2.0
// The answers of vexo_csc and of its siblings for the other colour standards:
// every pair of formats, the order of the checks, and that a call that has no
// work writes nothing.
#include <orumlox/csc.h>

#include <cstdint>
#include <set>
#include <tuple>
#include <vector>

#include "support/image.h"

namespace lox_test {
namespace {

// The routes there are: a standard (0 for the ordinary table), source formats
// and the destinations that each of them converts to.
struct Routes {
  int32_t standard;
  std::vector<int32_t> sources;
  std::vector<int32_t> destinations;
};
const Routes kRoutes[] = {
    {0, {1, 2, 3, 4, 6, 7, 100, 101}, {200, 201, 400, 401, 500, 501, 502, 503}},
    {0, {8}, {200, 201}},
    {0, {0}, {200, 400}},
    {0, {1}, {4}},
    {0, {101}, {1}},
};

bool has_route(int32_t standard, int32_t src, int32_t dst) {
  static const auto routes = [] {
    std::set<std::tuple<int32_t, int32_t, int32_t>> all;
    for (const Routes& r : kRoutes) {
      for (const int32_t s : r.sources) {
        for (const int32_t d : r.destinations) all.insert({r.standard, s, d});
      }
    }
    return all;
  }();
  return routes.count({standard, src, dst}) != 0;
}

// Plane 0 of the two images, and all that the dispatcher decides by.
struct Call {
  int32_t src;
  int32_t dst;
  int32_t src_width = 16;
  int32_t src_height = 16;
  int32_t dst_width = 16;
  int32_t dst_height = 16;
  int32_t src_std = 0;
  int32_t dst_std = 0;
};

struct Answer {
  int32_t status;
  bool writes;
};
constexpr Answer kArg{VEXO_ERR_ARG, false};
constexpr Answer kUnsupported{VEXO_ERR_UNSUPPORTED, false};
constexpr Answer kIdle{VEXO_OK, false};

Answer by_route(int32_t standard, const Call& c) {
  return has_route(standard, c.src, c.dst) ? Answer{VEXO_OK, true}
                                           : kUnsupported;
}

bool too_small(const Call& c) {
  return c.src_width < 8 || c.src_height < 8 || c.dst_width < 8 ||
         c.dst_height < 8;
}

Answer bt601_full(const Call& c) {
  if (c.src == c.dst) return kArg;
  if (too_small(c)) return kUnsupported;
  return by_route(VEXO_STD_BT601_FULL, c);
}

Answer bt709(const Call& c) {
  if (c.src == c.dst) return kArg;
  if (c.src_width != c.dst_width || c.src_height != c.dst_height) return kArg;
  if (too_small(c)) return kUnsupported;
  if (c.src == VEXO_FMT_YUV420) {
    return c.dst == VEXO_FMT_RGBA8888 ? by_route(VEXO_STD_BT709, c) : kIdle;
  }
  if (c.src == VEXO_FMT_RGBA8888) {
    return c.dst == VEXO_FMT_NV12 || c.dst == VEXO_FMT_NV21
               ? by_route(VEXO_STD_BT709, c)
               : kIdle;
  }
  return kUnsupported;
}

Answer bt709_full(const Call& c) {
  if (c.src == c.dst) return kArg;
  if (too_small(c) || c.src != VEXO_FMT_YUV420) return kUnsupported;
  return c.dst == VEXO_FMT_RGBA8888 ? by_route(VEXO_STD_BT709_FULL, c) : kIdle;
}

Answer csc(const Call& c) {
  if (c.src == c.dst) return kArg;
  if (too_small(c)) return kUnsupported;
  const auto yuv = [](int32_t f) { return f < 200; };
  const auto rgb = [](int32_t f) { return f >= 200 && f <= 599; };
  const bool crosses = (yuv(c.src) && rgb(c.dst)) || (rgb(c.src) && yuv(c.dst));
  if (c.src_std == 0 || c.dst_std == 0 || !crosses) return by_route(0, c);
  if (c.src_std != c.dst_std) return kUnsupported;
  switch (c.src_std) {
    case 1:
      return bt601_full(c);
    case 10:
      return bt709(c);
    case 11:
      return bt709_full(c);
    default:
      return kUnsupported;
  }
}

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

  void check(int32_t (*entry)(const vexo_img*, const vexo_img*),
             Answer (*model)(const Call&), const Call& c) {
    vexo_img src = src_.img;
    vexo_img dst = dst_.img;
    src.format = c.src;
    src.width[0] = c.src_width;
    src.height[0] = c.src_height;
    src.color_std = c.src_std;
    dst.format = c.dst;
    dst.width[0] = c.dst_width;
    dst.height[0] = c.dst_height;
    dst.color_std = c.dst_std;
    const Answer answer = model(c);
    const auto label = [&c] {
      return testing::Message()
             << c.src << " to " << c.dst << ", " << c.src_width << "x"
             << c.src_height << " to " << c.dst_width << "x" << c.dst_height
             << ", standards " << c.src_std << " " << c.dst_std;
    };
    ASSERT_EQ(entry(&src, &dst), answer.status) << label();
    if (answer.writes) {
      ASSERT_FALSE(holds(dst_, blank_)) << "nothing written: " << label();
      for (int p = 0; p < 4; ++p)
        dst_.buffer[p].reset(kStride * 17, Edge::kEnd);
    } else {
      ASSERT_TRUE(holds(dst_, blank_)) << label();
    }
  }

  TestImage src_{0};
  TestImage dst_{0};
  TestImage::Contents blank_;
};

TEST_F(CscDispatch, EveryPairOfFormats) {
  for (int32_t src = -3; src <= 610; ++src) {
    for (int32_t dst = -3; dst <= 610; ++dst) {
      ASSERT_NO_FATAL_FAILURE(check(vexo_csc, csc, {src, dst}));
    }
  }
  for (const int32_t code : {INT32_MIN, INT32_MAX, 257, 65536, 65537}) {
    for (const int32_t other : {1, 6, 500, 0, 101}) {
      ASSERT_NO_FATAL_FAILURE(check(vexo_csc, csc, {code, other}));
      ASSERT_NO_FATAL_FAILURE(check(vexo_csc, csc, {other, code}));
    }
  }
}

// Formats of every kind, and codes at the borders of the kinds.
constexpr int32_t kFormats[] = {0,   1,   2,   4,   6,   7,   8,   9,   11, 100,
                                101, 199, 200, 400, 500, 501, 599, 600, 601};
constexpr int32_t kStandards[] = {-1, 0, 1, 2, 9, 10, 11, 12, 257, 266};

TEST_F(CscDispatch, StandardsOfEveryPair) {
  for (const int32_t src : kFormats) {
    for (const int32_t dst : kFormats) {
      for (const int32_t src_std : kStandards) {
        for (const int32_t dst_std : kStandards) {
          ASSERT_NO_FATAL_FAILURE(check(
              vexo_csc, csc, {src, dst, 16, 16, 16, 16, src_std, dst_std}));
        }
      }
    }
  }
}

TEST_F(CscDispatch, SizesComeAfterFormatsAndBeforeStandards) {
  constexpr int32_t kPairs[][2] = {{1, 1},   {500, 500}, {9, 9},   {1, 500},
                                   {1, 200}, {6, 500},   {500, 6}, {500, 1},
                                   {1, 4},   {101, 1},   {4, 1},   {200, 500}};
  constexpr int32_t kSides[] = {INT32_MIN, -16, 0, 7, 8, 16};
  const struct {
    int32_t (*entry)(const vexo_img*, const vexo_img*);
    Answer (*model)(const Call&);
  } kEntries[] = {{vexo_csc, csc},
                  {vexo_csc_bt601_fr, bt601_full},
                  {vexo_csc_bt709, bt709},
                  {vexo_csc_bt709_fr, bt709_full}};
  for (const auto& e : kEntries) {
    for (const auto& pair : kPairs) {
      for (const int32_t sw : kSides) {
        for (const int32_t sh : kSides) {
          for (const int32_t dw : kSides) {
            for (const int32_t dh : kSides) {
              // A sibling called directly does not look at the standards.
              for (const int32_t standard : {0, 1, 10, 11}) {
                ASSERT_NO_FATAL_FAILURE(check(
                    e.entry, e.model,
                    {pair[0], pair[1], sw, sh, dw, dh, standard, standard}));
              }
            }
          }
        }
      }
    }
  }
}

TEST_F(CscDispatch, SiblingsAnswerEveryPair) {
  for (int32_t src = 0; src <= 610; ++src) {
    for (const int32_t dst : kFormats) {
      const Call call{src, dst};
      ASSERT_NO_FATAL_FAILURE(check(vexo_csc_bt601_fr, bt601_full, call));
      ASSERT_NO_FATAL_FAILURE(check(vexo_csc_bt709, bt709, call));
      ASSERT_NO_FATAL_FAILURE(check(vexo_csc_bt709_fr, bt709_full, call));
      const Call back{dst, src};
      ASSERT_NO_FATAL_FAILURE(check(vexo_csc_bt601_fr, bt601_full, back));
      ASSERT_NO_FATAL_FAILURE(check(vexo_csc_bt709, bt709, back));
      ASSERT_NO_FATAL_FAILURE(check(vexo_csc_bt709_fr, bt709_full, back));
    }
  }
}

// The cases a reader would look up, with their answers written out.
TEST_F(CscDispatch, WorkedExamples) {
  const struct {
    Call call;
    Answer answer;
  } kCases[] = {
      {{1, 1, 8, 0, 8, 0}, kArg},
      {{6, 500, 7, 16, 16, 16}, kUnsupported},
      {{6, 500, 16, 16, 16, 7}, kUnsupported},
      {{6, 500, 16, 16, 16, 16, 1, 0}, {VEXO_OK, true}},
      {{6, 500, 16, 16, 16, 16, 0, 10}, {VEXO_OK, true}},
      {{1, 500, 16, 16, 16, 16, 1, 10}, kUnsupported},
      {{1, 4, 16, 16, 16, 16, 10, 10}, {VEXO_OK, true}},
      {{1, 200, 16, 16, 16, 16, 10, 10}, kIdle},
      {{1, 200, 16, 16, 16, 16, 11, 11}, kIdle},
      {{1, 200, 16, 16, 16, 16, 1, 1}, kUnsupported},
      {{1, 200, 16, 16, 8, 16, 10, 10}, kArg},
      {{1, 200, 16, 16, 16, 8, 10, 10}, kArg},
      {{1, 200, 16, 16, 8, 8, 11, 11}, kIdle},
      {{1, 200, 16, 16, 7, 16, 10, 10}, kUnsupported},
      {{500, 1, 16, 16, 16, 16, 10, 10}, kIdle},
      {{4, 1}, kUnsupported},
      {{500, 501}, kUnsupported},
  };
  for (const auto& c : kCases) {
    const Answer said = csc(c.call);
    EXPECT_EQ(said.status, c.answer.status) << c.call.src;
    EXPECT_EQ(said.writes, c.answer.writes) << c.call.src;
    ASSERT_NO_FATAL_FAILURE(check(vexo_csc, csc, c.call));
  }
}

// A source of another size than the destination is converted whole, at its own
// size.
TEST_F(CscDispatch, TheSourceDecidesTheSize) {
  constexpr int32_t kSize = 16;
  TestImage small(VEXO_FMT_RGB888);
  small.set_plane(0, 8, 8, kStride, plane_size(kSize * 3, kSize, kStride));
  TestImage whole(VEXO_FMT_RGB888);
  whole.set_plane(0, kSize, kSize, kStride,
                  plane_size(kSize * 3, kSize, kStride));
  src_.img.format = VEXO_FMT_YUV444;
  ASSERT_EQ(vexo_csc(&src_.img, &small.img), VEXO_OK);
  ASSERT_EQ(vexo_csc(&src_.img, &whole.img), VEXO_OK);
  EXPECT_TRUE(holds(small, whole.contents()));
}

}  // namespace
}  // namespace lox_test
