// SPDX-License-Identifier: Apache-2.0
//
// Which form of the row kernels runs. Every kernel is compiled once for each
// instruction set of the target; a level is an index into that list, 0 being
// the portable form. On x86 the level is chosen once, when the library is
// loaded; on ARM there is nothing to choose.
#pragma once

// LOX_FOR_EACH_SET(X, ...): X(set, ...) for each set, worst first. Must agree
// with cmake/rows.cmake.
// LOX_FOR_DOT_SET is what families with a form for VNNI have more.
#define LOX_FOR_DOT_SET(X, ...)
#if defined(LOX_PORTABLE)
#define LOX_FOR_EACH_SET(X, ...) X(portable __VA_OPT__(, ) __VA_ARGS__)
#elif defined(__x86_64__) || defined(__i386__)
#define LOX_FOR_EACH_SET(X, ...)         \
  X(portable __VA_OPT__(, ) __VA_ARGS__) \
  X(sse41 __VA_OPT__(, ) __VA_ARGS__)    \
  X(avx2 __VA_OPT__(, ) __VA_ARGS__)     \
  X(avx512 __VA_OPT__(, ) __VA_ARGS__)
#undef LOX_FOR_DOT_SET
#define LOX_FOR_DOT_SET(X, ...) X(avx512_vnni __VA_OPT__(, ) __VA_ARGS__)
#elif defined(LOX_TRIM)
#define LOX_FOR_EACH_SET(X, ...) X(neon __VA_OPT__(, ) __VA_ARGS__)
#elif defined(__ARM_NEON)
#define LOX_FOR_EACH_SET(X, ...)         \
  X(portable __VA_OPT__(, ) __VA_ARGS__) \
  X(neon __VA_OPT__(, ) __VA_ARGS__)
#else
#define LOX_FOR_EACH_SET(X, ...) X(portable __VA_OPT__(, ) __VA_ARGS__)
#endif

namespace lox {

// The level that runs. Until the library's constructor has run it is the
// lowest, which is slower and never wrong; callers' own constructors may see
// it.
namespace detail {
extern int isa_level_now;
}
#if defined(LOX_TRIM)
constexpr int isa_level() { return 0; }
#else
inline int isa_level() { return detail::isa_level_now; }
#endif

// The highest level that this machine has, and the name of a level.
int isa_best();
const char *isa_name(int level);

// How AVX-512 looks entries of tables up: by single loads, by gathering ones or
// in registers. Chosen when the library is loaded; single loads until then.
// Measured: gathers pay on processors with half-precision AVX-512. Those
// without it gather slowly: AMD's, and Intel's, whose microcode slows gathers
// down to close a leak. AMD's look bytes up in registers in a cycle, Intel's in
// two; that needs a part of AVX-512 that all of AMD's have.
enum class LookUps { kLoads, kGathers, kRegisters };
namespace detail {
extern LookUps look_ups_now;
}
inline LookUps look_ups() { return detail::look_ups_now; }

// For tests, on one thread. Not exported.
void set_look_ups(LookUps how);

// The level of families that have a form more: behind AVX-512 the same with
// VNNI, which adds products of words to sums in one instruction. It is taken
// wherever it is, on Intel's and AMD's.
namespace detail {
extern int isa_dot_level_now;
}
#if defined(LOX_TRIM)
constexpr int isa_dot_level() { return 0; }
#else
inline int isa_dot_level() { return detail::isa_dot_level_now; }
#endif

// For tests, on one thread: whether AVX-512 runs that form, where there is one.
// Not exported.
void set_dot_products(bool one_instruction);

// For tests and benchmarks, on one thread: runs `level`, or the best one if the
// machine has less. Not exported.
void isa_limit(int level);

}  // namespace lox
