// SPDX-License-Identifier: Apache-2.0
// Conversions of every value of (Y, U, V) and of every pixel, at each level,
// against the rule; where tiles lie. LOX_STEP leaves values out.
#include <gtest/gtest.h>
#include <orumlox/csc.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "common/caches.h"
#include "common/isa.h"
#include "rules/rules.h"
#include "rules/tiles.h"
#include "support/conversion_name.h"

namespace lox_test {
namespace {

struct Planes {
  Planes(const ExactImage &image) {
    for (int p = 0; p < 4; ++p) {
      width[p] = image[p].width;
      height[p] = image[p].height;
      stride[p] = static_cast<int32_t>(image[p].row_bytes);
      memory[p].resize(static_cast<size_t>(image[p].bytes(stride[p])));
      plane[p] = memory[p].data();
    }
  }
  std::vector<uint8_t> memory[4];
  uint8_t *plane[4];
  int32_t width[4], height[4], stride[4];
};

class EveryValue : public testing::TestWithParam<Function> {
 protected:
  // Conversions of a picture that changes from frame to frame.
  template <class Fill>
  void check(int32_t width, int32_t height, int frames, Fill fill) {
    const auto [from, to, standard] = parse_conversion(GetParam().name);
    const ExactCall call = exact_csc(
        from, to, standard, exact_image(from, width, height), width, height);
    Planes src(call.src);
    Planes dst(call.dst);
    const auto run = [&](const Function &function) {
      for (auto &memory : dst.memory) memory.assign(memory.size(), 0x5A);
      function.as<vexo_csc_kernel>()(src.plane, src.width, src.height,
                                     src.stride, dst.stride, dst.plane);
    };
    for (int frame = 0; frame < frames; frame += LOX_STEP) {
      fill(src, frame);
      run(by_rule(GetParam()));
      const auto expected = std::to_array(dst.memory);
      for (int level = 0; level <= lox::isa_best(); ++level) {
        lox::isa_limit(level);
        run(GetParam());
        ASSERT_EQ(std::to_array(dst.memory), expected)
            << lox::isa_name(level) << ", frame " << frame;
      }
    }
  }
};

// A chroma sample serves a block of 2 by 2 pixels: frame k has all 65536 pairs
// (U, V), and the lumas 4k to 4k + 3 in each block.
TEST_P(EveryValue, OfYuv) {
  const auto [from, to, standard] = parse_conversion(GetParam().name);
  if (is_rgb_code(from)) return;
  const auto fill = [&, from = from](Planes &src, int frame) {
    const int32_t width = src.width[0];
    for (int32_t i = 0; i < 512 * 512; ++i) {
      const int32_t x = i % width;
      const int32_t y = i / width;
      const int32_t block = y / 2 * (width / 2) + x / 2;
      set_yuv(from, src.plane, src.stride, x, y,
              {static_cast<uint8_t>(4 * frame + x % 2 + y % 2 * 2),
               static_cast<uint8_t>(block & 255),
               static_cast<uint8_t>(block >> 8)});
    }
  };
  ASSERT_NO_FATAL_FAILURE(check(512, 512, 64, fill));
  // Rows too short for a vector, or for the steps of eight beyond which one of
  // the standards has another rule.
  if (from == VEXO_FMT_YUV420) check(2, 131072, 64, fill);
}

// 4096 pixels side by side where they give luma and chroma.
TEST_P(EveryValue, OfPixels) {
  const auto [from, to, standard] = parse_conversion(GetParam().name);
  if (!is_rgb_code(from)) return;
  const int side = is_rgb_code(to) ? 1 : 1 << chroma_x_shift(to);
  const int bytes = from == VEXO_FMT_RGB565 ? 2 : 4;
  check(4096 * side, side, bytes == 2 ? 16 : 4096, [&](Planes &src, int frame) {
    for (int32_t n = 0; n < 4096; ++n) {
      for (int i = 0; i < bytes; ++i) {
        src.plane[0][n * side * bytes + i] =
            static_cast<uint8_t>((4096 * frame + n) >> (8 * i));
      }
    }
  });
}

// The ways to compute that differ: each layout and standard to 32 bits, planes
// of full size to all; pixels of 16 and 32 bits by each standard. Others differ
// in the order of bytes or planes.
std::vector<Function> chosen() {
  std::vector<Function> some;
  for (int32_t i = 0; i < csc_family.count; ++i) {
    const Function &f = csc_family.functions[i];
    const auto [from, to, standard] = parse_conversion(f.name);
    const bool yuv = !is_tiled_code(from) && is_rgb_code(to) &&
                     (to == VEXO_FMT_RGBA8888 || from == VEXO_FMT_YUV444 ||
                      from == VEXO_FMT_YUV422W || from == VEXO_FMT_YUV400);
    const bool pixels =
        (from == VEXO_FMT_RGBA8888 || from == VEXO_FMT_RGB565) &&
        to != VEXO_FMT_YV12 && to != VEXO_FMT_NV21 &&
        (standard != VEXO_STD_BT601_FULL || to == VEXO_FMT_YUV420);
    if (is_rgb_code(from) ? pixels : yuv) some.push_back(f);
  }
  return some;
}
INSTANTIATE_TEST_SUITE_P(, EveryValue, testing::ValuesIn(chosen()),
                         [](const auto &i) { return i.param.name; });

// The last bytes of every plane receive something, or have an effect: buffers
// of the cases would else hide what is read beyond.
TEST(ExactSizes, AreTheLeast) {
  for (int32_t i = 0; i < csc_family.count; ++i) {
    const Function &f = csc_family.functions[i];
    const auto [from, to, standard] = parse_conversion(f.name);
    if (from < 0) continue;
    // Every second row is dropped, or every second column too.
    const bool thinned = (from == VEXO_FMT_YUV422N || from == VEXO_FMT_YV16 ||
                          from == VEXO_FMT_YUV444) &&
                         !is_rgb_code(to);
    for (int32_t size = 0; size < 48; ++size) {
      const int32_t width = size / 6 * size / 6 + 1;
      const int32_t height = size % 6 + 1;
      const ExactCall call = exact_csc(
          from, to, standard, exact_image(from, width, height), width, height);
      Planes src(call.src);
      Planes dst(call.dst);
      for (auto &memory : src.memory)
        std::fill(memory.begin(), memory.end(), 128);
      const auto run = [&](uint8_t canary) {
        for (auto &m : dst.memory) std::fill(m.begin(), m.end(), canary);
        f.as<vexo_csc_kernel>()(src.plane, src.width, src.height, src.stride,
                                dst.stride, dst.plane);
        return std::to_array(dst.memory);
      };
      const auto written = run(0x5A);
      const auto again = run(0xA5);
      for (int p = 0; p < 4; ++p) {
        if (call.dst[p].whole == 0 && !written[p].empty()) {
          ASSERT_EQ(written[p].back(), again[p].back())
              << f.name << " writes " << width << "x" << height << ", " << p;
        }
        auto &memory = src.memory[p];
        if (call.src[p].whole > 0 || memory.empty() || (thinned && p > 0)) {
          continue;
        }
        // Alpha has no effect.
        const auto unit = is_rgb_code(from) ? memory.size() : 1;
        std::fill(memory.end() - unit, memory.end(), 193);
        ASSERT_NE(run(0x5A), written)
            << f.name << " reads " << width << "x" << height << ", " << p;
        std::fill(memory.end() - unit, memory.end(), 128);
      }
    }
  }
}

TEST(Tiles, LieWhereTheySay) {
  EXPECT_EQ(vexo_get_tile_offset(128, 64, 0, 0), 0);
  EXPECT_EQ(vexo_get_tile_offset(128, 64, 64, 0), 2048);
  EXPECT_EQ(vexo_get_tile_offset(128, 64, 0, 32), 4096);
  EXPECT_EQ(vexo_get_tile_offset(128, 64, 64, 32), 6144);
  EXPECT_EQ(vexo_get_tile_offset(256, 64, 128, 0), 12288);
  EXPECT_EQ(vexo_get_tile_offset(256, 32, 128, 0), 4096);
  EXPECT_EQ(vexo_get_tile_offset(256, 32, 256, 0), 8192);
  EXPECT_EQ(vexo_get_tile_offset(256, 96, 128, 64), 20480);
}

// More tiles beside each other than are copied together, in the caches and
// beyond, in one go and in ranges of rows that end within tiles.
TEST(Tiles, GoToRowsManyAtOnce) {
  const lox::MemoryRule rule = lox::memory_now();
  for (int number = 0; number < 48; ++number) {
    constexpr int32_t kWidths[] = {1024, 1102, 2112};
    const int32_t width = kWidths[number % 3];
    const int32_t height = number / 3 % 2 == 0 ? 96 : 134;
    lox::MemoryRule other = rule;
    other.far_from = number / 6 % 2 == 0 ? 0 : SIZE_MAX;
    lox::set_memory_rule(other);
    lox::isa_limit(number / 12 % 4);
    Planes src(exact_image(VEXO_FMT_T64X32, width, height));
    Planes dst(exact_image(VEXO_FMT_NV12, width, height));
    uint32_t noise = 1;
    for (auto &memory : src.memory) {
      for (uint8_t &byte : memory) {
        noise = noise * 1664525 + 1013904223;
        byte = static_cast<uint8_t>(noise >> 24);
      }
    }
    vexo_img from = {}, to = {};
    from.format = VEXO_FMT_T64X32;
    to.format = VEXO_FMT_NV12;
    for (int p = 0; p < 2; ++p) {
      for (auto [image, planes] : {std::pair(&from, &src), {&to, &dst}}) {
        image->plane[p] = planes->plane[p];
        image->width[p] = planes->width[p];
        image->height[p] = planes->height[p];
        image->stride[p] = planes->stride[p];
      }
    }
    const int32_t ends[] = {0, number % 2 == 0 ? height : 42, height};
    for (int i = 0; i < 2; ++i) {
      if (ends[i] == ends[i + 1]) continue;
      ASSERT_EQ(vexo_csc_rows(&from, &to, ends[i], ends[i + 1]), VEXO_OK);
    }
    for (int p = 0; p < 2; ++p) {
      for (int32_t i = 0; i < width * (height >> p); ++i) {
        const int64_t at = tile_byte(VEXO_FMT_T64X32, p == 1, width,
                                     height >> p, i % width, i / width);
        ASSERT_EQ(dst.memory[p][static_cast<size_t>(i)],
                  src.memory[p][static_cast<size_t>(at)])
            << width << "x" << height << ", plane " << p << ", byte " << i;
      }
    }
  }
  lox::set_memory_rule(rule);
}

}  // namespace
}  // namespace lox_test
