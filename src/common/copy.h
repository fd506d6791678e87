// SPDX-License-Identifier: Apache-2.0
//
// Copies of rows for the library's own use.
#pragma once

#include <stddef.h>
#include <stdint.h>

namespace lox {

// Copies `rows` rows of `row_bytes` bytes, the steps in bytes. A count below 1
// copies nothing.
void copy_plane(uint8_t *dst, int64_t dst_step, const uint8_t *src,
                int64_t src_step, int64_t row_bytes, int32_t rows);

// The same for few rows, such as those of a tile.
void copy_block(uint8_t *dst, ptrdiff_t dst_step, const uint8_t *src,
                ptrdiff_t src_step, int32_t row_bytes, int32_t rows);

}  // namespace lox
