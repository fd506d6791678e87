// SPDX-License-Identifier: Apache-2.0
// The log goes to the Android log where there is one, else nowhere.
#include "common/log.h"

#include <gtest/gtest.h>
#include <orumlox/hdr.h>

#ifdef HAS_LOG
extern char log_line[];

TEST(Log, GoesToTheAndroidLog) {
  LOX_LOG_INFO("VEXO_HDR", "source : %d, source_nit : %d\n", 1, 1000);
  EXPECT_STREQ(log_line, "4 VEXO_HDR: source : 1, source_nit : 1000\n");
}
#elif defined(__ANDROID__)
// Away from a device the system's log writes its lines to standard error.
TEST(Log, OfTheSystemGetsTheLinesOfToneMapping) {
  vexo_img src = {.format = VEXO_FMT_P010LE, .mode = 3, .source_nit = 7};
  const vexo_img dst = {.format = VEXO_FMT_NV12};
  testing::internal::CaptureStderr();
  vexo_hdr_to_sdr(&src, &dst, VEXO_HDR_HDR10);
  const std::string log = testing::internal::GetCapturedStderr();
  EXPECT_NE(log.find("I/VEXO_HDR("), log.npos) << log;
  EXPECT_NE(log.find("): source : 3, source_nit : 7\n"), log.npos) << log;
}
#else
TEST(Log, IsNotNeeded) {
  // Not taken for granted by the compiler, as a direct comparison could be.
  int (*volatile log)(int, const char *, const char *, ...) =
      __android_log_print;
  EXPECT_EQ(log, nullptr);
  LOX_LOG_INFO("VEXO_HDR", "nobody reads this: %d", 1);
}
#endif
