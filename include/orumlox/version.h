/* SPDX-License-Identifier: Apache-2.0 */
/*
 * The library's version, of these headers and of what runs. The build reads the
 * numbers from here. docs/abi.md says what each of them promises.
 */
#pragma once

#include "base.h"

VEXO_BEGIN_DECLS

/* Of these headers: the one that the program is compiled with. */
#define ORUMLOX_VERSION_MAJOR 0
#define ORUMLOX_VERSION_MINOR 1
#define ORUMLOX_VERSION_PATCH 0

/* All three as one number: 10000 for a major step, 100 for a minor one. */
#define ORUMLOX_VERSION                                          \
  (ORUMLOX_VERSION_MAJOR * 10000 + ORUMLOX_VERSION_MINOR * 100 + \
   ORUMLOX_VERSION_PATCH)

/*
 * The ORUMLOX_VERSION of the library that runs. A program that uses what a
 * version has added needs that one or a later one:
 *     if (vexo_version() < ORUMLOX_VERSION) return VEXO_ERR_UNSUPPORTED;
 */
VEXO_API int32_t vexo_version(void);

VEXO_END_DECLS
