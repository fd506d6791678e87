// SPDX-License-Identifier: Apache-2.0
// The answers of vexo_csc and of its siblings for the other colour standards:
// every pair of formats, the order of the checks, that a call that has no work
// writes nothing, and that one that has writes what the pair's kernel does. The
// kernels have tests of their own.
#include <orumlox/csc.h>

#include <cstdint>
#include <map>
#include <utility>

#include "csc_model.h"
#include "support/image.h"

namespace lox_test {
namespace {

// Two pairs have no kernel of their own. One does as its opposite, the other
// exchanges planes; all strides here are equal.
constexpr auto *nv12_to_nv21 = vexo_csc_nv21_to_nv12;
void yuv420_to_yv12(uint8_t *const *src, const int32_t *width,
                    const int32_t *height, const int32_t *,
                    const int32_t *stride, uint8_t *const *dst) {
  constexpr int kOther[3] = {0, 2, 1};
  for (int p = 0; p < 3; ++p) {
    copy_rows(src[p], *stride, width[p], height[p], *stride, dst[kOther[p]]);
  }
}

// The route of vexo_csc without a standard, null where there is none.
vexo_csc_kernel *route(int32_t src, int32_t dst) {
  static const auto kernels = [] {
    std::map<std::pair<int32_t, int32_t>, vexo_csc_kernel *> all;
    for (const Conversion &c : all_conversions()) {
      if (c.standard == VEXO_STD_DEFAULT) all[{c.src, c.dst}] = c.kernel;
    }
    all[{VEXO_FMT_NV12, VEXO_FMT_NV21}] = nv12_to_nv21;
    all[{VEXO_FMT_YUV420, VEXO_FMT_YV12}] = yuv420_to_yv12;
    // Of pictures wider than 1280 alone.
    all.erase({VEXO_FMT_T256X16, VEXO_FMT_RGBA8888});
    return all;
  }();
  const auto found = kernels.find({src, dst});
  return found == kernels.end() ? nullptr : found->second;
}

using Entry = int32_t(const vexo_img *, const vexo_img *);
struct Sides {
  int32_t src_width = 16, src_height = 16, dst_width = 16, dst_height = 16;
};
// A call, its status, and the kernel that does what it does; without one
// nothing is written.
struct Case {
  int32_t src, dst, src_std, dst_std;
  int32_t status;
  vexo_csc_kernel *kernel = nullptr;
  Entry *entry = vexo_csc;
  Sides sides = {};
};

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

  void check(const Case &c) {
    vexo_img &src = src_.img;
    src.format = c.src;
    src.width[0] = c.sides.src_width;
    src.height[0] = c.sides.src_height;
    src.color_std = c.src_std;
    vexo_img &dst = dst_.img;
    dst.format = c.dst;
    dst.width[0] = c.sides.dst_width;
    dst.height[0] = c.sides.dst_height;
    dst.color_std = c.dst_std;
    const int32_t status = c.entry(&src, &dst);
    TestImage::Contents converted;
    if (c.kernel != nullptr) {
      converted = blank_;
      uint8_t *const plane[4] = {converted[0].data(), converted[1].data(),
                                 converted[2].data(), converted[3].data()};
      c.kernel(src.plane, src.width, src.height, src.stride, dst.stride, plane);
      ASSERT_NE(converted, blank_);
    }
    const auto written = holds(dst_, c.kernel != nullptr ? converted : blank_);
    ASSERT_TRUE(status == c.status && written)
        << c.src << " to " << c.dst << ", standards " << c.src_std << " "
        << c.dst_std << ", " << c.sides.src_width << "x" << c.sides.src_height
        << " to " << c.sides.dst_width << "x" << c.sides.dst_height << ": "
        << status << " " << written.message();
    for (GuardedBuffer &b : dst_.buffer) {
      if (c.kernel != nullptr) b.reset(b.size());
    }
  }
  // Without standards.
  void check_pair(int32_t src, int32_t dst, int32_t src_std = 0,
                  int32_t dst_std = 0) {
    vexo_csc_kernel *kernel = route(src, dst);
    check({src, dst, src_std, dst_std,
           src == dst          ? VEXO_ERR_ARG
           : kernel != nullptr ? VEXO_OK
                               : VEXO_ERR_UNSUPPORTED,
           kernel});
  }

  TestImage src_{0};
  TestImage dst_{0};
  TestImage::Contents blank_;
};

TEST_F(CscDispatch, EveryPairOfFormats) {
  for (int32_t src = -1; src <= 700; ++src) {
    for (int32_t dst = -1; dst <= 700; ++dst) {
      ASSERT_NO_FATAL_FAILURE(check_pair(src, dst));
    }
  }
  for (const int32_t code : {INT32_MIN, INT32_MAX, 257, 65536, 65537}) {
    for (const int32_t other : {0, 1, 6, 11, 101, 500, 601}) {
      ASSERT_NO_FATAL_FAILURE(check_pair(code, other));
      ASSERT_NO_FATAL_FAILURE(check_pair(other, code));
    }
  }
}

constexpr int32_t kOk = VEXO_OK;
constexpr int32_t kArg = VEXO_ERR_ARG;
constexpr int32_t kNot = VEXO_ERR_UNSUPPORTED;

// What each standard does with pairs of YUV and RGB; codes at the borders of
// the two. The siblings do the same, but for sizes, called by themselves.
TEST_F(CscDispatch, PairsByStandard) {
  const Case cases[] = {
      {1, 500, 1, 1, kOk, vexo_csc_bt601_fr_yuv420_to_rgba8888},
      {6, 500, 1, 1, kOk, vexo_csc_bt601_fr_nv12_to_rgba8888},
      {7, 500, 1, 1, kOk, vexo_csc_bt601_fr_nv21_to_rgba8888},
      {500, 1, 1, 1, kOk, vexo_csc_bt601_fr_rgba8888_to_yuv420},
      {500, 4, 1, 1, kOk, vexo_csc_bt601_fr_rgba8888_to_yv12},
      {500, 6, 1, 1, kOk, vexo_csc_bt601_fr_rgba8888_to_nv12},
      {500, 7, 1, 1, kOk, vexo_csc_bt601_fr_rgba8888_to_nv21},
      {1, 200, 1, 1, kNot},
      {4, 500, 1, 1, kNot},
      {500, 3, 1, 1, kNot},
      {501, 6, 1, 1, kNot},
      {1, 501, 1, 1, kNot},
      // Success without work where there is no route.
      {1, 500, 10, 10, kOk, vexo_csc_bt709_yuv420_to_rgba8888},
      {500, 6, 10, 10, kOk, vexo_csc_bt709_rgba8888_to_nv12},
      {500, 7, 10, 10, kOk, vexo_csc_bt709_rgba8888_to_nv21},
      {1, 200, 10, 10, kOk},
      {1, 599, 10, 10, kOk},
      {500, 1, 10, 10, kOk},
      {500, 199, 10, 10, kOk},
      {500, -1, 10, 10, kOk},
      {6, 500, 10, 10, kNot},
      {501, 6, 10, 10, kNot},
      {199, 500, 10, 10, kNot},
      // As BT.601, and without work to others.
      {1, 500, 11, 11, kOk, vexo_csc_bt601_fr_yuv420_to_rgba8888},
      {1, 200, 11, 11, kOk},
      {1, 599, 11, 11, kOk},
      {6, 500, 11, 11, kNot},
      {500, 1, 11, 11, kNot},
      {500, 6, 11, 11, kNot},
  };
  for (Case c : cases) {
    ASSERT_NO_FATAL_FAILURE(check(c));
    c.entry = c.src_std == 1    ? vexo_csc_bt601_fr
              : c.src_std == 10 ? vexo_csc_bt709
                                : vexo_csc_bt709_fr;
    // Which does not look at the standards.
    c.src_std = 12;
    ASSERT_NO_FATAL_FAILURE(check(c));
  }
}

TEST_F(CscDispatch, StandardsThatDoNotCountOrAreNone) {
  constexpr int32_t kPairs[][2] = {{1, 500}, {6, 500}, {500, 7},
                                   {1, 400}, {400, 1}, {1, 599}};
  constexpr int32_t kUnequal[][2] = {
      {1, 10},  {10, 1},  {10, 11}, {11, 1},  {2, 2},     {9, 9},
      {12, 12}, {-1, -1}, {257, 1}, {1, 257}, {257, 257}, {266, 266}};
  for (const auto &pair : kPairs) {
    for (const auto &std : kUnequal) {
      ASSERT_NO_FATAL_FAILURE(check({pair[0], pair[1], std[0], std[1], kNot}));
    }
    // One of them is none.
    for (const int32_t std : {-1, 0, 1, 2, 10, 11, 257}) {
      ASSERT_NO_FATAL_FAILURE(check_pair(pair[0], pair[1], std, 0));
      ASSERT_NO_FATAL_FAILURE(check_pair(pair[0], pair[1], 0, std));
    }
  }
  // Both sides are YUV or RGB, or one has a code of 600 or above.
  constexpr int32_t kAlike[][2] = {{1, 6},     {6, 1},     {101, 1},   {4, 1},
                                   {500, 200}, {200, 500}, {500, 501}, {600, 1},
                                   {601, 500}, {1, 600},   {500, 600}, {1, 1}};
  for (const auto &pair : kAlike) {
    for (const int32_t std : {1, 2, 10, 11}) {
      ASSERT_NO_FATAL_FAILURE(check_pair(pair[0], pair[1], std, std));
      ASSERT_NO_FATAL_FAILURE(check_pair(pair[0], pair[1], std, 21 - std));
    }
  }
}

// Equal formats come before sizes, and sizes before standards and routes. The
// second sibling compares sizes first; its call succeeds without work else.
TEST_F(CscDispatch, SizesThatAreTooSmall) {
  constexpr Entry *kEntries[] = {vexo_csc, vexo_csc_bt601_fr, vexo_csc_bt709,
                                 vexo_csc_bt709_fr};
  for (const int32_t side : {INT32_MIN, -1, 0, 7}) {
    const Sides kSides[] = {{side, 16, 16, 16},      {16, side, 16, 16},
                            {16, 16, side, 16},      {16, 16, 16, side},
                            {side, 16, side, 16},    {16, side, 16, side},
                            {side, side, side, side}};
    for (Entry *entry : kEntries) {
      for (const Sides &s : kSides) {
        const bool unequal =
            s.src_width != s.dst_width || s.src_height != s.dst_height;
        const int32_t status = entry == vexo_csc_bt709 && unequal ? kArg : kNot;
        for (const int32_t std : {0, 1, 2, 10, 11}) {
          for (const auto &[src, dst] :
               {std::pair{1, 500}, {1, 200}, {500, 6}, {9, 500}, {6, 1}}) {
            ASSERT_NO_FATAL_FAILURE(
                check({src, dst, std, std, status, nullptr, entry, s}));
          }
          ASSERT_NO_FATAL_FAILURE(
              check({1, 1, std, std, kArg, nullptr, entry, s}));
        }
      }
    }
  }
  // 8 is enough, and the destination may have another size.
  const Case served[] = {
      {1, 500, 0, 0, kOk, vexo_csc_yuv420_to_rgba8888, vexo_csc, {8, 8, 8, 8}},
      {1,
       500,
       0,
       0,
       kOk,
       vexo_csc_yuv420_to_rgba8888,
       vexo_csc,
       {16, 8, 8, 16}},
      {1,
       500,
       1,
       1,
       kOk,
       vexo_csc_bt601_fr_yuv420_to_rgba8888,
       vexo_csc,
       {8, 16, 16, 8}},
      {1,
       500,
       10,
       10,
       kOk,
       vexo_csc_bt709_yuv420_to_rgba8888,
       vexo_csc,
       {8, 8, 8, 8}},
      {1, 500, 10, 10, kArg, nullptr, vexo_csc, {16, 8, 8, 8}},
      {1, 500, 10, 10, kArg, nullptr, vexo_csc, {8, 8, 8, 16}},
      {9, 500, 10, 10, kArg, nullptr, vexo_csc, {8, 8, 8, 16}},
      {1, 200, 11, 11, kOk, nullptr, vexo_csc, {8, 8, 16, 8}}};
  for (const Case &c : served) ASSERT_NO_FATAL_FAILURE(check(c));
}

TEST_F(CscDispatch, TilesOf256By16AreForPicturesWiderThan1280) {
  make_room(1284 * 4, 16);
  auto *const kernel = vexo_csc_t256x16_to_rgba8888;
  const auto of = [](int32_t width) { return Sides{width, 16, 16, 16}; };
  for (const int32_t width : {1279, 1280}) {
    ASSERT_NO_FATAL_FAILURE(
        check({14, 500, 0, 0, kNot, nullptr, vexo_csc, of(width)}));
  }
  for (const int32_t width : {1281, 1284}) {
    ASSERT_NO_FATAL_FAILURE(
        check({14, 500, 0, 0, kOk, kernel, vexo_csc, of(width)}));
    ASSERT_NO_FATAL_FAILURE(
        check({14, 501, 0, 0, kNot, nullptr, vexo_csc, of(width)}));
  }
}

}  // namespace
}  // namespace lox_test
