/* SPDX-License-Identifier: Apache-2.0 */
/*
 * What every public header needs: linkage, visibility, fixed-width integers
 * and the status codes.
 */
#pragma once

#include <stddef.h>
#include <stdint.h>

/* What declarations of exported names begin with. */
#if defined(__GNUC__)
#define VEXO_API __attribute__((visibility("default")))
#else
#define VEXO_API
#endif

/* What declarations lie between: they are C's in C++, too. */
#if defined(__cplusplus)
#define VEXO_BEGIN_DECLS extern "C" {
#define VEXO_END_DECLS }
#else
#define VEXO_BEGIN_DECLS
#define VEXO_END_DECLS
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
  /* Memory cannot be had. Calls that return it say so. */
  VEXO_ERR_MEMORY = -2,
  /* A format code, a pair of codes or a size that the call has no route for. */
  VEXO_ERR_UNSUPPORTED = -3
};
