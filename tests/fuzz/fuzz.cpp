// SPDX-License-Identifier: Apache-2.0
// One target for each family of cases: every instruction set of the machine
// must write and answer the same, with threads and without, whatever the input
// says. LOX_FAMILY is the family.
#include <pthread.h>

#include <cerrno>
#include <csetjmp>
#include <cstdio>
#include <cstdlib>

#include "cases/cases.h"
#include "common/isa.h"
#include "fuzz/asan_options.h"

namespace {

// What comes first in a process is the corpus, or an input that is looked into:
// so many are run at every level. Of those that follow each chooses the one
// that the portable form is compared with, and whether there are threads, which
// take longer to start than most calls do.
int thorough = 100;
bool chosen(int level, uint64_t choice) {
  return thorough > 0 ||
         level == 1 + static_cast<int>(choice % lox::isa_best());
}

// Whether the library can start threads.
bool threads = true;

// Where the entry of a thread ends, and its result.
std::jmp_buf end_of_entry;
void *result_of_entry;

}  // namespace

// The linker leads calls of pthread_create and pthread_exit here.
extern "C" {
int __real_pthread_create(pthread_t *thread, const pthread_attr_t *attributes,
                          void *(*entry)(void *), void *argument);
int __wrap_pthread_create(pthread_t *thread, const pthread_attr_t *attributes,
                          void *(*entry)(void *), void *argument) {
  if (!threads) return EAGAIN;
  return __real_pthread_create(thread, attributes, entry, argument);
}
[[noreturn]] void __wrap_pthread_exit(void *result) {
  result_of_entry = result;
  std::longjmp(end_of_entry, 1);
}
}

namespace lox_test {

// An entry of a thread is called by this one.
void *on_thread(const Function &entry, void *argument) {
  if (setjmp(end_of_entry) == 0) {
    result_of_entry = entry.as<void *(void *)>()(argument);
  }
  return result_of_entry;
}

}  // namespace lox_test

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
  const lox_test::Family &family = lox_test::LOX_FAMILY;
  lox_test::Sink input;
  input.add(bytes, size);
  const uint64_t choice = input.digest();
  uint64_t expected = 0;
  for (int level = 0; level <= lox::isa_best(); ++level) {
    if (level > 0 && !chosen(level, choice)) continue;
    // The portable form does without threads.
    threads = level > 0 && (thorough > 0 || choice >> 60 == 0);
    lox::isa_limit(level);
    lox_test::Source source(bytes, size);
    lox_test::Sink sink;
    const lox_test::Function &function =
        family.functions[source.between(0, family.count - 1)];
    function.run(function, source, sink);
    if (level == 0) expected = sink.digest();
    if (sink.digest() == expected) continue;
    std::fprintf(stderr, "%s: %s differs from the portable form\n",
                 function.name, lox::isa_name(level));
    std::abort();
  }
  threads = true;
  if (thorough > 0) --thorough;
  return 0;
}
