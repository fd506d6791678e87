// SPDX-License-Identifier: Apache-2.0
//
// Runs the vexo binary in a folder of its own, and what the tests of the tool
// share: files as strings, and the colour rule.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace tool {

struct Outcome {
  int status;
  std::string out;
  std::string err;
};

// A fresh scratch folder for each test.
class ToolTest : public testing::Test {
 protected:
  ToolTest();
  ~ToolTest() override;

  // The shell command line, with "vexo" standing for the binary; its working
  // directory is the scratch folder.
  Outcome shell(const std::string &command) const;
  // vexo with these arguments.
  Outcome vexo(const std::string &arguments) const {
    return shell("vexo " + arguments);
  }
  // As vexo, and expects success without a word.
  void vexo_ok(const std::string &arguments) const;

  std::string path(const std::string &name) const {
    return folder_ + "/" + name;
  }
  void put(const std::string &name, const std::string &bytes) const;
  std::string get(const std::string &name) const;
  // Names of all files in the scratch folder, sorted.
  std::vector<std::string> files() const;

 private:
  std::string folder_;
  std::string logs_;
};

struct Rgb {
  int r, g, b;
};

// The colour rule of BT.601 with luma 16..235.
Rgb rgb_of(int y, int u, int v);

// One pixel as the layout's bytes.
std::string pixel_bytes(const std::string &token, const Rgb &rgb);

// Bytes that look random, the same in every run.
std::string noise(size_t count, uint32_t seed);

}  // namespace tool
