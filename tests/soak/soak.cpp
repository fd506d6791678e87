// SPDX-License-Identifier: Apache-2.0
// soak [FRAMES]: eight threads, each of which calls every function for every
// frame, 1000 unless said. All threads see the same frames, so that they must
// get the same bytes; once the first tenth of them has passed, memory must not
// grow any more.
#include <unistd.h>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>
#include <vector>

#include "cases/cases.h"

namespace lox_test {
namespace {

constexpr int kThreads = 8;

void run_family(const Family &family, int frame, Sink &sink) {
  Source source(static_cast<uint64_t>(frame));
  for (int32_t i = 0; i < family.count; ++i) {
    const Function &function = family.functions[i];
    // The one function that is not for several threads.
    if (std::strcmp(function.name, "vexo_vqe_cs_init") == 0) continue;
    function.run(function, source, sink);
  }
}

// The digests of all threads.
std::vector<uint64_t> run(int first, int last) {
  std::vector<uint64_t> digests(kThreads);
  std::vector<std::thread> threads;
  for (uint64_t &digest : digests) {
    threads.emplace_back([first, last, &digest] {
      Sink sink;
      for (int frame = first; frame < last; ++frame) {
#define LOX_RUN_FAMILY(name) run_family(name##_family, frame, sink);
        LOX_FOR_EACH_FAMILY(LOX_RUN_FAMILY)
#undef LOX_RUN_FAMILY
      }
      digest = sink.digest();
    });
  }
  for (std::thread &thread : threads) thread.join();
  return digests;
}

// Bytes that the heap has given away, where it can tell, and those in memory.
struct Memory {
  long long heap = 0;
  long long resident = 0;
};
Memory memory() {
  Memory now;
#if defined(__GLIBC__)
  const struct mallinfo2 heap = mallinfo2();
  now.heap = static_cast<long long>(heap.uordblks + heap.hblkhd);
#endif
  std::FILE *file = std::fopen("/proc/self/statm", "r");
  if (file == nullptr) return now;
  if (std::fscanf(file, "%*d %lld", &now.resident) != 1) now.resident = 0;
  now.resident *= sysconf(_SC_PAGESIZE);
  std::fclose(file);
  return now;
}

}  // namespace
}  // namespace lox_test

int main(int argc, char **argv) {
  const int frames = argc > 1 ? std::atoi(argv[1]) : 1000;
  lox_test::Memory before;
  for (const int part : {0, 1}) {
    const int first = part == 0 ? 0 : frames / 10;
    const int last = part == 0 ? frames / 10 : frames;
    const auto digests = lox_test::run(first, last);
    for (const uint64_t digest : digests) {
      if (digest == digests[0]) continue;
      std::puts("threads disagree");
      return 1;
    }
    const lox_test::Memory now = lox_test::memory();
    std::printf("frames %d to %d: %lld bytes of heap, %lld resident\n", first,
                last, now.heap, now.resident);
    // What buffers of the C library may take.
    constexpr long long kHeapSlack = 16 << 10;
    constexpr long long kResidentSlack = 8 << 20;
    if (part == 1 && (now.heap > before.heap + kHeapSlack ||
                      now.resident > before.resident + kResidentSlack)) {
      std::puts("memory grows");
      return 1;
    }
    before = now;
  }
  return 0;
}
