// SPDX-License-Identifier: Apache-2.0
// The log goes to the Android log where there is one, else nowhere.
#include "common/log.h"

#include <gtest/gtest.h>

#ifdef HAS_LOG
extern char log_line[];

TEST(Log, GoesToTheAndroidLog) {
  LOX_LOG_INFO("VEXO_HDR", "source : %d, source_nit : %d\n", 1, 1000);
  EXPECT_STREQ(log_line, "4 VEXO_HDR: source : 1, source_nit : 1000\n");
}
#else
TEST(Log, IsNotNeeded) {
  // Not taken for granted by the compiler, as a direct comparison could be.
  int (*volatile log)(int, const char*, const char*, ...) = __android_log_print;
  EXPECT_EQ(log, nullptr);
  LOX_LOG_INFO("VEXO_HDR", "nobody reads this: %d", 1);
}
#endif
