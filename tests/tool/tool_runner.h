// SPDX-License-Identifier: Apache-2.0
//
// Runs the vexo binary in a folder of its own; files as strings.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/wait.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "support/generator.h"

namespace tool {

struct Outcome {
  int status;
  std::string out, err;
};

// A fresh scratch folder for each test.
class ToolTest : public testing::Test {
 protected:
  ToolTest() {
    EXPECT_NE(mkdtemp(folder_.data()), nullptr);
    std::filesystem::create_directory(folder_ + "/files");
  }
  ~ToolTest() override { std::filesystem::remove_all(folder_); }

  // The shell command line, with "vexo" standing for the binary; its working
  // directory is the scratch folder.
  Outcome shell(const std::string &command) const {
    const std::string line = "cd '" + path(".") +
                             "' && vexo() { '" VEXO_BINARY "' \"$@\"; }; { " +
                             command + "\n} >../out 2>../err";
    const int status = std::system(line.c_str());
    // A crash is reported by the shell as 128 and the signal's number.
    return {WIFEXITED(status) ? WEXITSTATUS(status) : 255, get("../out"),
            get("../err")};
  }
  // vexo with these arguments, which succeeds without a word.
  void vexo_ok(const std::string &arguments) const {
    const Outcome outcome = shell("vexo " + arguments);
    EXPECT_EQ(outcome.status, 0) << arguments;
    EXPECT_EQ(outcome.err, "") << arguments;
  }
  // The same for vexo with a raw file as the last argument.
  void expect(const std::string &arguments, const std::string &expected) const {
    vexo_ok(arguments + " got.raw");
    EXPECT_TRUE(get("got.raw") == expected) << arguments;
  }

  std::string path(const std::string &name) const {
    return folder_ + "/files/" + name;
  }
  void put(const std::string &name, const std::string &bytes) const {
    std::ofstream(path(name), std::ios::binary) << bytes;
  }
  std::string get(const std::string &name) const {
    std::ifstream file(path(name), std::ios::binary);
    EXPECT_TRUE(file) << name;
    return {std::istreambuf_iterator<char>(file), {}};
  }
  std::string files() const { return shell("ls -A").out; }

 private:
  std::string folder_ = testing::TempDir() + "/vexo.XXXXXX";
};

inline std::string size_text(int width, int height) {
  return std::to_string(width) + "x" + std::to_string(height);
}

// Bytes that look random, the same in every run.
inline std::string noise(size_t count, uint64_t seed) {
  std::string bytes(count, '\0');
  lox_test::Random(seed).fill(reinterpret_cast<uint8_t *>(bytes.data()), count);
  return bytes;
}

}  // namespace tool
