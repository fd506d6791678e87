// SPDX-License-Identifier: Apache-2.0
// Whole pictures and bands of every kind against the model: sources,
// destinations, sizes, strides, codes that get nothing, calls that are refused.
#include <orumlox/hdr.h>

#include <cstdint>
#include <string>
#include <vector>

#include "common/isa.h"
#include "hdr_log.h"
#include "hdr_pictures.h"

namespace lox_test {
namespace {

using Hdr = HdrPictures;

// What the standard error stream gets of a call.
template <typename Call>
std::string errors_of(const Call &call) {
  testing::internal::CaptureStderr();
  call();
  return testing::internal::GetCapturedStderr();
}
std::string lines(const vexo_hdr_context &c, int32_t rows) {
  const int32_t chunks = (c.width + c.chunk - 1) / c.chunk * rows;
  std::string all;
  for (int32_t i = 0; i < chunks; ++i) {
    all += "_vexo_hdr10_to_sdr8(438): Unsupported Color Space [" +
           std::to_string(c.dst->format) + "]\n";
  }
  return all;
}

// Worked out apart from the model, with 40 digits.
TEST_F(Hdr, PixelsWorkedOutByHand) {
  const struct {
    int32_t nominal, call, y, u, v;
    Pixel pixel;
  } kPixels[] = {{1000, 0, 64, 512, 512, {16, 16, 16, 16, 128, 128}},
                 {1000, 0, 940, 512, 512, {235, 235, 235, 235, 128, 128}},
                 {1000, 0, 0, 0, 0, {16, 72, 16, 56, 105, 101}},
                 {1000, 0, 500, 480, 560, {176, 92, 82, 109, 113, 171}},
                 {1000, 1, 500, 480, 560, {168, 97, 86, 111, 114, 163}},
                 {4000, 0, 600, 560, 470, {16, 156, 216, 130, 175, 53}},
                 {1000, 3, 502, 512, 512, {119, 119, 119, 119, 128, 128}},
                 {1000, 3, 600, 480, 560, {176, 135, 126, 143, 118, 149}}};
  for (const auto &k : kPixels) {
    make_source(VEXO_FMT_YUV420PLANAR16, 1, 1, Content::kRandom);
    const int32_t codes[] = {k.y, k.u, k.v};
    for (int p = 0; p < 3; ++p) {
      const uint16_t word = static_cast<uint16_t>(codes[p]);
      std::memcpy(src_.img.plane[p], &word, sizeof word);
    }
    Pixel actual{};
    for (const int32_t format : {VEXO_FMT_RGB888, VEXO_FMT_YUV420}) {
      src_.img.mode = 0;
      src_.img.source_nit = k.nominal;
      ASSERT_NO_FATAL_FAILURE(check(kCalls[k.call], format));
      uint8_t *const *plane = dst_.img.plane;
      if (format == VEXO_FMT_RGB888) {
        actual = {plane[0][0], plane[0][1], plane[0][2], 0, 0, 0};
      } else {
        actual.y = plane[0][0];
        actual.u = plane[1][0];
        actual.v = plane[2][0];
      }
    }
    EXPECT_TRUE(actual == k.pixel) << k.y << " " << k.u << " " << k.v;
  }
}

TEST_F(Hdr, EveryDestinationAndSize) {
  std::vector<int32_t> widths = {72, 80, 96, 127, 160, 333, 2003};
  for (int32_t width = 1; width <= 70; ++width) widths.push_back(width);
  int n = 0;
  for (const int32_t format : kDestinations) {
    for (const int32_t width : widths) {
      const int32_t height = n % 22 == 21 ? 40 : 1 + n % 22;
      const Content content = static_cast<Content>(random.between(0, 4));
      make_source(n / kCallCount % 2 == 0 ? 600 : 601, width, height, content);
      ASSERT_NO_FATAL_FAILURE(check(kCalls[n % kCallCount], format));
      ++n;
    }
  }
}

TEST_F(Hdr, EveryCode) {
  for (const Call &call : kCalls) {
    for (const int32_t source : {600, 601}) {
      for (const int32_t format : {502, 6}) {
        make_source(source, 64, 64, Content::kSweep);
        ASSERT_NO_FATAL_FAILURE(check(call, format));
      }
    }
  }
}

// Every U with every V, and four lumas for each of these.
TEST_F(Hdr, EveryValueOfChroma) {
  constexpr int32_t kWidth = 2048, kHeight = 16;
  make_source(VEXO_FMT_P010LE, kWidth, kHeight, Content::kRandom);
  dst_.img.format = VEXO_FMT_RGBA8888;
  for (int32_t call = 0; call < 4; ++call) {
    const auto c = model_context(src_.img, dst_.img, 4001, kCalls[call].variant,
                                 kCalls[call].hlg);
    for (int32_t v = 0; v < 1024; v += kHeight / 2) {
      for (int32_t i = 0; i < kWidth / 2 * kHeight / 2; ++i) {
        const int32_t row = i / (kWidth / 2);
        const uint16_t pair[] = {static_cast<uint16_t>(i << 6),
                                 static_cast<uint16_t>((v + row) << 6)};
        std::memcpy(src_.img.plane[1] + 2 * (row * (src_.img.stride[1] / 2) +
                                             i % (kWidth / 2) * 2),
                    pair, sizeof pair);
      }
      const auto expected = make_room(band(c, 0, kHeight));
      ASSERT_EQ(_vexo_hdr10_to_sdr8(&c, 0, kHeight), 0);
      ASSERT_TRUE(holds(dst_, expected)) << kCalls[call].name << ", V " << v;
    }
  }
}

// Bands of any length, odd first rows and ends beyond the height among them,
// with tables that hold anything within the limits, or beyond them, where only
// the bytes around the pixels count. By either way to look tables up.
TEST_F(Hdr, AnyBandOfAnyContext) {
  const bool gathers = lox::gathering();
  constexpr int32_t kMaxGain = 4095;
  constexpr struct {
    int32_t linear_low, linear_high, gain_high;
  } kLimits[] = {{32700, 32767, 700},
                 {0, 32767, 700},
                 {0, 32767, kMaxGain},
                 {32767, 32767, kMaxGain},
                 {0, 65535, 65535}};
  for (int n = 0; n < 1800; ++n) {
    make_source(random.between(600, 601), random.between(1, 100),
                random.between(1, 30),
                static_cast<Content>(random.between(0, 3)));
    dst_.img.format = kDestinations[n % std::size(kDestinations)];
    auto c = model_context(src_.img, dst_.img, 1000, random.between(-1, 2),
                           random.between(0, 1) != 0);
    const auto &limits = kLimits[random.between(0, 4)];
    const bool beyond = limits.gain_high > kMaxGain;
    for (uint16_t *table : {c.pq, c.hlg_linear}) {
      for (int i = 0; i < 1024; ++i) {
        table[i] = static_cast<uint16_t>(
            random.between(limits.linear_low, limits.linear_high));
      }
    }
    for (uint16_t &g : c.gain) {
      g = static_cast<uint16_t>(random.between(0, limits.gain_high));
    }
    random.fill(c.gamma, sizeof c.gamma);
    const int32_t first = random.between(0, c.height + 1);
    const int32_t end = random.between(first - 1, c.height + 5);
    const auto writes = band(c, first, end);
    auto expected = make_room(writes);
    lox::set_gathering(n % 2 == 0);
    const auto blank = dst_.contents();
    ASSERT_EQ(_vexo_hdr10_to_sdr8(&c, -random.between(1, 8), end), 0);
    ASSERT_TRUE(holds(dst_, blank));
    const int32_t status = _vexo_hdr10_to_sdr8(&c, first, end);
    for (const Write &w : writes) {
      if (beyond) expected[w.plane][w.at] = dst_.img.plane[w.plane][w.at];
    }
    const auto written = holds(dst_, expected);
    ASSERT_TRUE(status == 0 && written)
        << src_.img.format << " to " << dst_.img.format << ", " << c.width
        << "x" << c.height << ", HLG " << c.hlg << ", variant " << c.variant
        << ", rows " << first << " to " << end << ", gains to "
        << limits.gain_high << ": " << status << " " << written.message();
  }
  lox::set_gathering(gathers);
}

TEST_F(Hdr, UnsupportedDestinationsGetLinesAlone) {
  for (const int32_t format : kUnsupported) {
    for (const int32_t width : {1, 8, 9, 32, 48, 80, 97}) {
      const int32_t height = random.between(1, 9);
      const Call &call = kCalls[random.between(0, kCallCount - 1)];
      make_source(random.between(600, 601), width, height, Content::kRandom);
      dst_.img.format = format;
      const auto c = model_context(src_.img, dst_.img, 1000, 0, call.hlg);
      EXPECT_EQ(errors_of([&] { check(call, format); }), lines(c, height));
      const int32_t first = random.between(0, height - 1);
      EXPECT_EQ(errors_of([&] { _vexo_hdr10_to_sdr8(&c, first, height + 1); }),
                lines(c, height - first));
      ASSERT_FALSE(HasFailure()) << format << ", " << width << "x" << height;
    }
  }
}

TEST_F(Hdr, SizesBelowOneGetNothing) {
  constexpr int32_t kSizes[][2] = {{0, 5},          {5, 0},         {-1, 5},
                                   {5, -3},         {0, 0},         {-7, -7},
                                   {32, INT32_MIN}, {INT32_MIN, 32}};
  for (const auto &[width, height] : kSizes) {
    for (const int32_t format : {400, 500, 1, 4, 6, 100, 201}) {
      const Call &call = kCalls[random.between(0, kCallCount - 1)];
      make_source(random.between(600, 601), width, height, Content::kRandom);
      EXPECT_EQ(errors_of([&] { check(call, format); }), "");
      ASSERT_FALSE(HasFailure()) << format << ", " << width << "x" << height;
    }
  }
}

// Their planes are not looked at where the nit is not measured.
TEST_F(Hdr, OtherSourcesAreZero) {
  for (const int32_t source : {INT32_MIN, -1, 0, 6, 500, 599, 602, 1625}) {
    for (const Call &call : kCalls) {
      make_source(source, random.between(1, 70), random.between(1, 12),
                  Content::kRandom);
      src_.img.mode = 0;
      ASSERT_NO_FATAL_FAILURE(check(call, kDestinations[random.between(0, 7)]));
    }
  }
}

TEST_F(Hdr, OtherKindsAreRefused) {
  for (const int32_t kind : {INT32_MIN, -1, 0, 3, 5, 6, 7, 8, 257, INT32_MAX}) {
    make_source(601, 16, 16, Content::kRandom);
    dst_.img.format = VEXO_FMT_NV12;
    make_room(picture(model_context(src_.img, dst_.img, 1000, 0, false)));
    const auto source = src_.contents();
    const auto blank = dst_.contents();
    const vexo_img described = src_.img;
    EXPECT_EQ(vexo_hdr_to_sdr(&src_.img, &dst_.img, kind), VEXO_ERR_ARG);
    EXPECT_TRUE(describes(described)) << kind;
    EXPECT_TRUE(holds(src_, source)) << kind;
    EXPECT_TRUE(holds(dst_, blank)) << kind;
  }
}

}  // namespace
}  // namespace lox_test
