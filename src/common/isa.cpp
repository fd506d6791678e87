// SPDX-License-Identifier: Apache-2.0
#include "common/isa.h"

#if defined(__x86_64__) || defined(__i386__)
#include <cpuid.h>
#endif

namespace lox {

namespace {

#define LOX_NAME(set) #set,
constexpr const char *kNames[] = {LOX_FOR_EACH_SET(LOX_NAME)};
#undef LOX_NAME
constexpr int kLevels = static_cast<int>(sizeof(kNames) / sizeof(kNames[0]));

}  // namespace

namespace detail {
constinit int isa_level_now = 0;
constinit int isa_dot_level_now = 0;
constinit LookUps look_ups_now = LookUps::kLoads;
}  // namespace detail

namespace {

bool dot_products = false;

void choose_dot_level() {
  const bool above = dot_products && detail::isa_level_now == kLevels - 1;
  detail::isa_dot_level_now = detail::isa_level_now + (above ? 1 : 0);
}

}  // namespace

void set_dot_products(bool one_instruction) {
  bool there = false;
#if (defined(__x86_64__) || defined(__i386__)) && !defined(LOX_PORTABLE)
  __builtin_cpu_init();
  there = __builtin_cpu_supports("avx512vnni");
#endif
  dot_products = one_instruction && there;
  choose_dot_level();
}

void set_look_ups(LookUps how) {
#if defined(__x86_64__) || defined(__i386__)
  __builtin_cpu_init();
  if (how == LookUps::kRegisters && !__builtin_cpu_supports("avx512vbmi")) {
    how = LookUps::kLoads;
  }
#endif
  detail::look_ups_now = how;
}

int isa_best() {
#if (defined(__x86_64__) || defined(__i386__)) && !defined(LOX_PORTABLE)
  // These also ask whether the system saves the registers of threads.
  __builtin_cpu_init();
  if (__builtin_cpu_supports("avx512bw") &&
      __builtin_cpu_supports("avx512dq") &&
      __builtin_cpu_supports("avx512vl")) {
    return 3;
  }
  if (__builtin_cpu_supports("avx2")) return 2;
  if (__builtin_cpu_supports("sse4.1")) return 1;
  return 0;
#else
  return kLevels - 1;
#endif
}

const char *isa_name(int level) {
  return level >= 0 && level < kLevels ? kNames[level] : "none";
}

void isa_limit(int level) {
  const int best = isa_best();
  detail::isa_level_now = level < 0 ? 0 : level < best ? level : best;
  choose_dot_level();
}

namespace {

// Runs at load time: CPUID traps in a virtual machine, which is far too slow
// for a call.
[[gnu::constructor]] void choose_level() {
  isa_limit(isa_best());
  set_dot_products(true);
#if defined(__x86_64__) || defined(__i386__)
  unsigned a = 0, b = 0, c = 0, d = 0;
  constexpr unsigned kHalfPrecision = 1u << 23;
  if (__builtin_cpu_is("amd")) {
    set_look_ups(LookUps::kRegisters);
  } else if (__get_cpuid_count(7, 0, &a, &b, &c, &d) != 0 &&
             (d & kHalfPrecision) != 0) {
    set_look_ups(LookUps::kGathers);
  }
#endif
}

}  // namespace

}  // namespace lox
