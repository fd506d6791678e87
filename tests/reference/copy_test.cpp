// SPDX-License-Identifier: Apache-2.0
// Plane copies and the copy of whole images, against copies made byte by byte.
#include <orumlox/common.h>

#include <cstdint>
#include <utility>
#include <vector>

#include "support/image.h"

namespace lox_test {
namespace {

// What a plane copy reads and writes: one run, or rows at the strides in use.
struct Shape {
  int32_t row_bytes, rows;
  int32_t src_stride, dst_stride;

  size_t src_size() const { return plane_size(row_bytes, rows, src_stride); }
  size_t dst_size() const { return plane_size(row_bytes, rows, dst_stride); }
  void copy(const GuardedBuffer &src, std::vector<uint8_t> &dst) const {
    copy_rows(src.data(), src_stride, row_bytes, rows, dst_stride, dst.data());
  }
};

Shape shape_of(int32_t sample_bytes, int32_t width, int32_t height,
               int32_t src_stride, int32_t dst_stride) {
  if (width < 1 || height < 1) return {};
  const int32_t row = width * sample_bytes;
  if (sample_bytes != 2) return {row, height, src_stride, dst_stride};
  if (src_stride / 2 == width && dst_stride / 2 == width) {
    return {row * height, 1, 0, 0};
  }
  return {row, height, src_stride / 2 * 2, dst_stride / 2 * 2};
}

struct Copier {
  const char *name;
  void (*copy)(const uint8_t *, int32_t, int32_t, int32_t, int32_t, uint8_t *);
  int32_t sample_bytes;
};

void block_copy(const uint8_t *src, int32_t width, int32_t height,
                int32_t src_stride, int32_t dst_stride, uint8_t *dst) {
  mlox_blk_mcpy(dst, src, dst_stride, src_stride, width, height);
}

class CopyPlane : public SeededTest,
                  public testing::WithParamInterface<Copier> {};

TEST_P(CopyPlane, MovesTheRowsAndNothingElse) {
  const Copier &c = GetParam();
  GuardedBuffer src;
  GuardedBuffer dst;
  // Both sides tight; one padded; both padded, equally or not; odd strides.
  constexpr int32_t kPads[][2] = {{0, 0}, {0, 16}, {16, 0},  {5, 5},
                                  {7, 3}, {1, 0},  {0, 1},   {1, 1},
                                  {1, 4}, {4, 1},  {32, 64}, {2, 3}};
  for (int32_t width = -2; width <= 100; ++width) {
    for (const int32_t height : {-4, -1, 0, 1, 2, 3, 7}) {
      for (const auto &pad : kPads) {
        const int32_t src_stride = width * c.sample_bytes + pad[0];
        const int32_t dst_stride = width * c.sample_bytes + pad[1];
        const Shape s =
            shape_of(c.sample_bytes, width, height, src_stride, dst_stride);
        for (const Edge edge : {Edge::kEnd, Edge::kStart}) {
          src.reset(s.src_size(), edge);
          dst.reset(s.dst_size(), edge);
          random.fill(src.data(), src.size());
          std::vector<uint8_t> expected = dst.copy();
          s.copy(src, expected);
          c.copy(src.data(), width, height, src_stride, dst_stride, dst.data());
          ASSERT_TRUE(holds(dst, expected))
              << width << "x" << height << " strides " << src_stride << " "
              << dst_stride;
        }
      }
    }
  }
}

constexpr Copier kCopiers[] = {{"blk_mcpy", block_copy, 1},
                               {"cpy_8b", vexo_cpy_8b, 1},
                               {"cpy_16b", vexo_cpy_16b, 2},
                               {"cpy_24b", vexo_cpy_24b, 3},
                               {"cpy_32b", vexo_cpy_32b, 4}};
INSTANTIATE_TEST_SUITE_P(, CopyPlane, testing::ValuesIn(kCopiers),
                         [](const auto &i) { return i.param.name; });

// How vexo_cpy treats a format: the bytes of a sample of each plane it copies.
std::vector<int32_t> copied_planes(int32_t format) {
  if (format < 0 || format == VEXO_FMT_T64X32) return {};
  if (format == VEXO_FMT_YUV400) return {1};
  if (format == VEXO_FMT_NV12) return {1, 2};
  if (format <= 99) return {1, 1, 1};
  if (format >= 200 && format <= 299) return {2};
  return {};
}

using CopyImage = SeededTest;

// Planes have unrelated sizes, some no rows; they are contiguous or padded (an
// odd padding of a 16-bit plane included). A plane that is not copied has no
// memory. Of the destination only format, strides and planes are looked at.
TEST_F(CopyImage, CopiesThePlanesOfItsFormatCode) {
  for (int n = 0; n < 614 * 40; ++n) {
    const int32_t format = n % 614 - 3;
    if (format >= 15 && n >= 614 * 2) continue;
    const bool contiguous = n / 614 % 4 == 0;
    const auto pad = [&] { return contiguous ? 0 : random.between(0, 9); };
    const std::vector<int32_t> planes = copied_planes(format);
    TestImage src(format);
    TestImage dst(format);
    Shape shapes[4];
    for (int p = 0; p < static_cast<int>(planes.size()); ++p) {
      const int32_t width = random.between(1, 40);
      const int32_t height = random.between(-1, 5);
      const int32_t src_stride = width * planes[p] + pad();
      const int32_t dst_stride = width * planes[p] + pad();
      shapes[p] = shape_of(planes[p], width, height, src_stride, dst_stride);
      src.set_plane(p, width, height, src_stride, shapes[p].src_size());
      dst.set_plane(p, -1, -1, dst_stride, shapes[p].dst_size());
    }
    src.fill(random);
    TestImage::Contents expected = dst.contents();
    for (size_t p = 0; p < planes.size(); ++p) {
      shapes[p].copy(src.buffer[p], expected[p]);
    }
    ASSERT_EQ(vexo_cpy(&src.img, &dst.img),
              planes.empty() ? VEXO_ERR_UNSUPPORTED : VEXO_OK)
        << format;
    ASSERT_TRUE(holds(dst, expected)) << format;
  }
}

TEST_F(CopyImage, RefusesTwoFormatsBeforeItLooksAtThem) {
  for (const auto &[from, to] :
       {std::pair{1, 4}, {6, 7}, {11, 1}, {200, 201}, {500, 501}, {-1, -2}}) {
    // Without memory: a plane that is touched ends the test.
    const TestImage src(from);
    const TestImage dst(to);
    EXPECT_EQ(vexo_cpy(&src.img, &dst.img), VEXO_ERR_ARG) << from << " " << to;
  }
}

}  // namespace
}  // namespace lox_test
