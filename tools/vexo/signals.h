// SPDX-License-Identifier: Apache-2.0
//
// Threads that are started while such an object lives leave the signals that
// come from outside to the main one, which alone has temporary files.
#pragma once

#include <signal.h>

namespace vexo {

class SignalsForMain {
 public:
  SignalsForMain() {
    sigset_t outside;
    sigfillset(&outside);
    for (const int fault :
         {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP, SIGSYS}) {
      sigdelset(&outside, fault);
    }
    pthread_sigmask(SIG_BLOCK, &outside, &before_);
  }
  ~SignalsForMain() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  SignalsForMain(const SignalsForMain &) = delete;
  SignalsForMain &operator=(const SignalsForMain &) = delete;

 private:
  sigset_t before_;
};

}  // namespace vexo
