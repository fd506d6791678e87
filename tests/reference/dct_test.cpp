// SPDX-License-Identifier: Apache-2.0
// Scaling of pictures that the cases do not have: large ones, every block, the
// smallest, flat ones and slopes.
#include <gtest/gtest.h>
#include <orumlox/dct.h>

#include <cstdint>
#include <cstdlib>
#include <vector>

#include "rules/rules.h"

namespace lox_test {
namespace {

// NV12 to a picture of 4:2:0, both in memory of their own, and the plan.
struct Scaling {
  Scaling(int32_t width, int32_t height, int32_t to_width, int32_t to_height,
          int32_t factor, int32_t to_format, int32_t chroma_stride = 0) {
    const int32_t sizes[2][2] = {{width, height}, {to_width, to_height}};
    for (int i = 0; i < 2; ++i) {
      vexo_img &img = pair[i];
      img.format = i == 0 ? 6 : to_format;
      img.color_std = 2;
      for (int p = 0; p < 3; ++p) {
        const int32_t part = p == 0 ? 1 : 2;
        img.width[p] = sizes[i][0] / part;
        img.height[p] = img.buf_height[p] = sizes[i][1] / part;
        img.stride[p] = p == 0 ? img.width[0] : 2 * img.width[p];
        if (i == 0 && p == 1 && chroma_stride > 0)
          img.stride[1] = chroma_stride;
        bytes[i][p].assign(size_t{1} * img.stride[p] * img.height[p], 77);
        img.plane[p] = bytes[i][p].data();
      }
    }
    vexo_rsz_new_init(pair, &context, &a, &b, factor);
  }
  ~Scaling() { vexo_rsz_new_deinit(pair, &context, a, b); }
  // As near the rule as it should, or the program ends.
  void run() {
    by_rule(find(dct_family, "vexo_rsz_new"))
        .as<decltype(vexo_rsz_new)>()(&pair[0], &pair[1], &context, a, b);
  }

  std::vector<uint8_t> bytes[2][3];
  vexo_img pair[2] = {};
  vexo_rsz_new_context context;
  vexo_shift_set a, b;
};

TEST(Dct, LargeRatiosAndPictures) {
  constexpr int32_t kSizes[][6] = {
      {520, 525, 4, 4, 0, 6},    {1043, 530, 8, 4, 0, 1},
      {2100, 1056, 4, 8, 4, 6},  {640, 480, 160, 120, 0, 6},
      {643, 487, 102, 58, 2, 1}, {1920, 1080, 160, 90, 4, 6},
      {301, 243, 42, 23, 4, 7}};
  Random random(1);
  for (const auto &k : kSizes) {
    Scaling s(k[0], k[1], k[2], k[3], k[4], k[5]);
    for (auto &plane : s.bytes[0]) random.fill(plane.data(), plane.size());
    s.run();
  }
}

// Every size of block, alone.
TEST(Dct, FlatStaysFlatEveryValue) {
  for (int32_t width = 4; width <= 64; ++width) {
    for (int32_t height = 4; height <= 64; ++height) {
      Scaling s(width, height, 4, 4, 0, 6);
      for (const int32_t level : {0, 128, 235, 255}) {
        for (uint8_t &sample : s.bytes[0][0])
          sample = static_cast<uint8_t>(level);
        vexo_rsz_new(&s.pair[0], &s.pair[1], &s.context, s.a, s.b);
        for (const uint8_t is : s.bytes[1][0]) {
          ASSERT_LE(std::abs(is - level), 1) << width << "x" << height;
        }
      }
    }
  }
}

TEST(Dct, SmallestSources) {
  const struct {
    int32_t factor, width, height, chroma_stride;
    bool luma, chroma;  // whether it is scaled
  } kCases[] = {{0, 1, 1, 2, true, false},  {0, 2, 2, 2, true, true},
                {2, 4, 2, 4, true, false},  {2, 3, 2, 4, false, false},
                {2, 4, 1, 4, false, false}, {2, 4, 4, 4, true, true},
                {2, 4, 4, 3, true, false},  {2, 4, 3, 4, true, false},
                {4, 4, 4, 8, true, false},  {4, 3, 8, 8, false, false},
                {4, 4, 3, 8, false, false}, {4, 4, 8, 8, true, true},
                {4, 4, 8, 7, true, false},  {4, 4, 7, 8, true, false}};
  for (const auto &k : kCases) {
    Scaling s(k.width, k.height, 4, 4, k.factor, 6, k.chroma_stride);
    for (auto &plane : s.bytes[0]) plane.assign(plane.size(), 99);
    s.run();
    EXPECT_EQ(s.bytes[1][0][0] != 77, k.luma) << k.factor << ", " << k.width;
    EXPECT_EQ(s.bytes[1][1][0] != 77, k.chroma) << k.factor << ", " << k.width;
  }
}

// A slope stays within half a sample of its place, though blocks are not all of
// one size. With a factor of 4 it lies half a row lower, and chroma is off as
// much as its grouped pairs make it.
TEST(Dct, SlopesStayInPlace) {
  const struct {
    int32_t plane, from, to, factor, rise;
    double across, down;  // how far off, in samples of the source
  } kSlopes[] = {{0, 62, 32, 0, 4, 0.5, 0.5},   {0, 63, 40, 0, 4, 0.5, 0.5},
                 {0, 58, 24, 0, 4, 0.5, 0.5},   {1, 124, 64, 0, 4, 0.5, 0.5},
                 {1, 160, 32, 2, 3, 0.5, 0.5},  {1, 160, 32, 4, 3, 0.9, 0.75},
                 {1, 192, 32, 4, 2, 0.8, 0.75}, {0, 160, 32, 4, 1, 0.5, 0.75}};
  for (const auto &k : kSlopes) {
    for (const bool down : {false, true}) {
      Scaling s(k.from, k.from, k.to, k.to, k.factor, 1);
      const vexo_img &src = s.pair[0], &dst = s.pair[1];
      const int32_t p = k.plane;
      for (int32_t i = 0; i < src.stride[p] * src.height[p]; ++i) {
        const int32_t x = i % src.stride[p] / (p + 1);
        src.plane[p][i] =
            static_cast<uint8_t>(k.rise * (down ? i / src.stride[p] : x));
      }
      s.run();
      for (int32_t i = 0; i < dst.width[p]; ++i) {
        const double place = (i + 0.5) * src.width[p] / dst.width[p] - 0.5;
        ASSERT_NEAR(dst.plane[p][i * (down ? dst.stride[p] : 1)],
                    k.rise * place, k.rise * (down ? k.down : k.across) + 1)
            << k.from << ", plane " << p << (down ? ", row " : ", column ")
            << i;
      }
    }
  }
}

}  // namespace
}  // namespace lox_test
