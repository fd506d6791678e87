// SPDX-License-Identifier: Apache-2.0
//
// What ffmpeg encodes: colours as its own exact conversion has them, turns,
// windows and times by content, thumbnails, and files that are not whole.
#include <algorithm>
#include <array>
#include <sstream>
#include <vector>

#include "video_runner.h"

namespace tool {
namespace {

// Of soft pictures, so that it does not count how chroma is interpolated.
// Matrices that are as good as another one, both ranges, chroma of all kinds,
// depths that are widened and narrowed: converted by the standard that the
// stream tells.
TEST_F(VideoTest, ColoursOfTheStream) {
  const std::array<std::string, 4> tags[] = {
      {"bt709", "tv", "yuv420p", "bt709"},
      {"bt709", "pc", "yuv420p", "bt709"},
      {"smpte170m", "tv", "yuv444p", "bt601"},
      {"bt470bg", "pc", "yuv420p", "bt601"},
      {"fcc", "tv", "yuv420p10le", "bt601"},
      {"fcc", "pc", "yuv420p12le", "bt601"},
      {"smpte240m", "tv", "yuv420p", "bt709"},
      {"bt709", "tv", "yuv440p", "bt709"},
      {"smpte170m", "tv", "yuv422p16le", "bt601"},
      {"bt470bg", "tv", "yuva420p", "bt601"},
      {"rgb", "pc", "gbrp10le", "bt601"},
      {"smpte170m", "tv", "yuv411p", "bt601"},
      {"bt709", "pc", "yuv444p12le", "bt709"},
      {"bt709", "tv", "yuv444p", "bt709"},
      {"bt2020nc", "tv", "yuv444p10le", "bt2020"},
      {"bt2020nc", "pc", "yuv444p", "bt2020"},
      {"smpte170m", "tv", "yuv410p", "bt601"}};
  std::string encode = kSource, decode;
  for (const auto &[matrix, range, format, standard] : tags) {
    const std::string name = matrix + range + format;
    encode += "-frames:v 1 -c:v ffv1 -vf gblur=9,scale=out_range=" + range +
              (matrix == "rgb" ? "" : ":out_color_matrix=" + matrix) +
              ":flags=accurate_rnd,format=" + format + " -colorspace " +
              matrix + " -color_range " + range + " " + name + ".mkv ";
  }
  ffmpeg(encode);
  int input = 0;
  std::string inputs;
  for (const auto &[matrix, range, format, standard] : tags) {
    const std::string name = matrix + range + format;
    inputs += "-i " + name + ".mkv ";
    decode += "-map " + std::to_string(input++) +
              ":v -vf scale=flags=neighbor+accurate_rnd+full_chroma_int,"
              "format=rgb24 -f rawvideo " +
              name + ".rgb ";
  }
  ffmpeg(inputs + decode);
  for (const auto &[matrix, range, format, standard] : tags) {
    const std::string name = matrix + range + format;
    const std::string got = pixels(name + ".mkv");
    EXPECT_GE(psnr(got, get(name + ".rgb")), 38) << name;
    // The options outweigh the stream.
    if (matrix == "rgb" || matrix == "smpte240m") continue;
    const std::string said = " --standard " + standard + " --range " +
                             (range == "pc" ? "full" : "limited");
    EXPECT_TRUE(pixels(name + ".mkv" + said) == got || format == "yuva420p")
        << name;
    const std::string other = standard == "bt709" ? "bt601" : "bt709";
    if (format == "yuva420p") continue;
    EXPECT_FALSE(pixels(name + ".mkv --standard " + other) == got) << name;
  }
  // Luma alone through a Y4M keeps its range.
  vexo_ok("convert bt709pcyuv420p.mkv full.y4m");
  EXPECT_NE(get("full.y4m").find(" C420jpeg XCOLORRANGE=FULL\n"),
            std::string::npos);
  EXPECT_TRUE(pixels("full.y4m") ==
              pixels("bt709pcyuv420p.mkv --standard bt601-full"));
  expect_failure("convert bt709pcyuv420p.mkv o.raw --stream 1", "--stream 1");
}

// What the library has no standard for is not taken for another unawares.
TEST_F(VideoTest, UnknownMatrix) {
  ffmpeg(kSource + std::string("-frames:v 1 -c:v ffv1 -pix_fmt yuv444p "
                               "-colorspace ycgco in.mkv"));
  expect_failure("convert in.mkv o.png", "ycgco");
  vexo_ok("convert in.mkv o.y4m");
  vexo_ok("convert in.mkv o.png --standard bt709");
}

// As the tone mapping of the same samples without tags; not where it is
// unwanted.
TEST_F(VideoTest, Hdr) {
  ffmpeg(kSource +
         std::string("-pix_fmt yuv420p10le -frames:v 2 -c:v ffv1 -color_range "
                     "tv -colorspace bt2020nc -color_trc smpte2084 pq.mkv "
                     "-pix_fmt yuv420p10le -frames:v 2 -c:v ffv1 -color_range "
                     "tv -colorspace bt2020nc -color_trc arib-std-b67 hlg.mkv "
                     "-pix_fmt yuv422p12le -frames:v 2 -c:v ffv1 -color_range "
                     "tv -colorspace bt2020nc -color_trc smpte2084 fine.mkv"));
  ffmpeg("-i pq.mkv -f rawvideo pq.raw");
  vexo_ok("convert hlg.mkv hlg.y4m --kind none");
  const std::string raw =
      "tonemap pq.raw want.y4m --size 96x64 --from yuv420Planar16 --kind ";
  const auto tail = [](const std::string &file) {
    return file.substr(file.find('\n'));
  };
  vexo_ok(raw + "hdr10");
  vexo_ok("convert pq.mkv got.y4m");
  EXPECT_TRUE(tail(get("got.y4m")) == tail(get("want.y4m")));
  vexo_ok("tonemap pq.mkv got.y4m --nit 4000");
  vexo_ok(raw + "hdr10 --nit 4000");
  EXPECT_TRUE(tail(get("got.y4m")) == tail(get("want.y4m")));
  // Samples of 12 bits and finer chroma become such first.
  vexo_ok("convert fine.mkv fine.y4m");
  vexo_ok("convert pq.mkv got.y4m");
  EXPECT_GE(psnr(get("fine.y4m"), get("got.y4m")), 35);
  vexo_ok("convert pq.mkv got.raw --kind none");
  EXPECT_TRUE(get("got.raw") == get("pq.raw"));
  vexo_ok("convert hlg.mkv got.y4m");
  vexo_ok("tonemap hlg.y4m want.y4m --kind hlg");
  EXPECT_TRUE(tail(get("got.y4m")) == tail(get("want.y4m")));
}

// The eight matrices of a track. A pixel is shown where its matrix says.
TEST_F(VideoTest, TurnsOfTheContainer) {
  ffmpeg(kSource + std::string("-frames:v 1 -c:v mpeg4 -q:v 2 in.mp4"));
  const std::string file = get("in.mp4");
  const std::string stored = pixels("in.mp4 --keep-turn");
  const size_t at = file.find("tkhd") + 4 + 40;
  constexpr std::array<int, 4> kMatrices[] = {
      {1, 0, 0, 1}, {-1, 0, 0, 1}, {1, 0, 0, -1}, {-1, 0, 0, -1},
      {0, 1, 1, 0}, {0, 1, -1, 0}, {0, -1, 1, 0}, {0, -1, -1, 0}};
  for (const auto &[a, b, c, d] : kMatrices) {
    std::string turned = file;
    const int places[] = {0, 1, 3, 4}, values[] = {a, b, c, d};
    for (int i = 0; i < 4; ++i) {
      const uint32_t fixed = static_cast<uint32_t>(values[i]) << 16;
      for (int k = 0; k < 4; ++k) {
        turned[at + 4 * places[i] + k] =
            static_cast<char>(fixed >> (24 - 8 * k));
      }
    }
    put("in.mp4", turned);
    const int width = a != 0 ? 96 : 64, height = a != 0 ? 64 : 96;
    std::string expected(stored.size(), '\0');
    for (int y = 0; y < 64; ++y) {
      for (int x = 0; x < 96; ++x) {
        const int to_x = a * x + c * y + (a + c < 0 ? width - 1 : 0);
        const int to_y = b * x + d * y + (b + d < 0 ? height - 1 : 0);
        std::copy_n(stored.data() + 3 * (96 * y + x), 3,
                    expected.data() + 3 * (width * to_y + to_x));
      }
    }
    EXPECT_TRUE(pixels("in.mp4") == expected) << a << b << c << d;
  }
}

TEST_F(VideoTest, WindowsOfEveryLayout) {
  const std::string whole = noise(37 * 21 * 3, 1);
  put("in.raw", whole);
  std::string expected;
  for (int y = 4; y < 4 + 11; ++y) {
    expected += whole.substr(3 * (37 * y + 24), 3 * 13);
  }
  const std::string in = "convert in.raw --size 37x21 --from rgb888 ";
  expect(in + "--crop 13x11+24+4", expected);
  vexo_ok(in + "all.y4m --to yuv444");
  vexo_ok("convert all.y4m part.y4m --crop 13x11+24+4");
  vexo_ok(
      "convert in.raw want.y4m --size 37x21 --from rgb888 --to yuv444 "
      "--crop 13x11+24+4");
  EXPECT_TRUE(get("part.y4m") == get("want.y4m"));
  // Odd places of pairs are rounded down.
  for (const std::string to :
       {"yuv420", "nv12", "yuyv", "yuv420Planar16", "p010le", "yuv422n"}) {
    const size_t bytes = to == "yuyv" || to == "yuv422n" ? 2 : 3;
    put("in.raw", noise(40 * 20 * bytes, 2));
    const std::string from = "convert in.raw --size 40x20 --from " + to;
    vexo_ok(from + " got.raw --crop 8x6+25+5");
    vexo_ok(from + " one.raw --crop 40x6+0+4");
    put("in.raw", get("one.raw"));
    expect("convert in.raw --size 40x6 --crop 8x6+24+0 --from " + to,
           get("got.raw"));
  }
}

// Frame n has luma 16 + 20 n.
TEST_F(VideoTest, Times) {
  ffmpeg(
      "-f lavfi -i color=black:s=32x32:r=10:d=1,geq=lum=16+20*N:cb=128:cr=128 "
      "-c:v mpeg4 -q:v 2 -g 4 -sc_threshold 1000000000 in.mp4");
  for (const auto &[at, frame] : {std::pair{"0", 0},
                                  {"0.3s", 3},
                                  {"0.55", 5},
                                  {"50%", 5},
                                  {"0:00.7", 7},
                                  {"9s", 9}}) {
    vexo_ok("convert in.mp4 got.raw --frames 1 --at " + std::string(at));
    EXPECT_NEAR(static_cast<uint8_t>(get("got.raw")[99]), 16 + 20 * frame, 3)
        << at;
  }
  vexo_ok("convert in.mp4 got.raw --at 0.3s -j 3");
  EXPECT_EQ(get("got.raw").size(), 7 * 32 * 32 * 3 / 2);
  for (const char *const at : {"101%", "x", "1:2:3:4", "-1"}) {
    expect_failure("convert in.mp4 o.raw --at=" + std::string(at), "--at");
  }
  const std::string json = shell("vexo info in.mp4 --json").out;
  for (const char *const fact :
       {"\"codec\": \"mpeg4\"", "\"width\": 32", "\"frames\": 10",
        "\"key_frames\": [0, 0.4, 0.8]", "\"rate\": \"10/1\"",
        "\"duration\": 1"}) {
    EXPECT_NE(json.find(fact), std::string::npos) << fact << json;
  }
}

// Black and flat key frames are passed over; what fails is said and the rest is
// made.
TEST_F(VideoTest, Thumbnails) {
  ffmpeg(
      "-f lavfi -i color=black:s=96x64:r=10:d=2 -f lavfi -i "
      "color=gray:s=96x64:r=10:d=1 " +
      std::string(kSource) +
      "-filter_complex [0][1][2]concat=n=3 -c:v mpeg4 -q:v 2 -g 5 a.mp4");
  vexo_ok("thumbnail a.mp4 a.png --fit 48x48");
  const std::string small = pixels("a.png");
  EXPECT_EQ(small.size(), 48 * 32 * 3);
  vexo_ok("thumbnail a.mp4 b.png --fit 48x48 --at 3s");
  EXPECT_GE(psnr(small, pixels("b.png")), 38);
  // Wider pixels; black rows above and below; cut to a square.
  ffmpeg("-i a.mp4 -vf setsar=2 -c:v mpeg4 -q:v 2 wide.mp4");
  vexo_ok("thumbnail wide.mp4 c.png --fit 48x48 --letterbox --at 3s");
  const std::string boxed = pixels("c.png");
  ASSERT_EQ(boxed.size(), 48 * 48 * 3);
  EXPECT_EQ(boxed.substr(0, 48 * 16 * 3), std::string(48 * 16 * 3, '\0'));
  EXPECT_NE(boxed.substr(48 * 16 * 3, 48), std::string(48, '\0'));
  vexo_ok("thumbnail a.mp4 d.png --fit 32x32 --fill --at 3s");
  EXPECT_EQ(pixels("d.png").size(), 32 * 32 * 3);

  put("bad.mp4", get("a.mp4").substr(0, 3000));
  put("e.ppm", "P6\n8 8\n255\n" + noise(192, 1));
  const Outcome outcome = shell(
      "vexo thumbnail a.mp4 bad.mp4 e.ppm none.mp4 wide.mp4 --out-dir d "
      "--fit 8x8 -j 3");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 2)
      << outcome.err;
  EXPECT_EQ(shell("ls d").out, "a.png\ne.png\nwide.png\n");
}

// Every kind, cut and damaged: a line and a status, nothing half written.
TEST_F(VideoTest, NotWhole) {
  ffmpeg(
      kSource +
      std::string("-c:v mpeg4 -movflags faststart a.mp4 -c:v mpeg4 a.avi "
                  "-c:v mjpeg a.mkv -c:v libvpx -cpu-used 8 a.webm -frames:v "
                  "1 a.jpg -frames:v 1 a.bmp -frames:v 1 a.gif -frames:v 1 "
                  "-c:v libwebp a.webp -frames:v 1 a.tiff"));
  for (const std::string ending :
       {"mp4", "avi", "mkv", "webm", "jpg", "bmp", "gif", "webp", "tiff"}) {
    const std::string whole = get("a." + ending);
    vexo_ok("convert a." + ending + " o.y4m");
    shell("rm o.y4m");
    for (const size_t part : {1, 40, 90}) {
      put("cut." + ending, whole.substr(0, whole.size() * part / 100));
      expect_failure("convert cut." + ending + " o.y4m", "cut." + ending);
    }
    shell("rm cut.*");
    for (size_t i = 0; i < 6; ++i) {
      std::string damaged = whole;
      for (size_t k = i * 7; k < whole.size(); k += whole.size() / 5) {
        damaged[k] = static_cast<char>(~damaged[k]);
      }
      put("bad." + ending, damaged);
      const Outcome outcome = shell("vexo convert bad." + ending + " o.y4m");
      const bool good = std::filesystem::remove(path("o.y4m"));
      EXPECT_EQ(outcome.status, good ? 0 : 1) << ending << i;
      EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), !good)
          << ending << i << outcome.err;
    }
    shell("rm bad.*");
  }
}

// What is written by other libraries is read again.
TEST_F(VideoTest, PicturesOfOtherLibraries) {
  ffmpeg(
      "-f lavfi -i gradients=s=96x64:d=1:seed=1 -frames:v 1 -pix_fmt rgb24 "
      "in.png");
  const std::string rgb = pixels("in.png");
  std::string bytes;
  const std::string names[] = {
      "p.png",
#ifdef VEXO_HAS_JPEG
      "o.jpg",
#endif
#ifdef VEXO_HAS_WEBP
      "o.webp",
#endif
  };
  for (const std::string &name : names) {
    for (const std::string quality : {"20", "100"}) {
      vexo_ok("convert in.png " + name + " --quality " + quality);
      EXPECT_GE(psnr(pixels(name), rgb), quality == "20" ? 25 : 38) << name;
      // Better ones are larger, but for PNG, which has one quality.
      EXPECT_TRUE(quality == "20" || get(name).size() > bytes.size() ||
                  pixels(name) == rgb)
          << name;
      bytes = get(name);
    }
  }
#ifdef VEXO_HAS_JPEG
  // Samples of a JPEG go into another one as they are.
  vexo_ok("convert o.jpg again.jpg --quality 100");
  EXPECT_GE(psnr(pixels("again.jpg"), pixels("o.jpg")), 45);
  ffmpeg("-i o.jpg -vf scale=37:23 -pix_fmt yuvj420p odd.jpg");
  vexo_ok("convert odd.jpg odd2.jpg --quality 100");
  EXPECT_GE(psnr(pixels("odd2.jpg"), pixels("odd.jpg")), 40);
#endif
  // PNG is the same whatever the effort.
  vexo_ok("convert in.png p.png --png-level 0");
  EXPECT_TRUE(pixels("p.png") == rgb);
  EXPECT_GT(get("p.png").size(), rgb.size());
}

// H.264 with the tags of what was written; the comparison is ffmpeg's.
TEST_F(VideoTest, VideosAndTheirComparison) {
  ffmpeg(
      kSource +
      std::string("-c:v ffv1 -pix_fmt yuv420p -colorspace bt709 -color_range "
                  "tv -color_primaries bt709 -color_trc bt709 in.mkv"));
  for (const std::string name : {"o.mp4", "o.mkv", "o.webm"}) {
    vexo_ok("convert in.mkv " + name + " --quality 80");
    const std::string json = shell("vexo info " + name + " --json").out;
    for (const char *const fact :
         {"\"matrix\": \"bt709\"", "\"range\": \"limited\"",
          "\"transfer\": \"bt709\"", "\"frames\": 10", "\"rate\": \"10/1\""}) {
      EXPECT_NE(json.find(fact), std::string::npos) << name << fact << json;
    }
    const std::string said =
        shell("vexo compare in.mkv " + name + " --quiet --map map.png").out;
    const std::string theirs =
        shell("ffmpeg -hide_banner -i " + name +
              " -i in.mkv -lavfi '[0][1]psnr,nullsink;[0][1]ssim' -f null - "
              "2>&1 | sed -n 's/.*PSNR y:\\([0-9.]*\\).*average:\\([0-9.]*\\).*"
              "/\\1 \\2/p; s/.*SSIM Y:\\([0-9.]*\\).*All:\\([0-9.]*\\).*/\\1 "
              "\\2/p' | sort")
            .out;
    std::istringstream numbers(theirs);
    const std::string phrases[] = {"ssim y:", " all:", "psnr y:", " all:"};
    // SSIM sorts first; its `all` is the last of the line.
    const size_t ssim = said.find("ssim");
    const size_t from[] = {0, ssim, 0, 0};
    for (int i = 0; i < 4; ++i) {
      double number = 0;
      numbers >> number;
      const size_t at = said.find(phrases[i], from[i]) + phrases[i].size();
      EXPECT_NEAR(std::stod(said.substr(at)), number, 0.001)
          << name << i << said << theirs;
    }
    EXPECT_GT(std::stod(said.substr(said.find("psnr y:") + 7)), 30);
  }
  EXPECT_NE(shell("vexo compare in.mkv in.mkv --json")
                .out.find("\"mean\": {\"psnr\": {\"y\": null"),
            std::string::npos);
  EXPECT_EQ(pixels("map.png").size(), 96 * 64 * 3);
  vexo_ok("convert in.mkv five.y4m --frames 5");
  const Outcome shorter = shell("vexo compare in.mkv five.y4m");
  EXPECT_EQ(shorter.status, 1);
  EXPECT_EQ(shorter.err,
            "vexo: five.y4m ends after 5 frames, the other does not\n");
  expect_failure("convert in.mkv o.avi --crop 9x9+0+0 --out-kind png", "%03d");
}

// Cells of the size that fits, at the places of the grid, each a picture of
// its own time; with times, other pixels below on the right alone.
TEST_F(VideoTest, Sheet) {
  ffmpeg(
      "-f lavfi -i color=black:s=64x32:r=10:d=4,geq=lum=40+5*N:cb=128:cr=128 "
      "-c:v mpeg4 -q:v 2 -g 1 in.mp4");
  vexo_ok("sheet in.mp4 o.png --grid 2x2 --cell 32x32");
  const std::string sheet = pixels("o.png");
  ASSERT_EQ(sheet.size(), 76 * 44 * 3);
  for (int i = 0; i < 4; ++i) {
    const int x = 4 + i % 2 * 36, y = 4 + i / 2 * 20;
    const int frame = 5 + 10 * i;
    EXPECT_NEAR(static_cast<uint8_t>(sheet[3 * (76 * (y + 4) + x + 9)]),
                (40 + 5 * frame - 16) * 255 / 219.0, 4)
        << i;
  }
  EXPECT_EQ(sheet.substr(0, 12), std::string(12, ' '));
}

}  // namespace
}  // namespace tool
