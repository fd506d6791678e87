/* SPDX-License-Identifier: Apache-2.0 */
/*
 * What every public header needs: linkage, visibility, fixed-width integers
 * and the status codes.
 */
#pragma once

#include <stddef.h>
#include <stdint.h>

#if defined(__GNUC__)
#define VEXO_API __attribute__((visibility("default")))
#else
#define VEXO_API
#endif

#if defined(__cplusplus)
#define VEXO_BEGIN_DECLS extern "C" {
#define VEXO_END_DECLS }
#define VEXO_STATIC_ASSERT static_assert
#else
#define VEXO_BEGIN_DECLS
#define VEXO_END_DECLS
#if defined(__STDC_VERSION__) && __STDC_VERSION__ >= 201112L
#define VEXO_STATIC_ASSERT _Static_assert
#else /* C99: an array that is declared over again, by a size or by -1. */
#define VEXO_STATIC_ASSERT(condition, message) \
  extern char vexo_static_assert[(condition) ? 1 : -1]
#endif
#endif

/*
 * Status codes. Every entry point that returns a status returns one of these as
 * an int32_t. Checks are made before any pixel is touched: a refused call
 * writes nothing, unless its declaration says otherwise.
 */
enum {
  /* Carried out; also when there was nothing to do. */
  VEXO_OK = 0,
  /* A bad argument: format codes that agree where they must differ or differ
   * where they must agree, sizes that do not fit. */
  VEXO_ERR_ARG = -1,
  /* A format code, a pair of codes or a size that the call has no route for. */
  VEXO_ERR_UNSUPPORTED = -3
};
