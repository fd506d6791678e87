// SPDX-License-Identifier: Apache-2.0
// Turning and mirroring: the kernels, their tables and the image call, against
// units moved one by one.
#include <orumlox/common.h>
#include <orumlox/rot.h>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "support/image.h"

namespace lox_test {
namespace {

// A plane of units of some bytes, before and after a turn.
struct Turn {
  int32_t unit;
  uint32_t code;
  int32_t width, height;
  int32_t src_pad, dst_pad;

  bool quarter() const { return code == VEXO_ROT_90L || code == VEXO_ROT_90R; }
  int32_t src_row() const { return width * unit; }
  int32_t dst_row() const { return (quarter() ? height : width) * unit; }
  int32_t dst_rows() const { return quarter() ? width : height; }
  int32_t src_stride() const { return src_row() + src_pad; }
  int32_t dst_stride() const { return dst_row() + dst_pad; }
  size_t src_size() const {
    return plane_size(src_row(), height, src_stride());
  }
  size_t dst_size() const {
    return plane_size(dst_row(), dst_rows(), dst_stride());
  }

  void apply(const uint8_t *src, std::vector<uint8_t> &dst) const {
    // Copies of 16-bit units round their strides down.
    const int32_t odd = code == VEXO_ROT_COPY && unit == 2 ? 1 : 0;
    for (int32_t y = 0; y < height; ++y) {
      for (int32_t x = 0; x < width; ++x) {
        const int32_t left = width - 1 - x;
        const int32_t up = height - 1 - y;
        const int32_t places[6][2] = {{x, y},     {y, left}, {up, x},
                                      {left, up}, {left, y}, {x, up}};
        const int32_t *to = places[code];
        for (int32_t i = 0; i < unit; ++i) {
          dst[to[1] * (dst_stride() & ~odd) + to[0] * unit + i] =
              src[y * (src_stride() & ~odd) + x * unit + i];
        }
      }
    }
  }
};

struct Kernel {
  const char *name;
  vexo_rot_kernel *kernel;
  int32_t unit;
  uint32_t code;
};

class RotKernel : public SeededTest,
                  public testing::WithParamInterface<Kernel> {};

TEST_P(RotKernel, MovesEachUnitWholeAndNothingElse) {
  const Kernel &k = GetParam();
  // The largest is beyond the caches, its rows aligned on both sides.
  std::vector<std::array<int32_t, 2>> sizes = {
      {1920, 1088}, {1917, 67}, {67, 1917}, {4099, 1}, {1, 4099},
      {63, 65},     {64, 128},  {128, 64},  {255, 129}};
  for (int32_t n = 0; n < 42 * 42; ++n) {
    sizes.push_back({n / 42 - 1, n % 42 - 1});
  }
  GuardedBuffer src;
  GuardedBuffer dst;
  for (const auto &[width, height] : sizes) {
    for (const Edge edge : {Edge::kEnd, Edge::kStart}) {
      Turn t{k.unit, k.code, width, height, 0, 0};
      if (edge == Edge::kEnd) {
        t.src_pad = random.between(0, 40);
        t.dst_pad = random.between(0, 40);
      }
      src.reset(t.src_size(), edge);
      dst.reset(t.dst_size(), edge);
      random.fill(src.data(), src.size());
      std::vector<uint8_t> expected = dst.copy();
      t.apply(src.data(), expected);
      k.kernel(src.data(), width, height, t.src_stride(), t.dst_stride(),
               dst.data());
      ASSERT_TRUE(holds(dst, expected))
          << width << "x" << height << " strides " << t.src_stride() << " "
          << t.dst_stride();
    }
  }
}

#define KERNELS(bits, unit)                                           \
  {"90l_" #bits, vexo_rot_##bits##_90l, unit, VEXO_ROT_90L},          \
      {"90r_" #bits, vexo_rot_##bits##_90r, unit, VEXO_ROT_90R},      \
      {"180_" #bits, vexo_rot_##bits##_180, unit, VEXO_ROT_180},      \
      {"hori_" #bits, vexo_rot_##bits##_hori, unit, VEXO_ROT_HORI}, { \
    "vert_" #bits, vexo_rot_##bits##_vert, unit, VEXO_ROT_VERT        \
  }
constexpr Kernel kKernels[] = {KERNELS(8b, 1), KERNELS(16b, 2), KERNELS(24b, 3),
                               KERNELS(32b, 4)};
INSTANTIATE_TEST_SUITE_P(, RotKernel, testing::ValuesIn(kKernels),
                         [](const auto &i) { return i.param.name; });

TEST(RotTables, HaveTheKernelOfEachCode) {
  vexo_rot_kernel *const *const tables[] = {
      vexo_tbl_fn_rot_8b, vexo_tbl_fn_rot_16b, vexo_tbl_fn_rot_24b,
      vexo_tbl_fn_rot_32b};
  EXPECT_EQ(tables[0][VEXO_ROT_COPY], vexo_cpy_8b);
  EXPECT_EQ(tables[1][VEXO_ROT_COPY], vexo_cpy_16b);
  EXPECT_EQ(tables[2][VEXO_ROT_COPY], vexo_cpy_24b);
  EXPECT_EQ(tables[3][VEXO_ROT_COPY], vexo_cpy_32b);
  for (const Kernel &k : kKernels) {
    EXPECT_EQ(tables[k.unit - 1][k.code], k.kernel) << k.name;
  }
}

// How vexo_rot treats a format: the bytes of a unit of each plane it turns.
std::vector<int32_t> turned_planes(int32_t format) {
  if (format < 0 || format == VEXO_FMT_T64X32) return {};
  if (format == VEXO_FMT_YUV400) return {1};
  if (format == VEXO_FMT_NV12 || format == VEXO_FMT_NV21) return {1, 2};
  if (format <= 99) return {1, 1, 1};
  if (format >= 200 && format <= 299) return {2};
  if (format >= 400 && format <= 499) return {3};
  if (format >= 500 && format <= 599) return {4};
  return {};
}

using RotImage = SeededTest;

// Planes have unrelated sizes, some none; a plane that is not turned has no
// memory. Of the destination only strides and planes are looked at.
TEST_F(RotImage, TurnsThePlanesOfItsFormatCode) {
  std::vector<int32_t> formats = {INT32_MIN, INT32_MAX, 0x10001, 0x101F4};
  for (int32_t f = -3; f <= 703; ++f) formats.insert(formats.end(), 3, f);
  for (const int32_t format : formats) {
    for (const uint32_t code :
         {0U, 1U, 2U, 3U, 4U, 5U, 6U, 7U, 0x80000001U, 0xFFFFFFFFU}) {
      const std::vector<int32_t> planes = turned_planes(format);
      const bool turned = !planes.empty() && code <= VEXO_ROT_VERT;
      TestImage src(format);
      TestImage dst(-7);
      TestImage::Contents expected;
      for (int p = 0; p < static_cast<int>(planes.size()); ++p) {
        Turn t{planes[p], code, 0, 0, 0, 0};
        t.width = random.between(-1, 40);
        t.height = random.between(-1, 9);
        t.src_pad = random.between(0, 9);
        t.dst_pad = random.between(0, 9);
        src.set_plane(p, t.width, t.height, t.src_stride(), t.src_size());
        dst.set_plane(p, -1, -1, t.dst_stride(), t.dst_size());
        random.fill(src.img.plane[p], t.src_size());
        expected[p] = dst.buffer[p].copy();
        if (turned) t.apply(src.img.plane[p], expected[p]);
      }
      ASSERT_EQ(vexo_rot(&src.img, code, &dst.img),
                turned ? VEXO_OK : VEXO_ERR_UNSUPPORTED)
          << format << " code " << code;
      ASSERT_TRUE(holds(dst, expected)) << format << " code " << code;
    }
  }
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

}  // namespace
}  // namespace lox_test
