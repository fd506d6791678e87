// SPDX-License-Identifier: Apache-2.0
//
// What containers say besides their pictures, from ffmpeg's to ours: times of
// frames, shapes of pixels, turns of 10 bits, and files that come through
// pipes.
#include <sstream>
#include <vector>

#include "video_runner.h"

namespace tool {
namespace {

class ContainerTest : public VideoTest {
 protected:
  // A fact of a file's video, as ffprobe says it.
  std::string probed(const std::string &entries,
                     const std::string &name) const {
    return shell(
               "ffprobe -v error -select_streams v -of csv=p=0 -show_entries " +
               entries + " " + name)
        .out;
  }
  // Of all frames, in seconds from the first one on.
  std::vector<double> times(const std::string &name) const {
    std::istringstream lines(probed("frame=best_effort_timestamp_time", name));
    std::vector<double> all;
    for (double time; lines >> time; lines.ignore(9, '\n')) {
      all.push_back(all.empty() ? -time : time + all[0]);
    }
    if (!all.empty()) all[0] = 0;
    return all;
  }
};

// Runs of three frames and gaps of four, then a long one.
TEST_F(ContainerTest, VariableRates) {
  ffmpeg(
      "-f lavfi -i testsrc2=s=96x64:r=30:d=3 -vf "
      "select='lt(mod(n\\,7)\\,3)*lt(n\\,60)+eq(n\\,80)' -vsync vfr "
      "-c:v mpeg4 in.mkv");
  const std::vector<double> wanted = times("in.mkv");
  ASSERT_EQ(wanted.size(), 28);
  EXPECT_NEAR(wanted[3], 7 / 30.0, 0.001);
  for (const std::string name : {"o.mp4", "o.mkv", "o.mov", "o.ts"}) {
    vexo_ok("convert in.mkv " + name);
    const std::vector<double> got = times(name);
    ASSERT_EQ(got.size(), wanted.size()) << name;
    for (size_t i = 0; i < got.size(); ++i) {
      EXPECT_NEAR(got[i], wanted[i], 0.0001) << name << i;
    }
  }
  // From a frame on, through several threads and turned.
  vexo_ok("rotate in.mkv o.mp4 --turn left --at 0.5s -j 3");
  const std::vector<double> rest = times("o.mp4");
  ASSERT_EQ(rest.size(), 28 - 7);
  EXPECT_NEAR(rest.back(), wanted.back() - wanted[7], 0.0002);
  // One rate for all: the average, which MP4 knows.
  ffmpeg("-i in.mkv -c copy in.mp4");
  vexo_ok("convert in.mp4 o.y4m");
  const std::string y4m = get("o.y4m");
  int num = 0, den = 0;
  ASSERT_EQ(std::sscanf(y4m.c_str(), "YUV4MPEG2 W96 H64 F%d:%d Ip", &num, &den),
            2);
  EXPECT_NEAR(28.0 * den / num, wanted.back(), 0.4) << y4m.substr(0, 40);
}

// Of pixels of 4:3 a picture of 96 x 64 is shown in 128 x 64.
TEST_F(ContainerTest, ShapesOfPixels) {
  ffmpeg(
      "-f lavfi -i testsrc2=s=96x64:r=10:d=0.2 -vf gblur=4,setsar=4/3 "
      "-c:v ffv1 -pix_fmt yuv420p in.mkv -vf gblur=4,scale=128:64 "
      "-pix_fmt yuv420p -f rawvideo wide.raw");
  for (const std::string name : {"o.mp4", "o.mkv", "o.webm"}) {
    vexo_ok("convert in.mkv " + name);
    EXPECT_EQ(probed("stream=sample_aspect_ratio", name), "4:3\n") << name;
  }
  const auto head = [&](const std::string &arguments) {
    vexo_ok(arguments);
    const std::string y4m = get("o.y4m");
    return y4m.substr(10, y4m.find(" C") - 10);
  };
  EXPECT_EQ(head("convert in.mkv o.y4m"), "W96 H64 F10:1 Ip A4:3");
  EXPECT_EQ(head("convert in.mkv o.y4m --square-pixels"),
            "W128 H64 F10:1 Ip A1:1");
  vexo_ok("convert o.y4m o.raw");
  EXPECT_GE(psnr(get("o.raw"), get("wide.raw")), 36);
  EXPECT_EQ(head("scale in.mkv o.y4m --size 48x64"), "W48 H64 F10:1 Ip A8:3");
  EXPECT_EQ(head("rotate in.mkv o.y4m --turn left"), "W64 H96 F10:1 Ip A3:4");
  EXPECT_EQ(head("rotate in.mkv o.y4m --turn left --square-pixels"),
            "W64 H128 F10:1 Ip A1:1");
  EXPECT_EQ(head("scale in.mkv o.y4m --fit 200x51"), "W102 H50 F10:1 Ip A1:1");
  EXPECT_EQ(head("scale in.mkv o.y4m --fit 40x200 --rotate left"),
            "W40 H80 F10:1 Ip A1:1");
  EXPECT_EQ(head("thumbnail in.mkv o.y4m --fit 64x64"),
            "W64 H32 F10:1 Ip A1:1");
  EXPECT_EQ(head("thumbnail in.mkv o.y4m --size 48x48"),
            "W48 H48 F10:1 Ip A2:1");
  vexo_ok("sheet in.mkv o.png --grid 1x1 --cell 64x64");
  EXPECT_EQ(probed("stream=width,height", "o.png"), "72,40\n");
  // Nothing of a picture is lost to an encoder.
  put("odd.ppm", "P6\n7 8\n255\n" + noise(168, 1));
  expect_failure("convert odd.ppm o.mp4", "even sides, not 7x8");
  vexo_ok("convert odd.ppm o.mp4 --to yuv444");
  EXPECT_EQ(probed("stream=width,height", "o.mp4"), "7,8\n");
  // Where nothing is said nothing changes.
  put("in.y4m", "YUV4MPEG2 W2 H2 F5:1\nFRAME\nabcdef");
  EXPECT_EQ(head("convert in.y4m o.y4m --square-pixels"), "W2 H2 F5:1");
}

// A clip of BT.709 that goes by way of RGB comes back as bright as it was, and
// says what it is now.
TEST_F(ContainerTest, ThereAndBackByRgb) {
  ffmpeg(
      "-f lavfi -i color=white:s=64x32:d=0.2:r=10,format=yuv422p -colorspace "
      "bt709 -color_range tv -c:v ffv1 in.mkv");
  for (const std::string command :
       {"anaglyph --mode 1", "thumbnail --size 32x32"}) {
    vexo_ok(command + " in.mkv o.mkv --quality 100");
    EXPECT_EQ(probed("stream=color_space", "o.mkv"), "smpte170m\n") << command;
    ffmpeg("-i o.mkv -pix_fmt gray -vf extractplanes=y -f rawvideo o.raw");
    EXPECT_NEAR(static_cast<uint8_t>(get("o.raw")[99]), 235, 1) << command;
  }
}

// Ten bits stay ten: as ffmpeg turns them, which goes by the same matrix.
TEST_F(ContainerTest, TurnsOfTenBits) {
  ffmpeg(kSource +
         std::string("-frames:v 2 -c:v ffv1 -pix_fmt yuv420p10le in.mkv"));
  ffmpeg("-i in.mkv -vf transpose=1 -f rawvideo right.raw");
  ffmpeg("-i in.mkv -vf hflip -f rawvideo mirrored.raw");
  vexo_ok("rotate in.mkv o.raw --turn right");
  EXPECT_TRUE(get("o.raw") == get("right.raw"));
  vexo_ok("rotate in.mkv o.raw --turn mirror");
  EXPECT_TRUE(get("o.raw") == get("mirrored.raw"));
  ffmpeg(
      "-i in.mkv -c:v libx264 -qp 0 -preset ultrafast -metadata:s:v rotate=270 "
      "in.mp4");
  ffmpeg("-i in.mp4 -f rawvideo right.raw");
  vexo_ok("convert in.mp4 o.raw");
  EXPECT_EQ(get("o.raw").size(), 2 * 96 * 64 * 3);
  EXPECT_TRUE(get("o.raw") == get("right.raw"));
}

// An index at the end, as most tools write it, is no hindrance.
TEST_F(ContainerTest, Pipes) {
  ffmpeg(kSource + std::string("-c:v mpeg4 end.mp4 -c:v mpeg4 -movflags "
                               "faststart front.mp4 -c:v mpeg4 in.mkv "
                               "-c:v mpeg4 end.mov"));
  for (const std::string name : {"end.mp4", "front.mp4", "in.mkv", "end.mov"}) {
    vexo_ok("convert " + name + " want.y4m");
    const std::string before = files();
    const Outcome piped = shell("cat " + name + " | TMPDIR=. vexo convert - -");
    EXPECT_TRUE(piped.out == get("want.y4m")) << name << piped.err;
    EXPECT_EQ(files(), before);
    const Outcome small =
        shell("cat " + name + " | vexo thumbnail - o.png --fit 32x32");
    EXPECT_EQ(small.err + get("o.png").substr(1, 3), "PNG") << name;
    shell("rm o.png");
  }
  const Outcome cut = shell("head -c 9000 end.mp4 | vexo convert - o.y4m");
  EXPECT_EQ(cut.status, 1);
  EXPECT_EQ(std::count(cut.err.begin(), cut.err.end(), '\n'), 1) << cut.err;
  const Outcome full = shell(
      "ulimit -f 1; cat end.mp4 | vexo convert - /dev/null --out-kind raw");
  EXPECT_EQ(full.err, "vexo: cannot write a temporary file: File too large\n");
}

TEST_F(ContainerTest, Facts) {
  ffmpeg(kSource +
         std::string("-f lavfi -i sine=d=1 -c:v libx265 "
                     "-x265-params "
                     "log-level=none:keyint=3:bframes=0:scenecut=0:master-"
                     "display=\"G(13250,34500)B(7500,3000)"
                     "R(34000,16000)WP(15635,16450)L(10000000,50)\" -pix_fmt "
                     "yuv420p10le -color_primaries bt2020 -color_trc smpte2084 "
                     "-colorspace bt2020nc -color_range tv \"a \\\"b.mkv\""));
  const std::string check =
      "import json, sys\n"
      "file = json.load(sys.stdin)\n"
      "video, sound = file[\"streams\"]\n"
      "print(video[\"matrix\"], video[\"transfer\"], video[\"primaries\"],\n"
      "      video[\"range\"], video[\"layout\"], video[\"standard\"],\n"
      "      video[\"display_nits\"], video[\"frames\"],\n"
      "      [round(10 * time) for time in video[\"key_frames\"]],\n"
      "      file[\"file\"], sound[\"type\"], round(file[\"duration\"]))";
  put("check.py", check);
  const Outcome facts =
      shell("vexo info 'a \"b.mkv' --json | python3 check.py");
  EXPECT_EQ(facts.out,
            "bt2020nc smpte2084 bt2020 limited yuv420Planar16 bt2020 1000 10 "
            "[0, 3, 6, 9] a \"b.mkv audio 1\n")
      << facts.err;
  const Outcome said = shell("vexo convert 'a \"b.mkv' o.y4m --verbose");
  for (const char *const fact :
       {"matrix bt2020nc", "limited range", "smpte2084", "display 1000 nits",
        "taken as bt2020", "tone mapped as hdr10 of 1000 nits"}) {
    EXPECT_NE(said.err.find(fact), std::string::npos) << fact << said.err;
  }
  EXPECT_EQ(std::count(said.err.begin(), said.err.end(), '\n'), 1) << said.err;
  // What is cut is told, and so is that it is.
  ffmpeg(kSource + std::string("-c:v mpeg4 -movflags faststart cut.mp4"));
  put("cut.mp4", get("cut.mp4").substr(0, 6000));
  const Outcome cut = shell("vexo info cut.mp4");
  EXPECT_EQ(cut.status, 1);
  EXPECT_NE(cut.out.find("96x64"), std::string::npos);
  EXPECT_EQ(cut.err, "vexo: cut.mp4 is truncated or damaged\n");
}

// Of flat pictures both numbers are known; colours are compared, not samples.
TEST_F(ContainerTest, Comparisons) {
  const auto clip = [](int first, int second) {
    return "YUV4MPEG2 W16 H8 Cmono\nFRAME\n" +
           std::string(128, static_cast<char>(first)) + "FRAME\n" +
           std::string(128, static_cast<char>(second));
  };
  put("a.y4m", clip(100, 50));
  put("b.y4m", clip(110, 50));
  // Errors of 100 and of 0; of means alone, (2 a b + c) / (a a + b b + c).
  const double likeness =
      (2 * 100 * 110 + 6.5025) / (100 * 100 + 110 * 110 + 6.5025);
  char expected[400];
  const auto line = [](double psnr, double ssim) {
    char text[99];
    std::snprintf(text, sizeof text,
                  "psnr y:%.4f all:%.4f  ssim y:%.4f all:%.4f", psnr, psnr,
                  ssim, ssim);
    return std::string(text);
  };
  std::snprintf(
      expected, sizeof expected, "%7d %s\n%7d %s\nmean of 2 %s\n", 0,
      line(10 * std::log10(255 * 255 / 100.0), likeness).c_str(), 1,
      line(INFINITY, 1).c_str(),
      line(10 * std::log10(255 * 255 / 50.0), (likeness + 1) / 2).c_str());
  EXPECT_EQ(shell("vexo compare a.y4m b.y4m").out, expected);
  EXPECT_EQ(shell("vexo compare a.y4m b.y4m --json | python3 -c 'import json, "
                  "sys; print(json.load(sys.stdin)[\"mean\"][\"psnr\"])'")
                .out,
            "{'y': 31.1411, 'all': 31.1411}\n");
  ffmpeg(
      kSource +
      std::string("-frames:v 1 -vf gblur=6,scale=out_color_matrix=bt709:flags="
                  "accurate_rnd,format=yuv444p -colorspace bt709 -color_range "
                  "tv -c:v ffv1 a.mkv"));
  ffmpeg(
      "-i a.mkv -vf scale=flags=accurate_rnd+full_chroma_int,format=rgb24 "
      "b.png");
  ffmpeg(
      "-i a.mkv -vf "
      "scale=in_color_matrix=bt709:out_color_matrix=bt601:in_range="
      "tv:out_range=pc:flags=accurate_rnd -colorspace smpte170m -color_range "
      "pc "
      "-c:v ffv1 c.mkv");
  for (const std::string other : {"b.png", "c.mkv"}) {
    const std::string pairs[] = {"a.mkv " + other, other + " a.mkv"};
    for (const std::string &pair : pairs) {
      const std::string said = shell("vexo compare --quiet " + pair).out;
      EXPECT_GE(std::stod(said.substr(said.find(" all:") + 5)), 44)
          << pair << said;
    }
  }
}

}  // namespace
}  // namespace tool
