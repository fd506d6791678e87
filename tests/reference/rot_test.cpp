// SPDX-License-Identifier: Apache-2.0
// The tables of turns, and scaling's values worked out by hand; a heap without
// scratch memory.
#include <gtest/gtest.h>
#include <orumlox/orumlox.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

// The linker leads the library's calls of malloc here.
static bool heap_refuses = false;
extern "C" void *__real_malloc(size_t size);
extern "C" void *__wrap_malloc(size_t size) {
  return heap_refuses ? nullptr : __real_malloc(size);
}

namespace lox_test {
namespace {

#define LOX_TURNS(unit)                                                       \
  {                                                                           \
    vexo_cpy_##unit, vexo_rot_##unit##_90l, vexo_rot_##unit##_90r,            \
        vexo_rot_##unit##_180, vexo_rot_##unit##_hori, vexo_rot_##unit##_vert \
  }
TEST(RotTables, HaveTheKernelOfEachCode) {
  vexo_rot_kernel *const kernels[4][6] = {LOX_TURNS(8b), LOX_TURNS(16b),
                                          LOX_TURNS(24b), LOX_TURNS(32b)};
  EXPECT_EQ(std::memcmp(kernels[0], vexo_tbl_fn_rot_8b, sizeof kernels[0]), 0);
  EXPECT_EQ(std::memcmp(kernels[1], vexo_tbl_fn_rot_16b, sizeof kernels[0]), 0);
  EXPECT_EQ(std::memcmp(kernels[2], vexo_tbl_fn_rot_24b, sizeof kernels[0]), 0);
  EXPECT_EQ(std::memcmp(kernels[3], vexo_tbl_fn_rot_32b, sizeof kernels[0]), 0);
}

// What the codes mean, by eye: the rows abc and def.
TEST(RotTables, TurnThreeByTwo) {
  const uint8_t src[] = {'a', 'b', 'c', 'd', 'e', 'f'};
  const char *const turned[] = {"abcdef", "cfbead", "daebfc",
                                "fedcba", "cbafed", "defabc"};
  for (int code = 0; code < 6; ++code) {
    uint8_t dst[6];
    const bool quarter = code == 1 || code == 2;
    vexo_tbl_fn_rot_8b[code](src, 3, 2, 3, quarter ? 2 : 3, dst);
    EXPECT_EQ(std::string(dst, dst + 6), turned[code]);
  }
}

// Of 8 x 8 equal samples the mean is the sample, none more than a step off.
TEST(Dither, KeepsTheMean) {
  for (const int lost : {2, 3, 6}) {
    for (int value = 0; value <= 256 - (1 << lost); ++value) {
      const std::vector<uint8_t> src(64, static_cast<uint8_t>(value));
      uint8_t dst[64];
      ASSERT_EQ(vexo_dit_8b(src.data(), 8, 8, 8, 8, dst, 8, 8 - lost, 3, -5),
                VEXO_OK);
      int sum = 0;
      for (const int sample : dst) {
        EXPECT_TRUE(sample - (value >> lost) == 0 ||
                    sample - (value >> lost) == 1);
        sum += sample << lost;
      }
      EXPECT_EQ(sum, 64 * value);
    }
  }
}

TEST(Rsz, LinesByHand) {
  const struct {
    std::vector<uint8_t> from, plain, mode1;
  } lines[] = {{{10, 20, 31, 40, 51}, {10, 25, 45}, {10, 25, 45}},
               {{10, 21, 99, 41, 50, 99}, {15, 45}, {15, 45}},
               {{0, 90}, {0, 45, 90, 90, 90}, {0, 45, 90, 90, 90}},
               {{90, 0}, {90, 60, 30, 0, 0, 0}, {90, 60, 30, 0, 0, 0}},
               {{0, 90}, {0, 30, 60, 90, 90, 90}, {0, 29, 59, 90, 90, 90}},
               {{7, 0, 200},
                {7, 3, 0, 100, 200, 200, 200},
                {7, 3, 0, 100, 200, 200, 200}}};
  for (const auto &line : lines) {
    for (const bool mode1 : {false, true}) {
      const std::vector<uint8_t> &expected = mode1 ? line.mode1 : line.plain;
      const auto from = static_cast<int32_t>(line.from.size());
      const auto to = static_cast<int32_t>(expected.size());
      std::vector<uint8_t> computed(expected.size());
      std::vector<uint8_t> scratch(expected.size());
      vexo_rsz_8b(line.from.data(), from, 1, to, 1, computed.data(),
                  scratch.data(), from, to, mode1 ? VEXO_MODE_MOD1 : 0);
      EXPECT_EQ(computed, expected);
    }
  }
}

TEST(Rsz, StepsHaveTheirWeights) {
  for (int n = 0; n < 64; ++n) {
    const int px = n / 8;
    const int py = n % 8;
    const uint8_t *w = vexo_tbl_rsz_weight[n];
    EXPECT_EQ(w[0], (8 - px) * (8 - py));
    EXPECT_EQ(w[1], px * (8 - py));
    EXPECT_EQ(w[2], (8 - px) * py);
    EXPECT_EQ(w[3], px * py);
  }
}

// Reductions and copies want no memory; without it nothing is written.
TEST(Rsz, HeapThatRefuses) {
  uint8_t bytes[2][3][512] = {};
  for (const int32_t code : {0, 1, 6, 200, 400, 500}) {
    for (const int32_t side : {4, 8, 12}) {
      vexo_img img[2] = {};
      std::memset(bytes[1], 0x5A, sizeof bytes[1]);
      for (int i = 0; i < 2; ++i) {
        img[i].format = code;
        for (int p = 0; p < 3; ++p) {
          img[i].width[p] = img[i].height[p] = i == 0 ? 8 : side;
          img[i].stride[p] = 32;
          img[i].plane[p] = bytes[i][p];
        }
      }
      // A second plane that grows is enough.
      if (code == 6) img[1].width[1] = 9;
      const bool wants = side == 12 || (code == 6 && side != 8);
      heap_refuses = true;
      const int32_t status = vexo_rsz(&img[0], &img[1]);
      heap_refuses = false;
      EXPECT_EQ(status, wants ? VEXO_ERR_ARG : VEXO_OK) << code << " " << side;
      EXPECT_EQ(bytes[1][0][0], wants ? 0x5A : 0) << code << " " << side;
    }
  }
}

}  // namespace
}  // namespace lox_test
