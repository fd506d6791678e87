// SPDX-License-Identifier: Apache-2.0
//
// Input that cannot be converted: one line on standard error, a status that
// says so, and a folder that looks as before.
#include <algorithm>
#include <filesystem>

#include "tool_runner.h"

namespace tool {
namespace {

class FailureTest : public ToolTest {
 protected:
  void expect_failure(const std::string &arguments, const std::string &phrase) {
    const std::vector<std::string> before = files();
    const Outcome outcome = vexo(arguments);
    // Sanitizers and signals have statuses of their own.
    EXPECT_TRUE(outcome.status == 1 || outcome.status == 2)
        << arguments << ": " << outcome.status << outcome.err;
    EXPECT_EQ(outcome.err.rfind("vexo: ", 0), 0u)
        << arguments << ": " << outcome.err;
    EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1)
        << arguments << ": " << outcome.err;
    EXPECT_NE(outcome.err.find(phrase), std::string::npos)
        << arguments << ": " << outcome.err;
    EXPECT_EQ(files(), before) << arguments;
  }
};

TEST_F(FailureTest, RequestsThatMakeNoSense) {
  put("one.y4m", "YUV4MPEG2 W8 H8 F25:1\nFRAME\n" + noise(96, 1));
  put("two.y4m", "YUV4MPEG2 W8 H8 F25:1\nFRAME\n" + noise(96, 1) + "FRAME\n" +
                     noise(96, 2));
  put("small.y4m", "YUV4MPEG2 W8 H6\nFRAME\n" + noise(72, 1));
  put("c.ppm", "P6\n8 8\n255\n" + noise(192, 1));
  put("f.raw", noise(96, 1));
  put("what", "neither this nor that");
  const struct {
    const char *arguments;
    const char *phrase;
  } cases[] = {
      {"", "subcommand"},
      {"convert one.y4m", "OUT"},
      {"convert one.y4m o.png --frm yuv420", "--frm"},
      {"convert none.y4m o.png", "none.y4m"},
      {"convert . o.png", "directory"},
      {"convert what o.png", "--size"},
      {"convert one.y4m o.bmp", "--out-kind"},
      {"convert one.y4m o.bmp --out-kind bmp", "'bmp'"},
      {"convert one.y4m nowhere/o.png", "nowhere/o.png"},
      {"convert one.y4m o.png --to nv99", "'nv99'"},
      {"convert one.y4m o.png --via yv12,,nv12", "''"},
      {"convert one.y4m o.png --via yuv420", "itself"},
      {"convert one.y4m o.png --std bt2020", "'bt2020'"},
      {"convert one.y4m o.png --from nv12", "holds yuv420"},
      {"convert one.y4m o.png --size 8x8", "--size"},
      {"convert one.y4m o.png --to nv12", "cannot hold nv12"},
      {"convert one.y4m o.ppm --to rgba8888", "cannot hold rgba8888"},
      {"convert one.y4m o.pgm", "library: yuv420 to yuv400"},
      {"convert c.ppm o.yuv --to nv12", "library: rgb888 to nv12"},
      {"convert c.ppm o.y4m", "library: rgb888 to yuv420"},
      {"convert one.y4m o.png --via yv12,nv12", "library: yv12 to nv12"},
      // The library's call succeeds here but writes nothing.
      {"convert one.y4m o.raw --std bt709-full --to rgb565",
       "library: yuv420 to rgb565 (bt709-full)"},
      {"convert small.y4m o.png", "8x8"},
      {"convert two.y4m o.png", "more than one frame"},
      {"convert two.y4m %s.png", "pattern"},
      {"convert two.y4m %5d.png", "pattern"},
      {"convert two.y4m %d%d.png", "pattern"},
      {"convert two.y4m %00d.png", "pattern"},
      {"convert two.y4m %010d.png", "pattern"},
      {"convert two.y4m x%", "kind"},
      {"convert two.y4m x% --out-kind png", "pattern"},
      {"convert f.raw o.png", "--size"},
      {"convert f.raw o.png --size 8x8", "--from"},
      {"convert f.raw o.png --size 8 --from yuv420", "WIDTHxHEIGHT"},
      {"convert f.raw o.png --size 8x8x --from yuv420", "WIDTHxHEIGHT"},
      {"convert f.raw o.png --size 99999999999x8 --from yuv420",
       "WIDTHxHEIGHT"},
      {"convert f.raw o.png --size 0x8 --from yuv420", "0x8"},
      {"convert f.raw o.png --size 32768x8 --from yuv420", "32768x8"},
      {"convert f.raw o.png --size 8x-8 --from yuv420", "8x-8"},
      {"convert f.raw o.raw --size 32767x32767 --from rgba8888", "2 GiB"},
      {"convert f.raw o.png --size 8x9 --from yuv420", "truncated"},
      // A second frame that is not whole.
      {"convert f.raw o.raw --size 8x7 --from yuv420", "truncated"},
      {"convert /dev/null o.raw --in-kind raw --size 8x8 --from yuv420",
       "no frame"},
      {"formats --std bt2020", "'bt2020'"},
  };
  for (const auto &[arguments, phrase] : cases) {
    expect_failure(arguments, phrase);
  }
}

// Cut anywhere, a file is refused, and an older output stays untouched.
TEST_F(FailureTest, TruncatedFiles) {
  put("whole.ppm", "P6\n8 8\n255\n" + noise(192, 1));
  ASSERT_EQ(vexo("convert whole.ppm whole.png").status, 0);
  put("whole.y4m", "YUV4MPEG2 W8 H8 F25:1 C420jpeg\nFRAME\n" + noise(96, 1));
  put("out.png", "older");
  for (const std::string name : {"whole.ppm", "whole.png", "whole.y4m"}) {
    const std::string whole = get(name);
    for (size_t length = 0; length < whole.size();
         length += length < 48 || length + 20 > whole.size() ? 1 : 13) {
      put("cut", whole.substr(0, length));
      expect_failure("convert cut out.png", "");
      EXPECT_EQ(get("out.png"), "older") << name << " " << length;
    }
  }
  // A clip that breaks off within its second frame leaves no first frame.
  const std::string clip = get("whole.y4m") + "FRAME\n";
  put("cut", clip + noise(95, 2));
  expect_failure("convert cut out.y4m", "truncated");
  put("cut", clip + noise(96, 2) + "FRAM");
  expect_failure("convert cut out.raw", "truncated");
}

TEST_F(FailureTest, DamagedHeaders) {
  const std::string body = noise(4096, 1);
  for (const char *header :
       {"YUV4MPEG2 H8\nFRAME\n", "YUV4MPEG2 W0 H8\nFRAME\n",
        "YUV4MPEG2 W-8 H8\nFRAME\n", "YUV4MPEG2 W8.5 H8\nFRAME\n",
        "YUV4MPEG2 W32768 H8\nFRAME\n", "YUV4MPEG2 W99999999999999 H8\nFRAME\n",
        "YUV4MPEG2 W8 H8 C411\nFRAME\n", "YUV4MPEG2 W8 H8 C\nFRAME\n",
        "YUV4MPEG2 W8 H8\nFRAMES\n", "YUV4MPEG2 W32767 H32767\nFRAME\n",
        "P6\n8 8\n65535\n", "P6\n8 8\n254\n", "P6\n0 8\n255\n", "P6\n8\n",
        "P6\n8 8 255x", "P6\n8 9999999 255\n", "P6\n8 -8\n255\n", "P6#"}) {
    put("bad", header + body);
    expect_failure("convert bad out.raw", "bad");
  }
  put("bad", "YUV4MPEG2 " + std::string(100000, 'X'));
  expect_failure("convert bad out.raw", "too long");
  // The second picture of a stream differs from the first.
  put("bad", "P6\n1 1\n255\nabcP5\n1 1\n255\na");
  expect_failure("convert bad out.raw", "different");
}

// Any bytes may be wrong: vexo may succeed or fail but must do so in order.
TEST_F(FailureTest, DamagedBytes) {
  put("in.ppm", "P6\n8 8\n255\n" + noise(192, 1));
  ASSERT_EQ(vexo("convert in.ppm in.png").status, 0);
  put("in.y4m", "YUV4MPEG2 W8 H8 F25:1 C420jpeg\nFRAME\n" + noise(96, 1));
  for (const std::string name : {"in.ppm", "in.png", "in.y4m"}) {
    const std::string whole = get(name);
    for (size_t i = 0; i < 60; ++i) {
      std::string damaged = whole;
      damaged[i] = static_cast<char>(damaged[i] ^ noise(60, 5)[i] ^ 1);
      put("damaged", damaged);
      const Outcome outcome = vexo("convert damaged out.raw --quiet");
      EXPECT_LE(outcome.status, 1) << name << " " << i << outcome.err;
      EXPECT_EQ(outcome.status == 0, outcome.err.empty()) << name << " " << i;
      EXPECT_EQ(std::filesystem::remove(path("out.raw")), outcome.status == 0)
          << name << " " << i;
    }
  }
}

// A full device and a reader that goes away are errors too.
TEST_F(FailureTest, OutputsThatFail) {
  put("in.y4m", "YUV4MPEG2 W64 H64\nFRAME\n" + noise(64 * 96, 1));
  expect_failure("convert in.y4m /dev/full --out-kind raw", "/dev/full");
  expect_failure("convert in.y4m /dev/full --out-kind png", "/dev/full");
  EXPECT_TRUE(std::filesystem::is_character_file("/dev/full"));
  // So little that nothing is written before the end.
  put("tiny.y4m", "YUV4MPEG2 W8 H8\nFRAME\n" + noise(96, 1));
  EXPECT_EQ(shell("vexo convert tiny.y4m - >/dev/full").status, 1);
  EXPECT_EQ(shell("vexo formats >/dev/full").status, 1);
  const Outcome gone = shell(
      "i=0; { cat in.y4m; while [ $i -lt 99 ]; do echo FRAME; "
      "tail -c 6144 in.y4m; i=$((i+1)); done; } 2>/dev/null | "
      "{ vexo convert - -; echo $? >status; } | head -c 1 >/dev/null");
  EXPECT_EQ(get("status"), "1\n");
  EXPECT_EQ(gone.err.rfind("vexo: cannot write standard output", 0), 0u)
      << gone.err;
}

// A run that is interrupted takes its temporary along.
TEST_F(FailureTest, Interrupted) {
  const std::string frame = "FRAME\n" + noise(64 * 96, 1);
  put("in.y4m", "YUV4MPEG2 W64 H64\n" + frame);
  // One frame is through and the input stays open: the temporary is there.
  const Outcome outcome =
      shell("mkfifo fifo; '" VEXO_BINARY
            "' convert fifo out.raw & "
            "exec 3>fifo; cat in.y4m >&3; "
            "n=0; until ls out.raw.* >/dev/null 2>&1 || [ $n -ge 200 ]; do "
            "sleep 0.05; n=$((n+1)); done; ls out.raw.* | wc -l; "
            "kill $!; wait $!; echo $?; rm fifo");
  EXPECT_EQ(outcome.out, "1\n143\n");
  EXPECT_EQ(files(), std::vector<std::string>{"in.y4m"});
}

}  // namespace
}  // namespace tool
