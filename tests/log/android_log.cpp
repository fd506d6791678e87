// SPDX-License-Identifier: Apache-2.0
// A stand-in for the Android log: keeps the last line.
#include <cstdarg>
#include <cstdio>

char log_line[256];

extern "C" __attribute__((format(printf, 3, 4))) int __android_log_print(
    int priority, const char *tag, const char *format, ...) {
  const int length =
      std::snprintf(log_line, sizeof log_line, "%d %s: ", priority, tag);
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(log_line + length, sizeof log_line - length, format,
                 arguments);
  va_end(arguments);
  return 1;
}
