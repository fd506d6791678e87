// SPDX-License-Identifier: Apache-2.0
// Conversions between YUV layouts: single planes and whole pictures.
#include <orumlox/csc.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <utility>
#include <vector>

#include "csc_model.h"
#include "support/image.h"

namespace lox_test {
namespace {

// Bytes added to the tight rows of two planes on one side and two on the other.
constexpr int32_t kPads[][4] = {
    {0, 0, 0, 0}, {16, 8, 32, 24}, {1, 3, 5, 7}, {0, 1, 1, 0}};

class CscPlanes : public SeededTest {
 protected:
  // Calls `body` for every size, padding and placement.
  template <typename Body>
  void for_every_size(Body body) {
    for (int32_t width = -1; width <= 1923; width += width == 100 ? 1817 : 1) {
      for (const int32_t height : {-4, -1, 0, 1, 2, 3, 4, 5, 8, 9}) {
        for (const auto &pad : kPads) {
          for (const Edge edge : {Edge::kEnd, Edge::kStart}) {
            ASSERT_NO_FATAL_FAILURE(body(width, height, pad, edge))
                << width << "x" << height << ", padding " << pad[0];
          }
        }
      }
    }
  }

  // A plane to read, a plane to write, each returning its stride.
  int32_t source(int n, int32_t row, int32_t rows, int32_t pad, Edge edge) {
    src_[n].reset(plane_size(row, rows, row + pad), edge);
    random.fill(src_[n].data(), src_[n].size());
    return row + pad;
  }
  int32_t destination(int n, int32_t row, int32_t rows, int32_t pad,
                      Edge edge) {
    dst_[n].reset(plane_size(row, rows, row + pad), edge);
    expected_[n] = dst_[n].copy();
    return row + pad;
  }

  GuardedBuffer src_[2];
  GuardedBuffer dst_[2];
  std::vector<uint8_t> expected_[2];
};

// Byte (x, y) of the result is byte (x * x_step, y * y_step) of the source, or
// (x, y / 2) where rows are doubled.
TEST_F(CscPlanes, ArePickedFromAndDoubled) {
  struct Picker {
    decltype(&vexo_csc_2x2_to_1x1) call;
    int32_t x_step, y_step, doubled;
  };
  for (const Picker &k : {Picker{vexo_csc_2x2_to_1x1, 2, 2, 1},
                          Picker{vexo_csc_1x2_to_1x1, 1, 2, 1},
                          Picker{vexo_csc_1x1_to_1x2, 1, 1, 2}}) {
    for_every_size([&](int32_t width, int32_t height, const int32_t(&pad)[4],
                       Edge edge) {
      const int32_t columns = (width + k.x_step - 1) / k.x_step;
      // Only the picking of columns rounds rows up.
      const int32_t rows =
          (k.x_step == 2 ? height + 1 : height) * k.doubled / k.y_step;
      const int32_t from = source(0, width, height, pad[0], edge);
      const int32_t to =
          destination(0, columns, width < 1 ? 0 : rows, pad[2], edge);
      for (int32_t y = 0; y < rows; ++y) {
        for (int32_t x = 0; x < columns; ++x) {
          expected_[0][y * to + x] =
              src_[0].data()[y * k.y_step / k.doubled * from + x * k.x_step];
        }
      }
      k.call(src_[0].data(), width, height, from, to, dst_[0].data());
      ASSERT_TRUE(holds(dst_[0], expected_[0]));
    });
  }
}

TEST_F(CscPlanes, OfPairsAreTakenApart) {
  for_every_size([&](int32_t width, int32_t height, const int32_t(&pad)[4],
                     Edge edge) {
    const int32_t from = source(0, width, height, pad[0], edge);
    const int32_t to[] = {destination(0, (width + 1) / 2, height, pad[2], edge),
                          destination(1, width / 2, height, pad[3], edge)};
    for (int32_t y = 0; y < height; ++y) {
      for (int32_t x = 0; x < width; ++x) {
        expected_[x % 2][y * to[x % 2] + x / 2] = src_[0].data()[y * from + x];
      }
    }
    vexo_csc_8b8b_unpck(src_[0].data(), width, height, from, to[0], to[1],
                        dst_[0].data(), dst_[1].data());
    ASSERT_TRUE(holds(dst_[0], expected_[0]));
    ASSERT_TRUE(holds(dst_[1], expected_[1]));
  });
}

TEST_F(CscPlanes, BecomePairs) {
  for_every_size([&](int32_t width, int32_t height, const int32_t(&pad)[4],
                     Edge edge) {
    const int32_t from[] = {source(0, width, height, pad[0], edge),
                            source(1, width, height, pad[1], edge)};
    const int32_t to = destination(0, 2 * width, height, pad[2], edge);
    for (int32_t y = 0; y < height; ++y) {
      for (int32_t x = 0; x < 2 * width; ++x) {
        expected_[0][y * to + x] = src_[x % 2].data()[y * from[x % 2] + x / 2];
      }
    }
    vexo_csc_8b8b_pck(src_[0].data(), src_[1].data(), width, height, from[0],
                      from[1], to, dst_[0].data());
    ASSERT_TRUE(holds(dst_[0], expected_[0]));
  });
}

// Pixels of four bytes to planes and back, any of which may be missing.
TEST_F(CscPlanes, OfFourAndPixels) {
  GuardedBuffer pixels;
  GuardedBuffer planes[4];
  for_every_size(
      [&](int32_t width, int32_t height, const int32_t(&pad)[4], Edge edge) {
        // A bit for each; none in half of the runs.
        const int32_t missing = std::max(random.between(-15, 15), 0);
        const int32_t stride = 4 * width + pad[1];
        const int32_t samples = std::max(width, 0) * std::max(height, 0);
        uint8_t *plane[4];
        int32_t strides[4];
        std::vector<uint8_t> expected[4];
        pixels.reset(plane_size(4 * width, height, stride), edge);
        random.fill(pixels.data(), pixels.size());
        for (int k = 0; k < 4; ++k) {
          strides[k] = width + pad[k];
          planes[k].reset(plane_size(width, height, strides[k]), edge);
          expected[k] = planes[k].copy();
          const bool none = (missing >> k & 1) != 0;
          plane[k] = none ? nullptr : planes[k].data();
          for (int32_t i = 0; i < samples && !none; ++i) {
            expected[k][i / width * strides[k] + i % width] =
                pixels.data()[i / width * stride + i % width * 4 + k];
          }
        }
        vexo_csc_8b8b8b8b_unpack(pixels.data(), width, height, stride,
                                 strides[0], strides[1], strides[2], strides[3],
                                 plane[0], plane[1], plane[2], plane[3]);
        for (int k = 0; k < 4; ++k) {
          ASSERT_TRUE(holds(planes[k], expected[k])) << "without " << missing;
        }

        // Planes that were unpacked give back what was there.
        std::vector<uint8_t> packed = pixels.copy();
        for (int32_t i = 0; i < 4 * samples; ++i) {
          const int32_t at = i / (width * 4) * stride + i % (width * 4);
          if (plane[i % 4] == nullptr) packed[at] = 255;
          pixels.data()[at] ^= 255;
        }
        vexo_csc_8b8b8b8b_pack(pixels.data(), width, height, stride, strides[0],
                               strides[1], strides[2], strides[3], plane[0],
                               plane[1], plane[2], plane[3]);
        ASSERT_TRUE(holds(pixels, packed)) << "without " << missing;
      });
}

// Each factor is what its low 16 bits are as a signed number, their product is
// not cut; one pair at least, and all that begin below the count.
size_t swapped_bytes(int32_t stride, int32_t rows) {
  const int32_t count = static_cast<int16_t>(stride & 0xFFFF) *
                        static_cast<int16_t>(rows & 0xFFFF);
  return static_cast<size_t>(std::max(2, (count + 1) / 2 * 2));
}
void swap_pairs(std::vector<uint8_t> &plane, size_t bytes) {
  for (size_t i = 0; i < bytes; i += 2) std::swap(plane[i], plane[i + 1]);
}

TEST_F(CscPlanes, AreSwappedInPlace) {
  const auto check = [&](int32_t stride, int32_t rows) {
    const size_t bytes = swapped_bytes(stride, rows);
    for (const Edge edge : {Edge::kEnd, Edge::kStart}) {
      dst_[0].reset(bytes, edge);
      std::vector<uint8_t> expected = dst_[0].copy();
      swap_pairs(expected, bytes);
      vexo_csc_swap_8byte8(dst_[0].data(), stride, rows);
      ASSERT_TRUE(holds(dst_[0], expected)) << stride << " " << rows;
    }
  };
  for (int32_t stride = -3; stride <= 300; ++stride) {
    for (int32_t rows = -3; rows <= 9; ++rows) {
      ASSERT_NO_FATAL_FAILURE(check(stride, rows));
    }
  }
  constexpr int32_t kFactors[] = {
      65537, 3,         65536, 5,         40000, 1,     40000,     -3,
      32767, 2,         32768, 2,         32768, -1,    65543,     65539,
      1920,  540,       200,   200,       257,   255,   INT32_MAX, 5,
      40000, INT32_MAX, 3,     INT32_MIN, 65536, 65536, -1,        -1};
  for (size_t i = 0; i < std::size(kFactors); i += 2) {
    ASSERT_NO_FATAL_FAILURE(check(kFactors[i], kFactors[i + 1]));
  }
}

// Whole pictures. Planes have unrelated sizes and strides; luma goes by its
// own, chroma by that of the source's plane, of plane 1 where pairs are taken
// apart or made.
class CscLayout : public SeededTest {
 protected:
  // A source plane with the size in its descriptor.
  void source(int p, int32_t sample_bytes, int32_t width, int32_t height) {
    const int32_t row = width * sample_bytes;
    const int32_t stride = std::max(row, 0) + pad();
    src_.set_plane(p, width, height, stride, plane_size(row, height, stride),
                   edge_);
  }
  // The destination's sizes are not looked at.
  void destination(int p, int32_t row, int32_t rows) {
    const int32_t stride = std::max(row, 0) + pad();
    dst_.set_plane(p, 8, 8, stride, plane_size(row, rows, stride), edge_);
  }
  // Half of the runs have planes without padding.
  void start(int run) {
    tight_ = run % 2 == 0;
    edge_ = run % 4 < 2 ? Edge::kEnd : Edge::kStart;
  }
  int32_t pad() { return tight_ ? 0 : random.between(0, 9); }

  // By name, and through vexo_csc where it takes the size.
  void convert(const Conversion &route, int run,
               const TestImage::Contents &expected) {
    src_.img.format = route.src;
    dst_.img.format = route.dst;
    if (src_.img.width[0] >= 8 && src_.img.height[0] >= 8) {
      ASSERT_EQ(vexo_csc(&src_.img, &dst_.img), VEXO_OK);
    } else {
      route.kernel(src_.img.plane, src_.img.width, src_.img.height,
                   src_.img.stride, dst_.img.stride, dst_.img.plane);
    }
    ASSERT_TRUE(holds(dst_, expected))
        << route.name << ", run " << run << ", luma " << src_.img.width[0]
        << "x" << src_.img.height[0] << ", chroma " << src_.img.width[1] << "x"
        << src_.img.height[1];
  }

  bool tight_ = true;
  Edge edge_ = Edge::kEnd;
  TestImage src_{0};
  TestImage dst_{0};
};

class CscRoutes : public CscLayout,
                  public testing::WithParamInterface<Conversion> {};

TEST_P(CscRoutes, MoveEverySample) {
  const Source from = yuv_layout(GetParam().src);
  const Source to = yuv_layout(GetParam().dst);
  // Chroma sample (x, y) comes from (x * x_step, y * y_step), or (x, y / 2).
  const int32_t x_step = to.cb.x_shift > from.cb.x_shift ? 2 : 1;
  const int32_t y_step = to.cb.y_shift > from.cb.y_shift ? 2 : 1;
  const int32_t doubled = to.cb.y_shift < from.cb.y_shift ? 2 : 1;
  const bool in_pairs = from.planes == 2 || to.planes == 2;
  for (int run = 0; run < 402; ++run) {
    start(run);
    // The last two may be written past the caches.
    const auto side = [&](int32_t low, int32_t high) {
      return run < 400 ? random.between(low, high) : random.between(2045, 2070);
    };
    const int32_t width = side(-1, 70);
    const int32_t height = side(-1, 20);
    source(0, 1, width, height);
    destination(0, width, height);
    int32_t columns[2];
    int32_t rows[2];
    for (int c = 0; c < 2; ++c) {
      const int p = (c == 0 ? from.cb : from.cr).plane;
      const Place &target = c == 0 ? to.cb : to.cr;
      if (c == 1 && from.planes == 3 && in_pairs) {
        // Its size is not looked at, but taken to be plane 1's.
        source(p, 1, src_.img.width[1], src_.img.height[1]);
        src_.img.width[p] = src_.img.height[p] = 7777;
      } else if (c == 0 || from.planes == 3) {
        source(p, from.planes == 2 ? 2 : 1, side(-1, 70), side(-1, 12));
      }
      const vexo_img &img = src_.img;
      const int measure = in_pairs ? 1 : p;
      columns[c] = std::max((img.width[measure] + x_step - 1) / x_step, 0);
      rows[c] = x_step == 2 ? (img.height[measure] + 1) / 2
                            : img.height[measure] * doubled / y_step;
      if (img.width[measure] < 1) rows[c] = 0;
      destination(target.plane, columns[c] * target.step, rows[c]);
    }
    src_.fill(random);
    TestImage::Contents expected = dst_.contents();
    copy_rows(src_.img.plane[0], src_.img.stride[0], width, height,
              dst_.img.stride[0], expected[0].data());
    for (int c = 0; c < 2; ++c) {
      const Place &source_place = c == 0 ? from.cb : from.cr;
      const Place &target = c == 0 ? to.cb : to.cr;
      for (int32_t y = 0; y < rows[c]; ++y) {
        for (int32_t x = 0; x < columns[c]; ++x) {
          expected[target.plane][y * dst_.img.stride[target.plane] +
                                 x * target.step + target.first] =
              *Source::at(source_place, false, src_.img,
                          x * x_step << source_place.x_shift,
                          y * y_step / doubled << source_place.y_shift);
        }
      }
    }
    ASSERT_NO_FATAL_FAILURE(convert(GetParam(), run, expected));
  }
}

INSTANTIATE_TEST_SUITE_P(, CscRoutes, testing::ValuesIn(layout_routes()),
                         [](const auto &i) { return i.param.name; });

// The run that is swapped has the destination's stride and half the luma's
// rows, so padding is swapped too; the copy before it takes pairs for 16-bit
// samples, whose strides are even.
TEST_F(CscLayout, Nv21ToNv12AndBackSwapTheWholeRun) {
  constexpr Conversion kBothWays[] = {
      {7, 6, "nv21_to_nv12", vexo_csc_nv21_to_nv12},
      {6, 7, "nv12_to_nv21", vexo_csc_nv21_to_nv12}};
  for (int run = 0; run < 2000; ++run) {
    start(run);
    const int32_t width = random.between(1, 70);
    const int32_t height = random.between(1, 20);
    source(0, 1, width, height);
    destination(0, width, height);
    const int32_t pairs = random.between(1, 40);
    const int32_t rows = random.between(1, 12);
    source(1, 2, pairs, rows);
    const int32_t stride = 2 * pairs + pad();
    const int32_t from = src_.img.stride[1] / 2 * 2;
    const int32_t to = stride / 2 * 2;
    const size_t swapped = swapped_bytes(stride, height / 2);
    dst_.set_plane(1, 8, 8, stride,
                   std::max(plane_size(2 * pairs, rows, to), swapped), edge_);
    src_.fill(random);
    TestImage::Contents expected = dst_.contents();
    copy_rows(src_.img.plane[0], src_.img.stride[0], width, height,
              dst_.img.stride[0], expected[0].data());
    copy_rows(src_.img.plane[1], from, 2 * pairs, rows, to, expected[1].data());
    swap_pairs(expected[1], swapped);
    ASSERT_NO_FATAL_FAILURE(convert(kBothWays[run / 4 % 2], run, expected));
  }
}

TEST_F(CscLayout, SixteenBitSamplesLoseTheirLowBits) {
  for (int run = 0; run < 2000; ++run) {
    start(run);
    for (int p = 0; p < 3; ++p) {
      source(p, 2, random.between(-1, 70), random.between(-1, 20));
      destination(p, src_.img.width[p], src_.img.height[p]);
    }
    src_.fill(random);
    TestImage::Contents expected = dst_.contents();
    for (int p = 0; p < 3; ++p) {
      for (int32_t y = 0; y < src_.img.height[p]; ++y) {
        for (int32_t x = 0; x < src_.img.width[p]; ++x) {
          const uint8_t *at =
              src_.img.plane[p] + y * src_.img.stride[p] + 2 * x;
          expected[p][y * dst_.img.stride[p] + x] =
              static_cast<uint8_t>((at[0] | at[1] << 8) >> 2);
        }
      }
    }
    ASSERT_NO_FATAL_FAILURE(
        convert({600, 1, "16-bit", vexo_csc_yuv420Planar16_to_yuv420Planar},
                run, expected));
  }
}

// Each chroma plane is read at the other's stride, with its own size, and
// written at the stride of the plane it goes to.
TEST_F(CscLayout, Yuv420ToYv12SwapsTheChromaPlanes) {
  constexpr int kOther[3] = {0, 2, 1};
  for (int run = 0; run < 200; ++run) {
    TestImage src(VEXO_FMT_YUV420);
    TestImage dst(VEXO_FMT_YV12);
    // Half of the runs have planes without padding.
    const bool tight = run % 2 == 0;
    const auto pad = [&] { return tight ? 0 : random.between(0, 9); };
    const int32_t half = random.between(4, 35);
    const int32_t width[3] = {half * 2, tight ? half : half - 3, half};
    const int32_t height[3] = {random.between(8, 20), random.between(-1, 9), 5};
    const int32_t stride[3] = {half * 2 + pad(), half + pad(), half + pad()};
    for (int p = 0; p < 3; ++p) {
      const int to = kOther[p];
      src.set_plane(p, width[p], height[p], stride[p],
                    plane_size(width[p], height[p], stride[to]));
      // The destination's chroma sizes are not looked at.
      const int32_t dst_stride = width[p] + pad();
      dst.set_plane(to, p == 0 ? 8 : -1, p == 0 ? 8 : -1, dst_stride,
                    plane_size(width[p], height[p], dst_stride));
    }
    src.fill(random);
    TestImage::Contents expected = dst.contents();
    for (int p = 0; p < 3; ++p) {
      const int to = kOther[p];
      copy_rows(src.img.plane[p], stride[to], width[p], height[p],
                dst.img.stride[to], expected[to].data());
    }
    ASSERT_EQ(vexo_csc(&src.img, &dst.img), VEXO_OK);
    ASSERT_TRUE(holds(dst, expected)) << "run " << run;
  }
}

TEST_F(CscLayout, YuyvToYuv420AveragesTheChromaOfRowPairs) {
  TestImage src(VEXO_FMT_YUYV);
  TestImage dst(VEXO_FMT_YUV420);
  const auto check = [&](int32_t width, int32_t height, bool tight) {
    const auto pad = [&] { return tight ? 0 : random.between(0, 17); };
    const Edge edge = random.next() % 2 == 0 ? Edge::kEnd : Edge::kStart;
    const int32_t pairs = (width + 1) / 2;
    const int32_t src_stride = pairs * 4 + pad();
    src.set_plane(0, width, height, src_stride,
                  plane_size(pairs * 4, height, src_stride), edge);
    src.fill(random);
    for (int p = 0; p < 3; ++p) {
      const int32_t columns = p == 0 ? width : pairs;
      const int32_t rows = p == 0 ? height : (height + 1) / 2;
      const int32_t stride = columns + pad();
      // The source alone decides how much is converted.
      dst.set_plane(p, 8, 8, stride, plane_size(columns, rows, stride), edge);
    }
    TestImage::Contents expected = dst.contents();
    for (int32_t y = 0; y < height; ++y) {
      const uint8_t *row = src.img.plane[0] + y * src_stride;
      for (int32_t x = 0; x < width; ++x) {
        expected[0][y * dst.img.stride[0] + x] = row[x * 2];
        for (int p = 1; p < 3 && x % 2 == 0; ++p) {
          uint8_t &c = expected[p][y / 2 * dst.img.stride[p] + x / 2];
          const uint8_t sample = row[x * 2 + (p == 1 ? 1 : 3)];
          c = y % 2 == 0 ? sample : static_cast<uint8_t>((c + sample) >> 1);
        }
      }
    }
    if (width >= 8 && height >= 8) {
      ASSERT_EQ(vexo_csc(&src.img, &dst.img), VEXO_OK);
    } else {
      vexo_csc_yuyv_to_yuv420(src.img.plane, src.img.width, src.img.height,
                              src.img.stride, dst.img.stride, dst.img.plane);
    }
    ASSERT_TRUE(holds(dst, expected)) << width << "x" << height;
  };
  for (const bool tight : {true, false}) {
    for (const int32_t height : {-8, -1, 0, 1, 2, 3, 4, 5, 8, 9, 16}) {
      for (int32_t width = -1; width <= 300; ++width) {
        ASSERT_NO_FATAL_FAILURE(check(width, height, tight));
      }
    }
  }
}

}  // namespace
}  // namespace lox_test
