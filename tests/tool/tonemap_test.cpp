// SPDX-License-Identifier: Apache-2.0
//
// vexo tonemap: what the library makes of the frames, in every kind of file
// that comes in and goes out. What is refused is failure_test.cpp's.
#include <tuple>
#include <vector>

#include "orumlox/hdr.h"
#include "raw_frame.h"
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

// Random samples of 10 bits; no luma is above the brightest, which is in the
// last row looked at.
struct Hdr {
  int width, height, brightest;
  uint64_t seed;
  std::string size = std::to_string(width) + "x" + std::to_string(height);
  size_t luma = static_cast<size_t>(width * height);
  size_t chroma = static_cast<size_t>((width + 1) / 2 * ((height + 1) / 2));
  std::string random = noise(luma + 2 * chroma, seed);

  // Words of yuv420Planar16 or p010le with something in the other 6 bits.
  std::string frame(bool p010, int other) const {
    std::string words;
    for (size_t i = 0; i < luma + 2 * chroma; ++i) {
      const size_t pair = i - luma;
      const bool second = p010 && i >= luma;
      const size_t at = second ? luma + pair % 2 * chroma + pair / 2 : i;
      const int value = static_cast<uint8_t>(random[at]);
      const bool last = i == (luma - 1) / width / 2 * 2 * width + 4;
      const int sample = i >= luma ? 448 + value / 2
                         : last    ? brightest
                                   : value * brightest / 256;
      const int word = p010 ? sample << 6 | other : sample | other << 10;
      words += bytes(word & 255, word >> 8);
    }
    return words;
  }

  // Tone mapped by the library into a layout, as raw files hold it. In memory
  // the width is even: rows of an odd one would write over each other's chroma.
  std::string as(const std::string &to, const std::string &kind, int nit = 1000,
                 int32_t mode = 0) const {
    // RGB888 comes with gaps between its bands, YV12 as its last band alone.
    const std::string mapped = to == "rgb888" ? "rgba8888"
                               : to == "yv12" ? "yuv420"
                                              : to;
    RawFrame in(layout("yuv420Planar16"), width, height);
    RawFrame out(layout(mapped), width, height);
    in.set(frame(false, 0));
    vexo_img src = in.img();
    src.width[0] += width % 2;
    src.source_nit = nit;
    src.mode = mode;
    const vexo_img dst = out.img();
    const bool mild = kind == "hdr10-mild";
    EXPECT_EQ(kind == "hlg" ? vexo_hlg_to_sdr8(&src, &dst)
                            : vexo_hdr10_to_sdr8(&src, &dst, mild),
              VEXO_OK);
    const std::string pixels = out.bytes();
    if (to == "yv12") return converted(pixels, width, height, {mapped, to});
    if (to != "rgb888") return pixels;
    std::string rgb;
    for (size_t i = 0; i < pixels.size(); i += 4) rgb += pixels.substr(i, 3);
    return rgb;
  }
};

class TonemapTest : public ToolTest {
 protected:
  // Frames of one size, from both layouts of 10 bits.
  void expect(const std::vector<Hdr> &frames, const std::string &arguments,
              const std::string &expected) const {
    for (const bool p010 : {false, true}) {
      std::string input;
      for (const Hdr &hdr : frames) input += hdr.frame(p010, 42);
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
               a.as(to, kind) + b.as(to, kind));
      }
    }
  }
}

// By each frame's brightest luma, or by the peak.
TEST_F(TonemapTest, ChoiceOfWhite) {
  std::vector<Hdr> frames;
  std::string expected;
  for (const int brightest : {750, 810, 811, 751}) {
    frames.push_back({37, 21, brightest, 3});
    expected += frames.back().as("nv12", "hdr10", 1000, VEXO_HDR_MODE_MEASURE);
  }
  expect(frames, "--to nv12 --measure", expected);
  for (const int nit : {1500, 1501}) {
    const Hdr hdr{37, 21, 900, 4};
    expect({hdr}, "--to nv12 --nit " + std::to_string(nit),
           hdr.as("nv12", "hdr10", nit));
  }
}

TEST_F(TonemapTest, FilesOfAllKinds) {
  const Hdr a{37, 21, 1023, 5}, b{37, 21, 1023, 6};
  put("in.y4m", "YUV4MPEG2 W37 H21 F24:1 Ip C420p10 XYSCSS=420P10\nFRAME\n" +
                    a.frame(false, 0) + "FRAME\n" + b.frame(false, 0));
  EXPECT_TRUE(shell("cat in.y4m | vexo tonemap - -").out ==
              "YUV4MPEG2 W37 H21 F24:1 Ip C420mpeg2 XCOLORRANGE=LIMITED\n"
              "FRAME\n" +
                  a.as("yuv420", "hdr10") + "FRAME\n" +
                  b.as("yuv420", "hdr10"));
  vexo_ok("tonemap in.y4m o%d.png --kind hlg");
  ToolTest::expect("convert o2.png", expanded(b.as("rgb888", "hlg")));
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
