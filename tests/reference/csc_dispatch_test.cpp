// SPDX-License-Identifier: Apache-2.0
// The answers of vexo_csc and of its siblings for the other colour standards:
// every pair of formats, the order of the checks, that a call that has no work
// writes nothing, and that one that has writes what the pair's kernel does. The
// kernels have tests of their own.
#include <orumlox/csc.h>

#include <cstdint>
#include <map>
#include <tuple>

#include "csc_model.h"
#include "support/image.h"

namespace lox_test {
namespace {

// Two pairs have no kernel of their own. One does as its opposite, the other
// exchanges planes; all strides here are equal.
constexpr auto* nv12_to_nv21 = vexo_csc_nv21_to_nv12;
void yuv420_to_yv12(uint8_t* const* src, const int32_t* width,
                    const int32_t* height, const int32_t*,
                    const int32_t* stride, uint8_t* const* dst) {
  constexpr int kOther[3] = {0, 2, 1};
  for (int p = 0; p < 3; ++p) {
    copy_rows(src[p], *stride, width[p], height[p], *stride, dst[kOther[p]]);
  }
}

// The kernel of a standard from one format to another, null without a route.
vexo_csc_kernel* route(int32_t standard, int32_t src, int32_t dst) {
  static const auto kernels = [] {
    std::map<std::tuple<int32_t, int32_t, int32_t>, vexo_csc_kernel*> all;
    const auto add_sources = [&](const auto& table) {
      for (const Source& s : table) {
        for (int n = 0; n < kDestinations; ++n) {
          all[{s.standard, s.format, kDestinationTable[n].format}] =
              s.kernel[n];
        }
      }
    };
    const auto add_routes = [&](const auto& table) {
      for (const Route& r : table) all[{r.standard, r.src, r.dst}] = r.kernel;
    };
    add_sources(kSourceTable);
    add_sources(kStandardTable);
    add_routes(kRgbRoutes);
    add_routes(kLayoutRoutes);
    add_routes(kTileRoutes);
    add_routes(kOtherRoutes);
    all[{0, VEXO_FMT_NV12, VEXO_FMT_NV21}] = nv12_to_nv21;
    all[{0, VEXO_FMT_YUV420, VEXO_FMT_YV12}] = yuv420_to_yv12;
    return all;
  }();
  const auto found = kernels.find({standard, src, dst});
  return found == kernels.end() ? nullptr : found->second;
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
  vexo_csc_kernel* kernel = nullptr;
};
constexpr Answer kArg{VEXO_ERR_ARG};
constexpr Answer kUnsupported{VEXO_ERR_UNSUPPORTED};

// A pair with a route is converted by it, any other refused.
Answer routed(vexo_csc_kernel* kernel) {
  return kernel == nullptr ? kUnsupported : Answer{VEXO_OK, kernel};
}

Answer bt601_full(const Call& c) {
  if (c.src == c.dst) return kArg;
  if (c.too_small()) return kUnsupported;
  return routed(route(VEXO_STD_BT601_FULL, c.src, c.dst));
}

// Success without a kernel where there is none.
Answer bt709(const Call& c) {
  if (c.src == c.dst) return kArg;
  if (c.src_width != c.dst_width || c.src_height != c.dst_height) return kArg;
  if (c.too_small() || (c.src != 1 && c.src != 500)) return kUnsupported;
  return {VEXO_OK, route(VEXO_STD_BT709, c.src, c.dst)};
}

// Converts as BT.601 does.
Answer bt709_full(const Call& c) {
  if (c.src == c.dst) return kArg;
  if (c.too_small() || c.src != 1) return kUnsupported;
  return {VEXO_OK,
          c.dst == 500 ? vexo_csc_bt601_fr_yuv420_to_rgba8888 : nullptr};
}

Answer csc(const Call& c) {
  if (c.src == c.dst) return kArg;
  if (c.too_small()) return kUnsupported;
  const auto yuv = [](int32_t f) { return f < 200; };
  const auto rgb = [](int32_t f) { return f >= 200 && f <= 599; };
  const bool crosses = (yuv(c.src) && rgb(c.dst)) || (rgb(c.src) && yuv(c.dst));
  if (c.src_std == 0 || c.dst_std == 0 || !crosses) {
    if (c.src == VEXO_FMT_T256X16 && c.src_width <= 1280) return kUnsupported;
    return routed(route(VEXO_STD_DEFAULT, c.src, c.dst));
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
  // Planes with room for every format up to 16 by 16.
  CscDispatch() { make_room(72, 17); }

  void make_room(int32_t stride, int32_t rows) {
    for (int p = 0; p < 4; ++p) {
      const int32_t side = p == 0 ? 16 : 8;
      src_.set_plane(p, side, side, stride, size_t{1} * stride * rows);
      dst_.set_plane(p, side, side, stride, size_t{1} * stride * rows);
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
    TestImage::Contents converted;
    if (answer.kernel != nullptr) {
      converted = blank_;
      uint8_t* const plane[4] = {converted[0].data(), converted[1].data(),
                                 converted[2].data(), converted[3].data()};
      answer.kernel(src.plane, src.width, src.height, src.stride, dst.stride,
                    plane);
      ASSERT_NE(converted, blank_);
    }
    const auto written =
        holds(dst_, answer.kernel != nullptr ? converted : blank_);
    ASSERT_TRUE(status == answer.status && written)
        << c.src << " to " << c.dst << ", standards " << c.src_std << " "
        << c.dst_std << ": " << status << " " << written.message();
    for (GuardedBuffer& b : dst_.buffer) {
      if (answer.kernel != nullptr) b.reset(b.size());
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
  for (int32_t src = -1; src <= 700; ++src) {
    for (int32_t dst = -1; dst <= 700; ++dst) {
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

TEST_F(CscDispatch, TilesOf256By16AreForPicturesWiderThan1280) {
  make_room(1284 * 4, 16);
  for (const int32_t width : {1279, 1280, 1281, 1284}) {
    for (const int32_t dst : {500, 501, 6}) {
      ASSERT_NO_FATAL_FAILURE(check(kCsc, {14, dst, 0, 0, width}));
    }
  }
}

}  // namespace
}  // namespace lox_test
