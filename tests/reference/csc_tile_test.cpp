// SPDX-License-Identifier: Apache-2.0
// Tiled pictures: where their bytes lie, and every kernel that reads or writes
// them, over sizes around their tiles. Buffers of tiles end behind the last
// byte of the picture, or of its last pair where that is read.
#include <algorithm>
#include <cstdint>
#include <iterator>
#include <set>
#include <vector>

#include "csc_model.h"
#include "support/exact_sizes.h"
#include "support/image.h"

namespace lox_test {
namespace {

struct Tiles {
  const char *name;
  int32_t format;
  int32_t width, luma_rows, chroma_rows;
};
constexpr Tiles kTiles[] = {{"t64x32", VEXO_FMT_T64X32, 64, 32, 32},
                            {"t16x16", VEXO_FMT_T16X16, 16, 16, 8},
                            {"t8x8", VEXO_FMT_T8X8, 8, 8, 4},
                            {"t256x16", VEXO_FMT_T256X16, 256, 16, 8}};

// How many tiles of a t64x32 plane lie before a tile. Two rows of tiles are
// stored in units of two by two; every second unit has its lower row first. A
// last row without a partner is stored from left to right.
int32_t tiles_before(int32_t width, int32_t height, int32_t column,
                     int32_t row) {
  const int32_t units_in_row = (width + 127) / 128;
  const int32_t last_row = (height - 1) / 32;
  const int32_t rows_before = row / 2 * units_in_row * 4;
  if (row == last_row && row % 2 == 0) return rows_before + column;
  const int32_t unit = column / 2;
  const bool second_half = unit % 2 != row % 2;
  return rows_before + unit * 4 + (second_half ? 2 : 0) + column % 2;
}

// Where byte (x, y) of a plane of that size lies.
int32_t tile_byte(const Tiles &t, bool chroma, int32_t width, int32_t height,
                  int32_t x, int32_t y) {
  const int32_t rows = chroma ? t.chroma_rows : t.luma_rows;
  const int32_t before =
      t.format == VEXO_FMT_T64X32
          ? tiles_before(width, height, x / 64, y / 32)
          : y / rows * ((width + t.width - 1) / t.width) + x / t.width;
  return before * t.width * rows + y % rows * t.width + x % t.width;
}

// Sizes around multiples of a tile's side, and small ones.
std::set<int32_t> sizes_around(int32_t tile, int32_t multiples) {
  std::set<int32_t> sizes = {-1, 0, 1, 2, 3, 4, 5, 8, 9};
  for (int32_t n = 1; n <= multiples; ++n) {
    for (int32_t d = -1; d <= 1; ++d) sizes.insert(n * tile + d);
  }
  return sizes;
}
std::set<int32_t> widths_of(const Tiles &t) {
  return sizes_around(t.width, t.format == VEXO_FMT_T256X16 ? 6 : 4);
}
// A chroma row is two rows of luma.
std::set<int32_t> heights_of(const Tiles &t) {
  return sizes_around(t.luma_rows, t.format == VEXO_FMT_T64X32 ? 6 : 3);
}

class CscTiles : public SeededTest {
 protected:
  // One plane of tiles, and the same bytes in rows without padding.
  std::vector<uint8_t> lay_out(int p, const Tiles &t, int32_t width,
                               int32_t height) {
    int32_t end = 0;
    const auto at = [&](int32_t x, int32_t y) {
      return tile_byte(t, p != 0, width, height, x, y);
    };
    for (int32_t y = 0; y < height; ++y) {
      for (int32_t x = 0; x < width; ++x) end = std::max(end, at(x, y) + 1);
    }
    // A stride is not looked at.
    tiled_.set_plane(p, width, height, -7777, static_cast<size_t>(end));
    random.fill(tiled_.img.plane[p], tiled_.buffer[p].size());
    std::vector<uint8_t> rows;
    for (int32_t y = 0; y < height; ++y) {
      for (int32_t x = 0; x < width; ++x) {
        rows.push_back(tiled_.img.plane[p][at(x, y)]);
      }
    }
    return rows;
  }

  // A plane of rows, tight ones in half of the cases.
  void set_rows(TestImage &image, int p, int32_t row, int32_t rows) {
    const int32_t stride =
        std::max(row, 0) + std::max(random.between(-9, 9), 0);
    const Edge edge = random.next() % 2 == 0 ? Edge::kEnd : Edge::kStart;
    image.set_plane(p, 8, 8, stride, plane_size(row, rows, stride), edge);
  }

  TestImage tiled_{0};
  TestImage rows_{0};
};

TEST_F(CscTiles, HaveTheirPlacesIn64By32) {
  EXPECT_EQ(vexo_get_tile_offset(128, 64, 0, 0), 0);
  EXPECT_EQ(vexo_get_tile_offset(128, 64, 64, 0), 2048);
  EXPECT_EQ(vexo_get_tile_offset(128, 64, 0, 32), 4096);
  EXPECT_EQ(vexo_get_tile_offset(128, 64, 64, 32), 6144);
  EXPECT_EQ(vexo_get_tile_offset(256, 64, 128, 0), 12288);
  EXPECT_EQ(vexo_get_tile_offset(256, 32, 128, 0), 4096);
  EXPECT_EQ(vexo_get_tile_offset(256, 32, 256, 0), 8192);
  EXPECT_EQ(vexo_get_tile_offset(256, 96, 128, 64), 20480);
  for (const int32_t width : {1, 63, 64, 65, 100, 128, 129, 257, 385, 1921}) {
    for (const int32_t height : {1, 31, 32, 33, 64, 65, 95, 96, 97, 129, 161}) {
      std::set<int32_t> tiles;
      int32_t end = 0;
      for (int32_t y = 0; y < height; ++y) {
        for (int32_t x = 0; x < width; ++x) {
          const int32_t offset = vexo_get_tile_offset(width, height, x, y);
          ASSERT_EQ(offset, tile_byte(kTiles[0], false, width, height, x, y))
              << width << "x" << height << ": " << x << ", " << y;
          if (x % 64 == 0 && y % 32 == 0) {
            ASSERT_TRUE(tiles.insert(offset).second);
            end = std::max(end, offset + 64 * 32);
          }
        }
      }
      ASSERT_EQ(end, tiled_bytes(VEXO_FMT_T64X32, width, height, false));
    }
  }
}

TEST_F(CscTiles, AreCopiedToRows) {
  const struct {
    decltype(&vexo_csc_copy_16x16tiles_to_linear) copy;
    Tiles tiles;
    int p;
  } kCopies[] = {{vexo_csc_copy_16x16tiles_to_linear, kTiles[1], 0},
                 {vexo_csc_copy_16x8tiles_to_linear, kTiles[1], 1},
                 {vexo_csc_copy_8x8tiles_to_linear, kTiles[2], 0},
                 {vexo_csc_copy_8x4tiles_to_linear, kTiles[2], 1}};
  for (const auto &c : kCopies) {
    for (int32_t width = -1; width <= 70; ++width) {
      for (int32_t height = -1; height <= 50; ++height) {
        const auto linear = lay_out(c.p, c.tiles, width, height);
        set_rows(rows_, 0, width, height);
        TestImage::Contents expected = rows_.contents();
        copy_rows(linear.data(), width, width, height, rows_.img.stride[0],
                  expected[0].data());
        c.copy(tiled_.img.plane[c.p], width, height, rows_.img.stride[0],
               rows_.img.plane[0]);
        ASSERT_TRUE(holds(rows_, expected)) << width << "x" << height;
      }
    }
  }
}

// U and V bytes of rows of pairs into the planes of another layout.
void place_chroma(const std::vector<uint8_t> &pairs, int32_t width,
                  int32_t rows, const Source &to, const vexo_img &img,
                  TestImage::Contents &expected) {
  for (int32_t y = 0; y < rows; ++y) {
    for (int32_t x = 0; x < width; ++x) {
      const Place &place = x % 2 == 0 ? to.cb : to.cr;
      // A last U without its V comes first even where V does.
      const int32_t first = x == width - 1 && x % 2 == 0 ? 0 : place.first;
      expected[place.plane][y * img.stride[place.plane] + x / 2 * place.step +
                            first] = pairs[size_t{1} * y * width + x];
    }
  }
}

TEST_F(CscTiles, OfChromaAreUnpackedToRows) {
  const Source planar = yuv_layout(VEXO_FMT_YUV420);
  for (int32_t width = -1; width <= 70; ++width) {
    for (int32_t height = -1; height <= 30; ++height) {
      const auto pairs = lay_out(1, kTiles[1], width, height);
      set_rows(rows_, 1, (width + 1) / 2, height);
      set_rows(rows_, 2, width / 2, height);
      TestImage::Contents expected = rows_.contents();
      place_chroma(pairs, width, height, planar, rows_.img, expected);
      vexo_csc_unpack_16x8tiles_to_linear(
          tiled_.img.plane[1], width, height, rows_.img.stride[1],
          rows_.img.plane[1], rows_.img.stride[2], rows_.img.plane[2]);
      ASSERT_TRUE(holds(rows_, expected)) << width << "x" << height;
    }
  }
}

class CscTiledPictures : public CscTiles,
                         public testing::WithParamInterface<Conversion> {
 protected:
  void expect_yuv(int32_t width, int32_t height,
                  const std::vector<uint8_t> &luma,
                  const std::vector<uint8_t> &pairs,
                  TestImage::Contents &expected) {
    const Source to = yuv_layout(GetParam().dst);
    set_rows(rows_, 0, width, height);
    if (to.planes == 2) set_rows(rows_, 1, width, height / 2);
    if (to.planes == 3) {
      set_rows(rows_, to.cb.plane, (width + 1) / 2, height / 2);
      set_rows(rows_, to.cr.plane, width / 2, height / 2);
    }
    expected = rows_.contents();
    copy_rows(luma.data(), width, width, height, rows_.img.stride[0],
              expected[0].data());
    place_chroma(pairs, width, height / 2, to, rows_.img, expected);
  }

  void expect_rgb(int32_t width, int32_t height,
                  const std::vector<uint8_t> &luma,
                  const std::vector<uint8_t> &pairs,
                  TestImage::Contents &expected) {
    const Destination &to = *rgb_layout(GetParam().dst);
    set_rows(rows_, 0, width * to.pixel_bytes, height);
    expected = rows_.contents();
    const int32_t pair_bytes = (width + 1) / 2 * 2;
    const int32_t last = std::max(height / 2, 1) - 1;
    for (int32_t y = 0; y < height; ++y) {
      for (int32_t x = 0; x < width; ++x) {
        const uint8_t *pair =
            &pairs[size_t{1} * std::min(y / 2, last) * pair_bytes + x / 2 * 2];
        const uint8_t l = luma[size_t{1} * y * width + x];
        to.pack(convert(VEXO_STD_DEFAULT, l, pair[0], pair[1], false),
                &expected[0][size_t{1} * y * rows_.img.stride[0] +
                             x * to.pixel_bytes]);
      }
    }
  }
};

TEST_P(CscTiledPictures, AreConverted) {
  const Conversion &route = GetParam();
  const Tiles &t = *std::find_if(
      std::begin(kTiles), std::end(kTiles),
      [&](const Tiles &tiles) { return tiles.format == route.src; });
  // One may be written past the caches.
  constexpr int32_t kLarge = 2050;
  std::set<int32_t> widths = widths_of(t);
  widths.insert(kLarge);
  std::set<int32_t> heights = heights_of(t);
  heights.insert(kLarge + 1);
  for (const int32_t width : widths) {
    for (const int32_t height : heights) {
      if ((width == kLarge) != (height == kLarge + 1)) continue;
      const auto luma = lay_out(0, t, width, height);
      // To RGB whole pairs are read, and of a single row's chroma a row; the
      // others read no more than the width of half the rows.
      const bool rgb = rgb_layout(route.dst) != nullptr;
      const auto pairs =
          rgb ? lay_out(1, t, (width + 1) / 2 * 2, height == 1 ? 1 : height / 2)
              : lay_out(1, t, width, height / 2);
      // Nor is the size of the chroma plane looked at.
      tiled_.img.width[1] = tiled_.img.height[1] = 7777;
      TestImage::Contents expected;
      if (rgb) {
        expect_rgb(width, height, luma, pairs, expected);
      } else {
        expect_yuv(width, height, luma, pairs, expected);
      }
      route.kernel(tiled_.img.plane, tiled_.img.width, tiled_.img.height,
                   tiled_.img.stride, rows_.img.stride, rows_.img.plane);
      ASSERT_TRUE(holds(rows_, expected)) << width << "x" << height;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(, CscTiledPictures, testing::ValuesIn(tile_routes()),
                         [](const auto &i) { return i.param.name; });

// Bytes of the tiles beyond the picture keep what they have. Chroma is as large
// as the source's plane 1 where that is smaller than the picture's.
TEST_F(CscTiles, AreMadeOfYuv420) {
  const Tiles &t = kTiles[0];
  for (const int32_t width : widths_of(t)) {
    for (const int32_t height : heights_of(t)) {
      for (const int cut : {0, 1}) {
        const int32_t columns =
            (width + 1) / 2 - cut * random.between(-2, (width + 5) / 4);
        const int32_t rows =
            (height + 1) / 2 - cut * random.between(-2, (height + 5) / 4);
        for (int p = 0; p < 3; ++p) {
          set_rows(rows_, p, p == 0 ? width : columns, p == 0 ? height : rows);
        }
        rows_.img.width[0] = width;
        rows_.img.height[0] = height;
        rows_.img.width[1] = columns;
        rows_.img.height[1] = rows;
        rows_.img.width[2] = rows_.img.height[2] = 7777;
        rows_.fill(random);
        lay_out(0, t, width, height);
        lay_out(1, t, width, height / 2);
        TestImage::Contents expected = tiled_.contents();
        const vexo_img &img = rows_.img;
        for (int32_t y = 0; y < height; ++y) {
          for (int32_t x = 0; x < width; ++x) {
            expected[0][tile_byte(t, false, width, height, x, y)] =
                img.plane[0][y * img.stride[0] + x];
          }
        }
        for (int32_t y = 0; y < std::min(rows, height / 2); ++y) {
          for (int32_t x = 0; x < std::min(2 * columns, width); ++x) {
            const int p = 1 + x % 2;
            expected[1][tile_byte(t, true, width, height / 2, x, y)] =
                img.plane[p][y * img.stride[p] + x / 2];
          }
        }
        vexo_csc_yuv420_to_t64x32(img.plane, img.width, img.height, img.stride,
                                  tiled_.img.stride, tiled_.img.plane);
        ASSERT_TRUE(holds(tiled_, expected))
            << width << "x" << height << ", chroma " << columns << "x" << rows;
      }
    }
  }
}

}  // namespace
}  // namespace lox_test
