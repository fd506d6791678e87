// SPDX-License-Identifier: Apache-2.0
//
// How the functions of the vector layer and of the row kernels are declared.
// Kernel units of every instruction set include the same headers: an inline
// function that is not inlined could be the copy that other units call, with
// instructions that their processors lack. So all of them are always inlined.
#pragma once

// An operation: a static function of a backend or of a header.
#define LOX_OP [[gnu::always_inline]] static inline
// A function of a kernel unit, and a lambda.
#define LOX_INLINE [[gnu::always_inline]] inline
#define LOX_INLINE_LAMBDA __attribute__((always_inline))

// For loops that must be unrolled whole: clang leaves some of them, and then
// keeps in memory the registers that they go through.
#if defined(__clang__)
#define LOX_UNROLL _Pragma("clang loop unroll(full)")
#else
#define LOX_UNROLL
#endif
