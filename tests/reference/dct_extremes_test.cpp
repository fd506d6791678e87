// SPDX-License-Identifier: Apache-2.0
// The DCT scaler on the samples that drive its inverse furthest: every level
// must hold its largest numbers as the portable form does.
#include <gtest/gtest.h>
#include <orumlox/dct.h>

#include <cmath>
#include <cstdint>
#include <vector>

#include "common/isa.h"

namespace lox_test {
namespace {

double basis(int u, int i, int points) {
  return std::cos((2 * i + 1) * 3.14159265358979323846 * u / (2 * points)) *
         (u == 0 ? std::sqrt(0.5) : 1);
}

// Black or white so that the j-th result of row u of the inverse's first
// direction becomes as large as it can.
void fill_extreme(uint8_t *data, int width, int height, int u, int j) {
  constexpr double kInverse[4][4] = {{128, 128, 128, 53},
                                     {128, 53, -128, -128},
                                     {128, -53, -128, 128},
                                     {128, -128, 128, -53}};
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      double across = 0;
      for (int v = 0; v < 4; ++v) {
        across += kInverse[j % 4][v] * basis(v, x, width) *
                  (v % 2 == 0 ? 0.25 : 0.3162);
      }
      const bool white = (basis(u, y, height) * across > 0) == (j < 4);
      data[y * width + x] = white ? 255 : 0;
    }
  }
}

// One block makes the luma, and a small one the chroma.
TEST(DctExtremes, AreThoseOfThePortableForm) {
  uint8_t chroma[16] = {};
  uint8_t got[2][16];
  for (const int width :
       {4, 5, 6, 7, 8, 9, 11, 16, 33, 64, 127, 129, 513, 1024}) {
    for (const int height : {4, 5, 6, 8, 12, 16, 63, 129, 245, 1024}) {
      std::vector<uint8_t> luma(size_t{1} * width * height);
      vexo_img pair[2] = {};
      for (vexo_img &img : pair) {
        img.format = VEXO_FMT_NV12;
        img.width[0] = img.stride[0] = &img == pair ? width : 4;
        img.height[0] = img.buf_height[0] = &img == pair ? height : 4;
        img.width[1] = img.height[1] = img.buf_height[1] = 2;
        img.stride[1] = 4;
        img.plane[1] = chroma + (&img == pair ? 0 : 8);
      }
      pair[0].plane[0] = luma.data();
      vexo_rsz_new_context context;
      vexo_shift_set a;
      vexo_shift_set b;
      ASSERT_EQ(vexo_rsz_new_init(pair, &context, &a, &b, 0), VEXO_OK);
      for (int i = 0; i < 32; ++i) {
        fill_extreme(luma.data(), width, height, i / 8, i % 8);
        for (int level = 0; level <= lox::isa_best(); ++level) {
          lox::isa_limit(level);
          pair[1].plane[0] = got[level == 0 ? 0 : 1];
          vexo_rsz_new(&pair[0], &pair[1], &context, a, b);
          ASSERT_TRUE(level == 0 || std::equal(got[0], got[0] + 16, got[1]))
              << lox::isa_name(level) << ", " << width << "x" << height
              << ", extreme " << i;
        }
      }
      vexo_rsz_new_deinit(pair, &context, a, b);
    }
  }
}

}  // namespace
}  // namespace lox_test
