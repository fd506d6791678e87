// SPDX-License-Identifier: Apache-2.0
//
// vexo tonemap: pixels by the model of the rule, in every kind of file that
// comes in and goes out. What is refused is failure_test.cpp's.
#include "reference/hdr_model.h"
#include "tool_runner.h"

namespace tool {
namespace {

std::string bytes(auto... values) { return {static_cast<char>(values)...}; }

// Range 16..235 to 0..255, to the nearest.
std::string expanded(std::string rgb) {
  for (char &c : rgb) {
    c = static_cast<char>((510 * (static_cast<uint8_t>(c) - 16) + 219) / 438);
  }
  return rgb;
}

// Random colours; one sample in the last row looked at is the brightest luma.
struct Hdr {
  int width, height, brightest;
  uint64_t seed;
  int half = (width + 1) / 2;
  std::string random = noise(static_cast<size_t>(3 * width * height), seed);
  std::string size = std::to_string(width) + "x" + std::to_string(height);

  int sample(int p, int x, int y) const {
    if (p == 0 && x == 4 && y == (height - 1) / 2 * 2) return brightest;
    const size_t i = static_cast<size_t>((p * height + y) * width + x);
    const int value = static_cast<uint8_t>(random[i]);
    return p == 0 ? value * brightest / 256 : 448 + value / 2;
  }

  std::string frame(bool p010) const {
    std::string words;
    const auto put = [&](int p, int x, int y) {
      // The other 6 bits mean nothing.
      const int word =
          p010 ? sample(p, x, y) << 6 | 42 : sample(p, x, y) | 42 << 10;
      words += bytes(word & 255, word >> 8);
    };
    for (int i = 0; i < width * height; ++i) put(0, i % width, i / width);
    const int chroma = half * ((height + 1) / 2);
    for (int i = 0; i < 2 * chroma; ++i) {
      const int p = p010 ? i % 2 : i / chroma;
      const int at = p010 ? i / 2 : i % chroma;
      put(1 + p, at % half, at / half);
    }
    return words;
  }

  // Tone mapped into a layout, as raw files hold it.
  std::string as(std::string to, std::string kind, int nit) const {
    vexo_hdr_context context = lox_test::fill_tables(nit, kind == "hlg");
    context.variant = kind == "hdr10-mild";
    context.hlg = kind == "hlg";
    const bool v_first = to == "nv21" || to == "yv12";
    std::string out, first, second;
    for (int i = 0; i < width * height; ++i) {
      const int x = i % width, y = i / width;
      const auto [r, g, b, luma, u, v] =
          lox_test::tone_map(context, sample(0, x, y), sample(1, x / 2, y / 2),
                             sample(2, x / 2, y / 2));
      if (to == "rgb888") out += bytes(r, g, b);
      if (to == "rgba8888") out += bytes(r, g, b, 255);
      if (to == "argb8888") out += bytes(255, r, g, b);
      if (to.ends_with("8")) continue;
      out += bytes(luma);
      if (x % 2 != 0 || y % 2 != 0) continue;
      first += bytes(v_first ? v : u);
      (to.starts_with("nv") ? first : second) += bytes(v_first ? u : v);
    }
    return out + first + second;
  }
};

class TonemapTest : public ToolTest {
 protected:
  // Frames of one size, from both layouts of 10 bits.
  void expect(const std::vector<Hdr> &frames, const std::string &arguments,
              const std::string &expected) const {
    for (const bool p010 : {false, true}) {
      std::string input;
      for (const Hdr &hdr : frames) input += hdr.frame(p010);
      put("in.raw", input);
      const std::string all =
          "tonemap in.raw got.raw --size " + frames[0].size + " --from " +
          (p010 ? "p010le " : "yuv420Planar16 ") + arguments;
      vexo_ok(all);
      EXPECT_TRUE(get("got.raw") == expected) << all;
    }
  }
};

// Whole chunks, a part of one, odd sides. A yv12 is converted from yuv420.
TEST_F(TonemapTest, RawInEveryLayoutAndKind) {
  for (const auto &[w, h] : {std::pair{32, 8}, {38, 11}, {37, 22}}) {
    const Hdr a{w, h, 1023, 1}, b{w, h, 1023, 2};
    for (const std::string kind : {"hdr10", "hdr10-mild", "hlg"}) {
      for (const std::string to : {"rgb888", "rgba8888", "argb8888", "yuv420",
                                   "nv12", "nv21", "yv12"}) {
        expect({a, b}, "--kind " + kind + " --to " + to,
               a.as(to, kind, 1000) + b.as(to, kind, 1000));
      }
    }
  }
}

// By each frame's brightest luma, or by the peak.
TEST_F(TonemapTest, ChoiceOfWhite) {
  std::vector<Hdr> frames;
  std::string expected;
  for (const auto &[brightest, nit] :
       {std::pair{750, 1000}, {810, 2000}, {811, 4001}, {751, 2000}}) {
    frames.push_back({37, 21, brightest, 3});
    expected += frames.back().as("nv12", "hdr10", nit);
  }
  expect(frames, "--to nv12 --measure", expected);
  const Hdr hdr{37, 21, 900, 4};
  expect({hdr}, "--to nv12 --nit 1500", hdr.as("nv12", "hdr10", 1000));
  expect({hdr}, "--to nv12 --nit 1501", hdr.as("nv12", "hdr10", 4000));
}

TEST_F(TonemapTest, FilesOfAllKinds) {
  const Hdr a{37, 21, 1023, 5}, b{37, 21, 1023, 6};
  put("in.y4m", "YUV4MPEG2 W37 H21 F24:1 Ip C420p10 XYSCSS=420P10\nFRAME\n" +
                    a.frame(false) + "FRAME\n" + b.frame(false));
  EXPECT_TRUE(shell("cat in.y4m | vexo tonemap - -").out ==
              "YUV4MPEG2 W37 H21 F24:1 Ip C420mpeg2 XCOLORRANGE=LIMITED\n"
              "FRAME\n" +
                  a.as("yuv420", "hdr10", 1000) + "FRAME\n" +
                  b.as("yuv420", "hdr10", 1000));
  vexo_ok("tonemap in.y4m o%d.png --kind hlg");
  expect_raw("o2.png", expanded(b.as("rgb888", "hlg", 1000)));
  // Black and white, whatever the model says.
  for (const auto &[luma, raw, full] :
       {std::tuple{64, 16, 0}, std::tuple{940, 235, 255}}) {
    const std::string y = bytes(luma & 255, luma >> 8);
    put("in.y4m",
        "YUV4MPEG2 W2 H1 C420p10\nFRAME\n" + y + y + bytes(0, 2, 0, 2));
    vexo_ok("tonemap in.y4m got.raw --to rgb888");
    EXPECT_EQ(get("got.raw"), std::string(6, bytes(raw)[0]));
    vexo_ok("tonemap in.y4m got.ppm");
    EXPECT_EQ(get("got.ppm"),
              "P6\n2 1\n255\n" + std::string(6, bytes(full)[0]));
  }
}

}  // namespace
}  // namespace tool
