// SPDX-License-Identifier: Apache-2.0
//
// A guest for an instruction counter under qemu-arm: processes one frame
// between two marks and prints how many pixels (of the plane copy, bytes) came
// out.
//
//   arm_guest WORKLOAD [small|large [FORM]]
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

uint8_t *frame(const vexo_img &img) {
  const size_t bytes = bench::frame_bytes(img);
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
  const bool small = argc > 2 && std::strcmp(argv[2], "small") == 0;
  const bool large = argc < 3 || std::strcmp(argv[2], "large") == 0;
  if (!workload || small == large || (argc > 3 && !limit_form(argv[3]))) {
    std::fputs("usage: arm_guest WORKLOAD [small|large [FORM]]\n", stderr);
    return 2;
  }
  const bench::Sizes sizes = bench::sizes_of(*workload, large);
  uint8_t *src = frame(bench::describe_src(*workload, sizes, nullptr));
  uint8_t *dst = frame(bench::describe_dst(*workload, sizes, nullptr));
  if (!src || !dst) return 1;
  const int32_t pixels = sizes.dst.width * sizes.dst.height;
  const auto run = [&] {
    if (!is_memcpy) return bench::run_library(*workload, sizes, src, dst);
    std::memcpy(dst, src, static_cast<size_t>(pixels));
    // Nobody reads the copy; the compiler must not know.
    asm volatile("" : : "r"(dst) : "memory");
    return int32_t{VEXO_OK};
  };
  int32_t status = run();
  mark(1);
  mark(2);
  status |= run();
  mark(3);
  std::printf("%d ", pixels);
  std::free(src);
  std::free(dst);
  return status == VEXO_OK ? 0 : 1;
}
