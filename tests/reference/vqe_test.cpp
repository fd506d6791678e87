// SPDX-License-Identifier: Apache-2.0
// Saturation, sharpening, deblocking and anaglyphs against their rules, sample
// by sample and, where the order counts, in place.
#include <orumlox/unprefixed.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "support/image.h"

namespace lox_test {
namespace {

struct Size {
  int32_t width, height;
};

uint8_t limited(int64_t value) {
  return static_cast<uint8_t>(std::clamp<int64_t>(value, 0, 255));
}

static_assert(sizeof(lut) == 256);
const std::vector<uint8_t> kLutAtLoad(lut, lut + 256);

std::vector<uint8_t> saturation_table(int32_t strength) {
  std::vector<uint8_t> table(256);
  for (int32_t k = 0; k < 128; ++k) {
    table[2 * k] = limited(((k - 128) * strength >> 10) + 128);
    table[2 * k + 1] = table[0];
  }
  return table;
}

TEST(VqeTables, OfEveryValueOfTheStrength) {
  GuardedBuffer table;
  table.reset(256);
  for (int32_t s = INT16_MIN; s <= INT16_MAX; ++s) {
    color_sat_lut(table.data(), static_cast<int16_t>(s));
    ASSERT_TRUE(holds(table, saturation_table(s))) << s;
  }
}

TEST(VqeTables, TheSharedOneIsFilledOnRequest) {
  EXPECT_EQ(kLutAtLoad, std::vector<uint8_t>(256));
  constexpr int32_t kStrengths[][2] = {
      {0, 1180},       {-5, 1180},   {INT32_MIN, 1180}, {1, 1},
      {1023, 1023},    {1024, 1024}, {32767, 32767},    {66560, 1024},
      {98304, -32768}, {65535, -1},  {65536, 0},        {INT32_MAX, -1}};
  for (const auto &[strength, counted] : kStrengths) {
    EXPECT_EQ(vexo_vqe_cs_init(strength), VEXO_OK);
    EXPECT_EQ(std::vector<uint8_t>(lut, lut + 256), saturation_table(counted))
        << strength;
  }
}

class Vqe : public SeededTest {
 protected:
  Edge any_edge() { return Edge{random.between(0, 1)}; }

  // Noise of a range that is often narrow, as in smooth parts, which noise of
  // all values hardly has; and extremes, which may be rare.
  void paint(const GuardedBuffer &plane) {
    const uint32_t range = (1U << random.between(0, 8)) - 1;
    const uint32_t low = (255 - range) / 2 * random.between(0, 2);
    const uint32_t odds = (1U << random.between(0, 5)) - 1;
    for (size_t i = 0; i < plane.size(); ++i) {
      const auto noise = static_cast<uint32_t>(random.next());
      plane.data()[i] = static_cast<uint8_t>(
          noise & odds ? low + (noise >> 8 & range) : (noise >> 16) % 2 * 255);
    }
  }
  void deblock(int kernel, Size size, int32_t stride);

  GuardedBuffer src_, dst_;
  TestImage image_{0};
};

TEST_F(Vqe, ColoursGoThroughTheTable) {
  GuardedBuffer table, planes[4];
  for (int32_t n = -2; n < 1300; ++n) {
    const int32_t count = n > 0 ? n / 4 : n * 1000;
    table.reset(256, any_edge());
    random.fill(table.data(), 256);
    GuardedBuffer *to[2];
    std::vector<uint8_t> expected[2];
    for (int p = 0; p < 2; ++p) {
      planes[p].reset(std::max(count, 0), any_edge());
      planes[p + 2].reset(std::max(count, 0), any_edge());
      random.fill(planes[p].data(), planes[p].size());
      for (const uint8_t s : planes[p].copy()) {
        expected[p].push_back(table.data()[s]);
      }
      to[p] = &planes[n >> p & 1 ? p : p + 2];  // in place or not
    }
    color_sat(table.data(), count, planes[0].data(), planes[1].data(),
              to[0]->data(), to[1]->data());
    for (int p = 0; p < 2; ++p) {
      ASSERT_TRUE(holds(*to[p], expected[p])) << count << ", plane " << p;
    }
  }
}

// The source's size counts, whatever else the records hold.
TEST_F(Vqe, ColoursOfAPictureBecomeZero) {
  for (int32_t n = 0; n < 900; ++n) {
    const int32_t width = n % 90 - 1;
    const int32_t height = width < 0 ? 3 : n / 90 - 1;
    const size_t size = plane_size(width, height, width);
    TestImage src(VEXO_FMT_YUV420), dst(VEXO_FMT_YUV420);
    for (int p = 0; p < 4; ++p) {
      src.set_plane(p, p == 1 ? width : 50, p == 1 ? height : 50, 7, size);
      dst.set_plane(p, 60, 60, n, size, any_edge());
    }
    TestImage::Contents expected = dst.contents();
    expected[1] = expected[2] = std::vector<uint8_t>(size);
    src.img.plane[0] = dst.img.plane[0] = nullptr;
    ASSERT_EQ(vexo_vqe_cs(&src.img, &dst.img), VEXO_OK);
    ASSERT_TRUE(holds(dst, expected)) << width << "x" << height;
  }
}

std::vector<uint8_t> sharpened(const std::vector<uint8_t> &src, int32_t width,
                               int32_t height) {
  std::vector<uint8_t> dst = src;
  for (int32_t y = 2; y + 2 < height; ++y) {
    for (int32_t x = 2; x + 2 < width; ++x) {
      const auto at = [&](int32_t dx, int32_t dy) {
        return int32_t{src[(y + dy) * width + x + dx]};
      };
      const int32_t c = at(0, 0),
                    near = at(-1, 0) + at(1, 0) + at(0, -1) + at(0, 1);
      const int32_t far = at(-2, 0) + at(2, 0) + at(0, -2) + at(0, 2) +
                          at(-1, -1) + at(1, -1) + at(-1, 1) + at(1, 1);
      dst[y * width + x] = limited(c + ((16 * c - (2 * near + far)) >> 4));
    }
  }
  return dst;
}

TEST_F(Vqe, DetailIsEnhanced) {
  std::vector<Size> sizes = {{1920, 37}, {1917, 22}, {333, 131},    {64, 301},
                             {5, 999},   {-1, 9},    {9, -1},       {0, 5},
                             {5, 0},     {-3, -3},   {5, INT32_MIN}};
  for (int32_t n = 0; n < 81; ++n) sizes.push_back({1 + n % 9, 1 + n / 9});
  for (int32_t n = 0; n < 2400; ++n) sizes.push_back({1 + n % 300, 5 + n % 17});
  for (const auto &[width, height] : sizes) {
    src_.reset(plane_size(width, height, width), any_edge());
    dst_.reset(src_.size(), any_edge());
    paint(src_);
    const std::vector<uint8_t> source = src_.copy();
    if (random.between(0, 3) > 0) {
      detail_enh(src_.data(), width, height, dst_.data(),
                 random.between(INT32_MIN, INT32_MAX));
    } else {
      // Strides are not looked at, nor is chroma: null pointers.
      TestImage from(VEXO_FMT_YUV420), to(VEXO_FMT_YUV420);
      from.img.width[0] = width;
      from.img.height[0] = height;
      from.img.plane[0] = src_.data();
      to.img.plane[0] = dst_.data();
      ASSERT_EQ(vexo_vqe_de(&from.img, &to.img, random.between(-2, 9)),
                VEXO_OK);
    }
    ASSERT_TRUE(holds(dst_, sharpened(source, width, height)))
        << width << "x" << height;
    ASSERT_TRUE(holds(src_, source));
  }
  EXPECT_EQ(vexo_vqe_dejagging(), VEXO_OK);
}

// The four samples from p on, `step` bytes apart.
void filter(uint8_t *p, ptrdiff_t step, int64_t strength) {
  const int32_t a = p[0], b = p[step], c = p[2 * step], d = p[3 * step];
  const int32_t v = a - 4 * b + 4 * c - d;
  const int64_t size = std::abs(v >> 3);
  const int64_t m =
      std::max<int64_t>(0, size - std::max<int64_t>(0, 2 * (size - strength)));
  const int64_t d1 = v < 0 ? -m : m;
  const int64_t d2 = std::clamp<int64_t>((a - d) >> 2, -(m >> 1), m >> 1);
  p[step] = limited(b + d1);
  p[2 * step] = limited(c - d1);
  p[0] = static_cast<uint8_t>(a - d2);
  p[3 * step] = static_cast<uint8_t>(d + d2);
}

// Passes: 1 the edges between rows, 2 those between columns, 3 both.
void filter_edges(uint8_t *plane, int passes, int64_t strength, Size size,
                  ptrdiff_t stride) {
  if (strength < 1) return;
  for (int32_t k = 1; passes & 1 && k < size.height / 8; ++k) {
    for (int32_t x = 0; x < size.width; ++x) {
      filter(plane + (8 * k - 2) * stride + x, stride, strength);
    }
  }
  for (int32_t k = 1; passes & 2 && k < size.width / 8; ++k) {
    for (int32_t y = 0; y < size.height; ++y) {
      filter(plane + y * stride + 8 * k - 2, 1, strength);
    }
  }
}

// Kernels of plane 0, by the passes they make; 0 is that of an image, whose
// planes are unrelated, some of them null. Nobody looks at the fourth.
constexpr decltype(vexo_dbf8x8) *kKernels[] = {
    nullptr, vexo_dbf8x8_h263_hor, vexo_dbf8x8_h263_ver, vexo_dbf8x8};
void Vqe::deblock(int kernel, Size size, int32_t stride) {
  constexpr int32_t kExtremes[] = {INT32_MIN, -1, 0, 255, 1000, INT32_MAX};
  const int32_t strengths[] = {random.between(1, 15), random.between(16, 170),
                               kExtremes[random.between(0, 5)]};
  const int32_t strength = strengths[std::max(0, random.between(-2, 2))];
  const bool refused = kernel == 0 && (strength < 0 || strength > 15);
  const int32_t counted =
      refused ? 0 : std::min(strength, kernel == 3 ? 12 : INT32_MAX);
  TestImage::Contents expected;
  Size s = size;
  for (int p = 0, step = stride; p < 4; ++p) {
    const size_t bytes = plane_size(s.width, s.height, std::abs(step));
    const ptrdiff_t first = step < 0 && bytes ? (s.height - 1) * -step : 0;
    image_.set_plane(p, s.width, s.height, step, bytes, any_edge());
    paint(image_.buffer[p]);
    expected[p] = image_.buffer[p].copy();
    image_.img.plane[p] += first;
    if (kernel == 0 && random.between(0, 4) == 0) {
      image_.img.plane[p] = nullptr;
    } else if (p == 0 || (p < 3 && kernel == 0)) {
      filter_edges(expected[p].data() + first, kernel ? kernel : 3, counted, s,
                   step);
    }
    s = {random.between(-1, 40), random.between(-1, 30)};
    step = (s.width + random.between(-2, 5)) * (random.between(0, 1) ? 1 : -1);
  }
  if (kernel > 0) {
    kKernels[kernel](image_.img.plane[0], strength, stride, size.width,
                     size.height);
  } else {
    image_.img.format = random.between(-1, 700);
    ASSERT_EQ(vexo_dbf8x8_yuv(&image_.img, strength),
              refused ? VEXO_ERR_ARG : VEXO_OK);
  }
  ASSERT_TRUE(holds(image_, expected))
      << "kernel " << kernel << ", strength " << strength << ", " << size.width
      << "x" << size.height << ", stride " << stride;
}

TEST_F(Vqe, EdgesAreFilteredSampleBySample) {
  std::vector<Size> sizes = {{-3, 24}, {24, -3},   {0, 24},    {24, 0},
                             {-9, -9}, {1920, 24}, {1923, 31}, {22, 300}};
  for (int32_t n = 1; n <= 300; ++n) sizes.push_back({n, 9 + n % 31});
  for (int32_t n = 1; n <= 80; ++n) sizes.push_back({n % 41, n});
  for (const Size &size : sizes) {
    const int32_t w = size.width;
    const int32_t more = w + random.between(2, 40), any = random.between(3, 70);
    const int32_t strides[] = {w, w + 1, w - 1, more, any, 0, 1, 2, 7, 8, 9};
    for (int n = 0; n < 88; ++n) {
      deblock(n % 4, size, (n & 4 ? 1 : -1) * strides[n / 8]);
      if (HasFatalFailure()) return;
    }
  }
}

// Both views lie in one plane, as those of a frame do.
TEST_F(Vqe, ViewsBecomeAnAnaglyph) {
  for (int32_t n = -12; n < 4000; ++n) {
    const int32_t mode = n % 3;  // below 1 the kernel, whose rows may be any
    const int32_t row_bytes = n < 3990 ? n / 9 * (mode < 1 ? 1 : 3) : 5757;
    const int32_t rows = random.between(mode < 1 ? -1 : 0, 3);
    const int32_t row = std::max(row_bytes, 0), pixels = row / 3 * 3;
    const int32_t src_pitch = 2 * row + (mode < 1 ? random.between(0, 9) : 0);
    const int32_t dst_pitch = row + (mode < 1 ? random.between(0, 9) : 0);
    src_.reset(plane_size(row + pixels, rows, src_pitch), any_edge());
    dst_.reset(plane_size(row, rows, dst_pitch), any_edge());
    random.fill(src_.data(), src_.size());
    const uint8_t *a = src_.data() + (mode == 2 ? row : 0);
    const uint8_t *b = src_.data() + (mode == 2 ? 0 : row);
    std::vector<uint8_t> expected = dst_.copy();
    for (int32_t y = 0; y < rows; ++y) {
      for (int32_t i = 0; i < pixels; ++i) {
        expected[y * dst_pitch + i] = (i % 3 ? b : a)[y * src_pitch + i];
      }
    }
    if (mode < 1) {
      vexo_fpa_frm_pack(a, b, dst_.data(), rows, row_bytes, src_pitch,
                        dst_pitch);
    } else {
      TestImage src(VEXO_FMT_RGB888), dst(VEXO_FMT_RGB888);
      src.set_plane(0, row / 3 * 2, rows, src_pitch, 0);
      dst.set_plane(0, row / 3, rows, dst_pitch, 0);
      src.img.plane[0] = src_.data();
      dst.img.plane[0] = dst_.data();
      ASSERT_EQ(vexo_fpa(&src.img, &dst.img, mode), VEXO_OK);
    }
    ASSERT_TRUE(holds(dst_, expected))
        << "mode " << mode << ", " << rows << " rows of " << row_bytes;
  }
}

TEST_F(Vqe, RefusedPicturesStay) {
  // For an anaglyph: sizes and strides of source and destination, the mode.
  // Only the first fits; of the last one only the low 32 bits of a product do.
  constexpr int32_t k = 1 << 29;
  constexpr int32_t kFrames[][7] = {{4, 2, 12, 2, 2, 6, 1},
                                    {4, 2, 12, 2, 2, 6, 0},
                                    {4, 2, 12, 2, 2, 6, 3},
                                    {5, 2, 15, 2, 2, 6, 1},
                                    {3, 2, 9, 2, 2, 6, 1},
                                    {4, 1, 12, 2, 2, 6, 2},
                                    {4, 2, 12, 2, 1, 6, 2},
                                    {4, 2, 13, 2, 2, 6, 2},
                                    {4, 2, 12, 2, 2, 8, 2},
                                    {4, 2, 12, 2, 2, 6, -1},
                                    {2 * k, 0, -2 * k, k, 0, 3 * k, 1}};
  constexpr int32_t kFormats[] = {
      VEXO_FMT_YUV420, VEXO_FMT_RGB888, VEXO_FMT_YUV400, VEXO_FMT_YV12, -1,
      VEXO_FMT_NV12,   VEXO_FMT_BGR888, 0x10001,         0x10190};
  for (const auto &f : kFrames) {
    for (int n = 0; n < 81; ++n) {
      const int32_t formats[] = {kFormats[n / 9], kFormats[n % 9]};
      TestImage src(formats[0]), dst(formats[1]);
      for (int p = 0; p < 3; ++p) {
        src.set_plane(p, f[0], f[1], f[2], 30);
        dst.set_plane(p, f[3], f[4], f[5], 30);
      }
      const TestImage::Contents before = dst.contents();
      const bool fits = n == 10 && &f == kFrames;
      if (n > 0) {
        EXPECT_EQ(vexo_vqe_cs(&src.img, &dst.img), VEXO_ERR_ARG);
        EXPECT_EQ(vexo_vqe_de(&src.img, &dst.img, 1), VEXO_ERR_ARG);
      }
      EXPECT_EQ(vexo_fpa(&src.img, &dst.img, f[6]),
                fits ? VEXO_OK : VEXO_ERR_ARG);
      EXPECT_TRUE(fits || holds(dst, before))
          << formats[0] << " to " << formats[1] << ", frame " << &f - kFrames;
    }
  }
}

}  // namespace
}  // namespace lox_test
