// SPDX-License-Identifier: Apache-2.0
// Tone mapping of every code; pixels and curves worked out by hand; the lines
// that are logged.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "hdr/context.h"
#include "hdr_log.h"
#include "orumlox/unprefixed.h"
#include "rules/hdr_rule.h"
#include "rules/rules.h"
#include "support/pages.h"

namespace lox_test {
namespace {

// Entries beyond the limits give any pixels, but no bytes around them.
int32_t hostile_band(const vexo_hdr_context *context, int32_t first,
                     int32_t end) {
  vexo_hdr_context c = *context;
  std::fill_n(c.gain, std::size(c.gain), uint16_t{65535});
  for (size_t i = 0; i < std::size(c.pq); ++i) {
    c.pq[i] = c.hlg_linear[i] = static_cast<uint16_t>(~i);
  }
  return _vexo_hdr10_to_sdr8(&c, first, end);
}
TEST(Hdr, AnyTablesStayInside) {
  Function band = find(hdr_family, "_vexo_hdr10_to_sdr8");
  band.address = AnyFunction(hostile_band);
  for (uint64_t seed = 0; seed < 300; ++seed) digest_of_case(band, seed);
}

// One row of 10-bit pixels, and room for what they become.
struct Row {
  explicit Row(std::vector<uint16_t> luma, std::vector<uint16_t> pairs)
      : words{std::move(luma), std::move(pairs)} {
    src.format = VEXO_FMT_P010LE;
    src.width[0] = static_cast<int32_t>(words[0].size());
    src.height[0] = 1;
    for (int p = 0; p < 3; ++p) {
      room[p].resize(4 * words[0].size());
      dst.plane[p] = room[p].data();
      for (uint16_t &word : words[p % 2])
        word = static_cast<uint16_t>(word << (p == 2 ? 0 : 6));
      void *const plane = words[p % 2].data();
      src.plane[p] = static_cast<uint8_t *>(plane);
    }
  }
  std::vector<uint16_t> words[2];
  std::vector<uint8_t> room[3];
  vexo_img src = {}, dst = {};
};

// Worked out apart from the model, with 40 digits.
TEST(Hdr, PixelsWorkedOutByHand) {
  const struct {
    int32_t nominal, kind;
    uint16_t y, u, v;
    std::vector<uint8_t> rgb, yuv;
  } kPixels[] = {{1000, 1, 64, 512, 512, {16, 16, 16}, {16, 128, 128}},
                 {1000, 1, 940, 512, 512, {235, 235, 235}, {235, 128, 128}},
                 {1000, 1, 0, 0, 0, {16, 72, 16}, {56, 105, 101}},
                 {1000, 1, 500, 480, 560, {176, 92, 82}, {109, 113, 171}},
                 {1000, 2, 500, 480, 560, {168, 97, 86}, {111, 114, 163}},
                 {4000, 1, 600, 560, 470, {16, 156, 216}, {130, 175, 53}},
                 {1000, 4, 502, 512, 512, {119, 119, 119}, {119, 128, 128}},
                 {1000, 4, 600, 480, 560, {176, 135, 126}, {143, 118, 149}}};
  for (const auto &k : kPixels) {
    Row row({k.y}, {k.u, k.v});
    row.src.source_nit = k.nominal;
    row.dst.format = VEXO_FMT_RGB888;
    ASSERT_EQ(vexo_hdr_to_sdr(&row.src, &row.dst, k.kind), VEXO_OK);
    row.room[0].resize(3);
    EXPECT_EQ(row.room[0], k.rgb) << k.y << " " << k.u << " " << k.v;
    row.dst.format = VEXO_FMT_YUV420;
    ASSERT_EQ(vexo_hdr_to_sdr(&row.src, &row.dst, k.kind), VEXO_OK);
    for (int p = 0; p < 3; ++p) EXPECT_EQ(row.room[p][0], k.yuv[p]) << p;
  }
}

// Every U with every V, and two lumas for each of these.
TEST(Hdr, EveryValueOfChroma) {
  Random random(1);
  for (const auto &[nit, variant, hlg] :
       {std::tuple{4001, 0, false}, {1000, 1, false}, {4000, 0, true}}) {
    for (uint16_t v = 0; v < 1024; ++v) {
      std::vector<uint16_t> luma(2048), pairs(2048);
      for (uint16_t x = 0; x < 2048; ++x) {
        luma[x] = static_cast<uint16_t>(random.next() % 1024);
        pairs[x] = x % 2 == 0 ? x / 2 : v;
      }
      Row row(luma, pairs), same(luma, pairs);
      row.dst.format = same.dst.format = VEXO_FMT_RGBA8888;
      auto c = model_context(&row.src, &row.dst, nit, variant, hlg);
      _vexo_hdr10_to_sdr8(&c, 0, 1);
      c.dst = &same.dst;
      tone_map_band({}, &c, 0, 1);
      ASSERT_EQ(row.room[0], same.room[0]) << nit << ", V " << v;
    }
  }
}

// Of every chunk of every row a line.
TEST(Hdr, UnsupportedDestinationsGetLinesAlone) {
  for (const int32_t format : {200, 201, 399, 401, 499, 501, 503, 599}) {
    for (const int32_t width : {1, 8, 9, 32, 48, 80, 97}) {
      vexo_img src = {}, dst = {};
      src.format = VEXO_FMT_NV12;
      src.width[0] = width;
      src.height[0] = 5;
      dst.format = format;
      testing::internal::CaptureStderr();
      EXPECT_EQ(vexo_hlg_to_sdr8(&src, &dst), VEXO_OK);
      const auto c = model_context(&src, &dst, 1000, 0, true);
      _vexo_hdr10_to_sdr8(&c, 3, 6);
      std::string expected;
      for (int32_t i = 0; i < (width + c.chunk - 1) / c.chunk * 7; ++i) {
        expected += "_vexo_hdr10_to_sdr8(438): Unsupported Color Space [" +
                    std::to_string(format) + "]\n";
      }
      EXPECT_EQ(testing::internal::GetCapturedStderr(), expected) << width;
    }
  }
}

// Every member is filled whatever the memory holds.
TEST(HdrContext, HasEveryMember) {
  for (const int32_t nit : {1000, 2000, 4000, 4001}) {
    for (const int32_t width : {1, 7, 8, 16, 40, 48, 64, 1920, 2000}) {
      vexo_img src = {}, dst = {};
      src.width[0] = width;
      src.height[0] = 17 + width;
      const int32_t variant = width % 3, hlg = width % 16 != 0;
      auto c = std::make_unique<vexo_hdr_context>();
      std::memset(c.get(), 0xA5, sizeof *c);
      lox::build_hdr_context(c.get(), &src, &dst, nit, variant, hlg);
      vexo_hdr_context expected =
          model_context(&src, &dst, nit, variant, hlg != 0);
      EXPECT_NEAR(c->a, expected.a, 1e-15 * expected.a);
      expected.a = c->a;
      const auto members = [](const vexo_hdr_context &m) {
        return std::tuple(
            std::tuple(m.width, m.height, m.scale, m.chunk, m.variant, m.hlg),
            std::tuple(m.s, m.t, m.knee, m.n, m.src, m.dst),
            std::vector(m.pq, std::end(m.pq)),
            std::vector(m.gain, std::end(m.gain)),
            std::vector(m.hlg_linear, std::end(m.hlg_linear)),
            std::vector(m.gamma, std::end(m.gamma)));
      };
      EXPECT_TRUE(members(*c) == members(expected)) << nit << ", " << width;
    }
  }
}

// Worked out apart from the model, with 40 digits.
TEST(HdrContext, HasCurvesWorkedOutByHand) {
  const std::tuple<int32_t, int32_t, double> kCurves[] = {
      {1000, 2, 1.1111111111111111},
      {2000, 4, 1.0387583836457881},
      {4000, 9, 0.96129337316600758},
      {4001, 13, 0.96826606685080509}};
  for (const auto &[nit, n, a] : kCurves) {
    const vexo_img img{};
    vexo_hdr_context c;
    lox::build_hdr_context(&c, &img, &img, nit, 0, 0);
    EXPECT_EQ(c.n, n);
    EXPECT_NEAR(c.a, a, 2e-15);
    EXPECT_EQ(c.gain[256], 256) << "1 is mapped to 1";
  }
  const double huge = 1e300;  // the knee is not needed
  EXPECT_NEAR(TMO_VD_Norm(0.5, 2, 0.1, huge, 2, 10.0 / 9), 7.0 / 9, 1e-15);
  // With a step at t, so that its side shows.
  EXPECT_EQ(TMO_VD_Norm(0.25, 3, 0.25, huge, 2, 0.5), 0.75);
  EXPECT_NEAR(TMO_VD_Norm(std::nextafter(0.25, 1.0), 3, 0.25, -huge, 2, 0.5),
              0.34375, 1e-15);
}

// A bright sample counts where it is looked at, to the last row and column.
TEST(HdrNit, IsMeasuredAndLogged) {
  take_log();
  const std::pair<uint16_t, int32_t> kNits[] = {
      {750, 1000}, {751, 2000}, {810, 2000}, {811, 4001}, {65535, 4001}};
  for (const int32_t width : {1, 3, 17, 2000, 2001, 2004}) {
    const int32_t step = width > 2000 ? 4 : 2;
    // Nothing is read behind the last row that counts.
    Pages pages;
    pages.reserve(size_t{2} * width * (step + 1));
    void *const data = pages.end() - ptrdiff_t{2} * width * (step + 1);
    auto *const samples = static_cast<uint16_t *>(data);
    for (const auto &[bright, nit] : kNits) {
      const int32_t last = (width - 1) / step * step;
      for (const int32_t i : {0, 1, 2, width - 1, last, width, width * step - 1,
                              width * step, width * step + last}) {
        std::fill_n(samples, width * (step + 1), uint16_t{9});
        samples[i] = bright;
        const bool seen = i % width % step == 0 && i / width % step == 0;
        ASSERT_EQ(Analyze_SrcLuma(width, 2 * step, samples), seen ? nit : 1000);
        ASSERT_EQ(take_log(), std::vector<std::string>{
                                  "4 VEXO_HDR: maxY = " +
                                  std::to_string(seen ? bright : 9) + ", \n"});
      }
    }
  }
  for (const int32_t none : {0, -1, INT32_MIN}) {
    EXPECT_EQ(Analyze_SrcLuma(64, none, nullptr), 1000);
    EXPECT_EQ(Analyze_SrcLuma(none, 64, nullptr), 1000);
  }
}

// By every kind of call; nothing is logged of one that is refused.
TEST(HdrNit, IsChosenWrittenAndLogged) {
  const std::tuple<int32_t, int32_t, int32_t> kChoices[] = {
      {0, INT32_MIN, 1000}, {2, 1500, 1000}, {-1, 1501, 4000},
      {257, 65636, 4000},   {1, 1501, 2000}, {1, INT32_MAX, 2000}};
  for (const auto &[mode, nominal, nit] : kChoices) {
    for (const int32_t kind : {1, 2, 3, 4, 5, 257}) {
      take_log();
      Row row({751 >> 6, 11}, {512, 512});
      row.words[0][0] = 751;
      row.src.mode = mode;
      row.src.source_nit = nominal;
      const bool refused = kind == 3 || kind > 4;
      EXPECT_EQ(vexo_hdr_to_sdr(&row.src, &row.dst, kind),
                refused ? VEXO_ERR_ARG : VEXO_OK);
      std::vector<std::string> expected = {
          "source : " + std::to_string(mode) +
              ", source_nit : " + std::to_string(nominal) + "\n",
          "maxY = 751, \n", "final nit : " + std::to_string(nit) + "\n"};
      if (mode != 1) expected.erase(expected.begin() + 1);
      if (refused) expected.clear();
      for (std::string &line : expected) line = "4 VEXO_HDR: " + line;
      EXPECT_EQ(take_log(), expected);
      EXPECT_EQ(row.src.source_nit, refused ? nominal : nit);
      EXPECT_EQ(row.room[0], refused ? std::vector<uint8_t>(8) : row.room[0]);
    }
  }
}

}  // namespace
}  // namespace lox_test
