// SPDX-License-Identifier: Apache-2.0
//
// A guest for an instruction counter under qemu-arm: processes one frame
// between two marks and prints how many pixels (of the plane copy, bytes) came
// out.
//
//   arm_guest WORKLOAD [small|large [FORM]]
//
// A reduction in the DCT domain has its plan before; RGBA8888 goes through the
// parts of the call, for threads would count in each other's marks.
//
// Of tone mapping it is the bands of a frame, on this thread and from a context
// that stands; "hdr_context" makes one, which counts as one pixel.
//
// Of "media_" work the count is that of a MiB: of its fields of random lengths
// or of its bytes that are scanned for a key frame.
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

#include "bench/dct_plan.h"
#include "bench/enhancing.h"
#include "bench/media_work.h"
#include "bench/tone_mapping.h"
#include "common/isa.h"
#include "orumlox/key_frame.h"

namespace {

void mark(int tag) { syscall(SYS_getppid, 0x1c0417, tag); }

template <typename Entry, size_t count>
const Entry *find(const Entry (&table)[count], const char *id) {
  for (const Entry &entry : table) {
    if (std::strcmp(entry.id, id) == 0) return &entry;
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

uint8_t *allocate(size_t bytes) {
  void *room = nullptr;
  if (posix_memalign(&room, 64, bytes) != 0) std::abort();
  auto *p = static_cast<uint8_t *>(room);
  bench::fill_noise(p, bytes);
  return p;
}

// Runs once to warm up and once between the marks; a status other than VEXO_OK
// is the program's.
template <typename Run>
int count(int32_t pixels, const Run &run) {
  int32_t status = run();
  mark(1);
  mark(2);
  status |= run();
  mark(3);
  std::printf("%d ", pixels);
  return status == VEXO_OK ? 0 : 1;
}

int count_workload(const bench::Workload &workload, bool large,
                   bool is_memcpy) {
  const bench::Sizes sizes = bench::sizes_of(workload, large);
  uint8_t *src = allocate(
      bench::frame_bytes(bench::describe_src(workload, sizes, nullptr)));
  uint8_t *dst = allocate(
      bench::frame_bytes(bench::describe_dst(workload, sizes, nullptr)));
  const int32_t pixels = sizes.dst.width * sizes.dst.height;
  const int result = count(pixels, [&] {
    if (!is_memcpy) return bench::run_library(workload, sizes, src, dst);
    std::memcpy(dst, src, static_cast<size_t>(pixels));
    // Nobody reads the copy; the compiler must not know.
    asm volatile("" : : "r"(dst) : "memory");
    return int32_t{VEXO_OK};
  });
  std::free(src);
  std::free(dst);
  return result;
}

int count_reduction(const bench::Workload &workload) {
  const bench::Sizes sizes = bench::sizes_of(workload, true);
  bench::DctPlan plan(workload, sizes);
  uint8_t *src = allocate(bench::src_room(workload, sizes));
  uint8_t *dst = allocate(bench::dst_room(workload, sizes));
  const int result = count(sizes.dst.width * sizes.dst.height, [&] {
    if (workload.src_format == VEXO_FMT_RGBA8888) {
      plan.run_by_parts(src, dst);
    } else {
      plan.run(src, dst);
    }
    return int32_t{VEXO_OK};
  });
  std::free(src);
  std::free(dst);
  return result;
}

int count_tone_mapping(const bench::ToneMapping &mapping, bool large,
                       bool is_context) {
  const bench::Size size =
      large ? bench::kEqual.large.src : bench::kEqual.small.src;
  uint8_t *src_bytes = allocate(
      bench::frame_bytes(bench::describe(mapping.src_format, size, nullptr)));
  uint8_t *dst_bytes = allocate(bench::tone_mapped_bytes(size));
  const vexo_img src = bench::describe(mapping.src_format, size, src_bytes);
  const vexo_img dst = bench::describe(mapping.dst_format, size, dst_bytes);
  bench::draw_hdr(src);
  vexo_hdr_context context;
  bench::build_context(mapping, src, dst, &context);
  const int result = count(is_context ? 1 : size.width * size.height, [&] {
    if (is_context) {
      bench::build_context(mapping, src, dst, &context);
    } else {
      bench::map_bands(context);
    }
    return int32_t{VEXO_OK};
  });
  std::free(src_bytes);
  std::free(dst_bytes);
  return result;
}

// In place, so each of the two times has a frame of its own.
int count_deblocking(bool large) {
  const bench::Size size = large ? bench::kDeblocked : bench::kEqual.small.src;
  const auto describe = [&](uint8_t *bytes) {
    return bench::describe(VEXO_FMT_YUV420, size, bytes);
  };
  const size_t step = bench::frame_bytes(describe(nullptr));
  uint8_t *frames = allocate(2 * step), *next = frames;
  bench::draw_blocks(describe(frames));
  std::memcpy(frames + step, frames, step);
  const int result = count(size.width * size.height, [&] {
    const vexo_img img = describe(next);
    next += step;
    return bench::deblock(img);
  });
  std::free(frames);
  return result;
}

constexpr struct {
  const char *id;
  bench::BitReader reader;
} kBitReaders[] = {{"media_bits", bench::BitReader::kLibrary},
                   {"media_bits_inlined", bench::BitReader::kInlined},
                   {"media_bits_called", bench::BitReader::kCalled}};

int count_fields(bench::BitReader reader) {
  const bench::BitFields fields(bench::kFieldKinds[0]);
  return count(static_cast<int32_t>(fields.count()), [&] {
    // Nobody looks at the values; the compiler must not know.
    const uint32_t sum = fields.read(reader, bench::BitOrder::kMsb);
    asm volatile("" : : "r"(sum));
    return int32_t{VEXO_OK};
  });
}

int count_scan() {
  constexpr auto kBytes = static_cast<int32_t>(bench::kScannedBytes);
  uint8_t *frame = allocate(bench::kScannedBytes);
  bench::fill_scanned(frame, bench::kScannedBytes, true);
  const int result = count(kBytes, [&] {
    return mlox_is_vkeyfrm(bench::kCodecs[0].type, frame, kBytes);
  });
  std::free(frame);
  return result;
}

}  // namespace

int main(int argc, char **argv) {
  const char *id = argc > 1 ? argv[1] : "";
  // "memcpy" is not this library's: it shows that a count agrees with one
  // taken of the same function elsewhere.
  const bool is_memcpy = std::strcmp(id, "memcpy") == 0;
  const bool is_context = std::strcmp(id, "hdr_context") == 0;
  const auto *workload = find(bench::kWorkloads, is_memcpy ? "copy_8b" : id);
  const auto *mapping =
      find(bench::kToneMappings, is_context ? "hdr_p010_nv12" : id);
  const auto *bits = find(kBitReaders, id);
  const bool is_deblocking = std::strcmp(id, "vqe_deblock") == 0;
  const bool is_scan = std::strcmp(id, "media_keyframe_h264") == 0;
  const bool small = argc > 2 && std::strcmp(argv[2], "small") == 0;
  const bool large = argc < 3 || std::strcmp(argv[2], "large") == 0;
  if (!(workload || mapping || bits || is_deblocking || is_scan) ||
      small == large || (argc > 3 && !limit_form(argv[3]))) {
    std::fputs("usage: arm_guest WORKLOAD [small|large [FORM]]\n", stderr);
    return 2;
  }
  if (bits) return count_fields(bits->reader);
  if (is_deblocking) return count_deblocking(large);
  if (is_scan) return count_scan();
  if (workload && workload->task == bench::Task::kReduce) {
    return count_reduction(*workload);
  }
  return workload ? count_workload(*workload, large, is_memcpy)
                  : count_tone_mapping(*mapping, large, is_context);
}
