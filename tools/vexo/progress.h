// SPDX-License-Identifier: Apache-2.0
//
// Frames done and frames per second, or files done of all, on a terminal and
// for long runs only.
#pragma once

#include <chrono>
#include <cstdint>

namespace vexo {

class Progress {
 public:
  // Of so many files; 0: of frames, of which nobody knows how many come.
  explicit Progress(bool quiet, int64_t files = 0);
  // Ends the line.
  ~Progress();
  Progress(const Progress &) = delete;
  Progress &operator=(const Progress &) = delete;

  void one_done();
  // Makes room for another line.
  void clear();

 private:
  using Clock = std::chrono::steady_clock;

  void print(Clock::time_point now);

  bool enabled_;
  int64_t files_;
  bool printed_ = false;
  int64_t done_ = 0;
  Clock::time_point start_ = Clock::now();
  Clock::time_point next_ = start_ + std::chrono::seconds(1);
};

}  // namespace vexo
