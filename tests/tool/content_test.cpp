// SPDX-License-Identifier: Apache-2.0
//
// What vexo writes, byte for byte: what the library makes of the pixels,
// containers from their formats, the table of conversions from the library's
// own answers.
#include <png.h>

#include <array>
#include <tuple>
#include <vector>

#include "orumlox/csc_new.h"
#include "orumlox/deep.h"
#include "orumlox/dither.h"
#include "raw_frame.h"
#include "tool_runner.h"

namespace tool {
namespace {

// Whether a call succeeds and writes: no layout turns 0x55 into all zeros. The
// width is one that t256x16 is converted at.
bool library_converts(const Layout &from, const Layout &to, int32_t standard) {
  RawFrame in(from, 1344, 32, standard), out(to, 1344, 32, standard);
  const std::string nothing = out.bytes();
  in.set(std::string(in.bytes().size(), '\x55'));
  const vexo_img src = in.img(), dst = out.img();
  return vexo_csc(&src, &dst) == VEXO_OK && out.bytes() != nothing;
}

using ContentTest = ToolTest;

// Two frames in every pair: whole groups of pixels, an even width that is none,
// odd sizes, and several tiles across and down.
TEST_F(ContentTest, EveryPair) {
  const std::tuple<int, int, std::string, int32_t> cases[] = {
      {48, 16, "bt601-full", VEXO_STD_BT601_FULL},
      {70, 9, "bt709", VEXO_STD_BT709},
      {37, 21, "bt601", VEXO_STD_DEFAULT},
      {324, 97, "bt601", VEXO_STD_DEFAULT}};
  for (const auto &[columns, h, standard, code] : cases) {
    for (const Layout &from : kLayouts) {
      const int w = columns + (from.token == "t256x16" ? 1280 : 0);
      const size_t bytes = RawFrame(from, w, h).bytes().size();
      const std::string a = noise(bytes, 1), b = noise(bytes, 2);
      put("in.yuv", a + b);
      for (const Layout &to : kLayouts) {
        // A standard is none of steps between layouts of YUV.
        if (code != VEXO_STD_DEFAULT && from.rgb() == to.rgb()) continue;
        if (!library_converts(from, to, code)) continue;
        // vexo_csc takes it for bt601 always.
        if (code != VEXO_STD_DEFAULT && from.token == "p010le") continue;
        const std::vector<std::string> steps = {from.token, to.token};
        expect(
            "convert in.yuv --size " + size_text(w, h) + " --from " +
                from.token + " --to " + to.token + " --std " + standard,
            converted(a, w, h, steps, code) + converted(b, w, h, steps, code));
      }
    }
  }
}

// Nothing is lost on the way, the chroma of the last column and row included.
// Steps between YUV layouts go unchanged through a standard.
TEST_F(ContentTest, ThroughLayouts) {
  put("in.yuv", noise(187, 14));
  expect(
      "convert in.yuv --size 13x9 --from yuv420 --to yuv420 --via "
      "yuv422n,yuv420,t64x32,nv21,nv12",
      noise(187, 14));
  put("in.raw", noise(37 * 9 * 4, 11));
  expect(
      "convert in.raw --size 37x9 --from rgba8888 --to yv12 --via nv21,nv12 "
      "--standard bt709",
      converted(noise(37 * 9 * 4, 11), 37, 9,
                {"rgba8888", "nv21", "nv12", "yv12"}, VEXO_STD_BT709));
}

// PicturesAsTheyAre shows that a PNG is read as what it is.
TEST_F(ContentTest, Y4mToPictures) {
  const std::string frame = noise(576, 3);
  const std::string rgb = converted(frame, 24, 16, {"yuv420", "rgb888"});
  put("in.y4m", "YUV4MPEG2 W24 H16\nFRAME\n" + frame);
  vexo_ok("convert in.y4m out.ppm --via yv12");
  EXPECT_TRUE(get("out.ppm") == "P6\n24 16\n255\n" + rgb);
  // 16-bit pixels keep the top bits and repeat them below.
  std::string coarse;
  for (const char c : rgb) {
    const int step = coarse.size() % 3 == 1 ? 4 : 8;
    const int value = static_cast<uint8_t>(c);
    coarse += static_cast<char>(value / step * step + value * step / 256);
  }
  // Layouts that differ only in the order of their bytes show one picture.
  for (const Layout &to : kLayouts) {
    if (!to.rgb()) continue;
    vexo_ok("convert in.y4m out.png --to " + to.token);
    expect("convert out.png",
           to.code < 300   ? coarse
           : to.code < 500 ? rgb
                           : converted(frame, 24, 16, {"yuv420", "rgba8888"}));
  }
}

// Two frames of 13 x 9 in every layout of a Y4M, copied through pipes as they
// are but for the word that repeats the sampling, and alone as raw frames.
TEST_F(ContentTest, Y4mThroughPipes) {
  const std::pair<std::string, size_t> chromas[] = {
      {"mono", 117}, {"420jpeg", 187}, {"420mpeg2", 187}, {"420paldv", 187},
      {"420", 187},  {"422", 243},     {"444", 351},      {"420p10", 374}};
  for (const auto &[chroma, bytes] : chromas) {
    const std::string a = noise(bytes, 3) + "FRAME\n";
    const std::string b = noise(bytes, 4);
    const std::string head = "YUV4MPEG2 W13 H9 F30:1 It A1:2 C" + chroma;
    put("in.y4m", head + " XYSCSS=ANY XNOTE=A\nFRAME Ip\n" + a + b);
    const Outcome y4m = shell("cat in.y4m | vexo convert - - | cat");
    EXPECT_TRUE(y4m.out == head + " XNOTE=A\nFRAME\n" + a + b) << y4m.err;
    expect("convert - <in.y4m", noise(bytes, 3) + b);
  }
  // 4:2:0 is what no chroma word means, and written unless --to asks for more.
  put("in.y4m", "YUV4MPEG2 W13 H9\nFRAME\n" + noise(187, 5));
  expect("convert in.y4m", noise(187, 5));
  put("in.raw", std::string(252, 'y'));
  vexo_ok("convert in.raw out.y4m --size 13x9 --from yuyv");
  EXPECT_EQ(get("out.y4m"), "YUV4MPEG2 W13 H9 F25:1 Ip A0:0 C420jpeg\nFRAME\n" +
                                std::string(187, 'y'));
}

TEST_F(ContentTest, PicturesAsTheyAre) {
  const std::string grey = noise(99, 7);
  const std::string rgb = noise(99 * 3, 8);
  const std::string rgba = noise(99 * 4, 9);
  put("in.pnm", "P5 # a comment\n11\n9 255\n" + grey);
  expect("convert in.pnm", grey);
  put("in.pnm", "P6\n11 9\n255\n" + rgb + "P6\n11 9\n255\n" + rgb);
  expect("convert in.pnm", rgb + rgb);

  const std::string palette = noise(4 * 256, 6);
  std::string deep, grey_alpha, spread, looked_up;
  for (const char c : grey) {
    // Both bytes of a 16-bit sample alike: 8 bits hold the same value.
    deep += std::string(2, c);
    grey_alpha += {c, static_cast<char>(~c)};
    spread += {c, c, c, static_cast<char>(~c)};
    looked_up += palette.substr(4 * static_cast<uint8_t>(c), 4);
  }
  const std::tuple<png_uint_32, std::string, std::string> pngs[] = {
      {PNG_FORMAT_RGB, rgb, rgb},
      {PNG_FORMAT_RGBA, rgba, rgba},
      {PNG_FORMAT_GA, grey_alpha, spread},
      {PNG_FORMAT_LINEAR_Y, deep, grey},
      {PNG_FORMAT_RGBA_COLORMAP, grey, looked_up},
      {PNG_FORMAT_GRAY, grey, grey}};
  for (const auto &[format, pixels, expected] : pngs) {
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    image.width = 11;
    image.height = 9;
    image.format = format;
    image.colormap_entries = 256;
    ASSERT_TRUE(png_image_write_to_file(&image, path("in.png").c_str(), 0,
                                        pixels.data(), 0, palette.data()));
    expect("convert in.png", expected);
  }
  // Onto its own input.
  vexo_ok("convert in.png in.png");
  expect("convert in.png", grey);
}

TEST_F(ContentTest, NumberedPictures) {
  std::string clip, pictures;
  for (uint64_t i = 0; i < 11; ++i) {
    clip += noise(64, i);
    pictures += "P5\n8 8\n255\n" + noise(64, i);
  }
  put("in.raw", clip);
  vexo_ok("convert in.raw '100%%_%02d.pgm' --size 8x8 --from yuv400");
  EXPECT_TRUE(shell("cat 100%_0[1-9].pgm 100%_1[01].pgm").out == pictures);
}

// A frame by one of the library's calls.
std::string by_call(int32_t (*call)(const vexo_img *, const vexo_img *),
                    const std::string &frame, const std::string &from,
                    const std::string &to, int32_t standard = 0,
                    int32_t siting = VEXO_SITING_LEFT) {
  RawFrame in(layout(from), 24, 16, standard);
  RawFrame out(layout(to), 24, 16, standard);
  in.set(frame);
  vexo_img src = in.img();
  src.reserved1 = siting;
  const vexo_img dst = out.img();
  EXPECT_EQ(call(&src, &dst), VEXO_OK) << from << to;
  return out.bytes();
}

TEST_F(ContentTest, InterpolatedAndDithered) {
  const std::string frame = noise(24 * 16 * 3, 4);
  const std::string bytes = frame.substr(0, 576);
  put("bytes", bytes);
  put("words", frame);
  const std::string in = "convert bytes --size 24x16 --from yuv420 ";
  const std::string deep = "convert words --size 24x16 --from p010le ";
  for (const std::string to : {"rgb565", "rgb888", "rgba1010102", "rgbaf16"}) {
    expect(in + "--chroma smooth --to " + to,
           by_call(vexo_csc_new, bytes, "yuv420", to));
    expect(deep + "--chroma smooth --standard bt2020 --to " + to,
           by_call(vexo_csc_new, frame, "p010le", to, VEXO_STD_BT2020));
  }
  expect(in + "--dither --to bgr565",
         by_call(vexo_csc_dither, bytes, "yuv420", "bgr565"));
  expect(deep + "--dither --to nv12",
         by_call(vexo_csc_dither, frame, "p010le", "nv12"));
  expect(deep + "--to nv12", by_call(vexo_csc_deep, frame, "p010le", "nv12"));
  // Where chroma lies a Y4M says.
  for (const auto &[word, siting] : {std::pair{"jpeg", VEXO_SITING_CENTRE},
                                     {"mpeg2", VEXO_SITING_LEFT},
                                     {"", VEXO_SITING_CENTRE}}) {
    put("in.y4m",
        "YUV4MPEG2 W24 H16 C420" + std::string(word) + "\nFRAME\n" + bytes);
    expect("convert in.y4m --chroma smooth --to rgba8888",
           by_call(vexo_csc_new, bytes, "yuv420", "rgba8888", 0, siting));
  }
}

// One colour of 10 bits by the matrix of each standard; windows of pixels that
// share no chroma begin anywhere.
TEST_F(ContentTest, TenBits) {
  constexpr double kY = 600, kU = 450, kV = 620;
  std::string frame;
  for (const int sample : {600, 600, 600, 600, 450, 620}) {
    const int word = sample << 6;
    frame += {static_cast<char>(word), static_cast<char>(word >> 8)};
  }
  put("in.raw", frame);
  const std::tuple<std::string, double, double> standards[] = {
      {"bt601", 0.299, 0.114},
      {"bt709", 0.2126, 0.0722},
      {"bt2020", 0.2627, 0.0593}};
  for (const auto &[name, red, blue] : standards) {
    for (const std::string range : {"limited", "full"}) {
      const bool full = range == "full";
      const double y = full ? kY / 1023 : (kY - 64) / 876;
      const double u = (kU - 512) / (full ? 1023 : 896);
      const double v = (kV - 512) / (full ? 1023 : 896);
      const double r = y + 2 * (1 - red) * v, b = y + 2 * (1 - blue) * u;
      const double g = (y - red * r - blue * b) / (1 - red - blue);
      const std::string in =
          "convert in.raw got.raw --size 2x2 --from p010le "
          "--standard " +
          name + " --range " + range;
      vexo_ok(in + " --to rgba1010102");
      const std::string words = get("got.raw");
      ASSERT_EQ(words.size(), 16);
      uint32_t word = 0;
      for (int i = 0; i < 4; ++i) {
        word |= uint32_t{static_cast<uint8_t>(words[i])} << 8 * i;
      }
      EXPECT_EQ(word >> 30, 3);
      vexo_ok(in + " --to rgb888");
      const std::string pixels = get("got.raw");
      int i = 0;
      for (const double value : {r, g, b}) {
        EXPECT_NEAR(word >> 10 * i & 1023, value * 1023, 1.5) << name << range;
        // By way of 8 bits.
        EXPECT_NEAR(static_cast<uint8_t>(pixels[i]), value * 255, 2.5)
            << name << range << i;
        ++i;
      }
    }
  }
  for (const auto &[token, bytes] :
       {std::pair{std::string("rgba1010102"), 4}, {"rgbaf16", 8}}) {
    const std::string whole = noise(5 * 4 * bytes, 3);
    put("in.raw", whole);
    expect("convert in.raw --size 5x4 --crop 3x2+1+1 --from " + token,
           whole.substr(6 * bytes, 3 * bytes) +
               whole.substr(11 * bytes, 3 * bytes));
  }
}

TEST_F(ContentTest, FormatsAgreeWithTheLibrary) {
  const std::pair<std::string, int32_t> standards[] = {
      {"bt601", VEXO_STD_DEFAULT}, {"bt709-full", VEXO_STD_BT709_FULL}};
  for (const auto &[standard, color_std] : standards) {
    std::string json, table;
    int pairs = 0;
    for (const Layout &from : kLayouts) {
      const std::string &token = from.token;
      const std::string code = std::to_string(from.code);
      std::string list;
      table += code + " " + token;
      for (const Layout &to : kLayouts) {
        const bool yes = library_converts(from, to, color_std);
        pairs += yes;
        table += yes ? " yes" : " -";
        if (yes) list += (list.empty() ? "\"" : ", \"") + to.token + "\"";
      }
      table += "\n";
      json += (json.empty() ? "" : ",\n") + ("    {\"code\": " + code) +
              ", \"token\": \"" + token + "\", \"to\": [" + list + "]}";
    }
    EXPECT_GT(pairs, 0);
    EXPECT_EQ(shell("vexo formats --json --standard " + standard).out,
              "{\n  \"std\": \"" + standard + "\",\n  \"formats\": [\n" + json +
                  "\n  ]\n}\n");
    // After three lines of headings, rows of 29 words.
    const std::string words = " | tail -n +4 | xargs -n 29";
    EXPECT_EQ(shell("vexo formats --std " + standard + words).out,
              table + std::to_string(pairs) + " pairs\n");
  }
}

}  // namespace
}  // namespace tool
