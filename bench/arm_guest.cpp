// SPDX-License-Identifier: Apache-2.0
//
// A guest for an instruction counter under qemu-arm: processes one frame
// between two marks and prints how many pixels (of the plane copy and a scan
// bytes, of a reader fields) came out.
//
//   arm_guest WORKLOAD [small|large [FORM]]
//
// What a call does with threads is done by its parts on one, for threads would
// count in each other's marks; a plan and a context stand before. Beside the
// workloads there are "memcpy", of the plane copy's bytes, and
// "media_bits_inlined" and "media_bits_called", the plain readers.
//
// A mark is a system call that does nothing (getppid, which takes no
// arguments) with a magic number and a tag in its argument registers. The
// counter recognises it and prints what ran since the last mark; without a
// counter it has no effect. Marks 1 and 2 enclose nothing and so give the cost
// of a mark, 2 and 3 the frame.
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "common/isa.h"
#include "media.h"

namespace {

void mark(int tag) { syscall(SYS_getppid, 0x1c0417, tag); }

bool limit_form(const char *name) {
  for (int level = 0; level <= lox::isa_best(); ++level) {
    if (std::strcmp(lox::isa_name(level), name) != 0) continue;
    lox::isa_limit(level);
    return true;
  }
  return false;
}

// Another name's work, at the sizes of `workload`.
bench::Run other_work(const std::string &id, const bench::Sizes &sizes) {
  if (id == "memcpy") {
    const size_t size = bench::frame_bytes(
        bench::describe(VEXO_FMT_YUV400, job.sizes.dst, nullptr));
    return [=](uint8_t *src, uint8_t *dst) {
      std::memcpy(dst, src, size);
      // Nobody reads the copy; the compiler must not know.
      asm volatile("" : : "r"(dst) : "memory");
    };
  }
  const auto reader = id == "media_bits_inlined" ? bench::BitReader::kInlined
                                                 : bench::BitReader::kCalled;
  return [=](uint8_t *src, uint8_t *dst) {
    *dst =
        static_cast<uint8_t>(bench::read_fields(bench::kRandom, reader, src));
  };
}

int count(const bench::Workload &workload, const std::string &id, bool large) {
  const bool maps =
      workload.task == bench::kToneMap || workload.task == bench::kContext;
  // Frames of 4K would take minutes.
  const bench::Ratio &ratio = maps ? bench::kEqual : workload.ratio;
  const bench::Job job(workload, large || workload.task == bench::kReduce
                                     ? ratio.large
                                     : ratio.small);
  const bench::Block src(job.src_room()), dst(job.dst_room());
  // What others do does not depend on the picture.
  const bool drawn = job.is_media() || maps || job.task == bench::kDeblock;
  const bench::Run run =
      id != job.id ? other_work(id, job.sizes)
      : job.task == bench::kToneMap || job.task == bench::kReduce
          ? own_work(job, bench::Way::kPrepared)
          : own_work(job);
  for (int tag = 0; tag < 3; tag += 2) {
    // Deblocking is in place, so there is a new picture for the second time.
    if (drawn && (tag == 0 || job.task == kDeblock)) {
      job.fill_src(src.data());
    }
    if (tag > 0) {
      mark(1);
      mark(2);
    }
    run(src.data(), dst.data());
  }
  mark(3);
  std::printf("%.0f ", job.units());
  return 0;
}

}  // namespace

int main(int argc, char **argv) {
  const std::string id = argc > 1 ? argv[1] : "";
  const std::string same_data =
      id == "memcpy"                                            ? "copy_8b"
      : id == "media_bits_inlined" || id == "media_bits_called" ? "media_bits"
                                                                : id;
  const std::string size = argc > 2 ? argv[2] : "large";
  const bool has_form = argc <= 3 || limit_form(argv[3]);
  for (const bench::Workload &workload : bench::kWorkloads) {
    if (job.id == same_data && (size == "small" || size == "large") &&
        has_form) {
      return count(workload, id, size == "large");
    }
  }
  std::fputs("usage: arm_guest WORKLOAD [small|large [FORM]]\n", stderr);
  return 2;
}
