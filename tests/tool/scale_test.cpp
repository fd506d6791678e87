// SPDX-License-Identifier: Apache-2.0
//
// vexo scale and vexo rotate: what the library makes of the frames; files of
// all kinds.
#include <tuple>

#include "orumlox/apex.h"
#include "orumlox/deep.h"
#include "orumlox/rot.h"
#include "orumlox/rsz.h"
#include "raw_frame.h"
#include "tool_runner.h"

namespace tool {
namespace {

// How a frame is scaled or, if it is not, turned.
enum class How { kTurned, kPlain, kMod1, kLanczos };

// The library's result, of a size after the turn.
std::string reshaped(const std::string &token, int w, int h,
                     const std::string &frame, int to_w, int to_h, int turn,
                     How how) {
  const bool quarter = turn == 1 || turn == 2;
  const std::string turned = quarter && token == "yuv422n" ? "yuv422w" : token;
  RawFrame in(layout(token), w, h), out(layout(turned), to_w, to_h);
  in.set(frame);
  const vexo_img src = in.img();
  vexo_img dst = out.img();
  dst.format = src.format;
  dst.mode = how == How::kMod1 ? VEXO_MODE_MOD1 : 0;
  const auto code = static_cast<uint32_t>(turn);
  const bool deep = layout(token).code >= 600;
  const auto turn_only = deep ? vexo_rot_deep : vexo_rot;
  EXPECT_EQ(how == How::kTurned    ? turn_only(&src, code, &dst)
            : how == How::kLanczos ? vexo_rsz_apex_c(&src, &dst)
            : turn != 0            ? vexo_rsz_rot(&src, code, &dst)
            : deep                 ? vexo_rsz_deep(&src, &dst)
                                   : vexo_rsz(&src, &dst),
            VEXO_OK);
  return out.bytes();
}

const std::string kTokens[] = {"yuv420",   "yuv422n",        "nv12",  "rgb888",
                               "rgba8888", "yuv420Planar16", "p010le"};
const std::string kTurns[] = {"", "left", "right", "half", "mirror", "flip"};

using ScaleTest = ToolTest;

TEST_F(ScaleTest, Scaled) {
  for (const std::string &token : kTokens) {
    const size_t bytes = RawFrame(layout(token), 36, 21).bytes().size();
    const std::string a = noise(bytes, 1), b = noise(bytes, 2);
    put("in.raw", a + b);
    const std::string from =
        "scale in.raw --from-size 36x21 --from " + token + " --size ";
    // 2:1, three times as wide, and odd sides.
    for (const auto &[w, h, how, word] :
         {std::tuple{18, 10, How::kPlain, ""},
          {108, 21, How::kMod1, " --mode1"},
          {13, 7, How::kPlain, ""},
          {23, 30, How::kLanczos, " --filter lanczos"}}) {
      expect(from + size_text(w, h) + word,
             reshaped(token, 36, 21, a, w, h, 0, how) +
                 reshaped(token, 36, 21, b, w, h, 0, how));
    }
    // On the way planes of bytes are turned by the same call; all others after
    // it.
    for (int turn = 1; turn <= 5; ++turn) {
      const bool quarter = turn < 3;
      const int w = quarter ? 7 : 13, h = quarter ? 13 : 7;
      const bool at_once = turn < 4 && layout(token).code < 200;
      const std::string scaled =
          at_once ? "" : reshaped(token, 36, 21, a, 13, 7, 0, How::kPlain);
      const std::string expected =
          at_once ? reshaped(token, 36, 21, a, w, h, turn, How::kPlain)
                  : reshaped(token, 13, 7, scaled, w, h, turn, How::kTurned);
      vexo_ok(from + size_text(w, h) + " got.raw --frames 1 --rotate " +
              kTurns[turn]);
      EXPECT_TRUE(get("got.raw") == expected) << token << turn;
    }
  }
}

// Pixels of pairs and tiles are turned as planes.
TEST_F(ScaleTest, TurnedByWayOfPlanes) {
  put("in.raw", "UYVZuyvz1234abcd");
  expect("rotate in.raw --size 4x2 --from uyvy --turn half",
         "adcb1432uzvyUZVY");
  // One tile of luma, and one of pairs.
  const std::string tiles = noise(256 + 128, 5);
  std::string turned(tiles.rend() - 256, tiles.rend());
  for (size_t at = 382; at >= 256; at -= 2) turned += tiles.substr(at, 2);
  put("in.raw", tiles);
  expect("rotate in.raw --size 16x16 --from t16x16 --turn half", turned);
  expect("scale in.raw --size 16x16 --from-size 16x16 --from t16x16", tiles);
}

// Odd sides, whose chroma is rounded up before the turn and after it.
TEST_F(ScaleTest, Turned) {
  for (const std::string &token : kTokens) {
    const std::string frame = noise(13 * 9 * 4, 3);
    for (int turn = 1; turn <= 5; ++turn) {
      const bool quarter = turn < 3;
      const auto [w, h] = quarter ? std::pair{9, 13} : std::pair{13, 9};
      const std::string expected =
          reshaped(token, 13, 9, frame, w, h, turn, How::kTurned);
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
  const std::string half_a =
      reshaped("yuv420", 36, 20, a, 18, 10, 0, How::kPlain);
  const std::string half_b =
      reshaped("yuv420", 36, 20, b, 18, 10, 0, How::kPlain);
  // The rate holds, fields do not; pixels of the picture's own shape have
  // theirs.
  put("in.y4m", "YUV4MPEG2 W36 H20 F30:1 It A1:2 C420mpeg2 XNOTE=A\nFRAME\n" +
                    a + "FRAME\n" + b);
  const Outcome y4m = shell("cat in.y4m | vexo scale - - --size 18x10");
  EXPECT_TRUE(y4m.out ==
              "YUV4MPEG2 W18 H10 F30:1 A1:2 C420mpeg2 XNOTE=A\nFRAME\n" +
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
  expect("convert half.png",
         reshaped("rgba8888", 6, 4, rgba, 3, 2, 0, How::kPlain));
}

}  // namespace
}  // namespace tool
