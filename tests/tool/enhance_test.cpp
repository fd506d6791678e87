// SPDX-License-Identifier: Apache-2.0
//
// vexo sharpen, deblock, saturate and anaglyph: pictures of which the rules'
// result is known, sample by sample. What is refused is failure_test.cpp's.
#include <algorithm>
#include <tuple>

#include "tool_runner.h"

namespace tool {
namespace {

using Rule = int (*)(int plane, int x, int y);

int noisy(int plane, int x, int y) {
  return (57 * plane + 31 * x + 17 * y * y + x * y) % 256;
}

// A bright sample, and what sharpening makes of it.
template <int centre, int near, int far>
int dot(int plane, int x, int y) {
  const int away = (x - 9) * (x - 9) + (y - 5) * (y - 5);
  if (plane > 0 || away > 4) return plane > 0 ? noisy(plane, x, y) : 50;
  return away == 0 ? centre : away == 1 ? near : far;
}

// A step at the edge of two blocks, and slopes in its place.
int step(int, int x, int) { return x < 8 ? 100 : 124; }
template <int a, int b, int c, int d>
int slope(int, int x, int) {
  return x == 6 ? a : x == 7 ? b : x == 8 ? c : x == 9 ? d : step(0, x, 0);
}

template <int strength>
int mapped(int plane, int x, int y) {
  const int s = noisy(plane, x, y), k = s % 2 == 0 ? s / 2 : 0;
  const int value = ((k - 128) * strength >> 10) + 128;
  return plane == 0 ? s : std::clamp(value, 0, 255);
}

// Two frames of 37 x 19, the second a row further down. Chroma has so many of
// the columns and rows.
std::string clip(int planes, int part, Rule rule, const std::string &between) {
  std::string bytes;
  for (int plane = 0; plane < 2 * planes; ++plane) {
    const int p = plane % planes, w = p == 0 ? 37 : 36 / part + 1;
    if (plane == planes) bytes += between;
    for (int i = 0; i < w * (p == 0 ? 19 : 18 / part + 1); ++i) {
      bytes += static_cast<char>(rule(p, i % w, i / w + plane / planes));
    }
  }
  return bytes;
}

using EnhanceTest = ToolTest;

TEST_F(EnhanceTest, EveryCommandAndSampling) {
  const std::tuple<std::string, Rule, Rule> cases[] = {
      {"sharpen", dot<150, 50, 50>, dot<250, 37, 43>},
      {"deblock", step, slope<103, 107, 117, 121>},
      {"deblock --strength 12", step, slope<104, 109, 115, 120>},
      {"deblock --strength 4", step, step},
      {"saturate", noisy, mapped<1180>},
      {"saturate --strength 300", noisy, mapped<300>}};
  const std::tuple<std::string, std::string, int, int> samplings[] = {
      {"420mpeg2", "yuv420", 3, 2},
      {"444", "yuv444", 3, 1},
      {"mono", "yuv400", 1, 1}};
  for (const auto &[command, before, after] : cases) {
    const bool maps = command.starts_with("saturate");
    for (const auto &[word, token, planes, part] : samplings) {
      if (maps && planes == 1) continue;
      put("in.raw", clip(planes, part, before, ""));
      vexo_ok(command + " in.raw got.raw --quiet --size 37x19 --from " + token);
      EXPECT_TRUE(get("got.raw") == clip(planes, part, after, "")) << command;
      const std::string head =
          "YUV4MPEG2 W37 H19 F30:1 It A1:2 C" + word + "\nFRAME\n";
      put("in.y4m", head + clip(planes, part, before, "FRAME\n"));
      const Outcome outcome = shell("vexo " + command + " - - <in.y4m");
      EXPECT_TRUE(outcome.out == head + clip(planes, part, after, "FRAME\n"));
      EXPECT_EQ(outcome.err.substr(0, 16), maps ? "vexo: the librar" : "");
    }
  }
}

// Frames are converted to be worked on, and go back.
TEST_F(EnhanceTest, ThereAndBack) {
  put("in", noise(40 * 24 * 12, 2));
  const std::string from = " --size 40x24 --from ";
  for (const std::string layout : {"nv12", "rgba8888", "rgb888"}) {
    vexo_ok("convert in a.raw --to yuv420" + from + layout);
    for (const std::string command : {"sharpen", "deblock", "saturate"}) {
      vexo_ok(command + " a.raw b.raw --quiet" + from + "yuv420");
      vexo_ok("convert b.raw c.raw --to " + layout + from + "yuv420");
      vexo_ok(command + " in got.raw --quiet" + from + layout);
      EXPECT_TRUE(get("got.raw") == get("c.raw")) << command << layout;
    }
  }
}

// Two rows of two pixels a view, whose letters are lower on the right.
TEST_F(EnhanceTest, Anaglyphs) {
  put("in.ppm", "P6\n4 2\n255\nRGBSTUrgbstuVWXYZOvwxyzo");
  put("in.raw", "RGB.STU.rgb.stu.VWX.YZO.vwx.yzo.");
  for (const std::string mode : {"1", "2"}) {
    const std::string command = "anaglyph --mode " + mode;
    const std::string pixels = mode == "1" ? "RgbStuVwxYzo" : "rGBsTUvWXyZO";
    vexo_ok(command + " in.ppm got.ppm");
    EXPECT_EQ(get("got.ppm"), "P6\n2 2\n255\n" + pixels);
    vexo_ok(command + " in.raw got.raw --size 4x2 --from rgba8888");
    EXPECT_EQ(get("got.raw"), pixels);
  }
}

}  // namespace
}  // namespace tool
