// SPDX-License-Identifier: Apache-2.0
//
// vexo scale and vexo rotate: 2:1, threefold and turned, sample by sample;
// files of all kinds.
#include <array>
#include <vector>

#include "tool_runner.h"

namespace tool {
namespace {

// Of each plane the bytes of a unit, and the pixels across and down that have
// one in common. The second name is that after a quarter turn.
struct Layout {
  std::string token, turned;
  std::vector<std::array<int, 3>> planes;
};

const Layout kLayouts[] = {
    {"yuv420", "yuv420", {{1, 1, 1}, {1, 2, 2}, {1, 2, 2}}},
    {"yuv422n", "yuv422w", {{1, 1, 1}, {1, 2, 1}, {1, 2, 1}}},
    {"nv12", "nv12", {{1, 1, 1}, {2, 2, 2}}},
    {"rgb888", "rgb888", {{3, 1, 1}}},
    {"rgba8888", "rgba8888", {{4, 1, 1}}}};

const std::string kTurns[] = {"", "left", "right", "half", "mirror", "flip"};

bool is_quarter(int turn) { return turn == 1 || turn == 2; }

// A frame's planes, each reduced 2:1 if asked for (the mean of 2 x 2 units,
// byte by byte) and turned.
std::string reshaped(const Layout &layout, int width, int height,
                     const std::string &frame, bool halve, int turn) {
  std::string out;
  const auto *in = reinterpret_cast<const uint8_t *>(frame.data());
  for (const auto &[unit, across, down] : layout.planes) {
    const int columns = (width + across - 1) / across;
    const int rows = (height + down - 1) / down;
    const int w = halve ? columns / 2 : columns, h = halve ? rows / 2 : rows;
    const int to_width = is_quarter(turn) ? h : w;
    for (int i = 0; i < w * h * unit; ++i) {
      const int to_x = i / unit % to_width, to_y = i / unit / to_width;
      // From where, by the turn.
      const std::pair<int, int> places[] = {
          {to_x, to_y},         {w - 1 - to_y, to_x},
          {to_y, h - 1 - to_x}, {w - 1 - to_x, h - 1 - to_y},
          {w - 1 - to_x, to_y}, {to_x, h - 1 - to_y}};
      const auto [x, y] = places[turn];
      const int step = columns * unit;
      const uint8_t *const p =
          in + (y * step + x * unit) * (halve ? 2 : 1) + i % unit;
      out += static_cast<char>(
          halve ? (p[0] + p[unit] + p[step] + p[step + unit]) >> 2 : p[0]);
    }
    in += columns * rows * unit;
  }
  return out;
}

class ScaleTest : public ToolTest {
 protected:
  void expect(const std::string &arguments, const std::string &expected) const {
    vexo_ok(arguments);
    EXPECT_TRUE(get("got.raw") == expected) << arguments;
  }
};

TEST_F(ScaleTest, HalvedAndTurned) {
  const std::string a = noise(36 * 20 * 4, 1), b = noise(36 * 20 * 4, 2);
  for (const Layout &layout : kLayouts) {
    // The library turns YUV alone while it scales.
    const int turns = layout.planes.size() > 1 ? 3 : 0;
    for (int turn = 0; turn <= turns; ++turn) {
      const std::string first = reshaped(layout, 36, 20, a, true, turn);
      const size_t bytes = 4 * first.size();
      put("in.raw", a.substr(0, bytes) + b.substr(0, bytes));
      expect("scale in.raw got.raw --from-size 36x20 --from " + layout.token +
                 " --size " + (is_quarter(turn) ? "10x18" : "18x10") +
                 (turn > 0 ? " --rotate " + kTurns[turn] : ""),
             first + reshaped(layout, 36, 20, b, true, turn));
    }
  }
}

// Odd sides, whose chroma is rounded up before the turn and after it.
TEST_F(ScaleTest, Turned) {
  for (const Layout &layout : kLayouts) {
    const std::string frame = noise(13 * 9 * 4, 3);
    for (int turn = 1; turn <= 5; ++turn) {
      const std::string expected = reshaped(layout, 13, 9, frame, false, turn);
      put("in.raw", frame.substr(0, expected.size()));
      const std::string from = " --from " + layout.token;
      const bool quarter = is_quarter(turn);
      expect("rotate in.raw got.raw --size 13x9 --turn " + kTurns[turn] + from +
                 " --to " + (quarter ? layout.turned : layout.token),
             expected);
      expect("scale in.raw got.raw --from-size 13x9 --size " +
                 std::string(quarter ? "9x13" : "13x9") + from + " --rotate " +
                 std::to_string(turn),
             expected);
    }
  }
}

// Two values on the way to the next sample, by thirds, or by 21 64ths.
TEST_F(ScaleTest, ThreefoldInBothModes) {
  const std::string grey = noise(80, 3);
  std::string plain, mode1;
  for (size_t i = 0; i < grey.size(); ++i) {
    const int a = static_cast<uint8_t>(grey[i]);
    const int b = i % 10 == 9 ? a : static_cast<uint8_t>(grey[i + 1]);
    for (int k = 0; k < 3; ++k) {
      plain += static_cast<char>((a * (3 - k) + b * k) / 3);
      mode1 += static_cast<char>((b * k * 21 + a * (64 - k * 21)) >> 6);
    }
  }
  put("in.pgm", "P5\n10 8\n255\n" + grey);
  expect("scale in.pgm got.raw --size 30x8", plain);
  expect("scale in.pgm got.raw --size 30x8 --mode1", mode1);
}

TEST_F(ScaleTest, FilesOfAllKinds) {
  const std::string a = noise(1080, 1), b = noise(1080, 2);
  const std::string half_a = reshaped(kLayouts[0], 36, 20, a, true, 0);
  const std::string half_b = reshaped(kLayouts[0], 36, 20, b, true, 0);
  // The rate holds for the new shape, fields and pixels of 1:2 do not.
  put("in.y4m", "YUV4MPEG2 W36 H20 F30:1 It A1:2 C420mpeg2 XNOTE=A\nFRAME\n" +
                    a + "FRAME\n" + b);
  const Outcome y4m = shell("cat in.y4m | vexo scale - - --size 18x10");
  EXPECT_TRUE(y4m.out == "YUV4MPEG2 W18 H10 F30:1 C420mpeg2 XNOTE=A\nFRAME\n" +
                             half_a + "FRAME\n" + half_b)
      << y4m.err;
  // YUV is scaled before it becomes RGB.
  vexo_ok("scale in.y4m got%d.ppm --size 18x10");
  put("half.raw", half_b);
  vexo_ok("convert half.raw half.ppm --size 18x10 --from yuv420");
  EXPECT_TRUE(get("got2.ppm") == get("half.ppm"));

  const std::string rgba = noise(96, 7);
  put("in.raw", rgba);
  vexo_ok("convert in.raw in.png --size 6x4 --from rgba8888");
  vexo_ok("scale in.png half.png --size 3x2");
  expect("rotate half.png got.raw --turn mirror",
         reshaped(kLayouts[4], 6, 4, rgba, true, 4));
}

}  // namespace
}  // namespace tool
