// SPDX-License-Identifier: Apache-2.0
//
// The commands that the README shows, and the examples in C that show a frame.
#include <algorithm>

#include "orumlox/dct.h"
#include "orumlox/picture.h"
#include "orumlox/rot.h"
#include "raw_frame.h"
#include "rules/hdr_rule.h"
#include "tool_runner.h"

namespace tool {
namespace {

using ExampleTest = ToolTest;

// The commands of the README's section and of the tool's page, but for those
// that begin with another program.
TEST_F(ExampleTest, ExamplesOfTheDocuments) {
  put("frame.yuv", noise(1920 * 1080 * 3 / 2, 4));
  put("clip.h264", {"\0\0\1\x65\x88", 5});
#ifdef VEXO_HAS_VIDEO
  const std::string videos =
      "ffmpeg -v error -f lavfi -i testsrc2=s=320x208:r=2:d=15 -c:v mpeg4 "
      "clip.mp4; cp clip.mp4 film.mp4; cp clip.mp4 clip.mkv; "
      "cp clip.mp4 film.webm\n";
#else
  const std::string videos = "sed -i '/mp4/d; /mkv/d; /webm/d' lines\n";
#endif
  // Examples of what it is built without.
  std::string leave = "sed -i '/^$/d";
#ifndef VEXO_HAS_JPEG
  leave += "; /jpg/d";
#endif
#ifndef VEXO_HAS_WEBP
  leave += "; /webp/d";
#endif
#ifndef VEXO_HAS_TEXT
  leave += "; /--times/d";
#endif
  const Outcome outcome =
      shell("set -e; cp '" SOURCE_FOLDER
            "/samples/coffee_320x208.y4m' photo.y4m; cp '" SOURCE_FOLDER
            "/samples/coffee_pq_320x208.y4m' hdr.y4m\n"
            "{ cat photo.y4m; tail -n +2 photo.y4m; } >clip.y4m\n"
            "sed -n '/^## The tool/,$ s/^vexo /&/p' '" SOURCE_FOLDER
            "/README.md' >lines; sed -n 's/^vexo /&/p' '" SOURCE_FOLDER
            "/docs/tool.md' >>lines; grep -q 'vexo tonemap' lines\n" +
            videos + leave + "' lines; . ./lines");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
}

#ifdef EXAMPLE_BINARY
// Brighter to the right and red below before it is turned to the right:
// brighter downwards and red on the left.
TEST_F(ExampleTest, ExampleInC) {
  std::string expected = "P6\n96 160\n255\n";
  for (int i = 0; i < 96 * 160; ++i) {
    const int luma = 298 * (i / 96) + 128;
    const int v = i % 96 < 48 ? 72 : 0;
    for (const int value : {luma + 409 * v, luma - 208 * v, luma}) {
      expected += static_cast<char>(std::clamp(value >> 8, 0, 255));
    }
  }
  EXPECT_TRUE(shell("'" EXAMPLE_BINARY "'").out == expected);
}

// A fifth of the same, turned to the left: brighter upwards, red on the right.
TEST_F(ExampleTest, ThumbnailInC) {
  const std::string ppm = shell("'" THUMBNAIL_BINARY "'").out;
  const std::string head = "P6\n96 128\n255\n";
  ASSERT_EQ(ppm.size(), head.size() + 96 * 128 * 3);
  EXPECT_TRUE(ppm.starts_with(head));
  for (int i = 0; i < 96 * 128; ++i) {
    // Means of five columns, 0.4 percent brighter as every thumbnail.
    const double luma = 1.004 * (16.1 + 1.25 * (127 - i / 96)) - 16;
    const double v = i % 96 < 48 ? 0 : 1.004 * 200 - 128;
    const double rgb[] = {298 * luma + 409 * v, 298 * luma - 208 * v,
                          298 * luma};
    for (size_t c = 0; c < 3; ++c) {
      const auto got = static_cast<uint8_t>(ppm[head.size() + 3 * i + c]);
      EXPECT_NEAR(got, std::clamp(rgb[c] / 256, 0.0, 255.0), 6) << i;
    }
  }
}

TEST_F(ExampleTest, KeyFramesInC) {
  EXPECT_EQ(shell("'" KEY_FRAMES_BINARY "'").out,
            "picture 0: importance 3, unit of type 5, first macroblock 0, "
            "I slice: a key frame\n"
            "picture 1: importance 2, unit of type 1, first macroblock 0, "
            "P slice: no key frame\n");
}

// A ramp of luma, grey above and bluish below.
TEST_F(ExampleTest, ToneMappingInC) {
  const vexo_hdr_context context = lox_test::fill_tables(1000, false);
  std::string expected = "P6\n292 64\n255\n";
  for (int i = 0; i < 292 * 64; ++i) {
    const auto [r, g, b, y, u, v] = lox_test::tone_map(
        context, 64 + i % 292 * 3, i < 292 * 32 ? 512 : 560, 512);
    for (const int value : {r, g, b}) {
      expected += static_cast<char>((510 * (value - 16) + 219) / 438);
    }
  }
  EXPECT_TRUE(shell("'" TONE_MAP_BINARY "'").out == expected);
}

// By single calls: scaled, turned, taken apart, converted, blue first.
TEST_F(ExampleTest, UprightThumbnail) {
  std::string frame = noise(2048 * 1620, 9);
  put("frame", frame);
  const Outcome outcome = shell("'" UPRIGHT_BINARY "' <frame");
  auto *const memory = reinterpret_cast<uint8_t *>(frame.data());
  uint8_t *const planes[] = {memory, memory + 2048 * 1080};
  const int32_t strides[] = {2048, 2048};
  RawFrame scaled(layout("nv12"), 568, 320), turned(layout("nv12"), 320, 568);
  vexo_img pair[2] = {{}, scaled.img()};
  vexo_picture_wrap(&pair[0], VEXO_FMT_NV12, 1920, 1080, planes, strides);
  pair[1].color_std = 1;
  vexo_rsz_new_context plan;
  vexo_shift_set a, b;
  ASSERT_EQ(vexo_rsz_new_init(pair, &plan, &a, &b, 0), VEXO_OK);
  vexo_rsz_new(&pair[0], &pair[1], &plan, a, b);
  vexo_rsz_new_deinit(pair, &plan, a, b);
  const vexo_img upright = turned.img();
  vexo_rot(&pair[1], VEXO_ROT_90R, &upright);
  std::string expected = converted(
      turned.bytes(), 320, 568, {"nv12", "yuv420", "rgba8888"}, VEXO_STD_BT709);
  for (size_t i = 0; i < expected.size(); i += 4) {
    std::swap(expected[i], expected[i + 2]);
  }
  EXPECT_TRUE(outcome.out == expected);
}
#endif

}  // namespace
}  // namespace tool
