// SPDX-License-Identifier: Apache-2.0
//
// vexo scale and vexo rotate: what the library makes of the frames; files of
// all kinds.
#include "orumlox/rot.h"
#include "orumlox/rsz.h"
#include "raw_frame.h"
#include "tool_runner.h"

namespace tool {
namespace {

// The library's result, of a size after the turn: as vexo_rot gives it, or
// scaled on the way.
std::string reshaped(const std::string &token, int w, int h,
                     const std::string &frame, int to_w, int to_h, int turn,
                     bool scale, int32_t mode = 0) {
  const bool quarter = turn == 1 || turn == 2;
  const std::string turned = quarter && token == "yuv422n" ? "yuv422w" : token;
  RawFrame in(layout(token), w, h), out(layout(turned), to_w, to_h);
  in.set(frame);
  const vexo_img src = in.img();
  vexo_img dst = out.img();
  dst.format = src.format;
  dst.mode = mode;
  const auto code = static_cast<uint32_t>(turn);
  EXPECT_EQ(!scale      ? vexo_rot(&src, code, &dst)
            : turn == 0 ? vexo_rsz(&src, &dst)
                        : vexo_rsz_rot(&src, code, &dst),
            VEXO_OK);
  return out.bytes();
}

const std::string kTokens[] = {"yuv420", "yuv422n", "nv12", "rgb888",
                               "rgba8888"};
const std::string kTurns[] = {"", "left", "right", "half", "mirror", "flip"};

using ScaleTest = ToolTest;

TEST_F(ScaleTest, ScaledAndTurned) {
  for (const std::string &token : kTokens) {
    const size_t bytes = RawFrame(layout(token), 36, 21).bytes().size();
    const std::string a = noise(bytes, 1), b = noise(bytes, 2);
    put("in.raw", a + b);
    // The library turns YUV alone while it scales.
    for (int turn = 0; turn <= (token.starts_with("rgb") ? 0 : 3); ++turn) {
      // 2:1, three times as wide, and odd sides.
      for (const auto &[w, h] : {std::pair{18, 10}, {108, 21}, {13, 7}}) {
        const int32_t mode = w == 108 ? VEXO_MODE_MOD1 : 0;
        expect("scale in.raw --from-size 36x21 --from " + token + " --size " +
                   size_text(w, h) +
                   (turn > 0 ? " --rotate " + kTurns[turn] : "") +
                   (mode != 0 ? " --mode1" : ""),
               reshaped(token, 36, 21, a, w, h, turn, true, mode) +
                   reshaped(token, 36, 21, b, w, h, turn, true, mode));
      }
    }
  }
}

// Odd sides, whose chroma is rounded up before the turn and after it.
TEST_F(ScaleTest, Turned) {
  for (const std::string &token : kTokens) {
    const std::string frame = noise(13 * 9 * 4, 3);
    for (int turn = 1; turn <= 5; ++turn) {
      const bool quarter = turn < 3;
      const auto [w, h] = quarter ? std::pair{9, 13} : std::pair{13, 9};
      const std::string expected =
          reshaped(token, 13, 9, frame, w, h, turn, false);
      put("in.raw", frame.substr(0, expected.size()));
      const std::string from = " --from " + token;
      expect("rotate in.raw --size 13x9 --turn " + kTurns[turn] + from,
             expected);
      expect("scale in.raw --from-size 13x9 --size " +
                 std::string(quarter ? "9x13" : "13x9") + from + " --rotate " +
                 std::to_string(turn),
             expected);
    }
  }
}

TEST_F(ScaleTest, FilesOfAllKinds) {
  const std::string a = noise(1080, 1), b = noise(1080, 2);
  const std::string half_a = reshaped("yuv420", 36, 20, a, 18, 10, 0, true);
  const std::string half_b = reshaped("yuv420", 36, 20, b, 18, 10, 0, true);
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
  expect("convert half.png", reshaped("rgba8888", 6, 4, rgba, 3, 2, 0, true));
}

}  // namespace
}  // namespace tool
