// SPDX-License-Identifier: Apache-2.0
//
// Frames done and frames per second, on a terminal and for long runs only.
#pragma once

#include <chrono>
#include <cstdint>

namespace vexo {

class Progress {
 public:
  explicit Progress(bool quiet);
  // Ends the line.
  ~Progress();
  Progress(const Progress &) = delete;
  Progress &operator=(const Progress &) = delete;

  void frame_done();

 private:
  using Clock = std::chrono::steady_clock;

  void print(Clock::time_point now);

  bool enabled_;
  bool printed_ = false;
  int64_t frames_ = 0;
  Clock::time_point start_ = Clock::now();
  Clock::time_point next_ = start_ + std::chrono::seconds(1);
};

}  // namespace vexo
