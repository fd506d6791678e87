// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sched.h>

namespace bench {

// Keeps this thread, and those that it starts meanwhile, on the processor where
// it is.
class OneCore {
 public:
  OneCore() {
    sched_getaffinity(0, sizeof(before_), &before_);
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(sched_getcpu(), &one);
    sched_setaffinity(0, sizeof(one), &one);
  }
  ~OneCore() { sched_setaffinity(0, sizeof(before_), &before_); }
  OneCore(const OneCore &) = delete;
  OneCore &operator=(const OneCore &) = delete;

 private:
  cpu_set_t before_;
};

}  // namespace bench
