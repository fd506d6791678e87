// SPDX-License-Identifier: Apache-2.0
//
// vexo thumbnail: pictures of which a thumbnail is known without the transform,
// since they are flat or change slowly, in every layout, turn and kind of file.
#include <array>
#include <cmath>
#include <tuple>
#include <vector>

#include "tool_runner.h"

namespace tool {
namespace {

// The bytes of a unit of each plane; the second and third are of half the size.
using Planes = std::vector<int>;
const std::pair<std::string, Planes> kLayouts[] = {{"yuv400", {1}},
                                                   {"rgb888", {3}},
                                                   {"rgba8888", {4}},
                                                   {"yuv420", {1, 1, 1}},
                                                   {"nv12", {1, 2}}};

// Component, value, and whether an edge is close.
using Sample = std::tuple<int, double, bool>;

// The samples of a raw frame: four colours that meet in the middle, or a slope.
std::vector<Sample> samples(const Planes &planes, int width, int height,
                            bool slope) {
  constexpr double kColours[4][4] = {
      {30, 210, 60, 9}, {250, 128, 128, 0}, {90, 16, 245, 77}, {0, 70, 180, 5}};
  std::vector<Sample> out;
  for (int p = 0; p < static_cast<int>(planes.size()); ++p) {
    const int w = p == 0 ? width : (width + 1) / 2;
    const int h = p == 0 ? height : (height + 1) / 2;
    for (int i = 0; i < w * h; ++i) {
      const double x = (i % w + 0.5) / w - 0.5, y = (i / w + 0.5) / h - 0.5;
      const bool edge = std::fmin(std::abs(x) * w, std::abs(y) * h) < 6;
      for (int k = p; k < p + planes[p]; ++k) {
        const double flat = kColours[(y < 0 ? 0 : 2) + (x < 0 ? 0 : 1)][k];
        const double ramp = 128 + (90 - 80 * k) * x + 60 * y;
        out.emplace_back(k, slope ? ramp : flat, edge && !slope);
      }
    }
  }
  return out;
}

std::string frame(const Planes &planes, int width, int height, bool slope) {
  std::string bytes;
  for (const auto &[component, value, edge] :
       samples(planes, width, height, slope)) {
    bytes += static_cast<char>(std::lround(value));
  }
  return bytes;
}

// The largest error of a thumbnail, which is brighter and whose alpha is 255.
// Blocks with an edge in them may be anything.
double error(const std::string &got, const std::vector<Sample> &picture,
             double brighter) {
  double worst = got.size() == picture.size() ? 0 : 256;
  for (size_t i = 0; i < got.size() && worst < 256; ++i) {
    const auto &[component, value, edge] = picture[i];
    const double wanted = component == 3 ? 255 : std::floor(brighter * value);
    const double off = std::abs(static_cast<uint8_t>(got[i]) - wanted);
    if (!edge) worst = std::fmax(worst, off);
  }
  return worst;
}

using ThumbnailTest = ToolTest;

// Even and odd sizes; ratios of 2 and 4, which block means alone reach when
// pre-scaling, chroma of an odd size among them; an unchanged size. All others
// become 0.4 percent brighter. ScaleTest knows vexo rotate.
TEST_F(ThumbnailTest, EveryLayoutAndTurn) {
  const std::array<int, 5> cases[] = {
      {161, 121, 45, 31, 0},  {160, 120, 80, 60, 0}, {163, 123, 45, 31, 2},
      {162, 122, 81, 61, 2},  {323, 245, 53, 37, 4}, {324, 244, 81, 61, 4},
      {320, 240, 160, 60, 2}, {64, 48, 64, 48, 0}};
  for (const auto &[w, h, to_w, to_h, prescale] : cases) {
    const bool means = prescale != 0 && w * to_h == h * to_w && w % to_w == 0;
    for (const auto &[token, planes] : kLayouts) {
      if (planes.size() == 1 && prescale != 0) continue;
      char from[99], small[99];
      std::snprintf(from, sizeof from, "--from-size %dx%d --prescale %d", w, h,
                    prescale);
      std::snprintf(small, sizeof small, " --from %s --size %dx%d",
                    token.c_str(), to_w, to_h);
      const std::string command = std::string("thumbnail in ") + from + small;
      for (const bool slope : {true, false}) {
        put("in", frame(planes, w, h, slope));
        vexo_ok(command + " plain.raw");
        const auto wanted = samples(planes, to_w, to_h, slope);
        EXPECT_LE(error(get("plain.raw"), wanted, means ? 1 : 1.004),
                  slope ? 4 : !means)
            << command;
      }
      for (const std::string turn : {"1", "2", "half", "4", "5"}) {
        vexo_ok(command + " got.raw --turn " + turn);
        vexo_ok("rotate plain.raw turned.raw --turn " + turn + small);
        EXPECT_TRUE(get("got.raw") == get("turned.raw")) << command << turn;
      }
    }
  }
}

// All frames of a clip and pictures become what raw frames do.
TEST_F(ThumbnailTest, FilesOfAllKinds) {
  const std::string to = " --size 37x25 --turn ";
  const std::string raw = "in.raw one.raw --from-size 96x64 --from ";
  std::string clip = "YUV4MPEG2 W96 H64 F30:1 It A1:2 C420mpeg2 XNOTE=A\n";
  std::string expected = "YUV4MPEG2 W25 H37 F30:1 C420mpeg2 XNOTE=A\n";
  for (const bool slope : {false, true}) {
    put("in.raw", frame({1, 1, 1}, 96, 64, slope));
    vexo_ok("thumbnail " + raw + "yuv420" + to + "1");
    clip += "FRAME\n" + get("in.raw");
    expected += "FRAME\n" + get("one.raw");
  }
  put("in.y4m", clip);
  vexo_ok("thumbnail - - <in.y4m >got.y4m" + to + "left");
  EXPECT_TRUE(get("got.y4m") == expected);
  vexo_ok("thumbnail in.y4m got%d.png" + to + "left");
  vexo_ok("convert one.raw one.png --from yuv420 --size 25x37");
  EXPECT_TRUE(get("got2.png") == get("one.png"));

  const char *const kinds[] = {"pgm", "ppm", "png"};
  for (int i = 0; i < 3; ++i) {
    const auto &[token, planes] = kLayouts[i];
    put("in.raw", frame(planes, 96, 64, true));
    vexo_ok("thumbnail " + raw + token + to + "flip");
    vexo_ok("convert in.raw in --out-kind " +
            (kinds[i] + (" --size 96x64 --from " + token)));
    vexo_ok("thumbnail in got.png" + to + "5");
    expect_raw("got.png", get("one.raw"));
  }
}

}  // namespace
}  // namespace tool
