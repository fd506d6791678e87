// SPDX-License-Identifier: Apache-2.0
//
// This library: the form of the level as "orumlox", those below it, which are
// only checked, and the ways of a call whose threads or parts are worth a row.
// Beside them what is no library's: plain code for media streams, and the
// stream bounds: loops that read every source byte, write every destination
// byte and compute nothing. The fastest of them at a setting is about what the
// memory system allows there. Which that is depends on the machine and the
// setting, so there are three:
//   memcpy   the C library's memcpy, and its memset for what the destination is
//            longer; not where the source is;
//   loop     vector loads and stores, a page of destination at a time;
//   nt       the same with stores past the caches, which need not fetch the
//            line they write: as a rule the best once memory is the limit.
// Padding need not be read or written and is not.
//
// They do not depend on a level and stand beside the best alone. The memcpy of
// the copy workload is a peer as well; so is that of as many bytes as the tiles
// have, whose layout no peer knows.
#include <algorithm>
#include <cstring>

#include "benchmark/benchmark.h"
#include "common/isa.h"
#include "contender.h"

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace bench {
namespace {

using Threads = Contender::Threads;

void add_plain_code(const Job &job, Contenders *out) {
  if (job.task == kFindKey) {
    add(out, "plain loop", 0, [=](uint8_t *s, uint8_t *d) {
      *d = static_cast<uint8_t>(
          plain_is_key_frame(job.option, s, int32_t{kMediaBytes}));
    });
  }
  if (job.task != kReadBits) return;
  for (const BitReader reader : {BitReader::kInlined, BitReader::kCalled}) {
    if (reader == BitReader::kCalled && job.option > 0) continue;
    add(out, reader == BitReader::kInlined ? "inlined" : "called", 0,
        [=](uint8_t *s, uint8_t *d) {
          const uint32_t sum = read_fields(job.option, reader, s);
          std::memcpy(d, &sum, sizeof(sum));
        });
  }
}

#if defined(__x86_64__)

constexpr size_t kVector = 32;
constexpr size_t kBlock = 4096 / kVector;

// Sizes in vectors; the pointers are aligned to one.
template <bool past_caches>
[[gnu::target("avx2")]] void stream(const uint8_t *src, size_t src_count,
                                    uint8_t *dst, size_t dst_count) {
  const auto *in = reinterpret_cast<const __m256i *>(src);
  auto *to = reinterpret_cast<__m256i *>(dst);
  __m256i a = _mm256_setzero_si256();
  __m256i b = a, c = a, d = a;
  size_t read = 0;
  for (size_t written = 0; written < dst_count;) {
    const size_t write_end = std::min(dst_count, written + kBlock);
    const size_t read_end = write_end * src_count / dst_count;
    for (; read + 4 <= read_end; read += 4) {
      a = _mm256_or_si256(a, _mm256_load_si256(in + read));
      b = _mm256_or_si256(b, _mm256_load_si256(in + read + 1));
      c = _mm256_or_si256(c, _mm256_load_si256(in + read + 2));
      d = _mm256_or_si256(d, _mm256_load_si256(in + read + 3));
    }
    for (; read < read_end; ++read) {
      a = _mm256_or_si256(a, _mm256_load_si256(in + read));
    }
    // What is written depends on what was read, so no load can be dropped.
    const __m256i value =
        _mm256_or_si256(_mm256_or_si256(a, b), _mm256_or_si256(c, d));
    for (; written < write_end; ++written) {
      if constexpr (past_caches) {
        _mm256_stream_si256(to + written, value);
      } else {
        _mm256_store_si256(to + written, value);
      }
    }
  }
  if constexpr (past_caches) _mm_sfence();
}

#endif

}  // namespace

void add_bounds(const Job &job, Contenders *out) {
  if (job.task >= kDeblock && job.task != kReduce) return;
  const size_t src_bytes = picture_bytes(job.src(nullptr));
  const size_t dst_bytes = picture_bytes(job.dst(nullptr));
  const auto copy = [=](uint8_t *src, uint8_t *dst) {
    std::memcpy(dst, src, src_bytes);
    std::memset(dst + src_bytes, 255, dst_bytes - src_bytes);
    benchmark::ClobberMemory();
  };
  if (job.task == kConvert &&
      (job.src_format == job.dst_format || job.src_format == VEXO_FMT_T64X32)) {
    add(out, "memcpy", kAny, copy);
  }
  if (lox::isa_level() < lox::isa_best()) return;
  if (dst_bytes >= src_bytes) add(out, "bound memcpy", kAny, copy);
#if defined(__x86_64__)
  if (!__builtin_cpu_supports("avx2")) return;
  // Part of a vector at the end is left out.
  const size_t src_count = src_bytes / kVector;
  const size_t dst_count = dst_bytes / kVector;
  for (const auto loop : {stream<false>, stream<true>}) {
    add(out, loop == stream<true> ? "bound nt" : "bound loop", kAny,
        [=](uint8_t *src, uint8_t *dst) {
          loop(src, src_count, dst, dst_count);
          benchmark::ClobberMemory();
        });
  }
#endif
}

void add_own(const Job &job, Contenders *out) {
  const auto add_way = [&](const std::string &name, Way way, Threads threads,
                           int level = -1) {
    out->push_back({name, 0, [=](bool) { return own_work(job, way); }, -1, -1,
                    level, threads});
  };
  const bool maps = job.task == kToneMap;
  const Way way = maps ? Way::kParts : Way::kCall;
  const Threads threads =
      job.task == kReduce ? Threads::kOnOneCore : Threads::kNone;
  add_way("orumlox", way, threads);
  for (int level = lox::isa_level(); --level >= 0;) {
    add_way(std::string("orumlox ") + lox::isa_name(level), way, threads,
            level);
  }
  if (job.task == kScaleAndTurn || job.task == kCamera) {
    add_way("orumlox two calls", Way::kParts, Threads::kNone);
  }
  if (maps) {
    add_way("orumlox as shipped", Way::kCall, Threads::kByTheClock);
  }
  add_plain_code(job, out);
}

}  // namespace bench
