// SPDX-License-Identifier: Apache-2.0
//
// A guest for an instruction counter under qemu-arm: processes one frame
// between two marks and prints how many pixels (of the plane copy and a scan
// bytes, of a reader fields) came out.
//
//   arm_guest WORKLOAD [small|large]
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

#include "workloads.h"

namespace bench {
namespace {

void mark(int tag) { syscall(SYS_getppid, 0x1c0417, tag); }

Run work_of(const Job &job, const std::string &id) {
  if (id == "memcpy") {
    const size_t size = frame_bytes(job.dst(nullptr));
    return [=](uint8_t *src, uint8_t *dst) {
      std::memcpy(dst, src, size);
      // Nobody reads the copy; the compiler must not know.
      asm volatile("" : : "r"(dst) : "memory");
    };
  }
  if (id == job.id) {
    const bool threads = job.task == kToneMap || job.task == kReduce;
    return own_work(job, threads ? Way::kPrepared : Way::kCall);
  }
  const BitReader reader =
      id == "media_bits_called" ? BitReader::kCalled : BitReader::kInlined;
  return [=](uint8_t *src, uint8_t *dst) {
    *dst = static_cast<uint8_t>(read_fields(job.option, reader, src));
  };
}

void count(const Workload &workload, const std::string &id, bool large) {
  const bool maps = workload.task == kToneMap || workload.task == kContext;
  // Frames of 4K would take minutes.
  const Ratio &ratio = maps ? kEqual : workload.ratio;
  large |= workload.task == kReduce;
  const Job job(workload, large ? ratio.large : ratio.small);
  const Block src(job.src_room()), dst(job.dst_room());
  const Run run = work_of(job, id);
  for (const bool warm : {false, true}) {
    // What others do does not depend on the picture, or they leave it.
    if (job.task == kDeblock || (!warm && (maps || job.is_media()))) {
      job.fill_src(src.data());
    }
    if (warm) {
      mark(1);
      mark(2);
    }
    run(src.data(), dst.data());
  }
  mark(3);
  std::printf("%.0f ", job.units());
}

}  // namespace
}  // namespace bench

int main(int argc, char **argv) {
  const std::string id = argc > 1 ? argv[1] : "";
  const std::string size = argc > 2 ? argv[2] : "large";
  const bool is_sound = argc <= 3 && (size == "small" || size == "large");
  // Whose data the plain code has.
  std::string data = id == "memcpy" ? "copy_8b" : id;
  for (const char *reader : {"_inlined", "_called"}) {
    if (id.ends_with(reader)) data = "media_bits";
  }
  for (const bench::Workload &workload : bench::kWorkloads) {
    if (!is_sound || workload.id != data) continue;
    bench::count(workload, id, size == "large");
    return 0;
  }
  std::fputs("usage: arm_guest WORKLOAD [small|large]\n", stderr);
  return 2;
}
