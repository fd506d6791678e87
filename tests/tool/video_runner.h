// SPDX-License-Identifier: Apache-2.0
//
// What tests of streams that ffmpeg encodes have in common.
#pragma once

#include <algorithm>
#include <cmath>

#include "tool_runner.h"

namespace tool {

inline double psnr(const std::string &a, const std::string &b) {
  if (a.size() != b.size() || a.empty()) return 0;
  double sum = 0;
  for (size_t i = 0; i < a.size(); ++i) {
    const int d = static_cast<uint8_t>(a[i]) - static_cast<uint8_t>(b[i]);
    sum += d * d;
  }
  const double mean = sum / static_cast<double>(a.size());
  return sum == 0 ? 99 : 10 * std::log10(255 * 255 / mean);
}

class VideoTest : public ToolTest {
 protected:
  void ffmpeg(const std::string &arguments) const {
    const Outcome outcome = shell("ffmpeg -v error -y " + arguments);
    ASSERT_EQ(outcome.status, 0) << arguments << outcome.err;
  }
  std::string pixels(const std::string &arguments) const {
    vexo_ok("convert " + arguments + " got.raw --to rgb888 --frames 1");
    return get("got.raw");
  }
  // One line, and a folder that looks as before.
  void expect_failure(const std::string &arguments, const std::string &phrase,
                      long lines = 1) const {
    const std::string before = files();
    const Outcome outcome = shell("vexo " + arguments);
    EXPECT_EQ(outcome.status, 1) << arguments << outcome.err;
    EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), lines)
        << arguments << outcome.err;
    EXPECT_NE(outcome.err.find(phrase), std::string::npos)
        << arguments << outcome.err;
    EXPECT_EQ(files(), before) << arguments;
  }
};

inline constexpr char kSource[] = "-f lavfi -i testsrc2=s=96x64:r=10:d=1 ";

}  // namespace tool
