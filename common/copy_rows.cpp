// SPDX-License-Identifier: Apache-2.0
//
// Copies a run of bytes, vectors first.
#include "common/copy_rows.h"

#include <string.h>

#include "simd/simd.h"

namespace lox::LOX_SET {

namespace {

void copy(uint8_t *dst, const uint8_t *src, size_t n) { memcpy(dst, src, n); }

}  // namespace

constinit const CopyRows copy_rows = {.copy = copy};

}  // namespace lox::LOX_SET
