// SPDX-License-Identifier: Apache-2.0
//
// The Android log. Elsewhere nobody defines the function, so that a host build
// needs no liblog and logs nothing; a program that brings its own gets the
// lines.
#pragma once

extern "C" __attribute__((weak, format(printf, 3, 4))) int __android_log_print(
    int priority, const char *tag, const char *format, ...);

// A line at info priority.
#define LOX_LOG_INFO(tag, ...)                                \
  do {                                                        \
    constexpr int kAndroidLogInfo = 4;                        \
    if (__android_log_print != nullptr) {                     \
      __android_log_print(kAndroidLogInfo, tag, __VA_ARGS__); \
    }                                                         \
  } while (false)
