// SPDX-License-Identifier: Apache-2.0
//
// Input that cannot be converted and output that cannot be written: one line on
// standard error, a status that says so, and a folder that looks as before.
#include <algorithm>
#include <sstream>

#include "tool_runner.h"

namespace tool {
namespace {

const std::string kY4m = "YUV4MPEG2 W8 H8 F25:1\nFRAME\n" + noise(96, 1);
const std::string kPpm = "P6\n8 8\n255\n" + noise(192, 1);

// Arguments and what is said of them.
constexpr char kRefused[] =
#ifndef VEXO_HAS_JPEG
    "convert one.y4m o.jpg | without libjpeg\n"
#endif
#ifndef VEXO_HAS_WEBP
    "convert one.y4m o.webp | without libwebp\n"
#endif
#ifndef VEXO_HAS_VIDEO
    "convert sets.h264 o.png | sets.h264 is no PNG, PGM, PPM or Y4M\n"
    "convert one.y4m o.mp4 | without ffmpeg's libraries\n"
    "info sets.h264 | without ffmpeg's libraries\n"
    "thumbnail sets.h264 o.png --fit 8x8 | no PNG\n"
#endif
    R"( | subcommand
convrt one.y4m o.png | 'convrt'; vexo --help lists all; did you mean 'convert'?
--frames one.y4m | '--frames'
convert none.y4m o.png | none.y4m
convert f.raw o.png | --size
convert one.y4m o.bmp | --out-kind
convert one.y4m nowhere/o.png | nowhere/o.png
convert one.y4m o.png --to nv99 | 'nv99'
convert one.y4m o.png --from nv12 | holds yuv420
convert one.y4m o.png --to nv12 | cannot hold nv12
convert one.y4m o.png --standard bt470 | 'bt470'
convert wide.raw o.raw --size 1280x8 --from t256x16 --to rgba8888 | t256x16 of 1280x8 to rgba8888
convert f.raw o.png --size 8x6 --from yuv420 | truncated
convert one.y4m o.raw --to p010le | library: yuv420 to p010le
convert one.y4m o.png --range all | --range 'all'
convert one.y4m o.png --crop 8x8 | --crop '8x8'
convert one.y4m o.png --crop 8x8+1+0 | which is 8x8
convert two.y4m o.png | more than one frame
convert two.y4m %d%d.png | pattern
convert one.y4m a%n.y4m | 'a%n.y4m'
convert one.y4m a%.raw | 'a%.raw'
convert one.y4m a%02d.y4m | holds all frames
convert f.raw o.png --size 8x8x --from yuv420 | WIDTHxHEIGHT
convert f.raw o.png --size 32768x8 --from yuv420 | 32768x8
convert f.raw o.raw --size 32767x32767 --from rgba8888 | 2 GiB
convert /dev/null o.raw --size 8x8 --from yuv420 | no frame
scale one.y4m o.png | --size
scale one.y4m o.png --size 16 | --size '16'
scale one.y4m o.png --size 0x8 | 0x8
scale one.y4m o.png --size 16x16 --from-size 8x8 | --from-size is for
scale f.raw o.raw --size 16x16 | need --from-size and --from
scale one.y4m o.png --size 16x16 --rotate up | --rotate 'up'
scale one.y4m o.png --size 16x16 --rotate 6 | --rotate '6'
scale one.y4m o.png --size 8x8 --fit 8x8 | --fit
scale one.y4m o.png --fit 8 | --fit '8'
scale f.raw o.raw --size 4x4 --from-size 2x2 --from rgbaf16 | refuses to scale rgbaf16 of 2x2
rotate one.y4m o.png | --turn
rotate f.raw o.raw --size 2x2 --from rgbaf16 --turn left | refuses to turn rgbaf16
convert one.y4m o.raw --to yuv42o | did you mean 'yuv420'?
convert one.y4m o.png --standard bt708 | did you mean 'bt709'?
convert one.y4m o.png --qualty 4 | did you mean '--quality'?
convert one.y4m o.png --out-kind pngg | did you mean 'png'?
convert thin.y4m o.png --square-pixels | 8x32768
rotate one.y4m o.png --turn up | --turn 'up'
thumbnail one.y4m o.png | one of --size
thumbnail one.y4m o.png --size 8 | --size '8'
thumbnail one.y4m o.png --size 9x8 | 9x8 is larger than the picture
thumbnail one.y4m o.png --size 8x9 | which is 8x8
thumbnail f.raw o.raw --size 4x4 | need --from-size and --from
thumbnail one.y4m o.png --size 8x8 --turn up | --turn 'up'
thumbnail one.y4m o.png --size 8x8 --turn 6 | --turn '6'
thumbnail one.y4m o.raw --size 8x8 --prescale 3 | --prescale
thumbnail one.y4m o.raw --size 5x4 --prescale 2 | 4x4 of the picture
thumbnail f.raw o.raw --size 1x1 --prescale 4 --from-size 8x4 --from nv12 | leaves 2x1
thumbnail c.ppm o.png --size 4x4 --prescale 2 | --prescale is for 4:2:0
thumbnail one.y4m o.png --fit 8 | --fit '8'
thumbnail one.y4m o.png --size 8x8 --fit 8x8 | one of --size and --fit
thumbnail one.y4m two.y4m o.png --fit 8x8 | --out-dir
tonemap one.y4m o.png | holds yuv420: only
tonemap full.y4m o.png | full range
tonemap one.y4m o.png --via nv12 | --via
tonemap one.y4m o.png --kind pq | --kind 'pq'
tonemap one.y4m o.png --nit 0 | --nit
tonemap one.y4m o.png --nit 10001 | --nit
tonemap one.y4m o.png --nit 1e3 | --nit
tonemap one.y4m o.png --nit 1000 --measure | --measure
tonemap f.raw o.pgm --size 8x4 --from p010le | library: yuv420 to yuv400
sharpen c.ppm o.png --strength 1 | --strength
deblock one.y4m o.png --strength 16 | --strength
deblock one.y4m o.png --strength -1 | --strength
saturate one.y4m o.png --strength 0 | --strength
saturate f.raw o.raw --size 8x8 --from yuv400 | truncated
anaglyph c.ppm o.png | --mode
anaglyph c.ppm o.png --mode 3 | --mode
anaglyph f.raw o.raw --size 3x8 --from rgb888 --mode 1 | not 3
keyframes none.h264 | none.h264
keyframes /dev/null | is empty
keyframes one.y4m | --codec
keyframes one.y4m --codec av1 | 'av1'
keyframes one.y4m --codec vp8 | no IVF
keyframes one.y4m --codec h264 | not a raw stream
keyframes sets.h264 | no frame
keyframes none.ivf | has no frame
keyframes av1.ivf | another codec
keyframes vp9.ivf --codec vp8 | holds vp9
keyframes cut.ivf | truncated
keyframes cut2.ivf | truncated
keyframes cut3.ivf | truncated
fourcc | CODE
fourcc '' | four characters
fourcc h264x | 'h264x'
fourcc 4294967296 | 32 bits
)";

class FailureTest : public ToolTest {
 protected:
  // The prefix is shell too.
  void expect_failure(const std::string &arguments, const std::string &phrase,
                      const std::string &prefix = "") {
    const std::string before = files();
    const Outcome outcome = shell(prefix + "vexo " + arguments);
    const std::string &err = outcome.err;
    const std::string about = arguments + ": " + err;
    // Sanitizers and signals have statuses of their own.
    EXPECT_TRUE(outcome.status == 1 || outcome.status == 2) << about;
    EXPECT_TRUE(err.starts_with("vexo: ")) << about;
    EXPECT_EQ(std::count(err.begin(), err.end(), '\n'), 1) << about;
    EXPECT_NE(err.find(phrase), std::string::npos) << about;
    EXPECT_EQ(files(), before) << about;
  }
};

TEST_F(FailureTest, RequestsThatMakeNoSense) {
  put("one.y4m", kY4m);
  put("two.y4m", kY4m + "FRAME\n" + noise(96, 2));
  put("c.ppm", kPpm);
  put("thin.y4m", "YUV4MPEG2 W8 H8 A1:10000000\nFRAME\n" + noise(96, 1));
  put("full.y4m",
      "YUV4MPEG2 W8 H8 C420p10 XCOLORRANGE=FULL\nFRAME\n" + noise(192, 1));
  put("f.raw", noise(96, 1));
  put("wide.raw", noise(32700 * 12, 1));
  // A parameter set alone; headers of IVF.
  put("sets.h264", {"\0\0\1\x67\x42", 5});
  const std::string ivf{"DKIF\0\0\x20\0", 8}, rest(20, '\0');
  put("av1.ivf", ivf + "AV01" + rest);
  put("none.ivf", ivf + "VP90" + rest);
  put("vp9.ivf", ivf + "VP90" + rest + std::string(12, '\0'));
  put("cut.ivf", ivf + "VP90" + rest + std::string(11, '\0'));
  put("cut2.ivf", ivf + "VP90" + rest + '\2' + std::string(12, '\0'));
  put("cut3.ivf", ivf + "VP90" + std::string(19, '\0'));
  std::istringstream cases(kRefused);
  for (std::string line; std::getline(cases, line);) {
    const size_t bar = line.find(" | ");
    expect_failure(line.substr(0, bar), line.substr(bar + 3));
  }
}

// Cut anywhere, a file is refused, and an older output stays untouched; with
// any byte damaged, vexo may succeed or fail but must do so in order.
TEST_F(FailureTest, TruncatedAndDamagedFiles) {
  put("ppm", kPpm);
  put("y4m", kY4m);
  vexo_ok("convert ppm png --out-kind png");
  for (const std::string name : {"ppm", "y4m", "png"}) {
    const std::string whole = get(name);
    put("out.png", "older");
    for (size_t i = 0; i < whole.size(); i += i < 24 ? 1 : 11) {
      put("bad", whole.substr(0, i));
      expect_failure("convert bad out.png", "");
      EXPECT_EQ(get("out.png"), "older") << name << " " << i;
    }
    for (size_t i = 0; i < 40; ++i) {
      std::string damaged = whole;
      damaged[i] = static_cast<char>(~damaged[i]);
      put("bad", damaged);
      const Outcome outcome = shell("vexo convert bad out.raw");
      const bool good = std::filesystem::remove(path("out.raw"));
      EXPECT_EQ(outcome.status, good ? 0 : 1) << name << " " << i;
      EXPECT_EQ(outcome.err.empty(), good) << name << " " << i;
    }
  }
  // A clip that breaks off within its second frame leaves no first frame.
  put("bad", kY4m + "FRAME\n" + noise(95, 2));
  expect_failure("convert bad out.y4m", "truncated");
}

// All but the largest could pass for 8 x 8 with a careless reader.
TEST_F(FailureTest, DamagedHeaders) {
  for (const std::string header :
       {"YUV4MPEG2 H8\nFRAME\n", "YUV4MPEG2 W8 H-8\nFRAME\n",
        "YUV4MPEG2 W8.5 H8\nFRAME\n", "YUV4MPEG2 W8 H8 C411\nFRAME\n",
        "YUV4MPEG2 W8 H8\nFRAMES\n", "YUV4MPEG2 W32767 H32767\nFRAME\n",
        "P6\n8 8\n65535\n", "P6\n8 8 255x", "P6\n8 -8\n255\n"}) {
    put("bad", header + noise(header[0] == 'Y' ? 96 : 192, 1));
    expect_failure("convert bad out.raw", "bad");
  }
  put("bad", "P6\n1 1\n255\nabcP6\n1 2\n255\nabc");
  expect_failure("convert bad out.raw", "different");
}

TEST_F(FailureTest, OutputsThatFail) {
  put("in.y4m", kY4m);
  put("key.h264", {"\0\0\1\x65\x88", 5});
  expect_failure("convert in.y4m /dev/full --out-kind png", "/dev/full");
  for (const char *const printing :
       {"convert in.y4m -", "formats", "formats --json", "fourcc aac",
        "keyframes key.h264", "--help", "--version", "tonemap --help"}) {
    for (const char *const output : {" >/dev/full", " >&-"}) {
      expect_failure(std::string(printing) + output, "standard output");
    }
  }
  put("big.y4m", "YUV4MPEG2 W512 H512\nFRAME\n" + noise(512 * 768, 1));
  const Outcome gone = shell("vexo convert big.y4m - | head -c 1 >/dev/null");
  EXPECT_TRUE(gone.err.starts_with("vexo: cannot write")) << gone.err;
  for (const char *const name : {"o.raw", "o.png", "- >../o.y4m"}) {
    expect_failure("convert big.y4m " + std::string(name), "too large",
                   "ulimit -f 9; ");
  }
  expect_failure("convert in.y4m " + std::string(252, 'n') + ".y4m", "long");
  shell("ln -s circle.y4m circle.y4m");
  expect_failure("convert in.y4m circle.y4m", "circle.y4m");
}

// A run that is killed takes its temporary along: one frame is through and the
// input stays open, so that it is a third file.
TEST_F(FailureTest, Signals) {
  put("in.y4m", kY4m);
  const std::pair<const char *, int> signals[] = {
      {"HUP", 1},   {"INT", 2},   {"QUIT", 3},  {"ABRT", 6},    {"USR1", 10},
      {"ALRM", 14}, {"TERM", 15}, {"XCPU", 24}, {"VTALRM", 26}, {"IO", 29}};
  for (const auto &[name, number] : signals) {
    const Outcome killed = shell(
        "ulimit -c 0; { cat in.y4m; for i in $(seq 99); do "
        "[ $(ls -A | wc -l) = 3 ] && kill -" +
        std::string(name) +
        " $(cat pid) && break; sleep 0.1; done; } | sh -c 'echo $$ >pid; "
        "exec \"" VEXO_BINARY "\" convert - o.raw'; echo $?; rm pid; ls -A");
    EXPECT_EQ(killed.out, std::to_string(128 + number) + "\nin.y4m\n") << name;
  }
}

// Neither fills the memory nor runs for ever.
TEST_F(FailureTest, EndlessInputs) {
  expect_failure("keyframes /dev/zero --codec h264", "within 64 MiB");
  expect_failure("convert - o.png", "not a sound PGM",
                 "{ printf 'P6#'; cat /dev/zero; } | ");
  std::string clip;
  while (clip.size() < 100000) clip += {"\0\0\1\x65\x88\x42", 6};
  put("clip.h264", clip);
  const Outcome lines = shell(
      "while cat clip.h264; do :; done 2>/dev/null | "
      "vexo keyframes - --codec h264 2>/dev/null | head -n 2");
  EXPECT_EQ(lines.out,
            "     0          0        6 key\n     1          6        6 key\n");
}

}  // namespace
}  // namespace tool
