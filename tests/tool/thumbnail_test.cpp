// SPDX-License-Identifier: Apache-2.0
//
// vexo thumbnail: slopes, of which a thumbnail is known without the transform,
// in every layout, turn and kind of file.
#include <array>
#include <cmath>
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

// A raw frame of a slope that is each component's own; of a thumbnail, which is
// brighter and opaque.
std::string slope(const Planes &planes, int width, int height,
                  double brighter = 0) {
  std::string bytes;
  for (int p = 0; p < static_cast<int>(planes.size()); ++p) {
    const int w = p == 0 ? width : (width + 1) / 2;
    const int h = p == 0 ? height : (height + 1) / 2;
    for (int i = 0; i < w * h; ++i) {
      const double x = (i % w + 0.5) / w - 0.5, y = (i / w + 0.5) / h - 0.5;
      for (int k = p; k < p + planes[p]; ++k) {
        const double value = 128 + (90 - 80 * k) * x + 60 * y;
        bytes += static_cast<char>(brighter == 0 ? std::lround(value)
                                   : k == 3      ? 255
                                            : std::lround(brighter * value));
      }
    }
  }
  return bytes;
}

int error(const std::string &got, const std::string &wanted) {
  int worst = got.size() == wanted.size() ? 0 : 256;
  for (size_t i = 0; i < got.size() && worst < 256; ++i) {
    worst = std::max(worst, std::abs(static_cast<uint8_t>(got[i]) -
                                     static_cast<uint8_t>(wanted[i])));
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
      const std::string small =
          " --from " + token + " --size " + size_text(to_w, to_h);
      const std::string command = "thumbnail in --from-size " +
                                  size_text(w, h) + " --prescale " +
                                  std::to_string(prescale) + small;
      put("in", slope(planes, w, h));
      vexo_ok(command + " plain.raw");
      EXPECT_LE(
          error(get("plain.raw"), slope(planes, to_w, to_h, means ? 1 : 1.004)),
          4)
          << command;
      for (const std::string turn : {"1", "2", "half", "4", "5"}) {
        vexo_ok("rotate plain.raw turned.raw --turn " + turn + small);
        expect(command + " --turn " + turn, get("turned.raw"));
      }
    }
  }
}

// All frames of a clip and pictures become what raw frames do.
TEST_F(ThumbnailTest, FilesOfAllKinds) {
  const std::string to = " --size 37x25 --turn ";
  const std::string raw = "in.raw one.raw --from-size 96x64 --from ";
  std::string clip = "YUV4MPEG2 W96 H64 F30:1 It A1:2 C420mpeg2 XNOTE=A\n";
  std::string expected = "YUV4MPEG2 W25 H37 F30:1 A148:75 C420mpeg2 XNOTE=A\n";
  for (const int at : {0, 1}) {
    put("in.raw", slope({1, 1, 1}, 96 + at, 64 + at).substr(0, 9216));
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
    put("in.raw", slope(planes, 96, 64));
    vexo_ok("thumbnail " + raw + token + to + "flip");
    vexo_ok("convert in.raw in --out-kind " +
            (kinds[i] + (" --size 96x64 --from " + token)));
    vexo_ok("thumbnail in got.png" + to + "5");
    expect("convert got.png", get("one.raw"));
  }
}

}  // namespace
}  // namespace tool
