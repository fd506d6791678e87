// SPDX-License-Identifier: Apache-2.0
//
// A guest for an instruction counter under qemu-arm: converts one frame between
// two marks.
//
//   arm_guest WORKLOAD [WIDTH HEIGHT [FORM]]
//
// A mark is a system call that does nothing (getppid, which takes no
// arguments) with a magic number and a tag in its argument registers. The
// counter recognises it and prints what ran since the last mark; without a
// counter it has no effect. Marks 1 and 2 enclose nothing and so give the cost
// of a mark, 2 and 3 the frame.
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "bench/workloads.h"
#include "common/isa.h"

namespace {

void mark(int tag) { syscall(SYS_getppid, 0x1c0417, tag); }

const bench::Workload *find(const char *id) {
  for (const bench::Workload &workload : bench::kWorkloads) {
    if (std::strcmp(workload.id, id) == 0) return &workload;
  }
  return nullptr;
}

bool limit_form(const char *name) {
  for (int level = 0; level <= lox::isa_best(); ++level) {
    if (std::strcmp(lox::isa_name(level), name) != 0) continue;
    lox::isa_limit(level);
    return true;
  }
  return false;
}

uint8_t *frame(int32_t format, int32_t width, int32_t height) {
  const size_t bytes = bench::frame_bytes(format, width, height);
  auto *p = static_cast<uint8_t *>(aligned_alloc(64, (bytes + 63) / 64 * 64));
  if (p) bench::fill_noise(p, bytes);
  return p;
}

}  // namespace

int main(int argc, char **argv) {
  // "memcpy" is not this library's: it shows that a count agrees with one
  // taken of the same function elsewhere.
  const bool is_memcpy = argc > 1 && std::strcmp(argv[1], "memcpy") == 0;
  const bench::Workload *workload =
      argc > 1 ? find(is_memcpy ? "copy_8b" : argv[1]) : nullptr;
  const int32_t width = argc > 3 ? std::atoi(argv[2]) : 1920;
  const int32_t height = argc > 3 ? std::atoi(argv[3]) : 1080;
  if (!workload || width < 8 || height < 8 || width % 2 || height % 2 ||
      width > 16384 || height > 16384 || (argc > 4 && !limit_form(argv[4]))) {
    std::fputs("usage: arm_guest WORKLOAD [WIDTH HEIGHT [FORM]]\n", stderr);
    return 2;
  }
  uint8_t *src = frame(workload->src_format, width, height);
  uint8_t *dst = frame(workload->dst_format, width, height);
  if (!src || !dst) return 1;
  const auto run = [&] {
    if (!is_memcpy) {
      return bench::run_library(*workload, width, height, src, dst);
    }
    std::memcpy(dst, src, static_cast<size_t>(width) * height);
    // Nobody reads the copy; the compiler must not know.
    asm volatile("" : : "r"(dst) : "memory");
    return int32_t{VEXO_OK};
  };
  int32_t status = run();
  mark(1);
  mark(2);
  status |= run();
  mark(3);
  std::free(src);
  std::free(dst);
  return status == VEXO_OK ? 0 : 1;
}
