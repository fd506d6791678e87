// SPDX-License-Identifier: Apache-2.0
//
// What vexo writes, byte for byte: colours per pixel from the rule, containers
// from their formats.
#include <png.h>
#include <sys/stat.h>

#include <filesystem>
#include <functional>
#include <map>

#include "tool_runner.h"

namespace tool {
namespace {

const char *const kRgbTokens[] = {"rgb565",   "bgr565",   "rgb888",
                                  "bgr888",   "rgba8888", "bgra8888",
                                  "argb8888", "abgr8888"};

struct Yuv {
  int y, u, v;
};

// A headerless frame as a file holds it and how its samples are found.
struct RawLayout {
  std::string token;
  std::function<size_t(int w, int h)> bytes;
  std::function<Yuv(const uint8_t *frame, int w, int h, int x, int y)> at;
};

int half(int n) { return (n + 1) / 2; }

// 4:2:0 pictures of odd height whose width is no multiple of 4 have their first
// row's chroma to itself; all others pair rows from the top.
int chroma_row_420(int w, int h, int y) {
  return w % 4 != 0 && h % 2 != 0 ? (y + 1) / 2 : y / 2;
}

// Planes of cw x ch after a full luma plane; `second` tells which is U.
RawLayout planar(const std::string &token, bool u_first,
                 std::function<int(int)> cw, std::function<int(int)> ch,
                 std::function<int(int)> column,
                 std::function<int(int w, int h, int y)> row) {
  return {token,
          [=](int w, int h) {
            return static_cast<size_t>(w * h + 2 * cw(w) * ch(h));
          },
          [=](const uint8_t *frame, int w, int h, int x, int y) {
            const uint8_t *const first =
                frame + w * h + row(w, h, y) * cw(w) + column(x);
            const uint8_t *const second = first + cw(w) * ch(h);
            return Yuv{frame[y * w + x], u_first ? *first : *second,
                       u_first ? *second : *first};
          }};
}

RawLayout semi_planar(const std::string &token, int u_index) {
  return {token,
          [](int w, int h) {
            return static_cast<size_t>(w * h + 2 * half(w) * half(h));
          },
          [u_index](const uint8_t *frame, int w, int h, int x, int y) {
            const uint8_t *const pair = frame + w * h +
                                        chroma_row_420(w, h, y) * 2 * half(w) +
                                        x / 2 * 2;
            return Yuv{frame[y * w + x], pair[u_index], pair[1 - u_index]};
          }};
}

RawLayout packed(const std::string &token, int luma, int u, int v) {
  return {token,
          [](int w, int h) { return static_cast<size_t>(4 * half(w) * h); },
          [=](const uint8_t *frame, int w, int, int x, int y) {
            const uint8_t *const four = frame + y * 4 * half(w) + x / 2 * 4;
            return Yuv{four[luma + x % 2 * 2], four[u], four[v]};
          }};
}

std::vector<RawLayout> yuv_layouts() {
  const auto same = [](int n) { return n; };
  const auto halved = [](int n) { return n / 2; };
  const auto same_row = [](int, int, int y) { return y; };
  return {planar("yuv420", true, half, half, halved, chroma_row_420),
          planar("yv12", false, half, half, halved, chroma_row_420),
          semi_planar("nv12", 0),
          semi_planar("nv21", 1),
          planar("yuv422n", true, half, same, halved, same_row),
          planar("yuv444", true, same, same, same, same_row),
          packed("uyvy", 1, 0, 2),
          packed("yuyv", 0, 1, 3)};
}

// All pixels of a frame in an RGB layout.
std::string converted(const RawLayout &layout, const std::string &frame, int w,
                      int h, const std::string &token) {
  const uint8_t *const bytes = reinterpret_cast<const uint8_t *>(frame.data());
  std::string pixels;
  for (int y = 0; y < h; ++y) {
    for (int x = 0; x < w; ++x) {
      const Yuv yuv = layout.at(bytes, w, h, x, y);
      pixels += pixel_bytes(token, rgb_of(yuv.y, yuv.u, yuv.v));
    }
  }
  return pixels;
}

std::string size_of(int w, int h) {
  return std::to_string(w) + "x" + std::to_string(h);
}

class ContentTest : public ToolTest {
 protected:
  // The pixels of a PNG, read by libpng alone.
  std::string png_pixels(const std::string &name, png_uint_32 format,
                         png_uint_32 *file_format = nullptr) const {
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    EXPECT_TRUE(png_image_begin_read_from_file(&image, path(name).c_str()));
    if (file_format != nullptr) *file_format = image.format;
    image.format = format;
    std::string pixels(PNG_IMAGE_SIZE(image), '\0');
    EXPECT_TRUE(
        png_image_finish_read(&image, nullptr, pixels.data(), 0, nullptr));
    return pixels;
  }

  struct PngPicture {
    int w, h, depth, type;
    bool interlaced;
    std::string rows;
    // Of an indexed picture: entries of R, G, B, A.
    std::string palette;
  };

  void put_png(const std::string &name, const PngPicture &picture) const {
    std::FILE *const file = std::fopen(path(name).c_str(), "wb");
    ASSERT_NE(file, nullptr);
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr,
                                              nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_init_io(png, file);
    png_set_IHDR(png, info, static_cast<png_uint_32>(picture.w),
                 static_cast<png_uint_32>(picture.h), picture.depth,
                 picture.type,
                 picture.interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_color colours[256];
    png_byte alphas[256];
    const size_t entries = picture.palette.size() / 4;
    for (size_t i = 0; i < entries; ++i) {
      const uint8_t *const entry =
          reinterpret_cast<const uint8_t *>(picture.palette.data()) + 4 * i;
      colours[i] = {entry[0], entry[1], entry[2]};
      alphas[i] = entry[3];
    }
    if (entries != 0) {
      png_set_PLTE(png, info, colours, static_cast<int>(entries));
      png_set_tRNS(png, info, alphas, static_cast<int>(entries), nullptr);
    }
    std::string rows = picture.rows;
    std::vector<png_bytep> starts;
    const size_t stride = rows.size() / static_cast<size_t>(picture.h);
    for (size_t y = 0; y < static_cast<size_t>(picture.h); ++y) {
      starts.push_back(reinterpret_cast<png_bytep>(&rows[y * stride]));
    }
    png_write_info(png, info);
    png_write_image(png, starts.data());
    png_write_end(png, nullptr);
    png_destroy_write_struct(&png, &info);
    std::fclose(file);
  }

  void expect_raw(const std::string &in, const std::string &expected) const {
    vexo_ok("convert " + in + " got.raw");
    EXPECT_TRUE(get("got.raw") == expected) << in;
  }
};

// Two frames of every size class: whole groups of four, an even width that is
// not, odd sizes with and without the shifted chroma rows.
TEST_F(ContentTest, RawYuvToEveryRgbLayout) {
  for (const auto &[w, h] : {std::pair{48, 16}, {70, 9}, {37, 22}, {37, 21}}) {
    for (const RawLayout &layout : yuv_layouts()) {
      const std::string a = noise(layout.bytes(w, h), 1);
      const std::string b = noise(layout.bytes(w, h), 2);
      put("in.yuv", a + b);
      for (const char *token : kRgbTokens) {
        vexo_ok("convert in.yuv out.rgb --size " + size_of(w, h) + " --from " +
                layout.token + " --to " + token);
        EXPECT_TRUE(get("out.rgb") == converted(layout, a, w, h, token) +
                                          converted(layout, b, w, h, token))
            << layout.token << " to " << token << " " << size_of(w, h);
      }
    }
  }
}

TEST_F(ContentTest, SampleToPictures) {
  const std::string sample = VEXO_SAMPLES "/coffee_320x208.y4m";
  std::filesystem::copy(sample, path("in.y4m"));
  const std::string whole = get("in.y4m");
  const size_t frame = whole.find("FRAME\n") + 6;
  const RawLayout layout = yuv_layouts().front();
  ASSERT_EQ(whole.size() - frame, layout.bytes(320, 208));
  const std::string rgb =
      converted(layout, whole.substr(frame), 320, 208, "rgb888");
  const std::string rgba =
      converted(layout, whole.substr(frame), 320, 208, "rgba8888");

  vexo_ok("convert in.y4m out.ppm");
  EXPECT_TRUE(get("out.ppm") == "P6\n320 208\n255\n" + rgb);

  // Layouts that differ only in the order of their bytes show one picture.
  png_uint_32 format = 0;
  for (const std::string to : {"", " --to rgb888", " --to bgr888",
                               " --via yv12", " --via yv12 --to bgr888"}) {
    vexo_ok("convert in.y4m out.png" + to);
    EXPECT_TRUE(png_pixels("out.png", PNG_FORMAT_RGB, &format) == rgb) << to;
    EXPECT_EQ(format, uint32_t{PNG_FORMAT_RGB}) << to;
  }
  for (const std::string to :
       {"rgba8888", "bgra8888", "argb8888", "abgr8888"}) {
    vexo_ok("convert in.y4m out.png --to " + to);
    EXPECT_TRUE(png_pixels("out.png", PNG_FORMAT_RGBA, &format) == rgba) << to;
    EXPECT_EQ(format, uint32_t{PNG_FORMAT_RGBA}) << to;
  }
  // 16-bit pixels keep the top bits and repeat them below.
  std::string coarse = rgb;
  for (size_t i = 0; i < coarse.size(); ++i) {
    const int value = static_cast<uint8_t>(coarse[i]);
    coarse[i] = static_cast<char>(i % 3 == 1 ? (value & 0xFC) | value >> 6
                                             : (value & 0xF8) | value >> 5);
  }
  for (const std::string to : {"rgb565", "bgr565"}) {
    vexo_ok("convert in.y4m out.png --to " + to);
    EXPECT_TRUE(png_pixels("out.png", PNG_FORMAT_RGB) == coarse) << to;
  }
}

TEST_F(ContentTest, Y4mThroughPipes) {
  // Every layout a Y4M has, two frames of 13 x 9, copied through pipes as it is
  // but for the word that repeats the sampling; and its planes alone as raw
  // frames.
  const std::map<std::string, size_t> frame_bytes = {
      {"mono", 13 * 9},
      {"420jpeg", 13 * 9 + 2 * 7 * 5},
      {"420mpeg2", 13 * 9 + 2 * 7 * 5},
      {"420paldv", 13 * 9 + 2 * 7 * 5},
      {"420", 13 * 9 + 2 * 7 * 5},
      {"422", 13 * 9 + 2 * 7 * 9},
      {"444", 3 * 13 * 9},
      {"420p10", 2 * (13 * 9 + 2 * 7 * 5)}};
  for (const auto &[chroma, bytes] : frame_bytes) {
    const std::string a = noise(bytes, 3);
    const std::string b = noise(bytes, 4);
    const std::string head =
        "YUV4MPEG2 W13 H9 F30000:1001 It A10:11 C" + chroma;
    const std::string frames = "FRAME\n" + a + "FRAME\n" + b;
    put("in.y4m", head + " XYSCSS=ANY XCOLORRANGE=LIMITED\n" + "FRAME Ip\n" +
                      a + "FRAME\n" + b);
    const Outcome piped = shell("cat in.y4m | vexo convert - - | cat");
    EXPECT_EQ(piped.err, "") << chroma;
    EXPECT_TRUE(piped.out == head + " XCOLORRANGE=LIMITED\n" + frames)
        << chroma;
    const Outcome raw =
        shell("cat in.y4m | vexo convert - - --out-kind raw | cat");
    EXPECT_TRUE(raw.out == a + b) << chroma;
  }
  // Without a chroma word the frames are 4:2:0.
  put("plain.y4m",
      "YUV4MPEG2 W13 H9\nFRAME\n" + noise(frame_bytes.at("420"), 5));
  expect_raw("plain.y4m", noise(frame_bytes.at("420"), 5));
}

TEST_F(ContentTest, RawToY4mTakesTheLibrarysRoute) {
  // Packed 4:2:2 becomes 4:2:0: luma as it is, chroma of row pairs averaged
  // down.
  const std::string in = noise(16 * 8 * 2, 6);
  std::string y, u, v;
  for (size_t row = 0; row < 8; ++row) {
    for (size_t x = 0; x < 16; ++x) y += in[row * 32 + 2 * x];
  }
  const auto mean = [&in](size_t i) {
    const int sum =
        static_cast<uint8_t>(in[i]) + static_cast<uint8_t>(in[i + 32]);
    return static_cast<char>(sum >> 1);
  };
  for (size_t row = 0; row < 8; row += 2) {
    for (size_t x = 0; x < 8; ++x) {
      u += mean(row * 32 + 4 * x + 1);
      v += mean(row * 32 + 4 * x + 3);
    }
  }
  put("in.raw", in);
  vexo_ok("convert in.raw out.y4m --size 16x8 --from yuyv");
  EXPECT_TRUE(get("out.y4m") ==
              "YUV4MPEG2 W16 H8 F25:1 Ip A0:0 C420jpeg\nFRAME\n" + y + u + v);
}

TEST_F(ContentTest, PicturesAsTheyAre) {
  const std::string grey = noise(11 * 9, 7);
  const std::string rgb = noise(11 * 9 * 3, 8);
  const std::string rgba = noise(11 * 9 * 4, 9);
  put("g.pgm", "P5 # a comment\n11\n9 255\n" + grey);
  expect_raw("g.pgm", grey);
  put("c.ppm", "P6\n11 9\n255\n" + rgb + "P6\n11 9\n255\n" + rgb);
  expect_raw("c.ppm", rgb + rgb);
  vexo_ok("convert g.pgm g.png");
  png_uint_32 format = 0;
  EXPECT_TRUE(png_pixels("g.png", PNG_FORMAT_GRAY, &format) == grey);
  EXPECT_EQ(format, uint32_t{PNG_FORMAT_GRAY});
  vexo_ok("convert g.png again.pgm");
  EXPECT_TRUE(get("again.pgm") == "P5\n11 9\n255\n" + grey);
  // Grey to RGB repeats the luma.
  std::string tripled;
  for (const char c : grey) tripled += std::string(3, c);
  vexo_ok("convert g.pgm g.ppm");
  EXPECT_TRUE(get("g.ppm") == "P6\n11 9\n255\n" + tripled);

  for (const bool interlaced : {false, true}) {
    put_png("p.png", {11, 9, 8, PNG_COLOR_TYPE_GRAY, interlaced, grey, ""});
    expect_raw("p.png", grey);
    put_png("p.png", {11, 9, 8, PNG_COLOR_TYPE_RGB, interlaced, rgb, ""});
    expect_raw("p.png", rgb);
    put_png("p.png",
            {11, 9, 8, PNG_COLOR_TYPE_RGB_ALPHA, interlaced, rgba, ""});
    expect_raw("p.png", rgba);
  }
  // Both bytes of a 16-bit sample alike: 8 bits hold the same value.
  std::string deep;
  for (const char c : rgb) deep += std::string(2, c);
  put_png("p.png", {11, 9, 16, PNG_COLOR_TYPE_RGB, false, deep, ""});
  expect_raw("p.png", rgb);
  // Grey with alpha becomes RGBA, one bit of grey black and white.
  std::string grey_alpha, spread;
  for (const char c : grey) {
    grey_alpha += std::string(1, c) + static_cast<char>(~c);
    spread += std::string(3, c) + static_cast<char>(~c);
  }
  put_png("p.png",
          {11, 9, 8, PNG_COLOR_TYPE_GRAY_ALPHA, false, grey_alpha, ""});
  expect_raw("p.png", spread);
  put_png("p.png", {8, 2, 1, PNG_COLOR_TYPE_GRAY, false, "\xA5\x0F", ""});
  expect_raw("p.png", std::string("\xFF\0\xFF\0\0\xFF\0\xFF"
                                  "\0\0\0\0\xFF\xFF\xFF\xFF",
                                  16));
  const std::string palette = noise(4 * 4, 10);
  put_png("p.png", {4, 1, 2, PNG_COLOR_TYPE_PALETTE, false, "\x1B", palette});
  expect_raw("p.png", palette);
}

TEST_F(ContentTest, NumberedPictures) {
  std::string clip;
  for (uint32_t i = 0; i < 11; ++i) clip += noise(8 * 8, i);
  put("in.raw", clip);
  vexo_ok("convert in.raw '100%%_%02d.pgm' --size 8x8 --from yuv400");
  ASSERT_EQ(files().size(), 12u);
  for (uint32_t i = 0; i < 11; ++i) {
    const std::string number = std::to_string(i + 1);
    EXPECT_TRUE(get("100%_" + (i < 9 ? "0" + number : number) + ".pgm") ==
                "P5\n8 8\n255\n" + noise(8 * 8, i));
  }
}

// Links and pipes stay what they are, a file's mode too.
TEST_F(ContentTest, OutputsThatExist) {
  put("in.pgm", "P5\n2 1\n255\nab");
  put("target.raw", "before");
  std::filesystem::permissions(path("target.raw"),
                               std::filesystem::perms{0640});
  std::filesystem::create_symlink("target.raw", path("link.raw"));
  vexo_ok("convert in.pgm link.raw");
  EXPECT_TRUE(std::filesystem::is_symlink(path("link.raw")));
  EXPECT_EQ(get("target.raw"), "ab");
  EXPECT_EQ(std::filesystem::status(path("target.raw")).permissions(),
            std::filesystem::perms{0640});

  ASSERT_EQ(mkfifo(path("fifo.raw").c_str(), 0600), 0);
  const Outcome outcome =
      shell("cat fifo.raw & vexo convert in.pgm fifo.raw; wait");
  EXPECT_EQ(outcome.out, "ab");
  EXPECT_TRUE(std::filesystem::is_fifo(path("fifo.raw")));

  vexo_ok("convert in.pgm in.pgm --to yuv400");
  EXPECT_EQ(get("in.pgm"), "P5\n2 1\n255\nab");
}

}  // namespace
}  // namespace tool
