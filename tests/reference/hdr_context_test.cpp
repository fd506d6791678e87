// SPDX-License-Identifier: Apache-2.0
// What comes before pixels: the context, the tone curve, the choice of the
// final nit and the lines that are logged.
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "hdr/context.h"
#include "hdr_log.h"
#include "hdr_pictures.h"
#include "orumlox/unprefixed.h"

namespace lox_test {
namespace {

using Lines = std::vector<std::string>;
constexpr int32_t kNits[] = {1000, 2000, 4000, 4001};

template <typename T, size_t n>
void expect_table(const T (&actual)[n], const T (&expected)[n]) {
  for (size_t i = 0; i < n; ++i) {
    ASSERT_EQ(actual[i], expected[i]) << "entry " << i;
  }
}

// Every member is filled whatever the memory holds.
TEST(HdrContext, HasEveryMember) {
  vexo_img src{};
  vexo_img dst{};
  int n = 0;
  for (const int32_t nit : kNits) {
    for (const int32_t hlg : {0, 1}) {
      for (const int32_t width :
           {1, 7, 8, 16, 40, 41, 48, 64, 96, 1920, 2000}) {
        src.width[0] = width;
        src.height[0] = 17 + width;
        const int32_t variant = n++ % 3;
        const auto expected = model_context(src, dst, nit, variant, hlg != 0);
        const auto memory = std::make_unique<vexo_hdr_context>();
        vexo_hdr_context &c = *memory;
        std::memset(&c, 0xA5, sizeof c);
        lox::build_hdr_context(&c, &src, &dst, nit, variant, hlg);
        SCOPED_TRACE("nit " + std::to_string(nit) + ", HLG " +
                     std::to_string(hlg) + ", width " + std::to_string(width));
        EXPECT_EQ(c.width, width);
        EXPECT_EQ(c.height, 17 + width);
        EXPECT_EQ(c.scale, expected.scale);
        EXPECT_EQ(c.chunk, expected.chunk);
        EXPECT_EQ(c.variant, variant);
        EXPECT_EQ(c.hlg, hlg);
        EXPECT_EQ(c.s, expected.s);
        EXPECT_EQ(c.t, expected.t);
        EXPECT_EQ(c.knee, expected.knee);
        EXPECT_EQ(c.n, expected.n);
        EXPECT_NEAR(c.a, expected.a, 1e-15 * expected.a);
        EXPECT_EQ(c.src, &src);
        EXPECT_EQ(c.dst, &dst);
        expect_table(c.pq, expected.pq);
        expect_table(c.gain, expected.gain);
        expect_table(c.hlg_linear, expected.hlg_linear);
        expect_table(c.gamma, expected.gamma);
        ASSERT_FALSE(testing::Test::HasFailure());
      }
    }
  }
}

// Worked out apart from the model, with 40 digits.
TEST(HdrContext, HasCurvesWorkedOutByHand) {
  const struct {
    int32_t nit, n;
    double a;
  } kCurves[] = {{1000, 2, 1.1111111111111111},
                 {2000, 4, 1.0387583836457881},
                 {4000, 9, 0.96129337316600758},
                 {4001, 13, 0.96826606685080509}};
  for (const auto &k : kCurves) {
    const vexo_img img{};
    vexo_hdr_context c;
    lox::build_hdr_context(&c, &img, &img, k.nit, 0, 0);
    EXPECT_EQ(c.n, k.n);
    EXPECT_NEAR(c.a, k.a, 2e-15);
    EXPECT_EQ(c.gain[256], 256) << "1 is mapped to 1";
  }
}

TEST(HdrContext, ToneCurve) {
  const double huge = 1e300;  // the knee is not needed
  EXPECT_NEAR(TMO_VD_Norm(0.5, 2, 0.1, huge, 2, 10.0 / 9), 7.0 / 9, 1e-15);
  // With a step at t, so that its side shows.
  EXPECT_EQ(TMO_VD_Norm(0.25, 3, 0.25, huge, 2, 0.5), 0.75);
  EXPECT_NEAR(TMO_VD_Norm(std::nextafter(0.25, 1.0), 3, 0.25, huge, 2, 0.5),
              0.34375, 1e-15);
  for (const int32_t nit : kNits) {
    const vexo_hdr_context c = fill_tables(nit, false);
    for (int i = 0; i <= 1000; ++i) {
      const double x = i / 1000.0;
      ASSERT_NEAR(TMO_VD_Norm(x, c.s, c.t, -huge, c.n, c.a),
                  tone_curve(x, c.s, c.t, c.n, c.a), 4e-15)
          << nit << ": " << x;
    }
  }
}

class HdrNit : public HdrPictures {
 protected:
  void SetUp() override { take_log(); }
  static Lines max_line(int32_t largest) {
    return {"4 VEXO_HDR: maxY = " + std::to_string(largest) + ", \n"};
  }
};

// A picture of dim samples with one bright one, which counts where it is looked
// at. The buffer ends with the last row that is needed.
TEST_F(HdrNit, IsMeasured) {
  constexpr int32_t kLargest[] = {1, 750, 751, 810, 811, 1023, 32768, 65535};
  GuardedBuffer luma;
  int n = 0;
  for (const int32_t width : {1, 2, 3, 17, 64, 1999, 2000, 2001, 2004}) {
    const int32_t step = width > 2000 ? 4 : 2;
    for (const int32_t height : {1, 2, 3, 4, 5, 6, 9}) {
      const int32_t rows = (height - 1) / step * step + 1;
      for (int times = 0; times < 60; ++times) {
        luma.reset(size_t{2} * width * rows, source_edge());
        void *const data = luma.data();
        uint16_t *const samples = static_cast<uint16_t *>(data);
        std::fill_n(samples, size_t{1} * width * rows, uint16_t{1});
        const int32_t x = times == 0 ? (width - 1) / step * step
                                     : random.between(0, width - 1);
        const int32_t y = times == 0 ? rows - 1 : random.between(0, rows - 1);
        const int32_t bright = kLargest[n++ % std::size(kLargest)];
        samples[ptrdiff_t{y} * width + x] = static_cast<uint16_t>(bright);
        const int32_t largest = x % step == 0 && y % step == 0 ? bright : 1;
        ASSERT_EQ(Analyze_SrcLuma(width, height, samples),
                  measured_nit(largest))
            << width << "x" << height << ": " << bright << " at " << x << ", "
            << y;
        ASSERT_EQ(take_log(), max_line(largest));
      }
    }
  }
  for (const int32_t height : {0, -1, INT32_MIN}) {
    EXPECT_EQ(Analyze_SrcLuma(64, height, nullptr), 1000);
    EXPECT_EQ(Analyze_SrcLuma(height, 64, nullptr), 1000);
    EXPECT_EQ(take_log(), (Lines{max_line(0)[0], max_line(0)[0]}));
  }
}

// The choice itself and, by every call, its way into the source and the log.
TEST_F(HdrNit, IsChosenWrittenAndLogged) {
  constexpr int32_t kNominal[] = {INT32_MIN, -1,    0,     1500,
                                  1501,      65636, 66000, INT32_MAX};
  constexpr int32_t kModes[] = {1, 1, 1, 0, 2, -1, 257, INT32_MIN};
  dst_.img.format = VEXO_FMT_YUV420;
  for (int n = 0; n < 400; ++n) {
    const int32_t mode = kModes[n % 8];
    const int32_t nominal = kNominal[n / 8 % 8];
    // Rows mostly padded, which the measurement does not know of, and no rows.
    const bool empty = n % 5 == 0;
    make_source(n % 3 == 0 ? 601 : 600, empty ? random.between(-1, 0) : 21,
                empty ? random.between(0, 9) : 12,
                n % 2 == 0 ? Content::kDim : Content::kRandom, mode == 1);
    vexo_img &src = src_.img;
    for (int call = -1; call < kCallCount; ++call) {
      src.mode = mode;
      src.source_nit = nominal;
      const int32_t nit = final_nit(src);
      Lines expected = {"4 VEXO_HDR: source : " + std::to_string(mode) +
                        ", source_nit : " + std::to_string(nominal) + "\n"};
      if (mode == 1) {
        const void *const luma = src.plane[0];
        expected.push_back(
            max_line(largest_luma(src.width[0], src.height[0],
                                  static_cast<const uint16_t *>(luma)))[0]);
      }
      expected.push_back("4 VEXO_HDR: final nit : " + std::to_string(nit) +
                         "\n");
      if (call < 0) {
        ASSERT_EQ(lox::choose_final_nit(&src), nit);
        ASSERT_EQ(src.source_nit, nit);
      } else {
        ASSERT_NO_FATAL_FAILURE(check(kCalls[call], VEXO_FMT_YUV420));
      }
      ASSERT_EQ(take_log(), expected);
    }
  }
  EXPECT_EQ(vexo_hdr_to_sdr(&src_.img, &dst_.img, 3), VEXO_ERR_ARG);
  EXPECT_EQ(take_log(), Lines{});
}

}  // namespace
}  // namespace lox_test
