// SPDX-License-Identifier: Apache-2.0
//
// The scratch folder and the rules written out per sample.
#include "tool_runner.h"

#include <stdlib.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace tool {
namespace {

std::string fresh_folder() {
  std::string name = testing::TempDir() + "/vexo.XXXXXX";
  EXPECT_NE(mkdtemp(name.data()), nullptr);
  return name;
}

std::string slurp(const std::string &path) {
  std::ifstream file(path, std::ios::binary);
  EXPECT_TRUE(file) << path;
  std::ostringstream bytes;
  bytes << file.rdbuf();
  return bytes.str();
}

}  // namespace

ToolTest::ToolTest() : folder_(fresh_folder()), logs_(fresh_folder()) {}

ToolTest::~ToolTest() {
  std::filesystem::remove_all(folder_);
  std::filesystem::remove_all(logs_);
}

Outcome ToolTest::shell(const std::string &command) const {
  const std::string line = "cd '" + folder_ + "' && vexo() { '" +
                           VEXO_BINARY "' \"$@\"; }; { " + command + "\n} >'" +
                           logs_ + "/out' 2>'" + logs_ + "/err'";
  const int status = std::system(line.c_str());
  // A crash is reported by the shell as 128 and the signal's number.
  return {WIFEXITED(status) ? WEXITSTATUS(status) : 255, slurp(logs_ + "/out"),
          slurp(logs_ + "/err")};
}

void ToolTest::vexo_ok(const std::string &arguments) const {
  const Outcome outcome = vexo(arguments);
  EXPECT_EQ(outcome.status, 0) << arguments;
  EXPECT_EQ(outcome.err, "") << arguments;
}

void ToolTest::put(const std::string &name, const std::string &bytes) const {
  std::ofstream file(path(name), std::ios::binary);
  file << bytes;
  ASSERT_TRUE(file.good()) << name;
}

std::string ToolTest::get(const std::string &name) const {
  return slurp(path(name));
}

std::vector<std::string> ToolTest::files() const {
  std::vector<std::string> names;
  for (const auto &entry : std::filesystem::directory_iterator(folder_)) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

Rgb rgb_of(int y, int u, int v) {
  const auto channel = [](int sum) {
    return std::clamp((sum + 128) >> 8, 0, 255);
  };
  const int luma = 298 * (y - 16);
  return {channel(luma + 409 * (v - 128)),
          channel(luma - 100 * (u - 128) - 208 * (v - 128)),
          channel(luma + 516 * (u - 128))};
}

std::string pixel_bytes(const std::string &token, const Rgb &rgb) {
  std::string bytes;
  if (token == "rgb565" || token == "bgr565") {
    const bool rgb_order = token == "rgb565";
    const int high = rgb_order ? rgb.r : rgb.b;
    const int low = rgb_order ? rgb.b : rgb.r;
    const int word = (high >> 3) << 11 | (rgb.g >> 2) << 5 | low >> 3;
    bytes += static_cast<char>(word & 255);
    bytes += static_cast<char>(word >> 8);
    return bytes;
  }
  // The token spells the order.
  for (const char letter : token) {
    if (letter == 'r') bytes += static_cast<char>(rgb.r);
    if (letter == 'g') bytes += static_cast<char>(rgb.g);
    if (letter == 'b') bytes += static_cast<char>(rgb.b);
    if (letter == 'a') bytes += static_cast<char>(255);
  }
  return bytes;
}

std::string noise(size_t count, uint32_t seed) {
  std::string bytes(count, '\0');
  uint32_t state = seed * 2654435761u + 1;
  for (char &byte : bytes) {
    state = state * 1664525u + 1013904223u;
    byte = static_cast<char>(state >> 24);
  }
  return bytes;
}

}  // namespace tool
