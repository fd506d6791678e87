// SPDX-License-Identifier: Apache-2.0
//
// What vexo writes, byte for byte: colours per pixel from the rule, containers
// from their formats, the table of conversions from the library's own answers.
#include <png.h>

#include <algorithm>
#include <array>
#include <tuple>
#include <vector>

#include "orumlox/csc.h"
#include "tool_runner.h"

namespace tool {
namespace {

const std::string kRgbTokens[] = {"rgb565",   "bgr565",   "rgb888",
                                  "bgr888",   "rgba8888", "bgra8888",
                                  "argb8888", "abgr8888"};

// A headerless frame. Its chroma follows the luma in planes (a pitch of 1 from
// sample to sample) or U, V pairs (2), or lies among it, two pixels to 4 bytes.
struct Layout {
  std::string token;
  int pitch;
  int across, down;  // pixels that share a chroma sample
  int u, v;          // which plane, byte of a pair or byte of four
};

const Layout kYuv[] = {{"yuv420", 1, 2, 2, 0, 1},  {"yv12", 1, 2, 2, 1, 0},
                       {"nv12", 2, 2, 2, 0, 1},    {"nv21", 2, 2, 2, 1, 0},
                       {"yuv422n", 1, 2, 1, 0, 1}, {"yuv444", 1, 1, 1, 0, 1},
                       {"uyvy", 4, 2, 1, 0, 2},    {"yuyv", 4, 2, 1, 1, 3}};

// R, G and B from Y, U - 128 and V - 128, or Y, U and V from R, G and B.
using Matrix = std::array<int, 3>(int, int, int);

std::array<int, 3> bt601(int y, int u, int v) {
  const int l = 298 * (y - 16) + 128;
  return {(l + 409 * v) >> 8, (l - 100 * u - 208 * v) >> 8, (l + 516 * u) >> 8};
}

// What the library uses for widths that are multiples of 8.
std::array<int, 3> bt601_full(int y, int u, int v) {
  return {y + (179 * v >> 7), y + (-44 * u >> 7) + (-91 * v >> 7),
          y + (227 * u >> 7)};
}

std::array<int, 3> bt601_back(int r, int g, int b) {
  return {((66 * r + 129 * g + 25 * b) >> 8) + 16,
          ((-38 * r - 74 * g + 112 * b + 128) >> 8) + 128,
          ((112 * r - 94 * g - 18 * b + 128) >> 8) + 128};
}

std::array<int, 3> bt709_back(int r, int g, int b) {
  return {((47 * r + 157 * g + 25 * b) >> 8) + 16,
          ((-26 * r - 86 * g + 112 * b + 128) >> 8) + 128,
          ((112 * r - 102 * g - 10 * b + 128) >> 8) + 128};
}

// One pixel in an RGB layout.
std::string pixel_bytes(const std::string &token,
                        const std::array<int, 3> &rgb) {
  const int r = std::clamp(rgb[0], 0, 255);
  const int g = std::clamp(rgb[1], 0, 255);
  const int b = std::clamp(rgb[2], 0, 255);
  if (token.ends_with("565")) {
    const auto [high, low] =
        token[0] == 'r' ? std::pair{r, b} : std::pair{b, r};
    const int word = (high >> 3) << 11 | (g >> 2) << 5 | low >> 3;
    return {static_cast<char>(word & 255), static_cast<char>(word >> 8)};
  }
  std::string bytes = token.substr(0, token.find('8'));
  for (char &c : bytes) {
    c = static_cast<char>(c == 'r' ? r : c == 'g' ? g : c == 'b' ? b : 255);
  }
  return bytes;
}

// A random frame, and its pixels in an RGB layout.
struct Picture {
  const Layout &from;
  int width, height;
  uint64_t seed;
  int chroma_width = (width + from.across - 1) / from.across;
  int chroma_size = chroma_width * ((height + from.down - 1) / from.down);
  int luma_size = from.pitch == 4 ? 2 * chroma_size : width * height;
  std::string frame = noise(luma_size + 2 * chroma_size, seed);

  std::string as(const std::string &token, Matrix *matrix = bt601) const {
    // 4:2:0 pictures of odd height whose width is no multiple of 4 have their
    // first row's chroma to itself; all others pair rows from the top.
    const bool shifted = from.down == 2 && width % 4 != 0 && height % 2 != 0;
    const auto *in = reinterpret_cast<const uint8_t *>(frame.data());
    const bool packed = from.pitch == 4;
    const int step = from.pitch == 1 ? chroma_size : 1;
    std::string pixels;
    for (int i = 0; i < width * height; ++i) {
      const int x = i % width;
      const int row = (i / width + shifted) / from.down;
      const auto *const chroma =
          in + (packed ? 0 : luma_size) +
          from.pitch * (row * chroma_width + x / from.across);
      const int y = packed ? chroma[1 - from.u + x % 2 * 2] : in[i];
      pixels += pixel_bytes(token, matrix(y, chroma[from.u * step] - 128,
                                          chroma[from.v * step] - 128));
    }
    return pixels;
  }
};

const Layout &layout(const std::string &token) {
  return *std::find_if(
      std::begin(kYuv), std::end(kYuv),
      [&token](const Layout &entry) { return entry.token == token; });
}

using ContentTest = ToolTest;

// Two frames of every size class: whole groups of four, an even width that is
// not, odd sizes with and without the shifted chroma rows.
TEST_F(ContentTest, RawYuvToEveryRgbLayout) {
  for (const auto &[w, h] : {std::pair{48, 16}, {70, 9}, {37, 22}, {37, 21}}) {
    const std::string size = std::to_string(w) + "x" + std::to_string(h);
    for (const Layout &from : kYuv) {
      const Picture a{from, w, h, 1};
      const Picture b{from, w, h, 2};
      put("in.yuv", a.frame + b.frame);
      for (const std::string &to : kRgbTokens) {
        expect_raw(
            "in.yuv --size " + size + " --from " + from.token + " --to " + to,
            a.as(to) + b.as(to));
      }
    }
  }
}

// The frame of an RGB picture, three numbers to a pixel: each chroma sample is
// that of the top-left pixel it covers, the last ones of odd sizes too.
std::string frame_of(const Layout &to, int width, int height,
                     const std::vector<std::array<int, 3>> &rgb,
                     Matrix *matrix) {
  std::string luma, first, second;
  for (int i = 0; i < width * height; ++i) {
    const auto &[r, g, b] = rgb[static_cast<size_t>(i)];
    const auto [y, u, v] = matrix(r, g, b);
    luma += static_cast<char>(y);
    if (i % width % to.across != 0 || i / width % to.down != 0) continue;
    first += static_cast<char>(to.u == 0 ? u : v);
    (to.pitch == 1 ? second : first) += static_cast<char>(to.u == 0 ? v : u);
  }
  return luma + first + second;
}

TEST_F(ContentTest, RgbToYuv) {
  for (const auto &[w, h] : {std::pair{48, 16}, {37, 9}}) {
    std::vector<std::array<int, 3>> fine, coarse;
    for (const char c : noise(static_cast<size_t>(w * h), 11)) {
      const int n = static_cast<uint8_t>(c);
      fine.push_back({n, 255 - n * 7 % 256, n * 31 % 256});
      // 16-bit pixels have zeros below their top bits.
      coarse.push_back(
          {fine.back()[0] & ~7, fine.back()[1] & ~3, fine.back()[2] & ~7});
    }
    for (const std::string &from : kRgbTokens) {
      std::string pixels;
      for (const auto &rgb : fine) pixels += pixel_bytes(from, rgb);
      put("in.raw", pixels);
      const auto &rgb = from.ends_with("565") ? coarse : fine;
      const std::string head = "in.raw --size " + std::to_string(w) + "x" +
                               std::to_string(h) + " --from " + from;
      for (const char *to : {"yuv420", "yv12", "nv12", "nv21"}) {
        expect_raw(head + " --to " + to,
                   frame_of(layout(to), w, h, rgb, bt601_back));
      }
      if (from != "rgba8888") continue;
      expect_raw(head + " --to yuv444",
                 frame_of(layout("yuv444"), w, h, rgb, bt601_back));
      // Steps between YUV layouts go unchanged through a standard.
      expect_raw(head + " --to yv12 --via nv21,nv12 --standard bt709",
                 frame_of(layout("yv12"), w, h, rgb, bt709_back));
    }
  }
}

TEST_F(ContentTest, FullRange) {
  const Picture picture{layout("nv21"), 40, 13, 12};
  put("in.yuv", picture.frame);
  for (const char *option : {"--standard", "--std"}) {
    expect_raw("in.yuv --size 40x13 --from nv21 --to rgba8888 " +
                   (option + std::string(" bt601-full")),
               picture.as("rgba8888", bt601_full));
  }
}

// Nothing is lost on the way, the chroma of the last column and row included.
TEST_F(ContentTest, OddPicturesThroughLayouts) {
  put("in.yuv", noise(187, 14));
  expect_raw(
      "in.yuv --size 13x9 --from yuv420 --to yuv420 --via "
      "yuv422n,yuv420,t64x32,nv21,nv12",
      noise(187, 14));
}

struct Tiles {
  std::string token;
  int width, luma_rows, chroma_rows;
};

const Tiles kTiled[] = {{"t64x32", 64, 32, 32},
                        {"t16x16", 16, 16, 8},
                        {"t8x8", 8, 8, 4},
                        {"t256x16", 256, 16, 8}};

// Rows of `width` bytes as whole tiles of `down` rows; zeros fill them up to an
// even size and beyond.
std::string tiled(const Tiles &tiles, int down, const std::string &bytes,
                  int width) {
  const int height = static_cast<int>(bytes.size()) / width;
  const bool crossed = tiles.token == "t64x32";
  const int across = (width + tiles.width - 1) / tiles.width;
  const int columns = crossed ? (across + 1) / 2 * 2 : across;
  const int rows = (height + down - 1) / down;
  std::string out(columns * tiles.width * rows * down, '\0');
  for (int i = 0; i < width * height; ++i) {
    const int x = i % width, y = i / width;
    const int c = x / tiles.width, r = y / down;
    int tile = r * columns + c;
    // Two by two, the lower ones first in every second group; a last row
    // without a partner lies as it is.
    if (crossed && (r | 1) < rows) {
      tile = r / 2 * 2 * columns + c / 2 * 4 + (r + c / 2) % 2 * 2 + c % 2;
    }
    out[(tile * down + y % down) * tiles.width + x % tiles.width] = bytes[i];
  }
  return out;
}

// Three rows of 64 x 32 tiles, whose chroma has two rows of them; odd widths
// and heights, whose chroma is rounded up.
TEST_F(ContentTest, Tiles) {
  for (const Tiles &tiles : kTiled) {
    const int least = tiles.token == "t256x16" ? 1280 : 0;
    for (const auto &[columns, h] : {std::pair{52, 65}, {131, 66}, {324, 97}}) {
      const int w = least + columns;
      const Picture nv12{layout("nv12"), w, h, 13};
      const std::string luma = nv12.frame.substr(0, nv12.luma_size);
      const std::string pairs = nv12.frame.substr(nv12.luma_size);
      std::string planes[2];
      for (size_t i = 0; i < pairs.size(); ++i) planes[i % 2] += pairs[i];
      const std::string planar = luma + planes[0] + planes[1];
      const std::string file =
          tiled(tiles, tiles.luma_rows, luma, w) +
          tiled(tiles, tiles.chroma_rows, pairs, nv12.chroma_width * 2);
      const std::string size =
          " --size " + std::to_string(w) + "x" + std::to_string(h);
      const std::string from_tiles = "t.raw --from " + tiles.token + size;
      put("t.raw", file);
      expect_raw(from_tiles + " --to rgba8888", nv12.as("rgba8888"));
      if (tiles.width != 64 && tiles.width != 16) continue;
      expect_raw(from_tiles + " --to nv12", nv12.frame);
      expect_raw(from_tiles + " --to yuv420", planar);
      if (tiles.width != 64) continue;
      put("p.raw", planar);
      expect_raw("p.raw --from yuv420 --to t64x32" + size, file);
    }
  }
}

// PicturesAsTheyAre shows that a PNG is read as what it is.
TEST_F(ContentTest, Y4mToPictures) {
  const Picture picture{kYuv[0], 24, 16, 3};
  const std::string rgb = picture.as("rgb888");
  put("in.y4m", "YUV4MPEG2 W24 H16\nFRAME\n" + picture.frame);
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
  for (const std::string &to : kRgbTokens) {
    vexo_ok("convert in.y4m out.png --to " + to);
    expect_raw("out.png", to.ends_with("565") ? coarse
                          : to.size() == 8    ? picture.as("rgba8888")
                                              : rgb);
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
    expect_raw("- <in.y4m", noise(bytes, 3) + b);
  }
  // 4:2:0 is what no chroma word means, and written unless --to asks for more.
  put("in.y4m", "YUV4MPEG2 W13 H9\nFRAME\n" + noise(187, 5));
  expect_raw("in.y4m", noise(187, 5));
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
  expect_raw("in.pnm", grey);
  put("in.pnm", "P6\n11 9\n255\n" + rgb + "P6\n11 9\n255\n" + rgb);
  expect_raw("in.pnm", rgb + rgb);

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
    expect_raw("in.png", expected);
  }
  // Onto its own input.
  vexo_ok("convert in.png in.png");
  expect_raw("in.png", grey);
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

const std::pair<int32_t, std::string> kFormats[] = {
    {0, "yuv400"},     {1, "yuv420"},     {2, "yuv422n"},
    {3, "yuv444"},     {4, "yv12"},       {5, "yv16"},
    {6, "nv12"},       {7, "nv21"},       {8, "yuv422w"},
    {11, "t64x32"},    {12, "t16x16"},    {13, "t8x8"},
    {14, "t256x16"},   {100, "uyvy"},     {101, "yuyv"},
    {200, "rgb565"},   {201, "bgr565"},   {400, "rgb888"},
    {401, "bgr888"},   {500, "rgba8888"}, {501, "bgra8888"},
    {502, "argb8888"}, {503, "abgr8888"}, {600, "yuv420Planar16"},
    {601, "p010le"}};

// Whether a call succeeds and writes: no layout turns 0x55 into all zeros. The
// planes have room for any layout and are wide enough for t256x16.
bool library_converts(int32_t from, int32_t to, int32_t color_std) {
  constexpr size_t kPlane = 1344 * 4 * 80;
  std::string bytes[] = {std::string(4 * kPlane, '\x55'),
                         std::string(4 * kPlane, '\0')};
  vexo_img img[2] = {};
  for (int i = 0; i < 2; ++i) {
    img[i].format = i == 0 ? from : to;
    img[i].color_std = color_std;
    for (int p = 0; p < 4; ++p) {
      img[i].width[p] = 1344;
      img[i].height[p] = img[i].buf_height[p] = 64;
      img[i].stride[p] = 1344 * 4;
      img[i].plane[p] = reinterpret_cast<uint8_t *>(&bytes[i][p * kPlane]);
    }
  }
  return vexo_csc(&img[0], &img[1]) == VEXO_OK &&
         bytes[1] != std::string(4 * kPlane, '\0');
}

TEST_F(ContentTest, FormatsAgreeWithTheLibrary) {
  const std::pair<std::string, int32_t> standards[] = {
      {"bt601", VEXO_STD_DEFAULT}, {"bt709-full", VEXO_STD_BT709_FULL}};
  for (const auto &[standard, color_std] : standards) {
    std::string json, table;
    int pairs = 0;
    for (const auto &[from, token] : kFormats) {
      const std::string code = std::to_string(from);
      std::string list;
      table += code + " " + token;
      for (const auto &[to, to_token] : kFormats) {
        const bool yes = library_converts(from, to, color_std);
        pairs += yes;
        table += yes ? " yes" : " -";
        if (yes) list += (list.empty() ? "\"" : ", \"") + to_token + "\"";
      }
      table += "\n";
      json += (json.empty() ? "" : ",\n") + ("    {\"code\": " + code) +
              ", \"token\": \"" + token + "\", \"to\": [" + list + "]}";
    }
    EXPECT_GT(pairs, 0);
    EXPECT_EQ(shell("vexo formats --json --standard " + standard).out,
              "{\n  \"std\": \"" + standard + "\",\n  \"formats\": [\n" + json +
                  "\n  ]\n}\n");
    // After three lines of headings, rows of 27 words.
    const std::string words = " | tail -n +4 | xargs -n 27";
    EXPECT_EQ(shell("vexo formats --std " + standard + words).out,
              table + std::to_string(pairs) + " pairs\n");
  }
}

}  // namespace
}  // namespace tool
