// SPDX-License-Identifier: Apache-2.0
//
// The Android log. The function is weak: a host build needs no liblog and logs
// nothing, unless the program defines the function itself.
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
