// SPDX-License-Identifier: Apache-2.0
// Plane copies and the copy of whole images, against copies made byte by byte.
#include <orumlox/common.h>

#include <cstdint>
#include <vector>

#include "support/image.h"

namespace lox_test {
namespace {

using PlaneCopy = void(const uint8_t*, int32_t, int32_t, int32_t, int32_t,
                       uint8_t*);

struct Copier {
  const char* name;
  PlaneCopy* copy;
  int32_t sample_bytes;
};

// What a plane copy reads and writes: one run, or rows at the strides in use.
struct Shape {
  int32_t row_bytes;
  int32_t rows;
  int32_t src_stride;
  int32_t dst_stride;
};

Shape shape_of(int32_t sample_bytes, int32_t width, int32_t height,
               int32_t src_stride, int32_t dst_stride) {
  const int32_t row = width * sample_bytes;
  if (sample_bytes == 2) {
    if (src_stride / 2 == width && dst_stride / 2 == width) {
      return {row * height, 1, 0, 0};
    }
    return {row, height, src_stride / 2 * 2, dst_stride / 2 * 2};
  }
  return {row, height, src_stride, dst_stride};
}

void copy_bytes(const Shape& s, const uint8_t* src, uint8_t* dst) {
  for (int32_t y = 0; y < s.rows; ++y) {
    for (int32_t i = 0; i < s.row_bytes; ++i) {
      dst[y * s.dst_stride + i] = src[y * s.src_stride + i];
    }
  }
}

class CopyPlane : public SeededTest,
                  public testing::WithParamInterface<Copier> {};

TEST_P(CopyPlane, MovesTheRowsAndNothingElse) {
  const Copier& c = GetParam();
  GuardedBuffer src;
  GuardedBuffer dst;
  // Both sides tight; one padded; both padded, equally or not; odd strides.
  constexpr int32_t kPads[][2] = {{0, 0}, {0, 16}, {16, 0},  {5, 5},
                                  {7, 3}, {1, 0},  {0, 1},   {1, 1},
                                  {1, 4}, {4, 1},  {32, 64}, {2, 3}};
  for (int32_t width = 1; width <= 100; ++width) {
    for (const int32_t height : {1, 2, 3, 7}) {
      for (const auto& pad : kPads) {
        const int32_t row = width * c.sample_bytes;
        const int32_t src_stride = row + pad[0];
        const int32_t dst_stride = row + pad[1];
        const Shape s =
            shape_of(c.sample_bytes, width, height, src_stride, dst_stride);
        for (const Edge edge : {Edge::kEnd, Edge::kStart}) {
          src.reset(plane_size(s.row_bytes, s.rows, s.src_stride), edge);
          dst.reset(plane_size(s.row_bytes, s.rows, s.dst_stride), edge);
          random.fill(src.data(), src.size());
          std::vector<uint8_t> expected = dst.copy();
          copy_bytes(s, src.data(), expected.data());
          c.copy(src.data(), width, height, src_stride, dst_stride, dst.data());
          ASSERT_TRUE(holds(dst, expected))
              << width << "x" << height << " strides " << src_stride << " "
              << dst_stride;
        }
      }
    }
  }
}

TEST_P(CopyPlane, WithoutAreaCopiesNothing) {
  const Copier& c = GetParam();
  for (const auto& size :
       {std::array{0, 4}, std::array{4, 0}, std::array{-1, 4},
        std::array{4, -1}, std::array{-4, -4}, std::array{0, 0}}) {
    // A contiguous plane and a padded one.
    for (const int32_t stride : {size[0] * c.sample_bytes, 64}) {
      GuardedBuffer src(0);
      GuardedBuffer dst(0);
      c.copy(src.data(), size[0], size[1], stride, stride, dst.data());
      EXPECT_TRUE(holds(dst, {})) << size[0] << "x" << size[1];
    }
  }
}

INSTANTIATE_TEST_SUITE_P(, CopyPlane,
                         testing::Values(Copier{"cpy_8b", vexo_cpy_8b, 1},
                                         Copier{"cpy_16b", vexo_cpy_16b, 2},
                                         Copier{"cpy_24b", vexo_cpy_24b, 3},
                                         Copier{"cpy_32b", vexo_cpy_32b, 4}),
                         [](const auto& instance) {
                           return instance.param.name;
                         });

class CopyBlock : public SeededTest {};

TEST_F(CopyBlock, AdvancesEachSideByItsStep) {
  GuardedBuffer src;
  GuardedBuffer dst;
  for (int32_t row = 1; row <= 70; ++row) {
    for (const int32_t rows : {1, 2, 5}) {
      for (const auto& pad : {std::array{0, 0}, std::array{0, 9},
                              std::array{13, 0}, std::array{3, 3}}) {
        const Shape s{row, rows, row + pad[0], row + pad[1]};
        src.reset(plane_size(row, rows, s.src_stride), Edge::kEnd);
        dst.reset(plane_size(row, rows, s.dst_stride), Edge::kEnd);
        random.fill(src.data(), src.size());
        std::vector<uint8_t> expected = dst.copy();
        copy_bytes(s, src.data(), expected.data());
        mlox_blk_mcpy(dst.data(), src.data(), s.dst_stride, s.src_stride, row,
                      rows);
        ASSERT_TRUE(holds(dst, expected)) << row << "x" << rows;
      }
    }
  }
}

TEST_F(CopyBlock, WithoutRowsOrBytesCopiesNothing) {
  GuardedBuffer src(0);
  GuardedBuffer dst(0);
  for (const auto& size : {std::array{8, 0}, std::array{8, -1},
                           std::array{0, 8}, std::array{-1, 8}}) {
    mlox_blk_mcpy(dst.data(), src.data(), 8, 8, size[0], size[1]);
    EXPECT_TRUE(holds(dst, {}));
  }
}

// How vexo_cpy treats a format: the bytes of a sample of each plane it copies.
std::vector<int32_t> copied_planes(int32_t format) {
  if (format < 0 || format == VEXO_FMT_T64X32) return {};
  if (format == VEXO_FMT_YUV400) return {1};
  if (format == VEXO_FMT_NV12) return {1, 2};
  if (format <= 99) return {1, 1, 1};
  if (format >= 200 && format <= 299) return {2};
  return {};
}

class CopyImage : public SeededTest {
 protected:
  // Copies one image of the format, with planes of unrelated sizes; contiguous
  // or padded (an odd padding of a 16-bit plane included).
  void copy_one(int32_t format, bool contiguous) {
    const std::vector<int32_t> planes = copied_planes(format);
    TestImage src(format);
    // Only the destination's format, strides and planes are looked at.
    TestImage dst(format);
    std::vector<Shape> shapes;
    for (int p = 0; p < static_cast<int>(planes.size()); ++p) {
      const int32_t width = random.between(1, 40);
      const int32_t height = random.between(1, 5);
      const int32_t row = width * planes[p];
      const int32_t src_stride = row + (contiguous ? 0 : random.between(0, 9));
      const int32_t dst_stride = row + (contiguous ? 0 : random.between(0, 9));
      const Shape s =
          shape_of(planes[p], width, height, src_stride, dst_stride);
      src.set_plane(p, width, height, src_stride,
                    plane_size(s.row_bytes, s.rows, s.src_stride));
      dst.set_plane(p, -1, -1, dst_stride,
                    plane_size(s.row_bytes, s.rows, s.dst_stride));
      shapes.push_back(s);
    }
    src.fill(random);
    TestImage::Contents expected = dst.contents();
    for (size_t p = 0; p < planes.size(); ++p) {
      copy_bytes(shapes[p], src.buffer[p].data(), expected[p].data());
    }
    ASSERT_EQ(vexo_cpy(&src.img, &dst.img),
              planes.empty() ? VEXO_ERR_UNSUPPORTED : VEXO_OK)
        << format;
    ASSERT_TRUE(holds(dst, expected)) << format;
  }
};

TEST_F(CopyImage, CopiesThePlanesOfItsFormatCode) {
  for (int32_t format = -3; format <= 610; ++format) {
    const int runs = format < 15 ? 40 : 2;
    for (int i = 0; i < runs; ++i) {
      ASSERT_NO_FATAL_FAILURE(copy_one(format, i % 4 == 0));
    }
  }
  for (const int32_t format : {INT32_MIN, INT32_MAX}) {
    ASSERT_NO_FATAL_FAILURE(copy_one(format, true));
  }
}

TEST_F(CopyImage, RefusesTwoFormats) {
  // Differing codes are a bad argument even where neither is copied.
  constexpr int32_t kPairs[][2] = {{1, 4},     {6, 7},     {0, 1},   {11, 1},
                                   {200, 201}, {500, 501}, {-1, -2}, {1, 500}};
  for (const auto& pair : kPairs) {
    TestImage src(pair[0]);
    TestImage dst(pair[1]);
    for (int p = 0; p < 4; ++p) {
      src.set_plane(p, 8, 8, 32, 256);
      dst.set_plane(p, 8, 8, 32, 256);
    }
    src.fill(random);
    const TestImage::Contents before = dst.contents();
    EXPECT_EQ(vexo_cpy(&src.img, &dst.img), VEXO_ERR_ARG);
    EXPECT_TRUE(holds(dst, before)) << pair[0] << " to " << pair[1];
  }
}

TEST_F(CopyImage, WithoutRowsSucceedsAndWritesNothing) {
  for (const int32_t format : {0, 1, 6, 7, 9, 99, 200, 299}) {
    for (const int32_t height : {0, -1, INT32_MIN}) {
      TestImage src(format);
      TestImage dst(format);
      for (int p = 0; p < 4; ++p) {
        src.set_plane(p, 8, height, 16, 0);
        dst.set_plane(p, 8, 8, 16, 128);
      }
      const TestImage::Contents before = dst.contents();
      EXPECT_EQ(vexo_cpy(&src.img, &dst.img), VEXO_OK) << format;
      EXPECT_TRUE(holds(dst, before)) << format << " " << height;
    }
  }
}

}  // namespace
}  // namespace lox_test
