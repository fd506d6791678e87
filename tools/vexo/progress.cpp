// SPDX-License-Identifier: Apache-2.0
//
// The progress line.
#include "progress.h"

#include <unistd.h>

#include <cstdio>
#include <string>

namespace vexo {

Progress::Progress(bool quiet, int64_t files)
    : enabled_(!quiet && isatty(STDERR_FILENO)), files_(files) {}

Progress::~Progress() {
  if (!printed_) return;
  print(Clock::now());
  std::fputc('\n', stderr);
}

void Progress::one_done() {
  ++done_;
  if (!enabled_) return;
  const Clock::time_point now = Clock::now();
  if (now < next_) return;
  next_ = now + std::chrono::milliseconds(250);
  print(now);
}

void Progress::print(Clock::time_point now) {
  if (files_ > 0) {
    constexpr int64_t kWidth = 30;
    const std::string bar(static_cast<size_t>(kWidth * done_ / files_), '#');
    std::fprintf(stderr, "\r[%-30s] %lld of %lld files, %lld %%", bar.c_str(),
                 static_cast<long long>(done_), static_cast<long long>(files_),
                 static_cast<long long>(100 * done_ / files_));
  } else {
    const double seconds = std::chrono::duration<double>(now - start_).count();
    std::fprintf(stderr, "\r%lld frames, %.1f frames/s   ",
                 static_cast<long long>(done_),
                 static_cast<double>(done_) / seconds);
  }
  std::fflush(stderr);
  printed_ = true;
}

void Progress::clear() {
  if (printed_) std::fprintf(stderr, "\r%60s\r", "");
}

}  // namespace vexo
