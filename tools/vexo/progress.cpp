// SPDX-License-Identifier: Apache-2.0
//
// The progress line.
#include "progress.h"

#include <unistd.h>

#include <cstdio>

namespace vexo {

Progress::Progress(bool quiet) : enabled_(!quiet && isatty(STDERR_FILENO)) {}

Progress::~Progress() {
  if (!printed_) return;
  print(Clock::now());
  std::fputc('\n', stderr);
}

void Progress::frame_done() {
  ++frames_;
  if (!enabled_) return;
  const Clock::time_point now = Clock::now();
  if (now < next_) return;
  next_ = now + std::chrono::milliseconds(250);
  print(now);
}

void Progress::print(Clock::time_point now) {
  const double seconds = std::chrono::duration<double>(now - start_).count();
  std::fprintf(stderr, "\r%lld frames, %.1f frames/s   ",
               static_cast<long long>(frames_),
               static_cast<double>(frames_) / seconds);
  std::fflush(stderr);
  printed_ = true;
}

}  // namespace vexo
