// SPDX-License-Identifier: Apache-2.0
#include <pthread.h>

#include <cstdlib>

#include "cases/cases.h"

namespace lox_test {

void *on_thread(const Function &entry, void *argument) {
  struct Start {
    Function::Call<void *(void *)> call;
    void *argument;
  } start = {entry.as<void *(void *)>(), argument};
  pthread_t thread;
  void *result = &start;
  const auto run = [](void *given) {
    const auto &s = *static_cast<const Start *>(given);
    return s.call(s.argument);
  };
  if (pthread_create(&thread, nullptr, run, &start) != 0) std::abort();
  pthread_join(thread, &result);
  return result;
}

}  // namespace lox_test
