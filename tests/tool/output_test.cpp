// SPDX-License-Identifier: Apache-2.0
//
// Where the output goes: through links, under long names, to standard output,
// into which nobody else prints.
#include <algorithm>
#include <sstream>

#include "tool_runner.h"

namespace tool {
namespace {

const std::string kY4m =
    "YUV4MPEG2 W64 H64 F25:1 C420jpeg\nFRAME\n" + noise(6144, 1);

class OutputTest : public ToolTest {
 protected:
  OutputTest() { put("in.y4m", kY4m); }
};

TEST_F(OutputTest, LinksStay) {
  shell("mkdir d; ln -s d/b.y4m a.y4m; ln -s ../c.y4m d/b.y4m");
  for (const char *const state : {"dangling", "there"}) {
    vexo_ok("convert in.y4m a.y4m");
    EXPECT_TRUE(get("c.y4m") == kY4m) << state;
    EXPECT_EQ(files(), "a.y4m\nc.y4m\nd\nin.y4m\n") << state;
    EXPECT_EQ(shell("readlink a.y4m d/b.y4m; ls -A d").out,
              "d/b.y4m\n../c.y4m\nb.y4m\n");
    put("c.y4m", "older");
  }
}

TEST_F(OutputTest, LongestName) {
  for (size_t length = 240; length <= 255; ++length) {
    const std::string name = std::string(length - 4, 'n') + ".y4m";
    vexo_ok("convert in.y4m " + name);
    EXPECT_TRUE(get(name) == kY4m) << length;
  }
}

// A percent sign is written twice in every kind of name.
TEST_F(OutputTest, PercentSigns) {
  vexo_ok("convert in.y4m 50%%.y4m");
  EXPECT_TRUE(get("50%.y4m") == kY4m);
}

TEST_F(OutputTest, NamesOfStandardOutput) {
  shell("ln -s /dev/stdout link.y4m");
  for (const char *const name :
       {"-", "/dev/stdout", "/dev/fd/1", "/proc/self/fd/1", "link.y4m"}) {
    const std::string command =
        "vexo convert in.y4m " + std::string(name) + " --out-kind y4m";
    EXPECT_TRUE(shell(command).out == kY4m) << name;
    EXPECT_TRUE(shell(command + " | cat").out == kY4m) << name;
  }
}

// All commands on a screen of 80 by 24; a page of each, with an example.
TEST_F(OutputTest, HelpFitsScreens) {
  const auto widest = [](const std::string &text) {
    size_t most = 0;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
      most = std::max(most, line.size());
    }
    return most;
  };
  const std::string help = shell("vexo --help").out;
  EXPECT_LT(std::count(help.begin(), help.end(), '\n'), 24);
  EXPECT_LE(widest(help), 80);
  int commands = 0;
  std::istringstream lines(help.substr(help.find("Subcommands:\n")));
  for (std::string line; std::getline(lines, line);) {
    if (!line.starts_with("  ")) continue;
    const std::string name = line.substr(2, line.find(' ', 2) - 2);
    const std::string page = shell("vexo " + name + " --help").out;
    EXPECT_LE(widest(page), 80) << page;
    EXPECT_NE(page.find("\n  vexo " + name), std::string::npos) << page;
    ++commands;
  }
  EXPECT_EQ(commands, 15);
}

// The library prints when it gets no thread, which is what a stack larger than
// the address space leads to, and makes the same picture without.
TEST_F(OutputTest, NothingButThePicture) {
  const std::string command =
      "vexo thumbnail in.y4m --size 20x20 --prescale 2 ";
  const std::string expected = shell(command + "-").out;
  ASSERT_EQ(expected.substr(0, 18), "YUV4MPEG2 W20 H20 ");
  const std::string threadless = "ulimit -s 200000000000 || exit 99; ";
  const Outcome bare = shell(threadless + command + "-");
  if (bare.status == 99) GTEST_SKIP() << "The stack's limit is fixed";
  EXPECT_TRUE(bare.out == expected);
  EXPECT_EQ(bare.err, " err \n ");
  // Nor does the output take the place of a closed descriptor.
  EXPECT_EQ(shell(threadless + command + "o.y4m >&- 2>&- <&-").status, 0);
  EXPECT_TRUE(get("o.y4m") == expected);
}

}  // namespace
}  // namespace tool
