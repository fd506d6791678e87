// SPDX-License-Identifier: Apache-2.0
#include "common/caches.h"

#include <cstdint>

#if defined(__x86_64__) || defined(__i386__)
#include <cpuid.h>
#endif

namespace lox {

namespace {

constexpr size_t kNever = SIZE_MAX;

constexpr size_t larger(size_t a, size_t b) { return a > b ? a : b; }

}  // namespace

namespace detail {
constinit MemoryRule memory_now = {kNever, kNever, false, kNever, false, false};
}

void set_memory_rule(const MemoryRule &rule) { detail::memory_now = rule; }

MemoryRule memory_rule(Core core, CacheSizes caches, bool strings) {
  const size_t far = caches.second + caches.second / 2;
  if (core == Core::kFetches) {
    return {kNever, kNever, true, far, false, false};
  }
  // The last cache is shared by some eight cores: a picture that takes more
  // than one core's share is gone before it is read. One that is smaller than
  // twice the cache before that is near whatever its share is.
  const size_t near = 2 * caches.second;
  return {larger(caches.last / 8, near),
          larger(caches.last / 16, near),
          false,
          far,
          strings,
          true};
}

#if defined(__x86_64__) || defined(__i386__)
namespace {

// What is taken for granted where a processor does not tell.
constexpr size_t kMiB = size_t{1} << 20;
constexpr CacheSizes kUsual = {kMiB, 32 * kMiB};

// A leaf that lists caches: 4, or AMD's of the same form.
CacheSizes caches_by(unsigned leaf) {
  CacheSizes sizes = kUsual;
  for (unsigned i = 0; i < 8; ++i) {
    unsigned a = 0, b = 0, c = 0, d = 0;
    if (__get_cpuid_count(leaf, i, &a, &b, &c, &d) == 0) break;
    const unsigned type = a & 31, level = a >> 5 & 7;
    constexpr unsigned kNone = 0, kOfInstructions = 2;
    if (type == kNone) break;
    if (type == kOfInstructions || level < 2) continue;
    const size_t line = (b & 0xFFF) + 1, partitions = (b >> 12 & 0x3FF) + 1;
    const size_t ways = (b >> 22) + 1, sets = size_t{c} + 1;
    const size_t bytes = line * partitions * ways * sets;
    if (level == 2) {
      sizes = {bytes, bytes};
    } else {
      sizes.last = bytes;
    }
  }
  return sizes;
}

[[gnu::constructor]] void choose_memory_rule() {
  __builtin_cpu_init();
  const bool amd = __builtin_cpu_is("amd");
  unsigned a = 0, b = 0, c = 0, d = 0;
  constexpr unsigned kFastStrings = 1u << 9;
  const bool strings =
      __get_cpuid_count(7, 0, &a, &b, &c, &d) != 0 && (b & kFastStrings) != 0;
  set_memory_rule(memory_rule(amd ? Core::kStreams : Core::kFetches,
                              caches_by(amd ? 0x8000001D : 4), strings));
}

}  // namespace
#endif

}  // namespace lox
