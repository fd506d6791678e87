// SPDX-License-Identifier: Apache-2.0
// A stand-in for the Android log that keeps each thread's lines. One unit of a
// program includes it.
#pragma once

#include <cstdarg>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

namespace lox_test {

inline thread_local std::vector<std::string> log_lines;

// The lines since the last time.
inline std::vector<std::string> take_log() {
  return std::exchange(log_lines, {});
}

}  // namespace lox_test

extern "C" __attribute__((format(printf, 3, 4))) int __android_log_print(
    int priority, const char *tag, const char *format, ...) {
  char line[256];
  const int length = std::snprintf(line, sizeof line, "%d %s: ", priority, tag);
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(line + length, sizeof line - length, format, arguments);
  va_end(arguments);
  lox_test::log_lines.emplace_back(line);
  return 1;
}
